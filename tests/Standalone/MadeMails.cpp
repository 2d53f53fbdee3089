#include "Standalone/MadeMails.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

#include "Standalone/Chance.h"
#include "Support/MailboxBuilder.h"

namespace vorlent {

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kStatusName = "x-mozilla-status";
constexpr std::string_view kSubject = "Subject: mail ";

enum class Kind {
  Plain,
  LongText,
  Large,
  QuotesSeparator,
  Alternative,
  Attachment,
  Nested,
  OneNameTwice,
  HtmlAlone,
  WithoutId,
  WithoutStatus,
  WithOwnAddress,
  Expunged,
  Twin,
  Double,
};
// How often each comes among all of them.
constexpr std::array<int, 15> kShares = {8, 3, 1, 2, 3, 3, 3, 1, 1, 2, 2, 1, 4, 2, 2};

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  constexpr std::size_t kBytesInLine = 57;
  std::string text;
  for (std::size_t line = 0; line < bytes.size(); line += kBytesInLine) {
    const std::string_view part = bytes.substr(line, kBytesInLine);
    for (std::size_t i = 0; i < part.size(); i += 3) {
      const std::size_t count = std::min<std::size_t>(3, part.size() - i);
      unsigned value = 0;
      for (std::size_t j = 0; j < 3; ++j)
        value = value << 8 | (j < count ? static_cast<unsigned char>(part[i + j]) : 0);
      for (std::size_t j = 0; j < 4; ++j)
        text += j <= count ? kDigits[value >> (18 - 6 * j) & 63] : '=';
    }
    text += kCrLf;
  }
  return text;
}

bool BeginsLike(std::string_view line, std::string_view lowerCase) {
  return line.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), line.begin(), [](char wanted, char c) {
           return std::tolower(static_cast<unsigned char>(c)) == wanted;
         });
}

// The length of the line that begins at a place, without its end, which is at most at `end`.
std::size_t LineLength(std::string_view text, std::size_t at) {
  return std::min(text.find(kCrLf, at), text.size()) - at;
}

// Writes one mail.
class MailWriter {
 public:
  MailWriter(std::uint64_t seed, std::uint64_t number)
      : seed_(seed), number_(number), chance_((seed << 20) + number), kind_(DrawKind()) {}

  bool IsTwin() const { return kind_ == Kind::Twin && number_ > 0; }

  MadeMail Write() {
    switch (kind_) {
      case Kind::Twin:
        return IsTwin() ? WriteTwin() : WritePlain({});
      case Kind::Double:
        return number_ > 0 ? MailWriter(seed_, number_ - 1).Write() : WritePlain({});
      case Kind::Alternative:
        return WriteAlternative();
      case Kind::Attachment:
        return WriteWithAttachments(Head({}), "a" + Number() + ".bin", "b" + Number() + ".txt");
      case Kind::OneNameTwice:
        return WithoutFiles(WriteWithAttachments(Head({}), "a.bin", "a.bin"));
      case Kind::Nested:
        return WriteNested();
      case Kind::HtmlAlone:
        return WritePlain("Content-Type: text/html\r\n");
      case Kind::WithOwnAddress:
        return WritePlain("Address: 12 High Street\r\n");
      default:
        return WritePlain({});
    }
  }

  // All up to the body.
  std::string Head(std::string_view more) {
    const std::string status = kind_ == Kind::WithoutStatus ? "" : Status();
    const bool statusFirst = !chance_.OneIn(4);
    std::string head = kSeparatorLine;
    if (statusFirst) head += status;
    head +=
        "Received: from a by b\r\nDate: Sun, 09 May 2010 14:30:05 +0200\r\nFrom: Anna <anna@example.org>\r\n";
    head += std::string(kSubject) + Number() + "\r\n";
    if (kind_ != Kind::WithoutId) head += "Message-ID: <" + Number() + "@example.org>\r\n";
    if (!statusFirst) head += status;
    return head.append(more).append(kCrLf);
  }

 private:
  std::string Number() const { return std::to_string(number_); }

  Kind DrawKind() {
    int all = 0;
    for (const int share : kShares)
      all += share;
    int drawn = static_cast<int>(chance_.Below(static_cast<std::uint64_t>(all)));
    std::size_t kind = 0;
    while (drawn >= kShares[kind])
      drawn -= kShares[kind++];
    return static_cast<Kind>(kind);
  }

  std::string Status() {
    constexpr std::string_view kLiving = "012457", kDead = "89Dfa";
    const std::string_view digits = kind_ == Kind::Expunged ? kDead : kLiving;
    std::string lines =
        "X-Mozilla-Status: 000" + std::string(1, digits[chance_.Below(digits.size())]) + "\r\n";
    if (!chance_.OneIn(4)) lines += "X-Mozilla-Status2: 00000000\r\n";
    if (!chance_.OneIn(4)) lines += "X-Mozilla-Keys:" + std::string(40, ' ') + "\r\n";
    return lines;
  }

  std::string Text(std::size_t lines) {
    std::string text;
    for (std::size_t i = 0; i < lines; ++i) {
      text += "line " + std::to_string(chance_.Below(1000000)) + std::string(chance_.Below(60), 'x');
      text += kCrLf;
      if (chance_.OneIn(8)) text += kCrLf;
      if (chance_.OneIn(12)) text += "a word\r\nFrom - is quoted by nobody here\r\n";
    }
    return text;
  }

  std::string Body() {
    switch (kind_) {
      case Kind::Large:
        return Text(1500 + chance_.Below(2000));
      case Kind::LongText:
        return Text(50 + chance_.Below(150));
      case Kind::QuotesSeparator:
        return Text(2) + "\r\n>From - the one who wrote it: he says\r\nand more\r\n\r\n" + Text(2);
      default:
        return Text(chance_.Below(8));
    }
  }

  std::string Bytes() {
    std::string bytes;
    for (std::size_t size = 1 + chance_.Below(3000); size > 0; --size)
      bytes += static_cast<char>(chance_.Below(256));
    return bytes;
  }

  MadeMail WritePlain(std::string_view more) {
    MadeMail mail;
    mail.bytes = Head(more) + Body() + "\r\n";
    mail.files = {mail.bytes};
    return mail;
  }

  // The header block of the mail before with another text.
  MadeMail WriteTwin() {
    MailWriter other(seed_, number_ - 1);
    MadeMail mail = other.Write();
    if (!mail.isPlain || other.IsTwin() || other.kind_ == Kind::Double) return WritePlain({});
    mail.bytes = std::string(HeaderBlock(mail.bytes)) + "\r\n" + Text(1 + chance_.Below(5)) + "\r\n";
    mail.files = {mail.bytes};
    return mail;
  }

  static MadeMail WithoutFiles(MadeMail mail) {
    mail.files.clear();
    return mail;
  }

  static std::string Multipart(std::string_view kind, std::string_view boundary) {
    return "Content-Type: multipart/" + std::string(kind) + "; boundary=\"" + std::string(boundary) +
           "\"\r\n";
  }

  static std::string TextPart(std::string_view boundary, const std::string& text) {
    return "--" + std::string(boundary) + "\r\nContent-Type: text/plain\r\n\r\n" + text;
  }

  // In the mail, and decoded.
  struct HtmlPart {
    std::string raw;
    std::string decoded;
  };
  HtmlPart Html(std::string_view boundary) {
    const std::string number = std::to_string(chance_.Below(1000000));
    return {"--" + std::string(boundary) +
                "\r\nContent-Type: text/html\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n<p "
                "class=3D\"n" +
                number + "\">a =\r\nb</p>\r\n",
            "<p class=\"n" + number + "\">a b</p>\r\n"};
  }

  std::string AttachmentPart(std::string_view boundary, std::string_view name, std::string_view bytes) {
    return "--" + std::string(boundary) +
           "\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment; filename=\"" +
           std::string(name) + "\"\r\n\r\n" + Base64(bytes);
  }

  MadeMail WriteAlternative() {
    const std::string boundary = "b" + Number();
    MadeMail mail;
    mail.isPlain = false;
    const std::string head = Head(Multipart("alternative", boundary));
    const std::string text = TextPart(boundary, Text(2));
    const HtmlPart html = Html(boundary);
    const std::string kept = head + text + html.raw + "--" + boundary + "--\r\n";
    mail.bytes = kept + "\r\n";
    mail.files = {kept, html.decoded};
    return mail;
  }

  MadeMail WriteWithAttachments(std::string head, std::string_view first, std::string_view second) {
    const std::string boundary = "b" + Number();
    MadeMail mail;
    mail.isPlain = false;
    head.insert(head.size() - kCrLf.size(), Multipart("mixed", boundary));
    const std::string text = TextPart(boundary, Text(3));
    const std::string a = Bytes(), b = Bytes();
    const std::string end = "--" + boundary + "--\r\n";
    mail.bytes =
        head + text + AttachmentPart(boundary, first, a) + AttachmentPart(boundary, second, b) + end + "\r\n";
    mail.files = {head + text + end, a, b};
    return mail;
  }

  MadeMail WriteNested() {
    const std::string outer = "o" + Number(), inner = "i" + Number();
    MadeMail mail;
    mail.isPlain = false;
    const std::string head = Head(Multipart("mixed", outer));
    const std::string opening = "--" + outer + "\r\n" + Multipart("alternative", inner) + "\r\n";
    const std::string text = TextPart(inner, Text(2));
    const HtmlPart html = Html(inner);
    const std::string bytes = Bytes();
    const std::string kept = head + opening + text + html.raw + "--" + inner + "--\r\n\r\n";
    const std::string end = "--" + outer + "--\r\n";
    mail.bytes = kept + AttachmentPart(outer, "n" + Number() + ".pdf", bytes) + end + "\r\n";
    mail.files = {kept + end, html.decoded, bytes};
    return mail;
  }

  std::uint64_t seed_;
  std::uint64_t number_;
  Chance chance_;
  Kind kind_;
};

// The number in a mail's subject. False for a mail of another kind.
bool NumberOf(std::string_view mail, std::uint64_t& number) {
  const std::size_t subject = HeaderBlock(mail).find(kSubject);
  if (subject == std::string_view::npos) return false;
  const char* const digits = mail.data() + subject + kSubject.size();
  return std::from_chars(digits, mail.data() + mail.size(), number).ec == std::errc();
}

}  // namespace

// --- Making

MadeMail MailMaker::Make(std::uint64_t number) const {
  return MailWriter(seed_, number).Write();
}

std::string MailMaker::MakeFiller(std::uint64_t number, std::size_t size) const {
  OrdinaryMail filler = {.subject = "filler " + std::to_string(number), .id = {}, .body = "\r\n"};
  const std::size_t least = filler.Bytes().size();
  if (size < least) return {};
  filler.body.insert(0, size - least, 'f');
  return filler.Bytes();
}

std::vector<std::string> MailMaker::FilesOf(std::string_view mail) const {
  std::uint64_t number = 0;
  const std::string comparable = Comparable(mail);
  if (NumberOf(mail, number)) {
    const MadeMail made = Make(number);
    if (Comparable(made.bytes) == comparable) {
      std::vector<std::string> files;
      files.reserve(made.files.size());
      for (const std::string& file : made.files)
        files.push_back(Comparable(file));
      return files;
    }
  }
  if (mail.find("boundary=") != std::string_view::npos) return {};
  return {comparable};
}

bool MailMaker::HasTwin(std::string_view mail) const {
  std::uint64_t number = 0;
  return NumberOf(mail, number) && MailWriter(seed_, number + 1).IsTwin();
}

// --- Taking apart

std::vector<PlacedMail> MailsIn(std::string_view mailbox) {
  std::vector<PlacedMail> mails;
  bool lastIsEmpty = true;
  bool inHeader = false;
  for (std::size_t at = 0; at < mailbox.size();) {
    const std::string_view line = mailbox.substr(at, LineLength(mailbox, at));
    if (lastIsEmpty && (line.starts_with("From - ") || line.starts_with(">From - "))) {
      if (!mails.empty()) mails.back().end = at;
      mails.push_back({at, mailbox.size()});
      inHeader = true;
    } else if (line.empty()) {
      inHeader = false;
    } else if (inHeader && mails.back().status == std::string::npos &&
               BeginsLike(line, std::string(kStatusName) + ":")) {
      mails.back().status = at + line.size() - 1;
      mails.back().isExpunged = MarkedDigit(line.back()) == std::toupper(line.back());
    }
    lastIsEmpty = line.empty();
    at += line.size() + kCrLf.size();
  }
  return mails;
}

char MarkedDigit(char digit) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const std::size_t value = kDigits.find(static_cast<char>(std::toupper(static_cast<unsigned char>(digit))));
  return kDigits[(value == std::string_view::npos ? 0 : value) | 8];
}

std::string Comparable(std::string_view mail) {
  if (!mail.starts_with("From - ") && !mail.starts_with(">From - ")) return std::string(mail);
  std::string text;
  const std::size_t headEnd = HeaderBlock(mail).size();
  for (std::size_t at = 0; at < headEnd;) {
    std::string_view line = mail.substr(at, LineLength(mail, at));
    at += line.size() + kCrLf.size();
    for (const std::string_view name : {"x-mozilla-status:", "x-mozilla-status2:", "x-mozilla-keys:"}) {
      if (BeginsLike(line, name)) line = line.substr(0, name.size());
    }
    text.append(line).append(kCrLf);
  }
  if (headEnd < mail.size()) text += mail.substr(headEnd);
  if (!text.ends_with(kCrLf)) text += kCrLf;
  return text;
}

std::string_view HeaderBlock(std::string_view mail) {
  const std::size_t end = mail.find("\r\n\r\n");
  return end == std::string_view::npos ? mail : mail.substr(0, end + kCrLf.size());
}

}  // namespace vorlent
