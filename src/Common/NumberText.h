#pragma once

#include <concepts>
#include <cstddef>
#include <string>

namespace vorlent {

// The plain text form of a number: up to 15 significant digits, no trailing zeros, the system's decimal sign.
std::string NumberText(double value);

template <std::integral Number>
std::string NumberText(Number value) {
  return std::to_string(value);
}
// A character is text, not the number of its code.
std::string NumberText(char value) = delete;

// A number rounded to a whole one (halves to the even one), padded with "0" to `width` digits; a longer
// number keeps all its digits, a negative one has its sign in front of them.
std::string PaddedNumber(double value, std::size_t width);
std::string PaddedNumber(int value, std::size_t width);
// Appends it instead.
void AppendPadded(std::string& text, int value, std::size_t width);

}  // namespace vorlent
