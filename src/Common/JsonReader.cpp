#include "Common/JsonReader.h"

#include <algorithm>

namespace vorlent {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsFirstHalf(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool IsSecondHalf(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& text, char32_t c) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | c >> 6);
    tail(0);
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | c >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | c >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

JsonReader::JsonReader(std::string_view text) : rest_(text) {
  if (rest_.starts_with(kByteOrderMark)) rest_.remove_prefix(kByteOrderMark.size());
}

bool JsonReader::EnterObject() {
  if (Passes('{')) return true;
  Skip();
  return false;
}

bool JsonReader::NextMember(std::string& name) {
  Passes(',');
  if (Passes('}')) return false;
  std::optional<std::string> found = PassString();
  if (!found || !Passes(':')) {
    rest_ = {};
    return false;
  }
  name = *std::move(found);
  return true;
}

std::optional<std::string> JsonReader::TakeText() {
  PassBlanks();
  if (rest_.starts_with('"')) return PassString();
  Skip();
  return std::nullopt;
}

void JsonReader::Skip() {
  PassBlanks();
  std::size_t depth = 0;
  do {
    const std::size_t next = rest_.find_first_of(depth == 0 ? "\"{[}],\r\n\t " : "\"{[}]");
    rest_.remove_prefix(std::min(next, rest_.size()));
    if (rest_.empty()) return;
    const char c = rest_.front();
    if (c == '"') {
      PassString();
    } else if (c == '{' || c == '[') {
      ++depth;
      rest_.remove_prefix(1);
    } else if (depth > 0) {
      --depth;
      rest_.remove_prefix(1);
    }
  } while (depth > 0);
}

void JsonReader::PassBlanks() {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
}

bool JsonReader::Passes(char c) {
  PassBlanks();
  if (!rest_.starts_with(c)) return false;
  rest_.remove_prefix(1);
  return true;
}

// Nothing if there is no string, or none that is closed.
std::optional<std::string> JsonReader::PassString() {
  if (!Passes('"')) return std::nullopt;
  std::string text;
  for (;;) {
    const std::size_t end = rest_.find_first_of("\"\\");
    if (end == std::string_view::npos) break;
    text += rest_.substr(0, end);
    const bool isClosed = rest_[end] == '"';
    rest_.remove_prefix(end + 1);
    if (isClosed) return text;
    if (rest_.empty()) break;
    AppendUtf8(text, PassEscape());
  }
  rest_ = {};
  return std::nullopt;
}

// What comes after a backslash; there is something.
char32_t JsonReader::PassEscape() {
  const char c = rest_.front();
  rest_.remove_prefix(1);
  switch (c) {
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'u':
      break;
    default:
      return static_cast<unsigned char>(c);
  }
  const char32_t unit = PassHexDigits().value_or(kReplacement);
  if (IsSecondHalf(unit)) return kReplacement;
  if (!IsFirstHalf(unit)) return unit;
  const std::string_view behind = rest_;
  if (rest_.starts_with("\\u")) {
    rest_.remove_prefix(2);
    const char32_t second = PassHexDigits().value_or(0);
    if (IsSecondHalf(second)) return 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00);
  }
  rest_ = behind;
  return kReplacement;
}

std::optional<char32_t> JsonReader::PassHexDigits() {
  constexpr std::size_t kDigits = 4;
  if (rest_.size() < kDigits) return std::nullopt;
  char32_t value = 0;
  for (const char c : rest_.substr(0, kDigits)) {
    const int digit = HexValue(c);
    if (digit < 0) return std::nullopt;
    value = value * 16 + static_cast<char32_t>(digit);
  }
  rest_.remove_prefix(kDigits);
  return value;
}

}  // namespace vorlent
