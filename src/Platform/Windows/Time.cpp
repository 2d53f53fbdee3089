#include <windows.h>

#include "Platform/Calendar.h"
#include "Platform/EpochTime.h"
#include "Platform/Failure.h"
#include "Platform/Windows/Zone.h"

namespace vorlent::os {

namespace {

using std::chrono::sys_seconds;

std::optional<TIME_ZONE_INFORMATION>& ChosenZone() {
  static std::optional<TIME_ZONE_INFORMATION> chosen;
  return chosen;
}

WORD Number(int value) {
  return static_cast<WORD>(value);
}

// A change in the form of the system: the day is the count of the weekday in its month.
SYSTEMTIME RuleOf(const std::optional<ZoneChange>& change) {
  if (!change) return {};
  return {.wYear = 0,
          .wMonth = Number(change->month),
          .wDayOfWeek = Number(change->weekday),
          .wDay = Number(change->week),
          .wHour = Number(change->hour),
          .wMinute = 0,
          .wSecond = 0,
          .wMilliseconds = 0};
}

TIME_ZONE_INFORMATION PresentZone() {
  if (ChosenZone()) return *ChosenZone();
  TIME_ZONE_INFORMATION zone = {};
  if (GetTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID)
    throw Failure(ErrorNumber::DeviceIo, "the time zone can't be told");
  return zone;
}

SYSTEMTIME SystemTimeOf(sys_seconds moment) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss time{moment - day};
  return {.wYear = Number(static_cast<int>(date.year())),
          .wMonth = static_cast<WORD>(static_cast<unsigned>(date.month())),
          .wDayOfWeek = 0,
          .wDay = static_cast<WORD>(static_cast<unsigned>(date.day())),
          .wHour = static_cast<WORD>(time.hours().count()),
          .wMinute = static_cast<WORD>(time.minutes().count()),
          .wSecond = static_cast<WORD>(time.seconds().count()),
          .wMilliseconds = 0};
}

sys_seconds MomentOf(const SYSTEMTIME& time) {
  const DateTime fields = {time.wYear, time.wMonth, time.wDay};
  return std::chrono::sys_days(DateOf(fields)) + std::chrono::hours(time.wHour) +
         std::chrono::minutes(time.wMinute) + std::chrono::seconds(time.wSecond);
}

// The system counts no years before 1601. The calendar, its weekdays included, repeats after 400 years.
sys_seconds InCountedYears(sys_seconds moment) {
  constexpr std::chrono::days kFourCenturies{146'097};
  constexpr std::chrono::sys_days kFirst{std::chrono::year(1602) / 1 / 1};
  while (moment < kFirst)
    moment += kFourCenturies;
  return moment;
}

}  // namespace

void UseZone(const std::optional<Zone>& zone) {
  ChosenZone().reset();
  if (!zone) return;
  TIME_ZONE_INFORMATION& chosen = ChosenZone().emplace();
  chosen.Bias = zone->bias;
  chosen.DaylightBias = zone->summerBias;
  chosen.StandardDate = RuleOf(zone->toWinter);
  chosen.DaylightDate = RuleOf(zone->toSummer);
}

std::chrono::seconds LocalOffsetAt(sys_seconds moment) {
  const TIME_ZONE_INFORMATION zone = PresentZone();
  const sys_seconds counted = InCountedYears(moment);
  const SYSTEMTIME utc = SystemTimeOf(counted);
  SYSTEMTIME local;
  if (SystemTimeToTzSpecificLocalTime(&zone, &utc, &local) == 0)
    throw Failure(ErrorNumber::InvalidCall, "no such date or time");
  return MomentOf(local) - counted;
}

// The system knows its zones by other names.
std::optional<std::chrono::seconds> TryZoneOffsetAt(std::string_view, sys_seconds) {
  return std::nullopt;
}

}  // namespace vorlent::os
