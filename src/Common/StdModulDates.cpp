#include <algorithm>
#include <string>
#include <string_view>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

// The characters of a text from a position (from 1) on, "" beyond its end.
std::string_view Middle(std::string_view s, std::size_t position, std::size_t length) {
  return s.substr(std::min(position - 1, s.size()), length);
}

bool HasAt(std::string_view s, std::size_t position, char c) {
  return s.size() >= position && s[position - 1] == c;
}

bool IsStamp(std::string_view s) {
  return s.find_first_of(".:") == std::string_view::npos;
}

// A field of display text as a 16-bit number; one that doesn't fit counts as no number.
int ReadField(std::string_view token) {
  int field = 0;
  Swallow([&] { field = ToInt16(ReadNumber(token)); });
  return field;
}

// The fields of display text as they stand.
DateTime CutDisplayFields(std::string_view s) {
  DateTime fields;
  fields.day = ReadField(CutToken(s, "."));
  fields.month = ReadField(CutToken(s, "."));
  fields.year = ReadField(CutToken(s, " "));
  fields.hour = ReadField(CutToken(s, ":"));
  fields.minute = ReadField(CutToken(s, ":"));
  fields.second = ReadField(s);
  return fields;
}

// A year of two digits lies between 1930 and 2029.
int WithCentury(int year) {
  if (year < 30) year += 2000;
  return year < 100 ? year + 1900 : year;
}

}  // namespace

std::string NowStamp() {
  return FormatStamp(Platform::Current().Now());
}

std::string NowTimeText() {
  const DateTime now = Platform::Current().Now();
  return PaddedNumber(now.hour, 2) + ':' + PaddedNumber(now.minute, 2) + ':' + PaddedNumber(now.second, 2);
}

double SecondsSinceMidnight() {
  const DateTime now = Platform::Current().Now();
  return now.hour * 3600 + now.minute * 60 + now.second + now.millisecond / 1000.0;
}

std::string StampToDisplay(std::string& s) {
  if (s.ends_with("::")) s.replace(s.size() - 2, 2, "000000");
  if (s.empty()) return {};
  if (!IsStamp(s)) {
    if (HasAt(s, 9, ' ')) s.insert(6, ReadNumber(Middle(s, 7, 2)) < 70 ? "20" : "19");
    return s;
  }
  const std::size_t time = HasAt(s, 9, '-') ? 10 : 9;
  std::string display;
  const auto append = [&](std::size_t position, std::size_t length, std::string_view separator) {
    display.append(Middle(s, position, length)).append(separator);
  };
  append(7, 2, ".");
  append(5, 2, ".");
  append(1, 4, " ");
  append(time, 2, ":");
  append(time + 2, 2, ":");
  append(time + 4, 2, "");
  return display;
}

std::string DisplayToStamp(std::string_view s) {
  if (HasAt(s, 9, '-')) return std::string(s.substr(0, 8)).append(s.substr(9));
  if (IsStamp(s)) return std::string(s);
  DateTime fields = CutDisplayFields(s);
  if (fields.year > 0) fields.year = WithCentury(fields.year);
  return FormatStamp(fields);
}

std::string GetFileDate(std::string_view path) {
  std::string text;
  Swallow([&] { text = FormatDisplay(os::ReadChangeTime(path)); });
  return text;
}

void SetFileDate(std::string_view path, std::string_view text) {
  if (text.empty()) return;
  DateTime local = CutDisplayFields(text);
  local.year = WithCentury(local.year);
  Swallow([&] { os::WriteTimes(path, local); });
}

}  // namespace vorlent
