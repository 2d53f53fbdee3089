#include "Standalone/LightningTimes.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

#include "Platform/Calendar.h"
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

// The beginning of the day that a whole day's time means, by its own clock. A time of a zone is that zone's
// midnight, which is less than half a day away from midnight in UTC.
std::int64_t DayOf(std::int64_t time, std::string_view zone) {
  if (!IsShowable(time)) return time;
  const microseconds toNearest =
      IsWallClock(zone) || zone == "UTC" ? microseconds(0) : std::chrono::hours(12);
  const MicroMoment day = std::chrono::floor<days>(MicroMoment(microseconds(time) + toNearest));
  return day.time_since_epoch().count();
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

template <std::int64_t (*kConvert)(std::int64_t, const LightningClock&)>
void ConvertArgument(sqlite3_context* context, int, sqlite3_value** values) {
  std::optional<std::int64_t> time = TimeArgument(values[0]);
  if (time) time = kConvert(*time, ClockArgument(values[1], values[2]));
  GiveTime(context, time);
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
  if (!end) return GiveTime(context, std::nullopt);
  GiveTime(context,
           clock.isWholeDay ? ShownWholeDaysEnd(start.value_or(*end), *end, clock) : ShownStart(*end, clock));
}

}  // namespace

std::int64_t ShownStart(std::int64_t time, const LightningClock& clock) {
  if (clock.isWholeDay) return ByOtherClock(DayOf(time, clock.zone), os::LocalToUtc);
  return IsWallClock(clock.zone) ? ByOtherClock(time, os::LocalToUtc) : time;
}

std::int64_t ShownWholeDaysEnd(std::int64_t start, std::int64_t end, const LightningClock& clock) {
  if (!IsShowable(end)) return end;
  const std::int64_t last = std::max(DayOf(start, clock.zone), DayOf(end, clock.zone) - kDay);
  return ByOtherClock(last, os::LocalToUtc);
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
  database.AddFunction("shown_start", 3, &ConvertArgument<&ShownStart>);
  database.AddFunction("shown_end", 5, &ConvertEndArgument);
  database.AddFunction("kept_start", 3, &ConvertArgument<&KeptStart>);
  database.AddFunction("kept_end", 3, &ConvertArgument<&KeptEnd>);
}

}  // namespace vorlent
