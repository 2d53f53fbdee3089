// What a mail leaves behind in the reader, and what a disk that refuses leaves of a mail.
#include <filesystem>
#include <fstream>

#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

using StdMailStateTest = StdMailTest;

// Two mails with all that a reader looks for.
constexpr std::string_view kTwoMails =
    "From - 1\nX-Mozilla-Status: 0001\nSubject: a\n\nb\n\n"
    "From - 2\nX-Mozilla-Status: 0001\nSubject: c\n\nd\n\n";

// --- From line to line

TEST_F(StdMailStateTest, BehindTheStatusLineOfAnExpungedMailTheImportReaderTakesNoSeparator) {
  OpenLines(
      "From - 1\nX-Mozilla-Status: 0009\nFrom - no mail\nSubject: no\n\nText\n\n"
      "From - 2\nX-Mozilla-Status: 0001\nSubject: yes\n\nText\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(Stored()[0], "From - 2");
  EXPECT_EQ(mail_.GetHeader("subject"), "yes");
  EXPECT_EQ(mail_.Ledger().expungedCount, 1);
}

TEST_F(StdMailStateTest, BehindTheStatusLineOfAnExpungedMailTheExtractionReaderTakesASeparator) {
  OpenLines(
      "From - 1\nX-Mozilla-Status: 0009\nFrom - 2\nX-Mozilla-Status: 0001\nSubject: yes\n\nText\n"
      "last, which the reader never sees\n");
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Stored(), ElementsAre("From - 2", "X-Mozilla-Status: 0001", "Subject: yes"));
}

TEST_F(StdMailStateTest, ClosingSubBoundaryInAPartHeaderIsNoLineOfIt) {
  OpenLines("From - 1\n" + kMixedHeaders +
            "\n--B\nContent-Type: multipart/alternative; boundary=\"S\"\n\n"
            "--S\nContent-Type: text/plain\n--S--\nX-Late: 1\n\nText\n--B--\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  // The block itself goes on after it, but its text has reached the mail's file by then.
  EXPECT_THAT(Texts(mail_.Attachments()),
              ElementsAre("Content-Type: multipart/alternative; boundary=\"S\"\r\n",
                          "Content-Type: text/plain\r\nX-Late: 1\r\n"));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - 1\n" + kMixedHeaders +
                                       "\n--B\nContent-Type: multipart/alternative; boundary=\"S\"\n\n"
                                       "--S\nContent-Type: text/plain\n--S--\nText\n--B--\n"));
}

TEST_F(StdMailStateTest, PartHeaderThatTheMailsClosingBoundaryCutsOffReachesTheMailsFile) {
  const std::string mail = "From - 1\n" + kMixedHeaders + "\n--B\nContent-Type: text/plain\n--B--\n";
  OpenLines(mail);
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_THAT(Texts(mail_.Attachments()), ElementsAre("Content-Type: text/plain\r\n"));
  EXPECT_EQ(TempFile("mail.eml"), Crlf(mail));
}

// --- From mail to mail

TEST_F(StdMailStateTest, ProgressStaysWhereItWasForAMailBehindTheEndOfTheStream) {
  const std::string mailbox = Crlf("From - 1\nSubject: a\n\nb\n\nFrom - 2\n");
  Open(mailbox);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_DOUBLE_EQ(mail_.Percent(), 1.0 / static_cast<double>(mailbox.size()));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(Stored()[0], "From - 2");
  EXPECT_DOUBLE_EQ(mail_.Percent(), 1.0 / static_cast<double>(mailbox.size()));
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_DOUBLE_EQ(mail_.Percent(), 1.0);
}

TEST_F(StdMailStateTest, AMailBroughtOutByItsOffsetIsNotPrecededByTheSeparatorReadAhead) {
  OpenLines(kTwoMails);
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.SaveAttachmentFile(folder_.Path("out"), 0, -2, "09.05.2010 14:30:05");
  EXPECT_EQ(folder_.Read("out"), Crlf("From - 1\nX-Mozilla-Status: 0001\nSubject: a\n\nb\n\n"));
}

TEST_F(StdMailStateTest, AStreamOpenedAgainBeginsWithTheFirstMail) {
  OpenLines(kTwoMails);
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Ledger().offset, 0);
  EXPECT_EQ(mail_.GetHeader("subject"), "a");
}

TEST_F(StdMailStateTest, AStreamThatCannotBeOpenedReadsNoMailOfTheOneBefore) {
  OpenLines(kTwoMails);
  mail_.SetMailboxFile(folder_.Path("none\\Inbox"));
  EXPECT_NE(NumberOf([&] { mail_.InitStream(); }), 0);
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailStateTest, BlanksBeforeTheColonAreNoPartOfAnAddedHeadersName) {
  mail_.AddHeader("Subject : a");
  mail_.AddHeader("Received : 1");
  mail_.AddHeader("Received : 2");
  EXPECT_EQ(mail_.GetHeader("subject"), "a");
  EXPECT_EQ(mail_.GetHeader("received"), "");
  EXPECT_EQ(Stored().size(), 3u);
}

// --- A disk that refuses

TEST_F(StdMailStateTest, AMailboxWhoseLengthCannotBeAskedForKeepsItsProgress) {
  OpenLines(kTwoMails);
  const DiskFault fault({.calls = DiskCall::Status, .pathEnd = "/Inbox"});
  EXPECT_TRUE(mail_.ReadHeader(false));
  EXPECT_TRUE(fault.WasReached());
  EXPECT_EQ(mail_.GetHeader("subject"), "a");
  EXPECT_EQ(mail_.Percent(), 0);
}

TEST_F(StdMailStateTest, AMailIsReadThoughTheStreamBehindItCannotBeClosed) {
  OpenLines(kTwoMails);
  const DiskFault fault({.calls = DiskCall::Close, .pathEnd = "/Inbox"});
  EXPECT_TRUE(mail_.ReadHeader(false, false));
  EXPECT_TRUE(fault.WasReached());
  EXPECT_EQ(mail_.GetHeader("subject"), "a");
}

TEST_F(StdMailStateTest, AMailIsMarkedThoughTheMailboxCannotBeClosed) {
  folder_.Write("Inbox", Crlf(kTwoMails));
  folder_.Write("Inbox.msf", "");
  {
    const DiskFault fault({.calls = DiskCall::Close, .pathEnd = "/Inbox"});
    EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_THAT(Mailbox(), testing::HasSubstr("From - 1\r\nX-Mozilla-Status: 0009\r\n"));
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

// The first look at a small mailbox reads all of it, by a call for its bytes and one for the end. The next,
// for what is after its last line, fails.
constexpr DiskPlan kBadPlaceAtTheEnd = {
    .calls = DiskCall::Read, .number = 2, .trouble = DiskTrouble::FromHere, .pathEnd = "/Inbox"};

TEST_F(StdMailStateTest, AMailboxThatBreaksOffWhereNoMailIsHasNoMail) {
  OpenLines("no mail\n");
  const DiskFault fault(kBadPlaceAtTheEnd);
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(StdMailStateTest, AMailWhoseBodyCannotBeReadToItsEndIsNotWholeAndTheNextIs) {
  std::string body;
  while (body.size() < 300'000)
    body += "a line of the body\n";
  for (const bool save : {false, true}) {
    OpenLines("From - 1\nSubject: a\n\n" + body + "\nFrom - 2\nSubject: b\n\nend\n");
    const DiskFault fault({.calls = DiskCall::Read, .number = 2, .pathEnd = "/Inbox"});
    EXPECT_TRUE(mail_.ReadHeader(save));
    EXPECT_TRUE(fault.WasReached());
    EXPECT_EQ(mail_.GetHeader("subject"), "a");
    EXPECT_THAT(mail_.Ledger().loss.Text(), testing::StartsWith(folder_.Path("Inbox") + ": "));
    EXPECT_TRUE(mail_.ReadHeader(save));
    EXPECT_EQ(mail_.GetHeader("subject"), "b");
    EXPECT_EQ(mail_.Ledger().loss.Text(), "");
    EXPECT_FALSE(mail_.ReadHeader(save));
    EXPECT_EQ(mail_.Ledger().loss.Text(), "");
  }
}

TEST_F(StdMailStateTest, AMailboxThatCannotBeReadOnTellsWhyAndFromWhere) {
  const std::string mail = "From - 1\nContent-Type: a/b; boundary=B\n\n--B--\n";
  OpenLines(mail + std::string(300'000, '\n') + "From - 2\nSubject: b\n\nend\n");
  const DiskFault fault({.calls = DiskCall::Read, .number = 2, .pathEnd = "/Inbox"});
  EXPECT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Ledger().loss.Text(), "");
  EXPECT_FALSE(fault.WasReached());
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_TRUE(fault.WasReached());
  EXPECT_THAT(mail_.Ledger().loss.Text(), testing::StartsWith(folder_.Path("Inbox") + ": "));
  EXPECT_GT(mail_.Ledger().offset, static_cast<std::int32_t>(Crlf(mail).size()));
  EXPECT_LT(mail_.Ledger().offset, 300'000);
}

TEST_F(StdMailStateTest, AMailThatIsBroughtOutEndsWhereItCannotBeRead) {
  OpenLines("From - 1\nX-Mozilla-Status: 0001\n\none\ntwo\nbehind the last\n", -1);
  const DiskFault fault(kBadPlaceAtTheEnd);
  EXPECT_TRUE(mail_.ReadStream());
  EXPECT_TRUE(fault.WasReached());
  EXPECT_THAT(Texts(mail_.BodyLines()), ElementsAre("one", "two"));
  EXPECT_FALSE(mail_.ReadStream());
}

TEST_F(StdMailStateTest, ASearchForALivingMailEndsWhereItCannotRead) {
  OpenLines("From - 1\nX-Mozilla-Status: 0009\n\none\nlast\n");
  const DiskFault fault(kBadPlaceAtTheEnd);
  EXPECT_FALSE(mail_.ReadStream());
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(StdMailStateTest, AMailThatCannotBeReadOrWrittenStaysAndItsSummaryGoes) {
  for (const DiskCall call : {DiskCall::Read, DiskCall::Write}) {
    folder_.Write("Inbox", Crlf(kTwoMails));
    folder_.Write("Inbox.msf", "");
    {
      const DiskFault fault({.calls = call, .trouble = DiskTrouble::FromHere, .pathEnd = "/Inbox"});
      EXPECT_EQ(mail_.DeleteMail(0), Marking::Unreadable);
      EXPECT_TRUE(fault.WasReached());
    }
    EXPECT_EQ(Mailbox(), Crlf(kTwoMails));
    EXPECT_FALSE(folder_.Exists("Inbox.msf"));
  }
}

TEST_F(StdMailStateTest, AMailIsReadToItsEndBehindTheLastPlaceThatCanBeNamed) {
  constexpr std::int32_t kStart = 2147483600;
  const std::string header = Crlf("From - 1\nSubject: a\n\n");
  std::string body;
  while (body.size() < 200)
    body += "line\r\n";
  folder_.Write("Inbox", "");
  std::filesystem::resize_file(folder_.Native("Inbox"), kStart);
  std::ofstream(folder_.Native("Inbox"), std::ios::binary | std::ios::app) << header << body;
  EXPECT_TRUE(ReadHeaderAt(mail_, kStart));
  EXPECT_EQ(mail_.ReadCount(), static_cast<double>(header.size() + body.size()));
}

}  // namespace
}  // namespace vorlent
