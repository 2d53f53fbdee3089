#include "Standalone/FieldLines.h"

namespace vorlent {

namespace {

constexpr std::string_view kEscapedInKey = "\\\n=";
constexpr std::string_view kEscapedInValue = "\\\n";

void AppendEscaped(std::string& text, std::string_view part, std::string_view escaped) {
  for (;;) {
    const std::size_t at = part.find_first_of(escaped);
    text += part.substr(0, at);
    if (at == std::string_view::npos) return;
    (text += '\\') += part[at] == '\n' ? 'n' : part[at];
    part.remove_prefix(at + 1);
  }
}

// Takes the part up to an end that isn't escaped, and the end, off the text.
std::string CutEscaped(std::string_view& text, char end) {
  const char stops[] = {'\\', end};
  std::string part;
  for (;;) {
    const std::size_t at = text.find_first_of(std::string_view(stops, 2));
    part += text.substr(0, at);
    if (at == std::string_view::npos || at + 1 == text.size()) {
      text = {};
      return part;
    }
    if (text[at] == end) {
      text.remove_prefix(at + 1);
      return part;
    }
    part += text[at + 1] == 'n' ? '\n' : text[at + 1];
    text.remove_prefix(at + 2);
  }
}

}  // namespace

void AppendFieldLine(std::string& lines, std::string_view key, std::string_view value) {
  AppendEscaped(lines, key, kEscapedInKey);
  lines += '=';
  AppendEscaped(lines, value, kEscapedInValue);
  lines += '\n';
}

void AddFieldLines(ItemRecord& record, std::string_view lines) {
  while (!lines.empty()) {
    const std::string key = CutEscaped(lines, '=');
    record.Add(key, CutEscaped(lines, '\n'));
  }
}

}  // namespace vorlent
