#include "Common/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "Platform/Locale.h"

namespace vorlent {

namespace {

constexpr int kSignificantDigits = 15;

void AppendPadded(std::string& text, std::string_view digits, bool negative, std::size_t width) {
  if (negative) text += '-';
  if (digits.size() < width) text.append(width - digits.size(), '0');
  text += digits;
}

}  // namespace

std::string NumberText(double value) {
  if (value == 0) return "0";
  std::array<char, 64> buffer{};
  // The general form with a precision drops trailing zeros and turns to an exponent only from 1E+15 on.
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                          std::chars_format::general, kSignificantDigits);
  std::string text(buffer.data(), end);
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos) text[exponent] = 'E';
  const std::size_t point = text.find('.');
  if (point != std::string::npos) text[point] = os::DecimalSign();
  return text;
}

std::string PaddedNumber(double value, std::size_t width) {
  std::array<char, 320> buffer;  // holds the largest number there is
  const double whole = std::nearbyint(std::fabs(value));
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), whole, std::chars_format::fixed, 0);
  std::string text;
  AppendPadded(text, std::string_view(buffer.data(), end), value < 0 && whole > 0, width);
  return text;
}

std::string PaddedNumber(int value, std::size_t width) {
  std::string text;
  AppendPadded(text, value, width);
  return text;
}

void AppendPadded(std::string& text, int value, std::size_t width) {
  std::array<char, 16> buffer;
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  const std::string_view number(buffer.data(), end);
  AppendPadded(text, value < 0 ? number.substr(1) : number, value < 0, width);
}

}  // namespace vorlent
