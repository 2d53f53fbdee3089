// The stream, the header store and its accessors.
#include <memory>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StdMailStreamTest : public StdMailTest {
 protected:
  // Reads the first mail of that header block.
  void ReadMailWith(std::string_view headers) {
    OpenLines("From - x\n" + std::string(headers) + "\nbody\n");
    ASSERT_TRUE(mail_.ReadHeader(false));
  }
};

// --- A new object

TEST_F(StdMailStreamTest, NewObjectHasEmptyLists) {
  const StdMail mail;
  EXPECT_EQ(mail.Headers()->Count(), 0);
  EXPECT_EQ(mail.BodyLines()->Count(), 0);
  EXPECT_EQ(mail.Attachments()->Count(), 0);
  EXPECT_EQ(mail.Percent(), 0);
  EXPECT_FALSE(mail.hasHTML());
  EXPECT_EQ(mail.Body(), "");
  EXPECT_EQ(mail.GetAllHeaders(), "");
  EXPECT_EQ(mail.GetHeader("subject"), "");
}

TEST_F(StdMailStreamTest, ReadersOfAnObjectWithoutStreamFindNoMail) {
  EXPECT_FALSE(mail_.ReadHeader(true));
  EXPECT_EQ(mail_.Percent(), 1);
  EXPECT_FALSE(mail_.ReadStream());
  EXPECT_FALSE(mail_.ReadStream(folder_.Path("out")));
  EXPECT_FALSE(folder_.Exists("out"));
}

// --- Opening and closing

TEST_F(StdMailStreamTest, MissingMailboxIsCreatedEmpty) {
  mail_.InitStream();
  EXPECT_TRUE(folder_.Exists("Inbox"));
  EXPECT_EQ(Mailbox(), "");
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailStreamTest, MailboxThatCannotBeOpenedRaises) {
  folder_.MakeFolder("Inbox");
  EXPECT_EQ(NumberOf([&] { mail_.InitStream(); }), static_cast<int>(ErrorNumber::PathAccess));
  mail_.SetMailboxFile(folder_.Path("no\\such\\folder"));
  EXPECT_NE(NumberOf([&] { mail_.InitStream(); }), 0);
}

TEST_F(StdMailStreamTest, ReadOnlyMailboxRaises) {
  const std::string path = folder_.Write("Inbox", "From - x\r\n");
  os::WriteAttributes(path, os::kReadOnly);
  EXPECT_EQ(NumberOf([&] { mail_.InitStream(); }), static_cast<int>(ErrorNumber::PathAccess));
}

TEST_F(StdMailStreamTest, ClosingTwiceDoesNoHarm) {
  OpenLines("From - x\nA: 1\n\nbody\n");
  mail_.CloseStream();
  mail_.CloseStream();
  EXPECT_FALSE(mail_.ReadHeader(false));
}

TEST_F(StdMailStreamTest, SecondInitStreamBeginsAtTheFirstMailAgain) {
  OpenLines("From - x\nSubject: 1\n\nbody\n\nFrom - y\nSubject: 2\n\nbody\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  mail_.InitStream();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "1");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "2");
}

TEST_F(StdMailStreamTest, ReadingLeavesTheMailboxAsItWas) {
  const std::string text = Crlf("From - x\nX-Mozilla-Status: 0001\n\nbody\n\nFrom - y\n\nend");
  Open(text);
  while (mail_.ReadHeader(true)) {
  }
  EXPECT_EQ(Mailbox(), text);
}

// --- Separators

struct SeparatorRow {
  const char* mailbox;
  std::vector<std::string> separators;  // of the mails found
};

class SeparatorTest : public StdMailTest, public testing::WithParamInterface<SeparatorRow> {};

TEST_P(SeparatorTest, OnlyADashedFromLineAtTheBeginningOrBehindAnEmptyLineBeginsAMail) {
  OpenLines(GetParam().mailbox);
  std::vector<std::string> separators;
  while (mail_.ReadHeader(false))
    separators.push_back(mail_.Headers()->Item(1));
  EXPECT_EQ(separators, GetParam().separators);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SeparatorTest,
    testing::Values(SeparatorRow{"From - x\n\nbody\n", {"From - x"}},
                    SeparatorRow{">From - x\n\nbody\n", {">From - x"}}, SeparatorRow{"From x\n\nbody\n", {}},
                    SeparatorRow{"from - x\n\nbody\n", {}}, SeparatorRow{"From -x\n\nbody\n", {}},
                    SeparatorRow{"From -\n\nbody\n", {}}, SeparatorRow{"From - \n\nbody\n", {"From - "}},
                    SeparatorRow{" From - x\n\nbody\n", {}}, SeparatorRow{">>From - x\n\nbody\n", {}},
                    SeparatorRow{"\nFrom - x\n\nbody\n", {"From - x"}},
                    SeparatorRow{"text\nFrom - x\n\nbody\n", {}},
                    SeparatorRow{"text\n\nFrom - x\n\nbody\n", {"From - x"}},
                    SeparatorRow{"From - x\n\nbody\nFrom - y\n\nbody\n", {"From - x"}},
                    SeparatorRow{"From - x\n\nbody\n\nFrom - y\n\nbody\n", {"From - x", "From - y"}},
                    SeparatorRow{"From - x\n\nbody\n\n>From - y\n\nbody\n", {"From - x", ">From - y"}},
                    SeparatorRow{"From - x\n\nbody\n\nFrom y\n\nbody\n", {"From - x"}},
                    // After the empty line that ends the header block.
                    SeparatorRow{"From - x\n\nFrom - y\n\nbody\n", {"From - x", "From - y"}},
                    // Inside a header block it is a header like any other.
                    SeparatorRow{"From - x\nFrom - y\n\nbody\n", {"From - x"}}, SeparatorRow{"", {}},
                    SeparatorRow{"\n\n\n", {}}));

class EnvelopeSeparatorTest : public StdMailTest {
 protected:
  EnvelopeSeparatorTest() { ChooseRules(Rules::Today()); }

  // Of the mails found.
  std::vector<std::string> SeparatorsIn(std::string_view mailbox) {
    Open(mailbox);
    std::vector<std::string> separators;
    while (mail_.ReadHeader(false))
      separators.push_back(mail_.Headers()->Item(1));
    return separators;
  }
};

TEST_F(EnvelopeSeparatorTest, ALineOfAnEnvelopeBeforeAHeaderBeginsAMail) {
  for (const std::string separator :
       {"From - Sat Nov 21 14:59:15 2026", "From alice@example.org Mon Jan  5 10:00:00 1998", "From ",
        "From -", "From - ", "From alice@example.org", "From - alice",
        "From alice Mon, 5 Jan 1998 10:00:00 +0200", "From joe at example.org  Mon Jan  5 10:00 MET 1998",
        "From Mon Jan  5 9:00:00 1998", "From - Mo Okt 12 14:59:15 2026", "From a@b.c 5 Jan 1998",
        "From a@b.c Mon Jan  5 10:00:00 98", "From a@b.c Mon Jan  5 10:00 MET 98"}) {
    for (const std::string next : {"Subject: a\n\ntext\n", "X-A : b\n\ntext\n", "\ntext\n", ""}) {
      EXPECT_THAT(SeparatorsIn(separator + "\n" + next), ElementsAre(separator)) << next;
      EXPECT_THAT(SeparatorsIn("From - \nA: b\n\ntext\n\n" + separator + "\n" + next),
                  ElementsAre("From - ", separator))
          << next;
    }
    for (const std::string next : {"no field\n", " A: b\n", "two words: c\n", ": x\n", "\xC3\xA4: x\n"}) {
      EXPECT_THAT(SeparatorsIn("From - \nA: b\n\ntext\n\n" + separator + "\n" + next), ElementsAre("From - "))
          << next;
    }
    EXPECT_THAT(SeparatorsIn("From - \nA: b\n\ntext\n" + separator + "\nA: b\n"), ElementsAre("From - "));
    EXPECT_THAT(SeparatorsIn("From - \nA: b\n\ntext\n\n>" + separator + "\nA: b\n"), ElementsAre("From - "));
  }
}

TEST_F(EnvelopeSeparatorTest, SeparatorOfTheHostBeforeMayFollow) {
  const std::string before = "From - \nA: b\n\ntext\n\n";
  const std::string separator = "From uucp Mon Jan  5 10:00:00 1998";
  for (const std::string quoted : {">From joe Mon Jan  5 09:00:00 1998 remote from far", ">From joe@far"})
    EXPECT_THAT(SeparatorsIn(before + separator + "\n" + quoted + "\nSubject: a\n\ntext\n"),
                ElementsAre("From - ", separator));
  EXPECT_EQ(mail_.GetHeader("subject"), "a");
  EXPECT_THAT(SeparatorsIn(before + separator + "\n>From now on: it is text\n"), ElementsAre("From - "));
}

TEST_F(EnvelopeSeparatorTest, ALineThatOnlyBeginsLikeOneIsText) {
  for (const std::string line :
       {"From now on", "From Monday", "From - him: what he said", "From alice@example.org and others",
        "from - ", "From Jan 5 to Feb 6 2010", "From Mo Okt 12 14:59:15 2026", "From", "From:", " From - ",
        ">From - Sat Nov 21 14:59:15 2026", "From May 5 2010 on", "From Jan 5 at 10:00 to 11",
        "From a@b.c in Jan 1998", "From a@b.c at 10:00 in Jan", "From a@b.c on Jan 5"}) {
    EXPECT_THAT(SeparatorsIn("From - \nA: b\n\n" + line + "\nNote: c\n"), ElementsAre("From - ")) << line;
  }
}

TEST_F(EnvelopeSeparatorTest, ReadingAheadLosesNoLine) {
  Open(
      "From - \nX-Mozilla-Status: 0001\n\nFrom - \nno field\n\nFrom - \nX-Mozilla-Status: 0001\nA: 1\n\nx\n");
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - \nX-Mozilla-Status: 0001\n\nFrom - \nno field\n\n"));
  ASSERT_TRUE(mail_.ReadHeader(true));
  EXPECT_EQ(TempFile("mail.eml"), Crlf("From - \nX-Mozilla-Status: 0001\nA: 1\n\nx\n"));
  EXPECT_EQ(mail_.GetHeader("address"), "50");
  mail_.SaveAttachmentFile(folder_.Path("out"), 0, -2, "09.05.2010 14:30:05");
  EXPECT_EQ(folder_.Read("out"), Crlf("From - \nX-Mozilla-Status: 0001\n\nFrom - \nno field\n\n"));
}

TEST_F(EnvelopeSeparatorTest, LastMailHasNotGrownByAnEnvelopeButByText) {
  const std::string mail = "From - \nX-Mozilla-Status: 0001\n\ntext\n\n";
  for (const std::string later : {"From bob@x Mon Jan  5 10:00:00 1998\nA: b\n", "From bob@x\nno field\n"}) {
    Open(mail);
    while (mail_.ReadHeader(false)) {
    }
    folder_.Write("Inbox", mail + later);
    EXPECT_EQ(mail_.DeleteMail(0),
              later.find("field") == std::string::npos ? Marking::Marked : Marking::OtherMail);
  }
}

// --- Date

TEST_F(StdMailStreamTest, MailWithoutADateIsOfTheDayItCame) {
  ChooseRules(Rules::Today());
  const ScopedTimeZone zone("Europe/Berlin");
  const std::string received =
      "Received: from a by b id 1 (x; y);\n Mon, 5 Jan 2026 10:00:00 +0000 (UTC; z)\n"
      "Received: from c; Sun, 4 Jan 2026 10:00:00 +0000\n";
  struct Row {
    std::string separator, header, shown, sent;
  };
  const Row rows[] = {
      {"From - Sat Nov 21 14:59:15 2026", "Date: 6 jan 2026 09:00:00 +0000\n" + received,
       "06.01.2026 10:00:00", "06.01.2026 09:00:00"},
      {"From - Sat Nov 21 14:59:15 2026", received, "05.01.2026 11:00:00", "05.01.2026 10:00:00"},
      {"From - Sat Nov 21 14:59:15 2026", "Date: some day\n" + received, "05.01.2026 11:00:00",
       "05.01.2026 10:00:00"},
      {"From - Sat Nov 21 14:59:15 2026", "Received: from a by b\nReceived: from c; 4 Jan 2026 10:00:00 Z\n",
       "04.01.2026 11:00:00", "04.01.2026 10:00:00"},
      {"From - Sat Nov 21 14:59:15 2026", "", "21.11.2026 14:59:15", ""},
      {"From a@b.c Mon Jan  5 10:00:00 1998 -0800", "", "05.01.1998 19:00:00", ""},
      {"From may@june.2026", "", "", ""},
      {"From - ", "", "", ""},
  };
  for (const Row& row : rows) {
    Open(row.separator + "\n" + row.header + "Message-ID: <m>\n\ntext\n");
    ASSERT_TRUE(mail_.ReadHeader(false));
    EXPECT_EQ(mail_.GetDate(), row.shown) << row.separator << row.header;
    EXPECT_EQ(mail_.SentDate(), row.sent) << row.separator << row.header;
  }
  EXPECT_EQ(GetParam(mail_.GetData("", false), "Date"), "");
  EXPECT_EQ(GetParam(mail_.GetData("", false), "ID"), "00000000000000-m");
}

TEST_F(StdMailStreamTest, MailWithoutADateHasSomeByTheRulesOfOld) {
  Open("From - Sat Nov 21 14:59:15 2026\r\nReceived: a; 5 Jan 2026 10:00:00 +0000\r\n\r\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetDate(), "00.01.2000 00:00:00");
}

// --- Header store

TEST_F(StdMailStreamTest, SeparatorStandsFirstWithoutKeyAndTheOffsetLast) {
  ReadMailWith("Subject: Hello\n");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: Hello", ":0"));
  EXPECT_EQ(mail_.Headers()->Key(1), "");
  EXPECT_EQ(mail_.Headers()->Key(2), "subject");
  EXPECT_EQ(mail_.Headers()->Key(3), "address");
}

TEST_F(StdMailStreamTest, KeysAreTheTrimmedLowerCaseNames) {
  ReadMailWith("  X\n");  // joined to the separator, under the key that no header has set yet
  EXPECT_THAT(Stored(), ElementsAre("From - x  X", ":0"));
  ReadMailWith("SUBJECT : Hello\n");
  EXPECT_EQ(mail_.Headers()->Key(2), "subject");
  ReadMailWith("no colon at all\n");
  EXPECT_EQ(mail_.Headers()->Key(2), "no colon at all");
}

TEST_F(StdMailStreamTest, HeaderIsFoundWithoutRegardToCase) {
  ReadMailWith("SuBject: Hello\n");
  EXPECT_EQ(mail_.GetHeader("Subject"), "Hello");
  EXPECT_EQ(mail_.GetHeader("subject"), "Hello");
  EXPECT_EQ(mail_.GetHeader("Subject", true), "SuBject: Hello");
}

TEST_F(StdMailStreamTest, ValueIsTrimmedOfBlanksAndMayHoldColons) {
  ReadMailWith("Subject:   a: b  \nX-Tab:\tc\nEmpty:\n");
  EXPECT_EQ(mail_.GetHeader("subject"), "a: b");
  EXPECT_EQ(mail_.GetHeader("subject", true), "Subject:   a: b  ");
  EXPECT_EQ(mail_.GetHeader("x-tab"), "\tc");
  EXPECT_EQ(mail_.GetHeader("empty"), "");
  EXPECT_EQ(mail_.GetHeader("empty", true), "Empty:");
}

TEST_F(StdMailStreamTest, ReceivedAndReturnPathAreStoredEachTimeButNotFound) {
  ReadMailWith("Received: 1\nReturn-Path: <a>\nRECEIVED: 2\nreturn-path: <b>\n");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Received: 1", "Return-Path: <a>", "RECEIVED: 2",
                                    "return-path: <b>", ":0"));
  EXPECT_EQ(mail_.GetHeader("received"), "");
  EXPECT_EQ(mail_.GetHeader("return-path"), "");
}

TEST_F(StdMailStreamTest, MissingHeaderIsEmpty) {
  ReadMailWith("Subject: Hello\n");
  EXPECT_EQ(mail_.GetHeader("from"), "");
  EXPECT_EQ(mail_.GetHeader("from", true), "");
  EXPECT_EQ(mail_.GetHeader(""), "");
}

TEST_F(StdMailStreamTest, SecondHeaderOfANameIsLost) {
  ReadMailWith("Subject: first\nSUBJECT: second\n");
  EXPECT_EQ(mail_.GetHeader("subject"), "first");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: first", ":0"));
}

TEST_F(StdMailStreamTest, AddressHeaderOfTheMailItselfKeepsThePlaceOfTheOffset) {
  ReadMailWith("Address: Main Street 1\n");
  EXPECT_EQ(mail_.GetHeader("address"), "Main Street 1");
  EXPECT_EQ(mail_.Headers()->Count(), 2);
}

TEST_F(StdMailStreamTest, OwnAddressThatIsTextLeavesThePlaceKnown) {
  ChooseRules({.ownAddress = OwnAddress::IsText});
  MailboxBuilder box;
  box.Mail(kPlainHeaders).Mail("Address: 0\nSubject: b\nADDRESS: Main Street\n 1\n");
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(false));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("address"), std::to_string(box.Offset(1)));
  EXPECT_FALSE(mail_.Ledger().hidesOffset);
  EXPECT_THAT(Stored(), ElementsAre(std::string(kSeparator), "Address: 0", "Subject: b",
                                    "ADDRESS: Main Street 1", ":" + std::to_string(box.Offset(1))));
}

TEST_F(StdMailStreamTest, AddressIsTheOffsetOfTheSeparator) {
  MailboxBuilder box;
  box.Raw("rubbish\n").Mail(kPlainHeaders).Mail(kPlainHeaders, "").Mail(kPlainHeaders);
  Open(box.Text());
  for (const std::size_t mail : {0u, 1u, 2u}) {
    ASSERT_TRUE(mail_.ReadHeader(false));
    EXPECT_EQ(mail_.GetHeader("Address"), std::to_string(box.Offset(mail)));
    EXPECT_EQ(mail_.GetHeader("address", true), ":" + std::to_string(box.Offset(mail)));
    EXPECT_EQ(mail_.Percent(), (box.Offset(mail) + 1.0) / static_cast<double>(box.Text().size()));
  }
  EXPECT_FALSE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.Percent(), 1);
}

TEST_F(StdMailStreamTest, FoldedHeaderIsJoinedWithItsWhiteSpace) {
  ReadMailWith("Subject: a\n b\n\tc\nReceived: d\n e\nTo: f\n");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: a b\tc", "Received: d e", "To: f", ":0"));
  EXPECT_EQ(mail_.GetHeader("subject"), "a b\tc");
}

TEST_F(StdMailStreamTest, ContinuationOfADroppedHeaderTakesTheLastOneAway) {
  ReadMailWith("Subject: a\nTo: b\nSubject: c\n d\n");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: a", ":0"));
  ReadMailWith("Subject: a\nTo: b\nSubject: c\n d\n e\n");
  // The second continuation goes to the header of the same name, whose key is then free again.
  EXPECT_THAT(Stored(), ElementsAre("From - x", "Subject: a e", ":0"));
}

TEST_F(StdMailStreamTest, EachMailHasAHeaderStoreOfItsOwn) {
  OpenLines("From - x\nSubject: 1\n\nbody\n\nFrom - y\nSubject: 2\n\nbody\n");
  ASSERT_TRUE(mail_.ReadHeader(false));
  const StdMail::TextListPtr first = mail_.Headers();
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_NE(mail_.Headers(), first);
  EXPECT_EQ(first->Item("subject"), "Subject: 1");
}

TEST_F(StdMailStreamTest, AssignedHeadersAreTheVeryList) {
  const auto headers = std::make_shared<StdMail::TextList>();
  mail_.SetHeaders(headers);
  mail_.AddHeader("Subject: Hello");
  EXPECT_EQ(headers->Item("subject"), "Subject: Hello");
  headers->Add("To: a", "to");
  EXPECT_EQ(mail_.GetHeader("to"), "a");
}

TEST_F(StdMailStreamTest, WithoutAHeaderStoreLookingAndAddingStaySilent) {
  mail_.SetHeaders(nullptr);
  mail_.AddHeader("Subject: Hello");
  EXPECT_EQ(mail_.GetHeader("subject"), "");
  EXPECT_EQ(NumberOf([&] { mail_.GetAllHeaders(); }), static_cast<int>(ErrorNumber::ObjectNotSet));
  OpenLines("From - x\nSubject: Hello\n\nbody\n");
  EXPECT_EQ(NumberOf([&] { mail_.ReadStream(); }), static_cast<int>(ErrorNumber::ObjectNotSet));
  EXPECT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(mail_.GetHeader("subject"), "Hello");
}

TEST_F(StdMailStreamTest, AllHeadersAreLinesOfTheirOwn) {
  ReadMailWith("Subject: a\n b\nReceived: c\n");
  EXPECT_EQ(mail_.GetAllHeaders(), "From - x\r\nSubject: a b\r\nReceived: c\r\n:0\r\n");
}

TEST_F(StdMailStreamTest, DateIsDisplayText) {
  ReadMailWith("Date: Sun, 9 May 2010 14:30:05 +0200\n");
  EXPECT_EQ(mail_.GetDate(), "09.05.2010 14:30:05");
  ReadMailWith("Subject: no date\n");
  EXPECT_EQ(mail_.GetDate(), "00.01.2000 00:00:00");
}

// --- AddHeader

TEST_F(StdMailStreamTest, AddedHeadersFollowTheRulesOfTheStore) {
  mail_.AddHeader("Date: 1");
  mail_.AddHeader("Received: 2");
  mail_.AddHeader("Received: 3");
  mail_.AddHeader("Date: 4");
  EXPECT_THAT(Stored(), ElementsAre("Date: 1", "Received: 2", "Received: 3"));
  EXPECT_EQ(mail_.GetHeader("date"), "1");
  EXPECT_EQ(mail_.GetHeader("received"), "");
}

TEST_F(StdMailStreamTest, ContinuationOfADroppedHeaderIsLeftOutWithIt) {
  ChooseRules({.repeatedHeaders = RepeatedHeaders::LeaveOut});
  ReadMailWith("X-Sign: 1\n a\nSubject: s\nX-Sign: 2\n b\n c\nTo: t\n d\n");
  EXPECT_THAT(Stored(), ElementsAre("From - x", "X-Sign: 1 a", "Subject: s", "To: t d", ":0"));
  for (const std::string_view line : {"Content-Type: a/b;", " c=d", "X-Sign: 3", "x-sign: 4", "\te", "Cc: f"})
    mail_.AddHeader(line);
  EXPECT_EQ(mail_.GetHeader("content-type", true), "Content-Type: a/b;\r\n c=d");
  EXPECT_EQ(mail_.GetHeader("x-sign"), "1 a");
}

TEST_F(StdMailStreamTest, AddedContinuationKeepsItsLineBreak) {
  mail_.AddHeader("Subject: a");
  mail_.AddHeader(" b");
  mail_.AddHeader("\tc");
  EXPECT_THAT(Stored(), ElementsAre("Subject: a\r\n b\r\n\tc"));
  EXPECT_EQ(mail_.GetAllHeaders(), "Subject: a\r\n b\r\n\tc\r\n");
}

TEST_F(StdMailStreamTest, AddedContinuationOnAnEmptyStoreIsAHeaderOfTheLastKey) {
  mail_.AddHeader(" lost");
  EXPECT_THAT(Stored(), ElementsAre(" lost"));
  EXPECT_EQ(mail_.Headers()->Item(""), " lost");
  mail_.Headers()->Clear();
  mail_.AddHeader("Subject: a");
  mail_.Headers()->Clear();
  mail_.AddHeader(" b");
  EXPECT_EQ(mail_.Headers()->Item("subject"), " b");
}

TEST_F(StdMailStreamTest, AddedContinuationOfADroppedHeaderTakesTheLastOneAway) {
  mail_.AddHeader("Date: 1");
  mail_.AddHeader("To: a");
  mail_.AddHeader("Date: 2");
  mail_.AddHeader(" more");
  EXPECT_THAT(Stored(), ElementsAre("Date: 1"));
}

// --- Body

TEST_F(StdMailStreamTest, BodyIsTheCollectedLines) {
  OpenLines("From - x\nX-Mozilla-Status: 0001\n\none\n\nthree\nlast, which the reader never sees\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  EXPECT_THAT(Texts(mail_.BodyLines()), ElementsAre("one", "", "three"));
  EXPECT_EQ(mail_.Body(), "one\r\n\r\nthree\r\n");
}

TEST_F(StdMailStreamTest, BodyIsAsLongAsTheLinesWereWhenCollected) {
  OpenLines("From - x\nX-Mozilla-Status: 0001\n\none\ntwo\nend\n", -1);
  ASSERT_TRUE(mail_.ReadStream());
  mail_.BodyLines()->Remove(2);
  EXPECT_EQ(mail_.Body(), "one\r\n     ");
  mail_.BodyLines()->Add("three");
  EXPECT_EQ(mail_.Body(), "one\r\nthree");
  mail_.BodyLines()->Add("four");
  EXPECT_EQ(mail_.Body(), "one\r\nthree");
}

// --- Emptying a file

TEST_F(StdMailStreamTest, DeleteLeavesAnEmptyFile) {
  const std::string path = folder_.Write("box", std::string(1000, 'x'));
  mail_.Delete(path);
  EXPECT_EQ(folder_.Read("box"), "");
  mail_.Delete(folder_.Path("new"));
  EXPECT_TRUE(folder_.Exists("new"));
}

TEST_F(StdMailStreamTest, DeleteOfAFileThatCannotBeWrittenRaises) {
  const std::string path = folder_.Write("box", "text");
  os::WriteAttributes(path, os::kReadOnly);
  EXPECT_NE(NumberOf([&] { mail_.Delete(path); }), 0);
  EXPECT_EQ(folder_.Read("box"), "text");
  EXPECT_NE(NumberOf([&] { mail_.Delete(folder_.Path("no\\box")); }), 0);
}

// --- Temporary files

TEST_F(StdMailStreamTest, RegisteredFilesAreDeletedOnce) {
  const std::string a = folder_.Write("a", "");
  const std::string b = folder_.Write("b", "");
  mail_.AddTempfile(a);
  mail_.AddTempfile(folder_.Path("missing"));
  mail_.AddTempfile(b);
  mail_.DeleteLastTempfiles();
  EXPECT_FALSE(folder_.Exists("a"));
  EXPECT_FALSE(folder_.Exists("b"));
  folder_.Write("a", "");
  mail_.DeleteLastTempfiles();
  EXPECT_TRUE(folder_.Exists("a"));
}

TEST_F(StdMailStreamTest, TempfileNamedLikeAPatternTakesNoOtherAway) {
  folder_.Write("att1", "");
  mail_.AddTempfile(folder_.Path("att?"));
  mail_.DeleteLastTempfiles();
  EXPECT_TRUE(folder_.Exists("att1"));
}

}  // namespace
}  // namespace vorlent
