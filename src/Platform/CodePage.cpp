#include "Platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Platform/Characters.h"
#include "Platform/Guid.h"
#include "Platform/Utf8.h"

namespace vorlent {

namespace {

// Converts, and tells by `exact` whether every character was held by the page.
std::string ToPage(std::string_view text, bool& exact) {
  std::string out;
  out.reserve(text.size());
  exact = true;
  for (std::size_t i = 0; i < text.size();) {
    const utf8::Decoded decoded = utf8::Decode(text, i);
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
#ifdef __SIZEOF_INT128__
std::uint64_t MultiplyAndFold(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}
#else
// By halves, on a machine of 32 bits.
std::uint64_t MultiplyAndFold(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kHalf = 0xFFFFFFFF;
  const std::uint64_t low = (a & kHalf) * (b & kHalf);
  const std::uint64_t right = (a >> 32) * (b & kHalf) + (low >> 32);
  const std::uint64_t left = (a & kHalf) * (b >> 32) + (right & kHalf);
  const std::uint64_t high = (a >> 32) * (b >> 32) + (right >> 32) + (left >> 32);
  return high ^ (left << 32 | (low & kHalf));
}
#endif

// Upper-case forms of the page's characters.
constexpr std::array<char, 256> kPageUpperCase = [] {
  std::array<char, 256> upper{};
  for (std::size_t c = 0; c < upper.size(); ++c)
    upper[c] = static_cast<char>(c);
  for (std::size_t c = 0; c < upper.size(); ++c) {
    const unsigned char lower = codepage::ToLower(static_cast<unsigned char>(c));
    if (lower != c) upper[lower] = static_cast<char>(c);
  }
  return upper;
}();

// The characters of two bytes, in which most languages with two cases are written, are looked up; the system
// is asked for the others.
constexpr char32_t kFirstOfThreeBytes = 0x800;
using CaseTable = std::array<char16_t, kFirstOfThreeBytes>;

template <class CaseOf>
CaseTable MakeCaseTable(CaseOf caseOf) {
  CaseTable table{};
  for (char32_t c = 0; c < table.size(); ++c)
    table[c] = static_cast<char16_t>(caseOf(c));
  return table;
}

char32_t OfSameLength(char32_t other, char32_t codePoint) {
  return utf8::LengthOf(other) == utf8::LengthOf(codePoint) ? other : codePoint;
}

// The small sigma at a word's end is the same letter.
char32_t LowerByTheSystem(char32_t codePoint) {
  constexpr char32_t kFinalSigma = 0x3C2;
  constexpr char32_t kSigma = 0x3C3;
  return codePoint == kFinalSigma ? kSigma : OfSameLength(os::LowerCaseOf(codePoint), codePoint);
}

// Back from the lower case, so that two texts of one lower case have one upper case.
char32_t UpperByTheSystem(char32_t codePoint) {
  const char32_t lower = LowerByTheSystem(codePoint);
  const char32_t upper = os::UpperCaseOf(lower);
  return LowerByTheSystem(upper) == lower ? upper : lower;
}

char32_t LowerOf(char32_t codePoint) {
  static const CaseTable table = MakeCaseTable(LowerByTheSystem);
  return codePoint < table.size() ? table[codePoint] : LowerByTheSystem(codePoint);
}

char32_t UpperOf(char32_t codePoint) {
  static const CaseTable table = MakeCaseTable(UpperByTheSystem);
  return codePoint < table.size() ? table[codePoint] : UpperByTheSystem(codePoint);
}

// Bytes that are no UTF-8 stay.
template <class CaseOf>
std::string InCase(std::string_view text, CaseOf caseOf) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const utf8::Decoded decoded = utf8::Decode(text, i);
    if (decoded.length == 0) {
      out += text[i++];
      continue;
    }
    utf8::Append(out, caseOf(decoded.codePoint));
    i += decoded.length;
  }
  return out;
}

// Whether each byte has its own case: text in the code page, and what UTF-8 writes alike.
bool IsOfSingleBytes(std::string_view text) {
  return !HoldsUtf8() || IsAscii(text);
}

// UTF-8 with the bytes that are none taken for Windows-1252.
std::string WellFormed(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (true) {
    const std::size_t length = utf8::WellFormedLength(text);
    out += text.substr(0, length);
    if (length == text.size()) return out;
    utf8::Append(out, codepage::ToCodePoint(static_cast<unsigned char>(text[length])));
    text.remove_prefix(length + 1);
  }
}

// Eight characters at a time.
constexpr std::uint64_t kEach = 0x0101010101010101;
constexpr std::uint64_t kHighBits = 0x80 * kEach;

std::uint64_t LowerCaseOf(std::uint64_t word) {
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

// What text is held in.
std::string HeldFromUtf8(std::string_view text, bool& exact) {
  if (!HoldsUtf8()) return ToPage(text, exact);
  std::string held = WellFormed(text);
  exact = held.size() == text.size();
  return held;
}

template <class Prepare>
std::size_t HashOf(std::string_view text, Prepare prepared) {
  static const HashSeed seed;
  std::uint64_t hash = seed.start ^ text.size();
  while (!text.empty()) {
    std::uint64_t word = 0;
    const std::size_t size = std::min(text.size(), sizeof word);
    std::memcpy(&word, text.data(), size);
    hash = MultiplyAndFold(hash ^ prepared(word), seed.factor);
    text.remove_prefix(size);
  }
  // By a factor that is good for sure, as some seeds leave low bits alike.
  constexpr std::uint64_t kLastFactor = 0x9e3779b97f4a7c15;
  return static_cast<std::size_t>(MultiplyAndFold(hash, kLastFactor));
}

}  // namespace

std::string codepage::ToUtf8(std::string_view page) {
  std::string out;
  out.reserve(page.size());
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  for (auto next = page.begin(); next != page.end();) {
    const auto stop = std::find_if_not(next, page.end(), isAscii);
    out.append(next, stop);
    next = stop;
    if (next != page.end()) utf8::Append(out, codepage::ToCodePoint(static_cast<unsigned char>(*next++)));
  }
  return out;
}

std::string codepage::FromUtf8(std::string_view utf8) {
  bool exact = false;
  return ToPage(utf8, exact);
}

std::optional<std::string> codepage::ExactFromUtf8(std::string_view utf8) {
  bool exact = false;
  std::string out = ToPage(utf8, exact);
  if (!exact) return std::nullopt;
  return out;
}

std::string TextToUtf8(std::string_view text) {
  return HoldsUtf8() ? WellFormed(text) : codepage::ToUtf8(text);
}

std::string TextFromUtf8(std::string_view text) {
  bool exact = false;
  return HeldFromUtf8(text, exact);
}

std::optional<std::string> ExactTextFromUtf8(std::string_view text) {
  bool exact = false;
  std::string out = HeldFromUtf8(text, exact);
  if (!exact) return std::nullopt;
  return out;
}

bool IsAscii(std::string_view text) {
  return utf8::AsciiLength(text) == text.size();
}

bool IsMultiByteUtf8(std::string_view text) {
  return utf8::IsWellFormed(text) && !IsAscii(text);
}

std::string DisplayUtf8(std::string_view text) {
  return utf8::IsWellFormed(text) ? std::string(text) : TextToUtf8(text);
}

std::string ToPageText(std::string_view text) {
  if (!HoldsUtf8() || IsAscii(text)) return std::string(text);
  std::optional<std::string> page = codepage::ExactFromUtf8(text);
  // "Ã¼" in the code page has the bytes of "ü" in UTF-8, and would be taken for that on the way back.
  return page && !IsMultiByteUtf8(*page) ? *std::move(page) : std::string(text);
}

std::string FromPageText(std::string_view pageText) {
  const bool isHeld = !HoldsUtf8() || IsAscii(pageText) || IsMultiByteUtf8(pageText);
  return isHeld ? std::string(pageText) : codepage::ToUtf8(pageText);
}

std::size_t CharacterLength(std::string_view text) {
  return HoldsUtf8() ? utf8::Decode(text, 0).length : 1;
}

std::string LowerCase(std::string_view text) {
  if (!IsOfSingleBytes(text)) return InCase(text, LowerOf);
  std::string out(text);
  for (char& c : out)
    c = static_cast<char>(codepage::ToLower(static_cast<unsigned char>(c)));
  return out;
}

std::string UpperCase(std::string_view text) {
  if (!IsOfSingleBytes(text)) return InCase(text, UpperOf);
  std::string out(text);
  for (char& c : out)
    c = kPageUpperCase[static_cast<unsigned char>(c)];
  return out;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const unsigned char x = codepage::Code(a[i]);
    const unsigned char y = codepage::Code(b[i]);
    if (x == y) continue;
    // A letter of several bytes has its case as a whole.
    if ((x | y) >= 0x80 && HoldsUtf8()) return LowerCase(a) == LowerCase(b);
    if (codepage::ToLower(x) != codepage::ToLower(y)) return false;
  }
  return true;
}

std::size_t HashNoCase(std::string_view text) {
  std::uint64_t bits = 0;
  const std::size_t hash = HashOf(text, [&](std::uint64_t word) {
    bits |= word;
    return LowerCaseOf(word);
  });
  if ((bits & kHighBits) == 0 || !HoldsUtf8()) return hash;
  return HashOf(LowerCase(text), [](std::uint64_t word) { return word; });
}

}  // namespace vorlent
