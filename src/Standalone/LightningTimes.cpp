#include "Standalone/LightningTimes.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

#include "Platform/Calendar.h"
#include "Platform/EpochTime.h"
#include "Platform/Failure.h"
#include "Platform/Time.h"

namespace vorlent {

namespace {

using std::chrono::days;
using std::chrono::microseconds;
using MicroMoment = std::chrono::sys_time<microseconds>;

constexpr std::int64_t kWholeDayFlag = 8;
constexpr std::int64_t kDay = microseconds(days(1)).count();

bool IsWallClock(std::string_view zone) {
  return zone.empty() || zone == "floating";
}

bool IsShowable(std::int64_t time) {
  return HasFields(std::chrono::floor<std::chrono::seconds>(MicroMoment(microseconds(time))));
}

// The same moment by another clock; the part of a second goes along. One that the other clock doesn't have
// stays.
template <class Convert>
std::int64_t ByOtherClock(std::int64_t time, Convert convert) {
  if (!IsShowable(time)) return time;
  const MicroMoment moment{microseconds(time)};
  const auto second = std::chrono::floor<std::chrono::seconds>(moment);
  MicroMoment other = moment;
  Swallow([&] { other = SecondsOf(convert(FieldsOf(second))) + (moment - second); });
  return other.time_since_epoch().count();
}

// The zone's name in the time-zone database; Thunderbird put its own in front of that once, as in
// "/mozilla.org/20050126_1/Europe/Berlin".
std::string_view PlainZone(std::string_view zone) {
  constexpr std::string_view kMaker = "/mozilla.org/";
  if (!zone.starts_with(kMaker)) return zone;
  const std::size_t begin = zone.find('/', kMaker.size());
  return begin == std::string_view::npos ? zone : zone.substr(begin + 1);
}

// What leads from a whole day's time, which is midnight by the zone's clock, into that day in UTC.
std::chrono::seconds IntoDay(std::chrono::sys_seconds time, std::string_view zone) {
  // Summer time, and zone data that aren't those of the writer, move midnight by no more.
  constexpr std::chrono::hours kLeeway{2};
  // Midnight of most zones is less than that away from midnight in UTC.
  constexpr std::chrono::hours kHalfADay{12};
  if (IsWallClock(zone) || zone == "UTC") return std::chrono::seconds(0);
  const auto offset = os::TryZoneOffsetAt(PlainZone(zone), time);
  return offset ? *offset + kLeeway : kHalfADay;
}

// The beginning of the day that a whole day's time means, by its own clock.
std::int64_t DayOf(std::int64_t time, std::string_view zone) {
  if (!IsShowable(time)) return time;
  const auto second = std::chrono::floor<std::chrono::seconds>(MicroMoment(microseconds(time)));
  const MicroMoment day = std::chrono::floor<days>(second + IntoDay(second, zone));
  return day.time_since_epoch().count();
}

LightningMoment ShownLocal(std::int64_t local) {
  const std::int64_t utc = ByOtherClock(local, os::LocalToUtc);
  if (ByOtherClock(utc, os::UtcToLocal) == local) return {utc};
  return {local, true};
}

// --- For statements

// Old versions kept times before 1970 as if they had no sign, which made them too large for whole numbers and
// took the parts of their seconds away.
std::optional<std::int64_t> TimeOfReal(double time) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  constexpr double kSecond = 1e6;
  if (time >= kTwoTo63) time = std::round((time - 2 * kTwoTo63) / kSecond) * kSecond;
  if (!(time >= -kTwoTo63 && time < kTwoTo63)) return std::nullopt;
  return static_cast<std::int64_t>(std::floor(time));
}

std::optional<std::int64_t> TimeArgument(sqlite3_value* value) {
  if (sqlite3_value_type(value) == SQLITE_FLOAT) return TimeOfReal(sqlite3_value_double(value));
  if (sqlite3_value_type(value) != SQLITE_INTEGER) return std::nullopt;
  return sqlite3_value_int64(value);
}

LightningClock ClockArgument(sqlite3_value* zone, sqlite3_value* flags) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(zone));
  return {.zone = text == nullptr ? std::string_view() : std::string_view(text),
          .isWholeDay = (sqlite3_value_int64(flags) & kWholeDayFlag) != 0};
}

void GiveTime(sqlite3_context* context, const std::optional<std::int64_t>& time) {
  if (time) {
    sqlite3_result_int64(context, *time);
  } else {
    sqlite3_result_null(context);
  }
}

void GiveMoment(sqlite3_context* context, const LightningMoment& moment) {
  if (!moment.isSkipped) return GiveTime(context, moment.time);
  constexpr auto kHalfSecond = static_cast<double>(microseconds(std::chrono::milliseconds(500)).count());
  const auto second = std::chrono::floor<std::chrono::seconds>(microseconds(moment.time));
  sqlite3_result_double(context, static_cast<double>(microseconds(second).count()) + kHalfSecond);
}

template <std::int64_t (*kConvert)(std::int64_t, const LightningClock&)>
void ConvertArgument(sqlite3_context* context, int, sqlite3_value** values) {
  std::optional<std::int64_t> time = TimeArgument(values[0]);
  if (time) time = kConvert(*time, ClockArgument(values[1], values[2]));
  GiveTime(context, time);
}

void ConvertStartArgument(sqlite3_context* context, int, sqlite3_value** values) {
  const std::optional<std::int64_t> time = TimeArgument(values[0]);
  if (time) GiveMoment(context, ShownStart(*time, ClockArgument(values[1], values[2])));
}

void GiveShowableTime(sqlite3_context* context, int, sqlite3_value** values) {
  const std::optional<std::int64_t> time = TimeArgument(values[0]);
  GiveTime(context, time && IsShowable(*time) ? time : std::nullopt);
}

// An event without an end ends with its beginning.
void ConvertEndArgument(sqlite3_context* context, int, sqlite3_value** values) {
  const auto start = TimeArgument(values[0]);
  const bool hasEnd = sqlite3_value_type(values[2]) != SQLITE_NULL;
  const auto end = hasEnd ? TimeArgument(values[2]) : start;
  const LightningClock clock = ClockArgument(values[hasEnd ? 3 : 1], values[4]);
  if (!end) return;
  GiveMoment(context, clock.isWholeDay ? ShownWholeDaysEnd(start.value_or(*end), *end, clock)
                                       : ShownStart(*end, clock));
}

void TellWhetherDayBegins(sqlite3_context* context, int, sqlite3_value** values) {
  const std::optional<std::int64_t> time = TimeArgument(values[0]);
  if (!time) return;
  const std::int64_t day = DayOf(ByOtherClock(*time, os::UtcToLocal), {});
  sqlite3_result_int(context, ByOtherClock(day, os::LocalToUtc) == *time ? 1 : 0);
}

}  // namespace

LightningMoment ShownStart(std::int64_t time, const LightningClock& clock) {
  if (clock.isWholeDay) return ShownLocal(DayOf(time, clock.zone));
  return IsWallClock(clock.zone) ? ShownLocal(time) : LightningMoment{time};
}

LightningMoment ShownWholeDaysEnd(std::int64_t start, std::int64_t end, const LightningClock& clock) {
  if (!IsShowable(end)) return {end};
  return ShownLocal(std::max(DayOf(start, clock.zone), DayOf(end, clock.zone) - kDay));
}

std::int64_t KeptStart(std::int64_t shown, const LightningClock& clock) {
  if (!clock.isWholeDay && !IsWallClock(clock.zone)) return shown;
  const std::int64_t local = ByOtherClock(shown, os::UtcToLocal);
  return clock.isWholeDay ? DayOf(local, {}) : local;
}

std::int64_t KeptEnd(std::int64_t shown, const LightningClock& clock) {
  return KeptStart(shown, clock) + (clock.isWholeDay ? kDay : 0);
}

void AddLightningTimes(SqliteDatabase& database) {
  database.AddFunction("shown_time", 1, &GiveShowableTime);
  database.AddFunction("shown_start", 3, &ConvertStartArgument);
  database.AddFunction("shown_end", 5, &ConvertEndArgument);
  database.AddFunction("kept_start", 3, &ConvertArgument<&KeptStart>);
  database.AddFunction("kept_end", 3, &ConvertArgument<&KeptEnd>);
  database.AddFunction("begins_day", 1, &TellWhetherDayBegins);
}

}  // namespace vorlent
