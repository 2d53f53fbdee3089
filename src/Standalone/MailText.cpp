#include "Standalone/MailText.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "Common/StdHttp.h"
#include "Common/StdHttpStandards.h"
#include "Common/StdModul.h"
#include "Platform/Charsets.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"

namespace vorlent {

namespace {

// Enough for a header and the words after it.
constexpr std::size_t kBytesRead = 16 * 1024;

// What of the words is taken: enough to find a mail again, and far less work than all of a long one.
constexpr std::size_t kTextBytes = 4 * 1024;

// A line of ASCII without a blank of at least this length is encoded data.
constexpr std::size_t kDataLine = 60;

std::string ReadBeginning(std::string_view path) {
  std::string bytes;
  Swallow([&] {
    os::File file = os::File::Open(path, os::File::Mode::Read);
    bytes.resize(kBytesRead);
    bytes.resize(file.Read(bytes.data(), bytes.size()));
  });
  return bytes;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// "=XX" is a byte, "=" at the end of a line joins it with the next; anything else stays.
std::string UndoQuotedPrintable(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '=') {
      plain += text[i];
      continue;
    }
    const std::string_view next = text.substr(i + 1, 2);
    if (next.starts_with('\n')) {
      ++i;
    } else if (next == "\r\n") {
      i += 2;
    } else if (next.size() == 2 && HexDigit(next[0]) >= 0 && HexDigit(next[1]) >= 0) {
      plain += static_cast<char>(HexDigit(next[0]) * 16 + HexDigit(next[1]));
      i += 2;
    } else {
      plain += '=';
    }
  }
  return plain;
}

// The position after the empty line that ends the header; all is header without one.
std::size_t BodyStart(std::string_view mail) {
  std::size_t start = mail.size();
  for (const std::string_view end : {"\r\n\r\n", "\n\n", "\n\r\n"}) {
    // A line end that the mail doesn't use is looked for up to the place found, not through the whole mail.
    if (const std::size_t at = mail.substr(0, start).find(end); at != std::string_view::npos)
      start = at + end.size();
  }
  return start;
}

// The lines at the beginning of a text until there are words enough.
std::string FirstWords(std::string_view text) {
  std::string kept;
  while (!text.empty() && kept.size() < kTextBytes) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, end);
    const bool isData = line.size() >= kDataLine && line.find(' ') == std::string_view::npos && IsAscii(line);
    if (!isData) kept.append(line);
    text.remove_prefix(end);
  }
  return kept;
}

// A search of ASCII text without regard to case.
std::size_t FindNoCase(std::string_view text, std::string_view word, std::size_t from) {
  const auto found = std::search(
      text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size())), text.end(), word.begin(),
      word.end(), [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
  return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

// The first charset that a header or a page tells, "" if there is none.
std::string CharsetIn(std::string_view text) {
  constexpr std::string_view kMark = "charset=";
  const std::size_t mark = FindNoCase(text, kMark, 0);
  if (mark == std::string_view::npos) return {};
  text.remove_prefix(mark + kMark.size());
  text.remove_prefix(std::min(text.find_first_not_of("\"' "), text.size()));
  return std::string(text.substr(0, text.find_first_of("\"' ;>/\t\r\n")));
}

struct Entity {
  std::string_view name;
  std::string_view text;
};
constexpr std::array<Entity, 12> kEntities = {{{"amp", "&"},
                                               {"lt", "<"},
                                               {"gt", ">"},
                                               {"quot", "\""},
                                               {"nbsp", " "},
                                               {"auml", "\xC3\xA4"},
                                               {"ouml", "\xC3\xB6"},
                                               {"uuml", "\xC3\xBC"},
                                               {"Auml", "\xC3\x84"},
                                               {"Ouml", "\xC3\x96"},
                                               {"Uuml", "\xC3\x9C"},
                                               {"szlig", "\xC3\x9F"}}};

void ResolveEntities(std::string& text) {
  for (const Entity& entity : kEntities) {
    ReplaceText(text, "&" + std::string(entity.name) + ";", entity.text);
  }
}

// Where the next line begins that starts with `mark`, at `from` or after it.
std::size_t FindLine(std::string_view text, std::string_view mark, std::size_t from) {
  std::size_t at = text.find(mark, from);
  while (at != std::string_view::npos && at > 0 && text[at - 1] != '\n')
    at = text.find(mark, at + 1);
  return at;
}

std::string BytesOfBase64(std::string_view text) {
  std::string bytes;
  Base64Reader reader;
  for (const char c : text)
    reader.Take(c, bytes);
  return bytes;
}

// What the content of a part says, as UTF-8; "" if it is no text.
std::string ReadPart(std::string_view header, std::string_view content) {
  const std::string type = LowerCase(GetPartContentType(header));
  if (!type.empty() && !type.starts_with("text/") && !type.starts_with("message/")) return {};
  const std::string encoding = GetPartEncoding(header);
  std::string bytes(content);
  if (!content.empty() && !content.ends_with('\n')) bytes += '\n';
  if (EqualNoCase(encoding, "base64")) bytes = BytesOfBase64(bytes);
  if (EqualNoCase(encoding, "quoted-printable")) bytes = UndoQuotedPrintable(bytes);
  const std::string charset = CharsetIn(header);
  if (type == "text/html") return TextOfHtml(bytes, charset);
  return FirstWords(DisplayUtf8(FromCharset(bytes, charset)));
}

// Puts behind `words` those of a part, or of the parts in it.
void ReadWords(std::string_view header, std::string_view content, int depth, std::string& words) {
  constexpr int kDeepest = 10;
  std::string opening;
  Swallow([&] { opening = "--" + GetPartBoundary(header); });
  std::size_t at =
      opening.size() > 2 && depth < kDeepest ? FindLine(content, opening, 0) : std::string_view::npos;
  if (at == std::string_view::npos) {
    const std::string part = ReadPart(header, content);
    if (!part.empty() && !words.empty() && !words.ends_with('\n')) words += ' ';
    words += part;
  }
  while (at != std::string_view::npos && words.size() < kTextBytes) {
    // From the end of the boundary's line, since an empty header ends with the next.
    const std::size_t begin = std::min(content.find_first_of("\r\n", at), content.size());
    at = FindLine(content, opening, begin);
    const std::string_view part = content.substr(begin, at == std::string_view::npos ? at : at - begin);
    const std::size_t body = BodyStart(part);
    ReadWords(part.substr(0, body), part.substr(body), depth + 1, words);
  }
}

}  // namespace

std::string TextOfMail(std::string_view mail) {
  std::string words;
  const std::size_t body = BodyStart(mail);
  ReadWords(mail.substr(0, body), mail.substr(body), 0, words);
  return words;
}

std::string TextOfHtml(std::string_view html, std::string_view charsetOfMail) {
  std::string text;
  for (std::size_t at = 0; at < html.size() && text.size() < kTextBytes;) {
    const std::size_t tag = std::min(html.find('<', at), html.size());
    text.append(html.substr(at, tag - at)) += ' ';
    std::size_t end = html.find('>', tag);
    for (const std::string_view hidden : {"style", "script"}) {
      if (FindNoCase(html.substr(tag, hidden.size() + 1), hidden, 0) == 1) {
        end = FindNoCase(html, "</" + std::string(hidden), tag);
        if (end != std::string_view::npos) end = html.find('>', end);
      }
    }
    at = end == std::string_view::npos ? html.size() : end + 1;
  }
  const std::string charset = CharsetIn(html);
  text = DisplayUtf8(FromCharset(text, charset.empty() ? charsetOfMail : charset));
  ResolveEntities(text);
  return text;
}

std::string TextOfMailFile(std::string_view path) {
  return TextOfMail(ReadBeginning(path));
}

std::string TextOfHtmlFile(std::string_view path, std::string_view mailPath) {
  return TextOfHtml(ReadBeginning(path), mailPath.empty() ? "" : CharsetIn(ReadBeginning(mailPath)));
}

}  // namespace vorlent
