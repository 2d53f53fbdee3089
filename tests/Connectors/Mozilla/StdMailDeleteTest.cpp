// Marking mails as deleted.
#include "Connectors/Mozilla/StdMailTest.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StdMailDeleteTest : public StdMailTest {
 protected:
  StdMailDeleteTest() { folder_.Write("Inbox.msf", "summary"); }

  // The mailbox after the deletion of the mail at that offset.
  std::string Delete(std::string_view mailbox, std::int32_t offset = 0) {
    folder_.Write("Inbox", mailbox);
    mail_.DeleteMail(offset);
    return Mailbox();
  }

  void RunThunderbird() {
    platform_->processes = std::vector<ProcessEntry>{{7, "x.exe"}, {42, "Thunderbird.exe"}};
  }

  std::vector<std::string> UserCalls() const {
    std::vector<std::string> calls;
    for (const std::string& call : platform_->calls) {
      if (!call.starts_with("Processes")) calls.push_back(call);
    }
    return calls;
  }
};

struct DigitRow {
  char before;
  char after;
};

class DigitTest : public StdMailDeleteTest, public testing::WithParamInterface<DigitRow> {};

TEST_P(DigitTest, LastDigitGetsTheBitAndAllElseStays) {
  const std::string front = "From - x\r\nSubject: a\r\nX-Mozilla-Status: 000";
  const std::string behind = "\r\nX-Mozilla-Status2: 00000000\r\n\r\nX-Mozilla-Status: 0001\r\n";
  EXPECT_EQ(Delete(front + GetParam().before + behind), front + GetParam().after + behind);
}

INSTANTIATE_TEST_SUITE_P(Rows, DigitTest,
                         testing::Values(DigitRow{'0', '8'}, DigitRow{'1', '9'}, DigitRow{'2', 'A'},
                                         DigitRow{'3', 'B'}, DigitRow{'4', 'C'}, DigitRow{'5', 'D'},
                                         DigitRow{'6', 'E'}, DigitRow{'7', 'F'}, DigitRow{'8', '8'},
                                         DigitRow{'9', '9'}, DigitRow{'a', 'A'}, DigitRow{'A', 'A'},
                                         DigitRow{'f', 'F'}, DigitRow{'x', '8'}, DigitRow{' ', '8'},
                                         DigitRow{'.', '8'}, DigitRow{'&', '8'}, DigitRow{'\xFF', '8'}));

TEST_F(StdMailDeleteTest, StatusOfOneMailChangesAmongMany) {
  MailboxBuilder box;
  box.Mail(kPlainHeaders).Mail(kPlainHeaders).Mail(kPlainHeaders);
  std::string expected = box.Text();
  const std::size_t digit = expected.find("0001", static_cast<std::size_t>(box.Offset(1))) + 3;
  expected[digit] = '9';
  EXPECT_EQ(Delete(box.Text(), box.Offset(1)), expected);
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, DeletedMailIsReadNoMore) {
  MailboxBuilder box;
  box.Mail("X-Mozilla-Status: 0001\nSubject: 1\n").Mail("X-Mozilla-Status: 0000\nSubject: 2\n");
  Delete(box.Text(), box.Offset(0));
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  mail_.CloseStream();
  mail_.DeleteMail(box.Offset(1));
  mail_.InitStream();
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailDeleteTest, OffsetsOfTheReaderLeadToTheirMails) {
  MailboxBuilder box;
  box.Raw("rubbish\n")
      .Mail("Subject: 1\nX-Mozilla-Status: 0001\n")
      .Mail("Subject: 2\nX-Mozilla-Status: 0001\n");
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(false));
  ASSERT_TRUE(mail_.ReadHeader(false));
  const std::int32_t offset = std::stoi(mail_.GetHeader("address"));
  mail_.CloseStream();
  mail_.DeleteMail(offset);
  std::string expected = box.Text();
  expected[expected.rfind("0001") + 3] = '9';
  EXPECT_EQ(Mailbox(), expected);
}

TEST_F(StdMailDeleteTest, NameOfTheStatusIsFoundInAnyLetterCase) {
  EXPECT_EQ(Delete("From - x\r\nx-MOZILLA-status:1\r\n\r\n"), "From - x\r\nx-MOZILLA-status:9\r\n\r\n");
}

TEST_F(StdMailDeleteTest, LastCharacterOfAnEmptyStatusIsTheColon) {
  EXPECT_EQ(Delete("From - x\r\nX-Mozilla-Status:\r\n\r\n"), "From - x\r\nX-Mozilla-Status8\r\n\r\n");
}

TEST_F(StdMailDeleteTest, SummaryThatCannotBeDeletedStays) {
  folder_.Write("Other.msf\\entry", "");
  folder_.Write("Other", "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
  mail_.SetMailboxFile(folder_.Path("Other"));
  mail_.DeleteMail(0);
  EXPECT_EQ(folder_.Read("Other"), "From - x\r\nX-Mozilla-Status: 0009\r\n\r\n");
  EXPECT_TRUE(folder_.Exists("Other.msf\\entry"));
}

TEST_F(StdMailDeleteTest, ResultTellsWhetherTheMailIsMarked) {
  struct Row {
    std::string mail;
    bool isMarked;
  };
  for (const Row& row : {Row{"From - x\r\nX-Mozilla-Status: 0001\r\n\r\n", true},
                         Row{"From - x\r\nX-Mozilla-Status: 0008\r\n\r\n", true},
                         Row{"From - x\r\nSubject: a\r\n\r\nX-Mozilla-Status: 0001\r\n", false},
                         Row{"From - x\r\nX-Mozilla-Status:\r\n\r\n", false},
                         Row{"From - x\r\nSubject: a", false}, Row{"", false}}) {
    folder_.Write("Inbox", row.mail);
    EXPECT_EQ(mail_.DeleteMail(0), row.isMarked) << row.mail;
  }
  folder_.Write("Inbox", "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Cancel, MessageAnswer::No};
  EXPECT_FALSE(mail_.DeleteMail(0));
  EXPECT_TRUE(mail_.DeleteMail(0));
}

TEST_F(StdMailDeleteTest, MailThatLivesIsReadAtItsPlace) {
  MailboxBuilder box;
  box.Raw("rubbish\n")
      .Mail("X-Mozilla-Status: 0001\nSubject: 1\n")
      .Mail("X-Mozilla-Status: 0000\nSubject: 2\n");
  folder_.Write("Inbox", box.Text());
  ASSERT_TRUE(mail_.ReadHeaderAt(box.Offset(1)));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  ASSERT_TRUE(mail_.ReadHeaderAt(box.Offset(0)));
  EXPECT_EQ(mail_.GetHeader("subject"), "1");
  for (const std::int32_t offset : {0, box.Offset(0) + 1, box.Offset(1) - 2, 100000})
    EXPECT_FALSE(mail_.ReadHeaderAt(offset)) << offset;
  mail_.DeleteMail(box.Offset(0));
  EXPECT_FALSE(mail_.ReadHeaderAt(box.Offset(0)));
  EXPECT_TRUE(mail_.ReadHeaderAt(box.Offset(1)));
  EXPECT_EQ(NumberOf([&] { mail_.ReadHeaderAt(-2); }), static_cast<int>(ErrorNumber::InvalidCall));
}

TEST_F(StdMailDeleteTest, MailWithoutStatusStaysButTheSummaryGoes) {
  const std::string text = "From - x\r\nSubject: a\r\n\r\nX-Mozilla-Status: 0001\r\n";
  EXPECT_EQ(Delete(text), text);
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, OffsetBehindTheEndChangesNothingButTheSummaryGoes) {
  const std::string text = "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n";
  EXPECT_EQ(Delete(text, 1000), text);
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, MailboxThatBecameShorterSinceItWasReadIsLeftAlone) {
  const std::string mail = "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n";
  Open(mail + mail);
  mail_.CloseStream();
  EXPECT_EQ(NumberOf([&] { Delete(mail); }), static_cast<int>(ErrorNumber::PermissionDenied));
  EXPECT_EQ(Mailbox(), mail);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  // What is appended moves no mail.
  std::string longer = mail + mail + mail;
  EXPECT_EQ(Delete(longer), longer.replace(longer.find("0001"), 4, "0009"));
  // A path that is given anew has not been read.
  mail_.SetMailboxFile(folder_.Path("Inbox"));
  EXPECT_EQ(Delete(mail), "From - x\r\nX-Mozilla-Status: 0009\r\n\r\n");
}

TEST_F(StdMailDeleteTest, EmptyMailboxStaysEmpty) {
  EXPECT_EQ(Delete(""), "");
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, ReadOnlySummaryGoesToo) {
  os::WriteAttributes(folder_.Path("Inbox.msf"), os::kReadOnly);
  Delete("From - x\r\n");
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, OffsetThatIsNoneRaisesAndKeepsTheSummary) {
  folder_.Write("Inbox", "From - x\r\n");
  EXPECT_EQ(NumberOf([&] { mail_.DeleteMail(2147483647); }), static_cast<int>(ErrorNumber::Overflow));
  EXPECT_NE(NumberOf([&] { mail_.DeleteMail(-2); }), 0);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailDeleteTest, MailboxThatCannotBeOpenedRaisesAndKeepsTheSummary) {
  const std::string path = folder_.Write("Inbox", "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
  os::WriteAttributes(path, os::kReadOnly);
  EXPECT_EQ(NumberOf([&] { mail_.DeleteMail(0); }), static_cast<int>(ErrorNumber::PathAccess));
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  EXPECT_EQ(Mailbox(), "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
}

// --- Line ends

TEST_F(StdMailDeleteTest, WindowsRuleTakesEveryLineEndForTwoBytes) {
  // Behind a line end of one byte that leads to the digit before the last.
  EXPECT_EQ(Delete("From - x\rX-Mozilla-Status: 0001\r\r"), "From - x\rX-Mozilla-Status: 0091\r\r");
  // With no line end at all, to the one before that.
  EXPECT_EQ(Delete("From - x\r\nX-Mozilla-Status: 0001"), "From - x\r\nX-Mozilla-Status: 0901");
}

TEST_F(StdMailDeleteTest, NativeRuleFindsTheDigitBeforeEachKindOfLineEnd) {
  SetDefaultLineRule(LineRule::Native);
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    const std::string front = "From - x" + end + "X-Mozilla-Status: 000";
    EXPECT_EQ(Delete(front + "1" + end + end), front + "9" + end + end);
  }
  EXPECT_EQ(Delete("From - x\nX-Mozilla-Status: 0001"), "From - x\nX-Mozilla-Status: 0009");
}

TEST_F(StdMailDeleteTest, NativeRuleDeletesInAMailboxOfMixedLineEnds) {
  SetDefaultLineRule(LineRule::Native);
  const std::string text =
      "From - x\r\nX-Account-Key: a\nX-Mozilla-Status: 0001\nX-Mozilla-Status2: 0\n\nbody\n\r\n";
  std::string expected = text + text;
  expected[text.size() + text.find("0001") + 3] = '9';
  EXPECT_EQ(Delete(text + text, static_cast<std::int32_t>(text.size())), expected);
}

// --- The running mail client

constexpr std::string_view kOneMail = "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n";
constexpr std::string_view kOneMailDeleted = "From - x\r\nX-Mozilla-Status: 0009\r\n\r\n";

const std::string kQuestion =
    "ShowMessage(\"" +
    std::string(
        "Mozilla Thunderbird ist derzeit aktiv.\\nDamit Mails gelöscht werden können, "
        "muss Thunderbird geschlossen werden!\\nThunderbird jetzt schließen?"_cp) +
    "\",\"Mozilla Thunderbird Archivierung\",Question,YesNoCancel) -> ";

TEST_F(StdMailDeleteTest, NothingIsAskedIfThunderbirdDoesNotRun) {
  platform_->processes = std::vector<ProcessEntry>{{7, "firefox.exe"}};
  EXPECT_EQ(Delete(kOneMail), kOneMailDeleted);
  EXPECT_THAT(UserCalls(), IsEmpty());
}

TEST_F(StdMailDeleteTest, NothingIsAskedIfTheProcessesCannotBeListed) {
  platform_->processes.reset();
  EXPECT_EQ(Delete(kOneMail), kOneMailDeleted);
  EXPECT_THAT(UserCalls(), IsEmpty());
}

TEST_F(StdMailDeleteTest, YesClosesAndEndsThunderbirdAndWaitsBeforeTheMailIsTouched) {
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Yes};
  std::string meanwhile;
  platform_->onWait = [&](std::uint32_t) { meanwhile = Mailbox(); };
  EXPECT_EQ(Delete(kOneMail), kOneMailDeleted);
  EXPECT_EQ(meanwhile, kOneMail);
  EXPECT_THAT(UserCalls(), ElementsAre(kQuestion + "Yes", "CloseWindows(42)", "Terminate(42)", "Wait(1000)"));
}

TEST_F(StdMailDeleteTest, YesIsAskedAgainForTheNextMailIfThunderbirdCameBack) {
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Yes, MessageAnswer::Cancel};
  Delete(kOneMail);
  RunThunderbird();
  EXPECT_EQ(Delete(kOneMail), kOneMail);
  EXPECT_EQ(platform_->CountOf("ShowMessage"), 2);
}

TEST_F(StdMailDeleteTest, NoDeletesAndAsksNoMoreInAnyObject) {
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::No};
  EXPECT_EQ(Delete(kOneMail), kOneMailDeleted);
  EXPECT_THAT(UserCalls(), ElementsAre(kQuestion + "No"));
  folder_.Write("Inbox", kOneMail);
  StdMail other;
  other.SetMailboxFile(folder_.Path("Inbox"));
  other.DeleteMail(0);
  EXPECT_EQ(Mailbox(), kOneMailDeleted);
  EXPECT_EQ(platform_->CountOf("ShowMessage"), 1);
}

TEST_F(StdMailDeleteTest, CancelLeavesAllAsItWasAndTheNextMailAsksAgain) {
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Cancel, MessageAnswer::Cancel};
  EXPECT_EQ(Delete(kOneMail), kOneMail);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  EXPECT_THAT(UserCalls(), ElementsAre(kQuestion + "Cancel"));
  EXPECT_EQ(Delete(kOneMail), kOneMail);
  EXPECT_EQ(platform_->CountOf("ShowMessage"), 2);
}

TEST_F(StdMailDeleteTest, SummariesOfOthersStayWhereTheNameLooksLikeAPattern) {
  for (const char* name : {"Was?", "Wass.msf", "Wasn.msf", "Was?.msf"})
    folder_.Write(name, "");
  mail_.SetMailboxFile(folder_.Path("Was?"));
  mail_.DeleteMail(0);
  EXPECT_FALSE(folder_.Exists("Was?.msf"));
  mail_.DeleteMail(0);
  EXPECT_TRUE(folder_.Exists("Wass.msf"));
  EXPECT_TRUE(folder_.Exists("Wasn.msf"));
}

}  // namespace
}  // namespace vorlent
