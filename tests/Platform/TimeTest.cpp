#include "Platform/Time.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Platform/Failure.h"
#include "Platform/TimeTest.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {

namespace {

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";

TEST(TimeTest, RulesOfTheDateInQuestionCount) {
  const ScopedTimeZone zone(kBerlin);
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
    const ScopedTimeZone zone(kBerlin);
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 1, 59, 59, 0}), (DateTime{2010, 3, 28, 0, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 2, 30, 0, 0}), (DateTime{2010, 3, 28, 1, 30, 0, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 3, 28, 3, 0, 0, 0}), (DateTime{2010, 3, 28, 1, 0, 0, 0}));
  }
  const ScopedTimeZone zone(kNewYork);
  EXPECT_EQ(os::LocalToUtc({2010, 3, 14, 2, 30, 0, 0}), (DateTime{2010, 3, 14, 7, 30, 0, 0}));
}

TEST(TimeTest, RepeatedTimeIsItsFirstOccurrence) {
  {
    const ScopedTimeZone zone(kBerlin);
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 1, 59, 59, 0}), (DateTime{2010, 10, 30, 23, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 2, 0, 0, 0}), (DateTime{2010, 10, 31, 0, 0, 0, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 2, 59, 59, 0}), (DateTime{2010, 10, 31, 0, 59, 59, 0}));
    EXPECT_EQ(os::LocalToUtc({2010, 10, 31, 3, 0, 0, 0}), (DateTime{2010, 10, 31, 2, 0, 0, 0}));
  }
  const ScopedTimeZone zone(kNewYork);
  EXPECT_EQ(os::LocalToUtc({2010, 11, 7, 1, 30, 0, 0}), (DateTime{2010, 11, 7, 5, 30, 0, 0}));
}

TEST(TimeTest, DatesFarOutsideTheEpochAreConverted) {
  const ScopedTimeZone zone("UTC");
  for (const DateTime& t : {DateTime{1, 1, 1, 0, 0, 0, 0}, DateTime{1600, 2, 29, 1, 2, 3, 4},
                            DateTime{1899, 12, 30, 0, 0, 0, 0}, DateTime{1969, 12, 31, 23, 59, 59, 999},
                            DateTime{2038, 1, 19, 3, 14, 8, 0}, DateTime{9999, 12, 31, 23, 59, 59, 0}}) {
    EXPECT_EQ(os::UtcToLocal(t), t);
    EXPECT_EQ(os::LocalToUtc(t), t);
  }
}

TEST(TimeTest, OffsetsOfPartHoursAndFarAheadWork) {
  const ScopedTimeZone zone("FAR-13:45");
  EXPECT_EQ(os::UtcToLocal({2010, 12, 31, 12, 0, 0, 0}), (DateTime{2011, 1, 1, 1, 45, 0, 0}));
  EXPECT_EQ(os::LocalToUtc({2011, 1, 1, 1, 45, 0, 0}), (DateTime{2010, 12, 31, 12, 0, 0, 0}));
}

TEST(TimeTest, ChangeOfTheZoneIsSeenAtOnce) {
  const DateTime noon = {2010, 1, 1, 12, 0, 0, 0};
  {
    const ScopedTimeZone zone("UTC");
    EXPECT_EQ(os::UtcToLocal(noon).hour, 12);
  }
  const ScopedTimeZone zone(kNewYork);
  EXPECT_EQ(os::UtcToLocal(noon).hour, 7);
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
  const ScopedTimeZone zone(kBerlin);
  int repeated = 0;
  for (std::int64_t hour = 0; hour < 365 * 24; ++hour) {
    const DateTime utc = FromEpoch(1262304000 + hour * 3600);  // from 2010-01-01
    const DateTime back = os::LocalToUtc(os::UtcToLocal(utc));
    if (back != utc) ++repeated;
  }
  EXPECT_EQ(repeated, 1);  // the second pass through the hour that the change back repeats
}

TEST(TimeTest, NowIsTheClockOfTheZone) {
  const ScopedTimeZone zone("FAR-13:45");  // far from any real one, and without changes
  const auto clock = [] {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
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
