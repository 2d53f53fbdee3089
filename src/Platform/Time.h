// Moments as fields, and the system's time zone.
#pragma once

#include <cstdint>

namespace vorlent {

// A moment broken into fields. Which clock it belongs to, local or UTC, is the user's matter.
struct DateTime {
  int year = 1970;
  int month = 1;  // from 1
  int day = 1;    // from 1
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;

  bool operator==(const DateTime&) const = default;
};

namespace os {

// Both use the rules of the date in question, not those of today. Fields out of range raise InvalidCall.
// A local time that a change to summer time skips is read with the offset before the change; one that a
// change back repeats is read as its first occurrence.
DateTime UtcToLocal(const DateTime& utc);
DateTime LocalToUtc(const DateTime& local);

// The present local time.
DateTime LocalNow();

}  // namespace os
}  // namespace vorlent
