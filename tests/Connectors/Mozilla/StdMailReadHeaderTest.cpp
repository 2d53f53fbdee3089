// The import reader: finding mails, walking their parts, splitting them into files.
#include <filesystem>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/MimeTree.h"
#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/ErrorNumbers.h"
#include "Support/OddEntries.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StdMailReadHeaderTest : public StdMailTest {
 protected:
  // Reads one multipart mail of boundary "B" with saving, from its body on.
  bool SaveBody(std::string_view body) {
    OpenLines("From - x\n" + kMixedHeaders + "\n" + std::string(body));
    return mail_.ReadHeader(true);
  }

  // What mail.eml holds in front of the body of such a mail.
  static std::string Head() { return Crlf("From - x\n" + kMixedHeaders + "\n"); }

  std::vector<std::string> Subjects(bool saveattachments = false) {
    std::vector<std::string> subjects;
    while (mail_.ReadHeader(saveattachments))
      subjects.push_back(mail_.GetHeader("subject"));
    return subjects;
  }
};

// --- Finding a mail

TEST_F(StdMailReadHeaderTest, EmptyMailboxHasNoMail) {
  Open("");
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Percent(), 1);
  EXPECT_EQ(mail_.LineCount(), 0);
}

TEST_F(StdMailReadHeaderTest, FileWithoutSeparatorIsReadToItsEndInVain) {
  OpenLines("a\nb\n\nc\n");
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.LineCount(), 4);
  EXPECT_EQ(mail_.ReadCount(), 0);
  EXPECT_EQ(mail_.Percent(), 1);
  EXPECT_FALSE(HasTempFile("mail.eml"));
}

TEST_F(StdMailReadHeaderTest, LinesAndBytesOfAMailIncludeTheSeparatorThatEndsIt) {
  OpenLines("From - x\nA: 1\n\nbody\n\nFrom - yy\nB: 2\n\nend\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.LineCount(), 6);
  EXPECT_EQ(mail_.ReadCount(), 10 + 6 + 2 + 6 + 2 + 11);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.LineCount(), 4);
  EXPECT_EQ(mail_.ReadCount(), 11 + 6 + 2 + 5);
}

TEST_F(StdMailReadHeaderTest, TextBeforeTheFirstSeparatorCountsAsLinesOnly) {
  OpenLines("rubbish\n\nFrom - x\n\nend\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.LineCount(), 5);
  EXPECT_EQ(mail_.ReadCount(), 10 + 2 + 5);
  EXPECT_EQ(mail_.GetHeader("address"), "11");
}

constexpr std::string_view kMailThatForgesItsStatus =
    "From - x\nX-Mozilla-Status: 0001\nSubject: a\nX-Mozilla-Status: 0009\nTo: b\n\nend\n";

TEST_F(StdMailReadHeaderTest, AnyStatusOfAMailHidesIt) {
  OpenLines(kMailThatForgesItsStatus);
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailReadHeaderTest, OnlyTheFirstStatusOfAMailCounts) {
  ChooseRules({.statusHeaders = StatusHeaders::First});
  OpenLines(kMailThatForgesItsStatus);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("to"), "b");
  EXPECT_EQ(mail_.GetHeader("x-mozilla-status"), "0001");
  // Nor does one that seems to go on with another header.
  OpenLines("From - x\nX-Mozilla-Status: 0001\nSubject: a\nX-Mozilla-Status: 0\n 009\n\nend\n");
  EXPECT_TRUE(mail_.ReadHeader(false));
  OpenLines("From - x\nX-Mozilla-Status: 0009\nX-Mozilla-Status: 0001\n\nend\n");
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailReadHeaderTest, ExpungedMailIsPassedOver) {
  OpenLines(
      "From - x\nX-Mozilla-Status: 0009\nSubject: gone\n\nbody\n\n"
      "From - y\nSubject: s\n\nbody2\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "s");
  EXPECT_EQ(mail_.LineCount(), 6 + 4);
  EXPECT_EQ(mail_.ReadCount(), 10 + 12 + 2 + 7);
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailReadHeaderTest, MailboxOfExpungedMailsHasNoMail) {
  MailboxBuilder box;
  for (int i = 0; i < 3; ++i)
    box.Mail("X-Mozilla-Status: 0008\n");
  Open(box.Text());
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Percent(), 1);
}

struct StatusRow {
  const char* headers;
  bool expunged;
};

class StatusTest : public StdMailTest, public testing::WithParamInterface<StatusRow> {};

TEST_P(StatusTest, BitOfValueEightMeansExpunged) {
  OpenLines("From - x\n" + std::string(GetParam().headers) + "\nbody\n");
  EXPECT_EQ(mail_.ReadHeader(false), !GetParam().expunged);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StatusTest,
    testing::Values(
        StatusRow{"X-Mozilla-Status: 0000\n", false}, StatusRow{"X-Mozilla-Status: 0007\n", false},
        StatusRow{"X-Mozilla-Status: 0008\n", true}, StatusRow{"X-Mozilla-Status: 000f\n", true},
        StatusRow{"X-Mozilla-Status: 000D\n", true}, StatusRow{"X-Mozilla-Status: 0010\n", false},
        StatusRow{"X-Mozilla-Status: FFFF\n", true}, StatusRow{"X-Mozilla-Status:0008\n", true},
        StatusRow{"X-Mozilla-Status: 8\n", true}, StatusRow{"X-Mozilla-Status:   0008  \n", true},
        StatusRow{"x-mozilla-status: 0008\n", true}, StatusRow{"X-Mozilla-Status: 10000008\n", true},
        StatusRow{"X-Mozilla-Status:\n", false}, StatusRow{"X-Mozilla-Status: no\n", false},
        StatusRow{"X-Mozilla-Status\n", false}, StatusRow{"X-Mozilla-Status2: 0008\n", false},
        // The number stands from position 18 on, wherever the colon is.
        StatusRow{"X-Mozilla-Status : 0008\n", false}, StatusRow{"X-Mozilla-Status:\n 0008\n", true},
        // Each such line is looked at, stored or not.
        StatusRow{"X-Mozilla-Status: 0001\nX-Mozilla-Status: 0008\n", true}));

TEST_F(StdMailReadHeaderTest, MailMayBeginOnAnyLineIfNoSeparatorIsWaitedFor) {
  OpenLines("any line\nSubject: s\n\nbody\n\nFrom - y\n\nmore\n");
  ASSERT_TRUE(mail_.ReadHeader(true, false));
  EXPECT_THAT(Stored(), ElementsAre("any line", "Subject: s", ":0"));
  EXPECT_EQ(TempFile("mail.eml"), Mailbox());
  EXPECT_EQ(mail_.LineCount(), 8);
  EXPECT_FALSE(mail_.ReadHeader(true, false));
}

TEST_F(StdMailReadHeaderTest, EmptyFirstLineIsTheMailsFirstIfNoSeparatorIsWaitedFor) {
  OpenLines("\nSubject: s\n\nbody\n");
  ASSERT_TRUE(mail_.ReadHeader(false, false));
  EXPECT_THAT(Stored(), ElementsAre("", "Subject: s", ":0"));
}

TEST_F(StdMailReadHeaderTest, StreamIsClosedBehindASingleMailThoughTheFileGoesOn) {
  OpenLines("x\nContent-Type: a; boundary=B\n\n--B\n\ntext\n--B--\n\nFrom - y\n\nmore\n");
  ASSERT_TRUE(mail_.ReadHeader(false, false));
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.LineCount(), 0);
}

TEST_F(StdMailReadHeaderTest, SeparatorAsTheLastLineIsAMailOfItsOwn) {
  OpenLines("From - x\n\nbody\n\nFrom - y\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_THAT(Stored(), ElementsAre("From - y", ":20"));
  EXPECT_EQ(mail_.LineCount(), 1);
  EXPECT_EQ(mail_.ReadCount(), 10);
  EXPECT_EQ(TempFile("mail.eml"), "From - y\r\n");
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailReadHeaderTest, MailWithoutHeaderEndEndsWithTheFile) {
  OpenLines("From - x\nSubject: s\nTo: a");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: s", "To: a", ":0"));
  EXPECT_EQ(TempFile("mail.eml"), "From - x\r\nSubject: s\r\nTo: a\r\n");
  EXPECT_EQ(mail_.ReadCount(), 10 + 12 + 7);
  EXPECT_FALSE(mail_.ReadHeader(true));
}

TEST_F(StdMailReadHeaderTest, ProgressIsTheBeginningOfTheMailInTheFile) {
  MailboxBuilder box;
  box.Mail(kPlainHeaders).Mail(kPlainHeaders);
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Percent(), 1.0 / static_cast<double>(box.Text().size()));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Percent(), (box.Offset(1) + 1.0) / static_cast<double>(box.Text().size()));
}

// --- mail.eml

TEST_F(StdMailReadHeaderTest, PlainMailIsSavedAsItStands) {
  const std::string first = Crlf("From - x\n" + std::string(kPlainHeaders) + "\nbody\n--B\n\n");
  Open(first + Crlf("From - y\n\nend\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), first);
  EXPECT_THAT(Texts(mail_.Attachments()), IsEmpty());
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - y\n\nend\n"));
}

TEST_F(StdMailReadHeaderTest, LastLineIsSavedWithALineEndThoughTheFileHasNone) {
  OpenLines("From - x\n\nend");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), "From - x\r\n\r\nend\r\n");
}

TEST_F(StdMailReadHeaderTest, NothingIsWrittenWithoutSaving) {
  OpenLines("From - x\n" + kMixedHeaders + "\n--B\nContent-Type: text/html\n\n<p>\n--B--\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_FALSE(HasTempFile("mail.eml"));
  EXPECT_FALSE(HasTempFile("mail.html"));
  EXPECT_FALSE(mail_.hasHTML());
}

TEST_F(StdMailReadHeaderTest, HtmlMailWithoutPartsIsPlain) {
  OpenLines("From - x\nContent-Type: text/html\nContent-Transfer-Encoding: base64\n\nQUJD\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_FALSE(mail_.hasHTML());
  EXPECT_FALSE(HasTempFile("mail.html"));
  EXPECT_TRUE(TempFile("mail.eml").ends_with("\r\n\r\nQUJD\r\n"));
}

TEST_F(StdMailReadHeaderTest, PreambleAndInlinePartsStayInTheMail) {
  const std::string body = "preamble\n--B\nContent-Type: text/plain\n\ntext\n--B\nX: 1\n\nmore\n--B--\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("Content-Type: text/plain\r\n", "X: 1\r\n"));
}

TEST_F(StdMailReadHeaderTest, TextBehindTheClosingBoundaryIsSkipped) {
  ASSERT_TRUE(SaveBody("--B\n\ntext\n--B--\nepilogue\n\nFrom - y\nSubject: 2\n\nend\n"));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf("--B\n\ntext\n--B--\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  EXPECT_EQ(mail_.LineCount(), 6);
}

TEST_F(StdMailReadHeaderTest, SeparatorDirectlyBehindTheClosingBoundaryBeginsAMail) {
  ASSERT_TRUE(SaveBody("--B\n\ntext\n--B--\nFrom - y\nSubject: 2\n\nend\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailReadHeaderTest, ExpungedMailLeavesItsFirstLinesUntilTheNextIsSaved) {
  OpenLines("From - x\nDate: 9 May 2010 14:30:05\nX-Mozilla-Status: 0008\nSubject: gone\n\nbody\n");
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - x\nDate: 9 May 2010 14:30:05\nX-Mozilla-Status: 0008\n"));
  EXPECT_EQ(GetFileDate(mail_.mailtmppfad() + "mail.eml"), "09.05.2010 14:30:05");
}

TEST_F(StdMailReadHeaderTest, FilesCarryTheDateOfTheMail) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Type: text/html\n\n<p>\n--B\n"
               "Content-Disposition: a; filename=f\n\nx\n--B--\n"));
  for (const char* name : {"mail.eml", "mail.html", "att2"}) {
    EXPECT_EQ(GetFileDate(mail_.mailtmppfad() + name), "09.05.2010 14:30:05") << name;
  }
}

TEST_F(StdMailReadHeaderTest, TemporaryFilesAreRegisteredButForTheHtmlText) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Type: text/html\n\n<p>\n--B\n"
               "Content-Disposition: a; filename=f\n\nx\n--B--\n"));
  mail_.DeleteLastTempfiles();
  EXPECT_FALSE(HasTempFile("mail.eml"));
  EXPECT_FALSE(HasTempFile("att2"));
  EXPECT_TRUE(HasTempFile("mail.html"));
}

TEST_F(StdMailReadHeaderTest, TemporaryPrefixIsTakenAsItStands) {
  mail_.Setmailtmppfad(folder_.Path("pre-"));
  OpenLines("From - x\n\nend\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(folder_.Read("pre-mail.eml"), "From - x\r\n\r\nend\r\n");
}

// --- Attachments

TEST_F(StdMailReadHeaderTest, AttachmentGoesToItsOwnFileAndLeavesNoTraceInTheMail) {
  const std::string header =
      "Content-Disposition: attachment; filename=a.txt\nContent-Transfer-Encoding: base64\n";
  ASSERT_TRUE(SaveBody("--B\n" + header + "\nQUJD\nREVG\nQQ==\n--B\n\ntext\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "ABCDEFA");
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf("--B\n\ntext\n--B--\n"));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre(Crlf(header), ""));
}

struct ContentRow {
  const char* encoding;
  const char* content;   // line feeds stand for CR LF
  const char* expected;  // as above
};

class ContentTest : public StdMailTest, public testing::WithParamInterface<ContentRow> {};

TEST_P(ContentTest, AttachmentAndHtmlAreDecodedLineByLine) {
  const std::string encoding = "Content-Transfer-Encoding: " + std::string(GetParam().encoding) + "\n";
  OpenLines("From - x\n" + kMixedHeaders + "\n--B\nContent-Disposition: a; filename=f\n" + encoding + "\n" +
            GetParam().content + "--B\nContent-Type: text/html\n" + encoding + "\n" + GetParam().content +
            "--B--\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("att1"), Crlf(GetParam().expected));
  EXPECT_EQ(TempFile("mail.html"), Crlf(GetParam().expected));
  EXPECT_TRUE(TempFile("mail.eml").ends_with(Crlf("\n" + std::string(GetParam().content) + "--B--\n")));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ContentTest,
    testing::Values(ContentRow{"base64", "QUJD\nREVG\n", "ABCDEF"},
                    // Each line is padded by itself, none is joined to the next.
                    ContentRow{"base64", "QUI\nQUJD\n", "ABABC"}, ContentRow{"base64", "\n\n", ""},
                    ContentRow{"BASE64 ", "QUJD\n", "ABC"},
                    ContentRow{"quoted-printable", "a=3Db\n", "a=b\n"},
                    ContentRow{"quoted-printable", "a=\nb=\n\nc\n", "ab\nc\n"},
                    ContentRow{"quoted-printable", "a_b\n", "a b\n"},
                    ContentRow{"quoted-printable", "=\n", ""},
                    ContentRow{"quoted-printable", "x=4\n", "x=4\n"},
                    // A bad code costs the line it stands in, and no more.
                    ContentRow{"quoted-printable", "one\nbad =XX code\ntwo\n", "one\ntwo\n"},
                    ContentRow{"quoted-printable", "bad =XX=\ntwo\n", "two\n"},
                    ContentRow{"8bit", "a=3D_\n\nb\n", "a=3D_\n\nb\n"}, ContentRow{"", "a\n", "a\n"},
                    ContentRow{"base-64", "QUJD\n", "QUJD\n"}));

TEST_F(StdMailReadHeaderTest, Base64LineAbove32767CharactersIsLost) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Disposition: a; filename=f\nContent-Transfer-Encoding: base64\n\nQUJD\n" +
               std::string(32768, 'A') + "\n" + std::string(32764, 'A') + "\nREVG\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "ABC" + std::string(24573, '\0') + "DEF");
}

TEST_F(StdMailReadHeaderTest, EncodingOfAPartEndsWithThePart) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Disposition: a; filename=f\nContent-Transfer-Encoding: base64\n\nQUJD\n"
               "--B\nContent-Disposition: a; filename=g\n\nQUJD\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "ABC");
  EXPECT_EQ(TempFile("att2"), "QUJD\r\n");
}

TEST_F(StdMailReadHeaderTest, FileOfAnEarlierMailIsReplacedEvenIfReadOnly) {
  const std::string old = folder_.Write("tmp\\att1", "a longer text than the new one");
  os::WriteAttributes(old, os::kReadOnly);
  ASSERT_TRUE(SaveBody("--B\nContent-Disposition: a; filename=f\n\nnew\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "new\r\n");
}

TEST_F(StdMailReadHeaderTest, NumberOfTheFileIsThePositionOfThePart) {
  ASSERT_TRUE(
      SaveBody("--B\n\ntext\n--B\nContent-Disposition: a; filename=f\n\nx\n--B\n\ntext\n"
               "--B\nContent-Type: a; name=g\n\ny\n--B--\n"));
  EXPECT_FALSE(HasTempFile("att1"));
  EXPECT_EQ(TempFile("att2"), "x\r\n");
  EXPECT_EQ(TempFile("att4"), "y\r\n");
}

TEST_F(StdMailReadHeaderTest, HtmlPartWithAFileNameIsAnAttachment) {
  ASSERT_TRUE(SaveBody("--B\nContent-Type: text/html; name=p.html\n\n<p>\n--B--\n"));
  EXPECT_FALSE(mail_.hasHTML());
  EXPECT_EQ(TempFile("att1"), "<p>\r\n");
}

TEST_F(StdMailReadHeaderTest, OnlyTheExactTypeIsHtml) {
  ASSERT_TRUE(SaveBody("--B\nContent-Type: Text/HTML\n\n<p>\n--B--\n"));
  EXPECT_FALSE(mail_.hasHTML());
  ASSERT_TRUE(SaveBody("--B\nContent-Type: text/html ; charset=x\n\n<p>\n--B--\n"));
  EXPECT_TRUE(mail_.hasHTML());
}

TEST_F(StdMailReadHeaderTest, LastHtmlPartStays) {
  ASSERT_TRUE(SaveBody("--B\nContent-Type: text/html\n\nfirst\n--B\nContent-Type: text/html\n\n2\n--B--\n"));
  EXPECT_EQ(TempFile("mail.html"), "2\r\n");
}

TEST_F(StdMailReadHeaderTest, HtmlIsForgottenWithTheNextMail) {
  ASSERT_TRUE(SaveBody("--B\nContent-Type: text/html\n\n<p>\n--B--\n\nFrom - y\n\nplain\n"));
  EXPECT_TRUE(mail_.hasHTML());
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_FALSE(mail_.hasHTML());
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

TEST_F(StdMailReadHeaderTest, LineOfAnAttachmentMayLookLikeASeparatorOnlyBehindText) {
  ASSERT_TRUE(SaveBody("--B\nContent-Disposition: a; filename=f\n\nx\nFrom - y\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "x\r\nFrom - y\r\n");
  ASSERT_TRUE(SaveBody("--B\nContent-Disposition: a; filename=f\n\nx\n\nFrom - y\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "x\r\n\r\n");
}

// --- Part headers

TEST_F(StdMailReadHeaderTest, PartHeaderWithoutEndGoesOnToTheNextBoundary) {
  const std::string body = "--B\nContent-Disposition: a; filename=f\ntext\n--B\n\ntext\n--B--\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_FALSE(HasTempFile("att1"));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("Content-Disposition: a; filename=f\r\ntext\r\n", ""));
}

TEST_F(StdMailReadHeaderTest, PartHeaderThatTheFileEndsDoesNotReachTheMail) {
  ASSERT_TRUE(SaveBody("--B\n\ntext\n--B\nX: 1\n"));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf("--B\n\ntext\n"));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("", "X: 1\r\n"));
}

TEST_F(StdMailReadHeaderTest, AttachmentWithoutClosingBoundaryEndsWithTheMail) {
  ASSERT_TRUE(SaveBody("--B\nContent-Disposition: a; filename=f\n\nx\n\nFrom - y\nSubject: 2\n\nend\n"));
  EXPECT_EQ(TempFile("att1"), "x\r\n\r\n");
  EXPECT_EQ(TempFile("mail.eml"), Head());
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  EXPECT_EQ(TempFile("att1"), "x\r\n\r\n");
}

TEST_F(StdMailReadHeaderTest, AttachmentThatTheFileEndsIsClosedWithTheMailsDate) {
  ASSERT_TRUE(SaveBody("--B\nContent-Disposition: a; filename=f\n\nx\ny"));
  EXPECT_EQ(TempFile("att1"), "x\r\ny\r\n");
  EXPECT_EQ(GetFileDate(folder_.Path("tmp\\att1")), "09.05.2010 14:30:05");
  EXPECT_EQ(TempFile("mail.eml"), Head());
}

TEST_F(StdMailReadHeaderTest, LastEncodingOfAHeaderBlockCounts) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Transfer-Encoding: base64\nContent-Disposition: a; filename=f\n"
               "CONTENT-TRANSFER-ENCODING: Quoted-Printable\n\na=3D\n--B--\n"));
  EXPECT_EQ(TempFile("att1"), "a=\r\n");
}

// --- Boundaries

TEST_F(StdMailReadHeaderTest, BoundaryLineIsComparedAsAWhole) {
  const std::string body = "--B \n--BB\n--b\n --B\n--B-\n--B---\n-- B\n--\n----\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

TEST_F(StdMailReadHeaderTest, EmptyBoundaryMeansAPlainMail) {
  OpenLines("From - x\nContent-Type: multipart/mixed; boundary=\"\"\n\n--\n\n----\nend\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Mailbox());
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

TEST_F(StdMailReadHeaderTest, BoundaryMayStandOnAContinuationLine) {
  OpenLines("From - x\nContent-Type: multipart/mixed;\n\tboundary=\"a b\"\n\n--a b\nX: 1\n\n--a b--\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("X: 1\r\n"));
}

TEST_F(StdMailReadHeaderTest, ClosingLineOfTheMailMayBeTheOpeningOneOfANestedMultipart) {
  // The boundary of the nested multipart is "B--": its opening line is taken before the mail's closing line.
  ASSERT_TRUE(
      SaveBody("--B\nContent-Type: multipart/alt; boundary=B--\n\n--B--\nX: 1\n\ntext\n--B----\nend\n"));
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
  EXPECT_TRUE(TempFile("mail.eml").ends_with("--B----\r\nend\r\n"));
}

struct TreeRow {
  const char* structure;
  const char* saved;    // parts found when the mail is split into files
  const char* unsaved;  // and when it isn't
};

class TreeTest : public StdMailTest, public testing::WithParamInterface<TreeRow> {};

TEST_P(TreeTest, ReaderKnowsTheMailsOwnBoundaryAndTheOneSeenLast) {
  OpenLines("From - x\n" + MimeTree::Render(GetParam().structure));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(PrintParts(mail_, folder_), GetParam().saved);
  mail_.DeleteLastTempfiles();
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(PrintParts(mail_, folder_), GetParam().unsaved);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TreeTest,
    testing::Values(
        TreeRow{"text", "", ""}, TreeRow{"html", "", ""}, TreeRow{"mixed(text)", "text", "text"},
        TreeRow{"mixed(text,html)", "text html", "text html"},
        TreeRow{"alternative(text,html)", "text html", "text html"},
        TreeRow{"mixed(text,att\"a.pdf\":1234)", "text att\"a.pdf\":1234", "text att\"a.pdf\""},
        TreeRow{"mixed(att\"a\":0)", "att\"a\":0", "att\"a\""},
        TreeRow{"mixed(att\"a\":1,att\"b\":57,att\"c\":58)", "att\"a\":1 att\"b\":57 att\"c\":58",
                "att\"a\" att\"b\" att\"c\""},
        TreeRow{"mixed(alternative(text,html),att\"a.pdf\":1234)", "alternative text html att\"a.pdf\":1234",
                "alternative att\"a.pdf\""},
        TreeRow{"mixed(att\"a\":5,alternative(text,html),text)", "att\"a\":5 alternative text html text",
                "att\"a\" alternative text"},
        TreeRow{"mixed(alternative(text,html),related(html,att\"i.png\":9),text)",
                "alternative text html related html att\"i.png\":9 text", "alternative related text"},
        // The innermost multipart replaces the one around it, so the image that follows is text of the mail.
        TreeRow{"mixed(related(alternative(text,html),att\"i.png\":9),att\"a\":7)",
                "related alternative text html att\"a\":7", "related att\"a\""},
        TreeRow{"mixed(a(b(c(text,html),text),text),att\"z\":3)", "a b c text html att\"z\":3",
                "a att\"z\""}));

TEST_F(StdMailReadHeaderTest, LinesOfAReplacedBoundaryAreText) {
  const std::string tree =
      MimeTree::Render("mixed(related(alternative(text,html),att\"i.png\":9),att\"a\":7)");
  OpenLines("From - x\n" + tree);
  ASSERT_TRUE(mail_.ReadHeader(true));
  // All but the last attachment, whose boundary and header lines go with it.
  const std::string whole = Crlf("From - x\n" + tree);
  const std::size_t attachment = whole.rfind("--B1\r\n");
  EXPECT_EQ(TempFile("mail.eml"), whole.substr(0, attachment) + "--B1--\r\n");
}

TEST_F(StdMailReadHeaderTest, ClosingLineOfANestedMultipartEndsNothing) {
  const std::string body =
      "--B\nContent-Type: multipart/alternative; boundary=S\n\n--S\n\ntext\n--S--\nbetween\n--B--\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
}

TEST_F(StdMailReadHeaderTest, NestedBoundaryIsForgottenWithTheNextMail) {
  ASSERT_TRUE(SaveBody("--B\nContent-Type: multipart/a; boundary=S\n\n--S\n\n--S--\n--B--\n\nFrom - y\n" +
                       kMixedHeaders + "\n--S\n\n--B\n\n--B--\n"));
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Attachments()->Count(), 1);
}

// --- Failures by phase

// Can be opened, but not read at its beginning.
constexpr std::string_view kUnreadable = "C:\\proc\\self\\mem";

TEST_F(StdMailReadHeaderTest, MailboxThatCannotBeReadIsAtItsEnd) {
  mail_.SetMailboxFile(kUnreadable);
  mail_.InitStream();
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Percent(), 1);
  EXPECT_EQ(mail_.LineCount(), 0);
  EXPECT_FALSE(HasTempFile("mail.eml"));
}

TEST_F(StdMailReadHeaderTest, FullDiskRaisesInTheHeaderBlock) {
  MAKE_OR_SKIP(MakeFullDevice(folder_.Native("tmp/mail.eml")));
  OpenLines("From - x\nSubject: 1\nX-Long: " + std::string(100'000, 'x') +
            "\n\nbody\n\nFrom - y\nSubject: 2\n\nend\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadHeader(true); }), static_cast<int>(ErrorNumber::DiskFull));
  // The header that could not be written isn't stored any more.
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: 1"));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailReadHeaderTest, FullDiskIsPassedOverFromTheBodyOn) {
  MAKE_OR_SKIP(MakeFullDevice(folder_.Native("tmp/mail.eml")));
  OpenLines("From - x\nSubject: 1\n\nbody\n\nFrom - y\nSubject: 2\n\n" + std::string(100'000, 'x') + "\n");
  for (const char* subject : {"1", "2"}) {
    ASSERT_TRUE(mail_.ReadHeader(true));
    EXPECT_EQ(mail_.GetHeader("subject"), subject);
    EXPECT_NE(mail_.Ledger().loss.Text(), "");
  }
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Ledger().loss.Text(), "");
}

TEST_F(StdMailReadHeaderTest, ExpungedMailsAreCountedFromTheOpeningOn) {
  const std::string living = "From - x\nX-Mozilla-Status: 0001\n\n\n";
  const std::string expunged = "From - x\nX-Mozilla-Status: 0008\n\n\n";
  OpenLines(expunged + living + expunged + expunged + living + expunged);
  std::vector<std::int32_t> counts = {mail_.Ledger().expungedCount};
  while (mail_.ReadHeader(false))
    counts.push_back(mail_.Ledger().expungedCount);
  counts.push_back(mail_.Ledger().expungedCount);
  EXPECT_THAT(counts, ElementsAre(0, 1, 3, 4));
  mail_.InitStream();
  EXPECT_EQ(mail_.Ledger().expungedCount, 0);
}

TEST_F(StdMailReadHeaderTest, MailFileThatCannotBeMadeRaises) {
  folder_.MakeFolder("tmp\\mail.eml");
  OpenLines("From - x\nSubject: 1\n\nbody\n\nFrom - y\nSubject: 2\n\nend\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadHeader(true); }), static_cast<int>(ErrorNumber::PathAccess));
  // The stream stands after the separator; the next call goes on from there.
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailReadHeaderTest, BrokenMailIsNamedAndTheNextOneComes) {
  ChooseRules({.brokenItems = BrokenItems::AreNamed});
  const std::string broken = "From - x\nContent-Type: a; boundary==?x?Q?=ZZ?=\n\nbody\n\n";
  const std::string whole = "From - y\nSubject: 2\n\nend\n\n";
  OpenLines(broken + broken + whole + broken);
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  const auto size = static_cast<std::int32_t>(Crlf(broken).size());
  ASSERT_EQ(mail_.Ledger().broken.size(), 2U);
  EXPECT_EQ(mail_.Ledger().broken[0].offset, 0);
  EXPECT_EQ(mail_.Ledger().broken[1].offset, size);
  EXPECT_FALSE(mail_.Ledger().broken[1].why.IsEmpty());
  EXPECT_FALSE(mail_.ReadHeader(true));
  ASSERT_EQ(mail_.Ledger().broken.size(), 1U);
  EXPECT_EQ(mail_.Ledger().broken[0].offset, 2 * size + static_cast<std::int32_t>(Crlf(whole).size()));
  // So it is where no mail can be written.
  mail_.DeleteLastTempfiles();
  folder_.MakeFolder("tmp\\mail.eml");
  OpenLines(whole + whole);
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Ledger().broken.size(), 2U);
}

TEST_F(StdMailReadHeaderTest, BoundaryThatCannotBeDecodedRaises) {
  OpenLines("From - x\nContent-Type: a; boundary==?x?Q?=ZZ?=\n\nbody\n\nFrom - y\nSubject: 2\n\nend\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadHeader(true); }), kTypeMismatch);
  // The header block is there, but not the offset, which ends a mail.
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Content-Type: a; boundary==?x?Q?=ZZ?="));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - x\nContent-Type: a; boundary==?x?Q?=ZZ?=\n\n"));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailReadHeaderTest, AttachmentThatCannotBeMadeIsSkipped) {
  folder_.MakeFolder("tmp\\att1");
  ASSERT_TRUE(
      SaveBody("--B\nContent-Disposition: a; filename=f\n\nx\n--B\n"
               "Content-Disposition: a; filename=g\n\ny\n--B--\n"));
  EXPECT_EQ(TempFile("att2"), "y\r\n");
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
  // With no file open for it, the content stays in the mail; boundary and header lines are gone.
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf("x\n--B--\n"));
  EXPECT_NE(mail_.Ledger().loss.Text(), "");
}

TEST_F(StdMailReadHeaderTest, HtmlFileThatCannotBeMadeIsSkipped) {
  folder_.MakeFolder("tmp\\mail.html");
  const std::string body = "--B\nContent-Type: text/html\n\n<p>\n--B--\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_TRUE(mail_.hasHTML());
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
}

TEST_F(StdMailReadHeaderTest, PartWhoseNameCannotBeDecodedIsInline) {
  const std::string body =
      "--B\nContent-Disposition: a; filename==?x?Q?=ZZ?=\nContent-Type: text/html\n\n<p>\n--B--\n";
  ASSERT_TRUE(SaveBody(body));
  EXPECT_EQ(TempFile("mail.eml"), Head() + Crlf(body));
  EXPECT_EQ(TempFile("mail.html"), "<p>\r\n");
}

TEST_F(StdMailReadHeaderTest, NestedBoundaryThatCannotBeDecodedIsNone) {
  ASSERT_TRUE(
      SaveBody("--B\nContent-Type: multipart/a; boundary==?x?Q?=ZZ?=\n\n--S\n\ntext\n--B\n\n--B--\n"));
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
}

// --- Line rules

// What ReadHeader tells about a whole mailbox.
std::string Describe(StdMail& mail, const TemporaryFolder& folder, bool saveattachments) {
  std::string text;
  while (mail.ReadHeader(saveattachments)) {
    text += mail.GetAllHeaders() + std::to_string(mail.LineCount()) + " lines, " +
            std::to_string(mail.ReadCount()) + " bytes, " + std::to_string(mail.Percent()) + "\n" +
            PrintParts(mail, folder) + "\n";
    if (saveattachments) text += folder.Read("tmp\\mail.eml");
    if (mail.hasHTML()) text += folder.Read("tmp\\mail.html");
  }
  return text;
}

int CountOf(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
    ++count;
  return count;
}

TEST_F(StdMailReadHeaderTest, BothLineRulesAgreeOnAFileOfCarriageReturnsAndLineFeeds) {
  MailboxBuilder box;
  box.Mail(kPlainHeaders).Mail("X-Mozilla-Status: 0008\n");
  for (const char* tree : {"mixed(alternative(text,html),att\"a.pdf\":1234)", "text", "mixed(text)"}) {
    box.Raw("\nFrom - z\n" + std::string(kPlainHeaders) + MimeTree::Render(tree));
  }
  for (const bool saveattachments : {false, true}) {
    Open(box.Text());
    const std::string windows = Describe(mail_, folder_, saveattachments);
    ChooseRules({.lines = LineRule::Native});
    Open(box.Text());
    EXPECT_EQ(Describe(mail_, folder_, saveattachments), windows);
    ChooseRules(Rules::Windows());
    EXPECT_EQ(CountOf(windows, " lines, "), 4) << windows;
  }
}

TEST_F(StdMailReadHeaderTest, NativeRuleReadsLoneLineFeedsAndCountsThemAsOneByte) {
  ChooseRules({.lines = LineRule::Native});
  MailboxBuilder box("\n");
  box.Mail("Subject: 1\n").Mail("Subject: 2\n", "end");
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("subject"), "1");
  EXPECT_EQ(mail_.GetHeader("address"), "0");
  EXPECT_EQ(mail_.ReadCount(), 32 + 11 + 1 + 5 + 1 + 32);
  // What is written is lines of CR LF, whatever the mailbox has.
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - Sun May 09 14:30:05 2010\nSubject: 1\n\nbody\n\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.GetHeader("address"), std::to_string(box.Offset(1)));
  EXPECT_EQ(mail_.ReadCount(), 32 + 11 + 1 + 3);
}

TEST_F(StdMailReadHeaderTest, NativeRuleReadsMixedLineEnds) {
  ChooseRules({.lines = LineRule::Native});
  const std::string first = "From - x\r\nSubject: 1\nTo: a\n\nbody\n\r\n";
  Open(first + "From - y\r\nSubject: 2\n\nend\n");
  EXPECT_THAT(Subjects(), ElementsAre("1", "2"));
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.ReadCount(), static_cast<double>(first.size()) + 10);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("address"), std::to_string(first.size()));
}

TEST_F(StdMailReadHeaderTest, WindowsRuleTakesALoneLineFeedForText) {
  Open("From - x\nSubject: 1\r\nTo: a\nb\r\n\r\nbody\n\nFrom - y\n\nend\r\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_THAT(Stored(), ElementsAre("From - x\nSubject: 1", "To: a\nb", ":0"));
  EXPECT_FALSE(mail_.ReadHeader(true));
}

TEST_F(StdMailReadHeaderTest, WindowsRuleCountsTwoBytesForALoneCarriageReturn) {
  Open("From - x\rSubject: 1\r\rbody\r\rFrom - y\rSubject: 2\r\rend\r");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.ReadCount(), 10 + 12 + 2 + 6 + 2 + 10);
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - x\nSubject: 1\n\nbody\n\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  // The offset is the true one all the same.
  EXPECT_EQ(mail_.GetHeader("address"), "27");
}

// --- Odd mailboxes

TEST_F(StdMailReadHeaderTest, ZeroBytesAreText) {
  const std::string body("zero\0byte\r\n\0\r\n", 14);
  Open("From - x\r\nSubject: a\r\n\r\n" + body);
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), "From - x\r\nSubject: a\r\n\r\n" + body);
}

TEST_F(StdMailReadHeaderTest, MailboxCutOffAnywhereIsReadWithoutFailure) {
  const std::string text = Crlf(
      "From - x\nSubject: a\n b\n\ntext\n\nFrom - y\nContent-Type: m; boundary=B\n\n--B\n"
      "Content-Type: text/html\n\n<p>\n--B\nContent-Disposition: a; filename=f\n"
      "Content-Transfer-Encoding: base64\n\nQUJD\n--B--\nend\n");
  for (std::size_t size = 0; size <= text.size(); ++size) {
    Open(std::string_view(text).substr(0, size));
    int mails = 0;
    while (mail_.ReadHeader(true))
      ++mails;
    EXPECT_EQ(mails, size < 7 ? 0 : size < text.find("From - y") + 7 ? 1 : 2) << size;
  }
}

TEST_F(StdMailReadHeaderTest, LineOfAHundredMegabytesIsALine) {
  constexpr std::size_t kSize = 100'000'000;
  folder_.Write("Inbox",
                "From - x\r\n\r\n" + std::string(kSize, 'x') + "\r\n\r\nFrom - y\r\nSubject: 2\r\n\r\n");
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.ReadCount(), 10 + 2 + kSize + 2 + 2 + 10);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailReadHeaderTest, HeaderOfManyContinuationLinesIsJoinedInLinearTime) {
  std::string text = "From - x\r\nSubject: s\r\n";
  for (int i = 0; i < 200'000; ++i)
    text += " x\r\n";
  Open(text + "\r\nbody\r\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject").size(), 1u + 400'000u);
}

TEST_F(StdMailReadHeaderTest, TwentyThousandPartsAreReadInLinearTime) {
  std::string text = "From - x\r\n" + Crlf(kMixedHeaders) + "\r\n";
  for (int i = 0; i < 20'000; ++i)
    text += "--B\r\nContent-Type: text/plain\r\n\r\ntext\r\n";
  Open(text + "--B--\r\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Attachments()->Count(), 20'000);
  EXPECT_EQ(TempFile("mail.eml"), Mailbox());
}

TEST_F(StdMailReadHeaderTest, PartHeaderOfManyLinesIsCollectedInLinearTime) {
  std::string body = "--B\r\n";
  for (int i = 0; i < 50'000; ++i)
    body += "X-Line: " + std::to_string(i) + "\r\n";
  Open(Head() + body + "\r\ntext\r\n--B--\r\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Mailbox());
}

TEST_F(StdMailReadHeaderTest, LinesOfCarriageReturnsOnlyAreEmptyLines) {
  Open("From - x\r\r" + std::string(100'000, '\r'));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.LineCount(), 100'002);
}

}  // namespace
}  // namespace vorlent
