#include <gtest/gtest.h>

#include <string>

#include "Common/StdHttp.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

// --- UTF-8 ---

TEST(Utf8Decode, DecodesSequencesToTheCodePage) {
  EXPECT_EQ(Utf8Decode("\xC3\xA4"), std::string("ä"_cp));
  EXPECT_EQ(Utf8Decode("Gr\xC3\xBC\xC3\x9F"
                       "e"),
            std::string("Grüße"_cp));
  EXPECT_EQ(Utf8Decode("\xE2\x82\xAC"), "\x80") << "the euro sign";
  EXPECT_EQ(Utf8Decode("\xE2\x80\x93\xE2\x80\x9E\xC5\xB8"), std::string("–„Ÿ"_cp));
  EXPECT_EQ(Utf8Decode("plain \x7F"), "plain \x7F");
  EXPECT_EQ(Utf8Decode(""), "");
}

TEST(Utf8Decode, PutsAQuestionMarkForWhatThePageDoesntHold) {
  EXPECT_EQ(Utf8Decode("a\xCE\xB1z"), "a?z") << "a Greek letter";
  EXPECT_EQ(Utf8Decode("\xF0\x9F\x98\x80!"), "?!") << "beyond 65,535";
  EXPECT_EQ(Utf8Decode("\xC4\x80"), "?") << "code point 256, the first that is mapped";
  EXPECT_EQ(Utf8Decode("\xF7\xBF\xBF\xBF\xF8\x88\x80\x80\x80\xFD\xBF\xBF\xBF\xBF\xBF"), "???");
}

TEST(Utf8Decode, LeavesLowCodePointsForThemselves) {
  EXPECT_EQ(Utf8Decode("\xC2\x80\xC2\x81\xC2\x9F"), "\x80\x81\x9F");
  EXPECT_EQ(Utf8Decode("\xC3\xBF"), "\xFF");
  EXPECT_EQ(Utf8Decode("\xC1\x81"), "A") << "an overlong form is not refused";
}

TEST(Utf8Decode, TakesTheByte128ForPlain) {
  EXPECT_EQ(Utf8Decode("\x80"
                       "ab"),
            "\x80"
            "ab");
  EXPECT_EQ(Utf8Decode("\x81"
                       "abc"),
            "abc")
      << "129 leads a sequence of two: (1 * 64) + ('a' and 63) = 97";
}

TEST(Utf8Decode, ChecksNoContinuation) {
  // E4 leads three bytes: (4 * 64 + 'b' and 63) * 64 + ('c' and 63) = 18,595, which the page doesn't hold.
  EXPECT_EQ(Utf8Decode("\xE4"
                       "bcd"),
            "?d");
  EXPECT_EQ(Utf8Decode("\xC3(x"), "\xE8x") << "3 * 64 + ('(' and 63) = 232";
  // A4 has the bit of 32 and not that of 16: three bytes as well, 4 as its value.
  EXPECT_EQ(Utf8Decode("\xA4\x80\x80z"), "?z");
}

TEST(Utf8Decode, TakesNothingBehindTheEndForZero) {
  EXPECT_EQ(Utf8Decode("a\xC3"), "a\xC0") << "3 * 64";
  EXPECT_EQ(Utf8Decode("a\xE2\x82"), "a?") << "the two bytes that are there become one character";
  EXPECT_EQ(Utf8Decode("\xE0\x82"), "\x80") << "(0 * 64 + 2) * 64";
  EXPECT_EQ(Utf8Decode("\xFF"), std::string(1, '\0')) << "seven bytes, no bit of which is in the lead";
  EXPECT_EQ(Utf8Decode("\xFF\x80\x80\x80\x80\x80\x80z"), std::string("\0z", 2));
}

TEST(Utf8Encode, EncodesTheCodePage) {
  EXPECT_EQ(Utf8Encode("\x80"), "\xE2\x82\xAC");
  EXPECT_EQ(Utf8Encode("ä"_cp), "\xC3\xA4");
  EXPECT_EQ(Utf8Encode("\xFF"), "\xC3\xBF");
  EXPECT_EQ(Utf8Encode("\x93"), "\xC2\x93") << "only the euro sign is mapped";
  EXPECT_EQ(Utf8Encode("plain\x7F\n"), "plain\x7F\n");
  EXPECT_EQ(Utf8Encode(""), "");
}

TEST(Utf8Encode, IsUndoneByDecoding) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const std::string text = {static_cast<char>(first), static_cast<char>(second)};
      ASSERT_EQ(Utf8Decode(Utf8Encode(text)), text);
    }
  }
}

// --- Encoded words ---

TEST(DecodeEncodedWords, DecodesBothEncodings) {
  EXPECT_EQ(DecodeEncodedWords("=?iso-8859-1?Q?Gr=FC=DFe?="), std::string("Grüße"_cp));
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?w6Q=?= x"), std::string("ä x"_cp));
  EXPECT_EQ(DecodeEncodedWords("=?UTF-8?b?w6Q=?="), std::string("ä"_cp));
  EXPECT_EQ(DecodeEncodedWords("=?Utf-8?q?=C3=A4_=C3=B6?="), std::string("ä ö"_cp));
  EXPECT_EQ(DecodeEncodedWords("a =?iso-8859-1?B?QUJD?= b"), "a ABC b");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?\?="), "");
  EXPECT_EQ(DecodeEncodedWords("no words"), "no words");
  EXPECT_EQ(DecodeEncodedWords(""), "");
}

TEST(DecodeEncodedWords, TakesOtherCharsetsAsTheyStand) {
  EXPECT_EQ(DecodeEncodedWords("=?koi8-r?B?w6Q=?="), "\xC3\xA4");
  EXPECT_EQ(DecodeEncodedWords("=?utf8?B?w6Q=?="), "\xC3\xA4");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8*de?B?w6Q=?="), "\xC3\xA4");
}

TEST(DecodeEncodedWords, KeepsTheBlankBetweenTwoWords) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?w6Q=?= =?utf-8?B?w6Q=?="), std::string("ä ä"_cp));
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?w6Q=?==?utf-8?B?w6Q=?="), std::string("ää"_cp));
}

TEST(DecodeEncodedWords, PutsBackAnUnknownEncoding) {
  EXPECT_EQ(DecodeEncodedWords("=?iso-8859-1?x?Some=20Data?="), "=?iso-8859-1?x?Some=20Data?=");
  EXPECT_EQ(DecodeEncodedWords("=?Utf-8?x?\xC3\xA4?= z"), std::string("=?Utf-8?x?ä?= z"_cp))
      << "with the charset UTF-8 even that is decoded";
  EXPECT_EQ(DecodeEncodedWords("=?a?? b?="), "=?a?? b?=");
}

TEST(DecodeEncodedWords, RemovesLineEnds) {
  EXPECT_EQ(DecodeEncodedWords("a?=\r\n b"), "a?= b") << "a text with ?= but no =?";
  EXPECT_EQ(DecodeEncodedWords("a=?\n b"), "a=? b");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?w6Q=?=\r\n =?utf-8?Q?=0D=0Ax?="), std::string("ä x"_cp))
      << "decoded ones too";
}

TEST(DecodeEncodedWords, CutsTornWordsToo) {
  EXPECT_EQ(DecodeEncodedWords("a?= =?utf-8?Q?b"), "a?= b") << "the two marks may stand in any order";
  EXPECT_EQ(DecodeEncodedWords("?==?"),
            "?==???"
            "?=")
      << "all three parts are empty, the encoding unknown";
  EXPECT_EQ(DecodeEncodedWords("=?="), "=?=?\?\?=") << "the charset '=' is all there is";
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?a=?="), "a=");
}

TEST(DecodeEncodedWords, LetsFailuresOfTheDecodersThrough) {
  EXPECT_EQ(SwallowedNumber([] { DecodeEncodedWords("=?utf-8?Q?a=ZZb?="); }), 13);
  EXPECT_EQ(SwallowedNumber([] { DecodeEncodedWords("=?utf-8?B?" + std::string(32768, 'A') + "?="); }), 6);
}

TEST(DecodeEncodedWords, StaysLinearInManyWords) {
  std::string text;
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    text += "=?utf-8?Q?=41?=";
    expected += 'A';
  }
  EXPECT_EQ(DecodeEncodedWords(text), expected);
}

// --- Parameters of a header value ---

TEST(GetHeaderParam, ReadsPlainAndQuotedValues) {
  EXPECT_EQ(GetHeaderParam("text/plain; name=\"a b.txt\"", "name"), "a b.txt");
  EXPECT_EQ(GetHeaderParam("text/plain; name=a.txt", "name"), "a.txt");
  EXPECT_EQ(GetHeaderParam("text/plain; name=a b.txt", "name"), "a") << "a blank ends a plain word";
  EXPECT_EQ(GetHeaderParam("text/plain;name='a b'", "name"), "a b");
  EXPECT_EQ(GetHeaderParam("text/plain;\r\n\tNAME = \"a\"\"b\" ; charset=x", "name"), "a\"b");
  EXPECT_EQ(GetHeaderParam("text/plain; charset=us-ascii; name=x", "charset"), "us-ascii");
  EXPECT_EQ(GetHeaderParam("text/plain; name==?utf-8?Q?=C3=A4?=", "name"), std::string("ä"_cp));
  EXPECT_EQ(GetHeaderParam("text/plain; name=\"=?utf-8?B?w6Q=?=.txt\"", "name"), std::string("ä.txt"_cp));
}

TEST(GetHeaderParam, GivesNothingForWhatIsAbsent) {
  EXPECT_EQ(GetHeaderParam("text/plain", "name"), "");
  EXPECT_EQ(GetHeaderParam("name=a", "name"), "") << "the main value is no parameter";
  EXPECT_EQ(GetHeaderParam("text/plain; charset=x", "name"), "");
  EXPECT_EQ(GetHeaderParam("text/plain; filename=x", "name"), "");
  EXPECT_EQ(GetHeaderParam("text/plain; name", "name"), "");
  EXPECT_EQ(GetHeaderParam("", "name"), "");
}

TEST(GetHeaderParam, TakesTheLastOfRepeatedParameters) {
  EXPECT_EQ(GetHeaderParam("x; name=a; name=b", "name"), "b");
  EXPECT_EQ(GetHeaderParam("x; name*=a; name=b", "name"), "b");
  EXPECT_EQ(GetHeaderParam("x; name=a; name*=b", "name"), "ab") << "extended values are appended";
}

TEST(GetHeaderParam, TearsAQuotedSemicolonApart) {
  EXPECT_EQ(GetHeaderParam("x; name=\"a;b\"; charset=c", "name"), "a");
}

TEST(GetHeaderParam, DecodesExtendedValues) {
  // RFC 2231
  EXPECT_EQ(GetHeaderParam("x; filename*=utf-8''a%20b", "filename"), "a b");
  EXPECT_EQ(GetHeaderParam("x; filename*=%E4.txt", "filename"), std::string("ä.txt"_cp));
  EXPECT_EQ(GetHeaderParam("x; filename*0*=iso-8859-1''a%20; filename*1*=b+c; filename*2=.txt", "filename"),
            "ab c.txt")
      << "each piece is trimmed";
  EXPECT_EQ(GetHeaderParam("x; filename*1=b; filename*0=a", "filename"), "ba")
      << "in the order of appearance";
  EXPECT_EQ(GetHeaderParam("x; filename*=utf-8''%C3%A4", "filename"), "\xC3\xA4")
      << "the charset isn't applied";
  EXPECT_EQ(GetHeaderParam("x; filename*=utf-8''a''b", "filename"), "a''b") << "only the first mark goes";
  EXPECT_EQ(GetHeaderParam("x; filename*=utf-8'de'a", "filename"), "utf-8'de'a")
      << "a language hides the mark";
  EXPECT_EQ(GetHeaderParam("x; filename*=\"a b\"", "filename"), "\"a b\"") << "quotes are not taken off";
  EXPECT_EQ(GetHeaderParam("x; name*=a", "filename"), "");
  EXPECT_EQ(GetHeaderParam("x; FileName*=%09a%20", "filename"), "a") << "trimmed after the decoding";
}

TEST(GetHeaderParam, LetsFailuresOfTheDecodersThrough) {
  EXPECT_EQ(SwallowedNumber([] { GetHeaderParam("x; name==?utf-8?Q?=XX?=", "name"); }), 13);
  EXPECT_EQ(SwallowedNumber([] { GetHeaderParam("x; name*=" + std::string(32767, 'a') + "%41", "name"); }),
            6);
}

// --- Header blocks of parts ---

TEST(GetPartFileName, ReadsTheNameOfAnAttachment) {
  EXPECT_EQ(GetPartFileName("Content-Type: text/plain; name=\"a.txt\"\r\n"), "a.txt");
  EXPECT_EQ(GetPartFileName("Content-Disposition: attachment; filename=\"b.txt\"\r\n"), "b.txt");
  EXPECT_EQ(GetPartFileName("CONTENT-TYPE : text/plain; NAME=a.txt\n"), "a.txt");
  EXPECT_EQ(GetPartFileName("Content-Type: text/plain\r\n"), "");
  EXPECT_EQ(GetPartFileName("X-Content-Type: text/plain; name=a\r\n"), "");
  EXPECT_EQ(GetPartFileName(""), "");
}

TEST(GetPartFileName, TakesTheLastHeaderEvenIfItHasNoName) {
  const std::string type = "Content-Type: text/plain; name=a.txt\r\n";
  const std::string disposition = "Content-Disposition: attachment; filename=b.txt\r\n";
  EXPECT_EQ(GetPartFileName(type + disposition), "b.txt");
  EXPECT_EQ(GetPartFileName(disposition + type), "a.txt");
  EXPECT_EQ(GetPartFileName(type + "Content-Disposition: inline\r\n"), "");
  EXPECT_EQ(GetPartFileName(disposition + "Content-Type: text/plain\r\n"), "");
}

TEST(GetPartFileName, UnfoldsHeaders) {
  EXPECT_EQ(GetPartFileName("Content-Type: text/plain;\r\n\tname=\"a\r\n b.txt\"\r\nX: y\r\n"), "a b.txt")
      << "the blank of a continuation stays";
  EXPECT_EQ(GetPartFileName("Content-Type: text/plain;\n name*0=a;\n name*1=b"), "ab");
  EXPECT_EQ(GetPartFileName("Content-Type: text/plain\r\n\r\nname=a"), "");
}

TEST(GetPartFileName, IsSafeForAFileSystem) {
  EXPECT_EQ(GetPartFileName("Content-Type: a; name=\"..\\..\\a:b?.txt\""), "..%5C..%5Ca%3Ab%3F.txt");
  EXPECT_EQ(GetPartFileName("Content-Type: a; name=\"=?utf-8?B?w6Q=?=\""), std::string("ä"_cp));
  EXPECT_EQ(GetPartFileName("Content-Type: a; name*=a%00%2F"), "a%00%2F");
  EXPECT_EQ(SwallowedNumber([] { GetPartFileName("Content-Type: a; name=" + std::string(32768, 'a')); }), 6);
}

TEST(GetPartContentType, IsTheTypeAsWritten) {
  EXPECT_EQ(GetPartContentType("Content-Type: Text/HTML ; charset=x\r\n"), "Text/HTML");
  EXPECT_EQ(GetPartContentType("content-type:text/plain"), "text/plain");
  EXPECT_EQ(GetPartContentType("Content-Type:\r\n text/plain;\r\n name=x"), "text/plain");
  EXPECT_EQ(GetPartContentType("Content-Type: a/b\r\nContent-Type: c/d"), "c/d");
  EXPECT_EQ(GetPartContentType("X: y\r\n"), "");
  EXPECT_EQ(GetPartContentType(""), "");
}

TEST(GetPartBoundary, IsTheBoundaryAsWritten) {
  EXPECT_EQ(GetPartBoundary("Content-Type: multipart/mixed; boundary=\"--=_A b\"\r\n"), "--=_A b");
  EXPECT_EQ(GetPartBoundary("Content-Type: multipart/mixed;\r\n\tboundary=AbC\r\n"), "AbC");
  EXPECT_EQ(GetPartBoundary("Content-Type: text/plain\r\n"), "");
  EXPECT_EQ(GetPartBoundary("Content-Disposition: x; boundary=b\r\n"), "");
}

// --- Where text is held in UTF-8 ---

class UnicodeHeaders : public testing::Test {
 private:
  ScopedRules rules_{Rules::Today()};
};

TEST_F(UnicodeHeaders, EncodedWordsOfEveryCharsetAreRead) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?8J+YgCDQlg==?="), "😀 Ж");
  EXPECT_EQ(DecodeEncodedWords("=?koi8-r?Q?=F0=D2=C9=D7=C5=D4?= a"), "Привет a");
  EXPECT_EQ(DecodeEncodedWords("=?ISO-2022-JP?B?GyRCJDMkcxsoQg==?="), "こん");
  EXPECT_EQ(DecodeEncodedWords("=?GB2312*zh?B?xOO6ww==?="), "你好") << "a language behind the charset";
  EXPECT_EQ(DecodeEncodedWords("=?windows-1256?Q?=E3=D1=CD=C8=C7?="), "مرحبا");
  EXPECT_EQ(DecodeEncodedWords("=?iso-8859-1?Q?Gr=FC=DFe_5_=80?="), "Grüße 5 €");
}

TEST_F(UnicodeHeaders, BytesWithoutACharsetAreUtf8OrWindows1252) {
  EXPECT_EQ(DecodeEncodedWords("Grüße 😀"), "Grüße 😀");
  EXPECT_EQ(DecodeEncodedWords("Gr\xFC\xDF\x65 =?utf-8?Q?=D0=96?= \x80"), "Grüße Ж €");
}

TEST_F(UnicodeHeaders, WhatFitsNoCharsetIsShown) {
  EXPECT_EQ(DecodeEncodedWords("=?x-none?Q?Gr=FC=DFe?="), "Grüße");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?a=E2=82?="), "aâ‚") << "a sequence without its end";
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?=C0=AF?="), "À¯") << "an overlong form";
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?=ED=A0=80?="), "í\u00A0€") << "a surrogate";
}

TEST_F(UnicodeHeaders, ParametersHaveTheirOwnCharset) {
  EXPECT_EQ(GetHeaderParam("a; filename*=UTF-8''%F0%9F%98%80.txt", "filename"), "😀.txt");
  EXPECT_EQ(GetHeaderParam("a; filename*=koi8-r''%F0%D2%C9.txt", "filename"), "При.txt");
  EXPECT_EQ(GetHeaderParam("a; filename*0*=UTF-8''%D0; filename*1*=%96.txt", "filename"), "Ж.txt")
      << "a character may begin in one section and end in the next";
  EXPECT_EQ(GetHeaderParam("a; name=\"=?koi8-r?B?8NLJ?=.txt\"", "name"), "При.txt");
  EXPECT_EQ(GetPartFileName("Content-Type: a; name=\"=?utf-8?B?8J+YgA==?=:1\""), "😀%3A1");
}

}  // namespace
}  // namespace vorlent
