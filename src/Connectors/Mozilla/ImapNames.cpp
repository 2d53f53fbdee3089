#include "Connectors/Mozilla/ImapNames.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Platform/Utf8.h"

namespace vorlent {

namespace {

constexpr std::string_view kImapDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";
constexpr int kBitsOfDigit = 6;
constexpr int kBitsOfUnit = 16;

bool IsHalf(char32_t unit, char32_t first) {
  return unit >= first && unit < first + 0x400;
}

// The units of UTF-16 that a piece between "&" and "-" stands for; nothing if it is none.
std::optional<std::u16string> UnitsOf(std::string_view piece) {
  std::u16string units;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : piece) {
    const std::size_t digit = kImapDigits.find(c);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << kBitsOfDigit | static_cast<std::uint32_t>(digit);
    count += kBitsOfDigit;
    if (count < kBitsOfUnit) continue;
    count -= kBitsOfUnit;
    units += static_cast<char16_t>(bits >> count & 0xFFFF);
  }
  const bool endsInZeros = (bits & ((1U << count) - 1)) == 0;
  return count < kBitsOfDigit && endsInZeros ? std::optional(units) : std::nullopt;
}

// False for a half of a character without the other.
bool AppendUnits(std::string& text, const std::u16string& units) {
  for (std::size_t at = 0; at < units.size(); ++at) {
    char32_t character = units[at];
    if (IsHalf(character, 0xDC00)) return false;
    if (IsHalf(character, 0xD800)) {
      if (++at == units.size() || !IsHalf(units[at], 0xDC00)) return false;
      character = 0x10000 + ((character - 0xD800) << 10) + (units[at] - char32_t{0xDC00});
    }
    utf8::Append(text, character);
  }
  return true;
}

}  // namespace

std::optional<std::string> FromImapName(std::string_view name) {
  std::string text;
  while (!name.empty()) {
    const std::size_t lead = std::min(name.find('&'), name.size());
    const bool isPrintable =
        std::ranges::all_of(name.substr(0, lead), [](char c) { return c >= ' ' && c <= '~'; });
    if (!isPrintable) return std::nullopt;
    text += name.substr(0, lead);
    if (lead == name.size()) break;
    const std::size_t end = name.find('-', lead);
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view piece = name.substr(lead + 1, end - lead - 1);
    if (piece.empty()) {
      text += '&';
    } else {
      const auto units = UnitsOf(piece);
      if (!units || units->empty() || !AppendUnits(text, *units)) return std::nullopt;
    }
    name.remove_prefix(end + 1);
  }
  return text;
}

}  // namespace vorlent
