#include "Connectors/Mozilla/CalendarSql.h"

#include "Common/StdModul.h"
#include "Connectors/Mozilla/CalendarFiles.h"

namespace vorlent {

namespace {

// A text as it goes into its place.
std::string TextInPlace(const std::string& value) {
  std::string text = value;
  if (EscapesCalendarTexts()) ReplaceText(text, "'", "''");
  return text;
}

// A quote ends a text unless it is doubled, and what follows would be read as part of the statement; at a
// zero character drivers end the statement itself.
bool EndsText(std::string_view value) {
  return (!EscapesCalendarTexts() && value.find('\'') != std::string_view::npos) ||
         value.find('\0') != std::string_view::npos;
}

// A value that is missing leaves a gap, which the database refuses.
bool IsNumberOrGap(std::string_view value) {
  if (value.empty()) return true;
  if (value.front() == '-') value.remove_prefix(1);
  return !value.empty() && value.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

CalendarSql::CalendarSql(std::string_view form, std::span<const std::string> values) {
  auto value = values.begin();
  for (const char c : form) {
    if (!IsPlace(c)) {
      text_ += c;
      continue;
    }
    if (c == kText) isSpoiled_ = isSpoiled_ || EndsText(*value);
    if (c == kNumber) isSpoiled_ = isSpoiled_ || !IsNumberOrGap(*value);
    text_ += c == kText ? TextInPlace(*value) : *value;
    ++value;
  }
}

}  // namespace vorlent
