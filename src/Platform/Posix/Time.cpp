#include "Platform/Time.h"

#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "Platform/Failure.h"
#include "Platform/Posix/EpochTime.h"

namespace vorlent::os {

namespace {

constexpr std::int64_t kSecondsPerDay = 86'400;

bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysIn(int month, int year) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

void RequireValid(const DateTime& t) {
  const auto isIn = [](int value, int low, int high) { return value >= low && value <= high; };
  const bool valid = isIn(t.year, 1, 9999) && isIn(t.month, 1, 12) &&
                     isIn(t.day, 1, DaysIn(t.month, t.year)) && isIn(t.hour, 0, 23) &&
                     isIn(t.minute, 0, 59) && isIn(t.second, 0, 59) && isIn(t.millisecond, 0, 999);
  if (!valid) throw Failure(ErrorNumber::InvalidCall, "no such date or time");
}

// The fields counted as if they were UTC. Years are taken to begin in March, so that the leap day is the
// last.
std::int64_t CountSeconds(const DateTime& t) {
  const std::int64_t year = t.month > 2 ? t.year : t.year - 1;
  const int month = (t.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * month + 2) / 5 + t.day - 1;
  const std::int64_t days = 365 * year + year / 4 - year / 100 + year / 400 + dayOfYear - 719'468;
  return days * kSecondsPerDay + t.hour * 3600 + t.minute * 60 + t.second;
}

DateTime FromBroken(const tm& broken, int millisecond) {
  return {broken.tm_year + 1900, broken.tm_mon + 1, broken.tm_mday, broken.tm_hour,
          broken.tm_min,         broken.tm_sec,     millisecond};
}

// Takes up the zone that the environment names, if that has changed: the C library would look at the zone's
// file each time.
void FollowZone() {
  static thread_local std::optional<std::string> known;
  const char* const zone = std::getenv("TZ");
  const std::string current = zone == nullptr ? "no zone" : std::string("TZ=") + zone;
  if (current == known) return;
  tzset();
  known = current;
}

tm BreakLocally(std::int64_t seconds) {
  FollowZone();
  const time_t moment = seconds;
  tm broken = {};
  if (localtime_r(&moment, &broken) == nullptr)
    throw Failure(ErrorNumber::InvalidCall, "no such date or time");
  return broken;
}

// How far local time is ahead of UTC at a moment.
std::int64_t OffsetAt(std::int64_t seconds) {
  return BreakLocally(seconds).tm_gmtoff;
}

}  // namespace

DateTime EpochToLocal(std::int64_t seconds, int millisecond) {
  return FromBroken(BreakLocally(seconds), millisecond);
}

std::int64_t LocalToEpoch(const DateTime& local) {
  RequireValid(local);
  const std::int64_t count = CountSeconds(local);
  // Offsets are below a day, so these are the offsets in force before and after a change around that time.
  // The earlier reading goes first: of a repeated time it is the first occurrence, of a skipped one the
  // offset before.
  const std::int64_t before = count - OffsetAt(count - kSecondsPerDay);
  if (before + OffsetAt(before) == count) return before;
  const std::int64_t after = count - OffsetAt(count + kSecondsPerDay);
  return after + OffsetAt(after) == count ? after : before;
}

DateTime UtcToLocal(const DateTime& utc) {
  RequireValid(utc);
  return EpochToLocal(CountSeconds(utc), utc.millisecond);
}

DateTime LocalToUtc(const DateTime& local) {
  const time_t moment = LocalToEpoch(local);
  tm broken = {};
  gmtime_r(&moment, &broken);
  return FromBroken(broken, local.millisecond);
}

DateTime LocalNow() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return EpochToLocal(now.tv_sec, static_cast<int>(now.tv_nsec / 1'000'000));
}

}  // namespace vorlent::os
