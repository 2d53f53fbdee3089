#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/AllBytes.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The rule as it is told: groups of four, values of -1, each byte made of two neighbours.
std::string DecodeByTheRule(std::string_view s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); i += 4) {
    int values[4];
    for (std::size_t k = 0; k < 4; ++k) {
      const std::size_t at = i + k < s.size() ? kAlphabet.find(s[i + k]) : std::string_view::npos;
      values[k] = at == std::string_view::npos ? -1 : static_cast<int>(at);
    }
    const auto [a, b, c, d] = values;
    if (b >= 0) out += static_cast<char>(a * 4 + b / 16);
    if (c >= 0) out += static_cast<char>(b * 16 + c / 4);
    if (d >= 0) out += static_cast<char>(c * 64 + d);
  }
  return out;
}

// --- Base64 ---

TEST(Base64Value, IsThePlaceInTheAlphabet) {
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const std::size_t at = kAlphabet.find(c);
    EXPECT_EQ(Base64Value(std::string_view(&c, 1)), at == std::string_view::npos ? -1 : static_cast<int>(at));
  }
  EXPECT_EQ(Base64Value(""), -1);
}

TEST(Base64Decode, DecodesGroupsOfFour) {
  EXPECT_EQ(Base64Decode("QUJD"), "ABC");
  EXPECT_EQ(Base64Decode("QUJDREVG"), "ABCDEF");
  EXPECT_EQ(Base64Decode("QQ=="), "A");
  EXPECT_EQ(Base64Decode("QUI="), "AB");
  EXPECT_EQ(Base64Decode("////"), "\xFF\xFF\xFF");
  EXPECT_EQ(Base64Decode("AAAA"), std::string(3, '\0'));
  EXPECT_EQ(Base64Decode(""), "");
}

TEST(Base64Decode, TakesMissingCharactersForPadding) {
  EXPECT_EQ(Base64Decode("QUI"), "AB");
  EXPECT_EQ(Base64Decode("QQ"), "A");
  EXPECT_EQ(Base64Decode("Q"), "");
  EXPECT_EQ(Base64Decode("QUJDQ"), "ABC");
}

TEST(Base64Decode, CountsForeignCharactersAsGroupMembers) {
  // " QUJ": a=-1 b=16 c=20 d=9, so the bytes -4+1, 256+5 and 1280+9, each masked.
  EXPECT_EQ(Base64Decode(" QUJ"), "\xFD\x05\x09");
  // "Q QQ": b is missing, so no first byte; c=16: -16+4; d=16: 1024+16.
  EXPECT_EQ(Base64Decode("Q QQ"), "\xF4\x10");
  // "QU=D": c is missing; d=3: -64+3.
  EXPECT_EQ(Base64Decode("QU=D"), "A\xC3");
  EXPECT_EQ(Base64Decode("===="), "");
  EXPECT_EQ(Base64Decode("QQ==QUJD"), "AABC") << "padding inside the text ends nothing";
  EXPECT_EQ(Base64Decode("\xE4\xF6\xFC\xDF"), "");
}

TEST(Base64Decode, FollowsTheRuleForAnyGroup) {
  constexpr std::string_view sample = "AQgw/+=0 9\r\n\xFF";
  std::string group;
  for (const char a : sample) {
    for (const char b : sample) {
      for (const char c : sample) {
        for (const char d : sample) {
          group = {a, b, c, d};
          for (std::size_t size = 1; size <= 4; ++size) {
            const auto part = std::string_view(group).substr(0, size);
            ASSERT_EQ(Base64Decode(part), DecodeByTheRule(part)) << part;
          }
        }
      }
    }
  }
}

TEST(Base64Decode, FollowsTheRuleForLongText) {
  std::mt19937 random(20100509);
  for (int run = 0; run < 300; ++run) {
    std::string text;
    const std::size_t length = random() % 200;
    while (text.size() < length) {
      text += random() % 20 == 0 ? static_cast<char>(random() % 256) : kAlphabet[random() % 64];
    }
    ASSERT_EQ(Base64Decode(text), DecodeByTheRule(text));
  }
}

TEST(Base64Decode, FollowsTheRuleForAnyCharacterAnywhereInALine) {
  const std::string line = "VGhlIHF1aWNrIGJyb3duIGZveCBqdW1wcyBvdmVyIHRoZSBsYXp5IGRvZ/++";
  for (std::size_t place = 0; place < line.size(); ++place) {
    for (int code = 0; code < 256; ++code) {
      std::string changed = line;
      changed[place] = static_cast<char>(code);
      ASSERT_EQ(Base64Decode(changed), DecodeByTheRule(changed)) << place << " " << code;
    }
  }
}

TEST(Base64Decode, OverflowsBehind32767Characters) {
  EXPECT_EQ(Base64Decode(std::string(32767, 'A')).size(), 24575U);
  EXPECT_EQ(SwallowedNumber([] { Base64Decode(std::string(32768, 'A')); }), 6);
}

TEST(Base64DecodeToFile, WritesTheBytesAlone) {
  const TemporaryFolder folder;
  TextWriter file(folder.Path("att1"), os::File::Mode::Create);
  Base64DecodeToFile(file, "QUJD");
  Base64DecodeToFile(file, "DQo=");
  Base64DecodeToFile(file, "AP8");
  EXPECT_EQ(SwallowedNumber([&] { Base64DecodeToFile(file, std::string(32768, 'A')); }), 6);
  file.Close();
  EXPECT_EQ(folder.Read("att1"), std::string("ABC\r\n\0\xFF", 7));
}

TEST(Base64Encode, PadsTheLastGroup) {
  EXPECT_EQ(Base64Encode(""), "");
  EXPECT_EQ(Base64Encode("A"), "QQ==");
  EXPECT_EQ(Base64Encode("AB"), "QUI=");
  EXPECT_EQ(Base64Encode("ABC"), "QUJD");
  EXPECT_EQ(Base64Encode("\xFF\xFF\xFF"), "////");
  EXPECT_EQ(Base64Encode(std::string(1, '\0')), "AA==");
  EXPECT_EQ(Base64Encode(std::string(1000, 'A')).find_first_of("\r\n"), std::string::npos);
}

TEST(Base64Encode, IsUndoneByDecoding) {
  const std::string bytes = AllBytes();
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const auto part = std::string_view(bytes).substr(0, length);
    ASSERT_EQ(Base64Decode(Base64Encode(part)), part);
  }
}

// --- Quoted-printable ---

TEST(QuotedPrintableDecode, DecodesCodesAndUnderscores) {
  EXPECT_EQ(QuotedPrintableDecode("a=3Db_c"), "a=b c");
  EXPECT_EQ(QuotedPrintableDecode("Gr=FC=DFe"), std::string("Grüße"_cp));
  EXPECT_EQ(QuotedPrintableDecode("=fc"), std::string("ü"_cp));
  EXPECT_EQ(QuotedPrintableDecode("__"), "  ");
  EXPECT_EQ(QuotedPrintableDecode("=5F"), "_") << "an underscore by its code stays";
  EXPECT_EQ(QuotedPrintableDecode("=3D41"), "=41") << "an equals sign by its code starts no other";
  EXPECT_EQ(QuotedPrintableDecode("=00"), std::string(1, '\0'));
  EXPECT_EQ(QuotedPrintableDecode("=41=42"), "AB");
  EXPECT_EQ(QuotedPrintableDecode("plain"), "plain");
  EXPECT_EQ(QuotedPrintableDecode(""), "");
}

TEST(QuotedPrintableDecode, LeavesAnEqualsSignInTheLastTwoPositions) {
  EXPECT_EQ(QuotedPrintableDecode("abc="), "abc=");
  EXPECT_EQ(QuotedPrintableDecode("abc=4"), "abc=4");
  EXPECT_EQ(QuotedPrintableDecode("abc=="), "abc==");
  EXPECT_EQ(QuotedPrintableDecode("="), "=");
  EXPECT_EQ(QuotedPrintableDecode("=_"), "= ");
  EXPECT_EQ(QuotedPrintableDecode("=41="), "A=");
  EXPECT_EQ(QuotedPrintableDecode("=3D4"), "=4");
}

TEST(QuotedPrintableDecode, RaisesTypeMismatchForOtherDigits) {
  for (const char* text :
       {"=4G", "=G4", "a=zzb", "= 41", "=4_", "===", "=41=XX", "=-1", "=+1", "=\xE4\xE4"}) {
    EXPECT_EQ(SwallowedNumber([&] { QuotedPrintableDecode(text); }), 13) << text;
  }
}

TEST(QuotedPrintableDecodeInto, ReplacesTheBuffer) {
  std::string buffer = "what was there before, longer than the result";
  QuotedPrintableDecodeInto("a=3Db", buffer);
  EXPECT_EQ(buffer, "a=b");
}

TEST(QuotedPrintableDecode, TakesLinesOfAnyLength) {
  EXPECT_EQ(QuotedPrintableDecode(std::string(100000, '_') + "=41"), std::string(100000, ' ') + "A");
}

TEST(QuotedPrintableEncode, EncodesControlCharactersAndMarks) {
  EXPECT_EQ(QuotedPrintableEncode("\n"), "=0A");
  EXPECT_EQ(QuotedPrintableEncode("\t"), "=09");
  EXPECT_EQ(QuotedPrintableEncode("\x10"), "=10");
  EXPECT_EQ(QuotedPrintableEncode("\x1F"), "=1F");
  EXPECT_EQ(QuotedPrintableEncode(std::string(1, '\0')), "=00");
  EXPECT_EQ(QuotedPrintableEncode("a=b_c"), "a=3Db=5Fc");
  EXPECT_EQ(QuotedPrintableEncode(" \x7F\x80\xFC"), " \x7F\x80\xFC") << "from 127 on nothing is encoded";
}

TEST(QuotedPrintableEncode, IsUndoneByDecoding) {
  EXPECT_EQ(QuotedPrintableDecode(QuotedPrintableEncode(AllBytes())), AllBytes());
}

}  // namespace
}  // namespace vorlent
