#include <array>
#include <cmath>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Calls = std::vector<std::string>;

// A mailbox as the expected calls see it.
struct ExpectedBox {
  std::string file;
  std::vector<std::string> ids;  // of its mails of MailOf
};

class LocationThunderbirdPumpTest : public ThunderbirdFixture {
 protected:
  LocationThunderbirdPumpTest() {
    tree.AddProfile("p", {"a"});
    NoThunderbirdCheck() = false;
  }

  ExpectedBox AddBox(const std::string& name, const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids)
      text += MailOf(id);
    return {tree.AddMailbox("p", "a", name, text), ids};
  }

  // A connector that has taken its address.
  void Prepare(const std::string& address) {
    Connect(address);
    connector->SetRunObserver(&observer);
    connector->InitLocation(address);
    host.Log.Clear();
    platform->calls.clear();
    observer.events.clear();
  }

  // The next record, "end" without one.
  std::string Next() {
    std::string record;
    return connector->SourceGetNext(record) ? record : "end";
  }

  // --- What the host hears

  static Calls Logged(const Calls& reports) {
    return Calls{"Global.SetLogEnabled(true)"} + reports + Calls{"Global.SetLogEnabled(false)"};
  }

  Calls InitCalls() const {
    const std::string title = "Import Thunderbird " + location->Address;
    return Logged({Report(33, ""), Report(32, "0/100:" + title), Report(29, " " + title)}) +
           Calls{"Global.SetProgressVisible(true)"};
  }

  Calls OpenCalls(const ExpectedBox& box) const {
    return Logged({Report(29, "  " + box.file),
                   Report(33, "Import Thunderbird " + location->Address + ": " + box.file)});
  }

  static Calls EndCalls(int delivered) {
    return Calls{"Global.SetProgressVisible(false)"} +
           Logged({Report(32, ""), Report(29, "  finished (" + std::to_string(delivered) + " Items)")});
  }

  // The calls of a whole run in no time.
  Calls RunCalls(const std::vector<ExpectedBox>& boxes) const {
    double total = 0;
    for (const ExpectedBox& box : boxes)
      total += Size(box);
    Calls calls = InitCalls();
    double done = 0;
    int delivered = 0;
    for (const ExpectedBox& box : boxes) {
      calls = calls + OpenCalls(box);
      double offset = 0;
      for (const std::string& id : box.ids) {
        const double percent = (offset + 1) / Size(box);
        calls = calls + Logged({Report(32, NumberText((percent * Size(box) + done) * 100 / total))});
        offset += static_cast<double>(MailOf(id).size());
        ++delivered;
      }
      done += Size(box);
      Calls closing;
      if (total > 0) closing.push_back(Report(32, NumberText(done * 100 / total)));
      closing.push_back(Report(29, "   " + std::to_string(box.ids.size()) + " Items in 0 Sekunden"));
      calls = calls + Logged(closing);
    }
    return calls + EndCalls(delivered);
  }

  // The place of the n-th mail of MailOf in a mailbox, from 0.
  static std::string At(std::size_t n) { return " at " + std::to_string(n * MailOf("1").size()); }

  test::RecordingRunObserver observer;

  static double Size(const ExpectedBox& box) { return static_cast<double>(ReadBytes(box.file).size()); }

  Calls LogLines() {
    Calls lines;
    for (const std::string& call : host.Log.Only({"Global.Report(29,"})) {
      lines.push_back(call.substr(18, call.size() - 18 - 10));
    }
    return lines;
  }
};

// --- Whole runs

TEST_F(LocationThunderbirdPumpTest, OneMailboxIsStreamedMailByMail) {
  const ExpectedBox box = AddBox("Inbox", {"1", "2"});
  Prepare("thunderbird://p/a/Inbox/-");
  const Calls records = Stream();
  EXPECT_EQ(host.Log.Lines(), RunCalls({box}));
  EXPECT_THAT(
      records,
      ElementsAre(
          RecordOf("1", "S", "Account=a,Inbox", MailOf("1").size() + kSeparatorLine.size(), box.file, 0) +
              "|Source=thunderbird://p/a/Inbox/",
          RecordOf("2", "S", "Account=a,Inbox", MailOf("2").size(), box.file, MailOf("1").size()) +
              "|Source=thunderbird://p/a/Inbox/"));
  EXPECT_EQ(platform->CountOf("YieldOnce"), 200);
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(LocationThunderbirdPumpTest, MailboxesAreStreamedOneBehindTheOther) {
  const std::vector<ExpectedBox> boxes = {AddBox("A", {"1", "2", "3"}), AddBox("B", {}), AddBox("C", {"4"})};
  Prepare("thunderbird://p/a");
  EXPECT_EQ(Stream().size(), 4U);
  EXPECT_EQ(host.Log.Lines(), RunCalls(boxes));
}

TEST_F(LocationThunderbirdPumpTest, WithoutMailboxesTheRunEndsAtOnce) {
  Prepare("thunderbird://p/a/*");
  EXPECT_THAT(Stream(), IsEmpty());
  EXPECT_EQ(host.Log.Lines(), InitCalls() + EndCalls(0));
}

TEST_F(LocationThunderbirdPumpTest, EmptyMailboxesReportNoPercentage) {
  const ExpectedBox box = AddBox("Inbox", {});
  Prepare("thunderbird://p/a");
  EXPECT_THAT(Stream(), IsEmpty());
  EXPECT_EQ(host.Log.Lines(),
            InitCalls() + OpenCalls(box) + Logged({Report(29, "   0 Items in 0 Sekunden")}) + EndCalls(0));
}

TEST_F(LocationThunderbirdPumpTest, MailThatCameBehindTheCountOfBytesReportsNoPercentage) {
  const ExpectedBox box = AddBox("Inbox", {});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  host.Log.Clear();
  // The mail arrives while the mailbox is opened.
  host.Log.OnCall = [&](const std::string& line) {
    if (line.starts_with("Global.Report(33,")) WriteBytes(box.file, MailOf("1"));
  };
  EXPECT_NE(Next(), "end");
  EXPECT_EQ(host.Log.Lines(), OpenCalls(box) + Logged({}));
}

TEST_F(LocationThunderbirdPumpTest, SwitchOfTheLogIsBroughtBack) {
  AddBox("Inbox", {"1"});
  Prepare("thunderbird://p/a");
  host.Global.IsLogEnabled = true;
  Stream();
  EXPECT_THAT(host.Log.Lines(), Not(testing::Contains("Global.SetLogEnabled(false)")));
  EXPECT_TRUE(host.Global.IsLogEnabled);
}

TEST_F(LocationThunderbirdPumpTest, MailsOfOneIdAreNumberedAsTheyAreListed) {
  const std::string expunged = OrdinaryMail{.subject = "a", .status = "0009", .body = "gone\r\n"}.Bytes();
  tree.AddMailbox("p", "a", "Inbox", expunged + MailOf("1", "b") + MailOf("2") + MailOf("1", "c"));
  tree.AddMailbox("p", "a", "Sent", MailOf("1", "d"));
  const auto ids = [&] {
    Prepare("thunderbird://p/a");
    std::vector<std::string> found;
    for (const std::string& record : Stream())
      found.push_back(GetParam(record, "ID"));
    return found;
  };
  const std::string one = "20100509143005-1@x", two = "20100509143005-2@x";
  EXPECT_THAT(ids(), ElementsAre(one, two, one, one));
  const ScopedRules rules({.equalIds = EqualIds::Numbered});
  EXPECT_THAT(ids(), ElementsAre(one + "~2", two, one + "~3", one + "~4"));
}

TEST_F(LocationThunderbirdPumpTest, RunCanBeRepeated) {
  const ExpectedBox box = AddBox("Inbox", {"1"});
  Prepare("thunderbird://p/a");
  Stream();
  host.Log.Clear();
  EXPECT_EQ(Stream().size(), 1U);
  EXPECT_EQ(host.Log.Lines(), RunCalls({box}));
}

TEST_F(LocationThunderbirdPumpTest, RunStartsAnewInTheMiddleOfAnother) {
  AddBox("Inbox", {"1", "2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  EXPECT_EQ(Stream().size(), 2U);
}

TEST_F(LocationThunderbirdPumpTest, RunGoesOnWhereANewOneCannotBegin) {
  AddBox("Inbox", {"1", "2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  EXPECT_THAT(Next(), testing::HasSubstr("-1@x|"));
  host.Log.FailOn("Global.Report(29,");
  EXPECT_THROW(connector->SourceInit(nullptr, false), Failure);
  EXPECT_THAT(Next(), testing::HasSubstr("-2@x|"));
  EXPECT_EQ(Next(), "end");
}

TEST_F(LocationThunderbirdPumpTest, HeaderThatIsNoOffsetFailsWhenItsMailIsMarked) {
  std::string mail = MailOf("1");
  mail.insert(mail.find("Subject"), "Address: 3000000000\r\n");
  tree.AddMailbox("p", "a", "Inbox", mail);
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  connector->SourceDelete();
  try {
    Next();
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::Overflow));
  }
}

TEST_F(LocationThunderbirdPumpTest, MailThatIsNotDeliveredIsNamedAndTheNextOneComes) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  AddBox("A", {"1", "2", "3"});
  Prepare("thunderbird://p/a");
  // The second report of the progress comes with the first mail.
  host.Log.FailOn("Global.Report(32,", 3);
  const Calls records = Stream();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_THAT(records[1], testing::HasSubstr("-3@x|"));
  ASSERT_EQ(observer.events.size(), 3U);
  EXPECT_THAT(observer.events[1], testing::StartsWith("failed A" + At(1) + ": "));
}

TEST_F(LocationThunderbirdPumpTest, NothingCanBeFetchedBeforeTheFirstRun) {
  AddBox("Inbox", {"1"});
  Prepare("thunderbird://p/a");
  try {
    Next();
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::ObjectNotSet));
  }
}

TEST_F(LocationThunderbirdPumpTest, KeywordPathsOfTheMailboxesAreAddedToTheGivenTree) {
  AddBox("A", {});
  AddBox("A.sbd/B", {"1"});
  Prepare("thunderbird://p/a");
  const auto given = std::make_shared<test::RecordingTree>(host.Log, "given");
  Stream(given);
  EXPECT_THAT(host.Log.Only({"given"}), ElementsAre("given.AddKeywordPath(\"Account=a,A\")",
                                                    "given.AddKeywordPath(\"Account=a,A,B\")"));
}

TEST_F(LocationThunderbirdPumpTest, SourceIsEscaped) {
  AddBox("x|y", {"1"});
  Prepare("thunderbird://p/a");
  const Calls records = Stream();
  ASSERT_EQ(records.size(), 1U);
  EXPECT_TRUE(records[0].ends_with("|Source=thunderbird://p/a/x\\|y"));
  EXPECT_EQ(GetParam(records[0], "Source"), "thunderbird://p/a/x|y");
}

// --- Times

struct TimeRow {
  DateTime start;
  std::int64_t milliseconds;
  std::string text;
};

TEST_F(LocationThunderbirdPumpTest, TimeOfAMailboxIsRoundedAndGivesTheRate) {
  AddBox("Inbox", {"1"});
  const DateTime noon = {2010, 5, 9, 12, 0, 0, 0};
  const DateTime late = {2010, 5, 9, 23, 59, 58, 0};
  for (const TimeRow& row :
       {TimeRow{noon, 0, "1 Items in 0 Sekunden"}, TimeRow{noon, 499, "1 Items in 0 Sekunden"},
        TimeRow{noon, 500, "1 Items in 1 Sekunden = 1 Items/Sekunde"},
        TimeRow{noon, 1499, "1 Items in 1 Sekunden = 1 Items/Sekunde"},
        TimeRow{noon, 2000, "1 Items in 2 Sekunden = 0.5 Items/Sekunde"},
        TimeRow{noon, 3000, "1 Items in 3 Sekunden = 0.333333333333333 Items/Sekunde"},
        TimeRow{noon, 3600000, "1 Items in 3600 Sekunden = 0.000277777777777778 Items/Sekunde"},
        // Midnight makes the time negative, and a rate is told of positive times only.
        TimeRow{late, 7000, "1 Items in -86393 Sekunden"}}) {
    SCOPED_TRACE(row.text);
    Prepare("thunderbird://p/a");
    platform->now = row.start;
    host.Log.OnCall = [&](const std::string& line) {
      if (line.starts_with("Global.Report(33,\"Import")) platform->AdvanceClock(row.milliseconds);
    };
    Stream();
    EXPECT_EQ(LogLines()[2], "   " + row.text);
  }
}

TEST_F(LocationThunderbirdPumpTest, EachMailboxHasItsOwnTimeAndCount) {
  const ExpectedBox a = AddBox("A", {"1", "2", "3"});
  const ExpectedBox b = AddBox("B", {"4"});
  Prepare("thunderbird://p/a");
  platform->onYield = [&] { platform->AdvanceClock(10); };
  Stream();
  EXPECT_THAT(LogLines(), ElementsAre(" Import Thunderbird thunderbird://p/a", "  " + a.file,
                                      "   3 Items in 3 Sekunden = 1 Items/Sekunde", "  " + b.file,
                                      "   1 Items in 1 Sekunden = 1 Items/Sekunde", "  finished (4 Items)"));
}

// --- Cancelling

TEST_F(LocationThunderbirdPumpTest, CancelledRunStillDeliversTheMailAtHandAndThenEnds) {
  const ExpectedBox first = AddBox("A", {"1", "2", "3"});
  AddBox("B", {"4"});
  // In the first mail, in the middle, and in the last mail of the first mailbox.
  for (int at = 1; at <= 3; ++at) {
    SCOPED_TRACE(at);
    Prepare("thunderbird://p/a");
    host.Global.IsCancelled = false;
    int yields = 0;
    platform->onYield = [&] { host.Global.IsCancelled = ++yields >= at * 100; };
    const Calls records = Stream();
    ASSERT_EQ(records.size(), static_cast<std::size_t>(at));
    EXPECT_EQ(GetParam(records.back(), "ID"), "20100509143005-" + std::to_string(at) + "@x");
    EXPECT_THAT(LogLines(), ElementsAre(" Import Thunderbird thunderbird://p/a", "  " + first.file,
                                        "  finished (" + std::to_string(at) + " Items)"));
    EXPECT_EQ(host.Log.Only({"Global.SetProgressVisible"}).back(), "Global.SetProgressVisible(false)");
  }
}

TEST_F(LocationThunderbirdPumpTest, CancelledRunDeletesNothingOfTheMailboxAtHand) {
  const ExpectedBox box = AddBox("A", {"1", "2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  connector->SourceDelete();
  host.Global.IsCancelled = true;
  EXPECT_NE(Next(), "end");
  connector->SourceDelete();
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(ReadBytes(box.file), MailOf("1") + MailOf("2"));
  EXPECT_TRUE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A.msf"));
}

TEST_F(LocationThunderbirdPumpTest, CancelAtTheEndOfAMailboxEndsTheRunBehindIt) {
  const ExpectedBox first = AddBox("A", {"1"});
  const ExpectedBox second = AddBox("B", {"2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  connector->SourceDelete();
  // Asked for only between the last mail and the end.
  host.Global.IsCancelled = true;
  EXPECT_EQ(Next(), "end");
  EXPECT_THAT(LogLines(), ElementsAre(" Import Thunderbird thunderbird://p/a", "  " + first.file,
                                      "   1 Items in 0 Sekunden", "  finished (1 Items)"));
  EXPECT_EQ(StatusOf(ReadBytes(first.file), 0), '9');
  EXPECT_EQ(ReadBytes(second.file), MailOf("2"));
}

TEST_F(LocationThunderbirdPumpTest, EndedRunEndsAgainWithoutHarm) {
  AddBox("A", {"1"});
  Prepare("thunderbird://p/a");
  Stream();
  host.Log.Clear();
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(host.Log.Lines(), EndCalls(1));
}

TEST_F(LocationThunderbirdPumpTest, RunCancelledBetweenTwoMailboxesGoesOnWithANewOneOnly) {
  AddBox("A", {"1"});
  const ExpectedBox second = AddBox("B", {"2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  host.Global.IsCancelled = true;
  EXPECT_EQ(Next(), "end");
  host.Global.IsCancelled = false;
  try {
    Next();
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::ObjectNotSet));
  }
  EXPECT_EQ(ReadBytes(second.file), MailOf("2"));
  EXPECT_EQ(Stream().size(), 2U);
}

// --- Marking mails

TEST_F(LocationThunderbirdPumpTest, MarkedMailsGoAtTheEndOfTheirMailbox) {
  const ExpectedBox first = AddBox("A", {"1", "2", "3"});
  const ExpectedBox second = AddBox("B", {"4"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  for (const std::string id : {"1", "2", "3"}) {
    EXPECT_EQ(GetParam(Next(), "ID"), "20100509143005-" + id + "@x");
    if (id != "2") connector->SourceDelete();
    EXPECT_EQ(ReadBytes(first.file), MailOf("1") + MailOf("2") + MailOf("3"));
  }
  EXPECT_EQ(GetParam(Next(), "ID"), "20100509143005-4@x");
  const std::size_t size = MailOf("1").size();
  std::string expected = MailOf("1") + MailOf("2") + MailOf("3");
  const std::size_t digit = expected.find("Status: 0001") + 11;
  expected[digit] = '9';
  expected[digit + 2 * size] = '9';
  EXPECT_EQ(ReadBytes(first.file), expected);
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A.msf"));
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(ReadBytes(second.file), MailOf("4"));
  EXPECT_TRUE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/B.msf"));
  EXPECT_EQ(Stream().size(), 2U);
}

TEST_F(LocationThunderbirdPumpTest, MarkBehindTheLastMailOfARunStillDeletesIt) {
  const ExpectedBox box = AddBox("A", {"1"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  connector->SourceDelete();
  EXPECT_EQ(StatusOf(ReadBytes(box.file), 0), '1');
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(StatusOf(ReadBytes(box.file), 0), '9');
}

TEST_F(LocationThunderbirdPumpTest, MarksOfAnEarlierMailboxAreForgotten) {
  const ExpectedBox first = AddBox("A", {"1"});
  const ExpectedBox second = AddBox("B", {"2"});
  Prepare("thunderbird://p/a");
  // A mark before the first mail, and one after the end, belong to no mailbox.
  connector->SourceDelete();
  Stream();
  connector->SourceDelete();
  Stream();
  EXPECT_EQ(ReadBytes(first.file), MailOf("1"));
  EXPECT_EQ(ReadBytes(second.file), MailOf("2"));
}

TEST_F(LocationThunderbirdPumpTest, MarkOfAMailWithAnAddressOfItsOwnGoesToThatPlace) {
  const std::string first = MailOf("1");
  std::string second = MailOf("2");
  second.insert(second.find("Subject"), "Address: 0\r\n");
  const std::string file = tree.AddMailbox("p", "a", "A", first + second);
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  EXPECT_EQ(GetParam(Next(), "Data_SourceOffset"), "0");
  EXPECT_THAT(observer.events, ElementsAre("delivered A at 0", "delivered A" + At(1) + ", hidden"));
  connector->SourceDelete();
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(StatusOf(ReadBytes(file), 0), '9');
  EXPECT_EQ(StatusOf(ReadBytes(file), first.size()), '1');
}

TEST_F(LocationThunderbirdPumpTest, MarkedMailsThatStayAreTold) {
  std::string bare = MailOf("2");
  bare.erase(bare.find("X-Mozilla"), 25);
  tree.AddMailbox("p", "a", "A", MailOf("1") + bare);
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  while (Next() != "end")
    connector->SourceDelete();
  EXPECT_THAT(observer.events, ElementsAre("delivered A at 0", "delivered A" + At(1), "marking in A",
                                           "not marked A" + At(1) + ": NoStatus"));
}

TEST_F(LocationThunderbirdPumpTest, OnlyMailsThatStillStandWhereTheyWereReadAreMarked) {
  const ExpectedBox box = AddBox("A", {"1", "2", "3"});
  const ExpectedBox later = AddBox("B", {"4"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  for (int mail = 0; mail < 3; ++mail) {
    Next();
    connector->SourceDelete();
  }
  // The first mail went, another came after it, and the last is where it was.
  const std::string rewritten = MailOf("2") + MailOf("5") + MailOf("3");
  WriteBytes(box.file, rewritten);
  Next();
  connector->SourceDelete();
  EXPECT_EQ(Next(), "end");
  std::string expected = rewritten;
  expected[expected.rfind("Status: 0001") + 11] = '9';
  EXPECT_EQ(ReadBytes(box.file), expected);
  EXPECT_EQ(StatusOf(ReadBytes(later.file), 0), '9');
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A.msf"));
  EXPECT_THAT(observer.events,
              ElementsAre("delivered A at 0", "delivered A" + At(1), "delivered A" + At(2), "marking in A",
                          "not marked A at 0: OtherMail", "not marked A" + At(1) + ": OtherMail",
                          "delivered B at 0", "marking in B"));
}

TEST_F(LocationThunderbirdPumpTest, MailboxThatBecameShorterOrIsGoneKeepsItsMailsAndTheRunGoesOn) {
  for (const bool isGone : {false, true}) {
    const ExpectedBox box = AddBox("A", {"1", "2"});
    AddBox("B", {"3"});
    Prepare("thunderbird://p/a");
    connector->SourceInit(nullptr, false);
    for (int mail = 0; mail < 2; ++mail) {
      Next();
      connector->SourceDelete();
    }
    if (isGone) {
      std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/A"));
    } else {
      WriteBytes(box.file, MailOf("2"));
    }
    EXPECT_EQ(GetParam(Next(), "ID"), "20100509143005-3@x");
    EXPECT_EQ(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A"), !isGone);
    if (!isGone) {
      EXPECT_EQ(ReadBytes(box.file), MailOf("2"));
    }
    EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A.msf"));
    EXPECT_THAT(observer.events, ElementsAre("delivered A at 0", "delivered A" + At(1), "marking in A",
                                             "not marked A at 0: OtherMail",
                                             "not marked A" + At(1) + ": OtherMail", "delivered B at 0"));
  }
}

TEST_F(LocationThunderbirdPumpTest, StreamIsClosedWhenMarkingIsTold) {
  const ExpectedBox box = AddBox("A", {"1"});
  Prepare("thunderbird://p/a");
  observer.onMarking = [&](const std::string& mailbox) {
    EXPECT_EQ(mailbox, box.file);
    EXPECT_EQ(ReadBytes(box.file), MailOf("1"));
    for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code vanished;
      EXPECT_NE(std::filesystem::read_symlink(open.path(), vanished),
                tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/A"));
    }
  };
  connector->SourceInit(nullptr, false);
  Next();
  connector->SourceDelete();
  EXPECT_EQ(Next(), "end");
  EXPECT_THAT(observer.events, ElementsAre("delivered A at 0", "marking in A"));
}

TEST_F(LocationThunderbirdPumpTest, FailureBeforeMarkingEndsTheRunWithNothingMarked) {
  const ExpectedBox box = AddBox("A", {"1", "2"});
  Prepare("thunderbird://p/a");
  observer.onMarking = [](const std::string&) { throw Failure(ErrorNumber::DeviceIo, "no"); };
  connector->SourceInit(nullptr, false);
  for (int mail = 0; mail < 2; ++mail) {
    Next();
    connector->SourceDelete();
  }
  EXPECT_THROW(Next(), Failure);
  EXPECT_EQ(ReadBytes(box.file), MailOf("1") + MailOf("2"));
  EXPECT_TRUE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/A.msf"));
}

// --- What the observer hears

TEST_F(LocationThunderbirdPumpTest, ObserverHearsWhatBecameOfEveryMail) {
  std::string expunged = MailOf("0");
  expunged[expunged.find("Status: 0001") + 11] = '9';
  tree.AddMailbox("p", "a", "A", expunged + MailOf("1") + expunged + expunged + MailOf("2") + expunged);
  AddBox("B", {"3"});
  Prepare("thunderbird://p/a");
  for (int run = 0; run < 2; ++run) {
    observer.events.clear();
    EXPECT_EQ(Stream().size(), 3U);
    EXPECT_THAT(observer.events, ElementsAre("expunged 1", "delivered A" + At(1), "expunged 2",
                                             "delivered A" + At(4), "expunged 1", "delivered B at 0"));
  }
  connector->SetRunObserver(nullptr);
  EXPECT_EQ(Stream().size(), 3U);
}

TEST_F(LocationThunderbirdPumpTest, MailboxThatIsNoneCountsAsFailedToday) {
  std::string expunged = MailOf("0");
  expunged[expunged.find("Status: 0001") + 11] = '9';
  tree.AddMailbox("p", "a", "A", std::string(1000, '\0'));
  tree.AddMailbox("p", "a", "B", MailOf("1"));
  tree.AddMailbox("p", "a", "C", expunged);
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  Prepare("thunderbird://p/a");
  EXPECT_EQ(Stream().size(), 1U);
  EXPECT_THAT(observer.events, ElementsAre("failed A at 0: kein Postfach; keine Mail darin",
                                           "delivered B at 0", "expunged 1"));
}

TEST_F(LocationThunderbirdPumpTest, MailThatRaisesIsToldWithItsReason) {
  const std::string bad = "From - x\r\nContent-Type: a; boundary==?x?Q?=ZZ?=\r\n\r\nbody\r\n\r\n";
  std::string expunged = MailOf("0");
  expunged[expunged.find("Status: 0001") + 11] = '9';
  tree.AddMailbox("p", "a", "A", MailOf("1") + expunged + bad + MailOf("2"));
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  std::string reason;
  try {
    Next();
  } catch (const Failure& failure) {
    reason = failure.what();
  }
  EXPECT_NE(reason, "");
  EXPECT_THAT(observer.events,
              ElementsAre("delivered A at 0", "expunged 1", "failed A" + At(2) + ": " + reason));
}

// --- Failures

TEST_F(LocationThunderbirdPumpTest, MissingMailboxFailsBeforeAnythingIsDelivered) {
  AddBox("A", {"1"});
  const ExpectedBox missing = AddBox("B", {});
  Prepare("thunderbird://p/a");
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/B"));
  connector->SourceInit(nullptr, false);
  host.Log.Clear();
  for (int i = 0; i < 2; ++i) {
    try {
      Next();
      FAIL();
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.Is(ErrorNumber::FileNotFound));
    }
    EXPECT_THAT(host.Log.Lines(), IsEmpty());
  }
  // Once it is there the same run begins.
  WriteBytes(missing.file, MailOf("2"));
  EXPECT_EQ(GetParam(Next(), "ID"), "20100509143005-1@x");
  EXPECT_EQ(GetParam(Next(), "ID"), "20100509143005-2@x");
}

TEST_F(LocationThunderbirdPumpTest, MailboxThatVanishesInTheRunFailsWhenItIsOpened) {
  AddBox("A", {"1"});
  AddBox("B", {"2"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/B"));
  EXPECT_THROW(Next(), Failure);
  // The run stands in a mailbox without an open stream, which is at its end.
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(LogLines().back(), "  finished (1 Items)");
}

TEST_F(LocationThunderbirdPumpTest, FailedCallsOfTheHostRise) {
  AddBox("A", {"1"});
  // A whole run on a host of its own, in which the n-th call of that line fails.
  const auto run = [&](test::RecordingHost& fresh, const std::string& failing, int nth) {
    fresh.Global.TemporaryPath = temporary.Path() + "\\";
    const auto pump = std::make_shared<Location_Thunderbird>();
    pump->SetLocObject(fresh.MakeLocation("thunderbird://p/a"));
    pump->InitLocation("thunderbird://p/a");
    fresh.Log.Clear();
    if (nth > 0) fresh.Log.FailOn(failing, nth);
    pump->SourceInit(std::make_shared<test::RecordingTree>(fresh.Log, "given"), false);
    for (std::string record; pump->SourceGetNext(record);) {
    }
  };
  test::RecordingHost clean;
  clean.Log.RecordReads = true;
  run(clean, "", 0);
  std::map<std::string, int> counts;
  for (const std::string& line : clean.Log.Lines()) {
    const int nth = ++counts[line];
    // The record of a mail is made whatever its fields cost.
    if (line == "Global.UserName") continue;
    SCOPED_TRACE(line + " " + std::to_string(nth));
    test::RecordingHost fresh;
    EXPECT_THROW(run(fresh, line, nth), Failure);
  }
}

TEST_F(LocationThunderbirdPumpTest, FailedReportLeavesTheLogOnAndTheRunWhereItStood) {
  AddBox("A", {"1"});
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, false);
  Next();
  host.Log.Clear();
  host.Log.FailOn("Global.Report(29,");
  EXPECT_THROW(Next(), Failure);
  EXPECT_EQ(host.Log.Lines(),
            Calls({"Global.SetLogEnabled(true)", Report(32, "100"), Report(29, "   1 Items in 0 Sekunden")}));
  EXPECT_TRUE(host.Global.IsLogEnabled);
}

TEST_F(LocationThunderbirdPumpTest, MailThatCouldNotBeReadToItsEndIsNotMarked) {
  std::string second = MailOf("2");
  for (int i = 0; i < 10'000; ++i)
    second.insert(second.size() - 2, "a line of a long body\r\n");
  const std::string bytes = MailOf("1") + second + MailOf("3");
  for (const bool saves : {false, true}) {
    const std::string box = tree.AddMailbox("p", "a", "A", bytes);
    Prepare("thunderbird://p/a/A");
    connector->SourceInit(nullptr, saves);
    const DiskFault fault({.calls = DiskCall::Read, .number = 2, .pathEnd = "/A"});
    while (Next() != "end")
      connector->SourceDelete();
    EXPECT_TRUE(fault.WasReached());
    EXPECT_THAT(
        observer.events,
        ElementsAre("delivered A at 0", testing::StartsWith("failed A" + At(1) + ": " + box + ": "),
                    "delivered A at " + std::to_string(MailOf("1").size() + second.size()), "marking in A"));
    std::string expected = bytes;
    expected[expected.find("Status: 0001") + 11] = '9';
    expected[expected.rfind("Status: 0001") + 11] = '9';
    EXPECT_EQ(ReadBytes(box), expected);
  }
}

// --- Files of the mails

// A mail with a text part and one attachment "a.txt" of the bytes "Hello".
std::string MailWithAttachment(const std::string& id) {
  return kSeparatorLine + "X-Mozilla-Status: 0000\r\nMessage-ID: <" + id +
         "@x>\r\nDate: Sun, 9 May 2010 14:30:05 +0200\r\nSubject: A\r\nContent-Type: multipart/mixed; "
         "boundary=\"b\"\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\nText\r\n--b\r\nContent-Type: "
         "text/plain\r\n"
         "Content-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=\"a.txt\"\r\n\r\n"
         "SGVsbG8=\r\n--b--\r\n\r\n";
}

class MailFilesTest : public LocationThunderbirdPumpTest {
 protected:
  // The names in the temporary folder of the connector.
  Calls OwnTemporaryNames() {
    Calls names;
    for (const auto& entry :
         std::filesystem::directory_iterator(temporary.Native() / TemporaryNames().front())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  // Reads a mailbox of these bytes into items.
  void ReadInbox(const std::string& bytes) {
    inbox = tree.AddMailbox("p", "a", "Inbox", bytes);
    Read("thunderbird://p/a/Inbox/-");
    platform->calls.clear();
    host.Log.Clear();
  }

  std::string inbox;
};

TEST_F(MailFilesTest, FilesOfTheMailAtHandAloneAreInTheTemporaryFolder) {
  inbox = tree.AddMailbox("p", "a", "Inbox", MailWithAttachment("1") + MailOf("2"));
  Prepare("thunderbird://p/a");
  connector->SourceInit(nullptr, true);
  const std::string first = Next();
  EXPECT_EQ(GetParam(first, "Data_SourceFile"), "");
  EXPECT_EQ(OwnTemporaryNames(), Calls({"a.txt", "mail.eml"}));
  const std::string attachment = GetParam(first, "DataFileAttach1");
  EXPECT_EQ(ReadBytes(PeekToken(attachment, "\r\n")), "Hello");
  const std::string second = Next();
  EXPECT_EQ(OwnTemporaryNames(), Calls({"mail.eml"}));
  EXPECT_EQ(ReadBytes(PeekToken(GetParam(second, "DataFile"), "\r\n")), MailOf("2"));
  EXPECT_EQ(Next(), "end");
  EXPECT_THAT(OwnTemporaryNames(), IsEmpty());
}

TEST_F(MailFilesTest, MailIsBroughtOutOfTheMailbox) {
  ReadInbox(MailOf("1") + MailOf("2"));
  const std::string target = temporary.Path() + "\\20100509143005-1@x.eml";
  EXPECT_EQ(connector->GetFile(connector->Item(1), "File"), target);
  EXPECT_EQ(ReadBytes(target), MailOf("1"));
  EXPECT_THAT(platform->calls, ElementsAre("SetPointer(busy)", "SetPointer(default)"));
  EXPECT_EQ(GetFileDate(target), "09.05.2010 14:30:05");
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

TEST_F(MailFilesTest, ContentsOfAttachmentsAreLeftOutOfTheMailAndBroughtOutAlone) {
  ReadInbox(MailWithAttachment("1") + MailOf("2"));
  const ItemPtr item = connector->Item(1);
  EXPECT_EQ(ReadBytes(connector->GetFile(item, "FileAttach1")), "Hello");
  EXPECT_TRUE(temporary.Exists("20100509143005-1@x#2_a.txt"));
  std::string expected = MailWithAttachment("1");
  expected.erase(expected.find("SGVsbG8=\r\n"), 10);
  EXPECT_EQ(ReadBytes(connector->GetFile(item, "File")), expected);
}

TEST_F(MailFilesTest, MailWithAnAddressOfItsOwnBringsOutWhatLiesThere) {
  std::string second = MailOf("2");
  second.insert(second.find("Subject"), "Address: 0\r\n");
  ReadInbox(MailOf("1") + second);
  const std::string target = connector->GetFile(connector->Item(2), "File");
  EXPECT_EQ(target, temporary.Path() + "\\20100509143005-2@x.eml");
  EXPECT_EQ(ReadBytes(target), MailOf("1"));
}

TEST_F(MailFilesTest, PathAloneIsAskedForByAnyOtherOption) {
  ReadInbox(MailOf("1"));
  for (const GetFileOption option : {1, -1, 2}) {
    platform->calls.clear();
    EXPECT_EQ(connector->GetFile(connector->Item(1), "File", option),
              temporary.Path() + "\\20100509143005-1@x.eml");
    EXPECT_FALSE(temporary.Exists("20100509143005-1@x.eml"));
    EXPECT_THAT(platform->calls, ElementsAre("SetPointer(busy)", "SetPointer(default)"));
  }
}

TEST_F(MailFilesTest, FileThatTheItemDoesNotHaveLeavesTheBareFolder) {
  ReadInbox(MailOf("1"));
  EXPECT_EQ(connector->GetFile(connector->Item(1), "FileHTML", 1), temporary.Path() + "\\");
}

TEST_F(MailFilesTest, AttachmentNumberBeyondSixteenBitsIsAnOverflow) {
  const auto item = host.MakeItem();
  item->Data = {{"File", "x#70000_a"}, {"_SourceFile", "C:\\none"}, {"_SourceOffset", "0"}};
  Connect("thunderbird://p");
  try {
    connector->GetFile(item, "File");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::Overflow));
  }
}

TEST_F(MailFilesTest, OffsetBeyondTwoGigabytesIsAnOverflow) {
  const auto item = host.MakeItem();
  item->Data = {{"File", "x.eml"}, {"_SourceFile", "C:\\none"}, {"_SourceOffset", "2147483648"}};
  Connect("thunderbird://p");
  EXPECT_THROW(connector->GetFile(item, "File"), Failure);
  EXPECT_THROW(connector->DeleteItem(item), Failure);
}

TEST_F(MailFilesTest, NoItemIsAFailureThatLeavesThePointerBusy) {
  Connect("thunderbird://p");
  EXPECT_THROW(connector->GetFile(nullptr, "File"), Failure);
  EXPECT_THAT(platform->calls, ElementsAre("SetPointer(busy)"));
}

// --- Deleting an item

TEST_F(MailFilesTest, DeletedItemLeavesItsMailboxAtOnce) {
  ReadInbox(MailOf("1") + MailOf("2"));
  EXPECT_TRUE(connector->DeleteItem(connector->Item(2)));
  std::string expected = MailOf("1") + MailOf("2");
  expected[expected.rfind("Status: 0001") + 11] = '9';
  EXPECT_EQ(ReadBytes(inbox), expected);
  EXPECT_EQ(connector->Count(), 1);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Global.Report(38,\"\",item2)",
                                            "Location(\"thunderbird://p/a/Inbox/-\").SetChanged(true)"));
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox.msf"));
}

TEST_F(MailFilesTest, ItemGoesThoughTheUserKeepsTheMail) {
  ReadInbox(MailOf("1"));
  connector->SetRunObserver(&observer);
  platform->processes = {{{17, "thunderbird.exe"}}};
  platform->messageAnswers = {MessageAnswer::Cancel};
  EXPECT_TRUE(connector->DeleteItem(connector->Item(1)));
  EXPECT_EQ(ReadBytes(inbox), MailOf("1"));
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_THAT(observer.events, ElementsAre("not marked Inbox at 0: KeptByUser"));
}

// What the host hears of a deletion of the second item, whatever became of its mail.
const Calls kDeletionCalls = {"Global.Report(38,\"\",item2)",
                              "Location(\"thunderbird://p/a/Inbox/-\").SetChanged(true)"};

TEST_F(MailFilesTest, ItemWhoseMailIsNoLongerThereGoesAndNothingIsMarked) {
  const std::string second = MailOf("2");
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string mail = second;
    return mail.replace(mail.find(from), from.size(), to);
  };
  for (const std::string& there :
       {MailOf("3"), MailOf("2", "T"), changed("a@b.c", "x@b.c"), changed("d@e.f", "x@e.f"),
        changed("To:", "Cc: g@h.i\r\nTo:"), changed("To:", "Bcc: g@h.i\r\nTo:"),
        changed("To:", "Envelope-To: g@h.i\r\nTo:"), changed(":30:05 +", ":30:06 +"),
        changed("From - Sun", "Fram - Sun"), std::string()}) {
    ReadInbox(MailOf("1") + second + MailOf("9"));
    connector->SetRunObserver(&observer);
    observer.events.clear();
    const std::string rewritten = MailOf("1") + there + MailOf("9");
    WriteBytes(inbox, rewritten);
    EXPECT_TRUE(connector->DeleteItem(connector->Item(2)));
    EXPECT_EQ(ReadBytes(inbox), rewritten) << there;
    EXPECT_EQ(connector->Count(), 2);
    EXPECT_EQ(host.Log.Lines(), kDeletionCalls);
    EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox.msf"));
    EXPECT_THAT(observer.events, ElementsAre("not marked Inbox" + At(1) + ": OtherMail")) << there;
    host.Items.clear();
  }
}

TEST_F(MailFilesTest, ItemWhoseMailboxIsGoneGoesAndTheMailboxIsNotMade) {
  ReadInbox(MailOf("1") + MailOf("2"));
  connector->SetRunObserver(&observer);
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
  EXPECT_TRUE(connector->DeleteItem(connector->Item(2)));
  EXPECT_EQ(host.Log.Lines(), kDeletionCalls);
  EXPECT_EQ(connector->Count(), 1);
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox"));
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox.msf"));
  EXPECT_THAT(observer.events, ElementsAre("not marked Inbox" + At(1) + ": OtherMail"));
}

TEST_F(MailFilesTest, MailIsTheSameWhateverTheClientChangedInPlaceOrPutBehindIt) {
  std::string second = MailOf("2", "S | \\x");
  second.insert(second.find("Subject"), "X-Mozilla-Keys:        \r\nBcc: g@h.i\r\n");
  for (const std::string status : {"0001", "0005", "0009", "1009"}) {
    for (const std::string& behind : {std::string(), MailOf("3")}) {
      ReadInbox(MailOf("1") + second);
      connector->SetRunObserver(&observer);
      observer.events.clear();
      std::string now = second;
      now.replace(now.find("0001"), 4, status);
      now.replace(now.find("Keys:    "), 9, "Keys: $la");
      WriteBytes(inbox, MailOf("1") + now + behind);
      EXPECT_TRUE(connector->DeleteItem(connector->Item(2)));
      const std::size_t digit = now.find(status) + 3;
      now[digit] = status[3] == '5' ? 'D' : '9';
      EXPECT_EQ(ReadBytes(inbox), MailOf("1") + now + behind);
      EXPECT_THAT(observer.events, IsEmpty()) << status;
      host.Items.clear();
    }
  }
}

TEST_F(MailFilesTest, MailIsTheSameWhateverMailStandsBehindItNow) {
  const std::string second = MailOf("2");
  const std::string other = "From - x\r\nSubject: other\r\n\r\n";
  const std::array<std::string, 5> behind = {"", MailOf("3"), other, ">" + other, "\r\n" + other};
  for (const std::string& then : behind) {
    for (const std::string& now : behind) {
      ReadInbox(MailOf("1") + second + then);
      connector->SetRunObserver(&observer);
      observer.events.clear();
      WriteBytes(inbox, MailOf("1") + second + now);
      EXPECT_TRUE(connector->DeleteItem(connector->Item(2)));
      EXPECT_EQ(StatusOf(ReadBytes(inbox), MailOf("1").size()), '9') << then << now;
      EXPECT_THAT(observer.events, IsEmpty());
      host.Items.clear();
    }
  }
}

TEST_F(MailFilesTest, MailThatGrewIsAnother) {
  ReadInbox(MailOf("1"));
  connector->SetRunObserver(&observer);
  WriteBytes(inbox, MailOf("1") + "more of it\r\n\r\n" + MailOf("2"));
  EXPECT_TRUE(connector->DeleteItem(connector->Item(1)));
  EXPECT_THAT(observer.events, ElementsAre("not marked Inbox at 0: OtherMail"));
}

TEST_F(MailFilesTest, ItemOfARecordWithoutAMailboxCannotBeDeleted) {
  ReadInbox(MailOf("1"));
  connector->Item(1)->SetData("_SourceFile", "", false);
  EXPECT_THROW(connector->DeleteItem(connector->Item(1)), Failure);
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(MailFilesTest, StandingTellsWhyAMailIsNotAtItsPlace) {
  std::string hidden = MailOf("2");
  hidden.insert(hidden.find("Subject"), "Address: 0\r\n");
  std::string street = MailOf("3");
  street.insert(street.find("Subject"), "Address: 5 Main St\r\n");
  ReadInbox(MailOf("1") + hidden + street + MailOf("4"));
  const auto standings = [&] {
    std::vector<Standing> all;
    for (std::int32_t i = 1; i <= 4; ++i)
      all.push_back(StandingOf(*connector->Item(i)));
    return all;
  };
  const Standing there = Standing::AtItsPlace;
  const Standing hides = Standing::HidesItsPlace;
  const Standing gone = Standing::NotThere;
  EXPECT_THAT(standings(), ElementsAre(there, hides, hides, there));
  // The first was marked as deleted, and the last changed.
  std::string now = ReadBytes(inbox);
  now[now.find("Status: 0001") + 11] = '9';
  now.replace(now.rfind("a@b.c"), 1, "x");
  WriteBytes(inbox, now);
  EXPECT_THAT(standings(), ElementsAre(gone, hides, hides, gone));
  WriteBytes(inbox, MailOf("5"));
  EXPECT_THAT(standings(), ElementsAre(gone, gone, gone, gone));
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
  EXPECT_THAT(standings(), ElementsAre(gone, gone, gone, gone));
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox"));
}

TEST_F(MailFilesTest, StandingOfAMailThatCannotBeReadRaises) {
  ReadInbox(MailOf("1"));
  const DiskFault fault({.calls = DiskCall::Read, .pathEnd = "/Inbox"});
  EXPECT_THROW(StandingOf(*connector->Item(1)), Failure);
}

TEST_F(MailFilesTest, ObserverIsLetGoAfterACallThatRaises) {
  ReadInbox(MailOf("1") + MailOf("2"));
  connector->Item(1)->SetData("_SourceFile", "", false);
  const auto raising = [&] {
    const RunObservation observation(*connector, observer);
    connector->DeleteItem(connector->Item(1));
  };
  EXPECT_THROW(raising(), Failure);
  WriteBytes(inbox, MailOf("3"));
  connector->DeleteItem(connector->Item(2));
  EXPECT_THAT(observer.events, IsEmpty());
}

TEST_F(MailFilesTest, ItemThatTellsAPlaceAloneTakesTheMailThatStandsThere) {
  const auto item = host.MakeItem();
  inbox = tree.AddMailbox("p", "a", "Inbox", MailOf("1") + MailOf("2"));
  item->Data = {{"_SourceFile", inbox}, {"_SourceOffset", std::to_string(MailOf("1").size())}};
  Prepare("thunderbird://p/a/Inbox");
  const std::string rewritten = MailOf("3") + MailOf("4");
  WriteBytes(inbox, rewritten);
  // The item is in no store, which is told after the deletion.
  EXPECT_THROW(connector->DeleteItem(item), Failure);
  EXPECT_EQ(StatusOf(ReadBytes(inbox), MailOf("1").size()), '9');
  // There a missing mailbox is made.
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
  EXPECT_THROW(connector->DeleteItem(item), Failure);
  EXPECT_EQ(ReadBytes(inbox), "");
  EXPECT_THAT(observer.events, ElementsAre("not marked Inbox" + At(1) + ": NoStatus"));
}

TEST_F(MailFilesTest, MailboxThatCannotBeOpenedKeepsTheItem) {
  ReadInbox(MailOf("1"));
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
  tree.AddFolder("p", "a", "Inbox");
  EXPECT_THROW(connector->DeleteItem(connector->Item(1)), Failure);
  EXPECT_EQ(connector->Count(), 1);
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

}  // namespace
}  // namespace vorlent
