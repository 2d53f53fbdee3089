#include "Platform/Characters.h"

#include "Platform/Utf8.h"

namespace vorlent {

namespace {

struct ShownCharacter {
  std::size_t length;
  std::size_t columns;
};

ShownCharacter CharacterAt(std::string_view utf8, std::size_t at) {
  const utf8::Decoded decoded = utf8::Decode(utf8, at);
  // Controls and ASCII without asking.
  if (decoded.length <= 1) return {1, 1};
  return {decoded.length, os::ColumnsOf(decoded.codePoint)};
}

}  // namespace

std::size_t TerminalColumns(std::string_view utf8) {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < utf8.size();) {
    const ShownCharacter character = CharacterAt(utf8, at);
    columns += character.columns;
    at += character.length;
  }
  return columns;
}

std::string_view FittingColumns(std::string_view utf8, std::size_t columns) {
  std::size_t at = 0;
  for (std::size_t taken = 0; at < utf8.size();) {
    const ShownCharacter character = CharacterAt(utf8, at);
    taken += character.columns;
    if (taken > columns) break;
    at += character.length;
  }
  return utf8.substr(0, at);
}

}  // namespace vorlent
