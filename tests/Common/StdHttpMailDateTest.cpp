#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Common/StdHttp.h"
#include "Standalone/Chance.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

struct DateRow {
  const char* mail;
  const char* display;
};

void ExpectDates(std::initializer_list<DateRow> rows, std::string (*read)(std::string) = MailDateToDisplay) {
  for (const DateRow& row : rows)
    EXPECT_EQ(read(row.mail), row.display) << "'" << row.mail << "'";
}

TEST(MailDateToDisplay, ReadsTheDateOfAMail) {
  ExpectDates({
      {"Sun, 9 May 2010 14:30:05 +0200", "09.05.2010 14:30:05"},
      {"9 May 98 14:30:05 GMT", "09.05.1998 14:30:05"},
      {"  Sun,  09  May  2010  14:30:05  ", "09.05.2010 14:30:05"},
      {"Sun 9 May 2010 14:30:05", "09.05.2010 14:30:05"},
      {"Sunday, 9 May 2010 14:30:05", "09.05.2010 14:30:05"},
      {"Son, 9 May 2010 14:30:05", "09.05.2010 14:30:05"},
      {"9 May 2010 14:30", "09.05.2010 14:30:00"},
      {"9 May 2010", "09.05.2010 00:00:00"},
      {"31 Dec 2010 23:59:59 -0800", "31.12.2010 23:59:59"},
  });
}

TEST(MailDateToDisplay, KnowsEveryMonth) {
  constexpr const char* names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (int month = 1; month <= 12; ++month) {
    const std::string number = (month < 10 ? "0" : "") + std::to_string(month);
    EXPECT_EQ(MailDateToDisplay(std::string("1 ") + names[month - 1] + " 2010 01:02:03"),
              "01." + number + ".2010 01:02:03");
  }
}

TEST(MailDateToDisplay, PlacesYears) {
  ExpectDates({
      {"9 May 10 14:30:05", "09.05.2010 14:30:05"},
      {"9 May 49 14:30:05", "09.05.2049 14:30:05"},
      {"9 May 50 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 79 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 80 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 99 14:30:05", "09.05.1999 14:30:05"},
      {"9 May 100 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 1975 14:30", "09.05.1980 14:30:00"},
      {"9 May 1979 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 1980 14:30:05", "09.05.1980 14:30:05"},
      {"9 May 10000 14:30:05", "09.05.10000 14:30:05"},
      {"9 May year 14:30:05", "09.05.2000 14:30:05"},
  });
}

TEST(MailDateToDisplay, ReadsTheYearBehindTheTime) {
  ExpectDates({
      {"Sun May 9 14:30:05 2010", "09.05.2010 14:30:05"},
      {"9 May 14:30:05 2010", "09.05.2010 14:30:05"},
      {"Sun May  9 14:30:05 CEST 2010", "09.05.2010 14:30:05"},
      {"9 May 14:30:05 GMT 2010", "09.05.2010 14:30:05"},
      {"9 May 14:30:05", "09.05.2000 14:30:05"},
      {"9 May 14:30:05 GMT", "09.05.2000 14:30:05"},
      {"9 May 14:30:05 +0200 2010",
       "09.05.1980 14:30:05"},  // a zone that reads as a number passes for a year
  });
}

TEST(MailDateToDisplay, ReadsTheMonthBeforeTheDay) {
  ExpectDates({
      {"May 9 2010 14:30:05", "09.05.2010 14:30:05"},
      {"May 31 2010 14:30:05", "31.05.2010 14:30:05"},
      {"May 2010 14:30:05", "01.05.2010 14:30:05"},
      {"May 32 14:30:05", "01.05.2032 14:30:05"},
  });
}

TEST(MailDateToDisplay, ReadsDashesAndSlashes) {
  ExpectDates({
      {"2010-05-09 14:30:05", "09.05.2010 14:30:05"},
      {"10-5-9 4:3:2", "09.05.2010 04:03:02"},
      {"2010-05-09", "09.05.2010 00:00:00"},
      {"2010/05/09 14:30:05", "09.05.2010 14:30:05"},
      {"2010/13/09 14:30:05", "13.09.2010 14:30:05"},
      {"05/09/2010 14:30:05", "09.05.2010 14:30:05"},
      {"13/09/2010 14:30:05", "13.09.2010 14:30:05"},
      {"05/09/32 14:30:05", "09.05.2032 14:30:05"},
      {"05/09/31 14:30:05", "31.09.2005 14:30:05"},
      {"05/09/2010", "09.05.2010 00:00:00"},
  });
}

TEST(MailDateToDisplay, LooksForTheFormInTheFirstEightCharacters) {
  ExpectDates({
      {"9 May 10 14:30:05 -0200", "09.05.2010 14:30:05"},
      {"1234567-05-09 14:30:05", "09.05.1234567 14:30:05"},
      {"12345678-05-09 14:30:05", "12345678.00.2000 00:00:00"},
      {"9 May-10 14:30:05", "00.1014.2009 00:00:00"},
  });
}

TEST(MailDateToDisplay, ClearsEachTimeFieldOutOfRangeByItself) {
  ExpectDates({
      {"9 May 2010 25:30:05", "09.05.2010 00:30:05"},
      {"9 May 2010 24:30:05", "09.05.2010 00:30:05"},
      {"9 May 2010 23:60:05", "09.05.2010 23:00:05"},
      {"9 May 2010 23:59:60", "09.05.2010 23:59:00"},
      {"9 May 2010 -1:30:05", "09.05.2010 00:30:05"},
      {"9 May 2010 x:y:z", "09.05.2010 00:00:00"},
      {"9 May 2010 14", "09.05.2010 14:00:00"},
      {"9 May 2010 14:30:05+0200", "09.05.2010 14:30:05"},
  });
}

TEST(MailDateToDisplay, MakesSomeDateOfAnything) {
  ExpectDates({
      {"", "00.01.2000 00:00:00"},
      {" ", "00.01.2000 00:00:00"},
      {",", "00.01.2000 00:00:00"},
      {"Sun,", "00.01.2000 00:00:00"},
      {"nonsense", "00.01.2000 00:00:00"},
      {"9 Mai 2010 14:30:05", "09.00.2010 14:30:05"},
      {"9 may 2010 14:30:05", "09.00.2010 14:30:05"},
      {"9 5 2010 14:30:05", "09.00.2010 14:30:05"},
      {"99 May 2010 14:30:05", "99.05.2010 14:30:05"},
      {"-9 May 2010 14:30:05", "00.09.2000 00:00:00"},
  });
}

TEST(MailDateToDisplay, KeepsTheYearAsItIsWrittenToday) {
  const ScopedRules today({.mailYears = MailYears::AsWritten});
  ExpectDates({
      {"9 May 50 14:30:05", "09.05.1950 14:30:05"},
      {"9 May 49 14:30:05", "09.05.2049 14:30:05"},
      {"9 May 99 14:30:05", "09.05.1999 14:30:05"},
      {"9 May 00 14:30:05", "09.05.2000 14:30:05"},
      {"9 May 110 14:30:05", "09.05.2010 14:30:05"},
      {"9 May 1975 14:30:05", "09.05.1975 14:30:05"},
      {"Sun, 9 May 2010 14:30:05 +0200", "09.05.2010 14:30:05"},
      {"1969-12-31 23:59:59", "31.12.1969 23:59:59"},
      {"9999-12-31 23:59:59", "31.12.9999 23:59:59"},
      {"", "00.01.2000 00:00:00"},
  });
}

TEST(MailDateToDisplay, FindsTheYearBehindTheTime) {
  ExpectDates({
      {"Sun May 9 14:30:05 2010", "09.05.2010 14:30:05"},
      {"Sun May 9 14:30:05 GMT 2010", "09.05.2010 14:30:05"},
      // The first token that reads as a number is the year, whatever stands after it.
      {"9 May 14:30:05 2010 +0200", "09.05.2010 14:30:05"},
      // One that reads as 0 belongs to the time, with a blank in front.
      {"9 May 14:30:05 0 2010", "09.05.2010 14:30:05"},
      {"9 May 14:30:05", "09.05.2000 14:30:05"},
      {"9 May 14:30:05 GMT", "09.05.2000 14:30:05"},
  });
}

TEST(MailDateToDisplay, TakesTwelveForAMonthAndThirtyOneForADay) {
  ExpectDates({
      {"12/25/2010 14:30:05", "25.12.2010 14:30:05"},
      {"13/25/2010 14:30:05", "13.25.2010 14:30:05"},
      {"12/11/2010 14:30:05", "11.12.2010 14:30:05"},
      {"Dec 12 2010 14:30:05", "12.12.2010 14:30:05"},
      {"Dec 31 2010 14:30:05", "31.12.2010 14:30:05"},
      // No day, so it is a year, and the day is the first. Its place is the time's then.
      {"Dec 32 14:30:05", "01.12.2032 14:30:05"},
  });
}

class DateOfAnyProgram : public testing::Test {
 private:
  ScopedRules rules_{Rules::Today()};
  ScopedTimeZone zone_{"Europe/Berlin"};
};

void ExpectShown(std::initializer_list<DateRow> rows) {
  ExpectDates(rows, ShownMailDate);
}

TEST_F(DateOfAnyProgram, IsReadInEveryForm) {
  ExpectShown({
      {"5 jan 2026 10:00:00 +0000", "05.01.2026 11:00:00"},
      {"MON, 5 JAN 2026 10:00:00 gmt", "05.01.2026 11:00:00"},
      {"5 January 2026 10:00:00 +0000", "05.01.2026 11:00:00"},
      {"September 5, 2026 10:00", "05.09.2026 10:00:00"},
      {"5 Sept. 2026 10:00", "05.09.2026 10:00:00"},
      {"Mon, 05-Jan-26 10:00:00 GMT", "05.01.2026 11:00:00"},
      {"05-JAN-2026 10:00", "05.01.2026 10:00:00"},
      {"5 Jan 98 10:00:00 GMT", "05.01.1998 11:00:00"},
      {"5 Jan 2026 9:05 PM", "05.01.2026 21:05:00"},
      {"1/5/2026 9:05:10 AM", "05.01.2026 09:05:10"},
      {"1/5/2026 12:05 a.m.", "05.01.2026 00:05:00"},
      {"1/5/2026 12:05PM +0000", "05.01.2026 13:05:00"},
      {"2026-01-05T10:00:00Z", "05.01.2026 11:00:00"},
      {"2026-01-05t10:00:00.123+02:00", "05.01.2026 09:00:00"},
      {"2026-01-05 10:00:00 -0500", "05.01.2026 16:00:00"},
      {"2026-01-05T10:00", "05.01.2026 10:00:00"},
      {"05-01-2026 10:00", "05.01.2026 10:00:00"},
      {"Mon Jan 05 2026 10:00:00 GMT+0100 (CET)", "05.01.2026 10:00:00"},
      {"Mon Jan  5 10:00:00 CST 2026", "05.01.2026 17:00:00"},
      {"10:00:00 Mon 5 Jan 2026 +0000", "05.01.2026 11:00:00"},
      {"Mon, 5 Jan (today) 2026 10:00 (now) +0000", "05.01.2026 11:00:00"},
      {"2026 Jan 5 10:00:00", "05.01.2026 10:00:00"},
  });
}

TEST_F(DateOfAnyProgram, MayHaveDotsAndTimesWithoutColons) {
  ExpectShown({
      {"Mon, 5. Jan 2026 10:00:00 +0000", "05.01.2026 11:00:00"},
      {"5. Jan 2026 10:00:00", "05.01.2026 10:00:00"},
      {"5.Jan 2026 10:00", "05.01.2026 10:00:00"},
      {"5. Jan. 2026 10:00", "05.01.2026 10:00:00"},
      {"5th Jan 2026 10:00", "05.01.2026 10:00:00"},
      {"10:00 5th Jan 2026 EST", "05.01.2026 16:00:00"},
      {"Jan 22nd 2026; 10:00", "22.01.2026 10:00:00"},
      {"5Jan2026 10:00:00 +0000", "05.01.2026 11:00:00"},
      {"05.01.2026 10:30:05", "05.01.2026 10:30:05"},
      {"2026.01.05 10.30", "05.01.2026 10:30:00"},
      {"Mon, 5 Jan 2026 10.30 +0000", "05.01.2026 11:30:00"},
      {"Mon, 5 Jan 2026 10.30.05+0000", "05.01.2026 11:30:05"},
      {"Mon, 5 Jan 2026 10h30 +0000", "05.01.2026 11:30:00"},
      {"Mon, 5 Jan 2026 10h", "05.01.2026 10:00:00"},
      {"Mon, 5 Jan 2026 1030 +0000", "05.01.2026 11:30:00"},
      {"2026-01-05 10 GMT", "05.01.2026 11:00:00"},
      {"Mon, 5 Jan 2026 10 :30 : 05 +0000", "05.01.2026 11:30:05"},
      {"Mon, 5 Jan 2026 10 (h) :30 +0000", "05.01.2026 11:30:00"},
      {"5 Jan 10:30: 2026", "05.01.2026 10:30:00"},
      {"5 Jan 10:30 0000 2026", "05.01.2026 10:30:00"},
      {"01.02.03 10:00", ""},
      {"Mon, 5 Jan 2026 10:00:00 (x", "05.01.2026 10:00:00"},
      {"5 Jan : 2026 :", "05.01.2026 00:00:00"},
  });
}

TEST_F(DateOfAnyProgram, MayBeGerman) {
  ExpectShown({
      {"Montag, 5. Januar 2026 10:00:00 +0000", "05.01.2026 11:00:00"},
      {"Mo, 5. Februar 2026", "05.02.2026 00:00:00"},
      {"Mo, 5 M\xC3\xA4rz 2026", "05.03.2026 00:00:00"},
      {"Mo, 5 M\xE4rz 2026", "05.03.2026 00:00:00"},
      {"Mo, 5. Maerz 2026", "05.03.2026 00:00:00"},
      {"Mo, 5. Mrz. 2026", "05.03.2026 00:00:00"},
      {"Mo, 5. Mai 2026", "05.05.2026 00:00:00"},
      {"Mo, 5. Juni 2026", "05.06.2026 00:00:00"},
      {"Mo, 5. Juli 2026", "05.07.2026 00:00:00"},
      {"Mo, 5. Okt. 2026", "05.10.2026 00:00:00"},
      {"Mo, 5. Dezember 2026", "05.12.2026 00:00:00"},
  });
}

TEST_F(DateOfAnyProgram, HasWeekdaysThatBeginAsMonthsDo) {
  ExpectShown({{"mar, 5 Jan 2026 10:00:00 +0000", "05.01.2026 11:00:00"},
               {"Mar., 5 Feb 2026", "05.02.2026 00:00:00"},
               {"Mar, 5 Mar 2026 10:00:00 JAN", "05.03.2026 10:00:00"}});
}

// A day of the test below, written in one of many ways.
struct WrittenDate {
  std::string mail;
  std::string display;
};

class DateWriter {
 public:
  explicit DateWriter(std::uint64_t seed) : chance_(seed) {}

  WrittenDate Next() {
    constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::uint64_t day = 1 + chance_.Below(31);
    const std::uint64_t month = chance_.Below(12);
    const std::string year = std::to_string(1980 + chance_.Below(70));
    WrittenDate date = {"", Two(day) + "." + Two(month + 1) + "." + year};
    const std::string time = Time(date.display);
    const std::string dayText = One({std::to_string(day), Two(day)}) + One({"", "", "", ".", "th", ";"});
    const std::string monthText = months[month] + One({"", "", "", ".", "uary"});
    const std::string yearText = One({year, year, year.substr(2)}) + One({"", "", ".", ";"});
    const std::string blank = One({" ", " ", "  "});
    const std::string monthNumber = One({Two(month + 1), std::to_string(month + 1)});
    const std::string divider = One({"-", "/"});
    date.mail = One({dayText + blank + monthText + blank + yearText + blank + time,
                     monthText + blank + dayText + blank + yearText + blank + time,
                     monthText + blank + dayText + blank + time + blank + yearText,
                     year + divider + monthNumber + divider + Two(day) + blank + time,
                     monthNumber + "/" + Two(day) + "/" + year + blank + time});
    date.mail.insert(0, One({"", "Mon, ", "Mon,", "Mon ", "Mar, ", "Montag, ", " "}));
    return date;
  }

 private:
  std::string One(const std::vector<std::string>& texts) { return texts[chance_.Below(texts.size())]; }
  static std::string Two(std::uint64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }

  std::string Time(std::string& display) {
    const std::uint64_t hour = chance_.Below(24);
    const std::string minute = Two(chance_.OneIn(2) ? 0 : chance_.Below(60));
    const std::string second = Two(chance_.OneIn(2) ? 0 : chance_.Below(60));
    display += " " + Two(hour) + ":" + minute + ":" + second;
    const std::string divider = One({":", ":", ":", " :", ": ", " : ", ".", "h"});
    std::string time = One({Two(hour), std::to_string(hour)}) + divider + minute;
    if (second != "00" || chance_.OneIn(2)) time += divider + second;
    if (minute == "00" && second == "00" && chance_.OneIn(4)) time = Two(hour) + One({"", "00", ".", "h"});
    return time + One({"", " +0100", "+0100", " GMT", " -0800 (PST)", " (CET)", ";x", " 0000", " h", ".000"});
  }

  Chance chance_;
};

TEST(DateOfBothRules, IsRightTodayWhereItWasRightByTheRulesOfOld) {
  DateWriter writer(2026);
  int wereRight = 0;
  for (int i = 0; i < 20000; ++i) {
    const WrittenDate date = writer.Next();
    if (MailDateToDisplay(date.mail) != date.display) continue;
    ++wereRight;
    const ScopedRules today(Rules::Today());
    ASSERT_EQ(MailDateToDisplay(date.mail), date.display) << "'" << date.mail << "'";
  }
  EXPECT_GT(wereRight, 3000);
}

// What the rules of old read right is read alike.
TEST_F(DateOfAnyProgram, IsReadAsBeforeWhereThatWasRight) {
  ExpectDates({
      {"Sun, 9 May 2010 14:30:05 +0200", "09.05.2010 14:30:05"},
      {"  Sun,  09  May  2010  14:30:05  ", "09.05.2010 14:30:05"},
      {"Sunday, 9 May 2010 14:30:05", "09.05.2010 14:30:05"},
      {"9 May 2010", "09.05.2010 00:00:00"},
      {"9 May 2010 25:30:60", "09.05.2010 00:30:00"},
      {"9 May 2010 14:30:05+0200", "09.05.2010 14:30:05"},
      {"9 May 14:30:05 GMT 2010", "09.05.2010 14:30:05"},
      {"9 May 14:30:05 +0200 2010", "09.05.2010 14:30:05"},
      {"May 2010 14:30:05", "01.05.2010 14:30:05"},
      {"May 32 14:30:05", "01.05.2032 14:30:05"},
      {"10-5-9 4:3:2", "09.05.2010 04:03:02"},
      {"2010/05/09 14:30:05", "09.05.2010 14:30:05"},
      {"2010/13/09 14:30:05", "13.09.2010 14:30:05"},
      {"05/09/2010 14:30:05", "09.05.2010 14:30:05"},
      {"13/09/2010 14:30:05", "13.09.2010 14:30:05"},
      {"05/09/32 14:30:05", "09.05.2032 14:30:05"},
      {"05/09/31 14:30:05", "31.09.2005 14:30:05"},
  });
}

TEST_F(DateOfAnyProgram, IsNoneWhereNoDayIsTold) {
  for (const char* text : {"",           " ",     ",",        "Sun,",        "nonsense",
                           "14:30:05",   "9 May", "9 5 2010", "99 May 2010", "0000-00-00 00:00:00",
                           "9 May year", "31",    "//",       "--",          "1/2/",
                           "T",          "5T",    ":",        "(",           "+"})
    EXPECT_EQ(MailDateToDisplay(text), "") << text;
}

TEST(ShownMailDate, IsBySendersClockByTheRulesOfOld) {
  const ScopedTimeZone zone("Europe/Berlin");
  EXPECT_EQ(ShownMailDate("Sun, 9 May 2010 14:30:05 -0800"), "09.05.2010 14:30:05");
}

TEST(ShownMailDate, IsByReadersClockToday) {
  const ScopedRules rules(Rules::Today());
  const ScopedTimeZone zone("Europe/Berlin");
  ExpectShown({
      {"Sun, 9 May 2010 14:30:05 +0200", "09.05.2010 14:30:05"},
      {"Sun, 9 May 2010 14:30:05 +0000", "09.05.2010 16:30:05"},
      {"Sat, 9 Jan 2010 14:30:05 +0000", "09.01.2010 15:30:05"},
      {"31 Dec 2010 23:59:59 -0800 (PST)", "01.01.2011 08:59:59"},
      {"31 Dec 2010 23:59:59 -0800(PST)", "01.01.2011 08:59:59"},
      {"Thu, 1 Jan 2026 00:10:00 +0545", "31.12.2025 19:25:00"},
      {"Mon, 29 Feb 2016 01:00:00 +0900", "28.02.2016 17:00:00"},
      {"9 May 98 14:30:05 GMT", "09.05.1998 16:30:05"},
      {"9 May 2010 14:30 EST", "09.05.2010 21:30:00"},
      {"Sun May  9 14:30:05 UTC 2010", "09.05.2010 16:30:05"},
      {"Sun May  9 14:30:05 CEST 2010", "09.05.2010 14:30:05"},
  });
}

TEST(ShownMailDate, StaysAsWrittenWhereNoMomentIsTold) {
  const ScopedRules rules(Rules::Today());
  const ScopedTimeZone zone("Europe/Berlin");
  ExpectShown({
      {"Sun, 9 May 2010 14:30:05", "09.05.2010 14:30:05"},
      {"Sun, 9 May 2010 14:30:05 XYZ", "09.05.2010 14:30:05"},
      {"Sun, 9 May 2010 14:30:05 +02", "09.05.2010 14:30:05"},
      {"Sun, 9 May 2010 14:30:05 +02:0", "09.05.2010 14:30:05"},
      {"31 Feb 2010 14:30:05 -0800", "31.02.2010 14:30:05"},
      {"9 May 10000 14:30:05 -0800", "09.05.10000 14:30:05"},
      {"31 Dec 9999 23:30:05 -0800", "01.01.10000 08:30:05"},
  });
}

}  // namespace
}  // namespace vorlent
