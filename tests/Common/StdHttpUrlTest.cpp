#include <gtest/gtest.h>

#include <string>

#include "Common/StdHttp.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/AllBytes.h"

namespace vorlent {
namespace {

TEST(UrlEncode, EncodesUnsafeCharacters) {
  EXPECT_EQ(UrlEncode("a b"), "a%20b");
  EXPECT_EQ(UrlEncode("a/b"), "a%2Fb");
  EXPECT_EQ(UrlEncode("ä"_cp), "%E4");
  EXPECT_EQ(UrlEncode("+%/:&=#\\*?<>|\""), "%2B%25%2F%3A%26%3D%23%5C%2A%3F%3C%3E%7C%22");
  EXPECT_EQ(UrlEncode("{|}~\x7F"), "%7B%7C%7D%7E%7F");
  EXPECT_EQ(UrlEncode(std::string("\0\t\x1F ", 4)), "%00%09%1F%20");
  EXPECT_EQ(UrlEncode(""), "");
}

TEST(UrlEncode, LeavesEveryOtherCharacter) {
  constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789;,'()[]!$@^`-_.";
  EXPECT_EQ(UrlEncode(plain), plain);
}

TEST(UrlDecode, DecodesBlanksAndCodes) {
  EXPECT_EQ(UrlDecode("a+b"), "a b");
  EXPECT_EQ(UrlDecode("a%2Bb"), "a+b");
  EXPECT_EQ(UrlDecode("100%25"), "100%");
  EXPECT_EQ(UrlDecode("%e4%E4"), std::string("ää"_cp));
  EXPECT_EQ(UrlDecode("%2541"), "%41") << "a percent sign by its code starts no other code";
  EXPECT_EQ(UrlDecode("%00"), std::string(1, '\0'));
  EXPECT_EQ(UrlDecode("%FF"), "\xFF");
  EXPECT_EQ(UrlDecode("plain"), "plain");
  EXPECT_EQ(UrlDecode(""), "");
}

TEST(UrlDecode, ReadsWhatHexadecimalDigitsThereAre) {
  EXPECT_EQ(UrlDecode("%4Gx"), "\x04x") << "the foreign character is lost";
  EXPECT_EQ(UrlDecode("%GGx"), std::string("\0x", 2));
  EXPECT_EQ(UrlDecode("%G4x"), std::string("\0x", 2));
  EXPECT_EQ(UrlDecode("%"), std::string(1, '\0'));
  EXPECT_EQ(UrlDecode("a%4"), "a\x04");
  EXPECT_EQ(UrlDecode("%+4"), "\x04") << "the plus sign is a blank by then, and blanks are passed over";
  EXPECT_EQ(UrlDecode("%%41"), std::string("\x00\x31", 2)) << "a percent sign in a code is no start";
}

TEST(UrlDecode, OverflowsOnAPercentSignBehindPosition32767) {
  EXPECT_EQ(UrlDecode(std::string(32766, 'a') + "%41"), std::string(32766, 'a') + "A");
  EXPECT_EQ(SwallowedNumber([] { UrlDecode(std::string(32767, 'a') + "%41"); }), 6);
  EXPECT_EQ(UrlDecode(std::string(40000, '+')), std::string(40000, ' ')) << "long text without one is fine";
  std::string codes;
  for (int i = 0; i < 32767; ++i)
    codes += "%41";
  EXPECT_EQ(UrlDecode(codes), std::string(32767, 'A')) << "positions are those of the text as decoded so far";
  EXPECT_EQ(SwallowedNumber([&] { UrlDecode(codes + "%41"); }), 6);
}

TEST(UrlDecode, UndoesUrlEncode) {
  EXPECT_EQ(UrlDecode(UrlEncode(AllBytes())), AllBytes());
}

}  // namespace
}  // namespace vorlent
