#include "Connectors/Mozilla/AttachmentHeaders.h"

#include <algorithm>

#include "Common/StdHttp.h"
#include "Common/StdHttpStandards.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kUnknownType = "application/octet-stream";

bool AreHeadersKept() {
  return CurrentRules().attachmentHeaders == AttachmentHeaders::AsSent;
}

// The content type that a part's header tells, with the charset that a text needs to be read; "" if it tells
// none that could be written again.
std::string ContentTypeIn(std::string_view partHeader) {
  std::string type = LowerCase(GetPartContentType(partHeader));
  if (!IsContentType(type)) return {};
  const std::string charset = GetPartCharset(partHeader);
  if (IsToken(charset)) type += "; charset=" + charset;
  return type;
}

// RFC 2046: no encoding but 7bit, 8bit and binary is permitted for a composite type, and attachments are
// written in base64.
bool MayBeEncoded(std::string_view type) {
  return !type.starts_with("multipart/") && !type.starts_with("message/");
}

// A file name as it was before it was made safe for a disk, in UTF-8.
std::string SentName(std::string_view safeName) {
  std::string name;
  while (!safeName.empty()) {
    name += CutToken(safeName, "%");
    if (safeName.size() < 2) break;
    name +=
        static_cast<char>(static_cast<unsigned char>(ReadNumber("&H" + std::string(safeName.substr(0, 2)))));
    safeName.remove_prefix(2);
  }
  return DisplayUtf8(name);
}

// Whether text may stand in a header as it is.
bool IsPlainLine(std::string_view text) {
  constexpr std::size_t kLongest = 900;  // RFC 5322: a line has at most 998 characters
  return text.size() <= kLongest &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

bool IsPlainName(std::string_view name) {
  constexpr std::size_t kLongest = 60;
  return name.size() <= kLongest && IsPlainLine(name) && name.find_first_of("\"\\") == std::string_view::npos;
}

bool ContinuesCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// RFC 2047: an encoded word holds whole characters and at most 75 letters. In the parameter of a header it
// isn't foreseen, but mail programs write it beside the name of RFC 2231, for those that don't know that.
std::string EncodedWords(std::string_view utf8) {
  constexpr std::size_t kMostBytes = 45;
  std::string words;
  while (!utf8.empty()) {
    std::size_t size = std::min(kMostBytes, utf8.size());
    while (size > 1 && size < utf8.size() && ContinuesCharacter(utf8[size]))
      --size;
    if (!words.empty()) words += "\r\n ";
    words += "=?UTF-8?B?" + Base64Encode(utf8.substr(0, size)) + "?=";
    utf8.remove_prefix(size);
  }
  return words;
}

std::string PercentEncoded(char c) {
  const auto isLetter = [](char l) { return (l >= 'a' && l <= 'z') || (l >= 'A' && l <= 'Z'); };
  if (isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '_') return {c};
  return "%" + HexPad(static_cast<unsigned char>(c), 2);
}

// RFC 2231: name*=charset'language'text, a long one in sections name*0*, name*1* of a line each.
std::string ExtendedParameter(const std::string& name, std::string_view utf8) {
  constexpr std::size_t kLongestSection = 54;
  std::vector<std::string> sections = {"UTF-8''"};
  for (const char c : utf8) {
    const std::string encoded = PercentEncoded(c);
    if (sections.back().size() + encoded.size() > kLongestSection) sections.emplace_back();
    sections.back() += encoded;
  }
  if (sections.size() == 1) return "\r\n " + name + "*=" + sections.front();
  std::string parameter;
  for (std::size_t i = 0; i < sections.size(); ++i) {
    parameter += (i == 0 ? "\r\n " : ";\r\n ") + name + "*" + std::to_string(i) + "*=" + sections[i];
  }
  return parameter;
}

// The value of a header in a part's raw ones, if it is one that could be written again in a line; else "".
std::string PlainValueIn(std::string_view partHeader, std::string_view name) {
  std::string value;
  bool isIt = false;
  for (std::string rest(partHeader); !rest.empty();) {
    const std::string line = CutLine(rest);
    if (IsContinuation(line)) {
      if (isIt) value += TrimView(line);
      continue;
    }
    isIt = value.empty() && EqualNoCase(SplitHeaderLine(line).name, name);
    if (isIt) value = SplitHeaderLine(line).value;
  }
  return IsPlainLine(value) ? value : "";
}

// A part that tells nothing else is shown where another refers to it.
bool IsInline(std::string_view partHeader, std::string_view contentId) {
  std::string disposition;
  Swallow([&] { disposition = LowerCase(GetPartDisposition(partHeader)); });
  return disposition == "inline" || (disposition.empty() && !contentId.empty());
}

std::string KeptLines(std::string_view partHeader, std::string_view boundary) {
  std::string lines;
  const auto keep = [&](std::string_view key, std::string_view value) {
    if (!value.empty()) lines.append("\r\n").append(key).append("=").append(value);
  };
  std::string type;
  Swallow([&] { type = ContentTypeIn(partHeader); });
  const std::string contentId = PlainValueIn(partHeader, "content-id");
  keep("type", type);
  keep("contentid", contentId);
  keep("disposition", IsInline(partHeader, contentId) ? "inline" : "");
  keep("boundary", IsPlainLine(boundary) ? boundary : "");
  return lines;
}

PartNaming NamingAsSent(std::string_view description, MailForm form) {
  std::string type = GetLineValue(description, "type");
  const bool isMail = type == "message/rfc822" && form == MailForm::AsItIs;
  if (type.empty() || !(isMail || MayBeEncoded(type))) type = kUnknownType;
  const std::string name = SentName(GetLineValue(description, "file"));
  const std::string shown = GetLineValue(description, "disposition") == "inline" ? "inline" : "attachment";
  const std::string contentId = GetLineValue(description, "contentid");
  if (IsPlainName(name)) {
    return {type + "; name=\"" + name + "\"", shown + "; filename=\"" + name + "\"", contentId, isMail};
  }
  return {type + ";\r\n name=\"" + EncodedWords(name) + "\"",
          shown + ";" + ExtendedParameter("filename", name), contentId, isMail};
}

}  // namespace

std::vector<std::string> KeptHeaderLines(const KeyedList<std::string>& parts,
                                         const std::vector<std::string>& boundaries) {
  std::vector<std::string> lines;
  if (!AreHeadersKept()) return lines;
  std::size_t position = 0;
  for (const std::string& header : parts) {
    const std::string boundary = position < boundaries.size() ? boundaries[position] : "";
    ++position;
    std::string name;
    Swallow([&] { name = AttachmentName(header, static_cast<std::int32_t>(position)); });
    if (!name.empty()) lines.push_back(KeptLines(header, boundary));
  }
  return lines;
}

PartNaming NamingOf(std::string_view description, MailForm form) {
  if (AreHeadersKept()) return NamingAsSent(description, form);
  const std::string name = GetFileName(GetLineValue(description, "file"));
  return {std::string(kUnknownType) + "; name=\"" + name + "\"", "attachment; filename=\"" + name + "\"", "",
          false};
}

bool HomesAreKept() {
  return AreHeadersKept();
}

std::string HomeOf(std::string_view description) {
  return GetLineValue(description, "boundary");
}

}  // namespace vorlent
