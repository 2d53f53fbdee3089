#include <charconv>
#include <cstdint>
#include <limits>
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

// The exponent behind a mantissa, "" if no digit follows its letter and sign.
std::string TakeExponent(NumberScanner& scanner) {
  if (scanner.Peek() != 'e' && scanner.Peek() != 'E') return {};
  std::string exponent(1, scanner.Take());
  if (scanner.Peek() == '+' || scanner.Peek() == '-') exponent += scanner.Take();
  if (!scanner.PeekDigit()) return {};
  TakeDigits(scanner, exponent);
  return exponent;
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
  const std::string exponent = TakeExponent(scanner);
  number += exponent;

  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  // Reading never fails: what is too small is 0, what is too large the largest number there is.
  if (exponent.find('-') != std::string::npos) return 0;
  constexpr double largest = std::numeric_limits<double>::max();
  return number.starts_with('-') ? -largest : largest;
}

}  // namespace

double ReadNumber(std::string_view s) {
  NumberScanner scanner(s);
  if (scanner.Peek() != '&') return ReadDecimal(scanner);
  scanner.Take();
  const char base = scanner.Take();
  if (base == 'H' || base == 'h') return ReadHexadecimal(scanner);
  if (base == 'O' || base == 'o') return ReadOctal(scanner);
  return 0;
}

}  // namespace vorlent
