// The system code page, Windows-1252: one byte per character.
//
// Text inside the system is held in it. The five bytes that the page leaves open (81, 8D, 8F, 90, 9D) stand
// for the control characters of the same number, as the operating system maps them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Public.h"

namespace vorlent {

namespace codepage {

constexpr unsigned char Code(char c) {
  return static_cast<unsigned char>(c);
}

// Code points of the bytes 80 to 9F; all others stand for themselves.
inline constexpr std::array<char16_t, 32> kUpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t ToCodePoint(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? char32_t{kUpperControls[byte - 0x80]} : char32_t{byte};
}

// The byte of a code point, nothing where the page doesn't hold it.
constexpr std::optional<unsigned char> FromCodePoint(char32_t codePoint) {
  if (codePoint < 0x80 || (codePoint >= 0xA0 && codePoint <= 0xFF))
    return static_cast<unsigned char>(codePoint);
  const auto found = std::find(kUpperControls.begin(), kUpperControls.end(), codePoint);
  if (found == kUpperControls.end()) return std::nullopt;
  return static_cast<unsigned char>(0x80 + (found - kUpperControls.begin()));
}

// The lower-case form of one character of the page.
constexpr unsigned char ToLower(unsigned char c) {
  if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7))
    return static_cast<unsigned char>(c + 0x20);
  if (c == 0x8A || c == 0x8C || c == 0x8E) return static_cast<unsigned char>(c + 0x10);
  return c == 0x9F ? 0xFF : c;
}

}  // namespace codepage

// A string literal whose UTF-8 source text is turned into code-page bytes at compile time.
template <std::size_t Size>
struct CodePageLiteral {
  consteval CodePageLiteral(const char (&utf8)[Size]) {
    for (std::size_t i = 0; i + 1 < Size;) {
      const auto lead = static_cast<unsigned char>(utf8[i]);
      const std::size_t count = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : 3;
      char32_t codePoint = count == 1 ? lead : count == 2 ? lead & 0x1F : lead & 0x0F;
      for (std::size_t k = 1; k < count; ++k)
        codePoint = codePoint << 6 | (utf8[i + k] & 0x3F);
      // A character that the page doesn't hold makes this access no constant expression, and so a compile
      // error.
      bytes[length++] = static_cast<char>(codepage::FromCodePoint(codePoint).value());
      i += count;
    }
  }

  std::array<char, Size> bytes{};
  std::size_t length = 0;
};

template <CodePageLiteral Literal>
constexpr std::string_view operator""_cp() {
  return std::string_view(Literal.bytes.data(), Literal.length);
}

// The text as UTF-8.
VORLENT_PUBLIC std::string CodePageToUtf8(std::string_view text);

// The text as code page; characters that the page doesn't hold, and bytes that are no UTF-8, become '?'.
VORLENT_PUBLIC std::string Utf8ToCodePage(std::string_view text);

// As above, but nothing if a character is lost.
VORLENT_PUBLIC std::optional<std::string> ExactUtf8ToCodePage(std::string_view text);

// Whether all bytes are ASCII, which the page and UTF-8 write alike.
VORLENT_PUBLIC bool IsAscii(std::string_view text);

// Whether the bytes are well-formed UTF-8 that holds at least one multi-byte character.
VORLENT_PUBLIC bool IsMultiByteUtf8(std::string_view text);

// What a person should read: text that is multi-byte UTF-8 already stays, all else is taken as code page.
VORLENT_PUBLIC std::string DisplayUtf8(std::string_view text);

// A copy in lower case.
VORLENT_PUBLIC std::string LowerCase(std::string_view text);

// Whether the two are equal without regard to letter case.
VORLENT_PUBLIC bool EqualNoCase(std::string_view a, std::string_view b);

// A hash that texts which are EqualNoCase share. It is another in each process, so that nobody can write
// texts that all have the same one.
VORLENT_PUBLIC std::size_t HashNoCase(std::string_view text);

}  // namespace vorlent
