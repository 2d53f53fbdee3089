// Base64, quoted-printable and URL coding of arbitrary bytes.

#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Fuzz.h"

namespace vorlent::fuzz {
namespace {

constexpr std::size_t kLongestInt16 = 32767;

void DecodeAnything(std::string_view text) {
  const int number = SwallowedNumber([&] {
    const std::string bytes = Base64Decode(text);
    Require(bytes.size() <= (text.size() + 3) / 4 * 3);
  });
  Require((number == static_cast<int>(ErrorNumber::Overflow)) == (text.size() > kLongestInt16));
  MayFail({ErrorNumber::TypeMismatch}, [&] { Require(QuotedPrintableDecode(text).size() <= text.size()); });
  MayFail({ErrorNumber::Overflow}, [&] { Require(UrlDecode(text).size() <= text.size()); });
}

// A line is as long as the sum of its groups, so decoding them one by one must give the same bytes.
void DecodeByGroups(std::string_view text) {
  if (text.size() > kLongestInt16) return;
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 4)
    bytes += Base64Decode(text.substr(i, 4));
  Require(bytes == Base64Decode(text));
}

void EncodeAndDecode(std::string_view bytes) {
  const std::string base64 = Base64Encode(bytes);
  Require(base64.size() == (bytes.size() + 2) / 3 * 4);
  MayFail({ErrorNumber::Overflow}, [&] { Require(Base64Decode(base64) == bytes); });
  Require(QuotedPrintableDecode(QuotedPrintableEncode(bytes)) == bytes);
  MayFail({ErrorNumber::Overflow}, [&] { Require(UrlDecode(UrlEncode(bytes)) == bytes); });
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vorlent::fuzz::Text(data, size);
  vorlent::fuzz::UnderBothRules([text] {
    vorlent::fuzz::DecodeAnything(text);
    vorlent::fuzz::DecodeByGroups(text);
    vorlent::fuzz::EncodeAndDecode(text);
  });
  return 0;
}
