// Conversions to the fixed widths that counters and arguments have; out of range is the overflow failure.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

template <std::integral Target, std::integral Source>
Target ToWidth(Source value) {
  if (!std::in_range<Target>(value)) throw Failure(ErrorNumber::Overflow, "overflow");
  return static_cast<Target>(value);
}

// A float is rounded to the nearest whole number, halves to the even one.
template <std::integral Target, std::floating_point Source>
Target ToWidth(Source value) {
  using Limits = std::numeric_limits<Target>;
  const Source whole = std::nearbyint(value);
  // The largest number of a wide type is no float, the power of two after it always is.
  if (!(whole >= static_cast<Source>(Limits::min()) && whole < std::ldexp(Source{1}, Limits::digits))) {
    throw Failure(ErrorNumber::Overflow, "overflow");
  }
  return static_cast<Target>(whole);
}

template <class Source>
std::int16_t ToInt16(Source value) {
  return ToWidth<std::int16_t>(value);
}

template <class Source>
std::int32_t ToInt32(Source value) {
  return ToWidth<std::int32_t>(value);
}

// Whether positions, counts and moments are as wide as they have to be, by the rules in force; else they have
// 16 or 32 bits.
bool WidthsAreAmple();

// A number that has 16 or 32 bits where widths aren't ample.
template <class Source>
std::int64_t Within16(Source value) {
  return WidthsAreAmple() ? ToWidth<std::int64_t>(value) : ToInt16(value);
}
template <class Source>
std::int64_t Within32(Source value) {
  return WidthsAreAmple() ? ToWidth<std::int64_t>(value) : ToInt32(value);
}

// The strict conversion of a whole text to a number: blanks around it are allowed, anything else that is no
// number is a type mismatch, a number out of range the overflow failure.
double ParseNumber(std::string_view text);
std::int32_t ParseInt32(std::string_view text);

}  // namespace vorlent
