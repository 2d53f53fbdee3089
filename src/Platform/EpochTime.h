// Moments as the system counts them, with the zone that it knows.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "Platform/Time.h"

namespace vorlent::os {

// How far local time is ahead of UTC at a moment, by the rules of that date.
std::chrono::seconds LocalOffsetAt(std::chrono::sys_seconds moment);

// The same of a zone by its name in the time-zone database, such as "Pacific/Kiritimati". Of years for which
// the system's data has rules only, summer time doesn't count. Nothing for a zone that the system doesn't
// know.
std::optional<std::chrono::seconds> TryZoneOffsetAt(std::string_view zone, std::chrono::sys_seconds moment);

// Local fields of a moment.
DateTime EpochToLocal(std::chrono::sys_seconds moment, int millisecond);

// The moment of local fields, without their milliseconds. Raises InvalidCall for fields out of range.
std::chrono::sys_seconds LocalToEpoch(const DateTime& local);

}  // namespace vorlent::os
