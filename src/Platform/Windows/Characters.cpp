#include "Platform/Characters.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace vorlent::os {

namespace {

// A character as the system's calls take it: one or two units.
struct Units {
  wchar_t units[2];
  int count;
};

Units UnitsOf(char32_t codePoint) {
  if (codePoint < 0x10000) return {{static_cast<wchar_t>(codePoint)}, 1};
  const char32_t above = codePoint - 0x10000;
  return {{static_cast<wchar_t>(0xD800 + (above >> 10)), static_cast<wchar_t>(0xDC00 + (above & 0x3FF))}, 2};
}

char32_t CodePointOf(const Units& character) {
  if (character.count == 1) return character.units[0];
  return 0x10000 + (char32_t{character.units[0]} - 0xD800) * 0x400 + (char32_t{character.units[1]} - 0xDC00);
}

// Unicode's own rules, whatever the user's language.
char32_t Mapped(char32_t codePoint, DWORD mapping) {
  const Units character = UnitsOf(codePoint);
  Units mapped = character;
  const int count = LCMapStringEx(LOCALE_NAME_INVARIANT, mapping, character.units, character.count,
                                  mapped.units, character.count, nullptr, nullptr, 0);
  return count == character.count ? CodePointOf(mapped) : codePoint;
}

struct Range {
  char32_t first;
  char32_t last;
};

// The system doesn't tell which characters take two columns. These are the blocks of the wide ones in the
// list EastAsianWidth of Unicode.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x231A, 0x231B},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                           {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97C},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},
                           {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},   {0x16FE0, 0x18AFF}, {0x1B000, 0x1B2FB},
                           {0x1F18E, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F64F}, {0x1F680, 0x1F6FC},
                           {0x1F90C, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD}};

// Those that are shown at no place of their own, and that the system doesn't count among the combining ones.
constexpr Range kWithoutPlace[] = {{0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x2064},
                                   {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};

template <std::size_t Size>
bool Holds(const Range (&ranges)[Size], char32_t codePoint) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [&](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

bool Combines(char32_t codePoint) {
  if (codePoint >= 0x10000) return false;
  const auto unit = static_cast<wchar_t>(codePoint);
  WORD type = 0;
  return GetStringTypeW(CT_CTYPE3, &unit, 1, &type) != 0 &&
         (type & (C3_NONSPACING | C3_ALPHA | C3_SYMBOL)) == C3_NONSPACING;
}

}  // namespace

char32_t LowerCaseOf(char32_t codePoint) {
  return Mapped(codePoint, LCMAP_LOWERCASE);
}

char32_t UpperCaseOf(char32_t codePoint) {
  return Mapped(codePoint, LCMAP_UPPERCASE);
}

std::size_t ColumnsOf(char32_t codePoint) {
  if (Holds(kWide, codePoint)) return 2;
  return Holds(kWithoutPlace, codePoint) || Combines(codePoint) ? 0 : 1;
}

}  // namespace vorlent::os
