#include "Platform/Characters.h"

#include <gtest/gtest.h>

namespace vorlent {
namespace {

TEST(TerminalColumns, CountsWhatATerminalShows) {
  EXPECT_EQ(TerminalColumns(""), 0u);
  EXPECT_EQ(TerminalColumns("plain"), 5u);
  EXPECT_EQ(TerminalColumns("Größe €"), 7u);
  EXPECT_EQ(TerminalColumns("Привет"), 6u);
  EXPECT_EQ(TerminalColumns("你好"), 4u) << "wide";
  EXPECT_EQ(TerminalColumns("😀!"), 3u);
  EXPECT_EQ(TerminalColumns("u\u0308x"), 2u) << "a combining diaeresis";
  EXPECT_EQ(TerminalColumns("مَ"), 1u) << "a combining vowel";
  EXPECT_EQ(TerminalColumns("a\u200Db"), 2u) << "a joiner";
  EXPECT_EQ(TerminalColumns("a\xE4z"), 3u) << "a byte that is no UTF-8";
}

TEST(FittingColumns, IsTheLongestBeginningOfWholeCharacters) {
  EXPECT_EQ(FittingColumns("plain", 3), "pla");
  EXPECT_EQ(FittingColumns("plain", 9), "plain");
  EXPECT_EQ(FittingColumns("plain", 0), "");
  EXPECT_EQ(FittingColumns("你好吗", 5), "你好") << "half of a wide character can't be shown";
  EXPECT_EQ(FittingColumns("u\u0308u\u0308", 1), "u\u0308") << "what combines comes along";
  EXPECT_EQ(FittingColumns("ab\xE4", 2), "ab");
}

TEST(CaseOfCharacters, IsThatOfUnicodeInEveryLocale) {
  EXPECT_EQ(os::LowerCaseOf(U'Ж'), U'ж');
  EXPECT_EQ(os::UpperCaseOf(U'ж'), U'Ж');
  EXPECT_EQ(os::LowerCaseOf(U'Ω'), U'ω');
  EXPECT_EQ(os::LowerCaseOf(U'你'), U'你');
  EXPECT_EQ(os::UpperCaseOf(U'1'), U'1');
}

}  // namespace
}  // namespace vorlent
