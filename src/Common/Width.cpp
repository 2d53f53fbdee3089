#include "Common/Width.h"

#include <charconv>
#include <string>

#include "Platform/Rules.h"

namespace vorlent {

bool WidthsAreAmple() {
  return CurrentRules().widths == Widths::Ample;
}

double ParseNumber(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  std::string_view digits = text;
  while (!digits.empty() && isBlank(digits.front()))
    digits.remove_prefix(1);
  while (!digits.empty() && isBlank(digits.back()))
    digits.remove_suffix(1);
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error == std::errc::result_out_of_range) throw Failure(ErrorNumber::Overflow, "overflow");
  if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value)) {
    throw Failure(ErrorNumber::TypeMismatch, "not a number: '" + std::string(text) + "'");
  }
  return value;
}

std::int32_t ParseInt32(std::string_view text) {
  return ToInt32(ParseNumber(text));
}

}  // namespace vorlent
