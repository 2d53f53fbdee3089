// UTF-8, character by character.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorlent::utf8 {

struct Decoded {
  char32_t codePoint = 0;
  std::size_t length = 0;  // 0: no well-formed character stands here
};

// The character at a position inside the text. RFC 3629: no overlong forms, no surrogates, nothing above
// 10FFFF.
Decoded Decode(std::string_view text, std::size_t at);

// How many characters of a text stand before the first that isn't ASCII.
std::size_t AsciiLength(std::string_view text);

// How many bytes of a text stand before the first that begins no well-formed character.
std::size_t WellFormedLength(std::string_view text);

inline bool IsWellFormed(std::string_view text) {
  return WellFormedLength(text) == text.size();
}

// Puts a character behind the text.
void Append(std::string& text, char32_t codePoint);

// How many bytes a character takes.
constexpr std::size_t LengthOf(char32_t codePoint) {
  return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

}  // namespace vorlent::utf8
