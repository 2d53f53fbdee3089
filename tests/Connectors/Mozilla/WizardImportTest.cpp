#include "Connectors/Mozilla/WizardImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Failure.h"
#include "Support/OddEntries.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using test::RecordingHost;
using testing::ElementsAre;
using testing::IsEmpty;

class WizardImportTest : public testing::Test {
 protected:
  WizardImport& Wizard() {
    if (wizard_ == nullptr) wizard_ = std::make_unique<WizardImport>();
    return *wizard_;
  }

  template <class Kind>
  Kind& Get(std::string_view name) {
    return Wizard().Form().Get<Kind>(name);
  }
  Sheet& Folders() { return Get<Sheet>("qzelSheet1"); }
  Sheet& Mailboxes() { return Get<Sheet>("qzelSheet2"); }
  bool Option1() { return Get<OptionButton>("Option1").IsSet(); }

  // An entry of a browse: text, address, path.
  ItemPtr Entry(std::string text, std::string location, std::string path) {
    auto item = host.MakeItem();
    item->DisplayText = std::move(text);
    item->Data = {{"Location", std::move(location)}, {"Path", std::move(path)}};
    return item;
  }

  // A profile with two accounts, the first with one folder that has subfolders and one that has none.
  void OfferFolders() {
    host.Browsable["thunderbird://*"] = {Entry("Profil 'p'", "thunderbird://p/*", "C:\\P\\A\\|C:\\P\\B\\")};
    host.Browsable["thunderbird://p/*"] = {Entry("A", "thunderbird://p/A/*", "C:\\P\\A\\"),
                                           Entry("B", "thunderbird://p/B/*", "C:\\P\\B\\")};
    host.Browsable["thunderbird://p/A/*"] = {Entry("Inbox", "thunderbird://p/A/Inbox/*", "C:\\P\\A\\Inbox"),
                                             Entry("Sent", "thunderbird://p/A/Sent/", "C:\\P\\A\\Sent")};
    host.Browsable["thunderbird://p/A/Inbox/*"] = {
        Entry("2009", "thunderbird://p/A/Inbox/2009/", "C:\\P\\A\\Inbox.sbd\\2009")};
  }

  std::shared_ptr<test::RecordingLocation> Offer(std::string name, std::string type = "") {
    auto location = host.MakeLocation(name);
    location->Options["type"] = std::move(type);
    host.Global.KnownLocations.push_back(location);
    host.Global.Objects[name] = location;
    return location;
  }

  // Rows as indentation, mark, text, "<" tag ">".
  static std::vector<std::string> Rows(const Sheet& sheet) {
    std::vector<std::string> lines;
    for (std::int32_t i = 1; i <= sheet.RowCount(); ++i) {
      const SheetRow& row = sheet.Row(i);
      std::string tag = row.Tag();
      if (const auto feed = tag.find('\n'); feed != std::string::npos) tag.replace(feed, 1, " ; ");
      lines.push_back(std::string(static_cast<std::size_t>(row.Indent()), '.') +
                      (row.IsTicked() ? "[x]" : "[ ]") + row.Text() + " <" + tag + ">" +
                      (row.Icon().empty() ? "" : " " + row.Icon()));
    }
    return lines;
  }
  std::vector<std::string> MailboxTexts() {
    std::vector<std::string> texts;
    for (std::int32_t i = 1; i <= Mailboxes().RowCount(); ++i)
      texts.push_back(Mailboxes().Row(i).Text());
    return texts;
  }

  SheetRow& RowOf(std::string_view text) {
    for (std::int32_t i = 1; i <= Folders().RowCount(); ++i) {
      if (Folders().Row(i).Text() == text) return Folders().Row(i);
    }
    throw Failure(ErrorNumber::InvalidCall, "no row " + std::string(text));
  }
  void Open(std::string_view text) { Folders().UserOpens(RowOf(text)); }
  void Tick(std::string_view text) { Folders().UserTicks(RowOf(text), CheckState::Ticked); }
  void Untick(std::string_view text) { Folders().UserTicks(RowOf(text), CheckState::Clear); }

  ScopedRecordingPlatform platform;
  RecordingHost host;

 private:
  std::unique_ptr<WizardImport> wizard_;
};

// --- Creation -------------------------------------------------------------------------------------------

TEST_F(WizardImportTest, WizardHasFourPages) {
  EXPECT_EQ(Wizard().Pages(), 4);
  Wizard().SetPages(7);
  EXPECT_EQ(Wizard().Pages(), 7);
}

TEST_F(WizardImportTest, LocationsWithoutATypeAreOfferedInOrder) {
  Offer("Archiv");
  Offer("Mail", "thunderbird");
  Offer("Privat");
  EXPECT_THAT(Get<DropDown>("Combo1").Entries(), ElementsAre("Archiv", "Privat"));
  EXPECT_EQ(Get<DropDown>("Combo1").Text(), "Archiv");
}

TEST_F(WizardImportTest, FirstTargetIsSelectedAndDescribed) {
  Offer("Archiv")->Folder = "C:\\Archiv\\";
  EXPECT_EQ(Get<Control>("LabelInfo").Caption(), "FileLocation: C:\\Archiv\\\r\n");
}

TEST_F(WizardImportTest, WithoutALocationTheTargetIsEmpty) {
  Offer("Mail", "thunderbird");
  EXPECT_THAT(Get<DropDown>("Combo1").Entries(), IsEmpty());
  EXPECT_EQ(Get<Control>("LabelInfo").Caption(), "");
  EXPECT_EQ(Wizard().Parameter(), "target \r\naction copy\r\nkeyword #subpath\r\noption tree\r\n");
}

TEST_F(WizardImportTest, PathAndItsButtonAreEnabled) {
  EXPECT_TRUE(Get<TextBox>("Text1").Enabled());
  EXPECT_TRUE(Get<Button>("qzelButton1").Enabled());
}

TEST_F(WizardImportTest, FailureWhileLocationsAreAskedRises) {
  Offer("Archiv");
  host.Log.FailOn("Location(\"Archiv\").GetOption");
  EXPECT_EQ(SwallowedNumber([&] { Wizard(); }), 440);
}

// --- ShowPage -------------------------------------------------------------------------------------------

TEST_F(WizardImportTest, OnlyThePageAskedForIsShown) {
  for (std::int16_t page = 1; page <= 4; ++page) {
    Wizard().ShowPage(page);
    for (std::int16_t other = 1; other <= 4; ++other) {
      EXPECT_EQ(Get<Control>("Picture" + std::to_string(other)).Visible(), other == page);
    }
  }
}

TEST_F(WizardImportTest, FirstPageStartsWithTheRootAndItsPlaceholder) {
  Wizard().ShowPage(1);
  EXPECT_THAT(Rows(Folders()),
              ElementsAre("[ ]thunderbird:// <thunderbird://> file", ".[ ]... <thunderbird://*>"));
  EXPECT_EQ(Folders().RowLayout(), 260);
  EXPECT_FALSE(Folders().Row(1).Expanded());
  EXPECT_THAT(host.LocationsMade, IsEmpty()) << "nothing is read before the user opens a row";
}

TEST_F(WizardImportTest, ComingBackToTheFirstPageKeepsTheTree) {
  OfferFolders();
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Wizard().ShowPage(2);
  Wizard().ShowPage(1);
  EXPECT_THAT(Rows(Folders()), ElementsAre("[ ]thunderbird:// <thunderbird://> file",
                                           ".[ ]Profil 'p' <thunderbird://p/ ; C:\\P\\A\\|C:\\P\\B\\> file",
                                           "..[ ]... <thunderbird://p/*>"));
}

TEST_F(WizardImportTest, GoingBackFromPageThreeKeepsTheTicksOfPageTwo) {
  Wizard().ShowPage(1);
  Get<TextBox>("Text1").UserTypes("C:\\mails");
  Wizard().ShowPage(2);
  Mailboxes().UserTicks(Mailboxes().Row(1), CheckState::Clear);
  Wizard().ShowPage(3);
  Wizard().ShowPage(2);
  EXPECT_THAT(Rows(Mailboxes()), ElementsAre("[ ]C:\\mails <> file"));
  Wizard().ShowPage(1);
  Wizard().ShowPage(2);
  EXPECT_THAT(Rows(Mailboxes()), ElementsAre("[x]C:\\mails <> file"));
}

TEST_F(WizardImportTest, PageTwoReachedWithoutPageOneStaysEmpty) {
  Get<TextBox>("Text1").UserTypes("C:\\mails");
  Wizard().ShowPage(2);
  EXPECT_EQ(Mailboxes().RowCount(), 0);
}

// --- The tree -------------------------------------------------------------------------------------------

TEST_F(WizardImportTest, OpeningARowFetchesItsChildrenOnce) {
  OfferFolders();
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Open("Profil 'p'");
  Open("A");
  EXPECT_THAT(Rows(Folders()), ElementsAre("[ ]thunderbird:// <thunderbird://> file",
                                           ".[ ]Profil 'p' <thunderbird://p/ ; C:\\P\\A\\|C:\\P\\B\\> file",
                                           "..[ ]A <thunderbird://p/A/ ; C:\\P\\A\\> file",
                                           "...[ ]Inbox <thunderbird://p/A/Inbox/ ; C:\\P\\A\\Inbox> file",
                                           "....[ ]... <thunderbird://p/A/Inbox/*>",
                                           "...[ ]Sent <thunderbird://p/A/Sent/ ; C:\\P\\A\\Sent> file",
                                           "..[ ]B <thunderbird://p/B/ ; C:\\P\\B\\> file",
                                           "...[ ]... <thunderbird://p/B/*>"));
  EXPECT_EQ(host.LocationsMade.size(), 3U);
  Folders().UserCloses(RowOf("A"));
  Open("A");
  EXPECT_EQ(host.LocationsMade.size(), 3U) << "a second opening finds no placeholder";
}

TEST_F(WizardImportTest, EachFetchOpensLoadsAndClosesALocation) {
  OfferFolders();
  Wizard().ShowPage(1);
  host.Log.RecordReads = true;
  Open("thunderbird://");
  EXPECT_THAT(host.Log.Only({"Location(\"\")."}),
              ElementsAre("Location(\"\").Open(\"thunderbird://*\")", "Location(\"\").Load",
                          "Location(\"\").ItemCount", "Location(\"\").ItemAt(1)", "Location(\"\").Close"));
}

TEST_F(WizardImportTest, OpeningARowChoosesTheFolders) {
  OfferFolders();
  Wizard().ShowPage(1);
  Get<OptionButton>("Option2").UserPicks();
  Open("thunderbird://");
  EXPECT_TRUE(Option1());
}

TEST_F(WizardImportTest, OpeningTheLastRowDoesNothing) {
  Wizard().ShowPage(1);
  Get<OptionButton>("Option2").UserPicks();
  Folders().UserOpens(Folders().Row(2));
  EXPECT_FALSE(Option1());
  EXPECT_THAT(host.LocationsMade, IsEmpty());
}

TEST_F(WizardImportTest, OpeningARowThatEndsAtASiblingChoosesNothing) {
  OfferFolders();
  host.Browsable["thunderbird://p/*"].clear();
  Wizard().ShowPage(1);
  Folders().AddRow("later", "file", 0, false, -1, "x");
  Open("thunderbird://");
  Get<OptionButton>("Option2").UserPicks();
  Open("Profil 'p'");  // its placeholder goes, and nothing comes in its place
  EXPECT_TRUE(Option1());
  Get<OptionButton>("Option2").UserPicks();
  Folders().UserCloses(RowOf("Profil 'p'"));
  Open("Profil 'p'");
  EXPECT_FALSE(Option1()) << "the search stopped at the sibling";
}

TEST_F(WizardImportTest, OpeningARowWhoseSearchRunsOffTheEndChoosesTheFolders) {
  OfferFolders();
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Folders().UserCloses(RowOf("thunderbird://"));
  Get<OptionButton>("Option2").UserPicks();
  Open("thunderbird://");
  EXPECT_TRUE(Option1());
}

TEST_F(WizardImportTest, PlaceholderOfADeeperRowIsNotTaken) {
  Wizard().ShowPage(1);
  Folders().ClearRows();
  Folders().AddRow("a", "file", 0, false, -1, "a");
  Folders().AddRow("b", "file", 1, false, -1, "b");
  Folders().AddRow("...", "", 2, false, -1, "b*");
  Open("a");
  EXPECT_THAT(host.LocationsMade, IsEmpty());
  EXPECT_EQ(Folders().RowCount(), 3);
}

TEST_F(WizardImportTest, TickingARowRemovesAllThatIsBelowIt) {
  OfferFolders();
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Open("Profil 'p'");
  Open("A");
  Get<OptionButton>("Option2").UserPicks();
  Tick("A");
  EXPECT_THAT(Rows(Folders()), ElementsAre("[ ]thunderbird:// <thunderbird://> file",
                                           ".[ ]Profil 'p' <thunderbird://p/ ; C:\\P\\A\\|C:\\P\\B\\> file",
                                           "..[x]A <thunderbird://p/A/ ; C:\\P\\A\\> file",
                                           "..[ ]B <thunderbird://p/B/ ; C:\\P\\B\\> file",
                                           "...[ ]... <thunderbird://p/B/*>"));
  EXPECT_TRUE(Option1());
}

TEST_F(WizardImportTest, ClearingARowClosesItAndBringsAPlaceholder) {
  OfferFolders();
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Open("Profil 'p'");
  Open("A");
  Tick("A");
  Get<OptionButton>("Option2").UserPicks();
  int drawn = 0;
  Folders().OnRowsChange = [&] { ++drawn; };
  Untick("A");
  EXPECT_THAT(Rows(Folders())[2], "..[ ]A <thunderbird://p/A/ ; C:\\P\\A\\> file");
  EXPECT_THAT(Rows(Folders())[3], "...[ ]... <thunderbird://p/A/*>");
  EXPECT_FALSE(RowOf("A").Expanded());
  EXPECT_TRUE(Option1());
  EXPECT_GE(drawn, 1);
  Open("A");
  EXPECT_EQ(Folders().Row(4).Text(), "Inbox");
}

TEST_F(WizardImportTest, LeafTickedAndClearedAsksForItsAddressWithAStar) {
  OfferFolders();
  host.Browsable["thunderbird://p/A/Sent/*"] = {Entry("Neu", "thunderbird://p/A/Sent/Neu/", "C:\\P\\A\\x")};
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Open("Profil 'p'");
  Open("A");
  Tick("Sent");
  Untick("Sent");
  EXPECT_EQ(RowOf("Sent").FirstChild()->Tag(), "thunderbird://p/A/Sent/*");
  Open("Sent");
  EXPECT_EQ(RowOf("Sent").FirstChild()->Text(), "Neu");
}

TEST_F(WizardImportTest, ClearingTheRootBringsBackItsFirstPlaceholder) {
  Wizard().ShowPage(1);
  Tick("thunderbird://");
  EXPECT_EQ(Folders().RowCount(), 1);
  Untick("thunderbird://");
  EXPECT_THAT(Rows(Folders()),
              ElementsAre("[ ]thunderbird:// <thunderbird://> file", ".[ ]... <thunderbird://*>"));
}

TEST_F(WizardImportTest, AddSubQueriesAppendsAtMinusOne) {
  OfferFolders();
  EXPECT_FALSE(Wizard().AddSubQueries("thunderbird://p/A/*", -1, 5, 2));
  EXPECT_THAT(Rows(Folders()), ElementsAre(".....[x]Inbox <thunderbird://p/A/Inbox/ ; C:\\P\\A\\Inbox> file",
                                           "......[ ]... <thunderbird://p/A/Inbox/*>",
                                           ".....[x]Sent <thunderbird://p/A/Sent/ ; C:\\P\\A\\Sent> file"));
}

TEST_F(WizardImportTest, AddSubQueriesInsertsInFrontOfAPosition) {
  OfferFolders();
  Folders().AddRow("first", "", 0, false, -1, "");
  Folders().AddRow("last", "", 0, false, -1, "");
  EXPECT_FALSE(Wizard().AddSubQueries("thunderbird://p/A/*", 2, 1, 1));
  EXPECT_THAT(Rows(Folders()),
              ElementsAre("[ ]first <>", ".[ ]Inbox <thunderbird://p/A/Inbox/ ; C:\\P\\A\\Inbox> file",
                          "..[ ]... <thunderbird://p/A/Inbox/*>",
                          ".[ ]Sent <thunderbird://p/A/Sent/ ; C:\\P\\A\\Sent> file", "[ ]last <>"));
}

TEST_F(WizardImportTest, AddSubQueriesOfAnAddressWithoutChildrenAddsNothing) {
  EXPECT_FALSE(Wizard().AddSubQueries("thunderbird://nobody/*", -1, 0, 1));
  EXPECT_EQ(Folders().RowCount(), 0);
}

TEST_F(WizardImportTest, IndentationBeyondSixteenBitsOverflows) {
  OfferFolders();
  EXPECT_EQ(SwallowedNumber([&] { Wizard().AddSubQueries("thunderbird://p/A/*", -1, 32767, 1); }), 6);
  EXPECT_EQ(Folders().RowCount(), 1) << "the row itself was added before its placeholder failed";
}

TEST_F(WizardImportTest, FailureWhileFetchingRisesWithThePlaceholderGone) {
  OfferFolders();
  Wizard().ShowPage(1);
  Get<OptionButton>("Option2").UserPicks();
  host.Log.FailOn("Location(\"\").Load");
  EXPECT_EQ(SwallowedNumber([&] { Open("thunderbird://"); }), 440);
  EXPECT_EQ(Folders().RowCount(), 1);
  EXPECT_FALSE(Option1());
  EXPECT_THAT(host.Log.Only({"Location(\"\").Close"}), IsEmpty());
}

TEST_F(WizardImportTest, FailureWhileClosingRisesWithTheRowsInPlace) {
  OfferFolders();
  Wizard().ShowPage(1);
  Get<OptionButton>("Option2").UserPicks();
  host.Log.FailOn("Location(\"\").Close");
  EXPECT_EQ(SwallowedNumber([&] { Open("thunderbird://"); }), 440);
  EXPECT_EQ(Folders().RowCount(), 3);
  EXPECT_FALSE(Option1());
}

// --- The path and the file dialog -----------------------------------------------------------------------

TEST_F(WizardImportTest, TypingAPathChoosesTheFile) {
  Get<TextBox>("Text1").UserTypes("C");
  EXPECT_FALSE(Option1());
  EXPECT_TRUE(Get<OptionButton>("Option2").IsSet());
}

TEST_F(WizardImportTest, FileDialogStartsInTheFolderOfThePath) {
  Get<TextBox>("Text1").UserTypes("C:\\Mail\\Inbox");
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("D:\\Other\\Sent"));
  Wizard().SetWindow(4711);
  Get<Button>("qzelButton1").UserPresses();
  ASSERT_EQ(platform->fileDialogRequests.size(), 1U);
  const FileDialogRequest& request = platform->fileDialogRequests[0];
  EXPECT_EQ(request.owner, 4711);
  EXPECT_EQ(request.title, "Thunderbird-Datei");
  EXPECT_EQ(request.initialFolder, "C:\\Mail\\");
  EXPECT_EQ(request.nameBuffer.substr(0, request.nameBuffer.find('\0')), "Inbox");
  EXPECT_EQ(request.filter,
            std::string("Thunderbird-Datei\0*\0MBOX-Datei\0*.mbox\0Alle Dateien\0*.*\0\0", 56));
  EXPECT_EQ(request.defaultExtension, "mbox");
  EXPECT_EQ(request.flags, 6148);
  EXPECT_FALSE(request.save);
  EXPECT_EQ(Get<TextBox>("Text1").Text(), "D:\\Other\\Sent");
}

TEST_F(WizardImportTest, FileDialogStartsInTheCurrentFolderOfTheWizardsCreation) {
  platform->currentFolder = "C:\\Start";
  Wizard();
  platform->currentFolder = "C:\\Later";
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("C:\\Else\\a.mbox"));
  Get<Button>("qzelButton1").UserPresses();
  EXPECT_EQ(platform->fileDialogRequests.at(0).initialFolder, "C:\\Start");
  EXPECT_EQ(Get<TextBox>("Text1").Text(), "C:\\Else\\a.mbox");
  EXPECT_TRUE(Get<OptionButton>("Option2").IsSet());

  Get<TextBox>("Text1").UserTypes("");
  Get<Button>("qzelButton1").UserPresses();
  EXPECT_EQ(platform->fileDialogRequests.at(1).initialFolder, "C:\\Start") << "it stays as it was";
}

TEST_F(WizardImportTest, NameWithoutAFolderIsProposedInTheStartFolder) {
  platform->currentFolder = "C:\\Start";
  Get<TextBox>("Text1").UserTypes("Inbox");
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("C:\\Start\\Sent"));
  Get<Button>("qzelButton1").UserPresses();
  const FileDialogRequest& request = platform->fileDialogRequests.at(0);
  EXPECT_EQ(request.initialFolder, "C:\\Start");
  EXPECT_EQ(request.nameBuffer, "Inbox" + std::string(295, '\0'));
  EXPECT_EQ(Get<TextBox>("Text1").Text(), "C:\\Start\\Sent");
}

TEST_F(WizardImportTest, WithoutAnyFolderTheChoiceComesAsAWholePath) {
  platform->currentFolder = "";
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("C:\\Mail\\Inbox"));
  Get<Button>("qzelButton1").UserPresses();
  EXPECT_EQ(Get<TextBox>("Text1").Text(), "C:\\Mail\\Inbox");
}

TEST_F(WizardImportTest, CancelledFileDialogChangesNothing) {
  Get<TextBox>("Text1").UserTypes("C:\\Mail\\Inbox");
  Get<OptionButton>("Option1").UserPicks();
  Get<Button>("qzelButton1").UserPresses();
  EXPECT_EQ(platform->fileDialogRequests.size(), 1U);
  EXPECT_EQ(Get<TextBox>("Text1").Text(), "C:\\Mail\\Inbox");
  EXPECT_TRUE(Option1());
}

// --- Page 2: the list of mailboxes ----------------------------------------------------------------------

class WizardMailboxesTest : public WizardImportTest {
 protected:
  // A mailbox with its index file; returns its path.
  std::string Mailbox(const std::string& name) {
    folder.Write(name + ".msf", "");
    return folder.Write(name, "");
  }
  std::string At(std::string_view name) { return folder.Path(name); }

  void List(const std::string& path, bool subfolders = true) {
    Wizard().ShowPage(1);
    Get<TextBox>("Text1").UserTypes(path);
    Get<OptionButton>("Option2").UserPicks();
    Get<CheckBox>("Check1").SetTicked(subfolders);
    Wizard().ShowPage(2);
  }

  TemporaryFolder folder;
};

TEST_F(WizardMailboxesTest, NothingTickedGivesAnEmptyListAndStillACommand) {
  Offer("Archiv");
  Wizard().ShowPage(1);
  Wizard().ShowPage(2);
  EXPECT_EQ(Mailboxes().RowCount(), 0);
  EXPECT_TRUE(Wizard().Finish());
  EXPECT_EQ(Wizard().Parameter(), "target Archiv\r\naction copy\r\nkeyword #subpath\r\noption tree\r\n");
}

TEST_F(WizardMailboxesTest, EmptyPathGivesOneEmptyRow) {
  List("");
  EXPECT_THAT(Rows(Mailboxes()), ElementsAre("[x] <> file"));
  EXPECT_THAT(Wizard().Parameter(), testing::EndsWith("import \r\n"));
}

TEST_F(WizardMailboxesTest, FileOfThePathComesWithItsSubfolders) {
  const std::string inbox = Mailbox("Inbox");
  Mailbox("Inbox.sbd/2009");
  Mailbox("Inbox.sbd/2010");
  Mailbox("Inbox.sbd/2009.sbd/Januar");
  List(inbox);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox"), At("Inbox.sbd\\2009"), At("Inbox.sbd\\2010"),
                                          At("Inbox.sbd\\2009.sbd\\Januar")));
  List(inbox, false);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox")));
}

TEST_F(WizardMailboxesTest, MailFilesShowThemselvesByIndexOrName) {
  Mailbox("Inbox");
  folder.Write("notes.txt", "");
  folder.Write("old.mbox", "");
  folder.Write("OLDER.MBOX", "");
  folder.Write("alone.msf", "");
  folder.Write("Sent", "");
  folder.Write("SENT.MSF", "");
  folder.Write("x.mbox.msf", "");
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox"), At("old.mbox"), At("OLDER.MBOX"), At("Sent")));
}

TEST_F(WizardMailboxesTest, MailboxesNeedNoSummaryToday) {
  Mailbox("Inbox");
  folder.Write("Raw", "From - \r\nSubject: S\r\n\r\n");
  folder.Write("notes.txt", "notes\r\n");
  const ScopedRules today({.mailboxes = MailboxFiles::OfThunderbird});
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox"), At("Raw")));
}

TEST_F(WizardMailboxesTest, OnlySbdFoldersAreSearched) {
  Mailbox("Archiv/Inbox");
  Mailbox("Inbox.sbd/a");
  Mailbox("UPPER.SBD/b");
  Mailbox("Inbox.sbd/Archiv/c");
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox.sbd\\a"), At("UPPER.SBD\\b")));
  Wizard().ShowPage(1);
  Get<TextBox>("Text1").UserTypes(At("Archiv\\"));
  Wizard().ShowPage(2);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Archiv\\Inbox")));
}

TEST_F(WizardMailboxesTest, LinkThatLeadsBackUpIsNotSearchedAgain) {
  Mailbox("Inbox");
  Mailbox("Inbox.sbd/a");
  MAKE_OR_SKIP(MakeLink("..", folder.Native("Inbox.sbd/up.sbd")));
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox"), At("Inbox.sbd\\a")));
}

TEST_F(WizardMailboxesTest, WhatIsNoFileIsPassedOverAndTold) {
  Mailbox("Inbox");
  folder.Write("Pipe.msf", "");
  MAKE_OR_SKIP(MakePipe(folder.Native("Pipe")));
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Inbox")));
  EXPECT_EQ(host.Log.Only({"Global.Report(27"}).size(), 1U);
}

TEST_F(WizardMailboxesTest, FolderBesideAMailboxIsNoIndex) {
  folder.Write("Inbox", "");
  folder.MakeFolder("Inbox.msf");
  List(folder.Path() + "\\");
  EXPECT_THAT(MailboxTexts(), IsEmpty());
}

TEST_F(WizardMailboxesTest, FolderPathWithoutSubfoldersGivesNothing) {
  Mailbox("Inbox");
  List(folder.Path() + "\\", false);
  EXPECT_EQ(Mailboxes().RowCount(), 0);
}

TEST_F(WizardMailboxesTest, MissingFolderGivesNothing) {
  List(At("nowhere\\"));
  EXPECT_EQ(Mailboxes().RowCount(), 0);
}

TEST_F(WizardMailboxesTest, MissingFileIsListedAllTheSame) {
  List(At("nowhere"));
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("nowhere")));
}

TEST_F(WizardMailboxesTest, TickedRowsGiveTheirPathsInOrder) {
  Mailbox("A/Inbox");
  Mailbox("A/Inbox.sbd/2009");
  Mailbox("B/Sent");
  host.Browsable["thunderbird://*"] = {
      Entry("Profil 'p'", "thunderbird://p/*", At("A\\") + "|" + At("B\\")),
      Entry("Datei", "thunderbird://q/", At("B\\Sent")),
      Entry("nicht", "thunderbird://r/", At("C\\")),
  };
  Wizard().ShowPage(1);
  Open("thunderbird://");
  Tick("Datei");
  Tick("Profil 'p'");
  Wizard().ShowPage(2);
  EXPECT_THAT(Rows(Mailboxes()),
              ElementsAre("[x]" + At("A\\Inbox") + " <> file", "[x]" + At("A\\Inbox.sbd\\2009") + " <> file",
                          "[x]" + At("B\\Sent") + " <> file", "[x]" + At("B\\Sent") + " <> file"));
}

TEST_F(WizardMailboxesTest, TickedRootMeansAllFoldersOfAllProfiles) {
  Mailbox("A/Inbox");
  Mailbox("B/Sent");
  Mailbox("C/Trash");
  host.Browsable["thunderbird://*"] = {
      Entry("Profil 'p'", "thunderbird://p/*", At("A\\") + "|" + At("B\\")),
      Entry("Profil 'q'", "thunderbird://q/*", At("C\\")),
  };
  Wizard().ShowPage(1);
  Tick("thunderbird://");
  host.Log.Clear();
  Wizard().ShowPage(2);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("A\\Inbox"), At("B\\Sent"), At("C\\Trash")));
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Location(\"\").Open(\"thunderbird://*\")", "Location(\"\").Load",
                                            "Location(\"\").Close"));
}

TEST_F(WizardMailboxesTest, RowsBelowATickedRootCountByThemselves) {
  Mailbox("A/Inbox");
  host.Browsable["thunderbird://*"] = {Entry("Profil 'p'", "thunderbird://p/*", At("A\\"))};
  Wizard().ShowPage(1);
  Tick("thunderbird://");
  Wizard().AddSubQueries("thunderbird://*", -1, 1, 2);
  Wizard().ShowPage(2);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("A\\Inbox"), At("A\\Inbox")));
}

TEST_F(WizardMailboxesTest, RootWithoutProfilesGivesNothing) {
  Wizard().ShowPage(1);
  Tick("thunderbird://");
  Wizard().ShowPage(2);
  EXPECT_EQ(Mailboxes().RowCount(), 0);
}

TEST_F(WizardMailboxesTest, FailureWhileListingRises) {
  Wizard().ShowPage(1);
  Tick("thunderbird://");
  host.Log.FailOn("Location(\"\").Open");
  EXPECT_EQ(SwallowedNumber([&] { Wizard().ShowPage(2); }), 440);
}

TEST_F(WizardMailboxesTest, ListIsMadeAnewOnEachStepForward) {
  const std::string inbox = Mailbox("Inbox");
  List(inbox, false);
  Wizard().ShowPage(1);
  Get<TextBox>("Text1").UserTypes(At("Sent"));
  Wizard().ShowPage(2);
  EXPECT_THAT(MailboxTexts(), ElementsAre(At("Sent")));
}

// --- Page 3: the target ---------------------------------------------------------------------------------

TEST_F(WizardImportTest, TargetIsDescribedByItsSettings) {
  Offer("Leer");
  auto full = Offer("Voll");
  full->Folder = "C:\\Archiv\\";
  full->Settings = {{"#FilePattern", "%y"}, {"Keywords", "a,b"}, {"ArchiveCondition", "$type=mail"}};
  auto some = Offer("Etwas");
  some->Settings = {{"Keywords", "k"}};
  auto& combo = Get<DropDown>("Combo1");
  const auto& info = Get<Control>("LabelInfo");
  EXPECT_EQ(info.Caption(), "");
  combo.UserSelects(2);
  EXPECT_EQ(
      info.Caption(),
      "FileLocation: C:\\Archiv\\\r\nFilePattern: %y\r\nKeywords: a,b\r\nArchiveCondition: $type=mail\r\n");
  combo.UserSelects(3);
  EXPECT_EQ(info.Caption(), "Keywords: k\r\n");
  combo.UserSelects(1);
  EXPECT_EQ(info.Caption(), "");
}

TEST_F(WizardImportTest, TargetThatTheHostDoesNotKnowHasNoDescription) {
  Offer("Archiv")->Folder = "C:\\Archiv\\";
  Offer("Weg");
  host.Global.Objects.erase("Weg");
  auto& combo = Get<DropDown>("Combo1");
  EXPECT_NE(Get<Control>("LabelInfo").Caption(), "");
  combo.UserSelects(2);
  EXPECT_EQ(Get<Control>("LabelInfo").Caption(), "");
}

TEST_F(WizardImportTest, FailureWhileATargetIsDescribedRisesWithTheTargetSelected) {
  Offer("Archiv")->Folder = "C:\\Archiv\\";
  Offer("Defekt");
  auto& combo = Get<DropDown>("Combo1");
  host.Log.FailOn("Location(\"Defekt\").GetSetting");
  EXPECT_EQ(SwallowedNumber([&] { combo.UserSelects(2); }), 440);
  EXPECT_EQ(combo.Text(), "Defekt");
  EXPECT_EQ(Get<Control>("LabelInfo").Caption(), "FileLocation: C:\\Archiv\\\r\n");
}

TEST_F(WizardImportTest, FailureOfTheHostsDialogRises) {
  Offer("Archiv");
  Wizard();
  host.Log.FailOn("Dialogs.ChooseLocation");
  EXPECT_EQ(SwallowedNumber([&] { Get<Button>("qzelButton2").UserPresses(); }), 440);
  EXPECT_THAT(Get<DropDown>("Combo1").Entries(), ElementsAre("Archiv"));
}

TEST_F(WizardImportTest, NewTargetIsAddedAndSelected) {
  Offer("Archiv");
  auto fresh = host.MakeLocation("Neu");
  fresh->Folder = "C:\\Neu\\";
  host.Global.Objects["Neu"] = fresh;
  host.Dialogs.LocationAnswer = "Neu";
  Get<Button>("qzelButton2").UserPresses();
  EXPECT_THAT(host.Log.Only({"Dialogs"}),
              ElementsAre("Dialogs.ChooseLocation(\"Ziel-Datenquelle\",\"\",\"\")"));
  EXPECT_THAT(Get<DropDown>("Combo1").Entries(), ElementsAre("Archiv", "Neu"));
  EXPECT_EQ(Get<DropDown>("Combo1").Text(), "Neu");
  EXPECT_EQ(Get<Control>("LabelInfo").Caption(), "FileLocation: C:\\Neu\\\r\n");
}

TEST_F(WizardImportTest, NoNewTargetChosenKeepsTheOld) {
  Offer("Archiv");
  Get<Button>("qzelButton2").UserPresses();
  EXPECT_THAT(Get<DropDown>("Combo1").Entries(), ElementsAre("Archiv"));
  EXPECT_EQ(Get<DropDown>("Combo1").Text(), "Archiv");
}

// --- The command ----------------------------------------------------------------------------------------

TEST_F(WizardImportTest, WhatTheUserChoseBecomesTheCommand) {
  Offer("Archiv");
  Wizard().ShowPage(1);
  Get<CheckBox>("Check1").UserToggles();
  for (const char* path : {"C:\\a", "C:\\b", "C:\\c"}) {
    Mailboxes().AddRow(path, "file", 0, false, -1, "", CheckState::Ticked);
  }
  Mailboxes().UserTicks(Mailboxes().Row(2), CheckState::Clear);
  Get<OptionButton>("Option3").UserPicks();
  Get<TextBox>("T_Keywords").UserTypes("privat\r\n  \r\n\r\n\tBank \r\nHaus, Hof");
  EXPECT_TRUE(Wizard().Finish());
  EXPECT_EQ(
      Wizard().Parameter(),
      "target Archiv\r\naction move\r\nkeyword #subpath\r\noption tree\r\nkeyword privat\r\nkeyword Bank\r\n"
      "keyword Haus, Hof\r\nimport C:\\a\r\nimport C:\\c\r\n");
}

TEST_F(WizardImportTest, ClearedBoxesLeaveTheirLinesOut) {
  Offer("Archiv");
  Get<CheckBox>("Check2").UserToggles();
  Get<CheckBox>("Check3").UserToggles();
  EXPECT_EQ(Wizard().Parameter(), "target Archiv\r\naction copy\r\n");
}

TEST_F(WizardImportTest, ParameterGivenIsIgnored) {
  Offer("Archiv");
  const std::string before = Wizard().Parameter();
  Wizard().SetParameter("target X\r\naction move\r\n");
  EXPECT_EQ(Wizard().Parameter(), before);
}

// --- Layout ---------------------------------------------------------------------------------------------

class WizardLayoutTest : public WizardImportTest {
 protected:
  const Box& At(std::string_view name) { return Get<Control>(name).Bounds(); }
};

TEST_F(WizardLayoutTest, ControlsFollowTheSize) {
  Wizard().Layout(8000, 6000);
  for (const char* page : {"Picture1", "Picture2", "Picture3", "Picture4"}) {
    EXPECT_EQ(At(page), (Box{0, 840, 8000, 5160})) << page;
  }
  EXPECT_EQ(At("Check1"), (Box{0, 4905, 3135, 255}));
  EXPECT_EQ(At("Text1"), (Box{285, 4500, 7280, 285}));
  EXPECT_EQ(At("qzelButton1"), (Box{7625, 4500, 375, 285}));
  EXPECT_EQ(At("Option2"), (Box{0, 4260, 3135, 255}));
  EXPECT_EQ(At("qzelSheet1"), (Box{285, 600, 7715, 3540}));
  EXPECT_EQ(At("qzelSheet2"), (Box{0, 240, 8000, 4920}));
  EXPECT_EQ(At("qzelButton2"), (Box{7505, 240, 495, 315}));
  EXPECT_EQ(At("Combo1"), (Box{0, 240, 7445, 315}));
  EXPECT_EQ(At("T_Keywords"), (Box{0, 960, 8000, 4200}));
}

TEST_F(WizardLayoutTest, OtherControlsKeepTheirPlace) {
  Wizard().Layout(8000, 6000);
  for (const ControlSpec& spec : WizardControlTable()) {
    const bool fixed = spec.kind == ControlKind::Label || spec.name == "Option1" || spec.name == "Option3" ||
                       spec.name == "Option4" || spec.name == "Check2" || spec.name == "Check3";
    if (fixed) {
      EXPECT_EQ(At(spec.name), spec.bounds) << spec.name;
    }
  }
}

TEST_F(WizardLayoutTest, ImpossibleStepsAreLeftOutOneByOne) {
  Wizard().Layout(8000, 6000);
  // Too low for the tree and the texts after the fixed ones, yet wide enough.
  Wizard().Layout(7000, 1540);
  EXPECT_EQ(At("Picture1"), (Box{0, 840, 7000, 700}));
  EXPECT_EQ(At("Check1").top, 445);
  EXPECT_EQ(At("Text1"), (Box{285, 40, 6280, 285}));
  EXPECT_EQ(At("Option2").top, -200);
  EXPECT_EQ(At("qzelSheet1"), (Box{285, 600, 7715, 3540})) << "its height would be negative";
  EXPECT_EQ(At("qzelSheet2"), (Box{0, 240, 7000, 460}));
  EXPECT_EQ(At("Combo1").width, 6445);
  EXPECT_EQ(At("T_Keywords"), (Box{0, 960, 8000, 4200}));
}

TEST_F(WizardLayoutTest, NoRoomForPagesLaysOutInTheOldOnes) {
  Wizard().Layout(8000, 6000);
  Wizard().Layout(5000, 500);
  EXPECT_EQ(At("Picture1"), (Box{0, 840, 8000, 5160}));
  EXPECT_EQ(At("Text1"), (Box{285, 4500, 7280, 285}));
  Wizard().Layout(400, 6000);
  EXPECT_EQ(At("Picture1").width, 400);
  EXPECT_EQ(At("Text1"), (Box{285, 4500, 7280, 285})) << "its width would be negative";
  EXPECT_EQ(At("qzelButton1").left, 25);
  EXPECT_EQ(At("qzelButton2").left, -95);
  EXPECT_EQ(At("Combo1").width, 7445);
}

TEST_F(WizardLayoutTest, LayoutIsTheSameFromWhereverItComes) {
  Wizard().Layout(8000, 6000);
  const Box sheet = At("qzelSheet1");
  Wizard().Layout(300, 900);
  Wizard().Layout(8000, 6000);
  EXPECT_EQ(At("qzelSheet1"), sheet);
  EXPECT_EQ(At("Text1"), (Box{285, 4500, 7280, 285}));
}

}  // namespace
}  // namespace vorlent
