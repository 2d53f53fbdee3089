#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/CodePage.h"
#include "Platform/Guid.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Without the characters of code below `bound` in front.
std::string_view TrimFront(std::string_view s, unsigned char bound) {
  while (!s.empty() && codepage::Code(s.front()) < bound)
    s.remove_prefix(1);
  return s;
}

// Cuts a working string into the part before an offset, which is returned, and the part from `rest` on.
std::string CutAt(std::string& s, std::size_t end, std::size_t rest) {
  std::string token = s.substr(0, end);
  s.erase(0, rest);
  return token;
}

// A value without line ends, in which no "|" ends the field.
std::string EscapeSeparators(std::string_view value) {
  constexpr auto changes = [](char c) { return c == '\\' || c == '|' || c == '\n' || c == '\r'; };
  // Nothing changes in most values; counting tells that many characters at a time.
  const auto changed = std::count_if(value.begin(), value.end(), changes);
  if (changed == 0) return std::string(value);
  std::string escaped;
  escaped.reserve(value.size() + static_cast<std::size_t>(changed));
  for (const char c : value) {
    if (c == '\\' || c == '|') escaped += '\\';
    if (c == '\n') {
      escaped += "\\n";
    } else if (c != '\r') {
      escaped += c;
    }
  }
  return escaped;
}

// Offset of the next hit from offset `from` on, npos without one. `before` is the character in front of
// `from`.
std::size_t FindHit(std::string_view text, std::string_view word, std::size_t from, bool wholeWord,
                    char before) {
  for (std::size_t hit = text.find(word, from); hit != std::string_view::npos;
       hit = text.find(word, hit + 1)) {
    if (!wholeWord) return hit;
    const std::size_t behind = hit + word.size();
    const bool openLeft = !IsWordChar(hit > from ? text[hit - 1] : before);
    const bool openRight = behind == text.size() || !IsWordChar(text[behind]);
    if (openLeft && openRight) return hit;
  }
  return std::string_view::npos;
}

}  // namespace

// --- Cutting and finding

std::string CutToken(std::string& s, std::string_view sep) {
  const std::size_t end = s.find(sep);
  if (end == std::string::npos) return std::exchange(s, {});
  return CutAt(s, end, end + sep.size());
}

std::string_view CutToken(std::string_view& s, std::string_view sep) {
  const std::size_t end = s.find(sep);
  if (end == std::string_view::npos) return std::exchange(s, {});
  const std::string_view token = s.substr(0, end);
  s.remove_prefix(end + sep.size());
  return token;
}

std::string PeekToken(std::string_view s, std::string_view sep) {
  return std::string(CutToken(s, sep));
}

std::string CutTrimmedToken(std::string& s, std::string_view sep) {
  std::string_view rest = s;
  std::string token(TrimView(CutToken(rest, sep)));
  s = std::string(TrimView(rest));
  return token;
}

std::string CutLine(std::string& s) {
  std::string line = CutToken(s, "\n");
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

std::string_view CutLine(std::string_view& s) {
  std::string_view line = CutToken(s, "\n");
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string CutWord(std::string& s) {
  std::string_view rest = s;
  std::string word;
  if (rest.starts_with('"')) {
    rest.remove_prefix(1);
    word = CutToken(rest, "\"");
    while (rest.starts_with('"')) {
      rest.remove_prefix(1);
      word += '"';
      word += CutToken(rest, "\"");
    }
  } else if (rest.starts_with('\'')) {
    rest.remove_prefix(1);
    word = CutToken(rest, "'");
  } else {
    word = CutToken(rest, " ");
    rest = TrimView(rest);
  }
  s = std::string(TrimFront(rest, 33));
  return word;
}

std::int32_t FindUnescaped(std::string_view s, std::string_view sep) {
  for (std::size_t hit = s.find(sep); hit != std::string_view::npos; hit = s.find(sep, hit + 1)) {
    std::size_t backslashes = 0;
    while (backslashes < hit && s[hit - backslashes - 1] == '\\')
      ++backslashes;
    if (backslashes % 2 == 0) return ToInt32(hit + 1);
  }
  return 0;
}

std::string CutEscapedToken(std::string& s, std::string_view sep) {
  const auto position = static_cast<std::size_t>(FindUnescaped(s, sep));
  if (position == 0) return std::exchange(s, {});
  return CutAt(s, position - 1, position - 1 + sep.size());
}

void DropRight(std::string& s, std::int16_t n) {
  if (n <= 0) return;
  const auto count = static_cast<std::size_t>(n);
  s.resize(s.size() > count ? s.size() - count : 0);
}

std::string_view TrimView(std::string_view s) {
  const std::size_t first = s.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

std::string Trim(std::string_view s) {
  return std::string(TrimView(s));
}

std::string TrimBlank(std::string_view s) {
  s = TrimFront(s, 33);
  while (!s.empty() && codepage::Code(s.back()) < 33)
    s.remove_suffix(1);
  return std::string(s);
}

std::string GetLineValue(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    std::string_view line = CutLine(text);
    if (CutToken(line, "=") == key) return std::string(line);
  }
  return {};
}

// --- Records

std::string GetParam(std::string_view record, std::string_view key) {
  while (!record.empty()) {
    const auto separator = static_cast<std::size_t>(FindUnescaped(record, "|"));
    std::string_view pair = separator == 0 ? record : record.substr(0, separator - 1);
    record.remove_prefix(separator == 0 ? record.size() : separator);
    if (CutToken(pair, "=") == key) return UnescapeValue(pair);
  }
  return {};
}

std::string EscapeValue(std::string_view value, std::string_view extra) {
  ToInt16(extra.size());
  std::string escaped = EscapeSeparators(value);
  // One pass for each: a later character of `extra` is also found in what an earlier one has put in.
  for (const char c : extra) {
    const std::string code = std::to_string(codepage::Code(c));
    const std::string replacement =
        codepage::Code(c) < 32 ? std::string(3 - code.size(), '0') + code : std::string(1, c);
    ReplaceText(escaped, std::string_view(&c, 1), "\\" + replacement);
  }
  return escaped;
}

std::string UnescapeValue(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  std::size_t next = 0;
  for (;;) {
    const std::size_t backslash = value.find('\\', next);
    if (backslash == std::string_view::npos || backslash + 1 == value.size()) break;
    out += value.substr(next, backslash - next);
    const char c = value[backslash + 1];
    next = backslash + 2;
    if (c == 'n') {
      out += "\r\n";
    } else if (IsDigit(c)) {
      const double code = std::nearbyint(ReadNumber(value.substr(backslash + 1, 3)));
      const bool isCharacter = code <= 255;
      out += isCharacter ? static_cast<char>(static_cast<unsigned char>(code)) : '\\';
      next = isCharacter ? std::min(backslash + 4, value.size()) : backslash + 1;
    } else {
      out += c;
    }
  }
  out += value.substr(next);
  return out;
}

// --- Other text

void ReplaceText(std::string& s, std::string_view find, std::string_view repl, bool ignoreCase,
                 bool wholeWord) {
  if (find.empty()) return;
  const std::string loweredText = ignoreCase ? LowerCase(s) : std::string();
  const std::string loweredFind = ignoreCase ? LowerCase(find) : std::string();
  const std::string_view text = ignoreCase ? loweredText : s;
  const std::string_view word = ignoreCase ? loweredFind : find;

  const bool inPlace = find.size() == repl.size();
  std::string rebuilt;
  char before = '\0';
  std::size_t from = 0;
  for (;;) {
    const std::size_t hit = FindHit(text, word, from, wholeWord, before);
    if (hit == std::string_view::npos) break;
    if (inPlace) {
      s.replace(hit, find.size(), repl);
      before = repl.back();
    } else {
      rebuilt.append(s, from, hit - from).append(repl);
      before = rebuilt.empty() ? '\0' : rebuilt.back();
    }
    from = hit + find.size();
  }
  if (inPlace || from == 0) return;
  rebuilt.append(s, from);
  s = std::move(rebuilt);
}

std::int32_t FindWholeWord(std::int32_t start, std::string_view s, std::string_view word) {
  const auto from = static_cast<std::size_t>(std::max(start, 1) - 1);
  const char before = from > 0 && from <= s.size() ? s[from - 1] : '\0';
  const std::size_t hit = FindHit(s, word, from, true, before);
  return hit == std::string_view::npos ? 0 : ToInt32(hit + 1);
}

bool IsWordChar(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

namespace {

// Whether a character is shown in names of files as it is: printable ASCII, of the code page the German
// letters, and all that only Unicode has a place for.
bool IsReadable(std::string_view character) {
  if (character.size() > 1) return true;
  const unsigned char code = codepage::Code(character.front());
  return code < 128 ? code >= 32 : !HoldsUtf8() && "äöüÄÖÜß"_cp.find(character) != std::string_view::npos;
}

}  // namespace

std::string EncodeFileName(std::string_view s, std::string_view extra) {
  constexpr std::string_view forbidden = "%\\/:*?\"<>|";
  ToInt16(s.size());
  std::string out;
  out.reserve(s.size());
  while (!s.empty()) {
    const std::string_view character = s.substr(0, std::max<std::size_t>(CharacterLength(s), 1));
    s.remove_prefix(character.size());
    const bool stays = IsReadable(character) && forbidden.find(character) == std::string_view::npos &&
                       extra.find(character) == std::string_view::npos;
    if (stays) out += character;
    for (const char c : stays ? std::string_view() : character)
      out.append("%").append(HexPad(codepage::Code(c), 2));
  }
  return out;
}

std::string HexPad(std::int16_t value, std::int16_t width) {
  std::string text;
  auto rest = static_cast<std::uint16_t>(value);
  do {
    text.insert(text.begin(), kHexDigits[rest % 16]);
    rest = static_cast<std::uint16_t>(rest / 16);
  } while (rest > 0);
  const auto digits = static_cast<std::size_t>(std::max<std::int16_t>(width, 0));
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

std::string NewGuidText() {
  std::string text = "{00000000-0000-0000-0000-000000000000}";
  auto digit = text.begin();
  for (const std::uint8_t byte : os::NewGuidBytes()) {
    while (*digit != '0')
      ++digit;
    *digit++ = kHexDigits[byte >> 4];
    *digit++ = kHexDigits[byte & 15];
  }
  return text;
}

void SetWaitCursor(bool done) {
  Platform::Current().SetPointer(!done);
}

}  // namespace vorlent
