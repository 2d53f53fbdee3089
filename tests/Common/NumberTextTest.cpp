#include "Common/NumberText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "Platform/Locale.h"

namespace vorlent {
namespace {

// The text with the decimal sign of the system as a point.
std::string Pointed(double value) {
  std::string text = NumberText(value);
  const std::size_t sign = text.find(os::DecimalSign());
  if (sign != std::string::npos) text[sign] = '.';
  return text;
}

TEST(NumberText, WritesWholeNumbersWithoutASign) {
  EXPECT_EQ(NumberText(0.0), "0");
  EXPECT_EQ(NumberText(-0.0), "0");
  EXPECT_EQ(NumberText(1.0), "1");
  EXPECT_EQ(NumberText(-12.0), "-12");
  EXPECT_EQ(NumberText(100000.0), "100000");
  EXPECT_EQ(NumberText(1e14), "100000000000000");
  EXPECT_EQ(NumberText(999999999999999.0), "999999999999999");
  EXPECT_EQ(NumberText(2147483648.0), "2147483648");
}

TEST(NumberText, WritesUpTo15Digits) {
  EXPECT_EQ(Pointed(0.1), "0.1");
  EXPECT_EQ(Pointed(-2.5), "-2.5");
  EXPECT_EQ(Pointed(0.1 + 0.2), "0.3");
  EXPECT_EQ(Pointed(1.0 / 3), "0.333333333333333");
  EXPECT_EQ(Pointed(2.0 / 3), "0.666666666666667");
  EXPECT_EQ(Pointed(12345.6789), "12345.6789");
  EXPECT_EQ(Pointed(123456789012.34567), "123456789012.346");
  EXPECT_EQ(Pointed(99.999999999999999), "100");
}

TEST(NumberText, TurnsToAnExponentBehind15Digits) {
  EXPECT_EQ(Pointed(1e15), "1E+15");
  EXPECT_EQ(Pointed(1273415405000000.0), "1.273415405E+15");
  EXPECT_EQ(Pointed(-1.5e300), "-1.5E+300");
  EXPECT_EQ(Pointed(1e-5), "1E-05");
  EXPECT_EQ(Pointed(0.0001), "0.0001");
}

TEST(NumberText, WritesEveryIntegerWhole) {
  EXPECT_EQ(NumberText(0), "0");
  EXPECT_EQ(NumberText(std::int16_t{-32768}), "-32768");
  EXPECT_EQ(NumberText(std::int64_t{1273415405000000}), "1273415405000000");
  EXPECT_EQ(NumberText(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(NumberText(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(PaddedNumber, PadsToTheWidth) {
  EXPECT_EQ(PaddedNumber(5, 2), "05");
  EXPECT_EQ(PaddedNumber(0, 4), "0000");
  EXPECT_EQ(PaddedNumber(2010, 2), "2010");
  EXPECT_EQ(PaddedNumber(7, 0), "7");
  EXPECT_EQ(PaddedNumber(-5, 2), "-05");
}

TEST(PaddedNumber, WholeNumbersOfBothKindsReadAlike) {
  for (const int value : {0, 7, 12, 100, 2010, -1, -9, -12, 2147483647, -2147483647 - 1}) {
    for (const std::size_t width : {0U, 1U, 2U, 4U, 12U}) {
      EXPECT_EQ(PaddedNumber(value, width), PaddedNumber(static_cast<double>(value), width)) << value;
    }
  }
}

TEST(PaddedNumber, RoundsHalvesToTheEvenNumber) {
  EXPECT_EQ(PaddedNumber(4.5, 2), "04");
  EXPECT_EQ(PaddedNumber(5.5, 2), "06");
  EXPECT_EQ(PaddedNumber(-0.4, 2), "00");
  EXPECT_EQ(PaddedNumber(9.6, 2), "10");
}

TEST(PaddedNumber, HoldsTheLargestNumber) {
  const std::string text = PaddedNumber(std::numeric_limits<double>::max(), 2);
  EXPECT_EQ(text.size(), 309U);
  EXPECT_EQ(text.substr(0, 17), "17976931348623157");
  EXPECT_EQ(PaddedNumber(-std::numeric_limits<double>::max(), 2), "-" + text);
}

}  // namespace
}  // namespace vorlent
