// Moments as the C library counts them: seconds since 1970-01-01 00:00:00 UTC.
#pragma once

#include <cstdint>

#include "Platform/Time.h"

namespace vorlent::os {

// Local fields of a moment.
DateTime EpochToLocal(std::int64_t seconds, int millisecond);

// The moment of local fields, without their milliseconds. Raises InvalidCall for fields out of range.
std::int64_t LocalToEpoch(const DateTime& local);

}  // namespace vorlent::os
