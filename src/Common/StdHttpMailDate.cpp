#include <string>
#include <string_view>

#include "Common/NumberText.h"
#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kMonthNames = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr std::string_view kDayNames = "MonTueWedThuFriSatSun";

// The fields of a mail date as they are written.
struct DateFields {
  std::string day;
  std::string month;
  std::string year;
  std::string time;
};

// Position of a token in the month names, 0 if it isn't there; an empty token stands at 1.
int MonthPosition(std::string_view token) {
  const std::size_t offset = kMonthNames.find(token);
  return offset == std::string_view::npos ? 0 : static_cast<int>(offset) + 1;
}

// yyyy-mm-dd time
DateFields ReadDashed(std::string s) {
  DateFields date;
  date.year = CutToken(s, "-");
  date.month = CutToken(s, "-");
  date.day = CutToken(s, " ");
  date.time = s;
  return date;
}

// yyyy/mm/dd time, mm/dd/yyyy time, dd/mm/yyyy time
DateFields ReadSlashed(std::string s) {
  DateFields date;
  date.year = CutToken(s, "/");
  date.month = CutToken(s, "/");
  date.day = CutToken(s, " ");
  date.time = s;
  if (ReadNumber(date.day) > 31) {
    const DateFields read = date;
    date.month = read.year;
    date.day = read.month;
    date.year = read.day;
  }
  if (ReadNumber(date.month) > 12) std::swap(date.month, date.day);
  return date;
}

// The year field turned out to be the time, as in "May 9 14:30:05 GMT 2010".
void ReadYearBehindTime(DateFields& date, std::string& rest) {
  date.time = date.year;
  date.year = CutTrimmedToken(rest, " ");
  if (ReadNumber(date.year) != 0) return;
  date.time += " " + date.year;
  date.year = Trim(rest);
}

// Puts the number in place of the month's name, which may stand first.
void NumberMonth(DateFields& date) {
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
DateFields ReadRfc822(std::string s) {
  if (s.find(',') != std::string::npos) {
    CutTrimmedToken(s, ",");
  } else {
    s = Trim(s);
  }
  if (kDayNames.find(s.substr(0, 3)) != std::string_view::npos) s = s.size() > 3 ? Trim(s.substr(3)) : "";

  DateFields date;
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

DateFields ReadFields(std::string s) {
  const std::string_view start = std::string_view(s).substr(0, 8);
  if (start.find('-') != std::string_view::npos) return ReadDashed(std::move(s));
  if (start.find('/') != std::string_view::npos) return ReadSlashed(std::move(s));
  return ReadRfc822(std::move(s));
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

}  // namespace

std::string MailDateToDisplay(std::string s) {
  const DateFields date = ReadFields(std::move(s));
  std::string display = PaddedNumber(ReadNumber(date.day), 2) + '.' +
                        PaddedNumber(ReadNumber(date.month), 2) + '.' + YearText(date.year);
  std::string_view time = date.time;
  display += ' ' + TimeField(CutToken(time, ":"), 23);
  display += ':' + TimeField(CutToken(time, ":"), 59);
  display += ':' + TimeField(CutToken(time, " "), 59);
  return display;
}

}  // namespace vorlent
