// What the fuzz targets share: a condition that holds for every input, failures that are allowed, and
// the rules under which both are tried.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <string_view>

#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent::fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Ends the run with the line of the condition that an input broke.
inline void Require(bool condition, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (condition) return;
  std::cerr << file << ":" << line << ": a property doesn't hold\n";
  std::abort();
}

// Runs a step that may fail with the given numbers only.
template <class Step>
void MayFail(std::initializer_list<ErrorNumber> numbers, Step&& step, const char* file = __builtin_FILE(),
             int line = __builtin_LINE()) {
  const int number = SwallowedNumber(step);
  bool allowed = number == 0;
  for (const ErrorNumber each : numbers)
    allowed = allowed || number == static_cast<int>(each);
  Require(allowed, file, line);
}

// Does the same under each set of rules, as an input is to break neither.
template <class Try>
void UnderBothRules(Try&& tried) {
  for (const Rules& rules : {Rules::Windows(), Rules::Today()}) {
    ChooseRules(rules);
    tried();
  }
}

}  // namespace vorlent::fuzz
