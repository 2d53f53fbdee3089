#include "Common/StdTime.h"

#include <algorithm>
#include <chrono>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Calendar.h"
#include "Platform/Failure.h"

namespace vorlent {

namespace {

constexpr std::int32_t kSecondsPerDay = 86400;
constexpr int kFirstYear = 100;  // the earliest that a date may have
constexpr int kLastYear = 9999;

// A number of a stamp's field, "" and foreign text being 0.
std::int32_t Field(std::string_view stamp, std::size_t offset, std::size_t length) {
  return ToInt32(ReadNumber(stamp.substr(std::min(offset, stamp.size()), length)));
}

// A year of as many days that the calendar's type holds: all repeats after 400 years.
std::chrono::year LikeYear(std::int32_t year) {
  return std::chrono::year(year % 400);
}

// The days of the years from 1970 up to the one before `year`, negative for an earlier one. One beyond the
// calendar's last counts as that: their seconds overflow alike.
std::int64_t DaysBeforeYear(std::int32_t year) {
  const int first = WidthsAreAmple() ? kFirstYear : 1970;
  const std::chrono::year counted(std::clamp(year, first, static_cast<int>(std::chrono::year::max())));
  return std::chrono::sys_days(counted / 1 / 1).time_since_epoch().count();
}

// Arithmetic that overflows as that of 32 bits, where it is.
std::int64_t Sum(std::int64_t a, std::int64_t b) {
  return Within32(a + b);
}

std::int64_t Product(std::int64_t a, std::int64_t b) {
  return Within32(a * b);
}

[[noreturn]] void RaiseNoDate(std::string_view text) {
  throw Failure(ErrorNumber::TypeMismatch, "not a date: '" + std::string(text) + "'");
}

// Cuts a field of one to `maxDigits` digits off the front; -1 if there is none.
int CutDigits(std::string_view& s, std::size_t maxDigits) {
  int value = 0;
  std::size_t digits = 0;
  while (digits < s.size() && s[digits] >= '0' && s[digits] <= '9') {
    if (digits == maxDigits) return -1;
    value = value * 10 + (s[digits++] - '0');
  }
  s.remove_prefix(digits);
  return digits == 0 ? -1 : value;
}

bool CutSign(std::string_view& s, char sign) {
  if (!s.starts_with(sign)) return false;
  s.remove_prefix(1);
  return true;
}

// Cuts "day.month.year"; a year of two digits lies between 1930 and 2029.
bool CutDate(std::string_view& s, DateTime& date) {
  date.day = CutDigits(s, 2);
  if (!CutSign(s, '.')) return false;
  date.month = CutDigits(s, 2);
  if (!CutSign(s, '.')) return false;
  const std::size_t before = s.size();
  date.year = CutDigits(s, 4);
  if (date.year >= 0 && before - s.size() <= 2) date.year += date.year < 30 ? 2000 : 1900;
  return date.year >= kFirstYear && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
         date.day <= DaysInMonth(date.month, date.year);
}

// Cuts "hours:minutes" with or without ":seconds".
bool CutTime(std::string_view& s, DateTime& date) {
  const auto within = [](int value, int limit) { return value >= 0 && value < limit; };
  date.hour = CutDigits(s, 2);
  if (!CutSign(s, ':')) return false;
  date.minute = CutDigits(s, 2);
  if (CutSign(s, ':')) date.second = CutDigits(s, 2);
  return within(date.hour, 24) && within(date.minute, 60) && within(date.second, 60);
}

}  // namespace

std::string FormatStamp(const DateTime& moment) {
  std::string stamp;
  AppendPadded(stamp, moment.year, 4);
  for (const int field : {moment.month, moment.day, moment.hour, moment.minute, moment.second})
    AppendPadded(stamp, field, 2);
  return stamp;
}

std::string FormatDisplay(const DateTime& moment) {
  std::string display;
  display.reserve(sizeof "dd.mm.yyyy hh:mm:ss");
  const auto append = [&](int field, std::size_t width, const char* separator) {
    AppendPadded(display, field, width);
    display += separator;
  };
  append(moment.day, 2, ".");
  append(moment.month, 2, ".");
  append(moment.year, 4, " ");
  append(moment.hour, 2, ":");
  append(moment.minute, 2, ":");
  append(moment.second, 2, "");
  return display;
}

std::int64_t StampToEpoch(std::string_view s) {
  if (s.empty()) return 0;
  const std::int32_t year = Field(s, 0, 4);
  const std::int32_t month = Field(s, 4, 2);
  std::int64_t days = Sum(Sum(Field(s, 6, 2), -1), DaysBeforeYear(year));
  for (std::int32_t m = 1; m < month; ++m)
    days = Sum(days, DaysInMonth(m, year));
  std::int64_t seconds = Product(days, kSecondsPerDay);
  seconds = Sum(seconds, Product(Field(s, 8, 2), 3600));
  seconds = Sum(seconds, Product(Field(s, 10, 2), 60));
  return Sum(seconds, Field(s, 12, 2));
}

namespace {

std::string StampOfOld(std::int32_t t) {
  const std::int32_t days = t / kSecondsPerDay;
  DateTime moment = MidnightOf(std::chrono::sys_days(std::chrono::days(std::max(0, days))));
  // A moment before 1970 only counts back from the first of January.
  moment.day += std::min(0, days);
  moment.hour = t % kSecondsPerDay / 3600;
  moment.minute = t % 3600 / 60;
  moment.second = t % 60;
  return FormatStamp(moment);
}

std::string StampOfAnyMoment(std::int64_t t) {
  using std::chrono::seconds;
  const std::chrono::sys_seconds first = std::chrono::sys_days(std::chrono::year(kFirstYear) / 1 / 1);
  const std::chrono::sys_seconds end = std::chrono::sys_days(std::chrono::year(kLastYear + 1) / 1 / 1);
  const std::chrono::sys_seconds shown =
      std::clamp(std::chrono::sys_seconds(seconds(t)), first, end - seconds(1));
  const auto day = std::chrono::floor<std::chrono::days>(shown);
  const auto ofDay = static_cast<int>((shown - day).count());
  DateTime moment = MidnightOf(day);
  moment.hour = ofDay / 3600;
  moment.minute = ofDay % 3600 / 60;
  moment.second = ofDay % 60;
  return FormatStamp(moment);
}

}  // namespace

std::string EpochToStamp(std::int64_t t) {
  return WidthsAreAmple() ? StampOfAnyMoment(t) : StampOfOld(ToInt32(t));
}

std::int32_t DaysInYear(std::int32_t year) {
  return LikeYear(year).is_leap() ? 366 : 365;
}

std::int32_t DaysInMonth(std::int32_t month, std::int32_t year) {
  if (month < 1 || month > 12) return 31;
  const auto last = LikeYear(year) / month / std::chrono::last;
  return static_cast<std::int32_t>(static_cast<unsigned>(last.day()));
}

DateTime ParseDate(std::string_view text) {
  const std::string trimmed = Trim(text);
  std::string_view rest = trimmed;
  DateTime date;
  if (!CutDate(rest, date)) RaiseNoDate(text);
  if (rest.empty()) return date;
  if (!CutSign(rest, ' ')) RaiseNoDate(text);
  while (CutSign(rest, ' ')) {
  }
  if (!CutTime(rest, date) || !rest.empty()) RaiseNoDate(text);
  return date;
}

std::string UtcToLocalText(const DateTime& utc) {
  DateTime whole = utc;
  whole.millisecond = 0;
  return FormatDisplay(os::UtcToLocal(whole));
}

std::string LocalToUtcText(std::string_view s) {
  std::string text;
  if (!s.empty()) Swallow([&] { text = FormatDisplay(os::LocalToUtc(ParseDate(s))); });
  return text;
}

}  // namespace vorlent
