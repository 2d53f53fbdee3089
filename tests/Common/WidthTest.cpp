#include "Common/Width.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "Support/ErrorNumbers.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

TEST(ToInt16, KeepsWhatFits) {
  EXPECT_EQ(ToInt16(0), 0);
  EXPECT_EQ(ToInt16(32767), 32767);
  EXPECT_EQ(ToInt16(-32768), -32768);
  EXPECT_EQ(ToInt16(std::size_t{32767}), 32767);
  EXPECT_EQ(ToInt16(std::uint8_t{255}), 255);
}

TEST(Within32, HasThirtyTwoBitsByTheRulesOfOldAlone) {
  EXPECT_EQ(Within32(2147483647), 2147483647);
  EXPECT_EQ(Within16(32767.4), 32767);
  EXPECT_EQ(SwallowedNumber([] { Within32(2147483648); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { Within16(32768); }), kOverflow);
  const ScopedRules rules({.widths = Widths::Ample});
  EXPECT_EQ(Within32(4294967296.4), 4294967296);
  EXPECT_EQ(Within16(-4294967296), -4294967296);
  EXPECT_EQ(SwallowedNumber([] { Within32(std::uint64_t{1} << 63); }), kOverflow);
}

TEST(ToInt16, OverflowsOutOfRange) {
  EXPECT_EQ(SwallowedNumber([] { ToInt16(32768); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(-32769); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(std::uint16_t{32768}); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(std::numeric_limits<std::size_t>::max()); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(std::numeric_limits<std::int64_t>::min()); }), kOverflow);
}

TEST(ToInt16, RoundsHalvesToTheEvenNumber) {
  EXPECT_EQ(ToInt16(0.5), 0);
  EXPECT_EQ(ToInt16(1.5), 2);
  EXPECT_EQ(ToInt16(2.5), 2);
  EXPECT_EQ(ToInt16(-0.5), 0);
  EXPECT_EQ(ToInt16(-1.5), -2);
  EXPECT_EQ(ToInt16(2.51), 3);
  EXPECT_EQ(ToInt16(32767.4), 32767);
  EXPECT_EQ(ToInt16(-32768.5), -32768);
}

TEST(ToInt16, OverflowsForFloatsOutOfRange) {
  EXPECT_EQ(SwallowedNumber([] { ToInt16(32767.5); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(-32768.6); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(1e300); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(std::numeric_limits<double>::infinity()); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt16(std::numeric_limits<double>::quiet_NaN()); }), kOverflow);
}

TEST(ToInt32, HasTheBoundsOf32Bits) {
  EXPECT_EQ(ToInt32(2147483647), 2147483647);
  EXPECT_EQ(ToInt32(std::int64_t{-2147483648}), -2147483647 - 1);
  EXPECT_EQ(ToInt32(2147483647.4), 2147483647);
  EXPECT_EQ(ToInt32(-2147483648.4), -2147483647 - 1);
  EXPECT_EQ(SwallowedNumber([] { ToInt32(std::int64_t{2147483648}); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt32(std::int64_t{-2147483649}); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt32(2147483647.5); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([] { ToInt32(-2147483649.0); }), kOverflow);
}

TEST(ToWidth, TurnsAwayNegativeNumbersWithoutASign) {
  EXPECT_EQ(SwallowedNumber([] { ToWidth<std::uint8_t>(-1); }), kOverflow);
  EXPECT_EQ(ToWidth<std::uint8_t>(255), 255);
  EXPECT_EQ(SwallowedNumber([] { ToWidth<std::uint8_t>(256); }), kOverflow);
}

TEST(ToWidth, KnowsThatTheLargest64BitNumberIsNoFloat) {
  EXPECT_EQ(SwallowedNumber([] { ToWidth<std::int64_t>(9223372036854775808.0); }), kOverflow);
  EXPECT_EQ(ToWidth<std::int64_t>(9223372036854774784.0), 9223372036854774784);
  EXPECT_EQ(ToWidth<std::int64_t>(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
}

TEST(ParseInt32, ReadsAWholeNumber) {
  EXPECT_EQ(ParseInt32("12"), 12);
  EXPECT_EQ(ParseInt32("-12"), -12);
  EXPECT_EQ(ParseInt32("+12"), 12);
  EXPECT_EQ(ParseInt32(" \t12 \t"), 12);
  EXPECT_EQ(ParseInt32("007"), 7);
  EXPECT_EQ(ParseInt32("2147483647"), 2147483647);
  EXPECT_EQ(ParseInt32("-2147483648"), -2147483647 - 1);
  EXPECT_EQ(ParseInt32("2.5"), 2);
  EXPECT_EQ(ParseInt32("1e3"), 1000);
}

TEST(ParseInt32, RefusesWhatIsNoNumber) {
  for (const char* text : {"", " ", "abc", "12x", "x12", "1 2", "--1", "+-1", "-+1", "++1", ".", "0x10",
                           "&H10", "nan", "inf", "-inf", "infinity", "1e", "12\n"}) {
    EXPECT_EQ(SwallowedNumber([&] { ParseInt32(text); }), kTypeMismatch) << "'" << text << "'";
  }
}

TEST(ParseInt32, OverflowsOutOfRange) {
  for (const char* text : {"2147483648", "-2147483649", "1e300", "1e999", "99999999999999999999999999"}) {
    EXPECT_EQ(SwallowedNumber([&] { ParseInt32(text); }), kOverflow) << text;
  }
}

}  // namespace
}  // namespace vorlent
