#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Base64Blocks.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"

namespace vorlent {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

using ValueTable = std::array<std::int8_t, 256>;

constexpr ValueTable MakeBase64Values() {
  ValueTable values{};
  values.fill(-1);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::int8_t>(i);
  }
  return values;
}

constexpr ValueTable MakeHexValues() {
  ValueTable values{};
  values.fill(-1);
  for (std::size_t i = 0; i < 10; ++i)
    values['0' + i] = static_cast<std::int8_t>(i);
  for (std::size_t i = 0; i < 6; ++i)
    values['A' + i] = values['a' + i] = static_cast<std::int8_t>(10 + i);
  return values;
}

constexpr ValueTable kBase64Values = MakeBase64Values();
constexpr ValueTable kHexValues = MakeHexValues();

// Each position of a group has its own table of values shifted into place, so that a group of the alphabet is
// three ORs; a foreign character sets the bit that no value has.
constexpr std::uint32_t kForeign = 1U << 31;

constexpr std::array<std::uint32_t, 256> MakeShifted(int shift) {
  std::array<std::uint32_t, 256> shifted{};
  for (std::size_t i = 0; i < shifted.size(); ++i) {
    shifted[i] = kBase64Values[i] < 0 ? kForeign : static_cast<std::uint32_t>(kBase64Values[i]) << shift;
  }
  return shifted;
}

constexpr auto kFirst = MakeShifted(18);
constexpr auto kSecond = MakeShifted(12);
constexpr auto kThird = MakeShifted(6);
constexpr auto kFourth = MakeShifted(0);

// A group with members that have no value, which count as -1: each byte comes if the second of the two values
// that it is made of is there.
char* DecodeOddGroup(std::string_view group, char* out) {
  const auto value = [&](std::size_t i) {
    return i < group.size() ? int{kBase64Values[codepage::Code(group[i])]} : -1;
  };
  const int a = value(0), b = value(1), c = value(2), d = value(3);
  if (b >= 0) *out++ = static_cast<char>((a * 4 + b / 16) & 0xFF);
  if (c >= 0) *out++ = static_cast<char>((b * 16 + c / 4) & 0xFF);
  if (d >= 0) *out++ = static_cast<char>((c * 64 + d) & 0xFF);
  return out;
}

// Writes the decoded bytes, three for a group at most, and returns their end.
char* DecodeGroups(std::string_view s, char* out) {
  std::size_t i = os::DecodeBase64Blocks(s, out);
  out += i / 4 * 3;
  for (; i + 4 <= s.size(); i += 4) {
    const std::uint32_t group = kFirst[codepage::Code(s[i])] | kSecond[codepage::Code(s[i + 1])] |
                                kThird[codepage::Code(s[i + 2])] | kFourth[codepage::Code(s[i + 3])];
    if ((group & kForeign) != 0) {
      out = DecodeOddGroup(s.substr(i, 4), out);
      continue;
    }
    *out++ = static_cast<char>(group >> 16);
    *out++ = static_cast<char>(group >> 8);
    *out++ = static_cast<char>(group);
  }
  return i < s.size() ? DecodeOddGroup(s.substr(i), out) : out;
}

// The room that decoding takes. Texts are as long as 16 bits can tell.
std::size_t RoomToDecode(std::string_view s) {
  return static_cast<std::size_t>((ToInt16(s.size()) + 3) / 4 * 3) + os::kBase64Overhang;
}

char HexByte(char high, char low) {
  const int value = kHexValues[codepage::Code(high)] * 16 + kHexValues[codepage::Code(low)];
  if (kHexValues[codepage::Code(high)] < 0 || kHexValues[codepage::Code(low)] < 0) {
    throw Failure(ErrorNumber::TypeMismatch, std::string("not hexadecimal: '") + high + low + "'");
  }
  return static_cast<char>(value);
}

}  // namespace

int Base64Value(std::string_view character) {
  return character.empty() ? -1 : kBase64Values[codepage::Code(character.front())];
}

std::string Base64Decode(std::string_view s) {
  std::string out(RoomToDecode(s), '\0');
  out.resize(static_cast<std::size_t>(DecodeGroups(s, out.data()) - out.data()));
  return out;
}

void Base64DecodeToFile(TextWriter& file, std::string_view s) {
  static_assert(TextWriter::kMostMade >
                std::numeric_limits<std::int16_t>::max() / 4 * 3 + os::kBase64Overhang);
  ToInt16(s.size());
  file.WriteMade([s](char* out) { return DecodeGroups(s, out); });
}

std::string Base64Encode(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](std::size_t k) {
      return k < bytes.size() ? std::uint32_t{codepage::Code(bytes[k])} : 0U;
    };
    const std::uint32_t group = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    out += kAlphabet[group >> 18];
    out += kAlphabet[group >> 12 & 63];
    out += i + 1 < bytes.size() ? kAlphabet[group >> 6 & 63] : '=';
    out += i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
  return out;
}

std::string QuotedPrintableDecode(std::string_view s) {
  std::string out;
  QuotedPrintableDecodeInto(s, out);
  return out;
}

void QuotedPrintableDecodeInto(std::string_view s, std::string& out) {
  out.resize(s.size());
  char* end = out.data();
  // Underscores become blanks in whole stretches, one between the "=" that are decoded.
  while (!s.empty()) {
    const std::size_t stretch = std::min(s.find('='), s.size());
    end = std::replace_copy(s.begin(), s.begin() + stretch, end, '_', ' ');
    s.remove_prefix(stretch);
    if (s.size() >= 3) {
      *end++ = HexByte(s[1], s[2]);
      s.remove_prefix(3);
    } else {
      end = std::replace_copy(s.begin(), s.end(), end, '_', ' ');
      s = {};
    }
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
}

std::string QuotedPrintableEncode(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (const char c : s) {
    if (codepage::Code(c) < 32 || c == '=' || c == '_') {
      out += '=';
      out += HexPad(codepage::Code(c), 2);
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace vorlent
