#include "Platform/Charsets.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "Platform/CodePage.h"
#include "Platform/Utf8.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

constexpr UINT kGb18030 = 54936;
constexpr UINT kGbk = 936;

struct NamedPage {
  std::string_view charset;
  UINT page;
};

// The code pages of charsets that aren't called after them.
constexpr NamedPage kPages[] = {
    {"koi8-r", 20866},       {"koi8-u", 21866},
    {"big5", 950},           {"big5-hkscs", 950},
    {"gb18030", kGb18030},   {"hz-gb-2312", 52936},
    {"hz", 52936},           {"euc-jp", 20932},
    {"euc-cn", 936},         {"iso-2022-kr", 50225},
    {"tis-620", 874},        {"macintosh", 10000},
    {"mac-cyrillic", 10007}, {"mac-centraleurope", 10029},
    {"utf-7", CP_UTF7},      {"iso-8859-2", 28592},
    {"iso-8859-3", 28593},   {"iso-8859-4", 28594},
    {"iso-8859-5", 28595},   {"iso-8859-6", 28596},
    {"iso-8859-7", 28597},   {"iso-8859-8", 28598},
    {"iso-8859-9", 28599},   {"iso-8859-13", 28603},
    {"iso-8859-15", 28605},
};

constexpr std::string_view kNumberedPrefixes[] = {"windows-", "cp", "ibm", "ms"};

// The code page of a charset, nothing if the system has none for it.
std::optional<UINT> PageOf(std::string_view charset) {
  const auto* named = std::find_if(std::begin(kPages), std::end(kPages),
                                   [&](const NamedPage& each) { return EqualNoCase(each.charset, charset); });
  if (named != std::end(kPages)) return named->page;
  for (const std::string_view prefix : kNumberedPrefixes) {
    if (!EqualNoCase(charset.substr(0, prefix.size()), prefix)) continue;
    const std::string_view digits = charset.substr(prefix.size());
    UINT page = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), page);
    if (error == std::errc() && end == digits.data() + digits.size()) return page;
  }
  return std::nullopt;
}

// The system's converter for one code page.
class Converter {
 public:
  explicit Converter(UINT page) : page_(page), isKnown_(GetCPInfo(page, &info_) != 0) {}

  bool IsKnown() const { return isKnown_; }

  std::string Convert(std::string_view bytes) const {
    std::string text;
    if (TakesAll(bytes, text)) return text;
    while (!bytes.empty()) {
      const std::size_t size = LengthOfCharacter(bytes, text);
      bytes.remove_prefix(size);
    }
    return text;
  }

 private:
  // Those with states can only be converted as a whole, and tell no errors.
  bool HasStates() const { return (page_ >= 50220 && page_ <= 50229) || page_ == 52936 || page_ == CP_UTF7; }

  bool TakesAll(std::string_view bytes, std::string& text) const {
    const int size = static_cast<int>(bytes.size());
    const DWORD flags = HasStates() ? 0 : MB_ERR_INVALID_CHARS;
    std::wstring wide(bytes.size() * 2, L'\0');
    const int count =
        MultiByteToWideChar(page_, flags, bytes.data(), size, wide.data(), static_cast<int>(wide.size()));
    if (count <= 0) return bytes.empty();
    const auto utf8 = ToUtf8(std::wstring_view(wide).substr(0, static_cast<std::size_t>(count)));
    if (!utf8) return false;
    text += *utf8;
    return true;
  }

  // Appends the character at the front, or its first byte as Windows-1252 if the bytes fit none. Returns how
  // many bytes that took.
  std::size_t LengthOfCharacter(std::string_view bytes, std::string& text) const {
    const std::size_t longest = std::min<std::size_t>(info_.MaxCharSize, bytes.size());
    for (std::size_t size = 1; size <= longest; ++size) {
      if (TakesAll(bytes.substr(0, size), text)) return size;
    }
    text += codepage::ToUtf8(bytes.substr(0, 1));
    return 1;
  }

  UINT page_;
  CPINFO info_ = {};
  bool isKnown_;
};

// --- ISO-2022-JP, which tells by escape sequences what the bytes after them are ---------------------------

constexpr std::string_view kIso2022Jp = "iso-2022-jp";
constexpr UINT kEucJp = 20932;

bool IsGraphic(char c) {
  return c > 0x20 && c < 0x7F;
}

// Each pair as it stands in EUC-JP, in the upper half. Bytes of that half here are none of the charset's.
std::string ConvertIso2022Jp(std::string_view bytes) {
  const Converter eucJp(kEucJp);
  std::string text;
  bool isDouble = false;
  bool isKana = false;  // of half width
  while (!bytes.empty()) {
    if (bytes.size() >= 3 && bytes[0] == '\x1B' && (bytes[1] == '$' || bytes[1] == '(')) {
      isDouble = bytes[1] == '$';
      isKana = bytes[1] == '(' && bytes[2] == 'I';
      bytes.remove_prefix(3);
      continue;
    }
    const bool isPair = isDouble && bytes.size() >= 2 && IsGraphic(bytes[0]) && IsGraphic(bytes[1]);
    if (isPair) {
      const char pair[] = {static_cast<char>(bytes[0] | 0x80), static_cast<char>(bytes[1] | 0x80)};
      text += eucJp.Convert({pair, 2});
    } else if (isKana && bytes[0] > 0x20 && bytes[0] < 0x60) {
      utf8::Append(text, U'\uFF61' + static_cast<char32_t>(bytes[0] - 0x21));
    } else {
      text += codepage::ToUtf8(bytes.substr(0, 1));
    }
    bytes.remove_prefix(isPair ? 2 : 1);
  }
  return text;
}

// --- UTF-16 and UTF-32, which are no code pages for the converter ---------------------------------------

struct WideForm {
  std::size_t unit;
  bool isBig;
  bool mayHaveMark;
};

std::optional<WideForm> WideFormOf(std::string_view charset) {
  struct Row {
    std::string_view name;
    WideForm form;
  };
  static constexpr Row kRows[] = {
      {"utf-16", {2, false, true}},         {"utf-16le", {2, false, false}}, {"utf-16be", {2, true, false}},
      {"utf-32", {4, false, true}},         {"utf-32le", {4, false, false}}, {"utf-32be", {4, true, false}},
      {"ucs-2", {2, false, true}},          {"ucs-4", {4, true, true}},      {"unicode", {2, false, true}},
      {"iso-10646-ucs-2", {2, true, true}},
  };
  for (const Row& row : kRows) {
    if (EqualNoCase(row.name, charset)) return row.form;
  }
  return std::nullopt;
}

char32_t UnitAt(std::string_view bytes, const WideForm& form) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < form.unit; ++i) {
    const std::size_t at = form.isBig ? i : form.unit - 1 - i;
    unit = unit << 8 | static_cast<unsigned char>(bytes[at]);
  }
  return unit;
}

// The character at the front and how many bytes it takes, none if they fit none.
utf8::Decoded DecodeWide(std::string_view bytes, const WideForm& form) {
  if (bytes.size() < form.unit) return {};
  const char32_t first = UnitAt(bytes, form);
  if (first > 0x10FFFF || (first >= 0xDC00 && first < 0xE000)) return {};
  if (first < 0xD800 || first > 0xDBFF) return {first, form.unit};
  if (form.unit != 2 || bytes.size() < 4) return {};
  const char32_t second = UnitAt(bytes.substr(2), form);
  if (second < 0xDC00 || second >= 0xE000) return {};
  return {0x10000 + (first - 0xD800) * 0x400 + (second - 0xDC00), 4};
}

void TakeMark(std::string_view& bytes, WideForm& form) {
  for (const bool isBig : {false, true}) {
    const WideForm tried{form.unit, isBig, true};
    if (bytes.size() < form.unit || UnitAt(bytes, tried) != 0xFEFF) continue;
    form.isBig = isBig;
    bytes.remove_prefix(form.unit);
    return;
  }
}

std::string ConvertWide(std::string_view bytes, WideForm form) {
  if (form.mayHaveMark) TakeMark(bytes, form);
  std::string text;
  while (!bytes.empty()) {
    const utf8::Decoded decoded = DecodeWide(bytes, form);
    if (decoded.length > 0) {
      utf8::Append(text, decoded.codePoint);
      bytes.remove_prefix(decoded.length);
    } else {
      text += codepage::ToUtf8(bytes.substr(0, form.unit));
      bytes.remove_prefix(std::min(bytes.size(), form.unit));
    }
  }
  return text;
}

}  // namespace

std::optional<std::string> CharsetToUtf8(std::string_view bytes, const std::string& charset) {
  if (const auto form = WideFormOf(charset)) return ConvertWide(bytes, *form);
  if (EqualNoCase(charset.substr(0, kIso2022Jp.size()), kIso2022Jp)) return ConvertIso2022Jp(bytes);
  const std::optional<UINT> page = PageOf(charset);
  if (!page) return std::nullopt;
  const Converter converter(*page);
  if (converter.IsKnown()) return converter.Convert(bytes);
  // A system without the larger charset has its older part.
  if (*page == kGb18030) return Converter(kGbk).Convert(bytes);
  return std::nullopt;
}

}  // namespace vorlent::os
