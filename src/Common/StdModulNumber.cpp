#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "Common/StdModul.h"

namespace vorlent {

namespace {

// Characters of a text one by one, blanks, tabs and line feeds passed over; '\0' at the end.
class NumberScanner {
 public:
  explicit NumberScanner(std::string_view text) : rest_(text) { SkipBlanks(); }

  char Peek() const { return rest_.empty() ? '\0' : rest_.front(); }
  bool PeekDigit() const { return Peek() >= '0' && Peek() <= '9'; }
  char Take() {
    const char c = Peek();
    if (!rest_.empty()) rest_.remove_prefix(1);
    SkipBlanks();
    return c;
  }

 private:
  void SkipBlanks() {
    while (Peek() == ' ' || Peek() == '\t' || Peek() == '\n')
      rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Up to four digits are a 16-bit signed value, up to eight a 32-bit one.
double ReadHexadecimal(NumberScanner& scanner) {
  std::uint32_t value = 0;
  int digits = 0;
  for (; digits < 8 && DigitValue(scanner.Peek()) >= 0; ++digits) {
    value = value << 4 | static_cast<std::uint32_t>(DigitValue(scanner.Take()));
  }
  return digits <= 4 ? static_cast<std::int16_t>(value) : static_cast<std::int32_t>(value);
}

double ReadOctal(NumberScanner& scanner) {
  constexpr int maxDigits = 11;  // what 32 bits hold
  double value = 0;
  for (int digits = 0; digits < maxDigits && scanner.PeekDigit() && scanner.Peek() < '8'; ++digits) {
    value = value * 8 + DigitValue(scanner.Take());
  }
  return value;
}

void TakeDigits(NumberScanner& scanner, std::string& number) {
  while (scanner.PeekDigit())
    number += scanner.Take();
}

// The exponent after a mantissa, "" if no digit follows its letter and sign.
std::string TakeExponent(NumberScanner& scanner) {
  if (scanner.Peek() != 'e' && scanner.Peek() != 'E') return {};
  std::string exponent(1, scanner.Take());
  if (scanner.Peek() == '+' || scanner.Peek() == '-') exponent += scanner.Take();
  if (!scanner.PeekDigit()) return {};
  TakeDigits(scanner, exponent);
  return exponent;
}

// The number of an exponent such as "e-5", far from any limit where 64 bits don't hold it.
std::int64_t ExponentValue(std::string_view exponent) {
  constexpr std::int64_t far = std::int64_t{1} << 60;
  if (exponent.empty()) return 0;
  const bool isNegative = exponent.find('-') != std::string_view::npos;
  exponent.remove_prefix(exponent.find_first_of("0123456789"));
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
  if (error != std::errc() || value > far) value = far;
  return isNegative ? -value : value;
}

// Whether a number that a double can't hold is too large for it and not too small: the place of its first
// digit other than 0 tells.
bool IsTooLarge(std::string_view mantissa, std::string_view exponent) {
  const auto first = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
  const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  return point - first + ExponentValue(exponent) > 0;
}

double ReadDecimal(NumberScanner& scanner) {
  std::string number;
  if (scanner.Peek() == '+' || scanner.Peek() == '-') {
    if (scanner.Take() == '-') number = "-";
  }
  TakeDigits(scanner, number);
  if (scanner.Peek() == '.') {
    number += scanner.Take();
    TakeDigits(scanner, number);
  }
  const std::size_t mantissaLength = number.size();
  number += TakeExponent(scanner);

  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  // Reading never fails: what is too small is 0, what is too large the largest number there is.
  const std::string_view text = number;
  if (!IsTooLarge(text.substr(0, mantissaLength), text.substr(mantissaLength))) return 0;
  constexpr double largest = std::numeric_limits<double>::max();
  return number.starts_with('-') ? -largest : largest;
}

// A text of a few digits and nothing else, as most are; nothing for any other.
std::optional<double> ReadDigits(std::string_view s) {
  constexpr std::size_t mostDigits = 15;  // what a double holds exactly
  if (s.empty() || s.size() > mostDigits) return std::nullopt;
  std::int64_t value = 0;
  for (const char c : s) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return static_cast<double>(value);
}

}  // namespace

double ReadNumber(std::string_view s) {
  if (const std::optional<double> number = ReadDigits(s)) return *number;
  NumberScanner scanner(s);
  if (scanner.Peek() != '&') return ReadDecimal(scanner);
  scanner.Take();
  const char base = scanner.Take();
  if (base == 'H' || base == 'h') return ReadHexadecimal(scanner);
  if (base == 'O' || base == 'o') return ReadOctal(scanner);
  return 0;
}

}  // namespace vorlent
