// Texts of mailboxes for tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlent {

// The text with each line feed replaced by `lineEnd`.
inline std::string WithLineEnds(std::string_view text, std::string_view lineEnd) {
  std::string converted;
  for (const char c : text) {
    if (c == '\n') {
      converted += lineEnd;
    } else {
      converted += c;
    }
  }
  return converted;
}

// For readable literals: "a\nb\n" as the lines of a file written on Windows.
inline std::string Crlf(std::string_view text) {
  return WithLineEnds(text, "\r\n");
}

// The separator line of a mail, without its end and with it.
inline constexpr std::string_view kSeparator = "From - Sun May 09 14:30:05 2010";
inline const std::string kSeparatorLine = std::string(kSeparator) + "\r\n";

// An ordinary mail as it stands in a mailbox, dated 09.05.2010 14:30:05: for tests of what becomes of mails,
// to which their bytes don't matter.
struct OrdinaryMail {
  std::string subject = "S";
  std::string id = "1";           // in front of "@x"; "" for a mail without an ID
  std::string status = "0001";    // "" for one without a status
  std::string headers = {};       // further header lines, each with its line end
  std::string body = "text\r\n";  // its lines, each with its line end

  // All up to the empty line that ends the header.
  std::string Head() const {
    return kSeparatorLine + (status.empty() ? "" : "X-Mozilla-Status: " + status + "\r\n") +
           (id.empty() ? "" : "Message-ID: <" + id + "@x>\r\n") +
           "Date: Sun, 9 May 2010 14:30:05 +0200\r\nFrom: a@b.c\r\nTo: d@e.f\r\nSubject: " + subject +
           "\r\n" + headers;
  }
  // With the empty line after it, which divides it from the next.
  std::string Bytes() const { return Head() + "\r\n" + body + "\r\n"; }
};

// Puts mails into an mbox and knows where each begins. In all texts a line feed stands for the line end.
class MailboxBuilder {
 public:
  explicit MailboxBuilder(std::string lineEnd = "\r\n") : lineEnd_(std::move(lineEnd)) {}

  // A mail of a separator line, these header lines (each with its line end), an empty line and the body. What
  // comes before is closed with an empty line.
  MailboxBuilder& Mail(std::string_view headers, std::string_view body = "body\n") {
    if (!text_.empty()) Raw("\n");
    offsets_.push_back(static_cast<std::int32_t>(text_.size()));
    return Raw(kSeparator).Raw("\n").Raw(headers).Raw("\n").Raw(body);
  }

  // Text as it stands but for the line ends.
  MailboxBuilder& Raw(std::string_view text) {
    text_ += WithLineEnds(text, lineEnd_);
    return *this;
  }

  const std::string& Text() const { return text_; }
  // Zero-based offset of the separator line of the n-th mail, from 0.
  std::int32_t Offset(std::size_t mail) const { return offsets_.at(mail); }

 private:
  std::string lineEnd_;
  std::string text_;
  std::vector<std::int32_t> offsets_;
};

}  // namespace vorlent
