#include "Platform/Utf8.h"

#include <cstdint>
#include <cstring>

namespace vorlent::utf8 {

Decoded Decode(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - at < length) return {};
  char32_t codePoint = lead & (0x7F >> length);
  for (std::size_t k = 1; k < length; ++k) {
    const auto next = static_cast<unsigned char>(text[at + k]);
    if ((next & 0xC0) != 0x80) return {};
    codePoint = codePoint << 6 | (next & 0x3F);
  }
  const bool overlong = LengthOf(codePoint) != length;
  if (overlong || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint < 0xE000)) return {};
  return {codePoint, length};
}

// Most text is ASCII for long stretches, which are passed eight characters at a time.
std::size_t AsciiLength(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::size_t at = 0;
  for (std::uint64_t word = 0; text.size() - at >= sizeof word; at += sizeof word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    if ((word & kHighBits) != 0) break;
  }
  while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80)
    ++at;
  return at;
}

std::size_t WellFormedLength(std::string_view text) {
  std::size_t at = AsciiLength(text);
  while (at < text.size()) {
    const std::size_t length = Decode(text, at).length;
    if (length == 0) break;
    at += length;
    at += AsciiLength(text.substr(at));
  }
  return at;
}

void Append(std::string& text, char32_t codePoint) {
  const std::size_t length = LengthOf(codePoint);
  if (length == 1) {
    text += static_cast<char>(codePoint);
    return;
  }
  text += static_cast<char>((0xF00 >> length & 0xFF) | codePoint >> 6 * (length - 1));
  for (std::size_t k = length - 1; k > 0; --k)
    text += static_cast<char>(0x80 | (codePoint >> 6 * (k - 1) & 0x3F));
}

}  // namespace vorlent::utf8
