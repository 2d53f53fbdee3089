#include "Common/MailDateWords.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdHttpStandards.h"
#include "Common/StdModul.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

constexpr std::string_view kMonths[] = {"january",   "february", "march",    "april",
                                        "may",       "june",     "july",     "august",
                                        "september", "october",  "november", "december"};

// German ones that don't begin as the English ones do, without what is no ASCII, in whatever charset it was.
struct OtherName {
  std::string_view name;
  int month;
};
constexpr OtherName kOtherNames[] = {{"jnner", 1}, {"mrz", 3},  {"maerz", 3},    {"mai", 5},      {"juni", 6},
                                     {"juli", 7},  {"sept", 9}, {"oktober", 10}, {"dezember", 12}};

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kNoMinutes = "00";

bool IsDecimal(char c) {
  return c >= '0' && c <= '9';
}

bool IsDecimalNumber(std::string_view word) {
  constexpr std::size_t kMostDigits = 5;
  return !word.empty() && word.size() <= kMostDigits && std::ranges::all_of(word, IsDecimal);
}

// 1 to 12 for the name of a month or its beginning, 0 for other words.
int MonthOf(std::string_view word) {
  constexpr std::size_t kLeast = 3;
  if (word.ends_with('.')) word.remove_suffix(1);
  std::string name = LowerCase(word);
  std::erase_if(name, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
  if (name.size() < kLeast) return 0;
  const auto begins = [&](std::string_view each) { return each.starts_with(name); };
  const auto* const month = std::ranges::find_if(kMonths, begins);
  if (month != std::end(kMonths)) return static_cast<int>(month - std::begin(kMonths)) + 1;
  const auto* const other = std::ranges::find_if(kOtherNames, begins, &OtherName::name);
  return other == std::end(kOtherNames) ? 0 : other->month;
}

// RFC 3339: a colon may stand in the zone.
bool IsZone(std::string_view word) {
  if (!word.starts_with('+') && !word.starts_with('-')) return false;
  word.remove_prefix(1);
  return std::ranges::all_of(word, [](char c) { return IsDecimal(c) || c == ':'; }) &&
         std::ranges::count_if(word, IsDecimal) == 4;
}

// Whether so many digits may be a field of a time.
bool MayBeTimeField(std::size_t digits) {
  return digits == 1 || digits == 2;
}

// RFC 5322, obsolete: blanks may stand around the colons of a time, "10 :00 : 05".
std::string WithTimesJoined(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  std::string joined;
  while (!text.empty()) {
    const std::size_t colon = text.find(':');
    joined += text.substr(0, colon);
    if (colon == std::string_view::npos) break;
    const std::size_t before = joined.find_last_not_of(kBlanks) + 1;
    const std::size_t field = joined.find_last_not_of(kDigits, before == 0 ? 0 : before - 1) + 1;
    text.remove_prefix(colon + 1);
    const bool isTime = before > 0 && MayBeTimeField(before - field);
    if (isTime) joined.resize(before);
    joined += ':';
    const std::size_t next = std::min(text.find_first_not_of(kBlanks), text.size());
    const std::size_t end = std::min(text.find_first_not_of(kDigits, next), text.size());
    if (isTime && MayBeTimeField(end - next)) text.remove_prefix(next);
  }
  return joined;
}

// "10.30", "10.30.05", "10h30", "10h"
bool IsTimeWithoutColon(std::string_view text) {
  constexpr std::size_t kField = 3;  // with its divider
  const std::size_t hour = std::min(text.find_first_not_of(kDigits), text.size());
  std::string_view rest = text.substr(hour);
  if (!MayBeTimeField(hour) || rest.empty() || rest.size() > 2 * kField) return false;
  if (rest == "h" || rest == "H") return true;
  for (; rest.size() >= kField; rest.remove_prefix(kField))
    if (IsDecimal(rest[0]) || !IsDecimal(rest[1]) || !IsDecimal(rest[2])) return false;
  return rest.empty();
}

// Takes the words of a date one by one.
class DateWords {
 public:
  void Take(std::string_view word);
  std::optional<MailDateFields> Fields() const;

 private:
  void TakeTime(std::string_view word);
  bool TakeTimeWithoutColon(std::string_view word);
  void TakeNumbers(std::string_view word);
  void TakeNumber(std::string_view word);
  bool TakeMonth(std::string_view word);
  bool TellsDay() const;
  bool TakeDivided(std::string_view word, char divider);
  bool TakeHalfOfDay(std::string_view word);
  void TakeZone(std::string_view word);
  std::string Hour() const;

  std::vector<std::string> numbers_;
  int month_ = 0;
  std::string day_, year_;  // of one that is divided by "-" or "/"
  std::string time_;
  char half_ = ' ';  // of the day: "a" or "p"
  std::string zone_;
};

void DateWords::Take(std::string_view word) {
  // ISO 8601: date T time
  const std::size_t mark = word.find_first_of("Tt");
  if (mark > 0 && mark != std::string_view::npos && IsDecimal(word[mark - 1]) && mark + 1 < word.size() &&
      IsDecimal(word[mark + 1])) {
    Take(word.substr(0, mark));
    Take(word.substr(mark + 1));
    return;
  }
  if (IsZone(word)) return TakeZone(word);
  if (word.find(':') != std::string_view::npos && IsDecimal(word.front())) return TakeTime(word);
  if (TakeHalfOfDay(word) || TakeDivided(word, '-') || TakeDivided(word, '/') || TakeDivided(word, '.'))
    return;
  if (TakeTimeWithoutColon(word)) return;
  if (IsDecimal(word.front())) {
    TakeNumbers(word);
  } else if (!TakeMonth(word) && !time_.empty()) {
    TakeZone(word);
  }
}

// The last one before the time counts, as weekdays of other languages begin as months do: "mar, 5 Jan 2026".
bool DateWords::TakeMonth(std::string_view word) {
  const int month = MonthOf(word);
  if (month == 0 || !year_.empty() || (month_ > 0 && !time_.empty())) return false;
  month_ = month;
  return true;
}

// "5", "5.", "5th", "5.Jan", "5Jan2026"
void DateWords::TakeNumbers(std::string_view word) {
  while (!word.empty()) {
    const std::size_t end = std::min(word.find_first_not_of(kDigits), word.size());
    if (end > 0) TakeNumber(word.substr(0, end));
    word.remove_prefix(end);
    const std::size_t name = std::min(word.find_first_not_of(".-"), word.size());
    const std::size_t number = std::min(word.find_first_of(kDigits), word.size());
    if (name < number) TakeMonth(word.substr(name, number - name));
    word.remove_prefix(number);
  }
}

// One after day, month and year may be the hour, or as in "1030"; "0000" after the time is its zone.
void DateWords::TakeNumber(std::string_view word) {
  constexpr std::string_view kNoYear = "0000";
  if (!IsDecimalNumber(word) || (!time_.empty() && word == kNoYear)) return;
  if (!time_.empty() || !TellsDay()) {
    numbers_.emplace_back(word);
  } else if (MayBeTimeField(word.size()) || word.size() == kNoYear.size()) {
    const std::size_t hour = std::min<std::size_t>(word.size(), 2);
    const std::string_view minutes = word.substr(hour);
    time_ = std::string(word.substr(0, hour)) + ":" + std::string(minutes.empty() ? kNoMinutes : minutes);
  }
}

bool DateWords::TellsDay() const {
  return !year_.empty() || (month_ > 0 && numbers_.size() > 1);
}

// "10.30+0100" after a number, which is the day or the year.
bool DateWords::TakeTimeWithoutColon(std::string_view word) {
  const std::string_view time = word.substr(0, word.find_first_not_of("0123456789.hH"));
  if (!time_.empty() || (numbers_.empty() && year_.empty()) || !IsTimeWithoutColon(time)) return false;
  time_ = time;
  std::ranges::replace_if(
      time_, [](char c) { return !IsDecimal(c); }, ':');
  if (time_.ends_with(':')) time_ += kNoMinutes;
  word.remove_prefix(time.size());
  if (!word.empty()) Take(word);
  return true;
}

// "9:05", "14:30:05", "9:05PM", "14:30:05.123Z", "14:30:05+02:00"
void DateWords::TakeTime(std::string_view word) {
  if (!time_.empty()) return;
  const std::size_t end = std::min(word.find_first_not_of("0123456789:."), word.size());
  time_ = word.substr(0, std::min(word.find('.'), end));
  word.remove_prefix(end);
  if (!word.empty()) Take(word);
}

// "AM", "p.m."
bool DateWords::TakeHalfOfDay(std::string_view word) {
  if (time_.empty()) return false;
  std::string half = LowerCase(word);
  std::erase(half, '.');
  if (half != "am" && half != "pm") return false;
  half_ = half.front();
  return true;
}

// "2026-01-05", "05-Jan-26", "2026/01/05", "01/05/2026", and "13/01/2026" as no month has such a number;
// "05.01.2026", where the year has four digits, as "10.30.05" is a time.
bool DateWords::TakeDivided(std::string_view word, char divider) {
  if (std::ranges::count(word, divider) != 2) return false;
  std::string_view rest = word;
  const std::string_view separator(&divider, 1);
  const std::string_view first = CutToken(rest, separator);
  const std::string_view second = CutToken(rest, separator);
  const int named = MonthOf(second);
  if (!IsDecimalNumber(first) || !IsDecimalNumber(rest) || (named == 0 && !IsDecimalNumber(second)))
    return false;
  constexpr std::size_t kFullYear = 4;
  if (divider == '.' && named == 0 && first.size() != kFullYear && rest.size() != kFullYear) return false;
  const auto month = [](std::string_view number) { return static_cast<int>(ReadNumber(number)); };
  const bool isYearFirst = named > 0 ? first.size() > 2 : ReadNumber(rest) <= 31;
  year_ = isYearFirst ? first : rest;
  day_ = isYearFirst ? rest : first;
  month_ = named > 0 ? named : month(second);
  if (!isYearFirst && named == 0 && divider == '/') {
    day_ = second;
    month_ = month(first);
  }
  if (month_ > 12) day_ = NumberText(std::exchange(month_, month(day_)));
  return true;
}

// The first one tells, and one of numbers before names: "+0100", "CET", "GMT+0100".
void DateWords::TakeZone(std::string_view word) {
  const std::size_t sign = std::min(word.find_first_of("+-"), word.size());
  if (IsZone(word.substr(sign))) word.remove_prefix(sign);
  if (IsZone(zone_) || (!zone_.empty() && !IsZone(word))) return;
  zone_ = UpperCase(word);
  std::erase(zone_, ':');
}

// The hour by the clock of 24 hours.
std::string DateWords::Hour() const {
  const std::string hour = PeekToken(time_, ":");
  const double number = ReadNumber(hour);
  if (half_ == ' ' || number > 12) return hour;
  const double twelve = number == 12 ? 0 : number;
  return NumberText(half_ == 'p' ? twelve + 12 : twelve);
}

// Of two numbers the day comes first, unless it can't be one; a month and a year alone mean the first.
std::optional<MailDateFields> DateWords::Fields() const {
  constexpr double kLastDay = 31;
  MailDateFields date = {day_, NumberText(month_), year_, ""};
  std::vector<std::string> numbers = numbers_;
  if (date.year.empty() && numbers.size() == 1 && ReadNumber(numbers[0]) > kLastDay)
    numbers.insert(numbers.begin(), "1");
  if (date.year.empty() && numbers.size() > 1) {
    if (ReadNumber(numbers[0]) > kLastDay) std::swap(numbers[0], numbers[1]);
    date.day = numbers[0];
    date.year = numbers[1];
  }
  const double day = ReadNumber(date.day);
  if (month_ < 1 || month_ > 12 || day < 1 || day > kLastDay || date.year.empty()) return std::nullopt;
  date.time = Hour() + time_.substr(std::min(time_.find(':'), time_.size())) + " " + zone_;
  return date;
}

}  // namespace

std::optional<MailDateFields> ReadDateWords(std::string_view text) {
  constexpr std::size_t kLongestWord = 40;
  DateWords words;
  const std::string plain = WithTimesJoined(WithoutComments(text));
  std::string_view rest = plain;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find_first_of(" \t\r\n,"), rest.size());
    if (end > 0 && end <= kLongestWord) words.Take(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return words.Fields();
}

}  // namespace vorlent
