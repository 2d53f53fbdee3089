// The encoding that text inside the system is held in: the system code page, Windows-1252, or UTF-8, as the
// rules in force say. What asks for characters goes through these functions, which know both; all else treats
// text as bytes.
//
// The five bytes that the page leaves open (81, 8D, 8F, 90, 9D) stand for the control characters of the same
// number, as the operating system maps them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Public.h"
#include "Platform/Rules.h"

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

// Bytes of the page as UTF-8, whichever the rules; and back, where characters that the page doesn't hold, and
// bytes that are no UTF-8, become '?', or make it nothing.
std::string ToUtf8(std::string_view page);
std::string FromUtf8(std::string_view utf8);
std::optional<std::string> ExactFromUtf8(std::string_view utf8);

}  // namespace codepage

// Whether text is held in UTF-8.
inline bool HoldsUtf8() {
  return CurrentRules().text == TextEncoding::Utf8;
}

// A string literal in both encodings: its UTF-8 source text, and the code-page bytes that it is turned into
// at compile time.
template <std::size_t Size>
struct CodePageLiteral {
  consteval CodePageLiteral(const char (&source)[Size]) {
    std::copy(source, source + Size, utf8.begin());
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

  std::array<char, Size> utf8{};
  std::array<char, Size> bytes{};
  std::size_t length = 0;
};

// A literal in a table that is made before rules are chosen: it is as text is held when it is read.
struct TextLiteral {
  std::string_view page, utf8;

  operator std::string_view() const { return HoldsUtf8() ? utf8 : page; }
};

template <CodePageLiteral Literal>
constexpr TextLiteral operator""_table() {
  return {.page = {Literal.bytes.data(), Literal.length},
          .utf8 = {Literal.utf8.data(), Literal.utf8.size() - 1}};
}

// The literal as text is held.
template <CodePageLiteral Literal>
std::string_view operator""_cp() {
  return operator""_table<Literal>();
}

// The text as UTF-8, always well-formed. Where text is held in UTF-8, bytes that are none are taken for
// Windows-1252, one by one.
VORLENT_PUBLIC std::string TextToUtf8(std::string_view text);

// UTF-8 as text is held. Where that is the code page, characters that it doesn't hold, and bytes that are no
// UTF-8, become '?'; else such bytes are taken for Windows-1252.
VORLENT_PUBLIC std::string TextFromUtf8(std::string_view text);

// As above, but nothing if a character is lost, or a byte isn't UTF-8.
VORLENT_PUBLIC std::optional<std::string> ExactTextFromUtf8(std::string_view text);

// Whether all bytes are ASCII, which the page and UTF-8 write alike.
VORLENT_PUBLIC bool IsAscii(std::string_view text);

// Whether the bytes are well-formed UTF-8 that holds at least one multi-byte character.
VORLENT_PUBLIC bool IsMultiByteUtf8(std::string_view text);

// What a person should read: text that is multi-byte UTF-8 already stays, all else is taken as the text that
// is held inside.
VORLENT_PUBLIC std::string DisplayUtf8(std::string_view text);

// Text in the one form that is the same by all rules, and back: code page, or UTF-8 where the page doesn't
// hold a character. An archive and what is compared with it keep to it.
std::string ToPageText(std::string_view text);
std::string FromPageText(std::string_view pageText);

// How many bytes the first character of a text takes that isn't empty; 0 if what stands there is none.
std::size_t CharacterLength(std::string_view text);

// A copy in lower or upper case, of as many bytes: letters whose two cases differ in that stay.
VORLENT_PUBLIC std::string LowerCase(std::string_view text);
std::string UpperCase(std::string_view text);

// Whether the two are equal without regard to letter case.
VORLENT_PUBLIC bool EqualNoCase(std::string_view a, std::string_view b);

// A hash that texts which are EqualNoCase share. It is another in each process, so that nobody can write
// texts that all have the same one.
VORLENT_PUBLIC std::size_t HashNoCase(std::string_view text);

}  // namespace vorlent
