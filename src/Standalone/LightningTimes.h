// The times of Thunderbird's calendars as times of the tables of old, and back.
//
// All are microseconds since 1970. In the tables of old they are UTC. Thunderbird keeps times that are the
// same on every clock ("floating" ones, whole days among them) as if that clock's were UTC.
#pragma once

#include <cstdint>
#include <string_view>

#include "Standalone/Sqlite.h"

namespace vorlent {

// What an event's row tells of a time.
struct LightningClock {
  std::string_view zone;
  bool isWholeDay = false;
};

// A time as it is shown: in UTC, or by the local clock if that skips it.
struct LightningMoment {
  std::int64_t time;
  bool isSkipped = false;
};

// Of whole days that is the day's beginning in local time. One beyond all years that can be shown stays as it
// is. The end of whole days is kept as the day after the last one, and shown as the last.
LightningMoment ShownStart(std::int64_t time, const LightningClock& clock);
LightningMoment ShownWholeDaysEnd(std::int64_t start, std::int64_t end, const LightningClock& clock);

// A time that is shown, as it is kept.
std::int64_t KeptStart(std::int64_t shown, const LightningClock& clock);
std::int64_t KeptEnd(std::int64_t shown, const LightningClock& clock);

// Makes known to a connection's statements, with NULL for what isn't a time:
//   shown_time(time), which is NULL for a time that can't be shown, too,
//   shown_start(start, zone, flags), shown_end(start, startZone, end, endZone, flags), which have half a
//   second more for a time that the local clock skips (CalendarFiles.h),
//   kept_start(shown, zone, flags), kept_end(shown, zone, flags),
//   begins_day(shown), whether no earlier time of the same day can be shown
void AddLightningTimes(SqliteDatabase& database);

}  // namespace vorlent
