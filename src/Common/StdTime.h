// Epoch seconds and the time zone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Time.h"

namespace vorlent {

// Stamp yyyymmddhhmmss of a moment. Milliseconds are dropped.
std::string FormatStamp(const DateTime& moment);

// Display text dd.mm.yyyy hh:mm:ss of a moment. Milliseconds are dropped.
std::string FormatDisplay(const DateTime& moment);

// Seconds since 1970-01-01 00:00:00 of a stamp, without any time zone; 0 for "". By the rules of old it
// overflows beyond 32 bits, and years before 1970 count as that.
std::int64_t StampToEpoch(std::string_view s);

// The stamp of seconds since 1970, without any time zone. By the rules of today a moment before the year 100
// or after 9999 is shown as the first or the last one that a stamp has.
std::string EpochToStamp(std::int64_t t);

// 366 in a leap year of the Gregorian calendar, else 365.
std::int32_t DaysInYear(std::int32_t year);

// Days of a month from 1; 31 for a number that is no month.
std::int32_t DaysInMonth(std::int32_t month, std::int32_t year);

// The platform's date parser for display text: day.month.year, then hours, minutes and perhaps seconds.
// Text that is no date raises TypeMismatch.
DateTime ParseDate(std::string_view text);

// Display text of a UTC moment in the system's time zone.
std::string UtcToLocalText(const DateTime& utc);

// Display text in UTC of a local moment; "" for "" or for text that is no date.
std::string LocalToUtcText(std::string_view s);

}  // namespace vorlent
