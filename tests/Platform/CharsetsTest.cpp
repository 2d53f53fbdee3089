#include "Platform/Charsets.h"

#include <gtest/gtest.h>

#include <sstream>
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

// The names of the WHATWG's encoding standard, and others that mails have. ASCII is UTF-8 where it can be.
TEST_F(CharsetsTest, AllNamesThatBrowsersKnowAreKnown) {
  const std::vector<CharsetCase> cases = {
      {"866 cp866 csibm866 ibm866", "\xA6", "ж"},
      {"csisolatin2 iso-8859-2 iso-ir-101 iso8859-2 iso88592 iso_8859-2 iso_8859-2:1987 l2 latin2", "\xB1",
       "ą"},
      {"csisolatin3 iso-8859-3 iso-ir-109 iso8859-3 iso88593 iso_8859-3 iso_8859-3:1988 l3 latin3", "\xB1",
       "ħ"},
      {"csisolatin4 iso-8859-4 iso-ir-110 iso8859-4 iso88594 iso_8859-4 iso_8859-4:1988 l4 latin4", "\xB1",
       "ą"},
      {"csisolatincyrillic cyrillic iso-8859-5 iso-ir-144 iso8859-5 iso88595 iso_8859-5 iso_8859-5:1988",
       "\xB1", "Б"},
      {"arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6 iso-8859-6-e "
       "iso-8859-6-i iso-ir-127 iso8859-6 iso88596 iso_8859-6 iso_8859-6:1987",
       "\xC8", "ب"},
      {"csisolatingreek ecma-118 elot_928 greek greek8 iso-8859-7 iso-ir-126 iso8859-7 iso88597 iso_8859-7 "
       "iso_8859-7:1987 sun_eu_greek",
       "\xE1", "α"},
      {"csiso88598e csisolatinhebrew hebrew iso-8859-8 iso-8859-8-e iso-ir-138 iso8859-8 iso88598 iso_8859-8 "
       "iso_8859-8:1988 visual csiso88598i iso-8859-8-i logical",
       "\xF9", "ש"},
      {"csisolatin6 iso-8859-10 iso-ir-157 iso8859-10 iso885910 l6 latin6", "\xB1", "ą"},
      {"iso-8859-13 iso8859-13 iso885913", "\xE0", "ą"},
      {"iso-8859-14 iso8859-14 iso885914", "\xA1", "Ḃ"},
      {"csisolatin9 iso-8859-15 iso8859-15 iso885915 iso_8859-15 l9", "\xA4", "€"},
      {"iso-8859-16", "\xA1", "Ą"},
      {"cskoi8r koi koi8 koi8-r koi8_r", "\xD6", "ж"},
      {"koi8-ru koi8-u", "\xA4", "є"},
      {"csmacintosh mac macintosh x-mac-roman", "\x8E", "é"},
      {"dos-874 iso-8859-11 iso8859-11 iso885911 tis-620 windows-874", "\xE4", "ไ"},
      {"cp1250 windows-1250 x-cp1250", "\xB9", "ą"},
      {"cp1251 windows-1251 x-cp1251 cp-1251 ansi-1251 win1251 windows1251", "\xE6", "ж"},
      {"ansi_x3.4-1968 ascii cp1252 cp819 csisolatin1 ibm819 iso-8859-1 iso-ir-100 iso8859-1 iso88591 "
       "iso_8859-1 iso_8859-1:1987 l1 latin1 us-ascii windows-1252 x-cp1252",
       "\x80", "€"},
      {"cp1253 windows-1253 x-cp1253", "\xE1", "α"},
      {"cp1254 csisolatin5 iso-8859-9 iso-ir-148 iso8859-9 iso88599 iso_8859-9 iso_8859-9:1989 l5 latin5 "
       "windows-1254 x-cp1254",
       "\x80\xFD", "€ı"},
      {"cp1255 windows-1255 x-cp1255", "\xF9", "ש"},
      {"cp1256 windows-1256 x-cp1256", "\xC8", "ب"},
      {"cp1257 windows-1257 x-cp1257", "\xE0", "ą"},
      {"cp1258 windows-1258 x-cp1258", "\xFE", "₫"},
      {"x-mac-cyrillic x-mac-ukrainian", "\xE6", "ж"},
      {"chinese csgb2312 csiso58gb231280 gb2312 gb_2312 gb_2312-80 gbk iso-ir-58 x-gbk gb18030 gb18030-2022",
       "\xD6\xD0", "中"},
      {"big5 big5-hkscs cn-big5 big5-eten csbig5 x-x-big5", "\xC1\x63", "繁"},
      {"cseucpkdfmtjapanese euc-jp x-euc-jp cp51932", "\xC6\xFC", "日"},
      {"csiso2022jp iso-2022-jp", "\x1B$BF|\x1B(B", "日"},
      {"x-ms-cp932 csshiftjis ms932 ms_kanji shift-jis shift_jis sjis windows-31j x-sjis", "\x93\xFA", "日"},
      {"cseuckr csksc56011987 euc-kr iso-ir-149 korean ks_c_5601-1987 ks_c_5601-1989 ksc5601 ksc_5601 "
       "windows-949 ks_c_5601 x-windows-949",
       "\x8C\x63", "똠"},
      {"unicode-1-1-utf-8 unicode11utf8 unicode20utf8 utf-8 utf8 x-unicode20utf8", "\xC3\xA9", "é"},
      {"unicodefffe utf-16be", "N-", "中"},
      {"csunicode iso-10646-ucs-2 ucs-2 unicode unicodefeff utf-16 utf-16le", "-N", "中"},
  };
  for (const CharsetCase& each : cases) {
    std::istringstream names(each.charset);
    for (std::string name; names >> name;)
      EXPECT_EQ(FromCharset(each.bytes, name), each.text) << name;
  }
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
