#include "Connectors/Mozilla/ImportRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "Connectors/Mozilla/Actions.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"
#include "Support/DiskOperations.h"
#include "Support/Lines.h"
#include "Support/MailboxBuilder.h"
#include "Support/OddEntries.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/RecordingRunObserver.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using test::RecordingHost;
using test::RecordingRunObserver;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

// A mail of exactly `size` bytes.
std::string Mail(const std::string& subject, std::size_t size = 250, const std::string& status = "0001") {
  OrdinaryMail mail = {.subject = subject, .id = subject, .status = status, .body = "\r\n"};
  mail.body.insert(0, size - mail.Bytes().size(), '.');
  return mail.Bytes();
}

// One that takes many reads.
std::string LongMail(const std::string& subject) {
  std::string mail = Mail(subject, 300'000);
  for (std::size_t at = 400; at + 10 < mail.size(); at += 80)
    mail.replace(at, 2, "\r\n");
  return mail;
}

std::string WithStatus(std::string mailbox, const std::string& subject, char digit) {
  const std::string key = "X-Mozilla-Status: 000";
  const std::size_t at = mailbox.rfind(key, mailbox.find("Subject: " + subject + "\r\n"));
  mailbox[at + key.size()] = digit;
  return mailbox;
}

void Replace(std::string& text, const std::string& find, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(find, at)) != std::string::npos; at += with.size()) {
    text.replace(at, find.size(), with);
  }
}

class ImportRunTest : public testing::Test {
 protected:
  ImportRunTest() {
    NoThunderbirdCheck() = false;
    platform->SetAppData(folder.Path("appdata"));
    host.Global.TemporaryPath = folder.MakeFolder("temp") + "\\";
    host.Global.Objects["Archiv"] = target;
    host.AddTopics();
  }

  // Runs a command for the target; returns the number of the failure, 0 if there was none.
  int Run(const Lines& lines) {
    std::string command = "target Archiv\r\n";
    for (const std::string& line : lines)
      command += line + "\r\n";
    host.Dialogs.WizardAnswer = command;
    Actions actions;
    actions.SetRunObserver(&observer);
    return SwallowedNumber([&] { actions.execute("importmails"); });
  }

  std::string Box(std::string_view name, std::string_view bytes) { return folder.Write(name, bytes); }

  // Acts in front of the n-th paste.
  void OnPaste(int nth, std::function<void()> action) {
    host.Log.OnCall = [nth, action = std::move(action), pastes = 0](const std::string& line) mutable {
      if (line.starts_with("Location(\"Archiv\").PasteRecord") && ++pastes == nth) action();
    };
  }
  // The user asks to stop while the n-th mail's yields run.
  void CancelInMail(int nth) {
    platform->onYield = [this, nth] {
      host.Global.IsCancelled = platform->CountOf("YieldOnce") > (nth - 1) * 100;
    };
  }

  // The host's calls after the wizard, with a paste shown as the mail's subject and the folder as <f>.
  Lines Calls() {
    Lines lines;
    for (std::string line : host.Log.Lines()) {
      if (line.starts_with("Dialogs.") || line.find(".ImportRecord(") != std::string::npos) continue;
      if (const auto text = line.find("|Text="); text != std::string::npos) {
        line = "Paste " + line.substr(text + 6, line.find('|', text + 1) - text - 6);
      } else if (const auto take = line.find(".TakeFile("); take != std::string::npos) {
        line = line.substr(0, line.find(',', take));
      }
      Replace(line, folder.Path(), "<f>");
      lines.push_back(line);
    }
    return lines;
  }
  Lines Reports(const std::string& code) {
    const std::string prefix = "Global.Report(" + code + ",";
    Lines texts;
    for (std::string line : host.Log.Only({prefix})) {
      Replace(line, folder.Path(), "<f>");
      texts.push_back(line.substr(prefix.size(), line.rfind(',') - prefix.size()));
    }
    return texts;
  }
  Lines Log() { return Reports("29"); }
  Lines Pasted() {
    Lines texts;
    for (const ItemPtr& item : target->Pasted)
      texts.push_back(item->Text());
    return texts;
  }

  // The calls of the whole run, taken apart.
  static Lines Opening() {
    return {"Global.Report(33,\"\",nothing)", "Global.Report(32,\"0/100:Import Thunderbird Archiv\",nothing)",
            "Global.Report(29,\"Import Thunderbird Archiv\",nothing)", "Global.SetProgressVisible(true)"};
  }
  static Lines OpenBox(const std::string& name) {
    return {"Global.Report(29,\" 14:30:05: <f>\\" + name + "\",nothing)",
            "Global.Report(33,\"<f>\\" + name + "\",nothing)"};
  }
  static Lines OneMail(const std::string& subject, const std::string& item, const std::string& percent) {
    return {"Paste " + subject,           item + ".SetConnected(false)",
            item + ".TakeFile(\"File\"",  item + ".SetConnected(true)",
            "Global.SetLogEnabled(true)", "Global.Report(32,\"" + percent + "\",nothing)",
            "Global.SetLogEnabled(false)"};
  }
  static Lines CloseBox(const std::string& percent, const std::string& items) {
    return {"Global.SetLogEnabled(true)", "Global.Report(32,\"" + percent + "\",nothing)",
            "Global.Report(29,\"  " + items + " Items in 0 Sekunden\",nothing)"};
  }
  static Lines Closing(const std::string& items) {
    return {"Global.SetProgressVisible(false)",
            "Global.Report(32,\"\",nothing)",
            "Global.Report(29,\" 14:30:05 finished (" + items + " Items)\",nothing)",
            "Topics.ClearLocation(Location(\"Archiv\"))",
            "Topics.AddLocation(Location(\"Archiv\"))",
            "Global.Report(19,\"\",nothing)"};
  }

  const Lines logOff = {"Global.SetLogEnabled(false)"};
  ScopedRecordingPlatform platform;
  RecordingHost host;
  RecordingRunObserver observer;
  TemporaryFolder folder;
  std::shared_ptr<test::RecordingLocation> target = host.MakeLocation("Archiv");
};

// --- Whole runs -----------------------------------------------------------------------------------------

TEST_F(ImportRunTest, OneMailboxIsImportedMailByMail) {
  const std::string box = Box("Inbox", Mail("one") + Mail("two"));
  EXPECT_EQ(Run({"action copy", "import " + box}), 0);
  EXPECT_THAT(Calls(),
              ElementsAreArray(Opening() + OpenBox("Inbox") + logOff + OneMail("one", "item1", "0.2") +
                               OneMail("two", "item2", "50.2") + CloseBox("100", "2") + Closing("2")));
  EXPECT_EQ(platform->CountOf("YieldOnce"), 200);
  EXPECT_EQ(platform->CountOf("ShowMessage"), 0);
}

TEST_F(ImportRunTest, SeveralMailboxesShareOneProgress) {
  const std::string a = Box("A", Mail("a1") + Mail("a2"));
  const std::string b = Box("B", "");
  const std::string c = Box("C", Mail("c1", 500));
  EXPECT_EQ(Run({"import " + a, "import " + b, "import " + c}), 0);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() + OpenBox("A") + logOff + OneMail("a1", "item1", "0.1") +
                                        OneMail("a2", "item2", "25.1") + CloseBox("33.3333333333333", "2") +
                                        OpenBox("B") + logOff + CloseBox("66.6666666666667", "0") +
                                        OpenBox("C") + logOff + OneMail("c1", "item3", "50.1") +
                                        CloseBox("100", "1") + Closing("3")));
}

TEST_F(ImportRunTest, MailboxMayStandTwice) {
  const std::string box = Box("Inbox", Mail("one"));
  EXPECT_EQ(Run({"import " + box, "import " + box}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("one", "one"));
  EXPECT_THAT(Reports("32"), ElementsAre("\"0/100:Import Thunderbird Archiv\"", "\"0.2\"", "\"50\"",
                                         "\"50.2\"", "\"100\"", "\"\""));
}

TEST_F(ImportRunTest, EmptyListOpensAndClosesWithoutReading) {
  EXPECT_EQ(Run({"action move"}), 0);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() + Closing("0")));
}

TEST_F(ImportRunTest, EmptyMailboxCountsNoItems) {
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", "")}), 0);
  EXPECT_THAT(Calls(),
              ElementsAreArray(Opening() + OpenBox("Inbox") + logOff + CloseBox("100", "0") + Closing("0")));
}

TEST_F(ImportRunTest, FileWithoutAnyMailCountsNoItems) {
  EXPECT_EQ(Run({"import " + Box("notes", "From nobody\r\njust text\r\n")}), 0);
  EXPECT_THAT(Log(), ElementsAre("\"Import Thunderbird Archiv\"", "\" 14:30:05: <f>\\notes\"",
                                 "\"  0 Items in 0 Sekunden\"", "\" 14:30:05 finished (0 Items)\""));
}

TEST_F(ImportRunTest, ExpungedMailsArePassedOver) {
  const std::string box = Box("Inbox", Mail("one", 250, "0009") + Mail("two") + Mail("three", 250, "0008"));
  EXPECT_EQ(Run({"import " + box}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("two"));
  EXPECT_THAT(Log(), testing::Contains("\"  1 Items in 0 Sekunden\""));
}

// --- Target ---------------------------------------------------------------------------------------------

TEST_F(ImportRunTest, TargetThatIsNotThereIsToldAndNothingElseHappens) {
  const std::string box = Box("Inbox", Mail("one"));
  EXPECT_EQ(Run({"target Weg", "action move", "import " + box}), 0);
  EXPECT_THAT(platform->calls, ElementsAre("ShowMessage(\"Weg\",\"kann Location nicht \xF6"
                                           "ffnen!\",Exclamation,Ok) -> Ok"));
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(ImportRunTest, EmptyTargetIsNotThere) {
  EXPECT_EQ(Run({"target"}), 0);
  EXPECT_THAT(platform->calls, ElementsAre("ShowMessage(\"\",\"kann Location nicht \xF6"
                                           "ffnen!\",Exclamation,Ok) -> Ok"));
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(ImportRunTest, ObjectThatIsNoLocationIsNoTarget) {
  host.Global.Objects["Archiv"] = host.MakeItem();
  EXPECT_EQ(Run({}), 0);
  EXPECT_EQ(platform->CountOf("ShowMessage"), 1);
}

// --- What becomes of a mail -----------------------------------------------------------------------------

TEST_F(ImportRunTest, RecordOfTheMailGoesToTheTarget) {
  const std::string box = Box("Inbox", Mail("one"));
  host.Global.User = "anna";
  Run({"keyword k", "import " + box});
  ASSERT_EQ(host.Items.size(), 1U);
  std::string keywords = box.substr(3);
  Replace(keywords, "\\", ",");
  EXPECT_THAT(host.Items[0]->Record,
              testing::AllOf(testing::StartsWith(
                                 "ID=20100509143005-one@x|Type=mail|Text=one|Keywords=" + keywords + ",k|"),
                             testing::HasSubstr("|DataSize="), testing::HasSubstr("|DataFile="),
                             testing::EndsWith("|Owner=anna|Log=20100509143005"),
                             testing::Not(testing::HasSubstr("_SourceFile"))));
}

TEST_F(ImportRunTest, FilesOfTheMailMoveIntoTheItem) {
  const std::string mail =
      "From - Sun May 09 14:30:00 2010\r\nDate: Sun, 09 May 2010 14:30:00 +0200\r\nSubject: s\r\n"
      "Message-ID: <1@x>\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nContent-Type: text/html\r\n\r\n<p>\r\n"
      "--b\r\nContent-Type: text/plain; name=a.txt\r\nContent-Disposition: attachment; filename=a.txt\r\n"
      "\r\nattached\r\n--b--\r\n\r\n";
  EXPECT_EQ(Run({"import " + Box("Inbox", mail)}), 0);
  Lines taken;
  for (std::string line : host.Log.Only({"item1.TakeFile"})) {
    Replace(line, folder.Path(), "<f>");
    taken.push_back(line);
  }
  const auto size = [this](const std::string& name) {
    return std::to_string(folder.Read("temp/" + name).size());
  };
  EXPECT_THAT(
      taken,
      ElementsAre(
          "item1.TakeFile(\"File\",\"<f>\\temp\\mail.eml\",\"move|nofileattribute\",\"file=mail.eml\\r\\n"
          "date=09.05.2010 14:30:00\\r\\nsize=" +
              size("mail.eml") + "\\r\\nattr=A\")",
          "item1.TakeFile(\"FileHTML\",\"<f>\\temp\\mail.html\",\"move|nofileattribute\","
          "\"file=mail.html\\r\\ndate=09.05.2010 14:30:00\\r\\nsize=5\\r\\nattr=A\")",
          "item1.TakeFile(\"FileAttach1\",\"<f>\\temp\\a.txt\",\"move|nofileattribute\",\"file=a.txt\\r\\n"
          "size=10\\r\\nattr=A\\r\\ndate=09.05.2010 14:30:00\\r\\noriginalfile=a.txt\")"));
}

TEST_F(ImportRunTest, TargetIsToldTheTypesOfAttachmentsWhereTheHostHasChosenSo) {
  const std::string mail =
      "From - Sun May 09 14:30:00 2010\r\nSubject: s\r\nMessage-ID: <1@x>\r\n"
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nContent-Type: text/plain\r\n\r\nbody\r\n"
      "--b\r\nContent-Type: image/png; name=a.png\r\n\r\nx\r\n"
      "--b\r\nContent-Disposition: attachment; filename=b\r\n\r\nx\r\n"
      "--b\r\nContent-Type: audio/ogg; name=c.ogg\r\n\r\nx\r\n--b--\r\n\r\n";
  const std::string box = Box("Inbox", mail);
  ChooseRules({.attachmentHeaders = AttachmentHeaders::AsSent});
  const int number = Run({"import " + box});
  ChooseRules(Rules::Windows());
  EXPECT_EQ(number, 0);
  EXPECT_THAT(host.Log.Only({"item1.TakeFile"}),
              ElementsAre(testing::Not(testing::HasSubstr("type=")),
                          testing::EndsWith("originalfile=a.png\\r\\ntype=image/png\\r\\nboundary=b\")"),
                          testing::EndsWith("originalfile=b\\r\\nboundary=b\")"),
                          testing::EndsWith("originalfile=c.ogg\\r\\ntype=audio/ogg\\r\\nboundary=b\")")));
  // The record is what it always is.
  EXPECT_THAT(host.Items[0]->Record, testing::Not(testing::HasSubstr("type=")));
}

TEST_F(ImportRunTest, EveryFieldThatBeginsWithFileIsTaken) {
  OnPaste(1, [this] {
    host.Log.OnCall = [this](const std::string& line) {
      if (line.find(".ImportRecord(") == std::string::npos) return;
      host.Items.back()->Data = {{"Filename", "a\nb\r\nc"}, {"file", "d"}, {"Fil", "e"},
                                 {"MyFile", "f"},           {"FILE", "g"}, {"FileX", "h"}};
    };
  });
  Run({"import " + Box("Inbox", Mail("one"))});
  const Lines taken = host.Log.Only({"item1.TakeFile"});
  ASSERT_EQ(taken.size(), 3U);
  EXPECT_EQ(taken[0], "item1.TakeFile(\"Filename\",\"a\",\"move|nofileattribute\",\"b\\r\\nc\")");
  EXPECT_EQ(taken[1], "item1.TakeFile(\"FileX\",\"h\",\"move|nofileattribute\",\"\")");
  EXPECT_THAT(taken[2], testing::StartsWith("item1.TakeFile(\"File\","));
}

TEST_F(ImportRunTest, FieldsThatAppearWhileFilesAreTakenAreNotTaken) {
  host.Log.OnCall = [this](const std::string& line) {
    if (line.find(".TakeFile(") != std::string::npos) host.Items.back()->Data.emplace_back("FileNew", "x");
  };
  EXPECT_EQ(Run({"import " + Box("Inbox", Mail("one"))}), 0);
  EXPECT_EQ(host.Log.Only({"item1.TakeFile"}).size(), 1U);
}

TEST_F(ImportRunTest, HostIsGivenAHundredTurnsBehindEachMailBeforeItIsAskedToStop) {
  host.Log.RecordReads = true;
  std::vector<std::size_t> turns;
  platform->onYield = [&] { turns.push_back(host.Log.Lines().size()); };
  Run({"import " + Box("Inbox", Mail("one") + Mail("two"))});
  ASSERT_EQ(turns.size(), 200U);
  EXPECT_EQ(turns.front(), turns[99]) << "no call between the turns of one mail";
  EXPECT_EQ(host.Log.Lines()[turns[99] - 1], "Global.SetLogEnabled(false)");
  EXPECT_EQ(host.Log.Lines()[turns[99]], "Global.Cancelled");
  EXPECT_EQ(host.Log.Only({"Global.Cancelled"}).size(), 3U) << "after each mail and after the mailbox";
}

// --- Keywords -------------------------------------------------------------------------------------------

class ImportKeywordsTest : public ImportRunTest {
 protected:
  ImportKeywordsTest() {
    folder.Write("appdata/Thunderbird/profiles.ini",
                 "[General]\r\nStartWithLastProfile=1\r\n\r\n[Profile0]\r\nName=p\r\nIsRelative=1\r\nPath="
                 "Profiles/p\r\n");
    std::string mailFolder = folder.Path("mail");
    Replace(mailFolder, "\\", "\\\\");
    folder.Write("appdata/Thunderbird/Profiles/p/prefs.js",
                 "user_pref(\"mail.accountmanager.accounts\", \"account1\");\r\n"
                 "user_pref(\"mail.account.account1.server\", \"server1\");\r\n"
                 "user_pref(\"mail.server.server1.name\", \"Privat\");\r\n"
                 "user_pref(\"mail.server.server1.directory\", \"" +
                     mailFolder + "\");\r\n");
  }

  std::string KeywordsOf(const Lines& lines) {
    EXPECT_EQ(Run(lines), 0);
    return host.Items.empty() ? "nothing pasted" : host.Items.back()->Keywords;
  }
};

TEST_F(ImportKeywordsTest, MailboxOfAnAccountStartsWithItsOwnKeywords) {
  const std::string inbox = Box("mail/Inbox", Mail("one"));
  const std::string sub = Box("mail/Inbox.sbd/2009", Mail("two"));
  EXPECT_EQ(KeywordsOf({"import " + inbox}), "Account=Privat,Inbox");
  EXPECT_EQ(KeywordsOf({"import " + sub, "keyword a", "keyword b"}), "Account=Privat,Inbox,2009,a,b");
}

TEST_F(ImportKeywordsTest, SubpathIsNoKeyword) {
  const std::string inbox = Box("mail/Inbox", Mail("one"));
  EXPECT_EQ(KeywordsOf({"keyword #subpath", "keyword a", "import " + inbox}), "Account=Privat,Inbox,a");
  EXPECT_EQ(KeywordsOf({"keyword #subpath", "import " + inbox}), "Account=Privat,Inbox");
}

TEST_F(ImportKeywordsTest, MailboxOutsideAllAccountsHasItsPath) {
  const std::string box = Box("else/Inbox.sbd/x", Mail("one"));
  std::string path = folder.Path("else").substr(3);
  Replace(path, "\\", ",");
  EXPECT_EQ(KeywordsOf({"import " + box, "keyword k"}), path + ",Inbox,x,k");
}

// --- Structure ------------------------------------------------------------------------------------------

TEST_F(ImportKeywordsTest, TreeGetsThePathOfEachMailboxBeforeItsFirstMail) {
  const std::string a = Box("mail/A", Mail("a1"));
  const std::string b = Box("mail/B", "");
  EXPECT_EQ(Run({"option tree", "keyword k", "import " + a, "import " + b}), 0);
  EXPECT_THAT(
      Calls(),
      ElementsAreArray(Opening() + Lines{"Window.IsPaneShown(3)", "Window.GetPaneTree(3)"} +
                       OpenBox("mail\\A") + Lines{"pane3.AddKeywordPath(\"Account=Privat,A,k\")"} + logOff +
                       OneMail("a1", "item1", "0.4") + CloseBox("50", "1") + OpenBox("mail\\B") +
                       Lines{"pane3.AddKeywordPath(\"Account=Privat,B,k\")"} + logOff + CloseBox("100", "0") +
                       Lines{"Window.IsPaneShown(3)", "Window.SetPaneTree(3,pane3)"} + Closing("1") +
                       Lines{"Global.Report(45,\"\",nothing)"}));
}

TEST_F(ImportRunTest, HiddenPaneOfStructuresIsPaneTwo) {
  host.Global.Window->PaneShown = false;
  EXPECT_EQ(Run({"option tree"}), 0);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() +
                                        Lines{"Window.IsPaneShown(3)", "Window.GetPaneTree(2)",
                                              "Window.IsPaneShown(3)", "Window.SetPaneTree(2,pane2)"} +
                                        Closing("0") + Lines{"Global.Report(45,\"\",nothing)"}));
}

TEST_F(ImportRunTest, PaneThatTheUserOpensMeanwhileGetsTheTree) {
  host.Global.Window->PaneShown = false;
  platform->onYield = [this] { host.Global.Window->PaneShown = true; };
  EXPECT_EQ(Run({"option tree", "import " + Box("Inbox", Mail("one"))}), 0);
  EXPECT_THAT(host.Log.Only({"Window"}), ElementsAre("Window.IsPaneShown(3)", "Window.GetPaneTree(2)",
                                                     "Window.IsPaneShown(3)", "Window.SetPaneTree(3,pane2)"));
}

TEST_F(ImportRunTest, HostWithoutAMainWindowFailsBeforeTheFirstMail) {
  host.Global.Window = nullptr;
  EXPECT_EQ(Run({"option tree", "import " + Box("Inbox", Mail("one"))}), 91);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening()));
}

// --- Copy and move --------------------------------------------------------------------------------------

TEST_F(ImportRunTest, CopyLeavesTheMailboxAsItWas) {
  const std::string bytes = Mail("one") + Mail("two");
  const std::string box = Box("Inbox", bytes);
  folder.Write("Inbox.msf", "index");
  EXPECT_EQ(Run({"action copy", "import " + box}), 0);
  EXPECT_EQ(folder.Read("Inbox"), bytes);
  EXPECT_TRUE(folder.Exists("Inbox.msf"));
}

TEST_F(ImportRunTest, MoveMarksExactlyTheImportedMails) {
  const std::string bytes = Mail("one", 250, "0000") + Mail("two", 300, "0008") + Mail("three", 270, "0005") +
                            Mail("four", 250, "0001");
  const std::string box = Box("Inbox", bytes);
  folder.Write("Inbox.msf", "index");
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("one", "three", "four"));
  EXPECT_EQ(folder.Read("Inbox"),
            WithStatus(WithStatus(WithStatus(bytes, "one", '8'), "three", 'D'), "four", '9'));
  EXPECT_FALSE(folder.Exists("Inbox.msf"));
  EXPECT_EQ(Run({"import " + box}), 0);
  EXPECT_EQ(target->Pasted.size(), 3U) << "nothing is left to be read";
}

TEST_F(ImportRunTest, MailsGoOnlyBehindTheLastOneOfTheirMailbox) {
  const std::string bytes = Mail("one") + Mail("two");
  const std::string box = Box("Inbox", bytes);
  const std::string later = Box("Later", Mail("three"));
  OnPaste(2, [&] { EXPECT_EQ(folder.Read("Inbox"), bytes); });
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  OnPaste(1, [&] { EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "two", '9')); });
  EXPECT_EQ(Run({"action move", "import " + box, "import " + later}), 0);
}

TEST_F(ImportRunTest, MailWithoutAStatusHeaderCannotBeMarked) {
  const std::string bytes = "From - x\r\nSubject: one\r\n\r\ntext\r\n\r\n" + Mail("two");
  const std::string box = Box("Inbox", bytes);
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("one", "two"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(bytes, "two", '9'));
  EXPECT_THAT(observer.events,
              ElementsAre("moving to Archiv", "delivered Inbox at 0", "delivered Inbox at 34",
                          "marking in Inbox", "not marked Inbox at 0: NoStatus"));
}

TEST_F(ImportRunTest, MailThatHidesItsPlaceStaysAndSoDoesTheOneItNames) {
  std::string hiding = Mail("three");
  hiding.insert(hiding.find("Subject"), "Address: 0\r\n");
  // The first mail is not whole, and so stays as well.
  const std::string torn =
      "From - x\r\nX-Mozilla-Status: 0001\r\nSubject: one\r\nContent-Type: multipart/mixed; "
      "boundary=B\r\n\r\n"
      "--B\r\nContent-Type: a; name=f\r\n\r\n1\r\n--B\r\nContent-Type: a; name=f\r\n\r\n2\r\n--B--\r\n\r\n";
  const std::string bytes = torn + Mail("two") + hiding;
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("one", "two", "three"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(bytes, "two", '9'));
  const std::string second = std::to_string(torn.size());
  const std::string third = std::to_string(torn.size() + 250);
  EXPECT_THAT(observer.events,
              ElementsAre("moving to Archiv", "failed Inbox at 0: one of two files called 'f' is lost",
                          "delivered Inbox at " + second, "not marked Inbox at " + third + ": HiddenPlace",
                          "delivered Inbox at " + third + ", hidden", "marking in Inbox"));
}

TEST_F(ImportRunTest, MailWithAnOwnAddressThatIsTextIsMoved) {
  const ScopedRules rules({.ownAddress = OwnAddress::IsText});
  std::string naming = Mail("two");
  naming.insert(naming.find("Subject"), "Address: 0\r\n");
  const std::string bytes = Mail("one", 250, "0008") + naming + Mail("three");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("two", "three"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "two", '9'), "three", '9'));
}

TEST_F(ImportRunTest, MailboxThatCannotBeOpenedIsNamedAndTheNextOneComes) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  const std::string closed = Box("Closed", Mail("one"));
  os::WriteAttributes(closed, os::kReadOnly);
  EXPECT_EQ(Run({"import " + closed, "import " + Box("Inbox", Mail("two"))}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("two"));
  ASSERT_EQ(observer.events.size(), 3U);
  EXPECT_THAT(observer.events[1], testing::StartsWith("failed Closed at 0: "));
  EXPECT_EQ(observer.events[2], "delivered Inbox at 0");
}

TEST_F(ImportRunTest, MissingMailboxIsNamedAndTheNextOneComes) {
  const ScopedRules rules(Rules::Today());
  EXPECT_EQ(Run({"import " + folder.Path("None"), "import " + Box("Inbox", Mail("two"))}), 0);
  ASSERT_EQ(observer.events.size(), 3U);
  EXPECT_THAT(observer.events[1], testing::StartsWith("failed None at 0: "));
  EXPECT_EQ(observer.events[2], "delivered Inbox at 0");
}

TEST_F(ImportRunTest, MailThatTheTargetRefusesIsNamedAndTheNextOneComes) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  const std::string bytes = Mail("one") + Mail("two") + Mail("three") + Mail("four");
  host.Log.FailOn("Location(\"Archiv\").PasteRecord", 2);
  host.Log.FailOn("item2.TakeFile");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  ASSERT_EQ(observer.events.size(), 6U);
  EXPECT_EQ(observer.events[1], "delivered Inbox at 0");
  EXPECT_THAT(observer.events[2], testing::StartsWith("failed Inbox at 250: "));
  EXPECT_THAT(observer.events[3], testing::StartsWith("failed Inbox at 500: "));
  EXPECT_EQ(observer.events[4], "delivered Inbox at 750");
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "four", '9'));
}

TEST_F(ImportRunTest, TargetThatTakesNothingEndsTheRunAfterTenMailsInARow) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  std::string bytes;
  for (int i = 0; i < 30; ++i)
    bytes += Mail("mail");
  const std::string box = Box("Inbox", bytes);
  // Another failure amid them, after one that was delivered, counts anew.
  host.Log.FailOn("Location(\"Archiv\").PasteRecord", 2);
  host.Log.FailOn("Location(\"Archiv\").PasteRecord", 3, true);
  EXPECT_EQ(Run({"action move", "import " + box}), 440);
  ASSERT_EQ(observer.events.size(), 1U + 3 + 10);
  EXPECT_THAT(observer.events.back(), testing::StartsWith("failed Inbox at 3000: "));
  EXPECT_EQ(folder.Read("Inbox"), bytes);
}

TEST_F(ImportRunTest, MailThatIsNotWrittenWholeCountsAsFailedAndStays) {
  // A device that takes nothing stands where the HTML text of the second mail goes.
  MAKE_OR_SKIP(MakeFullDevice(folder.Native("temp/mail.html")));
  const std::string html =
      "From - x\r\nX-Mozilla-Status: 0001\r\nSubject: html\r\nContent-Type: multipart/mixed; "
      "boundary=b\r\n\r\n"
      "--b\r\nContent-Type: text/html\r\n\r\n<p>\r\n--b--\r\n\r\n";
  const std::string bytes = Mail("one") + html + Mail("three");
  const std::string box = Box("Inbox", bytes);
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_THAT(Pasted(), ElementsAre("one", "html", "three"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "three", '9'));
  ASSERT_EQ(observer.events.size(), 5U);
  EXPECT_EQ(observer.events[1], "delivered Inbox at 0");
  EXPECT_THAT(observer.events[2], testing::StartsWith("failed Inbox at 250: "));
  EXPECT_THAT(observer.events[2], testing::HasSubstr("mail.html"));
  EXPECT_EQ(observer.events[3], "delivered Inbox at " + std::to_string(250 + html.size()));
}

TEST_F(ImportRunTest, RunningThunderbirdIsAskedForOnlyWhenMailsGo) {
  platform->processes = std::vector<ProcessEntry>{{77, "thunderbird.exe"}};
  platform->messageAnswers = {MessageAnswer::No};
  const std::string bytes = Mail("one") + Mail("two");
  EXPECT_EQ(Run({"action copy", "import " + Box("A", bytes)}), 0);
  EXPECT_EQ(platform->CountOf("ShowMessage"), 0);
  EXPECT_EQ(Run({"action move", "import " + Box("B", bytes)}), 0);
  EXPECT_EQ(platform->CountOf("ShowMessage"), 1);
  EXPECT_EQ(folder.Read("B"), WithStatus(WithStatus(bytes, "one", '9'), "two", '9'));
}

TEST_F(ImportRunTest, MailsStayIfTheUserKeepsThunderbirdOpen) {
  platform->processes = std::vector<ProcessEntry>{{77, "thunderbird.exe"}};
  platform->messageAnswers = {MessageAnswer::Cancel, MessageAnswer::No};
  const std::string bytes = Mail("one") + Mail("two");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  EXPECT_EQ(platform->CountOf("ShowMessage"), 2) << "the next mail asks again";
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(bytes, "two", '9'));
}

// --- Cancelling -----------------------------------------------------------------------------------------

class ImportCancelTest : public ImportRunTest, public testing::WithParamInterface<int> {};

TEST_P(ImportCancelTest, MailAtHandIsFinishedAndTheRestIsLeft) {
  const int cancelled = GetParam();
  const std::string bytes = Mail("one") + Mail("two") + Mail("three");
  const std::string a = Box("A", bytes);
  const std::string b = Box("B", bytes);
  CancelInMail(cancelled);
  EXPECT_EQ(Run({"action move", "option tree", "import " + a, "import " + b}), 0);

  const Lines subjects = {"one", "two", "three"};
  const Lines percents = {"0.0666666666666667", "16.7333333333333", "33.4"};
  Lines mails;
  std::string left = bytes;
  for (int mail = 0; mail < cancelled; ++mail) {
    mails = mails + OneMail(subjects[mail], "item" + std::to_string(mail + 1), percents[mail]);
    left = WithStatus(left, subjects[mail], '9');
  }
  const std::string count = std::to_string(cancelled);
  std::string keywords = a.substr(3);
  Replace(keywords, "\\", ",");
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() + Lines{"Window.IsPaneShown(3)", "Window.GetPaneTree(3)"} +
                                        OpenBox("A") + Lines{"pane3.AddKeywordPath(\"" + keywords + "\")"} +
                                        logOff + mails + CloseBox("50", count) +
                                        Lines{"Window.IsPaneShown(3)", "Window.SetPaneTree(3,pane3)"} +
                                        Closing(count) + Lines{"Global.Report(45,\"\",nothing)"}));
  EXPECT_EQ(folder.Read("A"), left);
  EXPECT_EQ(folder.Read("B"), bytes);
}

INSTANTIATE_TEST_SUITE_P(FirstMiddleLast, ImportCancelTest, testing::Values(1, 2, 3));

TEST_F(ImportRunTest, CancelledInAnEmptyMailboxSkipsTheNext) {
  host.Global.IsCancelled = true;
  EXPECT_EQ(Run({"import " + Box("A", ""), "import " + Box("B", Mail("one"))}), 0);
  EXPECT_THAT(Calls(),
              ElementsAreArray(Opening() + OpenBox("A") + logOff + CloseBox("50", "0") + Closing("0")));
}

// --- Speed ----------------------------------------------------------------------------------------------

TEST_F(ImportRunTest, RateIsItemsBySeconds) {
  const struct {
    int milliseconds;
    const char* line;
  } rows[] = {
      {0, "\"  3 Items in 0 Sekunden\""},
      {499, "\"  3 Items in 0 Sekunden\""},
      {500, "\"  3 Items in 1 Sekunden = 3 Items/Sekunde\""},
      {1499, "\"  3 Items in 1 Sekunden = 3 Items/Sekunde\""},
      {1500, "\"  3 Items in 2 Sekunden = 1.5 Items/Sekunde\""},
      {7000, "\"  3 Items in 7 Sekunden = 0.428571428571429 Items/Sekunde\""},
  };
  const std::string box = Box("Inbox", Mail("one") + Mail("two") + Mail("three"));
  for (const auto& row : rows) {
    host.Log.Clear();
    platform->now = {2010, 5, 9, 12, 0, 0, 0};
    OnPaste(2, [&] { platform->AdvanceClock(row.milliseconds); });
    EXPECT_EQ(Run({"import " + box}), 0);
    const Lines log = Log();
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[2], row.line) << row.milliseconds;
  }
}

TEST_F(ImportRunTest, EachMailboxHasItsOwnSecondsAndItems) {
  const std::string a = Box("A", Mail("a1"));
  const std::string b = Box("B", Mail("b1") + Mail("b2"));
  host.Log.OnCall = [this](const std::string& line) {
    if (line.starts_with("Location(\"Archiv\").PasteRecord")) platform->AdvanceClock(2000);
  };
  EXPECT_EQ(Run({"import " + a, "import " + b}), 0);
  EXPECT_THAT(Log(), ElementsAre("\"Import Thunderbird Archiv\"", "\" 14:30:05: <f>\\A\"",
                                 "\"  1 Items in 2 Sekunden = 0.5 Items/Sekunde\"", "\" 14:30:07: <f>\\B\"",
                                 "\"  2 Items in 4 Sekunden = 0.5 Items/Sekunde\"",
                                 "\" 14:30:11 finished (3 Items)\""));
}

TEST_F(ImportRunTest, MailboxReadAcrossMidnightHasNegativeSecondsAndNoRate) {
  platform->now = {2010, 5, 9, 23, 59, 58, 0};
  OnPaste(1, [this] { platform->AdvanceClock(4000); });
  EXPECT_EQ(Run({"import " + Box("Inbox", Mail("one"))}), 0);
  EXPECT_THAT(Log(), ElementsAre("\"Import Thunderbird Archiv\"", "\" 23:59:58: <f>\\Inbox\"",
                                 "\"  1 Items in -86396 Sekunden\"", "\" 00:00:02 finished (1 Items)\""));
}

// --- Failures -------------------------------------------------------------------------------------------

TEST_F(ImportRunTest, MissingMailboxFailsBeforeAnyMailWasRead) {
  const std::string bytes = Mail("one");
  const std::string box = Box("Inbox", bytes);
  EXPECT_EQ(Run({"action move", "import " + box, "import " + folder.Path("nowhere")}), 53);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening()));
  EXPECT_EQ(folder.Read("Inbox"), bytes);
  EXPECT_FALSE(folder.Exists("nowhere"));
}

TEST_F(ImportRunTest, EmptyPathFailsLikeAMissingMailbox) {
  EXPECT_NE(Run({"import "}), 0);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening()));
}

TEST_F(ImportRunTest, BlankInFrontOfAPathBelongsToIt) {
  const std::string box = Box("Inbox", Mail("one"));
  EXPECT_NE(Run({"import  " + box}), 0);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening()));
}

TEST_F(ImportRunTest, MailboxThatCannotBeOpenedEndsTheRunThere) {
  const std::string a = Box("A", Mail("a1"));
  const std::string b = Box("B", Mail("b1"));
  os::WriteAttributes(b, os::kReadOnly);
  EXPECT_EQ(Run({"action move", "import " + a, "import " + b}), 75);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() + OpenBox("A") + logOff + OneMail("a1", "item1", "0.2") +
                                        CloseBox("50", "1") + OpenBox("B")));
  EXPECT_EQ(folder.Read("A"), WithStatus(Mail("a1"), "a1", '9')) << "the finished mailbox keeps its marks";
}

TEST_F(ImportRunTest, FailingPasteLeavesAllMailsInTheMailbox) {
  const std::string bytes = Mail("one") + Mail("two");
  host.Log.FailOn("Location(\"Archiv\").PasteRecord", 2);
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 440);
  EXPECT_THAT(Calls(), ElementsAreArray(Opening() + OpenBox("Inbox") + logOff +
                                        OneMail("one", "item1", "0.2") + Lines{"Paste two"}));
  EXPECT_EQ(folder.Read("Inbox"), bytes) << "also the mail whose item exists";
  EXPECT_FALSE(host.Global.IsLogEnabled);
}

TEST_F(ImportRunTest, FailingTakeFileLeavesTheItemUnconnectedAndTheMailInTheMailbox) {
  const std::string bytes = Mail("one") + Mail("two");
  host.Log.FailOn("item1.TakeFile");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 440);
  EXPECT_THAT(Calls(),
              ElementsAreArray(Opening() + OpenBox("Inbox") + logOff +
                               Lines{"Paste one", "item1.SetConnected(false)", "item1.TakeFile(\"File\""}));
  EXPECT_EQ(folder.Read("Inbox"), bytes);
}

TEST_F(ImportRunTest, FailureWhileMailsAreDeletedKeepsTheLogOff) {
  const std::string bytes = Mail("one") + Mail("two");
  const std::string box = Box("Inbox", bytes);
  OnPaste(2, [&] { os::WriteAttributes(box, os::kReadOnly); });
  EXPECT_EQ(Run({"action move", "import " + box}), 75);
  EXPECT_EQ(folder.Read("Inbox"), bytes);
  EXPECT_FALSE(host.Global.IsLogEnabled);
  EXPECT_THAT(Log(), ElementsAre("\"Import Thunderbird Archiv\"", "\" 14:30:05: <f>\\Inbox\""));
}

// --- What the observer hears ----------------------------------------------------------------------------

class ImportObserverTest : public ImportRunTest {
 protected:
  static std::string MailWithAttachment(const std::string& subject) {
    std::string mail = Mail(subject);
    return mail.insert(mail.find("Message-ID"), "Content-Type: multipart/mixed; boundary=b\r\n") +
           "--b\r\nContent-Disposition: attachment; filename=a.txt\r\n\r\nx\r\n--b--\r\n\r\n";
  }
};

TEST_F(ImportObserverTest, TellsWhatBecameOfEveryMail) {
  const std::string a = Box("A", Mail("one") + Mail("two", 250, "0009") + Mail("three"));
  const std::string b = Box("B", Mail("four", 250, "0008") + Mail("five"));
  EXPECT_EQ(Run({"import " + a, "import " + b}), 0);
  EXPECT_THAT(observer.events, ElementsAre("copying to Archiv", "delivered A at 0", "expunged 1",
                                           "delivered A at 500", "expunged 1", "delivered B at 250"));
}

TEST_F(ImportObserverTest, MailThatCouldNotBeWrittenWholeHasFailedAndStaysInTheMailbox) {
  const std::string bytes = Mail("one") + MailWithAttachment("two") + Mail("three");
  folder.MakeFolder("temp\\att1");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  const std::string third = std::to_string(250 + MailWithAttachment("two").size());
  EXPECT_THAT(observer.events,
              ElementsAre("moving to Archiv", "delivered Inbox at 0",
                          testing::StartsWith("failed Inbox at 250: " + folder.Path("temp\\att1") + ": "),
                          "delivered Inbox at " + third, "marking in Inbox"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "three", '9'));
}

TEST_F(ImportObserverTest, MailWhoseBodyCouldNotBeReadHasFailedAndStaysInTheMailbox) {
  const std::string bytes = Mail("one") + LongMail("two") + Mail("three");
  const std::string box = Box("Inbox", bytes);
  const DiskFault fault({.calls = DiskCall::Read, .number = 2, .pathEnd = "/Inbox"});
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_TRUE(fault.WasReached());
  const std::string third = std::to_string(250 + LongMail("two").size());
  EXPECT_THAT(observer.events, ElementsAre("moving to Archiv", "delivered Inbox at 0",
                                           testing::StartsWith("failed Inbox at 250: " + box + ": "),
                                           "delivered Inbox at " + third, "marking in Inbox"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "three", '9'));
}

TEST_F(ImportObserverTest, MailboxThatCouldNotBeReadOnHasFailedThereAndTheRunGoesOn) {
  // What is after a closing boundary belongs to no mail.
  const std::string bytes = MailWithAttachment("one") + std::string(300'000, '\r') + Mail("two");
  const std::string a = Box("A", bytes);
  const std::string b = Box("B", Mail("three"));
  const DiskFault fault({.calls = DiskCall::Read, .number = 2, .pathEnd = "/A"});
  EXPECT_EQ(Run({"action move", "import " + a, "import " + b}), 0);
  EXPECT_TRUE(fault.WasReached());
  EXPECT_THAT(observer.events, ElementsAre("moving to Archiv", "delivered A at 0",
                                           testing::AllOf(testing::StartsWith("failed A at "),
                                                          testing::HasSubstr(": " + a + ": ")),
                                           "marking in A", "delivered B at 0", "marking in B"));
  EXPECT_EQ(folder.Read("A"), WithStatus(bytes, "one", '9'));
}

TEST_F(ImportObserverTest, AttachmentThatCouldNotBeGivenItsNameIsTakenFromWhereItIs) {
  const std::string bytes = MailWithAttachment("one") + Mail("two");
  folder.MakeFolder("temp\\a.txt");
  EXPECT_EQ(Run({"action move", "import " + Box("Inbox", bytes)}), 0);
  EXPECT_THAT(observer.events,
              ElementsAre("moving to Archiv", "delivered Inbox at 0",
                          "delivered Inbox at " + std::to_string(MailWithAttachment("one").size()),
                          "marking in Inbox"));
  EXPECT_THAT(host.Log.Lines(), testing::Contains(testing::StartsWith("item1.TakeFile(\"FileAttach1\",\"" +
                                                                      folder.Path("temp\\att1") + "\",")));
}

TEST_F(ImportObserverTest, FailureThatEndsTheRunIsThatOfTheMailAtHand) {
  for (const std::string call : {"Location(\"Archiv\").PasteRecord", "item2.TakeFile"}) {
    RecordingHost fresh;
    fresh.Global.TemporaryPath = host.Global.TemporaryPath;
    fresh.Global.Objects["Archiv"] = fresh.MakeLocation("Archiv");
    fresh.AddTopics();
    const std::string box =
        Box("Inbox", Mail("gone", 250, "0009") + Mail("one") + Mail("two") + Mail("three"));
    fresh.Dialogs.WizardAnswer = "target Archiv\r\nimport " + box + "\r\n";
    fresh.Log.FailOn(call, call.starts_with("item") ? 1 : 2);
    std::string reason;
    RecordingRunObserver heard;
    Actions actions;
    actions.SetRunObserver(&heard);
    try {
      actions.execute("importmails");
    } catch (const Failure& failure) {
      reason = failure.what();
    }
    EXPECT_NE(reason, "");
    EXPECT_THAT(heard.events, ElementsAre("copying to Archiv", "expunged 1", "delivered Inbox at 250",
                                          "failed Inbox at 500: " + reason));
  }
}

TEST_F(ImportObserverTest, CancelledRunCountsWhatItSaw) {
  CancelInMail(2);
  EXPECT_EQ(Run({"import " + Box("Inbox", Mail("one") + Mail("two") + Mail("three"))}), 0);
  EXPECT_THAT(observer.events,
              ElementsAre("copying to Archiv", "delivered Inbox at 0", "delivered Inbox at 250"));
}

TEST_F(ImportObserverTest, RunWithoutItsTargetTellsNothing) {
  EXPECT_EQ(Run({"target Weg", "import " + Box("Inbox", Mail("one"))}), 0);
  EXPECT_THAT(observer.events, IsEmpty());
}

// --- Mailboxes that change meanwhile --------------------------------------------------------------------

TEST_F(ImportRunTest, OnlyMailsThatStillStandWhereTheyWereReadAreMarked) {
  const std::string bytes = Mail("one") + Mail("two") + Mail("three");
  const std::string box = Box("Inbox", bytes);
  const std::string later = Box("Later", Mail("four"));
  folder.Write("Inbox.msf", "index");
  // The first mail went, another came after it, and the last is where it was.
  const std::string rewritten = Mail("two") + Mail("new") + Mail("three");
  OnPaste(3, [&] { folder.Write("Inbox", rewritten); });
  EXPECT_EQ(Run({"action move", "import " + box, "import " + later}), 0);
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(rewritten, "three", '9'));
  EXPECT_FALSE(folder.Exists("Inbox.msf"));
  EXPECT_EQ(folder.Read("Later"), WithStatus(Mail("four"), "four", '9'));
  EXPECT_THAT(observer.events,
              ElementsAre("moving to Archiv", "delivered Inbox at 0", "delivered Inbox at 250",
                          "delivered Inbox at 500", "marking in Inbox", "not marked Inbox at 0: OtherMail",
                          "not marked Inbox at 250: OtherMail", "delivered Later at 0", "marking in Later"));
}

TEST_F(ImportRunTest, MailboxThatBecameShorterMeanwhileKeepsItsMailsAndTheRunGoesOn) {
  const std::string box = Box("Inbox", Mail("one") + Mail("two") + Mail("three"));
  const std::string later = Box("Later", Mail("four"));
  folder.Write("Inbox.msf", "index");
  // As if it was cleaned up: where the first mail was, there is the second by now.
  OnPaste(3, [&] { folder.Write("Inbox", Mail("two") + Mail("three")); });
  EXPECT_EQ(Run({"action move", "import " + box, "import " + later}), 0);
  EXPECT_EQ(folder.Read("Inbox"), Mail("two") + Mail("three"));
  EXPECT_FALSE(folder.Exists("Inbox.msf"));
  EXPECT_EQ(folder.Read("Later"), WithStatus(Mail("four"), "four", '9'));
  EXPECT_EQ(Log().back(), "\" 14:30:05 finished (4 Items)\"");
}

TEST_F(ImportRunTest, MailboxThatIsGoneIsNotMadeAgain) {
  const std::string box = Box("Inbox", Mail("one") + Mail("two"));
  folder.Write("Inbox.msf", "index");
  OnPaste(2, [&] { std::filesystem::remove(folder.Native("Inbox")); });
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_FALSE(folder.Exists("Inbox"));
  EXPECT_FALSE(folder.Exists("Inbox.msf"));
  EXPECT_THAT(
      observer.events,
      ElementsAre("moving to Archiv", "delivered Inbox at 0", "delivered Inbox at 250", "marking in Inbox",
                  "not marked Inbox at 0: OtherMail", "not marked Inbox at 250: OtherMail"));
}

TEST_F(ImportRunTest, StreamIsClosedBeforeMailsAreMarked) {
  const std::string box = Box("Inbox", Mail("one"));
  int told = 0;
  observer.onMarking = [&](const std::string& mailbox) {
    ++told;
    EXPECT_EQ(mailbox, box);
    EXPECT_EQ(folder.Read("Inbox"), Mail("one"));
    for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code vanished;
      EXPECT_NE(std::filesystem::read_symlink(open.path(), vanished), folder.Native("Inbox"));
    }
  };
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  EXPECT_EQ(told, 1);
}

TEST_F(ImportRunTest, MarkingIsToldOncePerMailboxAndOnlyWhereMailsGo) {
  const std::string a = Box("A", Mail("one") + Mail("two"));
  const std::string b = Box("B", Mail("three", 250, "0009"));
  EXPECT_EQ(Run({"action copy", "import " + a}), 0);
  EXPECT_THAT(observer.events, testing::Not(testing::Contains("marking in A")));
  EXPECT_EQ(Run({"action move", "import " + b, "import " + a}), 0);
  EXPECT_EQ(std::count(observer.events.begin(), observer.events.end(), "marking in A"), 1);
  EXPECT_THAT(observer.events, testing::Not(testing::Contains("marking in B")));
}

TEST_F(ImportRunTest, FailureBeforeMarkingEndsTheRunWithNothingMarked) {
  const std::string bytes = Mail("one") + Mail("two");
  const std::string box = Box("Inbox", bytes);
  const std::string later = Box("Later", Mail("three"));
  folder.Write("Inbox.msf", "index");
  observer.onMarking = [](const std::string&) { throw Failure(ErrorNumber::DeviceIo, "no"); };
  EXPECT_EQ(Run({"action move", "import " + box, "import " + later}), 57);
  EXPECT_EQ(folder.Read("Inbox"), bytes);
  EXPECT_TRUE(folder.Exists("Inbox.msf"));
  EXPECT_THAT(Pasted(), ElementsAre("one", "two"));
  EXPECT_EQ(host.Log.Lines().back(), "Global.SetLogEnabled(false)");
}

TEST_F(ImportRunTest, MailboxThatGrewMeanwhileLosesTheImportedMailsOnly) {
  const std::string bytes = Mail("one") + Mail("two");
  const std::string box = Box("Inbox", bytes);
  OnPaste(2, [&] { folder.Write("Inbox", bytes + Mail("new")); });
  EXPECT_EQ(Run({"action move", "import " + box}), 0);
  const std::string rest = target->Pasted.size() == 3 ? WithStatus(Mail("new"), "new", '9') : Mail("new");
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(WithStatus(bytes, "one", '9'), "two", '9') + rest);
}

TEST_F(ImportRunTest, EveryFailingHostCallEndsTheRunWhereItStands) {
  const std::string bytes = Mail("one") + Mail("two");
  for (int nth = 1;; ++nth) {
    RecordingHost fresh;
    fresh.Global.TemporaryPath = host.Global.TemporaryPath;
    fresh.Global.Objects["Archiv"] = fresh.MakeLocation("Archiv");
    fresh.AddTopics();
    fresh.Log.RecordReads = true;
    fresh.Dialogs.WizardAnswer =
        "target Archiv\r\naction move\r\noption tree\r\nimport " + Box("Inbox", bytes) + "\r\n";
    fresh.Log.FailOn("", nth, true);
    Actions actions;
    const int number = SwallowedNumber([&] { actions.execute("importmails"); });
    const std::size_t calls = fresh.Log.Lines().size();
    if (number == 0) {
      EXPECT_LT(calls, static_cast<std::size_t>(nth)) << "a failure was swallowed";
      break;
    }
    EXPECT_EQ(number, 440);
    // The record of a mail is made with all failures swallowed; the next call then fails as well.
    const bool inRecord = fresh.Log.Lines()[nth - 1] == "Global.UserName";
    ASSERT_EQ(calls, static_cast<std::size_t>(nth + (inRecord ? 1 : 0)))
        << "a call came after the failed one";
    // A mail is marked only when both are in the target with all that belongs to them.
    if (folder.Read("Inbox") != bytes) {
      EXPECT_EQ(fresh.Log.Only({"item2.SetConnected(true)"}).size(), 1U);
    }
  }
}

TEST_F(ImportRunTest, HostWithoutTopicsFailsWhenAllMailIsSafelyIn) {
  host.Global.Objects.erase("topics");
  const std::string bytes = Mail("one");
  EXPECT_EQ(Run({"action move", "option tree", "import " + Box("Inbox", bytes)}), 91);
  EXPECT_THAT(Pasted(), ElementsAre("one"));
  EXPECT_EQ(folder.Read("Inbox"), WithStatus(bytes, "one", '9'));
  EXPECT_EQ(host.Log.Lines().back(), "Global.Report(29,\" 14:30:05 finished (1 Items)\",nothing)");
}

TEST_F(ImportRunTest, TopicsAreRebuiltOncePerRun) {
  const std::string box = Box("Inbox", Mail("one") + Mail("two"));
  EXPECT_EQ(Run({"import " + box, "import " + box}), 0);
  EXPECT_THAT(host.Log.Only({"Topics"}), ElementsAre("Topics.ClearLocation(Location(\"Archiv\"))",
                                                     "Topics.AddLocation(Location(\"Archiv\"))"));
}

}  // namespace
}  // namespace vorlent
