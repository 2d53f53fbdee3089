#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdHttpStandards.h"
#include "Common/StdModul.h"
#include "Platform/Charsets.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

bool ReadsByStandards() {
  return CurrentRules().headerValues == HeaderValues::Standard;
}

// The code-page character of a code point. Those up to 255 stand for themselves.
char CodePageCharacter(std::uint64_t codePoint) {
  if (codePoint <= 0xFF) return static_cast<char>(codePoint);
  if (codePoint > 0xFFFF) return '?';
  return static_cast<char>(codepage::FromCodePoint(static_cast<char32_t>(codePoint)).value_or('?'));
}

// The bytes of an encoded word's data, nothing for an encoding that isn't known.
std::optional<std::string> DecodeWordData(std::string_view encoding, std::string_view data) {
  if (EqualNoCase(encoding, "B")) return Base64Decode(data);
  if (EqualNoCase(encoding, "Q")) return QuotedPrintableDecode(data);
  return std::nullopt;
}

// RFC 2231: charset*language
std::string_view WithoutLanguage(std::string_view charset) {
  return charset.substr(0, charset.find('*'));
}

// Cuts the encoded word that follows "=?" and returns what it stands for. RFC 2047: charset?encoding?data?=
std::string CutEncodedWord(std::string_view& rest) {
  const std::string_view charset = CutToken(rest, "?");
  const std::string_view encoding = CutToken(rest, "?");
  const std::string_view data = CutToken(rest, "?=");
  std::optional<std::string> text = DecodeWordData(encoding, data);
  if (!text)
    text = std::string("=?").append(charset).append("?").append(encoding).append("?").append(data) + "?=";
  return EqualNoCase(charset, "UTF-8") ? Utf8Decode(*text) : FromCharset(*text, WithoutLanguage(charset));
}

// Calls `handle(key, value)` for each header of a block: the key in lower case, the value unfolded.
template <class Handler>
void ForEachHeader(std::string_view block, Handler&& handle) {
  while (!block.empty()) {
    std::string line(CutLine(block));
    while (block.starts_with('\t') || block.starts_with(' '))
      line += CutLine(block);
    const std::string key = LowerCase(CutTrimmedToken(line, ":"));
    handle(key, line);
  }
}

}  // namespace

std::string Utf8Decode(std::string_view s) {
  if (HoldsUtf8()) return TextFromUtf8(s);
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    const unsigned char lead = codepage::Code(s[i]);
    if (lead <= 128) {
      out += s[i++];
      continue;
    }
    std::size_t length = 2;
    unsigned mask = 32;
    for (; mask >= 2 && (lead & mask) != 0; mask /= 2)
      ++length;
    std::uint64_t codePoint = lead & (mask - 1);
    // Whatever follows counts as a continuation, the nothing after the end as well.
    for (std::size_t k = i + 1; k < i + length; ++k) {
      codePoint = codePoint << 6 | (k < s.size() ? codepage::Code(s[k]) & 0x3FU : 0U);
    }
    out += CodePageCharacter(codePoint);
    i += length;
  }
  return out;
}

std::string Utf8Encode(std::string_view s) {
  if (HoldsUtf8()) return TextToUtf8(s);
  constexpr char euro = '\x80';
  std::string out;
  out.reserve(s.size() + s.size() / 8);
  for (const char c : s) {
    if (c == euro) {
      out += "\xE2\x82\xAC";
    } else if (codepage::Code(c) < 0x80) {
      out += c;
    } else {
      out += static_cast<char>(0xC0 | codepage::Code(c) >> 6);
      out += static_cast<char>(0x80 | (codepage::Code(c) & 0x3F));
    }
  }
  return out;
}

std::string DecodeEncodedWords(std::string_view s) {
  if (ReadsByStandards()) return DecodeWordsByStandard(s);
  const auto holds = [&s](std::string_view mark) { return s.find(mark) != std::string_view::npos; };
  std::string out;
  while (holds("?=") && holds("=?")) {
    out += FromCharset(CutToken(s, "=?"), "");
    out += CutEncodedWord(s);
  }
  out += FromCharset(s, "");
  std::erase_if(out, [](char c) { return c == '\r' || c == '\n'; });
  return out;
}

std::string GetHeaderParam(std::string_view value, std::string_view name) {
  if (ReadsByStandards()) return HeaderParamByStandard(value, name);
  std::string result;
  std::string extended;
  std::string charset;
  CutToken(value, ";");
  while (!value.empty()) {
    std::string_view text = CutToken(value, ";");
    const std::string key = LowerCase(TrimBlank(CutToken(text, "=")));
    if (key == name) {
      std::string words = TrimBlank(text);
      result = DecodeEncodedWords(CutWord(words));
      extended.clear();
    } else if (key.starts_with(std::string(name) + "*")) {
      // RFC 2231: charset'language'text, and continuations name*0, name*1 in the order in which they come.
      const std::size_t language = text.find("''");
      if (language != std::string_view::npos) {
        charset = TrimBlank(text.substr(0, language));
        text.remove_prefix(language + 2);
      }
      extended += TrimBlank(UrlDecode(text));
    }
  }
  return result + FromCharset(extended, charset);
}

namespace {

// What `read` makes of the value of a block's header: of the last one, or by the standards of the first.
template <class Read>
std::string ReadHeader(std::string_view headerBlock, std::string_view name, Read&& read) {
  std::optional<std::string> found;
  ForEachHeader(headerBlock, [&](std::string_view key, const std::string& value) {
    if (key == name && !(found && ReadsByStandards())) found = read(value);
  });
  return found.value_or("");
}

std::string ReadParameter(std::string_view headerBlock, std::string_view header, std::string_view name) {
  return ReadHeader(headerBlock, header,
                    [&](const std::string& value) { return GetHeaderParam(value, name); });
}

// A header's value up to the first ";"; by the standards in lower case.
std::string ReadMainValue(std::string_view headerBlock, std::string_view header) {
  return ReadHeader(headerBlock, header, [](std::string value) {
    if (!ReadsByStandards()) return CutTrimmedToken(value, ";");
    value = WithoutComments(value);
    return LowerCase(CutTrimmedToken(value, ";"));
  });
}

// The name of the header that has one and comes last, or by the standards that which is meant for it.
std::string NameIn(std::string_view headerBlock) {
  std::string name;
  if (ReadsByStandards()) {
    name = ReadParameter(headerBlock, "content-disposition", "filename");
    return name.empty() ? ReadParameter(headerBlock, "content-type", "name") : name;
  }
  ForEachHeader(headerBlock, [&](std::string_view key, std::string_view value) {
    if (key == "content-type") name = GetHeaderParam(value, "name");
    if (key == "content-disposition") name = GetHeaderParam(value, "filename");
  });
  return name;
}

}  // namespace

std::string GetPartName(std::string_view headerBlock) {
  return NameIn(headerBlock);
}

std::string GetPartFileName(std::string_view headerBlock) {
  return EncodeFileName(NameIn(headerBlock));
}

std::string GetPartContentType(std::string_view headerBlock) {
  if (!ReadsByStandards()) return ReadMainValue(headerBlock, "content-type");
  return ReadHeader(headerBlock, "content-type", ContentTypeByStandard);
}

std::string GetPartDisposition(std::string_view headerBlock) {
  return ReadMainValue(headerBlock, "content-disposition");
}

std::string GetPartEncoding(std::string_view headerBlock) {
  return ReadMainValue(headerBlock, "content-transfer-encoding");
}

std::string GetPartBoundary(std::string_view headerBlock) {
  return ReadParameter(headerBlock, "content-type", "boundary");
}

std::string GetPartCharset(std::string_view headerBlock) {
  return ReadParameter(headerBlock, "content-type", "charset");
}

}  // namespace vorlent
