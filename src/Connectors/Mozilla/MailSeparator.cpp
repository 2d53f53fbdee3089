#include "Connectors/Mozilla/MailSeparator.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vorlent {

namespace {

constexpr std::string_view kFrom = "From ";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Cuts the first word, without its blanks.
std::string_view CutWordView(std::string_view& text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  text.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(text, isBlank) - text.begin()));
  const auto length = static_cast<std::size_t>(std::ranges::find_if(text, isBlank) - text.begin());
  const std::string_view word = text.substr(0, length);
  text.remove_prefix(length);
  return word;
}

bool IsMonth(std::string_view word) {
  constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return std::ranges::find(kMonths, word) != kMonths.end();
}

bool IsNumber(std::string_view word, std::size_t size) {
  return word.size() == size && std::ranges::all_of(word, IsDigit);
}

bool IsYear(std::string_view word) {
  return IsNumber(word, 4);
}

bool IsDayOfMonth(std::string_view word) {
  return IsNumber(word, 1) || IsNumber(word, 2);
}

bool HasAddress(std::string_view text) {
  return CutWordView(text).find('@') != std::string_view::npos;
}

// "9:05", "14:30", "14:30:05"
bool IsTime(std::string_view word) {
  return word.size() >= 4 && word.size() <= 8 && IsDigit(word.front()) && IsDigit(word.back()) &&
         word.find(':') != std::string_view::npos &&
         std::ranges::all_of(word, [](char c) { return IsDigit(c) || c == ':'; });
}

// A month, a time and a year, as in "Sat Nov 21 14:59:15 2026", in whatever order and with whatever zone. The
// mail client's dash tells enough to let the month be of any language. After an address, two digits at the
// end are a year as well, and a day may stand for the time.
bool HasDate(std::string_view text) {
  const bool hasAddress = HasAddress(text);
  bool hasMonth = text.starts_with("- "), hasTime = false, hasYear = false, hasDay = false;
  while (!text.empty()) {
    const std::string_view word = CutWordView(text);
    hasYear = hasYear || IsYear(word) || (hasAddress && hasTime && text.empty() && IsNumber(word, 2));
    hasMonth = hasMonth || IsMonth(word);
    hasTime = hasTime || IsTime(word);
    hasDay = hasDay || (hasAddress && IsDayOfMonth(word));
  }
  return hasMonth && hasYear && (hasTime || hasDay);
}

// The sender alone: an address, or after the dash of the mail client any word.
bool IsSender(std::string_view text) {
  std::string_view rest = text;
  std::string_view word = CutWordView(rest);
  const bool isDashed = word == "-";
  if (isDashed) word = CutWordView(rest);
  return CutWordView(rest).empty() && (isDashed || word.empty() || HasAddress(word));
}

}  // namespace

bool IsDashedSeparator(std::string_view line) {
  return line.starts_with("From - ") || line.starts_with(">From - ");
}

bool IsEnvelopeSeparator(std::string_view line) {
  if (!line.starts_with(kFrom)) return false;
  line.remove_prefix(kFrom.size());
  return IsSender(line) || HasDate(line);
}

bool ContinuesHeader(const std::optional<std::string_view>& line) {
  if (!line || line->empty()) return true;
  // RFC 976: a host that passes a mail on quotes the separator of the one before.
  if (line->starts_with('>') && IsEnvelopeSeparator(line->substr(1))) return true;
  // RFC 5322: a field begins with a name of printable characters and a colon. Blanks may come between, as of
  // old.
  const std::size_t colon = line->find(':');
  if (colon == std::string_view::npos) return false;
  std::string_view name = line->substr(0, colon);
  while (name.ends_with(' ') || name.ends_with('\t'))
    name.remove_suffix(1);
  return !name.empty() && std::ranges::all_of(name, [](char c) { return c > ' ' && c < '\x7F'; });
}

}  // namespace vorlent
