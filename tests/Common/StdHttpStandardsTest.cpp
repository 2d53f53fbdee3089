#include "Common/StdHttpStandards.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Common/StdHttp.h"
#include "Platform/CodePage.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

class StandardsTest : public testing::Test {
 private:
  ScopedRules rules_{Rules::Today()};
};

// --- Encoded words

TEST_F(StandardsTest, BlanksBetweenTwoWordsVanish) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?w6Q=?= =?utf-8?B?w6Q=?="), "ää");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?a?=\r\n \t=?koi8-r?B?8A==?="), "aП");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?a?= b =?utf-8?Q?c?="), "a b c");
  EXPECT_EQ(DecodeEncodedWords("a =?utf-8?Q?b?= "), "a b ");
}

TEST_F(StandardsTest, CharacterMayBeCutIntoTwoWords) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?Gr=C3?= =?UTF-8?B?vMOfZQ==?="), "Grüße");
  EXPECT_EQ(DecodeEncodedWords("=?gb2312?B?xA==?= =?gb2312?B?46Xi?="),
            DecodeEncodedWords("=?gb2312?B?xOOl4g==?="));
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?=C3?= =?koi8-r?Q?=F0?="), "ÃП")
      << "of two charsets each is by itself";
}

TEST_F(StandardsTest, WordMayTellItsLanguage) {
  EXPECT_EQ(DecodeEncodedWords("=?iso-8859-7*el?Q?=E3?="), "γ");
}

TEST_F(StandardsTest, BadCodesStayAndRaiseNothing) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?a=ZZ=C3=A4=4?="), "a=ZZä=4");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?R3LD*vMOf ZQ?="), "Grüße");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?" + std::string(40'000, 'Q') + "?="),
            Base64Decode(std::string(20'000, 'Q')) + Base64Decode(std::string(20'000, 'Q')));
}

TEST_F(StandardsTest, Base64WithoutAnyLetterStays) {
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?B?!!!?="), "=?utf-8?B?!!!?=");
  EXPECT_EQ(DecodeEncodedWords("a=?utf-8?B?"
                               "?=b"),
            "ab");
}

TEST_F(StandardsTest, WhatIsNoWordStays) {
  for (const std::string text : {"=?utf-8?X?abc?=", "=?utf-8?Q?abc", "?= =?",
                                 "=??Q?a?=", "=?a b?Q?c?=", "=?=", "=?", "=?x?", "=?x?Q", "=?x?Q?"})
    EXPECT_EQ(DecodeEncodedWords(text), text);
  EXPECT_EQ(DecodeEncodedWords("=?=?utf-8?Q?=C3=A4?="), "=?ä");
}

TEST_F(StandardsTest, TextOfManyMarksIsReadInLinearTime) {
  std::string text;
  for (int i = 0; i < 500'000; ++i)
    text += "=?u?Q?x";
  EXPECT_TRUE(DecodeEncodedWords(text) == text);
}

// A charset that the converter doesn't know, a sequence without its end, an overlong one, a surrogate: all of
// it is shown, as Windows-1252 where it fits nothing else.
struct BadText {
  const char* charset;
  const char* codes;  // quoted-printable, and with "%" for "=" a parameter's
  const char* text;
};
const std::vector<BadText> kBadTexts = {
    {"x-none", "Gr=C3=BC=DF", "Grüß"},    {"utf-8", "a=E2=82", "aâ‚"},       {"utf-8", "a=C0=AFz", "aÀ¯z"},
    {"utf-8", "=ED=A0=80z", "í\u00A0€z"}, {"utf-8", "=F5=80=80=80", "õ€€€"}, {"gb18030", "=FF!", "ÿ!"},
};

TEST_F(StandardsTest, BadTextIsShownInHeaders) {
  for (const BadText& bad : kBadTexts)
    EXPECT_EQ(DecodeEncodedWords("=?" + std::string(bad.charset) + "?Q?" + bad.codes + "?="), bad.text);
}

TEST_F(StandardsTest, BadTextIsShownInNames) {
  for (const BadText& bad : kBadTexts) {
    std::string codes = bad.codes;
    std::ranges::replace(codes, '=', '%');
    EXPECT_EQ(GetHeaderParam("a; filename*=" + std::string(bad.charset) + "''" + codes, "filename"),
              bad.text);
    EXPECT_EQ(GetHeaderParam("a; name=\"=?" + std::string(bad.charset) + "?Q?" + bad.codes + "?=\"", "name"),
              bad.text);
  }
  EXPECT_EQ(GetHeaderParam("a; name=\"a\xE2\x82\"", "name"), "aâ‚");
}

// --- Parameters

TEST_F(StandardsTest, QuotesHoldAnything) {
  EXPECT_EQ(GetHeaderParam("a; x=\"; name=no\"; name=\"x;y \\\"z\\\" \\\\.txt\"", "name"),
            "x;y \"z\" \\.txt");
  EXPECT_EQ(GetHeaderParam("a; name=\"C:\\temp\\new.txt\"", "name"), "C:\\temp\\new.txt");
  EXPECT_EQ(GetHeaderParam("a; name=\"never ends; b=c", "name"), "never ends; b=c");
  EXPECT_EQ(GetHeaderParam("a; name=my own file.pdf ; b=c", "name"), "my own file.pdf");
  EXPECT_EQ(GetHeaderParam("a; name='x'", "name"), "'x'");
  EXPECT_EQ(GetHeaderParam("a; name=", "name"), "");
  EXPECT_EQ(GetHeaderParam("a; name=\"\\", "name"), "\\");
}

TEST_F(StandardsTest, FirstOfTwoCounts) {
  EXPECT_EQ(GetHeaderParam("a; name=x; NAME=y", "name"), "x");
  EXPECT_EQ(GetPartFileName("Content-Disposition: a; filename=x\r\nContent-Disposition: a; filename=y\r\n"),
            "x");
}

TEST_F(StandardsTest, ExtendedParameterCountsBesideAPlainOne) {
  EXPECT_EQ(GetHeaderParam("a; name=x; name*=utf-8''%C3%A4", "name"), "ä");
  EXPECT_EQ(GetHeaderParam("a; name*=utf-8''%C3%A4; name=x", "name"), "ä");
  EXPECT_EQ(GetHeaderParam("a; name=x; name*0=y; name*1=z", "name"), "yz");
}

TEST_F(StandardsTest, ExtendedParameterTellsCharsetAndLanguage) {
  EXPECT_EQ(GetHeaderParam("a; name*=koi8-r'ru'%F0+%20%ZZ", "name"), "П+ %ZZ");
  EXPECT_EQ(GetHeaderParam("a; name*=\"utf-8''%C3%A4\"", "name"), "ä");
  EXPECT_EQ(GetHeaderParam("a; name*=no%20charset", "name"), "no charset");
  EXPECT_EQ(GetHeaderParam("a; name*=it's", "name"), "it's");
}

TEST_F(StandardsTest, SectionsAreJoinedInTheirOrderWithTheirBlanks) {
  EXPECT_EQ(
      GetHeaderParam("a; name*0*=utf-8'de'Rechnung%20; name*1=\"Januar \"; name*2*=%C3; name*3*=%BC", "name"),
      "Rechnung Januar ü");
  EXPECT_EQ(GetHeaderParam("a; name*10=c; name*2=b; name*0=a; name*2=x", "name"), "abc");
  EXPECT_EQ(GetHeaderParam("a; name*0=\"100%20\"; name*1*=%20'", "name"), "100%20 '");
  EXPECT_EQ(GetHeaderParam("a; name*0==?utf-8?B?w6Q=?=", "name"), "ä");
  EXPECT_EQ(GetHeaderParam("a; name*x=b; name*0*0=c; name*99999999999=d; names=e", "name"), "");
}

TEST_F(StandardsTest, TypesAndEncodingsAreReadWithoutCommentsAndCase) {
  EXPECT_EQ(GetPartContentType("Content-Type: (a (b\\)) c) Text/HTML (d); charset=x\r\n"), "text/html");
  EXPECT_EQ(GetPartContentType("Content-Type: Text /\tHTML; charset=x\r\n"), "text/html");
  EXPECT_EQ(GetPartEncoding("Content-Transfer-Encoding:\r\n\tBase64 (as\r\n ever)\r\n"), "base64");
  EXPECT_EQ(GetPartDisposition("Content-Disposition: ATTACHMENT; filename=\"(1).txt\"\r\n"), "attachment");
  EXPECT_EQ(GetPartFileName("Content-Disposition: ATTACHMENT; filename=\"(1).txt\"\r\n"), "(1).txt");
}

TEST_F(StandardsTest, CommentsTellNothing) {
  for (const std::string value : {"a/b (hi; boundary=Z) ; boundary=X (c)", "a/b; boundary=(c)X",
                                  "a/b (open; boundary=X", "a/b (\\); boundary=Z); boundary=\"X\" (c)"})
    EXPECT_EQ(GetHeaderParam(value, "boundary"), "X") << value;
  EXPECT_EQ(GetHeaderParam("a/b; boundary=\"(x)\\\"(y)\"", "boundary"), "(x)\"(y)");
  EXPECT_EQ(GetHeaderParam("attachment; filename=Report (1).pdf", "filename"), "Report (1).pdf");
}

TEST_F(StandardsTest, NameOfTheDispositionCountsWhereverItStands) {
  EXPECT_EQ(GetPartFileName("Content-Disposition: a; filename=x\r\nContent-Type: b/c; name=y\r\n"), "x");
  EXPECT_EQ(GetPartFileName("Content-Type: b/c; name=y\r\nContent-Disposition: a\r\n"), "y");
}

}  // namespace
}  // namespace vorlent
