// Marking mails as deleted.
#include <filesystem>

#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/DiskOperations.h"

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

TEST_F(StdMailDeleteTest, ResultTellsWhatBecameOfTheMail) {
  struct Row {
    std::string mail;
    Marking result;
  };
  for (const Row& row : {Row{"From - x\r\nX-Mozilla-Status: 0001\r\n\r\n", Marking::Marked},
                         Row{"From - x\r\nX-Mozilla-Status: 0008\r\n\r\n", Marking::Marked},
                         Row{"From - x\r\nX-Mozilla-Status: x\r\n\r\n", Marking::Marked},
                         Row{"From - x\r\nSubject: a\r\n\r\nX-Mozilla-Status: 0001\r\n", Marking::NoStatus},
                         Row{"From - x\r\nX-Mozilla-Status:\r\n\r\n", Marking::BadStatus},
                         Row{"From - x\r\nX-Mozilla-Status: read\r\n\r\n", Marking::BadStatus},
                         Row{"From - x\r\nX-Mozilla-Status: 0001\r\r", Marking::BadStatus},
                         Row{"From - x\r\nSubject: a", Marking::NoStatus}, Row{"", Marking::NoStatus}}) {
    folder_.Write("Inbox", row.mail);
    EXPECT_EQ(mail_.DeleteMail(0), row.result) << row.mail;
    // A reader agrees.
    mail_.InitStream();
    EXPECT_EQ(mail_.ReadHeader(false), !row.mail.empty() && row.result != Marking::Marked) << row.mail;
    mail_.CloseStream();
    mail_.SetMailboxFile("");
    mail_.SetMailboxFile(folder_.Path("Inbox"));
  }
  folder_.Write("Inbox", "From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Cancel, MessageAnswer::No};
  EXPECT_EQ(mail_.DeleteMail(0), Marking::KeptByUser);
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
}

TEST_F(StdMailDeleteTest, MailThatLivesIsReadAtItsPlace) {
  MailboxBuilder box;
  box.Raw("rubbish\n")
      .Mail("X-Mozilla-Status: 0001\nSubject: 1\n")
      .Mail("X-Mozilla-Status: 0000\nSubject: 2\n");
  folder_.Write("Inbox", box.Text());
  ASSERT_TRUE(ReadHeaderAt(mail_, box.Offset(1)));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
  ASSERT_TRUE(ReadHeaderAt(mail_, box.Offset(0)));
  EXPECT_EQ(mail_.GetHeader("subject"), "1");
  for (const std::int32_t offset : {0, box.Offset(0) + 1, box.Offset(1) - 2, 100000})
    EXPECT_FALSE(ReadHeaderAt(mail_, offset)) << offset;
  mail_.DeleteMail(box.Offset(0));
  EXPECT_FALSE(ReadHeaderAt(mail_, box.Offset(0)));
  EXPECT_TRUE(ReadHeaderAt(mail_, box.Offset(1)));
  EXPECT_EQ(NumberOf([&] { ReadHeaderAt(mail_, -2); }), static_cast<int>(ErrorNumber::InvalidCall));
}

TEST_F(StdMailDeleteTest, FirstStatusOfAMailIsMarked) {
  ChooseRules(Rules::Today());
  const std::string mail = "From - x\nX-Mozilla-Status: 0001\nX-Mozilla-Status: 0001\nA: b\n\nend\n";
  Open(mail);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
  std::string marked = mail;
  marked[mail.find('1')] = '9';
  EXPECT_EQ(Mailbox(), marked);
  mail_.InitStream();
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailDeleteTest, StatusThatIsNoNumberStaysToday) {
  ChooseRules(Rules::Today());
  for (const std::string status : {"zzzz", "000g", "0x08", "?", "00 1"}) {
    const std::string mail = "From - x\nX-Mozilla-Status: " + status + "\nA: b\n\nend\n";
    Open(mail);
    ASSERT_TRUE(mail_.ReadHeader(false));
    folder_.Write("Inbox.msf", "");
    EXPECT_EQ(mail_.DeleteMail(0), Marking::NoNumber) << status;
    EXPECT_EQ(Mailbox(), mail);
    EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  }
}

TEST_F(StdMailDeleteTest, WhatIsReadAsTheStatusIsMarkedToday) {
  ChooseRules(Rules::Today());
  for (const std::string status : {"X-Mozilla-Status : 000", "x-mozilla-status:000"}) {
    for (const std::string end : {"\n", " \t\n", "\r\n"}) {
      const std::string next = "From - y\nSubject: next\n\nend\n";
      Open("From - x\n" + status + "1" + end + "A: b\n\ntext\n\n" + next);
      ASSERT_TRUE(mail_.ReadHeader(false));
      EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked) << status;
      EXPECT_EQ(Mailbox(), "From - x\n" + status + "9" + end + "A: b\n\ntext\n\n" + next);
      mail_.InitStream();
      ASSERT_TRUE(mail_.ReadHeader(false));
      EXPECT_EQ(mail_.GetHeader("subject"), "next");
      EXPECT_FALSE(ReadHeaderAt(mail_, 0));
      mail_.SaveAttachmentFile(folder_.Path("out"), 0, -2, "");
      EXPECT_EQ(folder_.Read("out"), Crlf(next)) << status;
    }
  }
}

TEST_F(StdMailDeleteTest, StatusWithoutAValueStaysToday) {
  ChooseRules(Rules::Today());
  const std::string mail = "From - x\nX-Mozilla-Status:\nA: b\n\nend\n";
  Open(mail);
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::NoStatus);
  EXPECT_EQ(Mailbox(), mail);
}

TEST_F(StdMailDeleteTest, ReadOnlyMailboxIsReadAndSaysThatItIs) {
  ChooseRules({.mailboxOpening = MailboxOpening::ForReading});
  const std::string mail = Crlf("From - x\nX-Mozilla-Status: 0001\n\ntext\nend\n\n");
  os::WriteAttributes(folder_.Write("Inbox", mail), os::kReadOnly);
  folder_.Write("Inbox.msf", "index");
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.CloseStream();
  mail_.SaveAttachmentFile(folder_.Path("out"), 0, -2, "09.05.2010 14:30:05");
  EXPECT_THAT(folder_.Read("out"), testing::HasSubstr("text"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::ReadOnly);
  EXPECT_EQ(mail_.DeleteMail(0, [] { return true; }), Marking::ReadOnly);
  EXPECT_EQ(Mailbox(), mail);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  mail_.SetMailboxFile(folder_.Path("Missing"));
  EXPECT_EQ(NumberOf([&] { mail_.InitStream(); }), static_cast<int>(ErrorNumber::FileNotFound));
  EXPECT_FALSE(folder_.Exists("Missing"));
}

TEST_F(StdMailDeleteTest, SummaryStaysWhereNothingWasMarked) {
  ChooseRules({.summaries = Summaries::RemovedWithAMark});
  const std::string noStatus = "From - x\r\nSubject: a\r\n\r\n";
  EXPECT_EQ(Delete(noStatus), noStatus);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  Delete("From - x\r\nX-Mozilla-Status: 0001\r\n\r\n");
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
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

// --- Mails that were read

class StdMailReadDeleteTest : public StdMailDeleteTest {
 protected:
  // Reads all of a mailbox, and closes it.
  void ReadAll(std::string_view mailbox) {
    Open(mailbox);
    while (mail_.ReadHeader(false)) {
    }
    mail_.CloseStream();
  }

  static std::string MailOf(std::string_view subject, std::string_view status = "0001") {
    return "From - Sun May 09 14:30:05 2010\r\nX-Mozilla-Status: " + std::string(status) +
           "\r\nX-Mozilla-Status2: 00000000\r\nX-Mozilla-Keys:                \r\nSubject: " +
           std::string(subject) + "\r\n\r\nbody\r\n\r\n";
  }

  // Whether a mail read as `before` is marked where `now` stands. What isn't marked stays to the byte, and
  // the summary goes in either case.
  bool IsMarked(const std::string& before, const std::string& now) {
    mail_.SetMailboxFile("");
    mail_.SetMailboxFile(folder_.Path("Inbox"));
    folder_.Write("Inbox.msf", "summary");
    ReadAll(before);
    folder_.Write("Inbox", now);
    const Marking result = mail_.DeleteMail(0);
    EXPECT_FALSE(folder_.Exists("Inbox.msf"));
    if (result != Marking::Marked) {
      EXPECT_EQ(result, Marking::OtherMail);
      EXPECT_EQ(Mailbox(), now);
    }
    return result == Marking::Marked;
  }
};

TEST_F(StdMailReadDeleteTest, MailIsMarkedOnlyWhereItStillStands) {
  const std::string mail = MailOf("one");
  EXPECT_TRUE(IsMarked(mail, mail));
  EXPECT_FALSE(IsMarked(mail, MailOf("two")));
  EXPECT_FALSE(IsMarked(mail, "x" + mail));
  EXPECT_FALSE(IsMarked(mail, mail.substr(1)));
  EXPECT_FALSE(IsMarked(mail, ""));
  EXPECT_FALSE(IsMarked(mail, "From - Sun May 09 14:30:05 2010\r\n"));
  EXPECT_FALSE(IsMarked(mail, MailOf("one\r\nX-New: 1")));
  EXPECT_FALSE(IsMarked(mail, mail.substr(0, mail.find("\r\n\r\n"))));
  EXPECT_TRUE(IsMarked(mail, MailOf("one", "1003") + MailOf("two")));
}

TEST_F(StdMailReadDeleteTest, MailInFrontOfOthersMayHaveAnotherBody) {
  std::string now = MailOf("one") + MailOf("two");
  now.replace(now.find("body"), 4, "a longer body");
  EXPECT_TRUE(IsMarked(MailOf("one") + MailOf("two"), now));
}

TEST_F(StdMailReadDeleteTest, WhatTheMailClientChangesInPlaceMakesNoOtherMail) {
  const std::string headers =
      "From - x\r\nX-Mozilla-Status: 0001\r\nX-Mozilla-Status2: 00000000\r\n"
      "x-mozilla-KEYS: a\r\n  b\r\n c\r\nSubject: one\r\n two\r\n";
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string mail = headers;
    return mail.replace(mail.find(from), from.size(), to) + "\r\n";
  };
  const std::string before = headers + "\r\n";
  EXPECT_TRUE(IsMarked(before, changed("0001", "0005")));
  EXPECT_TRUE(IsMarked(before, changed("0001", "0009"))) << "marked already";
  EXPECT_TRUE(IsMarked(before, changed("00000000", "10000000")));
  EXPECT_TRUE(IsMarked(before, changed("KEYS: a", "KEYS: $label1")));
  EXPECT_TRUE(IsMarked(before, changed("\r\n  b", "\r\n  x")));
  EXPECT_TRUE(IsMarked(before, changed("\r\n  b", "")));
  EXPECT_FALSE(IsMarked(before, changed(" two", " three")));
  EXPECT_FALSE(IsMarked(before, changed("From - x", "From - y")));
  EXPECT_FALSE(IsMarked(before, changed("Status2", "Status3")));
  EXPECT_FALSE(IsMarked(before, changed("X-Mozilla-Status: ", "X-Mozilla-State:  ")));
  EXPECT_FALSE(IsMarked(before, changed("one\r\n two", "one two")));
}

TEST_F(StdMailReadDeleteTest, HeaderBlockThatWasCutOffIsAnotherOnceItGoesOn) {
  const std::string cutOff = "From - x\r\nX-Mozilla-Status: 0001\r\nSubject: one";
  EXPECT_TRUE(IsMarked(cutOff, cutOff));
  EXPECT_TRUE(IsMarked(cutOff, cutOff + "\r\n"));
  EXPECT_FALSE(IsMarked(cutOff, cutOff + " two"));
  EXPECT_FALSE(IsMarked(cutOff, cutOff + "\r\nTo: a@b.c\r\n\r\n"));
  EXPECT_FALSE(IsMarked(cutOff, cutOff + "\r\n\r\nbody\r\n")) << "the body was not read";
  const std::string value = "From - x\r\nSubject: one\r\nX-Mozilla-Status: 00";
  EXPECT_FALSE(IsMarked(value, value + "01\r\n\r\nbody\r\n"));
}

TEST_F(StdMailReadDeleteTest, LastMailThatGrewIsAnother) {
  const std::string mail = "From - x\r\nX-Mozilla-Status: 0001\r\n\r\nbody\r\n";
  EXPECT_FALSE(IsMarked(mail, mail + "more\r\n"));
  EXPECT_FALSE(IsMarked(mail, mail + "\r\nmore\r\n\r\nFrom - y\r\n"));
  EXPECT_FALSE(IsMarked(mail, mail + "From - y\r\n")) << "not after an empty line";
  EXPECT_TRUE(IsMarked(mail, mail + "\r\n\r\n"));
  EXPECT_TRUE(IsMarked(mail, mail + "\r\nFrom - y\r\n"));
  EXPECT_TRUE(IsMarked(mail + "\r\n", mail + "\r\nFrom - y\r\n"));
  EXPECT_TRUE(IsMarked(mail + "\r\n", mail + "\r\n>From - y\r\n"));
  // Read once more, it is what it is by then.
  const std::string grown = mail + "more\r\n\r\n";
  ReadAll(mail);
  ReadAll(grown);
  folder_.Write("Inbox", grown + mail);
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
}

TEST_F(StdMailReadDeleteTest, MailsAreKnownAsLongAsTheMailboxFileIsTheSame) {
  ReadAll(MailOf("one") + MailOf("two"));
  mail_.SetMailboxFile(folder_.Path("Inbox"));
  mail_.InitStream();
  mail_.CloseStream();
  folder_.Write("Inbox", MailOf("other") + MailOf("two"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::OtherMail);
  EXPECT_EQ(Mailbox(), MailOf("other") + MailOf("two"));
  // Under another path no mail was read, and whatever stands there is marked.
  folder_.Write("Other", MailOf("two") + MailOf("one"));
  mail_.SetMailboxFile(folder_.Path("Other"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
  mail_.SetMailboxFile(folder_.Path("Inbox"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
}

TEST_F(StdMailReadDeleteTest, MailReadTwiceIsTheLater) {
  ReadAll(MailOf("one"));
  ReadAll(MailOf("new"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked);
  folder_.Write("Inbox", MailOf("one"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::OtherMail);
}

TEST_F(StdMailReadDeleteTest, OffsetsAtWhichNothingWasReadAreTakenAsTheyAre) {
  const std::string box = MailOf("gone", "0009") + MailOf("two");
  ReadAll(box);
  std::string other = MailOf("other");
  other.resize(MailOf("gone").size(), '\n');
  folder_.Write("Inbox", other);
  EXPECT_EQ(mail_.DeleteMail(0), Marking::Marked) << "the expunged mail was passed over";
  std::string expected = other;
  expected[expected.find("0001") + 3] = '9';
  EXPECT_EQ(Mailbox(), expected);
}

TEST_F(StdMailReadDeleteTest, MissingMailboxIsMadeOnlyWhereNothingWasRead) {
  ReadAll(MailOf("one"));
  std::filesystem::remove(folder_.Native("Inbox"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::OtherMail);
  EXPECT_FALSE(folder_.Exists("Inbox"));
  EXPECT_FALSE(folder_.Exists("Inbox.msf"));
  EXPECT_EQ(mail_.DeleteMail(7), Marking::NoStatus);
  EXPECT_TRUE(folder_.Exists("Inbox"));
}

TEST_F(StdMailReadDeleteTest, MailboxOfAFolderThatIsGoneIsNoFailureForAMailThatWasRead) {
  folder_.Write("sub\\Box", MailOf("one"));
  mail_.SetMailboxFile(folder_.Path("sub\\Box"));
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.CloseStream();
  std::filesystem::remove_all(folder_.Native("sub"));
  EXPECT_EQ(mail_.DeleteMail(0), Marking::OtherMail);
  EXPECT_EQ(NumberOf([&] { mail_.DeleteMail(7); }), static_cast<int>(ErrorNumber::PathNotFound));
}

TEST_F(StdMailReadDeleteTest, MailboxThatCannotBeOpenedRaisesForAMailThatWasReadToo) {
  ReadAll(MailOf("one"));
  os::WriteAttributes(folder_.Path("Inbox"), os::kReadOnly);
  EXPECT_EQ(NumberOf([&] { mail_.DeleteMail(0); }), static_cast<int>(ErrorNumber::PathAccess));
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
  EXPECT_EQ(Mailbox(), MailOf("one"));
}

TEST_F(StdMailReadDeleteTest, UserWhoKeepsThunderbirdKeepsTheSummaryOfAChangedMailboxToo) {
  ReadAll(MailOf("one"));
  folder_.Write("Inbox", MailOf("two"));
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Cancel};
  EXPECT_EQ(mail_.DeleteMail(0), Marking::KeptByUser);
  EXPECT_TRUE(folder_.Exists("Inbox.msf"));
}

TEST_F(StdMailReadDeleteTest, MailsAreComparedAfterTheEndOfThunderbird) {
  ReadAll(MailOf("one"));
  RunThunderbird();
  platform_->messageAnswers = {MessageAnswer::Yes};
  // As it ends, it cleans the mailbox up.
  platform_->onWait = [&](std::uint32_t) { folder_.Write("Inbox", MailOf("two")); };
  EXPECT_EQ(mail_.DeleteMail(0), Marking::OtherMail);
  EXPECT_EQ(Mailbox(), MailOf("two"));
}

TEST_F(StdMailReadDeleteTest, MailsOfEachKindOfLineEndAreKnownAgain) {
  ChooseRules({.lines = LineRule::Native});
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    MailboxBuilder box(end);
    box.Mail(kPlainHeaders).Mail(kMixedHeaders, "--B\n\npart\n--B--\n").Mail("X-Mozilla-Status: 0001\n");
    ReadAll(box.Text());
    for (const std::size_t nth : {0U, 1U, 2U})
      EXPECT_EQ(mail_.DeleteMail(box.Offset(nth)), Marking::Marked);
  }
}

// --- Failures of the disk

TEST_F(StdMailReadDeleteTest, FailuresToReadAndWriteAreSwallowed) {
  const std::string mail = MailOf("one");
  for (const bool wasRead : {false, true}) {
    for (const DiskCall call : {DiskCall::Read, DiskCall::Seek, DiskCall::Write, DiskCall::Close}) {
      if (wasRead) {
        ReadAll(mail);
      } else {
        folder_.Write("Inbox", mail);
      }
      folder_.Write("Inbox.msf", "summary");
      {
        const DiskFault fault({.calls = call, .pathEnd = "Inbox"});
        // After the write that marks it, a failure changes nothing any more.
        const Marking expected = call == DiskCall::Close ? Marking::Marked : Marking::Unreadable;
        EXPECT_EQ(mail_.DeleteMail(0), expected) << static_cast<unsigned>(call);
        EXPECT_TRUE(fault.WasReached()) << static_cast<unsigned>(call);
      }
      EXPECT_FALSE(folder_.Exists("Inbox.msf"));
      if (call != DiskCall::Close) {
        EXPECT_EQ(Mailbox(), mail);
      }
    }
    mail_.SetMailboxFile("");
    mail_.SetMailboxFile(folder_.Path("Inbox"));
  }
}

TEST_F(StdMailReadDeleteTest, WantedMailThatCannotBeReadIsNotMarked) {
  const std::string box = MailOf("one\r\nX-Long: " + std::string(20'000, 'x')) + std::string(100'000, 'b');
  folder_.Write("Inbox", box);
  // In front of the mail, in its header block, and in its body.
  for (const long number : {0, 1, 2}) {
    const DiskFault fault({.calls = DiskCall::Read, .number = number, .pathEnd = "Inbox"});
    EXPECT_EQ(mail_.DeleteMail(0, [] { return true; }), Marking::Unreadable) << number;
    EXPECT_TRUE(fault.WasReached());
    EXPECT_EQ(Mailbox(), box);
  }
}

// --- Other conditions of the caller

TEST_F(StdMailReadDeleteTest, CallerIsAskedWithTheMailAtHandMarkedOrNot) {
  for (const std::string status : {"0001", "0009"}) {
    folder_.Write("Inbox", MailOf("one", status) + MailOf("two"));
    std::string subject;
    EXPECT_EQ(mail_.DeleteMail(0, [&] { return (subject = mail_.GetHeader("subject")).empty(); }),
              Marking::OtherMail);
    EXPECT_EQ(subject, "one");
    EXPECT_EQ(Mailbox(), MailOf("one", status) + MailOf("two"));
    EXPECT_EQ(mail_.DeleteMail(0, [] { return true; }), Marking::Marked);
    EXPECT_EQ(Mailbox(), MailOf("one", "0009") + MailOf("two"));
  }
  EXPECT_EQ(mail_.DeleteMail(3, [] { return true; }), Marking::OtherMail);
  EXPECT_EQ(NumberOf([&] { mail_.DeleteMail(-2, [] { return true; }); }),
            static_cast<int>(ErrorNumber::InvalidCall));
}

// --- Edges

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
  // After a line end of one byte that leads to the digit before the last.
  EXPECT_EQ(Delete("From - x\rX-Mozilla-Status: 0001\r\r"), "From - x\rX-Mozilla-Status: 0091\r\r");
  // With no line end at all, to the one before that.
  EXPECT_EQ(Delete("From - x\r\nX-Mozilla-Status: 0001"), "From - x\r\nX-Mozilla-Status: 0901");
}

TEST_F(StdMailDeleteTest, NativeRuleFindsTheDigitBeforeEachKindOfLineEnd) {
  ChooseRules({.lines = LineRule::Native});
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    const std::string front = "From - x" + end + "X-Mozilla-Status: 000";
    EXPECT_EQ(Delete(front + "1" + end + end), front + "9" + end + end);
  }
  EXPECT_EQ(Delete("From - x\nX-Mozilla-Status: 0001"), "From - x\nX-Mozilla-Status: 0009");
}

TEST_F(StdMailDeleteTest, NativeRuleDeletesInAMailboxOfMixedLineEnds) {
  ChooseRules({.lines = LineRule::Native});
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
