#include "Platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Platform/Guid.h"

namespace vorlent {

namespace {

struct Decoded {
  char32_t codePoint = 0;
  std::size_t length = 0;  // 0: no well-formed character stands here
};

// RFC 3629: no overlong forms, no surrogates, nothing above 10FFFF.
Decoded DecodeUtf8(std::string_view text, std::size_t at) {
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
  const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
  if (overlong || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint < 0xE000)) return {};
  return {codePoint, length};
}

void AppendUtf8(std::string& out, char32_t codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0 | codePoint >> 6);
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | codePoint >> 12);
    out += static_cast<char>(0x80 | (codePoint >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  }
}

// Converts, and tells by `exact` whether every character was held by the page.
std::string ToCodePage(std::string_view text, bool& exact) {
  std::string out;
  out.reserve(text.size());
  exact = true;
  for (std::size_t i = 0; i < text.size();) {
    const Decoded decoded = DecodeUtf8(text, i);
    const auto byte = decoded.length == 0 ? std::nullopt : codepage::FromCodePoint(decoded.codePoint);
    if (!byte) exact = false;
    out += byte ? static_cast<char>(*byte) : '?';
    i += std::max<std::size_t>(decoded.length, 1);
  }
  return out;
}

// What the hashes of this process rest on: who writes the texts can't know which of them share one.
struct HashSeed {
  std::uint64_t start;
  std::uint64_t factor;

  HashSeed() {
    const auto bytes = os::NewGuidBytes();
    std::memcpy(&start, bytes.data(), sizeof start);
    std::memcpy(&factor, bytes.data() + sizeof start, sizeof factor);
    factor |= 1;
  }
};

// Every bit of the result depends on every bit of both.
std::uint64_t MultiplyAndFold(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Eight characters at a time.
std::uint64_t LowerCaseOf(std::uint64_t word) {
  constexpr std::uint64_t kEach = 0x0101010101010101;
  constexpr std::uint64_t kHighBits = 0x80 * kEach;
  if ((word & kHighBits) != 0) {
    std::array<unsigned char, sizeof word> bytes;
    std::memcpy(bytes.data(), &word, sizeof word);
    for (unsigned char& byte : bytes)
      byte = codepage::ToLower(byte);
    std::memcpy(&word, bytes.data(), sizeof word);
    return word;
  }
  // The high bit of each sum tells whether the character stands at or after "A", and after "Z".
  const std::uint64_t fromA = word + (0x80 - 'A') * kEach;
  const std::uint64_t behindZ = word + (0x80 - 'Z' - 1) * kEach;
  return word | (fromA & ~behindZ & kHighBits) >> 2;
}

}  // namespace

std::string CodePageToUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  for (auto next = text.begin(); next != text.end();) {
    const auto stop = std::find_if_not(next, text.end(), isAscii);
    out.append(next, stop);
    next = stop;
    if (next != text.end()) AppendUtf8(out, codepage::ToCodePoint(static_cast<unsigned char>(*next++)));
  }
  return out;
}

std::string Utf8ToCodePage(std::string_view text) {
  bool exact = false;
  return ToCodePage(text, exact);
}

std::optional<std::string> ExactUtf8ToCodePage(std::string_view text) {
  bool exact = false;
  std::string out = ToCodePage(text, exact);
  if (!exact) return std::nullopt;
  return out;
}

// Without a branch for each character, so that it costs next to nothing beside the conversions it spares.
bool IsAscii(std::string_view text) {
  unsigned char bits = 0;
  for (const char c : text)
    bits |= static_cast<unsigned char>(c);
  return bits < 0x80;
}

bool IsMultiByteUtf8(std::string_view text) {
  bool multiByte = false;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = DecodeUtf8(text, i).length;
    if (length == 0) return false;
    if (length > 1) multiByte = true;
    i += length;
  }
  return multiByte;
}

std::string DisplayUtf8(std::string_view text) {
  return IsAscii(text) || IsMultiByteUtf8(text) ? std::string(text) : CodePageToUtf8(text);
}

std::string LowerCase(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    c = static_cast<char>(codepage::ToLower(static_cast<unsigned char>(c)));
  return out;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  return a == b || std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
           return codepage::ToLower(static_cast<unsigned char>(x)) ==
                  codepage::ToLower(static_cast<unsigned char>(y));
         });
}

std::size_t HashNoCase(std::string_view text) {
  static const HashSeed seed;
  std::uint64_t hash = seed.start ^ text.size();
  while (!text.empty()) {
    std::uint64_t word = 0;
    const std::size_t size = std::min(text.size(), sizeof word);
    std::memcpy(&word, text.data(), size);
    hash = MultiplyAndFold(hash ^ LowerCaseOf(word), seed.factor);
    text.remove_prefix(size);
  }
  return hash;
}

}  // namespace vorlent
