// UTF-8, encoded words, header parameters and dates as any mail may hold them.

#include <algorithm>
#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Fuzz.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"

namespace vorlent::fuzz {
namespace {

// What the codecs of encoded words and of extended parameters may raise.
constexpr std::initializer_list<ErrorNumber> kDecoderFailures = {ErrorNumber::Overflow,
                                                                 ErrorNumber::TypeMismatch};

// Any bytes become text of all of Unicode, which stays what it is.
void CharactersOfUnicode(std::string_view text) {
  const std::string decoded = Utf8Decode(text);
  Require(IsAscii(decoded) || IsMultiByteUtf8(decoded));
  Require(Utf8Encode(decoded) == decoded && Utf8Decode(decoded) == decoded);
}

void Characters(std::string_view text) {
  if (HoldsUtf8()) return CharactersOfUnicode(text);
  Require(Utf8Decode(text).size() <= text.size());
  Require(Utf8Decode(Utf8Encode(text)) == text);
}

void EncodedWords(std::string_view text) {
  MayFail(kDecoderFailures, [&] {
    const std::string decoded = DecodeEncodedWords(text);
    Require(decoded.find_first_of("\r\n") == std::string::npos);
  });
  if (text.find("=?") != std::string_view::npos) return;
  std::string plain = HoldsUtf8() ? TextFromUtf8(text) : std::string(text);
  std::erase_if(plain, [](char c) { return c == '\r' || c == '\n'; });
  Require(DecodeEncodedWords(text) == plain);
}

// A name from a mail must not reach a folder that isn't its own.
void Parts(std::string_view block) {
  MayFail(kDecoderFailures, [&] { GetHeaderParam(block, "name"); });
  MayFail(kDecoderFailures, [&] {
    const std::string name = GetPartFileName(block);
    Require(name.find_first_of("\\/:*?\"<>|") == std::string::npos);
    Require(std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < 32; }));
  });
  MayFail(kDecoderFailures, [&] { GetPartBoundary(block); });
  GetPartContentType(block);
}

// Whatever a mail's date is, display text comes of it that the date helpers can read; or nothing, where not
// some date is made of anything.
void Dates(std::string_view text) {
  const std::string display = MailDateToDisplay(std::string(text));
  if (display.empty() && CurrentRules().mailDates == MailDates::OfAnyProgram) return;
  Require(display.size() >= 19);
  Require(display[display.size() - 9] == ' ');
  Require(display[display.size() - 6] == ':' && display[display.size() - 3] == ':');
  Require(DisplayToStamp(display).size() >= 14);
}

void Records(std::string_view text) {
  std::string expected(text);
  ReplaceText(expected, "\r", "");
  ReplaceText(expected, "\n", "\r\n");
  const std::string escaped = EscapeValue(text);
  Require(UnescapeValue(escaped) == expected);
  Require(GetParam("a=1|b=" + escaped + "|c=3", "b") == expected);
  Require(GetParam("a=1|b=" + escaped + "|c=3", "c") == "3");
  UnescapeValue(text);
  ReadNumber(text);
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vorlent::fuzz::Text(data, size);
  vorlent::fuzz::UnderBothRules([text] {
    vorlent::fuzz::Characters(text);
    vorlent::fuzz::EncodedWords(text);
    vorlent::fuzz::Parts(text);
    vorlent::fuzz::Dates(text);
    vorlent::fuzz::Records(text);
  });
  return 0;
}
