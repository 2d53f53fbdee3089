#include "Standalone/ConnectionText.h"

#include <algorithm>
#include <charconv>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// The value at the front of a connection text, cut with its ";". In braces a doubled closing one stands for
// one.
std::string CutValue(std::string& text) {
  text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
  if (!text.starts_with('{')) return Trim(CutToken(text, ";"));
  std::string value;
  std::size_t at = 1;
  for (; at < text.size(); ++at) {
    if (text[at] == '}') {
      if (text.compare(at, 2, "}}") != 0) break;
      ++at;
    }
    value += text[at];
  }
  text.erase(0, at);
  CutToken(text, ";");
  return value;
}

std::optional<int> ParseTimeout(std::string_view text) {
  int timeout = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), timeout);
  if (error != std::errc() || end != text.data() + text.size() || timeout < 0) return std::nullopt;
  return timeout;
}

}  // namespace

ConnectionText ParseConnectionText(std::string text) {
  ConnectionText parsed;
  while (!text.empty()) {
    const std::size_t mark = text.find_first_of("=;");
    if (mark == std::string::npos) break;
    const bool hasValue = text[mark] == '=';
    const std::string key = Trim(CutToken(text, hasValue ? "=" : ";"));
    if (!hasValue) continue;
    const std::string value = CutValue(text);
    if (EqualNoCase(key, "Database")) parsed.database = value;
    if (EqualNoCase(key, "Timeout")) parsed.timeout = ParseTimeout(value);
  }
  return parsed;
}

}  // namespace vorlent
