// The extraction reader and what is built on it.
#include "Common/StdModul.h"
#include "Connectors/Mozilla/MimeTree.h"
#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/ErrorNumbers.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// In front of most mails here: without a status line the empty line after the headers would be lost.
constexpr std::string_view kFront = "From - x\nX-Mozilla-Status: 0001\n";

class StdMailReadStreamTest : public StdMailTest {
 protected:
  // Reads the first mail into a file and returns that; "-" if there was no mail.
  std::string Extract(std::int16_t saveflag) {
    mail_.InitStream(saveflag);
    const bool found = mail_.ReadStream(folder_.Path("out"));
    mail_.CloseStream();
    return found ? folder_.Read("out") : "-";
  }

  // A mail of boundary "B" after kFront, with text after it, so that its last line is seen.
  void WriteMultipart(std::string_view body) {
    folder_.Write("Inbox", Crlf(std::string(kFront) + "Content-Type: multipart/mixed; boundary=B\n\n" +
                                std::string(body) + "\nFrom - y\nend\n"));
  }
};

// --- One mail after the other

TEST_F(StdMailReadStreamTest, EmptyMailboxHasNoMailAndLeavesNoFile) {
  Open("");
  EXPECT_FALSE(mail_.ReadStream(folder_.Path("out")));
  EXPECT_FALSE(folder_.Exists("out"));
}

TEST_F(StdMailReadStreamTest, HeadersHaveNoKeys) {
  OpenLines(std::string(kFront) + "Subject: a\n b\nReceived: c\nSubject: d\n\nbody\nend\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(),
              ElementsAre("From - x", "X-Mozilla-Status: 0001", "Subject: a b", "Received: c", "Subject: d"));
  EXPECT_EQ(mail_.GetHeader("subject"), "");
  EXPECT_EQ(mail_.GetAllHeaders(),
            "From - x\r\nX-Mozilla-Status: 0001\r\nSubject: a b\r\nReceived: c\r\nSubject: d\r\n");
}

TEST_F(StdMailReadStreamTest, MailsFollowEachOther) {
  OpenLines(std::string(kFront) + "Subject: 1\n\none\n\n" + std::string(kFront) + "Subject: 2\n\ntwo\n\n" +
                std::string(kFront) + "Subject: 3\n\nthree\nend\n",
            -1);
  for (const char* expected : {"one\r\n\r\n", "two\r\n\r\n", "three\r\n"}) {
    ASSERT_TRUE(mail_.ReadStream());
    EXPECT_EQ(mail_.Headers()->Count(), 3);
    EXPECT_EQ(mail_.Body(), expected);
  }
  EXPECT_FALSE(mail_.ReadStream());
  EXPECT_THAT(Stored(), IsEmpty());
  EXPECT_EQ(mail_.Body(), "");
}

TEST_F(StdMailReadStreamTest, ListsAreClearedInPlace) {
  OpenLines(std::string(kFront) + "\none\nend\n", -1);
  const StdMail::TextListPtr headers = mail_.Headers();
  headers->Add("old");
  mail_.BodyLines()->Add("old");
  mail_.Attachments()->Add("old");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Headers(), headers);
  EXPECT_EQ(headers->Item(1), "From - x");
  EXPECT_EQ(mail_.BodyLines()->Count(), 1);
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

TEST_F(StdMailReadStreamTest, VeryLastLineOfAMailboxIsNeverSeen) {
  OpenLines(std::string(kFront) + "\none\ntwo\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Body(), "one\r\n");
}

TEST_F(StdMailReadStreamTest, MailThatIsTheLastLineIsNone) {
  OpenLines("From - x\n");
  EXPECT_FALSE(mail_.ReadStream());
  OpenLines("From - x\nX-Mozilla-Status: 0001\n");
  EXPECT_FALSE(mail_.ReadStream());
  OpenLines("From - x\nSubject: a\n\n");
  EXPECT_FALSE(mail_.ReadStream());
}

TEST_F(StdMailReadStreamTest, SeparatorOnlyBehindAnEmptyLineEndsTheMail) {
  OpenLines(std::string(kFront) + "\none\nFrom - y\n>From - z\nFrom y\n\nfrom - y\n\n>From - z\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Body(), Crlf("one\nFrom - y\n>From - z\nFrom y\n\nfrom - y\n\n"));
}

TEST_F(StdMailReadStreamTest, MailMayBeginWithoutASeparator) {
  OpenLines("Subject: a\n\none\n\nFrom - y\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(), ElementsAre("Subject: a"));
  EXPECT_EQ(mail_.Body(), "one\r\n\r\n");
}

// --- The look at the first mail's status

TEST_F(StdMailReadStreamTest, ExpungedMailIsSkipped) {
  OpenLines(
      "From - x\nX-Mozilla-Status: 0009\nSubject: gone\n\ntext\nFrom - no\n\n"
      "From - y\nX-Mozilla-Status: 0008\n\ngone too\n\n"
      "From - z\nX-Mozilla-Status: 0001\nSubject: s\n\none\nend\n",
      -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(), ElementsAre("From - z", "X-Mozilla-Status: 0001", "Subject: s"));
  EXPECT_EQ(mail_.Body(), "one\r\n");
}

TEST_F(StdMailReadStreamTest, NoMailIsLeftBehindExpungedOnes) {
  OpenLines("From - x\nX-Mozilla-Status: 0008\n\ntext\n\nmore\n");
  EXPECT_FALSE(mail_.ReadStream());
  EXPECT_FALSE(mail_.ReadStream());
}

TEST_F(StdMailReadStreamTest, MailWithoutStatusLosesTheEmptyLineBehindItsHeaders) {
  OpenLines("From - x\nSubject: a\n\none\ntwo\n\nthree\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: a", "one", "two"));
  EXPECT_EQ(mail_.Body(), "three\r\n");
}

TEST_F(StdMailReadStreamTest, ReadingAheadKeepsTheEmptyLineAndTheLastOne) {
  ChooseRules({.readAhead = ReadAhead::Keeps});
  OpenLines("From - x\nSubject: a\n\none\ntwo\n\nthree\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: a"));
  EXPECT_EQ(mail_.Body(), Crlf("one\ntwo\n\nthree\nend\n"));
  EXPECT_FALSE(mail_.ReadStream());
  // Mails that consist of their header only.
  for (const std::string mail :
       {"From - x\n", "From - x\nX-Mozilla-Status: 0001\n", "From - x\nSubject: a\n\n"}) {
    OpenLines(mail, -1);
    EXPECT_TRUE(mail_.ReadStream()) << mail;
    EXPECT_FALSE(mail_.ReadStream()) << mail;
    OpenLines("From - y\nX-Mozilla-Status: 0009\n\nend\n\n" + mail, -1);
    EXPECT_TRUE(mail_.ReadStream()) << mail;
    EXPECT_EQ(Stored().front(), "From - x");
    EXPECT_FALSE(mail_.ReadStream()) << mail;
  }
  OpenLines("From - y\nX-Mozilla-Status: 0009\n\nend\n", -1);
  EXPECT_FALSE(mail_.ReadStream());
}

TEST_F(StdMailReadStreamTest, StatusIsFoundInAnyLetterCaseBehindOtherHeaders) {
  OpenLines(
      "From - x\nSubject: gone\nx-MOZILLA-status: 000F\n\none\n\nFrom - y\nX-Mozilla-Status: 0000\n\n1\n2\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Headers()->Item(1), "From - y");
}

TEST_F(StdMailReadStreamTest, StatusNumberStandsFromPosition19On) {
  // Without the blank after the colon the first digit isn't seen.
  OpenLines("From - x\nX-Mozilla-Status:8\n\none\nend\n");
  EXPECT_TRUE(mail_.ReadStream());
  OpenLines("From - x\nX-Mozilla-Status:08\n\none\nend\n");
  EXPECT_FALSE(mail_.ReadStream());
  OpenLines("From - x\nX-Mozilla-Status:\n\none\nend\n");
  EXPECT_TRUE(mail_.ReadStream());
}

TEST_F(StdMailReadStreamTest, HeadersOfALongBlockAreReadAgainInLinearTime) {
  std::string text = "From - x\r\n";
  for (int i = 0; i < 100'000; ++i)
    text += "X-Line: 1\r\n";
  Open(text + "\r\nlost\r\n\r\nbody\r\nend\r\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Headers()->Count(), 100'002);
  EXPECT_EQ(mail_.Body(), "body\r\n");
}

TEST_F(StdMailReadStreamTest, ContentTypeOfManyLinesIsJoinedInLinearTime) {
  std::string text = Crlf(kFront) + "Content-Type: multipart/mixed;\r\n";
  for (int i = 0; i < 100'000; ++i)
    text += " x;\r\n";
  Open(text + " boundary=B\r\n\r\n--B\r\n\r\nend\r\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Headers()->Count(), 3);
  EXPECT_EQ(mail_.Attachments()->Count(), 1);
}

// --- What is written

constexpr std::string_view kTwoParts =
    "preamble\n"
    "--B\nContent-Type: text/plain\n\ntext\n"
    "--B\nContent-Disposition: a; filename=f\nContent-Transfer-Encoding: base64\n\nQUJD\nREVG\n"
    "--B--\nepilogue\n";

TEST_F(StdMailReadStreamTest, FlagMinusOneCollectsTheBodyWithItsBoundaries) {
  WriteMultipart(kTwoParts);
  mail_.InitStream(-1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Body(), Crlf(std::string(kTwoParts) + "\n"));
  EXPECT_EQ(PrintParts(mail_, folder_), "text att\"f\"");
}

TEST_F(StdMailReadStreamTest, FlagMinusOneWritesNothingToAFile) {
  WriteMultipart(kTwoParts);
  EXPECT_EQ(Extract(-1), "");
  EXPECT_EQ(mail_.Body(), "");
}

TEST_F(StdMailReadStreamTest, FlagMinusTwoWritesTheMailWithoutTheContentOfAttachments) {
  WriteMultipart(kTwoParts);
  EXPECT_EQ(Extract(-2), Crlf(std::string(kFront) +
                              "Content-Type: multipart/mixed; boundary=B\n\n"
                              "preamble\n"
                              "--B\nContent-Type: text/plain\n\ntext\n"
                              "--B\nContent-Disposition: a; filename=f\nContent-Transfer-Encoding: base64\n\n"
                              "--B--\nepilogue\n\n"));
}

TEST_F(StdMailReadStreamTest, FlagMinusTwoKeepsFoldedHeadersAsTheyStand) {
  folder_.Write("Inbox", Crlf(std::string(kFront) + "Subject: a\n b\n\ntext\nend\n"));
  EXPECT_EQ(Extract(-2), Crlf(std::string(kFront) + "Subject: a\n b\n\ntext\n"));
}

TEST_F(StdMailReadStreamTest, FlagMinusTwoLeavesOutAPartHeaderWithoutEnd) {
  WriteMultipart("--B\nX: 1\n--B\n\ntext\n--B--\n");
  EXPECT_EQ(Extract(-2), Crlf(std::string(kFront) + "Content-Type: multipart/mixed; boundary=B\n\n"
                                                    "--B\n\ntext\n--B--\n\n"));
}

TEST_F(StdMailReadStreamTest, FlagZeroWritesTheTextOutsideAllParts) {
  WriteMultipart("preamble\n--B\n\n1\n--B\n\n2\n--B--\nepilogue\n");
  EXPECT_EQ(Extract(0), Crlf("preamble\nepilogue\n\n"));
}

TEST_F(StdMailReadStreamTest, EpilogueIsDecodedLikeTheLastPart) {
  WriteMultipart("preamble\n--B\nContent-Transfer-Encoding: base64\n\nQUJD\n--B--\nREVG\n");
  EXPECT_EQ(Extract(0), "preamble\r\nDEF");
}

TEST_F(StdMailReadStreamTest, FlagZeroWritesTheBodyOfAPlainMailUndecoded) {
  folder_.Write("Inbox",
                Crlf(std::string(kFront) + "Content-Transfer-Encoding: base64\n\nQUJD\na=3D\nend\n"));
  EXPECT_EQ(Extract(0), Crlf("QUJD\na=3D\n"));
}

TEST_F(StdMailReadStreamTest, PositiveFlagWritesTheDecodedContentOfThatPart) {
  WriteMultipart(kTwoParts);
  EXPECT_EQ(Extract(1), "text\r\n");
  EXPECT_EQ(Extract(2), "ABCDEF");
  EXPECT_EQ(Extract(3), "");
}

TEST_F(StdMailReadStreamTest, FlagBehindTheLastPartWritesAnEmptyFile) {
  WriteMultipart("--B\n\ntext\n--B--\n");
  EXPECT_EQ(Extract(2), "");
}

TEST_F(StdMailReadStreamTest, WithoutAFileOnlyMinusOneKeepsAnything) {
  for (const std::int16_t flag : std::initializer_list<std::int16_t>{-2, 0, 1}) {
    WriteMultipart(kTwoParts);
    mail_.InitStream(flag);
    ASSERT_TRUE(mail_.ReadStream());
    EXPECT_EQ(mail_.Body(), "");
    EXPECT_EQ(mail_.Attachments()->Count(), 2);
  }
}

TEST_F(StdMailReadStreamTest, NestedMultipartIsContentOfItsPart) {
  WriteMultipart(
      "--B\nContent-Type: multipart/alternative; boundary=S\n\n--S\nX: 1\n\ntext\n--S--\n--B\n\n2\n--B--\n");
  EXPECT_EQ(Extract(1), Crlf("--S\nX: 1\n\ntext\n--S--\n"));
  EXPECT_EQ(Extract(2), "2\r\n");
  EXPECT_EQ(mail_.Attachments()->Count(), 2);
}

TEST_F(StdMailReadStreamTest, PartsGoOnBehindTheClosingBoundaryFromOneAgain) {
  WriteMultipart("--B\n\n1\n--B--\nbetween\n--B\n\nagain\n--B--\n");
  EXPECT_EQ(Extract(1), Crlf("1\nagain\n"));
  EXPECT_EQ(Extract(0), Crlf("between\n\n"));
}

TEST_F(StdMailReadStreamTest, EncodingHoldsUntilAnotherIsTold) {
  WriteMultipart(
      "--B\nContent-Transfer-Encoding: base64\n\nQUJD\n--B\n\nREVG\n--B\n"
      "Content-Transfer-Encoding: 7bit\n\nR0hJ\n--B--\n");
  EXPECT_EQ(Extract(2), "DEF");
  EXPECT_EQ(Extract(3), "R0hJ\r\n");
}

TEST_F(StdMailReadStreamTest, QuotedPrintableIsDecodedWithItsSoftLineBreaks) {
  WriteMultipart("--B\nContent-Transfer-Encoding: quoted-printable\n\na=\nb_c=3D\n\n--B--\n");
  EXPECT_EQ(Extract(1), Crlf("ab c=\n\n"));
}

TEST_F(StdMailReadStreamTest, EmptyBoundaryStillCountsTwoAndFourDashes) {
  folder_.Write("Inbox",
                Crlf(std::string(kFront) + "\nbefore\n--\nX: 1\n\none\n--\n\ntwo\n----\nbehind\nend\n"));
  EXPECT_EQ(Extract(0), Crlf("before\nbehind\n"));
  EXPECT_EQ(Extract(1), "one\r\n");
  EXPECT_EQ(Extract(2), "two\r\n");
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("X: 1\r\n", ""));
}

TEST_F(StdMailReadStreamTest, LastContentTypeTellsTheBoundary) {
  folder_.Write("Inbox",
                Crlf(std::string(kFront) + "content-type: a; boundary=A\nCONTENT-TYPE: a;\n\tboundary=B\n\n"
                                           "--A\n\n1\n--B\n\n2\nend\n"));
  EXPECT_EQ(Extract(1), "2\r\n");
}

TEST_F(StdMailReadStreamTest, BoundaryOfOneMailIsNotThatOfTheNext) {
  OpenLines(std::string(kFront) + "Content-Type: a; boundary=B\n\n--B\n\n1\n\n" + std::string(kFront) +
            "\n--B\n\n1\nend\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Attachments()->Count(), 1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Attachments()->Count(), 0);
}

// --- Failures

TEST_F(StdMailReadStreamTest, MailboxThatCannotBeReadIsAtItsEnd) {
  mail_.SetMailboxFile("C:\\proc\\self\\mem");
  EXPECT_EQ(Extract(-2), "-");
  EXPECT_FALSE(folder_.Exists("out"));
}

TEST_F(StdMailReadStreamTest, BadQuotedPrintableCodeRaisesAndLeavesWhatWasWritten) {
  WriteMultipart("--B\nContent-Transfer-Encoding: quoted-printable\n\none\nbad =XX\ntwo\n--B--\n");
  mail_.InitStream(1);
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(folder_.Path("out")); }), kTypeMismatch);
  EXPECT_EQ(folder_.Read("out"), "one\r\n");
}

TEST_F(StdMailReadStreamTest, BadCodeOfAPartThatIsNotWantedDoesNotMatter) {
  WriteMultipart("--B\nContent-Transfer-Encoding: quoted-printable\n\nbad =XX\n--B\n\n2\n--B--\n");
  EXPECT_EQ(Extract(0), "\r\n");
}

TEST_F(StdMailReadStreamTest, OverlongBase64LineRaises) {
  WriteMultipart("--B\nContent-Transfer-Encoding: base64\n\n" + std::string(32768, 'A') + "\n--B--\n");
  mail_.InitStream(1);
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(folder_.Path("out")); }), kOverflow);
}

TEST_F(StdMailReadStreamTest, NameThatCannotBeDecodedRaises) {
  WriteMultipart("--B\nContent-Disposition: a; filename==?x?Q?=ZZ?=\n\n1\n--B--\n");
  mail_.InitStream(-1);
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(); }), kTypeMismatch);
}

TEST_F(StdMailReadStreamTest, BoundaryThatCannotBeDecodedRaises) {
  OpenLines(std::string(kFront) + "Content-Type: a; boundary==?x?Q?=ZZ?=\n\n1\nend\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(); }), kTypeMismatch);
}

TEST_F(StdMailReadStreamTest, BoundaryThatCannotBeDecodedEndsTheFileWithItsHeader) {
  for (const char* fold : {" ", "\n "}) {
    const std::string headers =
        std::string(kFront) + "Content-Type: a;" + std::string(fold) + "boundary==?x?Q?=ZZ?=\n";
    for (const char* behind : {"Subject: s\n\n1\nend\n", "\n1\nend\n"}) {
      OpenLines(headers + behind, -2);
      EXPECT_EQ(NumberOf([&] { mail_.ReadStream(folder_.Path("out")); }), kTypeMismatch);
      EXPECT_EQ(folder_.Read("out"), Crlf(headers));
      EXPECT_EQ(Stored().back(), "Content-Type: a; boundary==?x?Q?=ZZ?=");
    }
  }
}

TEST_F(StdMailReadStreamTest, FileThatCannotBeMadeRaises) {
  WriteMultipart(kTwoParts);
  mail_.InitStream(-2);
  EXPECT_NE(NumberOf([&] { mail_.ReadStream(folder_.Path("no\\out")); }), 0);
}

TEST_F(StdMailReadStreamTest, PartsAbove32767AreAnOverflow) {
  std::string text = Crlf(std::string(kFront) + "Content-Type: a; boundary=B\n\n");
  for (int i = 0; i < 32'767; ++i)
    text += "--B\r\n";
  Open(text + "end\r\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_EQ(mail_.Attachments()->Count(), 32'767);
  Open(text + "--B\r\nend\r\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(); }), kOverflow);
}

// --- Line rules

TEST_F(StdMailReadStreamTest, BothLineRulesAgreeOnAFileOfCarriageReturnsAndLineFeeds) {
  WriteMultipart(kTwoParts);
  for (const std::int16_t flag : std::initializer_list<std::int16_t>{-2, -1, 0, 1, 2}) {
    ChooseRules(Rules::Windows());
    const std::string written = Extract(flag);
    const std::string headers = mail_.GetAllHeaders();
    ChooseRules({.lines = LineRule::Native});
    EXPECT_EQ(Extract(flag), written) << flag;
    EXPECT_EQ(mail_.GetAllHeaders(), headers) << flag;
  }
}

TEST_F(StdMailReadStreamTest, NativeRuleReadsLoneLineFeeds) {
  ChooseRules({.lines = LineRule::Native});
  Open(std::string(kFront) + "Content-Type: a; boundary=B\n\n" + std::string(kTwoParts) + "\nFrom - y\nend\n",
       -1);
  ASSERT_TRUE(mail_.ReadStream());
  // Collected lines get the line ends of all text that is written.
  EXPECT_EQ(mail_.Body(), Crlf(std::string(kTwoParts) + "\n"));
}

// --- Writing a mail

TEST_F(StdMailReadStreamTest, SavedMailIsHeadersAndBodyLines) {
  OpenLines(std::string(kFront) + "Subject: a\n b\n\none\n\ntwo\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  mail_.SaveMail(folder_.Path("new\\deep\\mail"), "");
  EXPECT_EQ(folder_.Read("new\\deep\\mail"), Crlf(std::string(kFront) + "Subject: a b\n\none\n\ntwo\n"));
}

TEST_F(StdMailReadStreamTest, SavedHeadersOfTheImportReaderHoldTheOffset) {
  OpenLines("\nFrom - x\nSubject: a\n\nbody\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.SaveMail(folder_.Path("mail"), "");
  EXPECT_EQ(folder_.Read("mail"), Crlf("From - x\nSubject: a\n:2\n\n"));
}

TEST_F(StdMailReadStreamTest, SavingWithABodyFileMovesThat) {
  const std::string body = folder_.Write("body", "content");
  folder_.Write("target", "old");
  mail_.SaveMail(folder_.Path("target"), body);
  EXPECT_EQ(folder_.Read("target"), "content");
  EXPECT_FALSE(folder_.Exists("body"));
}

TEST_F(StdMailReadStreamTest, SavingToAPlaceThatCannotBeWrittenRaises) {
  folder_.MakeFolder("mail");
  EXPECT_NE(NumberOf([&] { mail_.SaveMail(folder_.Path("mail"), ""); }), 0);
}

// --- One part by its offset

class SaveAttachmentFileTest : public StdMailTest {
 protected:
  SaveAttachmentFileTest() {
    box_.Mail(kPlainHeaders)
        .Mail("X-Mozilla-Status: 0009\nSubject: gone\n")
        .Mail(kMixedHeaders, kTwoParts)
        .Raw("\nend\n");
    folder_.Write("Inbox", box_.Text());
  }

  std::string Save(std::int32_t offset, std::int16_t attach) {
    mail_.SaveAttachmentFile(folder_.Path("out"), offset, attach, "09.05.2010 14:30:05");
    return folder_.Exists("out") ? folder_.Read("out") : "-";
  }

  MailboxBuilder box_;
};

TEST_F(SaveAttachmentFileTest, PartComesOutWithTheGivenDate) {
  EXPECT_EQ(Save(box_.Offset(2), 2), "ABCDEF");
  EXPECT_EQ(GetFileDate(folder_.Path("out")), "09.05.2010 14:30:05");
}

TEST_F(SaveAttachmentFileTest, MailComesOutAsAWhole) {
  const std::size_t size = static_cast<std::size_t>(box_.Offset(1));
  EXPECT_EQ(Save(box_.Offset(0), -2), box_.Text().substr(0, size));
}

TEST_F(SaveAttachmentFileTest, ExpungedMailGivesTheNextOne) {
  EXPECT_EQ(Save(box_.Offset(1), 1), "text\r\n");
}

TEST_F(SaveAttachmentFileTest, FileIsReplacedEvenIfReadOnly) {
  os::WriteAttributes(folder_.Write("out", "old and long"), os::kReadOnly);
  EXPECT_EQ(Save(box_.Offset(2), 1), "text\r\n");
}

TEST_F(SaveAttachmentFileTest, OffsetBehindTheEndLeavesNoFile) {
  folder_.Write("out", "old");
  EXPECT_EQ(Save(1'000'000, -2), "-");
}

TEST_F(SaveAttachmentFileTest, OffsetThatIsNoneRaises) {
  EXPECT_EQ(NumberOf([&] { Save(2147483647, -2); }), kOverflow);
  EXPECT_NE(NumberOf([&] { Save(-2, -2); }), 0);
}

TEST_F(SaveAttachmentFileTest, MailboxThatCannotBeOpenedRaises) {
  mail_.SetMailboxFile(folder_.Path("no\\Inbox"));
  EXPECT_NE(NumberOf([&] { Save(0, -2); }), 0);
}

TEST_F(SaveAttachmentFileTest, MayBeCalledAgainAndBetweenMailsThatAreRead) {
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(Save(box_.Offset(2), 2), "ABCDEF");
  EXPECT_EQ(Save(box_.Offset(2), 1), "text\r\n");
  // The stream that was read is gone with that.
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(SaveAttachmentFileTest, PositionsOfReadHeaderAreTheNumbersOfTheParts) {
  MailboxBuilder box;
  box.Raw("From - x\nX-Mozilla-Status: 0001\n" +
          MimeTree::Render("mixed(alternative(text,html),text,att\"a\":5,att\"b\":60)") + "\nend\n");
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(PrintParts(mail_, folder_), "alternative text att\"a\" att\"b\"");
  EXPECT_EQ(Save(0, 2), "plain text\r\n");
  EXPECT_EQ(Save(0, 3), std::string(5, 'x'));
  EXPECT_EQ(Save(0, 4), std::string(60, 'x'));
}

TEST_F(SaveAttachmentFileTest, MailboxStaysAsItWas) {
  Save(box_.Offset(0), -2);
  EXPECT_EQ(Mailbox(), box_.Text());
}

}  // namespace
}  // namespace vorlent
