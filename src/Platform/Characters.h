// What the system knows of single characters of Unicode, and what follows from it for text.
#pragma once

#include <cstddef>
#include <string_view>

namespace vorlent {

namespace os {

// The lower-case form of a character, itself where it has none.
char32_t LowerCaseOf(char32_t codePoint);
// The upper-case form of a character, itself where it has none.
char32_t UpperCaseOf(char32_t codePoint);

// How many columns a terminal shows for a character: 2 for a wide one, 0 for one that combines with that
// before it. One that the system doesn't know takes 1.
std::size_t ColumnsOf(char32_t codePoint);

}  // namespace os

// How many columns a terminal shows for UTF-8 text. A byte that is no UTF-8 takes one.
std::size_t TerminalColumns(std::string_view utf8);

// The beginning of UTF-8 text that takes no more columns than that, up to a whole character with all that
// combines with it.
std::string_view FittingColumns(std::string_view utf8, std::size_t columns);

}  // namespace vorlent
