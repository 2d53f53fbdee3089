#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "Common/StdModul.h"

namespace vorlent {
namespace {

struct NumberRow {
  std::string text;
  double number;
};

void ExpectNumbers(std::initializer_list<NumberRow> rows) {
  for (const NumberRow& row : rows)
    EXPECT_EQ(ReadNumber(row.text), row.number) << "'" << row.text << "'";
}

TEST(ReadNumber, ReadsTheLongestDecimalNumberInFront) {
  ExpectNumbers({
      {"12", 12},     {"12abc", 12},    {"-12", -12},       {"+12", 12},
      {"1.5", 1.5},   {".5", 0.5},      {"-.5x", -0.5},     {"5.", 5},
      {"1.2.3", 1.2}, {"1,5", 1},       {"007", 7},         {"1e3", 1000},
      {"1E-2", 0.01}, {"1.5e+2x", 150}, {"1e", 1},          {"1e+", 1},
      {"1ex", 1},     {"0x10", 0},      {"12/31/2009", 12}, {"9223372036854775807", 9223372036854775807.0},
  });
}

TEST(ReadNumber, GivesZeroForTextWithoutANumber) {
  ExpectNumbers({{"", 0},
                 {"abc", 0},
                 {"-", 0},
                 {"+", 0},
                 {".", 0},
                 {"-.", 0},
                 {"e5", 0},
                 {"--5", 0},
                 {"+-5", 0},
                 {"nan", 0},
                 {"inf", 0},
                 {"-inf", 0},
                 {"x5", 0},
                 {".e5", 0},
                 {"\xE4", 0}});
}

TEST(ReadNumber, PassesOverBlanksTabsAndLineFeeds) {
  ExpectNumbers({
      {"1 2", 12},
      {"  \t\n 1\t2\n3 ", 123},
      {"- 5", -5},
      {"1 . 5 e 2", 150},
      {"& H F F", 255},
      {" &HF", 15},
      {"1\r2", 1},  // a carriage return is none of them
      {" \t\n", 0},
  });
}

TEST(ReadNumber, ReadsSignedHexadecimalOf16And32Bits) {
  ExpectNumbers({
      {"&HFF", 255},
      {"&hff", 255},
      {"&H7FFF", 32767},
      {"&H8000", -32768},
      {"&HFFFF", -1},
      {"&H0FFFF", 65535},
      {"&H10000", 65536},
      {"&H7FFFFFFF", 2147483647},
      {"&H80000000", -2147483648.0},
      {"&HFFFFFFFF", -1},
      {"&H4G", 4},
      {"&HG", 0},
      {"&H", 0},
      {"&H-1", 0},
      {"&", 0},
      {"&X1", 0},
      {"-&H10", 0},
  });
}

TEST(ReadNumber, ReadsOctalNumbers) {
  ExpectNumbers({{"&O17", 15}, {"&o777", 511}, {"&O8", 0}, {"&O178", 15}, {"&O", 0}});
}

TEST(ReadNumber, ReadsDigitsAloneAsItReadsThemBetweenOthers) {
  std::string digits;
  for (int length = 1; length <= 20; ++length) {
    for (const char last : {'0', '1', '5', '9'}) {
      const std::string number = digits + last;
      for (const std::string& text :
           {number, "0" + number, "000" + number, std::string(number.size(), '0')}) {
        EXPECT_EQ(ReadNumber(text), std::stod(text)) << text;
        EXPECT_EQ(ReadNumber(" " + text), std::stod(text)) << text;
        EXPECT_EQ(ReadNumber(text + "x"), std::stod(text)) << text;
      }
    }
    digits += static_cast<char>('0' + (length * 7) % 10);
  }
}

TEST(ReadNumber, NeverFails) {
  constexpr double largest = std::numeric_limits<double>::max();
  ExpectNumbers({
      {"1e999", largest},
      {"-1e999", -largest},
      {"1e-999", 0},
      {"1e99999999999999999999", largest},
      {"&H123456789ABCDEF", 0x12345678},  // as many digits as 32 bits hold
  });
  EXPECT_EQ(ReadNumber(std::string(1000, '9')), largest);
  // The digits count as much as the exponent does.
  const std::string zeros(400, '0');
  ExpectNumbers({{"0." + zeros + "1", 0},
                 {"-0." + zeros + "1e+5", 0},
                 {"0." + zeros + "1e400", 0.1},
                 {"0." + zeros + "1e999", largest},
                 {"1" + zeros, largest},
                 {"1" + zeros + "e-5", largest},
                 {"-1" + zeros + ".5e-5", -largest},
                 {"1" + zeros + "e-400", 1},
                 {"1" + zeros + "e-999", 0},
                 {"0e999", 0},
                 {"1e-" + zeros + "5", 0.00001},
                 {"1e-99999999999999999999", 0}});
  EXPECT_EQ(ReadNumber(std::string("1\0002", 3)), 1) << "a zero character is no digit";
}

}  // namespace
}  // namespace vorlent
