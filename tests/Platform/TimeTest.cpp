#include "Platform/Time.h"

#include <gtest/gtest.h>
#include <time.h>

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>

#include "Platform/Failure.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedEnvironment.h"
#include "Support/SourceTree.h"

namespace vorlent {

namespace {

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";

DateTime FromEpoch(std::int64_t seconds) {
  using namespace std::chrono;
  const sys_seconds moment{std::chrono::seconds(seconds)};
  const auto midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss time(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(time.hours().count()),
          static_cast<int>(time.minutes().count()),
          static_cast<int>(time.seconds().count()),
          0};
}

// "dd.mm.yyyy hh:mm:ss".
DateTime FromDisplay(const std::string& text) {
  DateTime t;
  EXPECT_EQ(std::sscanf(text.c_str(), "%d.%d.%d %d:%d:%d", &t.day, &t.month, &t.year, &t.hour, &t.minute,
                        &t.second),
            6);
  return t;
}

TEST(TimeTest, ZonesOfTheDatabaseAreKeptInBothDirections) {
  std::istringstream lines(SourceBytes("tests/data/time_zones.txt"));
  std::string kind, zone, date, time;
  std::int64_t seconds = 0;
  int rows = 0;
  while (lines >> kind >> zone) {
    const bool isMoment = kind == "moment";
    if (isMoment) {
      lines >> seconds >> date >> time;
    } else {
      lines >> date >> time >> seconds;
    }
    const ScopedEnvironment variable("TZ", zone.c_str());
    const DateTime local = FromDisplay(date + " " + time);
    if (isMoment) {
      EXPECT_EQ(os::UtcToLocal(FromEpoch(seconds)), local) << zone << " " << seconds;
    } else {
      EXPECT_EQ(os::LocalToUtc(local), FromEpoch(seconds)) << zone << " " << date << " " << time;
    }
    ++rows;
  }
  EXPECT_GT(rows, 700);
}

TEST(TimeTest, RulesOfTheDateInQuestionCount) {
  const ScopedEnvironment zone("TZ", kBerlin);
  struct Row {
    DateTime utc, local;
  };
  const Row rows[] = {
      {{2010, 1, 1, 0, 0, 0, 0}, {2010, 1, 1, 1, 0, 0, 0}},
      {{2010, 7, 1, 0, 0, 0, 0}, {2010, 7, 1, 2, 0, 0, 0}},
      {{2010, 12, 31, 23, 0, 0, 0}, {2011, 1, 1, 0, 0, 0, 0}},
      {{2008, 2, 29, 23, 30, 0, 7}, {2008, 3, 1, 0, 30, 0, 7}},
      {{2040, 7, 1, 10, 0, 0, 0}, {2040, 7, 1, 12, 0, 0, 0}},
      {{2100, 1, 31, 23, 0, 0, 999}, {2100, 2, 1, 0, 0, 0, 999}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::UtcToLocal(row.utc), row.local);
    EXPECT_EQ(os::LocalToUtc(row.local), row.utc);
  }
}

TEST(TimeTest, SkippedTimeIsReadWithTheOffsetBeforeTheChange) {
  {
    const ScopedEnvironment zone("TZ", kBerlin);
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 1, 59, 59, 0}), (DateTime{2010, 3, 28, 0, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 2, 30, 0, 0}), (DateTime{2010, 3, 28, 1, 30, 0, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 3, 0, 0, 0}), (DateTime{2010, 3, 28, 1, 0, 0, 0}));
  }
  const ScopedEnvironment zone("TZ", kNewYork);
  EXPECT_EQ(os::LocalToUtc({2010, 3, 14, 2, 30, 0, 0}), (DateTime{2010, 3, 14, 7, 30, 0, 0}));
}

TEST(TimeTest, RepeatedTimeIsItsFirstOccurrence) {
  {
    const ScopedEnvironment zone("TZ", kBerlin);
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 1, 59, 59, 0}), (DateTime{2010, 10, 30, 23, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 2, 0, 0, 0}), (DateTime{2010, 10, 31, 0, 0, 0, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 2, 59, 59, 0}), (DateTime{2010, 10, 31, 0, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 3, 0, 0, 0}), (DateTime{2010, 10, 31, 2, 0, 0, 0}));
  }
  const ScopedEnvironment zone("TZ", kNewYork);
  EXPECT_EQ(os::LocalToUtc({2010, 11, 7, 1, 30, 0, 0}), (DateTime{2010, 11, 7, 5, 30, 0, 0}));
}

TEST(TimeTest, DatesFarOutsideTheEpochAreConverted) {
  const ScopedEnvironment zone("TZ", "UTC");
  for (const DateTime& t : {DateTime{1, 1, 1, 0, 0, 0, 0}, DateTime{1600, 2, 29, 1, 2, 3, 4},
                            DateTime{1899, 12, 30, 0, 0, 0, 0}, DateTime{1969, 12, 31, 23, 59, 59, 999},
                            DateTime{2038, 1, 19, 3, 14, 8, 0}, DateTime{9999, 12, 31, 23, 59, 59, 0}}) {
    EXPECT_EQ(os::UtcToLocal(t), t);
    EXPECT_EQ(os::LocalToUtc(t), t);
  }
}

TEST(TimeTest, OffsetsOfPartHoursAndFarAheadWork) {
  const ScopedEnvironment zone("TZ", "FAR-13:45");
  EXPECT_EQ(os::UtcToLocal({2010, 12, 31, 12, 0, 0, 0}), (DateTime{2011, 1, 1, 1, 45, 0, 0}));
  EXPECT_EQ(os::LocalToUtc({2011, 1, 1, 1, 45, 0, 0}), (DateTime{2010, 12, 31, 12, 0, 0, 0}));
}

TEST(TimeTest, ChangeOfTheZoneIsSeenAtOnce) {
  const DateTime noon = {2010, 1, 1, 12, 0, 0, 0};
  {
    const ScopedEnvironment zone("TZ", "UTC");
    EXPECT_EQ(os::UtcToLocal(noon).hour, 12);
  }
  {
    const ScopedEnvironment zone("TZ", kNewYork);
    EXPECT_EQ(os::UtcToLocal(noon).hour, 7);
  }
  // No name stands for the system's zone, an empty one for UTC.
  const ScopedEnvironment systems("TZ", nullptr);
  os::UtcToLocal(noon);
  const ScopedEnvironment zone("TZ", "");
  EXPECT_EQ(os::UtcToLocal(noon).hour, 12);
}

TEST(TimeTest, FieldsOutOfRangeRaise) {
  const DateTime bad[] = {
      {0, 1, 1, 0, 0, 0, 0},     {10000, 1, 1, 0, 0, 0, 0},   {2010, 0, 1, 0, 0, 0, 0},
      {2010, 13, 1, 0, 0, 0, 0}, {2010, 1, 0, 0, 0, 0, 0},    {2010, 1, 32, 0, 0, 0, 0},
      {2010, 4, 31, 0, 0, 0, 0}, {2010, 2, 29, 0, 0, 0, 0},   {1900, 2, 29, 0, 0, 0, 0},
      {2010, 1, 1, 24, 0, 0, 0}, {2010, 1, 1, -1, 0, 0, 0},   {2010, 1, 1, 0, 60, 0, 0},
      {2010, 1, 1, 0, 0, 60, 0}, {2010, 1, 1, 0, 0, 0, 1000}, {2010, 1, 1, 0, 0, 0, -1},
  };
  for (const DateTime& t : bad) {
    EXPECT_EQ(SwallowedNumber([&] { os::UtcToLocal(t); }), 5) << testing::PrintToString(t);
    EXPECT_EQ(SwallowedNumber([&] { os::LocalToUtc(t); }), 5) << testing::PrintToString(t);
  }
  EXPECT_NO_THROW(os::LocalToUtc({2000, 2, 29, 0, 0, 0, 0}));
}

TEST(TimeTest, EveryHourOfAYearComesBack) {
  const ScopedEnvironment zone("TZ", kBerlin);
  int repeated = 0;
  for (std::int64_t hour = 0; hour < 365 * 24; ++hour) {
    const DateTime utc = FromEpoch(1262304000 + hour * 3600);  // from 2010-01-01
    const DateTime back = os::LocalToUtc(os::UtcToLocal(utc));
    if (back != utc) ++repeated;
  }
  EXPECT_EQ(repeated, 1);  // the second pass through the hour that the change back repeats
}

TEST(TimeTest, NowIsTheClockOfTheZone) {
  const ScopedEnvironment zone("TZ", "FAR-13:45");  // far from any real one, and without changes
  // Not time(): that may lag behind the clock by a tick.
  const auto clock = [] {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
  };
  const auto before = clock();
  DateTime utc = os::LocalToUtc(os::LocalNow());
  const auto after = clock();
  utc.millisecond = 0;
  bool found = false;
  for (auto moment = before; moment <= after; ++moment)
    found = found || utc == FromEpoch(moment);
  EXPECT_TRUE(found) << testing::PrintToString(utc);
}

}  // namespace
}  // namespace vorlent
