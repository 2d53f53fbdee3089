#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Common/MailDateWords.h"
#include "Common/NumberText.h"
#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Platform/Calendar.h"
#include "Platform/EpochTime.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kMonthNames = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr std::string_view kDayNames = "MonTueWedThuFriSatSun";

// Position of a token in the month names, 0 if it isn't there; an empty token stands at 1.
int MonthPosition(std::string_view token) {
  const std::size_t offset = kMonthNames.find(token);
  return offset == std::string_view::npos ? 0 : static_cast<int>(offset) + 1;
}

// yyyy-mm-dd time
MailDateFields ReadDashed(std::string s) {
  MailDateFields date;
  date.year = CutToken(s, "-");
  date.month = CutToken(s, "-");
  date.day = CutToken(s, " ");
  date.time = s;
  return date;
}

// yyyy/mm/dd time, mm/dd/yyyy time, dd/mm/yyyy time
MailDateFields ReadSlashed(std::string s) {
  MailDateFields date;
  date.year = CutToken(s, "/");
  date.month = CutToken(s, "/");
  date.day = CutToken(s, " ");
  date.time = s;
  if (ReadNumber(date.day) > 31) {
    const MailDateFields read = date;
    date.month = read.year;
    date.day = read.month;
    date.year = read.day;
  }
  if (ReadNumber(date.month) > 12) std::swap(date.month, date.day);
  return date;
}

// The year field turned out to be the time, as in "May 9 14:30:05 GMT 2010".
void ReadYearBehindTime(MailDateFields& date, std::string& rest) {
  date.time = date.year;
  date.year = CutTrimmedToken(rest, " ");
  if (ReadNumber(date.year) != 0) return;
  date.time += " " + date.year;
  date.year = Trim(rest);
}

// Puts the number in place of the month's name, which may stand first.
void NumberMonth(MailDateFields& date) {
  int position = MonthPosition(date.month);
  if (position == 0) {
    position = MonthPosition(date.day);
    if (position > 0 && ReadNumber(date.month) <= 31) {
      date.day = date.month;
    } else if (position > 0) {
      date.year = date.month;
      date.day = "01";
    }
  }
  date.month = NumberText((position + 2) / 3);
}

// RFC 822: [weekday,] day month year time zone, and what mail programs have made of it.
MailDateFields ReadRfc822(std::string s) {
  if (s.find(',') != std::string::npos) {
    CutTrimmedToken(s, ",");
  } else {
    s = Trim(s);
  }
  if (kDayNames.find(s.substr(0, 3)) != std::string_view::npos) s = s.size() > 3 ? Trim(s.substr(3)) : "";

  MailDateFields date;
  date.day = CutTrimmedToken(s, " ");
  date.month = CutTrimmedToken(s, " ");
  date.year = CutTrimmedToken(s, " ");
  if (date.year.find(':') != std::string::npos) {
    ReadYearBehindTime(date, s);
  } else {
    date.time = s;
  }
  NumberMonth(date);
  return date;
}

// By the rules of old some date is made of anything.
MailDateFields ReadFields(std::string s) {
  const std::string_view start = std::string_view(s).substr(0, 8);
  if (start.find('-') != std::string_view::npos) return ReadDashed(std::move(s));
  if (start.find('/') != std::string_view::npos) return ReadSlashed(std::move(s));
  return ReadRfc822(std::move(s));
}

std::optional<MailDateFields> FieldsOf(std::string s) {
  if (CurrentRules().mailDates == MailDates::OfAnyProgram) return ReadDateWords(s);
  return ReadFields(std::move(s));
}

// RFC 5322: two digits below 50 are of this century, other two or three digits count from 1900.
double FullYear(double year) {
  return year < 50 ? year + 2000 : year < 1000 ? year + 1900 : year;
}

double WithCenturyAndFrom1980(double year) {
  if (year < 50) year += 2000;
  if (year < 100) year += 1900;
  return year < 1980 ? 1980 : year;
}

std::string YearText(std::string_view year) {
  const double number = ReadNumber(year);
  const bool isAsWritten = CurrentRules().mailYears == MailYears::AsWritten;
  return PaddedNumber(isAsWritten ? FullYear(number) : WithCenturyAndFrom1980(number), 4);
}

// Two digits, "00" for a number that isn't in 0 to `highest`.
std::string TimeField(std::string_view token, int highest) {
  const double number = ReadNumber(token);
  return PaddedNumber(number >= 0 && number <= highest ? number : 0, 2);
}

// What the letters of a zone mean in mail (RFC 5322), and those that European programs have written.
struct NamedZone {
  std::string_view name;
  int hours;  // ahead of UTC
};
constexpr NamedZone kNamedZones[] = {{"UT", 0},   {"UTC", 0},  {"GMT", 0},  {"Z", 0},    {"EST", -5},
                                     {"EDT", -4}, {"CST", -6}, {"CDT", -5}, {"MST", -7}, {"MDT", -6},
                                     {"PST", -8}, {"PDT", -7}, {"CET", 1},  {"CEST", 2}, {"MET", 1},
                                     {"MEST", 2}, {"EET", 2},  {"EEST", 3}};

// How far the written zone is ahead of UTC; nothing for one that isn't known.
std::optional<std::chrono::minutes> OffsetOf(std::string_view zone) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') &&
      std::ranges::all_of(zone.substr(1), isDigit)) {
    const int digits = static_cast<int>(ReadNumber(zone.substr(1)));
    const std::chrono::minutes ahead = std::chrono::hours(digits / 100) + std::chrono::minutes(digits % 100);
    return zone[0] == '-' ? -ahead : ahead;
  }
  const auto* const named = std::ranges::find(kNamedZones, zone, &NamedZone::name);
  if (named == std::end(kNamedZones)) return std::nullopt;
  return std::chrono::hours(named->hours);
}

// The zone of a time "hh:mm:ss zone (its name)".
std::string ZoneOf(std::string_view time) {
  CutToken(time, " ");
  const std::string zone = Trim(time);
  return zone.substr(0, zone.find_first_of(" ("));
}

std::string DisplayOf(const MailDateFields& date) {
  std::string display = PaddedNumber(ReadNumber(date.day), 2) + '.' +
                        PaddedNumber(ReadNumber(date.month), 2) + '.' + YearText(date.year);
  std::string_view time = date.time;
  display += ' ' + TimeField(CutToken(time, ":"), 23);
  display += ':' + TimeField(CutToken(time, ":"), 59);
  display += ':' + TimeField(CutToken(time, " "), 59);
  return display;
}

// What is no moment of the calendar stays as it is written.
std::string InZoneOfReader(std::string display, std::chrono::minutes ahead) {
  Swallow([&] { display = FormatDisplay(os::EpochToLocal(SecondsOf(ParseDate(display)) - ahead, 0)); });
  return display;
}

}  // namespace

std::string MailDateToDisplay(std::string s) {
  const std::optional<MailDateFields> date = FieldsOf(std::move(s));
  return date ? DisplayOf(*date) : "";
}

std::string ShownMailDate(std::string s) {
  const std::optional<MailDateFields> date = FieldsOf(std::move(s));
  if (!date) return {};
  std::string display = DisplayOf(*date);
  if (CurrentRules().mailTimes == MailTimes::OfTheSender) return display;
  const std::optional<std::chrono::minutes> ahead = OffsetOf(ZoneOf(date->time));
  return ahead ? InZoneOfReader(std::move(display), *ahead) : display;
}

}  // namespace vorlent
