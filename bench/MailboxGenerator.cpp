#include "MailboxGenerator.h"

#include <array>
#include <random>
#include <string>

#include "Common/TextWriter.h"

namespace vorlent {

namespace {

constexpr std::array<std::string_view, 32> kWords = {
    "the",     "mail",     "archive", "of",    "und",     "Termin", "Angebot", "please",
    "find",    "attached", "report",  "a",     "meeting", "on",     "Montag",  "with",
    "project", "Rechnung", "in",      "to",    "regards", "we",     "discuss", "budget",
    "for",     "next",     "quarter", "Danke", "I",       "will",   "call",    "tomorrow"};

// Writes mails one after the other, a line at a time, so that no more than a line is held.
class Generator {
 public:
  Generator(std::string_view path, std::uint64_t seed) : file_(path, os::File::Mode::Create), random_(seed) {}

  std::uint64_t Written() const { return written_; }
  void Close() { file_.Close(); }

  void SmallMail(int number) {
    Header(number, "text/plain; charset=iso-8859-1");
    TextLines(2);
    Line("");
  }

  void TextMail(int number) {
    const bool html = number % 8 == 0;
    Header(number, html ? "multipart/alternative; boundary=\"b0\"" : "text/plain; charset=iso-8859-1");
    const std::uint64_t lines = 40 + Below(400);
    if (html) Line("--b0");
    if (html) PartHeader("text/plain");
    TextLines(lines);
    if (html) {
      Line("--b0");
      PartHeader("text/html");
      TextLines(lines / 2);
      Line("--b0--");
    }
    Line("");
  }

  void AttachmentMail(int number, std::uint64_t attachmentBytes) {
    Header(number, "multipart/mixed; boundary=\"b0\"");
    Line("--b0");
    PartHeader("text/plain");
    TextLines(20);
    Line("--b0");
    Line("Content-Type: application/pdf; name=\"report " + std::to_string(number) + ".pdf\"");
    Line("Content-Transfer-Encoding: base64");
    Line("Content-Disposition: attachment; filename=\"report " + std::to_string(number) + ".pdf\"");
    Line("");
    for (std::uint64_t bytes = 0; bytes < attachmentBytes; bytes += kBase64LineBytes)
      Line(Base64Line());
    Line("--b0--");
    Line("");
  }

  std::uint64_t Below(std::uint64_t bound) { return random_() % bound; }

 private:
  static constexpr std::uint64_t kBase64LineBytes = 57;

  void Line(std::string_view text) {
    file_.WriteLine(text);
    written_ += text.size() + 2;
  }

  void Header(int number, std::string_view contentType) {
    Line("From - Sun May 09 14:30:05 2010");
    Line("X-Account-Key: account1");
    Line("X-Mozilla-Status: 0001");
    Line("X-Mozilla-Status2: 00000000");
    Line("Return-Path: <sender@example.org>");
    Line("Received: from mx1.example.org (mx1.example.org [192.0.2.1])");
    Line("\tby mail.example.net with ESMTP id " + std::to_string(number));
    Line("\tfor <anna@example.net>; Sun, 9 May 2010 14:30:05 +0200");
    Line("Received: from sender.example.org by mx1.example.org; Sun, 9 May 2010 14:30:04 +0200");
    Line("Date: Sun, 9 May 2010 14:30:05 +0200");
    Line("From: =?iso-8859-1?Q?J=FCrgen_Sender?= <sender@example.org>");
    Line("To: Anna Example <anna@example.net>");
    Line("Subject: Angebot " + std::to_string(number) + " for the next quarter");
    Line("Message-ID: <" + std::to_string(number) + ".20100509@example.org>");
    Line("MIME-Version: 1.0");
    Line("Content-Type: " + std::string(contentType));
    Line("");
  }

  void PartHeader(std::string_view type) {
    Line("Content-Type: " + std::string(type) + "; charset=iso-8859-1");
    Line("Content-Transfer-Encoding: 8bit");
    Line("");
  }

  void TextLines(std::uint64_t count) {
    for (std::uint64_t i = 0; i < count; ++i) {
      if (Below(8) == 0) {
        Line("");
        continue;
      }
      line_.clear();
      const std::uint64_t width = 30 + Below(45);
      while (line_.size() < width)
        (line_ += kWords[Below(kWords.size())]) += ' ';
      Line(line_);
    }
  }

  std::string_view Base64Line() {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    line_.resize(76);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < line_.size(); ++i) {
      if (i % 10 == 0) bits = random_();
      line_[i] = kAlphabet[bits & 63];
      bits >>= 6;
    }
    return line_;
  }

  TextWriter file_;
  std::mt19937_64 random_;  // its numbers, unlike those of distributions, are the same everywhere
  std::uint64_t written_ = 0;
  std::string line_;
};

}  // namespace

int GenerateMailbox(std::string_view path, MailboxKind kind, std::uint64_t size, std::uint64_t seed) {
  Generator generator(path, seed);
  int mails = 0;
  while (generator.Written() < size) {
    ++mails;
    if (kind == MailboxKind::Text) {
      generator.TextMail(mails);
    } else if (kind == MailboxKind::Attachments) {
      generator.AttachmentMail(mails, 50'000 + generator.Below(800'000));
    } else {
      generator.AttachmentMail(mails, size / 78 * 57);
    }
  }
  generator.Close();
  return mails;
}

void GenerateSmallMails(std::string_view path, int mails) {
  Generator generator(path, 1);
  for (int number = 1; number <= mails; ++number)
    generator.SmallMail(number);
  generator.Close();
}

}  // namespace vorlent
