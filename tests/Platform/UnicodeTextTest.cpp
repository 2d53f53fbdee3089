// The functions of CodePage.h where text is held in UTF-8.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Utf8.h"
#include "Support/AllBytes.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

constexpr std::string_view kWorld =
    "Grüße, Привет, γειά, مرحبا, 你好, é e\u0301, 👩‍👩‍👧 \U0010FFFF";

class UnicodeText : public testing::Test {
 private:
  ScopedRules rules_{{.text = TextEncoding::Utf8}};
};

TEST(TextEncodings, TheSameLiteralIsHeldInEither) {
  const auto literal = [] { return "ungültige Location, 5 €"_cp; };
  EXPECT_EQ(literal(), "ung\xFCltige Location, 5 \x80");
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(literal(), "ungültige Location, 5 €");
}

TEST(TextEncodings, ALiteralOfATableIsHeldInEitherToo) {
  static constexpr TextLiteral kMade = "für 5 €"_table;
  EXPECT_EQ(std::string_view(kMade), "f\xFCr 5 \x80");
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(std::string_view(kMade), "für 5 €");
}

TEST(TextEncodings, TheCodePageLosesWhatUtf8Holds) {
  EXPECT_EQ(TextFromUtf8("Ж 😀"), "? ?");
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(TextFromUtf8("Ж 😀"), "Ж 😀");
}

TEST_F(UnicodeText, ComesInAndGoesOutAsItIs) {
  EXPECT_EQ(TextFromUtf8(kWorld), kWorld);
  EXPECT_EQ(TextToUtf8(kWorld), kWorld);
  EXPECT_EQ(DisplayUtf8(kWorld), kWorld);
  EXPECT_EQ(ExactTextFromUtf8(kWorld), kWorld);
}

TEST_F(UnicodeText, BytesThatAreNoUtf8AreShownAsWindows1252) {
  struct Case {
    std::string bytes, shown;
  };
  for (const Case& each : std::vector<Case>{{"Gr\xFC\xDF\x65", "Grüße"},
                                            {"ж\xE4ж", "жäж"},
                                            {"\xE2\x82", "â‚"},
                                            {"\xC0\xAF", "À¯"},
                                            {"\xED\xA0\x80", "í\u00A0€"},
                                            {"\xF4\x90\x80\x80", "ô\u0090€€"},
                                            {"\x80\x81", "€\u0081"}}) {
    EXPECT_EQ(DisplayUtf8(each.bytes), each.shown);
    EXPECT_EQ(TextToUtf8(each.bytes), each.shown);
    EXPECT_EQ(TextFromUtf8(each.bytes), each.shown);
    EXPECT_EQ(ExactTextFromUtf8(each.bytes), std::nullopt);
  }
  EXPECT_TRUE(IsMultiByteUtf8(DisplayUtf8(AllBytes())));
}

TEST_F(UnicodeText, LettersOfLatinGreekAndCyrillicHaveTwoCases) {
  EXPECT_EQ(LowerCase("ABC ÄÖÜ ÀÞÑ ĀĐŁŽŸ ȘȚ ẤỰ ΑΆΩ ΟΔΟΣ ЖЁЇ ҐӁ"), "abc äöü àþñ āđłžÿ șț ấự αάω οδοσ жёї ґӂ");
  EXPECT_EQ(UpperCase("abc äöü āđłžÿ αάω ς жёї"), "ABC ÄÖÜ ĀĐŁŽŸ ΑΆΩ Σ ЖЁЇ");
  EXPECT_EQ(LowerCase("ß × ÷ € 你好 😀"), "ß × ÷ € 你好 😀");
  EXPECT_EQ(LowerCase("\xC4 Ä"), "\xC4 ä") << "a byte that is no UTF-8 has no case";
}

TEST_F(UnicodeText, CaseNeverChangesHowManyBytesTextTakes) {
  for (char32_t c = 1; c < 0x20000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    std::string text = "ä";
    utf8::Append(text, c);
    ASSERT_EQ(LowerCase(text).size(), text.size()) << std::hex << static_cast<unsigned>(c);
    ASSERT_EQ(UpperCase(text).size(), text.size()) << std::hex << static_cast<unsigned>(c);
    ASSERT_EQ(LowerCase(LowerCase(text)), LowerCase(text)) << std::hex << static_cast<unsigned>(c);
    ASSERT_EQ(UpperCase(LowerCase(text)), UpperCase(text)) << std::hex << static_cast<unsigned>(c);
  }
}

TEST_F(UnicodeText, IsComparedWithoutCase) {
  EXPECT_TRUE(EqualNoCase("Größe", "GRÖßE"));
  EXPECT_TRUE(EqualNoCase("ЧЕРНОВИКИ", "Черновики"));
  EXPECT_TRUE(EqualNoCase("ΟΔΟΣ", "οδος")) << "a sigma at the end";
  EXPECT_TRUE(EqualNoCase("e\u0301A", "E\u0301a"));
  EXPECT_FALSE(EqualNoCase("é", "e\u0301")) << "composed and decomposed are two names on a disk";
  EXPECT_FALSE(EqualNoCase("ж", "з"));
  EXPECT_FALSE(EqualNoCase("ä", "a"));
  EXPECT_FALSE(EqualNoCase("ä", "\xE4"));
}

TEST_F(UnicodeText, EqualTextsShareTheirHash) {
  int equal = 0;
  for (char32_t c = 1; c < 0x2000; ++c) {
    for (const std::string_view before : {"", "Seven--", "Eight---", "Ж", "Sevenä-"}) {
      std::string text(before);
      utf8::Append(text, c);
      for (const std::string& other : {LowerCase(text), UpperCase(text)}) {
        ASSERT_TRUE(EqualNoCase(text, other)) << text;
        ASSERT_EQ(HashNoCase(text), HashNoCase(other)) << text;
        equal += other != text;
      }
    }
  }
  EXPECT_GT(equal, 5000);
  EXPECT_NE(HashNoCase("ж"), HashNoCase("з"));
}

TEST_F(UnicodeText, CharactersAreAsLongAsTheirBytes) {
  EXPECT_EQ(CharacterLength("a"), 1u);
  EXPECT_EQ(CharacterLength("äa"), 2u);
  EXPECT_EQ(CharacterLength("你"), 3u);
  EXPECT_EQ(CharacterLength("😀"), 4u);
  EXPECT_EQ(CharacterLength("\xE4 x"), 0u);
}

TEST_F(UnicodeText, HasAFormThatIsTheSameByAllRules) {
  EXPECT_EQ(ToPageText("Größe €"), "Gr\xF6\xDF\x65 \x80");
  EXPECT_EQ(ToPageText("Größe Ж"), "Größe Ж");
  for (const std::string_view text : {kWorld, std::string_view("Größe €"), std::string_view("plain"),
                                      std::string_view("Ã¼ as it is"), std::string_view("")}) {
    EXPECT_EQ(FromPageText(ToPageText(text)), text);
  }
  EXPECT_EQ(FromPageText("Gr\xF6\xDF\x65"), "Größe") << "as the other rules have written it";
  EXPECT_EQ(FromPageText("Черновики"), "Черновики") << "bytes that the other rules let pass";
  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(ToPageText(AllBytes()), AllBytes());
  EXPECT_EQ(FromPageText(AllBytes()), AllBytes());
}

}  // namespace
}  // namespace vorlent
