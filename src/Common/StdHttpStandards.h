// The values of headers as the standards say, for the codecs of mail (StdHttp.h). Nothing raises.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// Base64 by RFC 2045: what isn't of the alphabet is passed over, and a text may come in pieces.
class Base64Reader {
 public:
  // Puts behind `out` the bytes that a character completes.
  void Take(char c, std::string& out);
  // Whether the next character begins a group.
  bool IsAtGroup() const { return bitCount_ == 0; }

 private:
  std::uint32_t bits_ = 0;  // that no byte has been made of yet
  int bitCount_ = 0;
};

// Quoted-printable by RFC 2045: "=XX" is a byte; any other "=" stays, as robust readers do it. Replaces
// `out`, which must not hold `text`.
void DecodeQuotedBytes(std::string_view text, std::string& out);

// A header value without its comments, RFC 822's text in brackets, and without blanks around it.
std::string WithoutComments(std::string_view value);

// Whether a text is a token by RFC 2045, or two of them with a slash between.
bool IsToken(std::string_view text);
bool IsContentType(std::string_view type);

// The type that a content type's value tells, in lower case; "" for one that is none, which by RFC 2045 is
// read as if it weren't there.
std::string ContentTypeByStandard(std::string_view value);

// RFC 2047. Blanks between two words vanish; the bytes of adjacent words of one charset are one text, as some
// programs cut in the middle of a character. What is no word stays.
std::string DecodeWordsByStandard(std::string_view value);

// A parameter by RFC 2045 and 2231. The form name*= counts before name=, which is meant for old programs.
// Encoded words in a plain value are decoded: they aren't foreseen there, but common.
std::string HeaderParamByStandard(std::string_view value, std::string_view name);

}  // namespace vorlent
