#include "Platform/Charsets.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Platform/CodePage.h"
#include "Support/AllBytes.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

class CharsetsTest : public testing::Test {
 private:
  ScopedRules rules_{{.text = TextEncoding::Utf8}};
};

struct CharsetCase {
  const char* charset;
  std::string bytes;
  const char* text;
};

// Bytes printed by python3: "...".encode(charset).
TEST_F(CharsetsTest, TextOfTheWorldsCharsetsIsUnicode) {
  const std::vector<CharsetCase> cases = {
      {"koi8-r", "\xF0\xD2\xC9\xD7\xC5\xD4", "Привет"},
      {"windows-1251", "\xCF\xF0\xE8\xE2\xE5\xF2", "Привет"},
      {"ISO-2022-JP", "\x1B$B$3$s$K$A$O\x1B(B", "こんにちは"},
      {"Shift_JIS", "\x82\xB1\x82\xF1", "こん"},
      {"gb2312", "\xC4\xE3\xBA\xC3", "你好"},
      {"Big5", "\xA7\x41\xA6\x6E", "你好"},
      {"euc-kr", "\xBE\xC8\xB3\xE7", "안녕"},
      {"iso-8859-7", "\xE3\xE5\xE9\xDC", "γειά"},
      {"windows-1256", "\xE3\xD1\xCD\xC8\xC7", "مرحبا"},
      {"UTF-16BE", std::string("\x00\xE4\xD8\x3D\xDE\x00", 6), "ä😀"},
      {"UTF-8", "ä😀", "ä😀"},
      {"", "ä😀", "ä😀"},
  };
  for (const CharsetCase& each : cases)
    EXPECT_EQ(FromCharset(each.bytes, each.charset), each.text) << each.charset;
}

// Bytes printed by python3: "...".encode(charset).
TEST_F(CharsetsTest, NamesThatOnlyBrowsersKnowAreKnown) {
  const std::vector<CharsetCase> cases = {
      {"windows-949", "\x8C\x63", "똠"},
      {"x-cp1251", "\xE6", "ж"},
      {"X-GBK", "\xE9\x46", "镕"},
      {"x-euc-jp", "\xC6\xFC", "日"},
      {"gb_2312-80", "\xD6\xD0", "中"},
      {"x-mac-roman", "\x8E", "é"},
      {"x-mac-cyrillic", "\xE6", "ж"},
      {"dos-874", "\xE4", "ไ"},
      {"x-x-big5", "\xC1\x63", "繁"},
      {"x-sjis", "\x87\x40", "①"},
      {"cp50220", "\x1B$BF|\x1B(B", "日"},
      {"koi", "\xD6", "ж"},
      {"visual", "\xF9", "ש"},
      {"x-cp1252", "\x80", "€"},
  };
  for (const CharsetCase& each : cases)
    EXPECT_EQ(FromCharset(each.bytes, each.charset), each.text) << each.charset;
}

TEST_F(CharsetsTest, JapaneseMailMayHaveKanaOfHalfWidth) {
  EXPECT_EQ(FromCharset("\x1B$BF|\x1B(I1\x36\x1B(Bz", "iso-2022-jp"), "日ｱｶz");
}

TEST_F(CharsetsTest, WhatIsCalledAsciiAndIsUtf8IsUtf8) {
  EXPECT_EQ(FromCharset("Gr\xC3\xBC\xC3\x9F\x65 \xFC", "us-ascii"), "Grüße ü");
}

TEST_F(CharsetsTest, Gb18030HoldsAllOfUnicode) {
  EXPECT_EQ(FromCharset("\xA8\xA6\x94\x39\xFC\x36", "gb2312"), "é😀");
}

TEST_F(CharsetsTest, Latin1AndAsciiAreTakenForWindows1252AsTheOtherRulesTakeThem) {
  for (const char* charset : {"iso-8859-1", "US-ASCII", "Windows-1252"})
    EXPECT_EQ(FromCharset("\x80 \x84Gr\xFC\xDF\x65\x93", charset), "€ „Grüße“") << charset;
}

TEST_F(CharsetsTest, BytesThatFitNoCharacterAreTakenForWindows1252) {
  EXPECT_EQ(FromCharset("\xE4\x80z", "utf-8"), "ä€z");
  EXPECT_EQ(FromCharset("a\xE2\x82", "utf-8"), "aâ‚") << "a sequence without its end";
  EXPECT_EQ(FromCharset("\xC0\xAF", "utf-8"), "À¯") << "an overlong form";
  EXPECT_EQ(FromCharset("\xED\xA0\x80", "utf-8"), "í\u00A0€") << "a surrogate";
  EXPECT_EQ(FromCharset("\xBE\xC8\xFF!", "euc-kr"), "안ÿ!");
  EXPECT_EQ(FromCharset("\x1B$B$3\xFC\x1B(Bz", "iso-2022-jp"), "こüz");
  EXPECT_EQ(FromCharset(std::string("\xD8\x3D\x00z", 4), "utf-16be"), "Ø=z") << "half of a pair";
}

TEST_F(CharsetsTest, AnUnknownCharsetIsNoReasonToLoseText) {
  for (const char* charset : {"x-unknown", "utf-8//IGNORE", "/", "no\nname", "../../etc", "CHAR SET"}) {
    EXPECT_EQ(FromCharset("Gr\xFC\xDF\x65 ж", charset), "Grüße ж") << charset;
  }
}

// Whatever comes, in whichever charset, what is made of it is well-formed and there.
TEST_F(CharsetsTest, NothingIsFatalAndNothingIsDropped) {
  for (const char* charset : {"", "utf-8", "utf-7", "utf-16", "utf-32", "iso-2022-jp", "iso-2022-kr", "hz",
                              "gb18030", "big5-hkscs", "euc-tw", "tcvn", "windows-1258", "koi8-u"}) {
    const std::string text = FromCharset(AllBytes() + "\x1B$", charset);
    EXPECT_FALSE(text.empty()) << charset;
    EXPECT_TRUE(IsMultiByteUtf8(text)) << charset;
    EXPECT_EQ(FromCharset("", charset), "") << charset;
  }
}

TEST_F(CharsetsTest, LongTextIsConvertedWhole) {
  std::string bytes;
  std::string text;
  for (int i = 0; i < 10'000; ++i) {
    bytes += "\xC4\xE3";
    text += "你";
  }
  EXPECT_EQ(FromCharset(bytes, "gb2312"), text);
}

TEST_F(CharsetsTest, BytesStayWhereTextIsHeldInTheCodePage) {
  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(FromCharset("\xF0\xD2", "koi8-r"), "\xF0\xD2");
  EXPECT_EQ(FromCharset("ä", "utf-8"), "ä");
}

}  // namespace
}  // namespace vorlent
