// What is kept of a mail's parts by the rules of today, in both readers.
#include <gmock/gmock.h>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/AttachmentHeaders.h"
#include "Connectors/Mozilla/StdMailTest.h"
#include "Platform/CodePage.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class KeptWholeTest : public StdMailTest {
 protected:
  KeptWholeTest() { ChooseRules(Rules::Today()); }

  // Reads a multipart mail of boundary B with this body, in which a line ends as it stands.
  void Read(const std::string& body) {
    ASSERT_TRUE(Open("From - \nX-Mozilla-Status: 0001\nContent-Type: multipart/mixed; boundary=B\n\n" + body)
                    .ReadHeader(true));
  }

  // Reads it once more, without its files.
  bool Reread() {
    mail_.InitStream();
    return mail_.ReadHeader(false);
  }

  // A part of it brought out by its number.
  std::string BroughtOut(std::int16_t part) {
    mail_.SaveAttachmentFile(folder_.Path("out"), 0, part, "09.05.2010 14:30:05");
    return folder_.Read("out");
  }
  std::string BroughtOut(const std::string& part) {
    mail_.SavePart(folder_.Path("out"), 0, PartNumber::Of(part), "09.05.2010 14:30:05");
    return folder_.Read("out");
  }

  static std::string Part(const std::string& headers, const std::string& content) {
    return "--B\n" + headers + "\n" + content + "\n";
  }
  static std::string File(const std::string& name, const std::string& encoding, const std::string& content) {
    return Part("Content-Disposition: attachment; filename=" + name +
                    "\nContent-Transfer-Encoding: " + encoding + "\n",
                content);
  }
};

// --- Boundaries

std::string ReplacedBoundary(std::string part, const std::string& boundary) {
  return part.replace(2, 1, boundary);
}

constexpr char kForwarded[] =
    "Subject: inner\nContent-Type: multipart/mixed; boundary=I\n\n--I\n"
    "Content-Disposition: attachment; filename=g\n\ninner file\n--I--\n";

constexpr char kNext[] = "From - \nX-Mozilla-Status: 0001\nSubject: next\n\ntext\n";

TEST_F(KeptWholeTest, TextAfterTheClosingBoundaryIsOfTheMail) {
  for (const std::string before : {"", "\n", "\n\n"}) {
    Read(Part("", "text") + "--B--\n" + before + "footer\n--B\nmore\n\n" + kNext);
    EXPECT_TRUE(mail_.Ledger().IsWhole());
    EXPECT_THAT(TempFile("mail.eml"),
                testing::EndsWith("--B--\r\n" + Crlf(before) + "footer\r\n--B\r\nmore\r\n\r\n"));
    EXPECT_EQ(mail_.Attachments()->Count(), 1);
    ASSERT_TRUE(mail_.ReadHeader(true));
    EXPECT_EQ(mail_.GetHeader("subject"), "next");
    EXPECT_FALSE(mail_.ReadHeader(true));
  }
}

TEST_F(KeptWholeTest, EmptyLinesAfterTheClosingBoundaryAreNoText) {
  for (const std::string after : {"", "\n", "\n\n"}) {
    Read(Part("", "text") + "--B--\n" + after + kNext);
    EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--B--\r\n")) << after.size();
    const double size = mail_.ReadCount();
    ASSERT_TRUE(mail_.ReadHeader(true));
    EXPECT_EQ(mail_.GetHeader("subject"), "next");
    EXPECT_FALSE(mail_.ReadHeader(true));
    Read(Part("", "text") + "--B--\n" + after);
    EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--B--\r\n"));
    EXPECT_EQ(mail_.ReadCount(), size);
    EXPECT_FALSE(mail_.ReadHeader(true));
  }
}

TEST_F(KeptWholeTest, ManyEmptyLinesAfterTheClosingBoundaryAreText) {
  const std::string many(3000, '\n');
  Read(Part("", "text") + "--B--\n" + many + kNext);
  EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--B--\r\n" + Crlf(many)));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "next");
}

TEST_F(KeptWholeTest, PartsThatCanNotBeToldAreNotedAsLost) {
  for (const int parts : {32767, 32768}) {
    std::string body;
    for (int i = 0; i < parts; ++i)
      body += "--B\n\n";
    Read(body + "--B--\n");
    mail_.GetData("", true);
    EXPECT_EQ(mail_.Ledger().IsWhole(), parts == 32767);
  }
}

TEST_F(KeptWholeTest, TextAfterTheClosingBoundaryIsLostByTheRulesOfOld) {
  ChooseRules({.lines = LineRule::Native});
  Read(Part("", "text") + "--B--\n\nfooter\n\n" + kNext);
  EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--B--\r\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "next");
}

TEST_F(KeptWholeTest, PartHeaderThatDoesNotEndIsText) {
  Read(Part("", "text") + "--B\nHello, my text");
  EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--B\r\nHello, my text\r\n"));
  Read("--B\nContent-Type: multipart/x; boundary=R\n\n--R\nA: b\n--R--\ntext\n\n--B--\n");
  EXPECT_THAT(TempFile("mail.eml"), testing::EndsWith("--R\r\nA: b\r\n--R--\r\ntext\r\n\r\n--B--\r\n"));
}

TEST_F(KeptWholeTest, PartWithoutContentIsEmpty) {
  const std::string header = "--B\nContent-Disposition: attachment; filename=f\n";
  for (const std::string after : {"--B--\n", "--B\n\ntext\n--B--\n", ""}) {
    Read(header + after);
    const std::string record = mail_.GetData("", true);
    EXPECT_TRUE(mail_.Ledger().IsWhole()) << after;
    EXPECT_THAT(record, HasSubstr("\\nfile=f\\nsize=0"));
    EXPECT_EQ(BroughtOut(1), "");
    EXPECT_THAT(BroughtOut(-2), HasSubstr(Crlf(header))) << after;
  }
}

TEST_F(KeptWholeTest, MultipartIsNoFileWhateverItsName) {
  Read(
      "--B\nContent-Type: multipart/x; boundary=R\nContent-Disposition: attachment; "
      "filename=folder\n\n--R\n" +
      File("f", "7bit", "file").substr(4) + "--R--\n--B--\n");
  EXPECT_EQ(TempFile("att2"), "file");
  EXPECT_FALSE(HasTempFile("att1"));
}

TEST_F(KeptWholeTest, HundredNestedMultipartsAreKnown) {
  const auto nested = [](int levels) {
    std::string body;
    for (int i = 1; i <= levels; ++i) {
      const std::string around = i == 1 ? "B" : "R" + std::to_string(i - 1);
      body += "--" + around + "\nContent-Type: multipart/mixed; boundary=R" + std::to_string(i) + "\n\n";
    }
    return body + "--R" + std::to_string(levels) +
           "\nContent-Disposition: attachment; filename=f\n\nfile\n--R" + std::to_string(levels) + "--\n";
  };
  Read(nested(100) + "--B--\n");
  EXPECT_EQ(TempFile("att101"), "file");
  // What lies deeper is text, and none of it is lost.
  Read(nested(101) + File("g", "7bit", "next") + "--B--\n");
  EXPECT_THAT(TempFile("mail.eml"), HasSubstr("filename=f\r\n\r\nfile\r\n"));
  EXPECT_EQ(TempFile("att102"), "next");
  EXPECT_TRUE(mail_.Ledger().IsWhole());
}

TEST_F(KeptWholeTest, BoundaryMayEndInBlanks) {
  Read(
      "--B \nContent-Disposition: a; filename=f\n\none\n--B\t\nContent-Disposition: a; "
      "filename=g\n\ntwo\n--B-- \nend\n");
  EXPECT_EQ(TempFile("att1"), "one");
  EXPECT_EQ(TempFile("att2"), "two");
  EXPECT_EQ(BroughtOut(2), "two");
}

TEST_F(KeptWholeTest, PartAfterAnInnerMultipartIsFound) {
  Read(
      "--B\nContent-Type: multipart/related; boundary=R\n\n"
      "--R\nContent-Type: multipart/alternative; boundary=A\n\n"
      "--A\nContent-Type: text/plain\n\ntext\n--A\nContent-Type: text/html\n\n<p>\n--A--\n\n"
      "--R\nContent-Type: image/png; name=i.png\n\npicture\n--R--\n\n" +
      File("f", "7bit", "file") + "--B--\n");
  EXPECT_EQ(mail_.Attachments()->Count(), 6);
  EXPECT_EQ(TempFile("att5"), "picture");
  EXPECT_EQ(TempFile("att6"), "file");
  EXPECT_EQ(TempFile("mail.html"), "<p>");
}

TEST_F(KeptWholeTest, MailThatIsNotSplitTellsTheFilesOfNestedMultiparts) {
  const std::string body =
      "--B\nContent-Type: multipart/alternative; boundary=A\n\n--A\n\ntext\n"
      "--A\nContent-Type: multipart/related; boundary=R\n\n--R\nContent-Type: text/html\n\n<p>\n" +
      ReplacedBoundary(File("i.png", "base64", "YWJj"), "R") + "--R--\ninner end\n--A--\n" +
      File("f", "7bit", "file") + Part("Content-Type: message/rfc822\n", kForwarded) + "--B--\n--B\nfooter\n";
  Read(body);
  EXPECT_EQ(TempFile("att5"), "abc");
  EXPECT_EQ(TempFile("att6"), "file");
  EXPECT_EQ(TempFile("att7"), kForwarded);
  const auto names = [this](bool saved) {
    const std::string record = mail_.GetData("", saved);
    std::vector<std::string> found;
    for (int i = 1; record.find("|DataFileAttach" + std::to_string(i) + "=") != std::string::npos; ++i)
      found.push_back(GetParam(record, "DataFileAttach" + std::to_string(i)));
    return found;
  };
  EXPECT_THAT(names(true), ElementsAre(HasSubstr("i.png"), HasSubstr("file=f"), HasSubstr("part7.eml")));
  ASSERT_TRUE(Reread());
  EXPECT_FALSE(mail_.hasHTML());
  EXPECT_EQ(mail_.Attachments()->Count(), 7);
  EXPECT_THAT(names(false),
              ElementsAre(HasSubstr("#1.4_i.png"), HasSubstr("#2_f"), HasSubstr("#3_part7.eml")));
  EXPECT_EQ(BroughtOut("1.4"), "abc");
  EXPECT_EQ(BroughtOut("2"), "file");
  EXPECT_EQ(BroughtOut("3"), kForwarded);
  EXPECT_EQ(BroughtOut("1"), "");
  EXPECT_EQ(BroughtOut("1.1"), "text");
  EXPECT_EQ(BroughtOut("1.2"), "");
  EXPECT_EQ(BroughtOut("1.3"), "<p>");
  EXPECT_EQ(BroughtOut("1.5"), "");
  EXPECT_THAT(BroughtOut(-2),
              testing::EndsWith(Crlf("\n--B\nContent-Type: multipart/alternative; boundary=A\n\n--A\n\ntext\n"
                                     "--A\nContent-Type: multipart/related; boundary=R\n\n"
                                     "--R\nContent-Type: text/html\n\n<p>\n"
                                     "--R\nContent-Disposition: attachment; filename=i.png\n"
                                     "Content-Transfer-Encoding: base64\n\n--R--\ninner end\n--A--\n"
                                     "--B\nContent-Disposition: attachment; filename=f\n"
                                     "Content-Transfer-Encoding: 7bit\n\n"
                                     "--B\nContent-Type: message/rfc822\n\n--B--\n--B\nfooter\n")));
}

TEST_F(KeptWholeTest, MailThatIsNotSplitTellsItsOwnPartsAloneByTheRulesOfOld) {
  ChooseRules({.lines = LineRule::Native});
  Read("--B\nContent-Type: multipart/related; boundary=R\n\n" +
       ReplacedBoundary(File("i.png", "base64", "YWJj"), "R") + "--R--\n" + File("f", "7bit", "file") +
       "--B--\n");
  EXPECT_EQ(mail_.Attachments()->Count(), 3);
  ASSERT_TRUE(Reread());
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
  EXPECT_EQ(BroughtOut(2), "file\r\n");
}

TEST_F(KeptWholeTest, FirstContentTypeOfAMailTellsItsBoundary) {
  const std::string header =
      "From - \nX-Mozilla-Status: 0001\nContent-Type : multipart/mixed; boundary=B\n"
      "Content-Type: multipart/mixed; boundary=C\n\n";
  ASSERT_TRUE(Open(header + File("f", "7bit", "file") + "--B--\n").ReadHeader(true));
  EXPECT_EQ(TempFile("att1"), "file");
  EXPECT_EQ(BroughtOut(1), "file");
}

TEST_F(KeptWholeTest, BoundaryOfAnInnerMultipartThatHasEndedIsText) {
  Read("--B\nContent-Type: multipart/related; boundary=R\n\n--R\n\ntext\n" +
       File("f", "7bit", "--R\nA: b\n\n--R--") + "--B--\n");
  EXPECT_EQ(TempFile("att3"), "--R\nA: b\n\n--R--");
}

TEST_F(KeptWholeTest, BoundaryThatCannotBeDecodedIsNone) {
  for (const bool wasBefore : {true, false}) {
    ChooseRules(Rules::Today());
    ChooseRules(
        {.lines = LineRule::Native, .boundaries = wasBefore ? Boundaries::Exact : Boundaries::Rfc2046});
    Open(
        "From - \nX-Mozilla-Status: 0001\nContent-Type: multipart/mixed; boundary==?x?Q?=ZZ?=\n\ntext\n\n"
        "From - \nX-Mozilla-Status: 0001\nSubject: next\n\ntext\n");
    if (wasBefore) {
      EXPECT_NE(NumberOf([&] { mail_.ReadHeader(true); }), 0);
      continue;
    }
    EXPECT_TRUE(mail_.ReadHeader(true));
    EXPECT_THAT(TempFile("mail.eml"), HasSubstr("\r\ntext\r\n"));
    EXPECT_TRUE(mail_.ReadHeader(true));
    EXPECT_EQ(mail_.GetHeader("subject"), "next");
    EXPECT_THAT(BroughtOut(-2), HasSubstr("\r\ntext\r\n"));
  }
}

TEST_F(KeptWholeTest, SignatureMarkIsNoBoundary) {
  Open("From - \nX-Mozilla-Status: 0001\n\ntext\n-- \nAnna\n--\nBerlin\n----\nend\n");
  EXPECT_THAT(BroughtOut(-2), HasSubstr(Crlf("\ntext\n-- \nAnna\n--\nBerlin\n----\nend\n")));
}

// --- Encodings

TEST_F(KeptWholeTest, Base64GoesOnAcrossLinesOfAnyLength) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i)
    bytes += static_cast<char>(i * 7 % 251);
  const std::string text = Base64Encode(bytes);
  for (const std::size_t width : {1u, 3u, 31u, 33u, 75u, 76u, 77u, 1000u, 32'769u, 200'000u}) {
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at += width)
      lines += (at == 0 ? "" : "\n") + text.substr(at, width);
    Read(File("f", "base64", lines) + "--B--\n");
    EXPECT_EQ(TempFile("att1"), bytes) << width;
    EXPECT_EQ(BroughtOut(1), bytes) << width;
    EXPECT_TRUE(mail_.Ledger().IsWhole());
  }
}

TEST_F(KeptWholeTest, Base64PassesOverWhatIsNotOfItsAlphabet) {
  const std::string text(90, 'x');
  std::string base64 = Base64Encode(text);
  for (const std::size_t at : {100u, 64u, 33u, 5u, 0u})
    base64.insert(at, "\xE4 -");
  Read(File("f", "base64", base64) + File("g", "base64", "YQ") + File("h", "base64", "YQ==\nYg==") +
       "--B--\n");
  EXPECT_EQ(TempFile("att1"), text);
  EXPECT_EQ(TempFile("att2"), "a");
  EXPECT_EQ(TempFile("att3"), "ab");
}

TEST_F(KeptWholeTest, QuotedPrintableKeepsUnderscoresAndBadCodes) {
  const std::string text = "a_b=3D=c3=A4=\n  c= \t\nd=G1 e=\t\n=4\n100% = x  \nend=";
  Read(File("f", "quoted-printable", text) + "--B--\n");
  EXPECT_EQ(TempFile("att1"), "a_b=\xC3\xA4  cd=G1 e=4\n100% = x\nend");
  EXPECT_EQ(BroughtOut(1), TempFile("att1"));
  EXPECT_TRUE(mail_.Ledger().IsWhole());
}

TEST_F(KeptWholeTest, EncodingMayBeFoldedOrCommented) {
  for (const std::string value : {"\n base64", " BASE64 (as ever)", "\n\t(so) base64\n ", " Base64 \t"}) {
    Read(Part("Content-Disposition: a; filename=f\nContent-Transfer-Encoding:" + value + "\n", "YWJj") +
         "--B--\n");
    EXPECT_EQ(TempFile("att1"), "abc") << value;
    EXPECT_EQ(BroughtOut(1), "abc") << value;
  }
  ChooseRules({.lines = LineRule::Native});
  Read(Part("Content-Disposition: a; filename=f\nContent-Transfer-Encoding:\n base64\n", "YWJj") + "--B--\n");
  EXPECT_EQ(TempFile("att1"), "YWJj\r\n");
}

TEST_F(KeptWholeTest, EncodingEndsWithItsPart) {
  Read(File("f", "base64", "YWJj") + Part("Content-Disposition: a; filename=g\n", "plain") +
       "--B--\nplain too\n");
  EXPECT_EQ(BroughtOut(1), "abc");
  EXPECT_EQ(BroughtOut(2), "plain");
  EXPECT_EQ(BroughtOut(0), "plain too\n");
}

// --- Line ends

TEST_F(KeptWholeTest, LinesOfAPartEndAsInTheMailbox) {
  Read(File("f", "7bit", "a\n\nb\r\nc") + File("g", "quoted-printable", "a\r\nb=\r\nc\n") +
       File("h", "8bit", "") + "--B--\n");
  EXPECT_EQ(TempFile("att1"), "a\n\nb\r\nc");
  EXPECT_EQ(TempFile("att2"), "a\r\nbc\n");
  EXPECT_EQ(TempFile("att3"), "");
  for (const std::int16_t part : {std::int16_t{1}, std::int16_t{2}, std::int16_t{3}})
    EXPECT_EQ(BroughtOut(part), TempFile("att" + std::to_string(part)));
}

TEST_F(KeptWholeTest, CarriageReturnAloneStaysInAPart) {
  const std::string bytes = "a\rb\r\r\nc\n\r\rd";
  for (const std::string encoding : {"7bit", "8bit", "binary", "quoted-printable", "x-none"}) {
    Read(File("f", encoding, bytes) + Part("Content-Type: message/rfc822\n", bytes) + "--B--\n");
    EXPECT_EQ(TempFile("att1"), bytes) << encoding;
    EXPECT_EQ(BroughtOut(1), bytes) << encoding;
    EXPECT_EQ(TempFile("att2"), bytes);
    EXPECT_EQ(BroughtOut(2), bytes);
    Read(File("f", encoding, bytes) + "\n");
    EXPECT_EQ(TempFile("att1"), bytes + "\n") << encoding;
    EXPECT_EQ(BroughtOut(1), bytes + "\n") << encoding;
  }
}

TEST_F(KeptWholeTest, PartThatEndsWithItsMailIsWhole) {
  const std::string next = "From - \nX-Mozilla-Status: 0001\n\nnext\n";
  for (const std::string& after : {std::string("\n") + next, std::string("\n"), std::string()}) {
    Read(File("f", "7bit", "a\n\nb") + after);
    EXPECT_EQ(TempFile("att1"), "a\n\nb\n") << after;
    EXPECT_EQ(BroughtOut(1), "a\n\nb\n") << after;
    Read(File("f", "base64", "YWJj\nZGVm") + after);
    EXPECT_EQ(TempFile("att1"), "abcdef") << after;
    EXPECT_EQ(BroughtOut(1), "abcdef") << after;
  }
}

// --- Names

TEST_F(KeptWholeTest, AttachmentWithoutANameGetsOne) {
  Read(Part("Content-Type: text/plain\n", "text") + Part("Content-Disposition: attachment\n", "one") +
       Part("Content-Type: image/png\nContent-Transfer-Encoding: base64\n", "YQ==") +
       Part("Content-Type: message/rfc822\n", "Subject: inner\n\ninner text") +
       Part("Content-Type: application/x-some-thing\n", "four") +
       Part("Content-Type: image/gif; name=\"i.gif\"\nContent-Disposition: inline\n", "five") +
       Part("Content-Type: message/delivery-status\n", "six") + "--B--\n");
  const std::string record = mail_.GetData("", true);
  for (const std::string name : {"part2.txt", "part3.png", "part4.eml", "part5", "i.gif"}) {
    EXPECT_THAT(record, HasSubstr("\\nfile=" + name + "\\n")) << record;
    EXPECT_TRUE(HasTempFile(name));
  }
  EXPECT_THAT(record, Not(HasSubstr("DataFileAttach6")));
  EXPECT_EQ(TempFile("part3.png"), "a");
  EXPECT_EQ(TempFile("part4.eml"), "Subject: inner\n\ninner text");
  EXPECT_EQ(BroughtOut(4), "Subject: inner\n\ninner text");
}

TEST_F(KeptWholeTest, PartWithoutANameIsInlineByTheRulesOfOld) {
  ChooseRules({.lines = LineRule::Native});
  Read(Part("Content-Type: image/png\nContent-Transfer-Encoding: base64\n", "YQ==") + "--B--\n");
  EXPECT_THAT(mail_.GetData("", true), Not(HasSubstr("DataFileAttach")));
  EXPECT_THAT(TempFile("mail.eml"), HasSubstr("YQ=="));
}

TEST_F(KeptWholeTest, PictureThatTheTextShowsStaysWithIt) {
  Read(Part("Content-Type: text/html\n", "<img src=\"cid:x\">") +
       Part("Content-Type: image/png\nContent-ID: <x>\n", "picture") + "--B--\n");
  EXPECT_THAT(mail_.GetData("", true), Not(HasSubstr("DataFileAttach")));
  EXPECT_THAT(TempFile("mail.eml"), HasSubstr("Content-ID: <x>\r\n\r\npicture\r\n"));
}

TEST_F(KeptWholeTest, AttachmentsOfOneNameAreAllKept) {
  Read(File("a.b.txt", "7bit", "one") + File("a.b.txt", "7bit", "two") + File("A.B.TXT", "7bit", "three") +
       File("mail.eml", "7bit", "four") + File("att6", "7bit", "five") + File("att6", "7bit", "six") +
       "--B--\n");
  const std::string record = mail_.GetData("", true);
  EXPECT_TRUE(mail_.Ledger().IsWhole());
  EXPECT_EQ(TempFile("a.b.txt"), "one");
  EXPECT_EQ(TempFile("a.b (2).txt"), "two");
  EXPECT_EQ(TempFile("A.B (3).TXT"), "three");
  EXPECT_EQ(TempFile("mail (2).eml"), "four");
  EXPECT_THAT(TempFile("mail.eml"), HasSubstr("Content-Type: multipart/mixed"));
  EXPECT_EQ(TempFile("att6 (2)"), "five");
  EXPECT_EQ(TempFile("att6"), "six");
  EXPECT_THAT(record, HasSubstr("a.b (2).txt\\nfile=a.b.txt\\n"));
  mail_.DeleteLastTempfiles();
  EXPECT_FALSE(HasTempFile("a.b (2).txt"));
}

// --- Lines that would separate mails

TEST_F(KeptWholeTest, QuotesOfLinesThatWouldSeparateAreTakenAway) {
  const std::string stored = ">From the start\n>>From here\n> From\n>From: x\nx >From y\n>From";
  const std::string sent = "From the start\n>From here\n> From\n>From: x\nx >From y\n>From";
  const std::string html = "Content-Type: text/html\n";
  for (const std::string encoding : {"7bit", "quoted-printable"}) {
    Read(File("f", encoding, stored) + Part(html, stored) + "--B--\n");
    EXPECT_EQ(TempFile("att1"), sent) << encoding;
    EXPECT_EQ(BroughtOut("1"), sent) << encoding;
    EXPECT_EQ(TempFile("mail.html"), sent);
    EXPECT_THAT(TempFile("mail.eml"), HasSubstr(Crlf(html + "\n" + stored))) << "goes into a mailbox again";
  }
}

TEST_F(KeptWholeTest, QuotesStayByTheRulesOfOld) {
  ChooseRules({.lines = LineRule::Native});
  Read(File("f", "7bit", ">From here") + "--B--\n");
  EXPECT_EQ(TempFile("att1"), ">From here\r\n");
}

// --- Mails that are one file

constexpr char kScanHeader[] =
    "Subject: scan\nContent-Type: application/pdf;\n name=scan.pdf\nContent-ID: <1@x>\n"
    "Content-Transfer-Encoding : base64\n";

TEST_F(KeptWholeTest, MailThatIsOneFileIsItsAttachment) {
  const std::string header = std::string("From - \nX-Mozilla-Status: 0001\n") + kScanHeader + "\n";
  ASSERT_TRUE(Open(header + "JVBE\nRg==\n\n" + kNext).ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf(header));
  EXPECT_EQ(TempFile("att1"), "%PDF");
  EXPECT_THAT(mail_.GetData("", true), HasSubstr("scan.pdf\\nfile=scan.pdf\\nsize=4"));
  EXPECT_THAT(KeptHeaderLines(*mail_.Attachments(), mail_.Ledger().boundaries),
              ElementsAre("\r\ntype=application/pdf"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "next");
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
  ASSERT_TRUE(Reread());
  EXPECT_THAT(mail_.GetData("", false), HasSubstr("#1_scan.pdf"));
  EXPECT_EQ(BroughtOut("1"), "%PDF");
  EXPECT_EQ(BroughtOut("-2"), Crlf(header));
}

TEST_F(KeptWholeTest, MailIsOneFileByItsTypeOrDisposition) {
  struct Row {
    std::string header, name;
  };
  const Row rows[] = {{"Content-Type: image/png\n", "part1.png"},
                      {"Content-Type: text/csv\nContent-Disposition: attachment; filename=t.csv\n", "t.csv"},
                      {"Content-Disposition: attachment\n", "part1.txt"},
                      {"Content-Type: text/plain; name=t.txt\n", ""},
                      {"Content-Type: text/html\nContent-Disposition: inline\n", ""},
                      {"Content-Type: multipart/mixed\nContent-Disposition: attachment\n", ""},
                      {"Content-Type: message/rfc822\n", ""},
                      {"Content-Transfer-Encoding: 8bit\n", ""},
                      {"Content-Type: image /png\n", "part1.png"},
                      {"Content-Type: text\nContent-Disposition: attachment; filename=t.csv\n", "t.csv"},
                      {"Content-Type: text\n", ""},
                      {"Content-Type: TEXT; charset=us-ascii; name=a.txt\n", ""},
                      {"Content-Type: \"text/plain\"\n", ""},
                      {"Content-Type: text /plain\n", ""},
                      {"Content-Type: text/plain, text/html\n", ""},
                      {"Content-Type: =?utf-8?Q?text/plain?=\n", ""},
                      {"Content-Type: plain\n", ""},
                      {"Content-Type: text-plain\n", ""},
                      {"Content-Type: charset=utf-8\n", ""},
                      {"Content-Type: /\n", ""},
                      {"", ""}};
  for (const Row& row : rows) {
    Open("From - \nSubject: a\n" + row.header + "\nA line\nand one\n\n");
    ASSERT_TRUE(mail_.ReadHeader(true));
    EXPECT_EQ(mail_.Attachments()->Count(), row.name.empty() ? 0 : 1) << row.header;
    if (row.name.empty()) continue;
    EXPECT_THAT(mail_.GetData("", true), HasSubstr("file=" + row.name)) << row.header;
    EXPECT_EQ(TempFile(row.name), "A line\nand one\n");
    EXPECT_EQ(BroughtOut("1"), "A line\nand one\n");
  }
}

TEST_F(KeptWholeTest, MailThatIsOneFileIsTextByTheRulesOfOld) {
  ChooseRules({.lines = LineRule::Native});
  const std::string mail = std::string("From - \n") + kScanHeader + "\nJVBERg==\n";
  ASSERT_TRUE(Open(mail).ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf(mail));
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

// --- Headers

TEST_F(KeptWholeTest, BlanksBeforeTheColonOfTheTypeHideNoPart) {
  Open("From - \nContent-Type : multipart/mixed; boundary=B\n\n" + File("f", "base64", "QUFB") + "--B--\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("att1"), "AAA");
  EXPECT_EQ(BroughtOut("1"), "AAA");
}

TEST_F(KeptWholeTest, RecordIsTextWhateverBytesHeadersHold) {
  Open("From - \nMessage-ID: <\xE9@x>\nContent-Type: multipart/mixed; boundary=B\n\n" +
       Part("Content-Type: application/x; name=\"caf\xE9.bin\"\n", "A") + "--B--\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  const std::string record = mail_.GetData("", true);
  EXPECT_EQ(TextToUtf8(record), record);
  EXPECT_THAT(record, HasSubstr("\\nfile=café.bin\\n"));
  EXPECT_THAT(record, HasSubstr("originalfile=café.bin"));
}

}  // namespace
}  // namespace vorlent
