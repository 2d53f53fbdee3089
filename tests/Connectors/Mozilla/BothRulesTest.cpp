// What both sets of rules can read they read alike.

#include <random>
#include <regex>

#include "Common/StdHttp.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Platform/CodePage.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

// Mails in CR LF, ASCII and Windows-1252, drawn by chance.
class PageMails {
 public:
  explicit PageMails(std::uint32_t seed) : chance_(seed) {}

  std::string Mailbox() {
    std::string mailbox;
    for (std::size_t i = 0; i < 6; ++i)
      mailbox += Mail(i);
    return mailbox;
  }

 private:
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

  // A name that is readable on the disk by both.
  std::string Name() {
    constexpr std::string_view kLetters = "\xE4\xF6\xFC\xC4\xD6\xDC\xDF";
    return "n" + std::to_string(Draw(1000)) + kLetters[Draw(kLetters.size())] + "e.txt";
  }

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

  std::string Mail(std::size_t number) {
    std::string mail = kSeparatorLine + "X-Mozilla-Status: 000" + std::to_string(Draw(8)) +
                       "\r\nMessage-ID: <" + std::to_string(number) +
                       "@x>\r\nDate: Sun, 9 May 2010 14:30:05 +0200\r\nFrom: " + Header(Text(20)) +
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
      const std::string name = std::to_string(i) + Name();
      const std::string told =
          Draw(2) == 0 ? "\"" + name + "\"" : "=?iso-8859-1?Q?" + QuotedPrintable(name) + "?=";
      parts += "--b\r\nContent-Type: application/x; name=" + told +
               "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=" + told +
               "\r\n\r\n" + Base64Encode(Text(60)) + "\r\n";
    }
    return parts + "--b--\r\n";
  }

  std::mt19937 chance_;
};

// Those of today but for what is meant to differ in any mailbox: the line end before a boundary, and copies
// of a mail.
Rules TodaysRulesOfReading() {
  Rules rules = Rules::Today();
  rules.partLineEnds = PartLineEnds::CrLf;
  rules.equalIds = EqualIds::Replace;
  return rules;
}

class BothRules : public ThunderbirdFixture {
 protected:
  // All records of the address, as UTF-8, with what each of the mails' files holds.
  std::vector<std::string> Streamed(const Rules& rules) {
    const ScopedRules scope(rules);
    Connect("thunderbird://p");
    connector->InitLocation("thunderbird://p");
    std::vector<std::string> read;
    connector->SourceInit(nullptr, true);
    for (std::string record; connector->SourceGetNext(record);) {
      // The folder of the temporary files has another name each time.
      static const std::regex kFolder(R"(\{[0-9A-F-]{36}\})");
      read.push_back(std::regex_replace(TextToUtf8(record), kFolder, "{}"));
      for (const char* key : {"DataFile", "DataFileHTML", "DataFileAttach1", "DataFileAttach2"}) {
        std::string description = GetParam(record, key);
        if (const std::string path = CutLine(description); !path.empty()) read.push_back(ReadBytes(path));
      }
    }
    return read;
  }

  std::vector<std::string> Listed(const Rules& rules) {
    const ScopedRules scope(rules);
    Read("thunderbird://p");
    std::vector<std::string> listed;
    for (std::int32_t i = 1; i <= connector->Count(); ++i)
      listed.push_back(TextToUtf8(connector->Item(i)->DataText("_SourceFile")) + " " +
                       TextToUtf8(connector->Item(i)->Text()));
    return listed;
  }
};

TEST_F(BothRules, ReadMailsOfTheCodePageAlike) {
  std::size_t files = 0;
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    const std::string box = "Entwürfe" + std::to_string(seed % 3);
    PageMails mails(seed);
    if (seed == 0) tree.AddProfile("p", {"a"});
    tree.AddMailbox("p", "a", box, mails.Mailbox());
    tree.AddMailbox("p", "a", box + ".sbd/Größe", mails.Mailbox());
    const std::vector<std::string> windows = Streamed(Rules::Windows());
    ASSERT_EQ(Streamed(TodaysRulesOfReading()), windows) << seed;
    ASSERT_EQ(Listed(TodaysRulesOfReading()), Listed(Rules::Windows())) << seed;
    files += windows.size();
  }
  // From the third seed on 36 mails, each with its record and its file.
  EXPECT_GE(files, 18U * 36 * 2);
}

}  // namespace
}  // namespace vorlent
