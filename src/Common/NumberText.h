#pragma once

#include <concepts>
#include <string>

namespace vorlent {

// The plain text form of a number: up to 15 significant digits, no trailing zeros, the system's decimal sign.
std::string NumberText(double value);

template <std::integral Number>
std::string NumberText(Number value) {
  return std::to_string(value);
}

}  // namespace vorlent
