#include "Platform/CodePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Support/AllBytes.h"

namespace vorlent {
namespace {

// Code points of the bytes 80 to 9F, 0 for the five that the page leaves open. Printed by
//   python3 -c "print([ord(bytes([b]).decode('cp1252', 'replace')) for b in range(128, 160)])"
// with 65533 as 0.
constexpr std::array<int, 32> kPage = {8364, 0,    8218, 402,  8222, 8230, 8224, 8225, 710,  8240, 352,
                                       8249, 338,  0,    381,  0,    0,    8216, 8217, 8220, 8221, 8226,
                                       8211, 8212, 732,  8482, 353,  8250, 339,  0,    382,  376};

TEST(CodePage, MapsBytesAndCodePointsBothWays) {
  for (int code = 0; code < 256; ++code) {
    const auto byte = static_cast<unsigned char>(code);
    const bool mapped = code >= 128 && code < 160 && kPage[static_cast<std::size_t>(code - 128)] != 0;
    const auto expected = static_cast<char32_t>(mapped ? kPage[static_cast<std::size_t>(code - 128)] : code);
    EXPECT_EQ(codepage::ToCodePoint(byte), expected) << code;
    EXPECT_EQ(codepage::FromCodePoint(expected), byte) << code;
  }
}

TEST(CodePage, HoldsNoOtherCodePoints) {
  int held = 0;
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    if (codepage::FromCodePoint(codePoint)) ++held;
  }
  EXPECT_EQ(held, 256);
  EXPECT_EQ(codepage::FromCodePoint(0x80), std::nullopt) << "the byte 80 is the euro sign";
  EXPECT_EQ(codepage::FromCodePoint(0x100), std::nullopt);
}

TEST(CodePage, LiteralsAreCodePageBytes) {
  EXPECT_EQ("äöüÄÖÜß"_cp, "\xE4\xF6\xFC\xC4\xD6\xDC\xDF");
  EXPECT_EQ("€–Ÿ"_cp, "\x80\x96\x9F");
  EXPECT_EQ("plain"_cp, "plain");
  EXPECT_EQ(""_cp, "");
  EXPECT_EQ("a\0b"_cp, std::string_view("a\0b", 3));
  static_assert(CodePageLiteral("ü").length == 1);
}

TEST(TextToUtf8, EncodesEveryByte) {
  EXPECT_EQ(TextToUtf8("Größe €"_cp), "Größe €");
  EXPECT_EQ(TextToUtf8("\x81"), "\xC2\x81");
  EXPECT_EQ(TextToUtf8(std::string("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(TextToUtf8(""), "");
  EXPECT_EQ(TextFromUtf8(TextToUtf8(AllBytes())), AllBytes());
  EXPECT_EQ(ExactTextFromUtf8(TextToUtf8(AllBytes())), AllBytes());
}

TEST(TextFromUtf8, PutsQuestionMarksForWhatIsLost) {
  EXPECT_EQ(TextFromUtf8("Größe €"), "Größe €"_cp);
  EXPECT_EQ(TextFromUtf8("aαz"), "a?z");
  EXPECT_EQ(TextFromUtf8("😀!"), "?!");
  EXPECT_EQ(TextFromUtf8("a\xE4z"), "a?z") << "a byte that is no UTF-8";
  EXPECT_EQ(TextFromUtf8("\xE2\x82"), "??") << "each byte of a torn character by itself";
  EXPECT_EQ(TextFromUtf8("?"), "?");
}

TEST(ExactTextFromUtf8, GivesNothingWhenACharacterIsLost) {
  EXPECT_EQ(ExactTextFromUtf8("Größe €"), "Größe €"_cp);
  EXPECT_EQ(ExactTextFromUtf8("really?"), "really?") << "a question mark of the text itself is no loss";
  EXPECT_EQ(ExactTextFromUtf8(""), "");
  EXPECT_EQ(ExactTextFromUtf8("aαz"), std::nullopt);
  EXPECT_EQ(ExactTextFromUtf8("a\xE4z"), std::nullopt);
  EXPECT_EQ(ExactTextFromUtf8("\xC2\x80"), std::nullopt) << "the control character 80 has no place";
}

TEST(IsMultiByteUtf8, TellsWellFormedTextWithAMultiByteCharacter) {
  EXPECT_TRUE(IsMultiByteUtf8("ä"));
  EXPECT_TRUE(IsMultiByteUtf8("plain and ä"));
  EXPECT_TRUE(IsMultiByteUtf8("€😀"));
  EXPECT_TRUE(IsMultiByteUtf8("\xF4\x8F\xBF\xBF")) << "10FFFF, the last";
  EXPECT_TRUE(IsMultiByteUtf8("\xED\x9F\xBF\xEE\x80\x80")) << "around the surrogates";
  EXPECT_TRUE(IsMultiByteUtf8("\xE0\xA0\x80\xF0\x90\x80\x80")) << "the first of three and of four bytes";
  EXPECT_FALSE(IsMultiByteUtf8("plain"));
  EXPECT_FALSE(IsMultiByteUtf8(""));
}

TEST(IsMultiByteUtf8, RefusesWhatRfc3629Forbids) {
  for (const char* text : {"\xE4", "a\xE4z", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xBF", "\xC0\x80",
                           "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                           "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3\xA4\xE4", "\xC3\x28"}) {
    EXPECT_FALSE(IsMultiByteUtf8(text)) << testing::PrintToString(text);
  }
}

TEST(DisplayUtf8, LeavesUtf8AndConvertsTheCodePage) {
  EXPECT_EQ(DisplayUtf8("Größe"), "Größe");
  EXPECT_EQ(DisplayUtf8("Größe"_cp), "Größe");
  EXPECT_EQ(DisplayUtf8("plain"), "plain");
  EXPECT_EQ(DisplayUtf8("\xC3\xA4\xE4"), "Ã¤ä") << "text that mixes both is code page as a whole";
}

TEST(LowerCase, KnowsTheLettersOfThePage) {
  EXPECT_EQ(LowerCase("ABCXYZ09_[]"), "abcxyz09_[]");
  EXPECT_EQ(LowerCase("ÄÖÜÀÞÑ"_cp), "äöüàþñ"_cp);
  EXPECT_EQ(LowerCase("ŠŒŽŸ"_cp), "šœžÿ"_cp);
  EXPECT_EQ(LowerCase("×ß÷€"_cp), "×ß÷€"_cp);
  EXPECT_EQ(LowerCase(""), "");
  EXPECT_EQ(LowerCase(LowerCase(AllBytes())), LowerCase(AllBytes()));
}

TEST(EqualNoCase, ComparesWithoutCase) {
  EXPECT_TRUE(EqualNoCase("Größe"_cp, "GRÖßE"_cp));
  EXPECT_TRUE(EqualNoCase("", ""));
  EXPECT_TRUE(EqualNoCase("Ÿ"_cp, "ÿ"_cp));
  EXPECT_FALSE(EqualNoCase("a", "ab"));
  EXPECT_FALSE(EqualNoCase("ab", "a"));
  EXPECT_FALSE(EqualNoCase("a", "ä"_cp));
  EXPECT_FALSE(EqualNoCase("@", "`")) << "the neighbours of the letters are none";
  EXPECT_FALSE(EqualNoCase("×"_cp, "÷"_cp));
}

TEST(HashNoCase, IsSharedByTextsThatAreEqual) {
  int equal = 0;
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      // Alone, at either end of eight bytes, behind them, and beside bytes beyond ASCII.
      for (const std::string_view before : {"", "Seven--", "Eight---", "\xC4", "Twelve-\xDC----"}) {
        for (const std::string_view behind : {"", "Behind", "\xE4"}) {
          const auto around = [&](int code) {
            return std::string(before).append(1, static_cast<char>(code)).append(behind);
          };
          if (!EqualNoCase(around(a), around(b))) continue;
          ++equal;
          ASSERT_EQ(HashNoCase(around(a)), HashNoCase(around(b))) << a << " " << b;
        }
      }
    }
  }
  // Each byte with itself, and 26 + 34 pairs of letters in both orders.
  EXPECT_EQ(equal, 15 * (256 + 2 * (26 + 34)));
}

TEST(HashNoCase, TellsTextsApart) {
  std::set<std::size_t> hashes;
  for (int i = 0; i < 10000; ++i)
    hashes.insert(HashNoCase("{0A1B2C3D-" + std::to_string(i) + "}"));
  EXPECT_EQ(hashes.size(), 10000U);
  EXPECT_NE(HashNoCase("a"), HashNoCase("aa"));
  EXPECT_NE(HashNoCase("ab"), HashNoCase("ba"));
}

// Characters that differ in the bit in which the cases of a letter do are no two cases of one.
TEST(HashNoCase, TellsCharactersApartThatAreNoLetters) {
  for (const std::string_view pair : {"@`", "[{", "\\|", "]}", "^~", "\x80\xA0", "\xD7\xF7"}) {
    std::set<std::size_t> hashes;
    for (unsigned text = 0; text < 1u << 14; ++text) {
      std::string name = "X-";
      for (unsigned bit = 0; bit < 14; ++bit)
        name += pair[text >> bit & 1];
      hashes.insert(HashNoCase(name));
    }
    EXPECT_EQ(hashes.size(), 1u << 14) << pair;
  }
}

TEST(HashNoCase, IsSpreadOverItsLowBitsToo) {
  std::vector<int> counts(256);
  for (int i = 0; i < 256 * 64; ++i)
    ++counts[HashNoCase("key" + std::to_string(i)) % counts.size()];
  EXPECT_LT(*std::max_element(counts.begin(), counts.end()), 2 * 64);
}

}  // namespace
}  // namespace vorlent
