// Zones as the C library knows them.
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <sstream>
#include <string>

#include "Platform/EpochTime.h"
#include "Platform/Time.h"
#include "Platform/TimeTest.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedEnvironment.h"
#include "Support/SourceTree.h"

namespace vorlent {
namespace {

// "dd.mm.yyyy hh:mm:ss".
DateTime FromDisplay(const std::string& text) {
  DateTime t;
  EXPECT_EQ(std::sscanf(text.c_str(), "%d.%d.%d %d:%d:%d", &t.day, &t.month, &t.year, &t.hour, &t.minute,
                        &t.second),
            6);
  return t;
}

TEST(TimeZonesTest, ZonesOfTheDatabaseAreKeptInBothDirections) {
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

TEST(TimeZonesTest, ZoneIsKnownByItsName) {
  using std::chrono::hours;
  using std::chrono::seconds;
  const auto offset = [](const char* zone, int year, unsigned month) {
    return os::TryZoneOffsetAt(zone, std::chrono::sys_days(std::chrono::year(year) / month / 1));
  };
  EXPECT_EQ(offset("Pacific/Kiritimati", 2026, 1), hours(14));
  EXPECT_EQ(offset("Pacific/Auckland", 2026, 1), hours(13));
  EXPECT_EQ(offset("Pacific/Auckland", 2026, 7), hours(12));
  EXPECT_EQ(offset("America/St_Johns", 2010, 1), -seconds(3 * 3600 + 1800));
  EXPECT_EQ(offset("Europe/Berlin", 1800, 1), seconds(53 * 60 + 28));
  EXPECT_EQ(offset("Etc/GMT+12", 2200, 1), -hours(12));
}

TEST(TimeZonesTest, WhatNamesNoZoneHasNoOffset) {
  for (const char* name : {"", "Nowhere/Land", "Europe", "floating", "/usr/share/zoneinfo/UTC",
                           "../zoneinfo/UTC", "tzdata.zi", "W. Europe Standard Time", "BEGIN:VTIMEZONE\r\n"})
    EXPECT_EQ(os::TryZoneOffsetAt(name, {}), std::nullopt) << name;
}

TEST(TimeZonesTest, EmptyNameStandsForUtcAndNoNameForTheSystemsZone) {
  const DateTime noon = {2010, 1, 1, 12, 0, 0, 0};
  const ScopedEnvironment systems("TZ", nullptr);
  os::UtcToLocal(noon);
  const ScopedEnvironment zone("TZ", "");
  EXPECT_EQ(os::UtcToLocal(noon).hour, 12);
}

}  // namespace
}  // namespace vorlent
