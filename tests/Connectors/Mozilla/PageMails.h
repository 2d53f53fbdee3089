// Texts and mails as the machine of old wrote them, for tests that compare both sets of rules.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Support/MailboxBuilder.h"

namespace vorlent {

// Texts that both sets of rules can read, drawn by chance.
class PageTexts {
 public:
  explicit PageTexts(std::uint32_t seed) : chance_(seed) {}

  // A number below `count`.
  std::size_t Draw(std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(chance_);
  }

  // Text in the page. No letter beyond ASCII stands beside another, as two could be a character of UTF-8.
  std::string Text(std::size_t most) {
    constexpr std::string_view kLetters = "\xE4\xF6\xFC\xC4\xD6\xDC\xDF\xE9\x80\x84\xF1";
    std::string text = "t";
    for (std::size_t size = Draw(most); text.size() < size;) {
      if (Draw(4) == 0) text += kLetters[Draw(kLetters.size())];
      text += std::string_view("abcXYZ019 .,-")[Draw(13)];
    }
    return text + "e";
  }

  std::string Ascii(std::size_t most) {
    std::string text = Text(most);
    std::erase_if(text, [](unsigned char c) { return c > 127; });
    return text;
  }

  // Text as a database or a file of today holds it.
  std::string Utf8(std::size_t most) { return codepage::ToUtf8(Text(most)); }

  // A name that is readable on the disk by both.
  std::string Name() {
    constexpr std::string_view kLetters = "\xE4\xF6\xFC\xC4\xD6\xDC\xDF";
    return "n" + std::to_string(Draw(1000)) + kLetters[Draw(kLetters.size())] + "e";
  }

 private:
  std::mt19937 chance_;
};

// Mails in CR LF, ASCII and Windows-1252.
class PageMails : public PageTexts {
 public:
  using PageTexts::PageTexts;

  // Six mails. No two of all mailboxes have the same ID.
  std::string Mailbox() {
    std::string mailbox;
    for (int i = 0; i < 6; ++i)
      mailbox += Mail();
    return mailbox;
  }

 private:
  static std::string QuotedPrintable(std::string_view bytes) {
    std::string encoded;
    for (const char c : bytes) {
      const bool stays = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      encoded += stays ? std::string(1, c) : "=" + HexPad(codepage::Code(c), 2);
    }
    return encoded;
  }

  // The text as a header holds it: as it is, or as an encoded word of a charset that both know.
  std::string Header(const std::string& page) {
    switch (Draw(5)) {
      case 0:
        return "=?ISO-8859-1?Q?" + QuotedPrintable(page) + "?=";
      case 1:
        return "=?windows-1252?B?" + Base64Encode(page) + "?= and more";
      case 2:
        return "before =?utf-8?Q?" + QuotedPrintable(codepage::ToUtf8(page)) + "?=";
      default:
        return page;
    }
  }

  std::string Mail() {
    std::string mail = kSeparatorLine + "X-Mozilla-Status: 000" + std::to_string(Draw(8)) +
                       "\r\nMessage-ID: <" + std::to_string(++mails_) +
                       "@x>\r\nDate: Sun, 9 May 2010 14:30:05 +0000\r\nFrom: " + Header(Text(20)) +
                       " <a@b.c>\r\nTo: " + Header(Text(20)) + "\r\nSubject: " + Header(Text(40)) + "\r\n";
    return mail + (Draw(2) == 0 ? "\r\n" + Body() : Multipart()) + "\r\n";
  }

  std::string Body() {
    std::string body;
    for (std::size_t lines = Draw(8); lines > 0; --lines)
      body += Text(70) + "\r\n";
    return body;
  }

  std::string Multipart() {
    std::string parts =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\n" + Body();
    if (Draw(2) == 0)
      parts += "--b\r\nContent-Type: text/html; charset=iso-8859-1\r\n\r\n<p>" + Text(50) + "\r\n";
    for (std::size_t i = Draw(3); i > 0; --i) {
      const std::string name = std::to_string(i) + Name() + ".txt";
      const std::string told =
          Draw(2) == 0 ? "\"" + name + "\"" : "=?iso-8859-1?Q?" + QuotedPrintable(name) + "?=";
      parts += "--b\r\nContent-Type: application/x; name=" + told +
               "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=" + told +
               "\r\n\r\n" + Base64Encode(Text(60)) + "\r\n";
    }
    return parts + "--b--\r\n";
  }

  int mails_ = 0;
};

}  // namespace vorlent
