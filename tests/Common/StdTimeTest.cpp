#include "Common/StdTime.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

TEST(FormatMoment, PadsEachField) {
  const DateTime moment = {2010, 5, 9, 4, 3, 2, 999};
  EXPECT_EQ(FormatStamp(moment), "20100509040302");
  EXPECT_EQ(FormatDisplay(moment), "09.05.2010 04:03:02");
  EXPECT_EQ(FormatStamp({999, 12, 31, 23, 59, 59, 0}), "09991231235959");
}

// --- Seconds since 1970 ---

TEST(StampToEpoch, CountsSecondsWithoutAZone) {
  // date -u -d '2010-05-09 14:30:05' +%s, and so on
  EXPECT_EQ(StampToEpoch("19700101000000"), 0);
  EXPECT_EQ(StampToEpoch("19700101000001"), 1);
  EXPECT_EQ(StampToEpoch("20100509143005"), 1273415405);
  EXPECT_EQ(StampToEpoch("20000229000000"), 951782400);
  EXPECT_EQ(StampToEpoch("20000301000000"), 951868800);
  EXPECT_EQ(StampToEpoch("20041231235959"), 1104537599);
  EXPECT_EQ(StampToEpoch(""), 0);
}

TEST(StampToEpoch, OverflowsAtTheEndOfJanuary2038) {
  EXPECT_EQ(StampToEpoch("20380119031407"), 2147483647);
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("20380119031408"); }), 6);
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("20380120000000"); }), 6);
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("20380131000000"); }), 6);
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("99991231235959"); }), 6);
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("9e990101000000"); }), 6) << "a year is any number";
  EXPECT_EQ(SwallowedNumber([] { StampToEpoch("9e7 0101000000"); }), 6);
}

TEST(StampToEpoch, CountsOnBeyondThirtyTwoBitsToday) {
  const ScopedRules rules({.widths = Widths::Ample});
  for (const auto& [stamp, seconds] : {std::pair<std::string, std::int64_t>{"20380119031408", 2147483648},
                                       {"20380119031407", 2147483647},
                                       {"99991231235959", 253402300799},
                                       {"19691231235959", -1},
                                       {"01000101000000", -59011459200}}) {
    EXPECT_EQ(StampToEpoch(stamp), seconds);
    EXPECT_EQ(EpochToStamp(seconds), stamp);
  }
  EXPECT_EQ(EpochToStamp(253402300800), "99991231235959");
  EXPECT_EQ(EpochToStamp(std::numeric_limits<std::int64_t>::max()), "99991231235959");
  EXPECT_EQ(EpochToStamp(std::numeric_limits<std::int64_t>::min()), "01000101000000");
}

TEST(StampToEpoch, ReadsWhatFieldsThereAre) {
  EXPECT_EQ(StampToEpoch("20100509"), 1273363200) << "midnight";
  EXPECT_EQ(StampToEpoch("1970"), -86400) << "a missing day counts as 0";
  EXPECT_EQ(StampToEpoch("19690101000000"), 0) << "no year before 1970 is counted";
  EXPECT_EQ(StampToEpoch("19701301000000"), 31536000) << "the thirteenth month begins after December";
  EXPECT_EQ(StampToEpoch("19700101 1 2 3"), 3723);
  EXPECT_EQ(StampToEpoch("19700101xxxxxx"), 0);
}

TEST(EpochToStamp, WritesAStamp) {
  EXPECT_EQ(EpochToStamp(0), "19700101000000");
  EXPECT_EQ(EpochToStamp(1), "19700101000001");
  EXPECT_EQ(EpochToStamp(86399), "19700101235959");
  EXPECT_EQ(EpochToStamp(86400), "19700102000000");
  EXPECT_EQ(EpochToStamp(1273415405), "20100509143005");
  EXPECT_EQ(EpochToStamp(951782400), "20000229000000");
  EXPECT_EQ(EpochToStamp(1104537599), "20041231235959");
  EXPECT_EQ(EpochToStamp(1104537600), "20050101000000");
  EXPECT_EQ(EpochToStamp(2147483647), "20380119031407");
}

TEST(EpochToStamp, UndoesStampToEpoch) {
  for (std::int64_t t = 0; t <= 2147483647; t += 86400 * 3 + 3607) {
    const auto seconds = static_cast<std::int32_t>(t);
    ASSERT_EQ(StampToEpoch(EpochToStamp(seconds)), seconds);
  }
}

// Both count as they are laid down: a year and a month at a time.
std::optional<std::int32_t> CountedEpoch(std::int32_t year, std::int32_t month, std::int32_t day) {
  std::int64_t days = day - 1;
  for (std::int32_t y = 1970; y < year; ++y)
    days += DaysInYear(y);
  for (std::int32_t m = 1; m < month; ++m)
    days += DaysInMonth(m, year);
  const std::int64_t seconds = days * 86400;
  if (seconds != static_cast<std::int32_t>(seconds)) return std::nullopt;
  return static_cast<std::int32_t>(seconds);
}

TEST(StampToEpoch, CountsEachYearAndMonth) {
  for (std::int32_t year = 0; year <= 9999; year += year < 1960 || year >= 2050 ? 31 : 1) {
    for (std::int32_t month = 0; month <= 14; ++month) {
      for (const std::int32_t day : {0, 1, 28, 31, 99}) {
        const std::string stamp =
            PaddedNumber(year, 4) + PaddedNumber(month, 2) + PaddedNumber(day, 2) + "000000";
        std::optional<std::int32_t> epoch;
        const int number = SwallowedNumber([&] { epoch = StampToEpoch(stamp); });
        ASSERT_EQ(epoch, CountedEpoch(year, month, day)) << stamp;
        ASSERT_EQ(number, epoch ? 0 : 6) << stamp;
      }
    }
  }
}

std::string CountedStamp(std::int32_t epoch) {
  std::int32_t days = epoch / 86400 + 1;
  DateTime date;
  for (; days > DaysInYear(date.year); ++date.year)
    days -= DaysInYear(date.year);
  for (; days > DaysInMonth(date.month, date.year); ++date.month)
    days -= DaysInMonth(date.month, date.year);
  return PaddedNumber(date.year, 4) + PaddedNumber(date.month, 2) + PaddedNumber(days, 2);
}

TEST(EpochToStamp, CountsEachDay) {
  for (std::int64_t epoch = -400 * 86400; epoch <= 2147483647; epoch += 86400) {
    const auto seconds = static_cast<std::int32_t>(epoch);
    const std::string stamp = EpochToStamp(seconds);
    ASSERT_EQ(stamp.substr(0, stamp.size() - 6), CountedStamp(seconds)) << seconds;
  }
}

TEST(DaysInYear, KnowsTheGregorianRule) {
  EXPECT_EQ(DaysInYear(2000), 366);
  EXPECT_EQ(DaysInYear(1900), 365);
  EXPECT_EQ(DaysInYear(2100), 365);
  EXPECT_EQ(DaysInYear(2004), 366);
  EXPECT_EQ(DaysInYear(2001), 365);
}

TEST(DaysInYear, KnowsEveryYearOf32Bits) {
  EXPECT_EQ(DaysInYear(2'000'000'000), 366);
  EXPECT_EQ(DaysInYear(2'000'000'100), 365);
  EXPECT_EQ(DaysInYear(0), 366);
  EXPECT_EQ(DaysInYear(-4), 366);
  EXPECT_EQ(DaysInYear(-100), 365);
  EXPECT_EQ(DaysInMonth(2, 2'000'000'004), 29);
  EXPECT_EQ(DaysInMonth(2, -2'000'000'001), 28);
}

TEST(DaysInMonth, KnowsEveryMonth) {
  const std::vector<int> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int month = 1; month <= 12; ++month) {
    EXPECT_EQ(DaysInMonth(month, 2001), days[static_cast<std::size_t>(month - 1)]) << month;
  }
  EXPECT_EQ(DaysInMonth(2, 2004), 29);
  EXPECT_EQ(DaysInMonth(2, 1900), 28);
  EXPECT_EQ(DaysInMonth(2, 2000), 29);
  EXPECT_EQ(DaysInMonth(0, 2001), 31);
  EXPECT_EQ(DaysInMonth(13, 2001), 31);
  EXPECT_EQ(DaysInMonth(-4, 2001), 31);
}

// --- Reading dates ---

TEST(ParseDate, ReadsDisplayText) {
  const DateTime full = {2010, 5, 9, 14, 30, 5, 0};
  EXPECT_EQ(ParseDate("09.05.2010 14:30:05"), full);
  EXPECT_EQ(ParseDate("9.5.2010 14:30:05"), full);
  EXPECT_EQ(ParseDate("  09.05.2010   14:30:05 "), full);
  EXPECT_EQ(ParseDate("9.5.10 14:30:5"), full);
  EXPECT_EQ(ParseDate("09.05.2010 14:30"), (DateTime{2010, 5, 9, 14, 30, 0, 0}));
  EXPECT_EQ(ParseDate("09.05.2010"), (DateTime{2010, 5, 9, 0, 0, 0, 0}));
  EXPECT_EQ(ParseDate("29.02.2004 23:59:59"), (DateTime{2004, 2, 29, 23, 59, 59, 0}));
}

TEST(ParseDate, PutsTwoDigitYearsBetween1930And2029) {
  EXPECT_EQ(ParseDate("01.01.00").year, 2000);
  EXPECT_EQ(ParseDate("01.01.29").year, 2029);
  EXPECT_EQ(ParseDate("01.01.30").year, 1930);
  EXPECT_EQ(ParseDate("01.01.99").year, 1999);
  EXPECT_EQ(ParseDate("01.01.9").year, 2009);
  EXPECT_EQ(ParseDate("01.01.0100").year, 100);
}

TEST(ParseDate, RefusesWhatIsNoDate) {
  for (const char* text : {"",
                           " ",
                           "no date",
                           "31.02.2010",
                           "29.02.2001",
                           "31.04.2010",
                           "00.05.2010",
                           "32.05.2010",
                           "09.00.2010",
                           "09.13.2010",
                           "09.05.",
                           "09.05",
                           "09.05.2010 24:00:00",
                           "09.05.2010 14:60:00",
                           "09.05.2010 14:30:60",
                           "09.05.2010 14",
                           "09.05.2010 14:",
                           "09.05.2010 14:30:",
                           "09.05.2010 14:30:05 x",
                           "09.05.2010x",
                           "09.05.20100",
                           "009.05.2010",
                           "09.05.099",
                           "-9.05.2010",
                           "09.05.2010 -1:30",
                           "09.05.2010 14:30:005",
                           "14:30:05",
                           "09. 05.2010",
                           "09/05/2010"}) {
    EXPECT_EQ(SwallowedNumber([&] { ParseDate(text); }), 13) << "'" << text << "'";
  }
}

// --- Time zones ---

struct ZoneRow {
  const char* zone;
  const char* from;
  const char* to;
};

// Printed by
//   for m in moments.split():
//     u = datetime.strptime(m, "%Y%m%d%H%M%S").replace(tzinfo=timezone.utc)
//     print(u.strftime("%d.%m.%Y %H:%M:%S"), u.astimezone(ZoneInfo(zone)).strftime("%d.%m.%Y %H:%M:%S"))
// of Python 3.11 with zoneinfo: both sides of changes, double summer time, rules since given up, years past
// 2037.
constexpr ZoneRow kUtcToLocal[] = {
    {"Europe/Berlin", "28.03.2010 00:59:59", "28.03.2010 01:59:59"},
    {"Europe/Berlin", "28.03.2010 01:00:00", "28.03.2010 03:00:00"},
    {"Europe/Berlin", "31.10.2010 00:59:59", "31.10.2010 02:59:59"},
    {"Europe/Berlin", "31.10.2010 01:00:00", "31.10.2010 02:00:00"},
    {"Europe/Berlin", "31.10.2010 01:59:59", "31.10.2010 02:59:59"},
    {"Europe/Berlin", "09.05.2010 12:30:05", "09.05.2010 14:30:05"},
    {"Europe/Berlin", "31.12.2009 23:00:00", "01.01.2010 00:00:00"},
    {"Europe/Berlin", "24.05.1945 00:00:00", "24.05.1945 03:00:00"},
    {"Europe/Berlin", "01.07.1975 12:00:00", "01.07.1975 13:00:00"},
    {"Europe/Berlin", "01.07.2036 12:00:00", "01.07.2036 14:00:00"},
    {"America/New_York", "14.03.2010 06:59:59", "14.03.2010 01:59:59"},
    {"America/New_York", "14.03.2010 07:00:00", "14.03.2010 03:00:00"},
    {"America/New_York", "07.11.2010 05:59:59", "07.11.2010 01:59:59"},
    {"America/New_York", "07.11.2010 06:00:00", "07.11.2010 01:00:00"},
    {"America/New_York", "02.04.2006 06:59:59", "02.04.2006 01:59:59"},
    {"America/New_York", "02.04.2006 07:00:00", "02.04.2006 03:00:00"},
    {"America/New_York", "01.07.2038 12:00:00", "01.07.2038 08:00:00"},
    {"Asia/Kolkata", "01.01.2010 00:00:00", "01.01.2010 05:30:00"},
    {"Asia/Kolkata", "01.07.2010 18:30:00", "02.07.2010 00:00:00"},
    {"UTC", "28.03.2010 01:00:00", "28.03.2010 01:00:00"},
    {"UTC", "02.01.1601 00:00:00", "02.01.1601 00:00:00"},
};

TEST(UtcToLocalText, FollowsTheRulesOfTheDate) {
  for (const ZoneRow& row : kUtcToLocal) {
    const ScopedTimeZone zone(row.zone);
    EXPECT_EQ(UtcToLocalText(ParseDate(row.from)), row.to) << row.zone << " " << row.from;
  }
}

TEST(UtcToLocalText, DropsMilliseconds) {
  const ScopedTimeZone zone("Europe/Berlin");
  EXPECT_EQ(UtcToLocalText({2010, 5, 9, 12, 30, 5, 999}), "09.05.2010 14:30:05");
}

// As above, with `datetime.strptime(...).replace(tzinfo=ZoneInfo(zone)).astimezone(timezone.utc)`, whose rule
// for skipped and repeated times is the one required: the offset before the change, the first occurrence.
constexpr ZoneRow kLocalToUtc[] = {
    {"Europe/Berlin", "28.03.2010 01:59:59", "28.03.2010 00:59:59"},
    {"Europe/Berlin", "28.03.2010 02:00:00", "28.03.2010 01:00:00"},
    {"Europe/Berlin", "28.03.2010 02:30:00", "28.03.2010 01:30:00"},
    {"Europe/Berlin", "28.03.2010 03:00:00", "28.03.2010 01:00:00"},
    {"Europe/Berlin", "31.10.2010 01:59:59", "30.10.2010 23:59:59"},
    {"Europe/Berlin", "31.10.2010 02:00:00", "31.10.2010 00:00:00"},
    {"Europe/Berlin", "31.10.2010 02:30:00", "31.10.2010 00:30:00"},
    {"Europe/Berlin", "31.10.2010 03:00:00", "31.10.2010 02:00:00"},
    {"Europe/Berlin", "09.05.2010 14:30:05", "09.05.2010 12:30:05"},
    {"Europe/Berlin", "01.01.2010 00:00:00", "31.12.2009 23:00:00"},
    {"Europe/Berlin", "01.07.1975 13:00:00", "01.07.1975 12:00:00"},
    {"America/New_York", "14.03.2010 01:59:59", "14.03.2010 06:59:59"},
    {"America/New_York", "14.03.2010 02:30:00", "14.03.2010 07:30:00"},
    {"America/New_York", "14.03.2010 03:00:00", "14.03.2010 07:00:00"},
    {"America/New_York", "07.11.2010 01:30:00", "07.11.2010 05:30:00"},
    {"America/New_York", "07.11.2010 02:00:00", "07.11.2010 07:00:00"},
    {"America/New_York", "01.04.2006 12:00:00", "01.04.2006 17:00:00"},
    {"America/New_York", "01.04.2007 12:00:00", "01.04.2007 16:00:00"},
    {"Asia/Kolkata", "01.01.2010 05:30:00", "01.01.2010 00:00:00"},
    {"Asia/Kolkata", "02.07.2010 00:00:00", "01.07.2010 18:30:00"},
    {"UTC", "28.03.2010 02:30:00", "28.03.2010 02:30:00"},
};

TEST(LocalToUtcText, FollowsTheRulesOfTheDate) {
  for (const ZoneRow& row : kLocalToUtc) {
    const ScopedTimeZone zone(row.zone);
    EXPECT_EQ(LocalToUtcText(row.from), row.to) << row.zone << " " << row.from;
  }
}

TEST(LocalToUtcText, ReadsShortForms) {
  const ScopedTimeZone zone("Europe/Berlin");
  EXPECT_EQ(LocalToUtcText("9.5.10 14:30"), "09.05.2010 12:30:00");
  EXPECT_EQ(LocalToUtcText("09.05.2010"), "08.05.2010 22:00:00");
}

TEST(LocalToUtcText, GivesNothingForWhatIsNoDate) {
  const ScopedTimeZone zone("Europe/Berlin");
  EXPECT_EQ(LocalToUtcText(""), "");
  EXPECT_EQ(LocalToUtcText("tomorrow"), "");
  EXPECT_EQ(LocalToUtcText("31.02.2010 10:00:00"), "");
  EXPECT_EQ(LocalToUtcText("20100509143005"), "");
}

}  // namespace
}  // namespace vorlent
