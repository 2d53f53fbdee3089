#include <filesystem>
#include <fstream>

#include "Common/NumberText.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/OddEntries.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

class LocationThunderbirdWalkTest : public ThunderbirdFixture {
 protected:
  // "<keywords> <subject>" of each item in memory.
  std::vector<std::string> Mails() {
    std::vector<std::string> mails;
    for (std::int32_t i = 1; i <= connector->Count(); ++i) {
      const auto item = std::dynamic_pointer_cast<test::RecordingItem>(connector->Item(i));
      mails.push_back(item->Keywords + " " + item->Text());
    }
    return mails;
  }

  // "<text> <address> <check> <path>" of each place in memory.
  std::vector<std::string> Places() {
    std::vector<std::string> places;
    for (std::int32_t i = 1; i <= connector->Count(); ++i) {
      const ItemPtr item = connector->Item(i);
      EXPECT_EQ(item->Type(), "location");
      places.push_back(item->Text() + " " + item->DataText("Location") + " [" + item->DataText("Check") +
                       "] " + item->DataText("Path"));
    }
    return places;
  }

  std::string Nodes() { return host.Trees.empty() ? "" : host.Trees.back()->Dump(); }

  std::vector<std::string> Raises() { return host.Log.Only({"Error.Raise"}); }

  // The mailboxes that InitLocation noted and their addresses, as the stream tells them. Mailboxes with one
  // mail each.
  std::vector<std::string> Noted(const std::string& address) {
    Connect(address);
    connector->InitLocation(address);
    std::vector<std::string> noted;
    for (const std::string& record : Stream()) {
      noted.push_back(GetParam(record, "Data_SourceFile") + " " + GetParam(record, "Source"));
    }
    return noted;
  }
};

// --- InitLocation

TEST_F(LocationThunderbirdWalkTest, InitLocationSetsUpTheParametersAndTheTreeWithoutReading) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2"));
  Connect("thunderbird://p/a");
  EXPECT_TRUE(connector->InitLocation("thunderbird://p/a"));
  EXPECT_THAT(
      host.Log.Lines(),
      ElementsAre("Location(\"thunderbird://p/a\").SetParameterItem(item1)", "item1.SetLocation(connector)",
                  "item1.SetReady(false)", "item1.SetID(\"parameter\")", "item1.SetType(\"parameter\")",
                  "item1.SetText(\"Parameter\")", "item1.SetData(\"Condition\",\"$type=mail\",false)",
                  "item1.SetData(\"Flags\",\"LogReadonly\",false)", "item1.SetAccessDefault(\"-\")",
                  "item1.SetAccessList(\"tester:rd\")", "item1.SetReady(true)", "item1.SetConnected(true)",
                  "tree.Clear", "tree.AddChild(\"Account 'a'\",\"Account=a\")",
                  "tree/Account 'a'.AddChild(\"Inbox\",\"Inbox\")"));
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(LocationThunderbirdWalkTest, InitLocationNotesTheMailboxesInTheOrderOfTheWalk) {
  tree.AddProfile("p", {"a", "b"});
  const std::string inbox = tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  const std::string sub = tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2"));
  const std::string deep = tree.AddMailbox("p", "a", "Inbox.sbd/Sub.sbd/Deep", MailOf("3"));
  const std::string sent = tree.AddMailbox("p", "a", "Sent", MailOf("4"));
  const std::string other = tree.AddMailbox("p", "b", "Other", MailOf("5"));
  // Below the first level an address keeps the name of the folder alone.
  EXPECT_THAT(Noted("thunderbird://p"),
              ElementsAre(inbox + " thunderbird://p/a/Inbox", sub + " Inbox/Sub", deep + " Sub/Deep",
                          sent + " thunderbird://p/a/Sent", other + " thunderbird://p/b/Other"));
  EXPECT_THAT(Noted("thunderbird://p/a/Inbox"),
              ElementsAre(inbox + " thunderbird://p/a/Inbox/", sub + " thunderbird://p/a/Inbox/Sub",
                          deep + " Sub/Deep"));
  EXPECT_THAT(Noted("thunderbird://p/a/Inbox/Sub/-"), ElementsAre(sub + " thunderbird://p/a/Inbox/Sub/"));
  EXPECT_THAT(Noted("thunderbird://p/b"), ElementsAre(other + " thunderbird://p/b/Other"));
}

TEST_F(LocationThunderbirdWalkTest, InitLocationAgainStartsFromNothing) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  tree.AddFolder("p", "a", "Inbox.sbd");
  Connect("thunderbird://p/a");
  connector->InitLocation("thunderbird://p/a");
  connector->InitLocation("thunderbird://p/a");
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n");
  EXPECT_EQ(Stream().size(), 1U);
}

TEST_F(LocationThunderbirdWalkTest, AddressesThatInitLocationPassesOver) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  for (const std::string address :
       {"thunderbird://*", "thunderbird://p/*", "thunderbird://p/a/Inbox*", "", "*", "firefox://p",
        "thunderbird:/", "Thunderbird://p", " thunderbird://p"}) {
    SCOPED_TRACE(address);
    Connect(address);
    host.Log.Clear();
    EXPECT_TRUE(connector->InitLocation(address));
    EXPECT_EQ(host.Log.Lines().back(), host.Trees.back()->Name + ".Clear");
    EXPECT_EQ(Nodes(), "");
    EXPECT_THAT(Stream(), IsEmpty());
    EXPECT_THAT(Raises(), IsEmpty());
  }
}

TEST_F(LocationThunderbirdWalkTest, UnknownProfileIsRaisedYetInitLocationIsTrue) {
  Connect("thunderbird://nosuch");
  EXPECT_TRUE(connector->InitLocation("thunderbird://nosuch"));
  EXPECT_THAT(Raises(), ElementsAre(Raised("Profil 'nosuch' nicht gefunden!")));
}

TEST_F(LocationThunderbirdWalkTest, InitLocationTakesItsArgumentAndNotTheLocationsName) {
  tree.AddProfile("p", {"a"});
  Connect("thunderbird://elsewhere");
  connector->InitLocation("thunderbird://p/a/-");
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n");
  EXPECT_THAT(Raises(), IsEmpty());
}

TEST_F(LocationThunderbirdWalkTest, InitLocationBehindABrowseTakesAllProfiles) {
  tree.AddProfile("p", {"a"});
  tree.AddProfile("q", {"b"});
  platform->drives.clear();
  ASSERT_EQ(Read("thunderbird://p/*"), LocationState::Read);
  EXPECT_TRUE(connector->InitLocation("thunderbird://p/a"));
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\nAccount 'b' [Account=b]\n");
}

TEST_F(LocationThunderbirdWalkTest, AllProfilesEndWithTheDisksWhichNoAccountStandsFor) {
  tree.AddProfile("p", {"a"});
  platform->drives = {{'C', 3}, {'D', 5}};
  for (const std::string address : {"thunderbird://", "thunderbird:///-"}) {
    Connect(address);
    host.Log.Clear();
    EXPECT_TRUE(connector->InitLocation(address));
    EXPECT_EQ(Nodes(),
              "Account 'a' [Account=a]\nAccount 'C:\\' [Account=C:\\]\nAccount 'D:\\' [Account=D:\\]\n");
    EXPECT_THAT(Raises(), ElementsAre(Raised("Account 'C:\\' nicht gefunden!"),
                                      Raised("Account 'D:\\' nicht gefunden!")));
  }
}

// --- The tree and the keywords

TEST_F(LocationThunderbirdWalkTest, AccountIsReadWithItsFolders) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one") + MailOf("2", "two"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("3", "three"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n");
  EXPECT_THAT(Mails(),
              ElementsAre("Account=a,Inbox one", "Account=a,Inbox two", "Account=a,Inbox,Sub three"));
}

TEST_F(LocationThunderbirdWalkTest, AddressedFolderIsReadWithItsSubfolders) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2", "two"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub.sbd/Deep", MailOf("3", "three"));
  tree.AddMailbox("p", "a", "Sent", MailOf("4", "four"));
  EXPECT_EQ(Read("thunderbird://p/a/Inbox"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n    Sub [Sub]\n");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Inbox,Sub two",
                                   "Account=a,Inbox,Sub,Deep three"));

  EXPECT_EQ(Read("thunderbird://p/a/Inbox/Sub"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Sub [Sub]\n");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox,Sub two", "Account=a,Inbox,Sub,Deep three"));
}

TEST_F(LocationThunderbirdWalkTest, MarkLeavesSubfoldersOut) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2", "two"));
  EXPECT_EQ(Read("thunderbird://p/a/Inbox/-"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one"));
}

TEST_F(LocationThunderbirdWalkTest, AccountsAreReadWithSubfoldersWhateverTheAddressSays) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2", "two"));
  for (const std::string address : {"thunderbird://p/-", "thunderbird://p/a/-", "thunderbird://p",
                                    "thunderbird://p/", "thunderbird://p/a/"}) {
    EXPECT_EQ(Read(address), LocationState::Read);
    EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n") << address;
    EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Inbox,Sub two")) << address;
  }
}

TEST_F(LocationThunderbirdWalkTest, FolderIsReadInEachAccountOfAProfile) {
  tree.AddProfile("p", {"a", "b"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "b", "Inbox", MailOf("2", "two"));
  tree.AddMailbox("p", "b", "Sent", MailOf("3", "three"));
  for (const std::string address : {"thunderbird://p/*/Inbox", "thunderbird://p//Inbox/-"}) {
    EXPECT_EQ(Read(address), LocationState::Read);
    EXPECT_EQ(Nodes(),
              "Account 'a' [Account=a]\n  Inbox [Inbox]\nAccount 'b' [Account=b]\n  Inbox [Inbox]\n");
    EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=b,Inbox two")) << address;
  }
}

TEST_F(LocationThunderbirdWalkTest, AllProfilesAreReadInTheirOrder) {
  tree.AddProfile("q", {"a"});
  tree.AddProfile("p", {"b"});
  tree.AddMailbox("q", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "b", "Inbox", MailOf("2", "two"));
  platform->drives.clear();
  EXPECT_EQ(Read("thunderbird://"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\nAccount 'b' [Account=b]\n");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=b,Inbox two"));
}

TEST_F(LocationThunderbirdWalkTest, ReadingAllProfilesGoesOnOverTheDisksWhichNoAccountStandsFor) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  platform->drives = {{'C', 3}, {'D', 5}};
  EXPECT_EQ(Read("thunderbird://"), LocationState::Read);
  EXPECT_EQ(Nodes(),
            "Account 'a' [Account=a]\nAccount 'C:\\' [Account=C:\\]\nAccount 'D:\\' [Account=D:\\]\n");
  EXPECT_THAT(Raises(), ElementsAre(Raised("Account 'C:\\' nicht gefunden!"),
                                    Raised("Account 'D:\\' nicht gefunden!")));
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one"));
}

TEST_F(LocationThunderbirdWalkTest, ReadingStopsAtTheFirstProfileThatIsNotFound) {
  // A name with a slash is listed, but not found by what stands before it.
  tree.AddProfile("p/q", {"a"});
  tree.AddProfile("r", {"b"});
  EXPECT_EQ(Read("thunderbird://"), LocationState::Unreadable);
  EXPECT_THAT(Raises(), ElementsAre(Raised("Profil 'p' nicht gefunden!")));
  EXPECT_EQ(Nodes(), "");
}

TEST_F(LocationThunderbirdWalkTest, WalkNeedsTheSummaryButAnAddressDoesNot) {
  tree.AddProfile("p", {"a"});
  tree.AddFile("p", "a", "Raw", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "Raw.sbd/Sub", MailOf("2", "two"));
  tree.AddMailbox("p", "a", "Alone.sbd/Lost", MailOf("3", "three"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Raw [Raw]\n");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Raw,Sub two"));
  EXPECT_EQ(Read("thunderbird://p/a/Raw/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Raw one"));
}

TEST_F(LocationThunderbirdWalkTest, MailboxesNeedNoSummaryToday) {
  tree.AddProfile("p", {"a"});
  tree.AddFile("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "With", MailOf("2", "two"));
  tree.AddFile("p", "a", "Void");
  tree.AddFile("p", "a", "Void.sbd/Sub", MailOf("3", "three"));
  for (const char* other : {".hidden", "popstate.dat", "filterlog.html", "a.log", "feeds.json", "Inbox~"}) {
    tree.AddFile("p", "a", other);
    tree.AddFile("p", "a", std::string("Full") + other, "From here on there is something else.\r\n");
  }
  tree.AddMailbox("p", "a", ".mails", MailOf("4"));
  tree.AddFile("p", "a", "notes", "From here on there are notes.\r\nmore\r\n");
  tree.AddFile("p", "a", "zeros", std::string(100000, '\0'));

  const ScopedRules today({.mailboxes = MailboxFiles::OfThunderbird, .brokenItems = BrokenItems::AreNamed});
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Void,Sub three", "Account=a,With two"));
  EXPECT_EQ(Noted("thunderbird://p/a").size(), 3U);
  EXPECT_EQ(Read("thunderbird://p/a/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith("Inbox thunderbird://p/a/Inbox/ "),
                                    StartsWith("Void thunderbird://p/a/Void/* "),
                                    StartsWith("With thunderbird://p/a/With/ ")));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), IsEmpty());

  // Its summary goes with a mark, and the other mails stay in sight.
  tree.AddMailbox("p", "a", "With", MailOf("2", "two") + MailOf("5", "five"));
  Read("thunderbird://p/a/With/-");
  ASSERT_TRUE(connector->DeleteItem(connector->Item(1)));
  Read("thunderbird://p/a");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Void,Sub three", "Account=a,With five"));
}

// Its summary goes with the first mark, and nothing but its content tells then.
TEST_F(LocationThunderbirdWalkTest, FileThatHoldsMailsIsReadWhateverItIsCalled) {
  tree.AddProfile("p", {"a"});
  std::vector<std::string> all;
  for (const std::string name : {"#tag", "2024.bak", "Old~", "Projekt.log", "Site.html", "conf.json",
                                 "data.dat", "foo.msf", "mail.toc", "news.rdf", "x.lock", "x.tmp"}) {
    tree.AddMailbox("p", "a", name, MailOf("1" + name, "one") + MailOf("2" + name, "two"));
    all.push_back("Account=a," + name + " two");
  }
  const ScopedRules today(Rules::Today());
  for (const std::string& mailbox : all) {
    const std::string name = mailbox.substr(mailbox.find(',') + 1, mailbox.find(' ') - mailbox.find(',') - 1);
    Read("thunderbird://p/a/" + name + "/-");
    ASSERT_EQ(Mails().size(), 2U) << name;
    ASSERT_TRUE(connector->DeleteItem(connector->Item(1)));
    EXPECT_FALSE(FileExists(tree.AccountFolder("p", "a") + name + ".msf"));
  }
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), UnorderedElementsAreArray(all));
  EXPECT_EQ(Read("thunderbird://p/a/*"), LocationState::Read);
  EXPECT_EQ(Places().size(), all.size());
}

TEST_F(LocationThunderbirdWalkTest, FirstMailOfAMailboxMayComeAfterTextAndDamage) {
  tree.AddProfile("p", {"a"});
  const std::string broken = "From - Mon Jan 05 10:00:00 2026\r\nno header at all\r\n\r\n";
  const std::string text = "the end of a mail\r\n\r\n";
  tree.AddFile("p", "a", "blank", "\r\n \r\n\r\n" + MailOf("1", "one"));
  tree.AddFile("p", "a", "broken", broken + MailOf("2", "two"));
  tree.AddFile("p", "a", "broken.log", broken + text + MailOf("3", "three"));
  tree.AddFile("p", "a", "long", std::string(100000, 'x') + "\r\n" + text + MailOf("4", "four"));
  tree.AddFile("p", "a", "mark", "\xEF\xBB\xBF" + MailOf("5", "five") + MailOf("6", "six"));
  tree.AddFile("p", "a", "quoted", ">" + MailOf("7") + MailOf("8", "eight"));
  tree.AddFile("p", "a", "zeros", std::string(100000, '\0') + "\r\n\r\n" + MailOf("9", "nine"));
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(),
              UnorderedElementsAre("Account=a,blank one", "Account=a,broken two",
                                   "Account=a,broken.log three", "Account=a,long four", "Account=a,mark five",
                                   "Account=a,mark six", "Account=a,quoted eight", "Account=a,zeros nine"));

  // What has a separator and no mail after it is told.
  tree.AddFile("p", "a", "only", broken);
  Read("thunderbird://p/a");
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}),
              ElementsAre(AllOf(HasSubstr("only"), HasSubstr("keine Mail"))));
}

TEST_F(LocationThunderbirdWalkTest, ClosedFolderIsToldAndTheNextOneIsRead) {
  tree.AddProfile("p", {"a", "b", "c"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "b", "Box", MailOf("2", "two"));
  tree.AddMailbox("p", "b", "Box.sbd/Sub", MailOf("3"));
  tree.AddMailbox("p", "c", "Inbox", MailOf("4", "four"));
  for (const auto& entry : fs::recursive_directory_iterator(os::ToNativePath(tree.Path())))
    fs::permissions(entry.path(), fs::perms(0755));
  fs::permissions(os::ToNativePath(tree.Path()), fs::perms(0755));
  for (const std::string& folder : {tree.AccountFolder("p", "a"), tree.AccountFolder("p", "b") + "Box.sbd"})
    fs::permissions(os::ToNativePath(folder), fs::perms(0));
  const AsOrdinaryUser user;
  if (os::MayList(tree.AccountFolder("p", "a"))) GTEST_SKIP() << "the system closes no folders";
  EXPECT_NE(SwallowedNumber([&] { Read("thunderbird://p"); }), 0);

  const ScopedRules today(
      {.mailboxOpening = MailboxOpening::ForReading, .brokenItems = BrokenItems::AreNamed});
  EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=b,Box two", "Account=c,Inbox four"));
  EXPECT_THAT(
      host.Log.Only({"Global.Report(27"}),
      ElementsAre(StartsWith("Global.Report(27," + test::Quoted(tree.AccountFolder("p", "a")).substr(0, 20)),
                  testing::HasSubstr("Box.sbd")));
}

TEST_F(LocationThunderbirdWalkTest, EmptyFolderOfSubfoldersHasANodeYetHiddenFilesHaveNone) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox");
  tree.AddFolder("p", "a", "Inbox.sbd");
  tree.AddMailbox("p", "a", ".hidden", MailOf("1"));
  tree.AddFolder("p", "a", ".hidden.sbd");
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n");
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(LocationThunderbirdWalkTest, MailboxComesBeforeWhatLiesBelowIt) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "b", MailOf("1", "one"));
  tree.AddMailbox("p", "a", "a", MailOf("2", "two"));
  tree.AddMailbox("p", "a", "a.sbd/z", MailOf("3", "three"));
  tree.AddMailbox("p", "a", "a.sbd/y", MailOf("4", "four"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(),
              ElementsAre("Account=a,a two", "Account=a,a,y four", "Account=a,a,z three", "Account=a,b one"));
}

TEST_F(LocationThunderbirdWalkTest, UnknownFolderIsReadAsEmpty) {
  tree.AddProfile("p", {"a"});
  EXPECT_EQ(Read("thunderbird://p/a/NoSuch"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  NoSuch [NoSuch]\n");
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_THAT(host.Log.Only({"Error", "Global.Report"}), IsEmpty());
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/NoSuch"));
}

TEST_F(LocationThunderbirdWalkTest, FolderInPlaceOfAMailboxIsPassedOver) {
  tree.AddProfile("p", {"a"});
  tree.AddFolder("p", "a", "Folder");
  EXPECT_EQ(Read("thunderbird://p/a/Folder/-"), LocationState::Read);
  EXPECT_THAT(host.Log.Only({"Global.Report"}), IsEmpty());
}

TEST_F(LocationThunderbirdWalkTest, UnknownAccountIsRaisedAndItsNodeStaysEmpty) {
  tree.AddProfile("p", {"a"});
  EXPECT_EQ(Read("thunderbird://p/nosuch"), LocationState::Read);
  EXPECT_THAT(Raises(), ElementsAre(Raised("Account 'nosuch' nicht gefunden!")));
  EXPECT_EQ(Nodes(), "Account 'nosuch' [Account=nosuch]\n");
}

TEST_F(LocationThunderbirdWalkTest, UnknownProfileIsUnreadable) {
  tree.AddProfile("p", {"a"});
  EXPECT_EQ(Read("thunderbird://P/a"), LocationState::Unreadable);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("tree.Clear", Raised("Profil 'P' nicht gefunden!")));
}

TEST_F(LocationThunderbirdWalkTest, AddressOfAnotherSchemeIsInvalid) {
  for (const std::string address : {"firefox://p", "", "thunderbird:/", "Thunderbird://p", "lightning://p"}) {
    Connect(address);
    host.Log.Clear();
    connector->NewItem();
    EXPECT_EQ(connector->Einlesen(), LocationState::Unreadable);
    EXPECT_EQ(connector->Count(), 0);
    EXPECT_EQ(host.Log.Lines().back(), Report(27, std::string("ung\xFCltige Location!")));
  }
}

TEST_F(LocationThunderbirdWalkTest, EinlesenReplacesItemsAndNodes) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddFolder("p", "a", "Inbox.sbd");
  Read("thunderbird://p/a");
  EXPECT_EQ(connector->OpenLocation("whatever"), LocationState::Read);
  EXPECT_EQ(connector->Count(), 1);
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n");
  location->Address = "nonsense";
  EXPECT_EQ(connector->Einlesen(), LocationState::Unreadable);
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_EQ(Nodes(), "");
}

TEST_F(LocationThunderbirdWalkTest, EinlesenLeavesTheMailboxesOfInitLocation) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  Connect("thunderbird://p/a");
  connector->InitLocation("thunderbird://p/a");
  tree.AddMailbox("p", "a", "New", MailOf("2"));
  connector->Einlesen();
  EXPECT_EQ(connector->Count(), 2);
  EXPECT_EQ(Stream().size(), 1U);
}

// --- Folders by today's rules

TEST_F(LocationThunderbirdWalkTest, FoldersGoByTheNamesThatThunderbirdShowsToday) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "9e7872c0", MailOf("1"));
  const std::string sub = tree.AddMailbox("p", "a", "9e7872c0.sbd/77aa", MailOf("2"));
  tree.AddMailbox("p", "a", "Inbox", MailOf("3"));
  tree.WriteShownNames("p", "a", {{"9e7872c0", "Long name"}, {"9e7872c0.sbd/77aa", "2026/01"}});
  const ScopedRules today({.folderNames = MailFolderNames::Shown});

  const auto all = {"Account=a,Long name S", "Account=a,Long name,2026/01 S", "Account=a,Inbox S"};
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), testing::ElementsAreArray(all));
  EXPECT_EQ(Nodes(),
            "Account 'a' [Account=a]\n"
            "  Long name [Long name]\n");
  for (const char* address : {"thunderbird://p/a/Long name", "thunderbird://p/a/9e7872c0"}) {
    EXPECT_EQ(Read(address), LocationState::Read);
    EXPECT_THAT(Mails(), ElementsAre("Account=a,Long name S", "Account=a,Long name,2026/01 S")) << address;
  }
  EXPECT_EQ(Read("thunderbird://p/a/Long name/77aa/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Long name,2026/01 S"));
  EXPECT_EQ(GetKeywordsOfFile(sub), "Account=a,Long name,2026/01");

  EXPECT_EQ(Read("thunderbird://p/a/*"), LocationState::Read);
  EXPECT_THAT(Places(),
              ElementsAre("Long name thunderbird://p/a/9e7872c0/* [inkl. Unterverzeichnis;;-;1] " +
                              tree.AccountFolder("p", "a") + "9e7872c0",
                          "Inbox thunderbird://p/a/Inbox/ [] " + tree.AccountFolder("p", "a") + "Inbox"));
  EXPECT_EQ(Read("thunderbird://p/a/Long name/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith("2026/01 thunderbird://p/a/Long name/77aa/ []")));

  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,9e7872c0 S", "Account=a,9e7872c0,77aa S", "Account=a,Inbox S"));
  EXPECT_EQ(GetKeywordsOfFile(sub), "Account=a,9e7872c0,77aa");
}

TEST_F(LocationThunderbirdWalkTest, ShownNamesAreThoseOfTheProfileThatIsRead) {
  tree.AddProfile("p", {"a"});
  tree.AddProfile("q", {"a"});
  tree.AddMailbox("p", "a", "x", MailOf("1"));
  tree.AddMailbox("q", "a", "x", MailOf("2"));
  tree.WriteShownNames("p", "a", {{"x", "of p"}});
  platform->drives.clear();
  const ScopedRules today({.folderNames = MailFolderNames::Shown});
  Read("thunderbird://");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,of p S", "Account=a,x S"));
}

TEST_F(LocationThunderbirdWalkTest, SubfoldersBesideNoMailboxAreReadToday) {
  tree.AddProfile("p", {"imap"});
  tree.AddMailbox("p", "imap", "INBOX", MailOf("1"));
  tree.AddFile("p", "imap", "[Gmail].msf");
  tree.AddMailbox("p", "imap", "[Gmail].sbd/All Mail", MailOf("2"));
  const auto kept = {"Account=imap,INBOX S", "Account=imap,[Gmail],All Mail S"};

  EXPECT_EQ(Read("thunderbird://p/imap"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=imap,INBOX S"));

  const ScopedRules today({.subfolders = Subfolders::OfAny});
  EXPECT_EQ(Read("thunderbird://p/imap"), LocationState::Read);
  EXPECT_THAT(Mails(), testing::ElementsAreArray(kept));
  EXPECT_EQ(Nodes(),
            "Account 'imap' [Account=imap]\n"
            "  [Gmail] [[Gmail]]\n");
  EXPECT_EQ(Noted("thunderbird://p/imap").size(), 2u);
  EXPECT_EQ(Read("thunderbird://p/imap/*"), LocationState::Read);
  EXPECT_THAT(
      Places(),
      ElementsAre(StartsWith("INBOX thunderbird://p/imap/INBOX/ []"),
                  StartsWith("[Gmail] thunderbird://p/imap/[Gmail]/* [inkl. Unterverzeichnis;;-;1]")));
  EXPECT_EQ(Read("thunderbird://p/imap/[Gmail]/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith("All Mail thunderbird://p/imap/[Gmail]/All Mail/ []")));
  EXPECT_EQ(Read("thunderbird://p/imap/[Gmail]"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=imap,[Gmail],All Mail S"));
  Connect("thunderbird://p/imap/[Gmail]");
  connector->InitLocation("thunderbird://p/imap/[Gmail]");
  EXPECT_EQ(connector->MailFiles().Count(), 1);
}

// --- Accounts by the rules of today

class TodaysAccountsTest : public LocationThunderbirdWalkTest {
 protected:
  ScopedRules today{{.accounts = MailAccounts::AsShown,
                     .folderNames = MailFolderNames::Shown,
                     .brokenItems = BrokenItems::AreNamed}};

  // A mailbox of this name with one below it, in an account "a".
  void AddMailboxOfOddName(const std::string& name) {
    tree.AddProfile("p", {"a"});
    const fs::path account = os::ToNativePath(tree.AccountFolder("p", "a"));
    fs::create_directory(account / (name + ".sbd"));
    std::ofstream(account / name) << MailOf("1", "one");
    std::ofstream(account / (name + ".sbd") / "Sub") << MailOf("2", "two");
  }
};

TEST_F(TodaysAccountsTest, MailsOfAFolderThatTwoAccountsHaveAreReadOnce) {
  tree.AddProfile("p", {"a", "b", "c"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "c", "Inbox", MailOf("2", "two"));
  tree.AddPref("p", "mail.server.server2.directory-rel", "[ProfD]Mail/a");
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
    EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=c,Inbox two"));
  }
  EXPECT_EQ(Noted("thunderbird://p").size(), 2U);
  EXPECT_EQ(Read("thunderbird://p/b"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=b,Inbox one"));
}

// Else those of a profile would be read as often as it has accounts.
TEST_F(TodaysAccountsTest, PreferencesAreReadOnceForAllAccounts) {
  tree.AddProfile("p", {"a", "b", "c"});
  for (const char* account : {"a", "b", "c"})
    tree.AddMailbox("p", account, "Inbox", MailOf(account, account));
  Connect("thunderbird://p");
  host.Log.OnCall = [&](const std::string& line) {
    if (line.starts_with("tree.AddChild")) tree.Folder().Write("Thunderbird/Profiles/p/prefs.js", "");
  };
  Read("thunderbird://p");
  host.Log.OnCall = {};
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox a", "Account=b,Inbox b", "Account=c,Inbox c"));
  Read("thunderbird://p/a");
  EXPECT_THAT(Mails(), IsEmpty()) << "the preferences of before were taken";
}

TEST_F(TodaysAccountsTest, KeywordsOfAMailboxAreThoseOfThePreferencesAsTheyAre) {
  tree.AddProfile("p", {"a", "b"});
  tree.AddProfile("q", {"c"});
  const auto keywordsIn = [&](const char* profile, const char* account) {
    return GetKeywordsOfFile(tree.AccountFolder(profile, account) + "Inbox");
  };
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(keywordsIn("p", "b"), "Account=b,Inbox");
    EXPECT_EQ(keywordsIn("p", "a"), "Account=a,Inbox");
    EXPECT_EQ(keywordsIn("q", "c"), "Account=c,Inbox");
  }
  tree.AddPref("q", "mail.server.server1.name", "renamed");
  EXPECT_EQ(keywordsIn("q", "c"), "Account=renamed,Inbox");
}

TEST_F(TodaysAccountsTest, TwoOfANameAreEachRead) {
  tree.AddProfile("p", {"a", "b", "c"});
  for (const char* server : {"1", "2"})
    tree.AddPref("p", "mail.server.server" + std::string(server) + ".name", "anna@x.org");
  tree.AddPref("p", "mail.server.server3.name", "");
  tree.AddPref("p", "mail.server.server3.userName", "ben");
  tree.AddPref("p", "mail.server.server3.hostname", "y.org");
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "b", "Inbox", MailOf("2", "two"));
  tree.AddMailbox("p", "c", "Inbox", MailOf("3", "three"));
  EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=anna@x.org,Inbox one", "Account=anna@x.org~2,Inbox two",
                                   "Account=ben@y.org,Inbox three"));
  EXPECT_EQ(Read("thunderbird://p/anna@x.org~2/Inbox/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=anna@x.org~2,Inbox two"));
  EXPECT_EQ(Read("thunderbird://p/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith("anna@x.org thunderbird://p/anna@x.org/* "),
                                    StartsWith("anna@x.org~2 thunderbird://p/anna@x.org~2/* "),
                                    StartsWith("ben@y.org thunderbird://p/ben@y.org/* ")));
  EXPECT_EQ(GetKeywordsOfFile(tree.AccountFolder("p", "b") + "Inbox"), "Account=anna@x.org~2,Inbox");

  const ScopedRules windows(Rules::Windows());
  tree.AddProfile("twins", {"t", "t"});
  tree.AddMailbox("twins", "t", "Inbox", MailOf("4", "four"));
  Read("thunderbird://twins");
  EXPECT_EQ(connector->Count(), 1) << "the first one came twice";
}

TEST_F(TodaysAccountsTest, NamesMayHoldAnything) {
  tree.AddProfile("p", {"a"});
  tree.AddPref("p", "mail.server.server1.name", R"(Firma \"M|N\" 1/2 \\ *)");
  tree.AddMailbox("p", "a", "in|out", MailOf("1", "one"));
  const std::string address = R"(thunderbird://p/Firma "M|N" 1%2F2 \ %2A)";
  EXPECT_EQ(Read("thunderbird://p/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith(R"(Firma "M|N" 1/2 \ * )" + address + "/* ")));
  for (const std::string& each : {std::string("thunderbird://p"), address, address + "/in|out"}) {
    EXPECT_EQ(Read(each), LocationState::Read);
    ASSERT_EQ(connector->Count(), 1) << each;
    EXPECT_EQ(GetParam(host.Items.back()->Record, "Keywords"), R"(Account=Firma "M|N" 1/2 \ *,in|out)");
  }
}

TEST_F(TodaysAccountsTest, FoldersMayHoldABackslash) {
  if (fs::path::preferred_separator == '\\') GTEST_SKIP() << "the system has no such names";
  const ScopedRules rules(Rules::Today());
  AddMailboxOfOddName("x\\y");
  EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
  ASSERT_EQ(connector->Count(), 2);
  EXPECT_EQ(GetParam(host.Items.back()->Record, "Keywords"), "Account=a,x\\y,Sub");
  for (const char* address : {"thunderbird://p/a/x\\y/-", "thunderbird://p/a/x\xEF\x81\x9Cy/-"}) {
    EXPECT_EQ(Read(address), LocationState::Read);
    ASSERT_EQ(connector->Count(), 1) << address;
    EXPECT_EQ(GetParam(host.Items.back()->Record, "Keywords"), "Account=a,x\\y");
  }
}

// The runs over mails take their mailboxes line by line.
TEST_F(TodaysAccountsTest, NameOfAMailboxMayHoldALineBreak) {
  if (fs::path::preferred_separator == '\\') GTEST_SKIP() << "the system has no such names";
  const ScopedRules rules(Rules::Today());
  AddMailboxOfOddName("x\ny");
  EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,x y one", "Account=a,x y,Sub two"));
  EXPECT_EQ(Read("thunderbird://p/a/*"), LocationState::Read);
  ASSERT_EQ(Places().size(), 1U);
  EXPECT_EQ(Places()[0].find('\n'), std::string::npos);
  EXPECT_EQ(Read("thunderbird://p/a/x y/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,x y one"));
  const std::vector<std::string> noted = Noted("thunderbird://p");
  ASSERT_EQ(noted.size(), 2U);
  EXPECT_EQ(noted[0].find('\n'), std::string::npos);
}

TEST_F(TodaysAccountsTest, ProfileMayHaveMoved) {
  tree.AddProfile("p", {"a", "b", "c"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddMailbox("p", "b", "Inbox", MailOf("2", "two"));
  tree.AddMailbox("p", "c", "Inbox", MailOf("3", "three"));
  tree.AddPref("p", "mail.server.server1.directory", "/old/home/Mail/a");
  tree.AddPref("p", "mail.server.server1.directory-rel", "[ProfD]Mail/a");
  tree.AddPref("p", "mail.server.server2.directory", "");
  tree.AddPref("p", "mail.server.server2.directory-rel", "[ProfD]Mail/b");
  tree.AddPref("p", "mail.server.server3.directory", "");
  tree.AddPref("p", "mail.server.server3.hostname", "c");
  EXPECT_EQ(Read("thunderbird://p"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=b,Inbox two", "Account=c,Inbox three"));
}

TEST_F(TodaysAccountsTest, FoldersOfServersAreCalledAsTheyMeanIt) {
  tree.AddProfile("p", {"imap", "pop"});
  tree.AddPref("p", "mail.server.server1.type", "imap");
  for (const char* account : {"imap", "pop"}) {
    tree.AddMailbox("p", account, "Entw&APw-rfe", MailOf("1"));
    tree.AddMailbox("p", account, "Entw&APw-rfe.sbd/R&D", MailOf("2"));
  }
  tree.WriteShownNames("p", "imap", {{"Entw&APw-rfe", ""}});
  EXPECT_EQ(Read("thunderbird://p/imap"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=imap,Entw\xFCrfe S", "Account=imap,Entw\xFCrfe,R&D S"));
  EXPECT_EQ(Read("thunderbird://p/imap/Entw\xFCrfe/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=imap,Entw\xFCrfe S"));
  EXPECT_EQ(Read("thunderbird://p/pop/Entw&APw-rfe/-"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=pop,Entw&APw-rfe S"));
}

TEST_F(TodaysAccountsTest, ProfileThatCannotBeReadIsToldAndTheNextOneIsRead) {
  tree.AddProfile("p", {"a"});
  tree.AddProfile("q", {"b"});
  tree.AddMailbox("q", "b", "Inbox", MailOf("1"));
  const fs::path prefs = tree.Folder().Native("Thunderbird/Profiles/p/prefs.js");
  fs::remove(prefs);
  MAKE_OR_SKIP(MakePipe(prefs));
  EXPECT_EQ(Read("thunderbird://"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=b,Inbox S"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), ElementsAre(testing::HasSubstr("prefs.js: ")));
  EXPECT_EQ(Read("thunderbird://*"), LocationState::Read);
  EXPECT_EQ(connector->Count(), 3);
}

TEST_F(LocationThunderbirdWalkTest, AllProfilesAreNoDisksToday) {
  const ScopedRules today({.disksProfile = DisksProfile::OfMail});
  EXPECT_EQ(Read("thunderbird://"), LocationState::Unreadable);
  EXPECT_THAT(host.Log.Only({"Global.Report(27", "Error"}),
              ElementsAre(Report(27, tree.Path() + "\\Thunderbird\\profiles.ini: kein Profil gefunden")));
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  EXPECT_EQ(Read("thunderbird://"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox S"));
  EXPECT_THAT(Raises(), IsEmpty());
}

TEST_F(LocationThunderbirdWalkTest, MaildirIsToldToday) {
  tree.AddProfile("p", {"files", "box"});
  tree.AddFile("p", "files", "Inbox.msf");
  tree.AddFile("p", "files", "Inbox/cur/1.eml", MailOf("1"));
  tree.AddMailbox("p", "box", "Inbox", MailOf("2"));
  tree.AddPref("p", "mail.server.server1.storeContractID", "@mozilla.org/msgstore/maildirstore;1");
  tree.AddPref("p", "mail.server.server2.storeContractID", "@mozilla.org/msgstore/berkeleystore;1");
  const std::string told =
      Report(27, "Account 'files': Maildir, jede Mail in eigener Datei; wird nicht gelesen!");

  Read("thunderbird://p");
  EXPECT_THAT(Mails(), ElementsAre("Account=box,Inbox S"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), IsEmpty());

  const ScopedRules today({.mailStores = MailStores::Told});
  Read("thunderbird://p");
  EXPECT_THAT(Mails(), ElementsAre("Account=box,Inbox S"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), ElementsAre(told));
  host.Log.Clear();
  Read("thunderbird://p/*");
  EXPECT_THAT(Places(), ElementsAre(StartsWith("files (Maildir) thunderbird://p/files/* []"),
                                    StartsWith("box thunderbird://p/box/* []")));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), IsEmpty());
  Read("thunderbird://p/files/*");
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), ElementsAre(told));
}

TEST_F(LocationThunderbirdWalkTest, LinkThatLeadsBackUpIsNotWalkedAgain) {
  tree.AddProfile("p", {"a"});
  const std::string inbox = tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  const std::string sub = tree.AddMailbox("p", "a", "Inbox.sbd/Sub", MailOf("2", "two"));
  const fs::path inside = fs::path(os::ToNativePath(inbox)).concat(".sbd");
  MAKE_OR_SKIP(MakeLink("..", inside / "Sub.sbd"));
  MAKE_OR_SKIP(MakeLink(".", inside / "Self.sbd"));
  tree.AddMailbox("p", "a", "Inbox.sbd/Self", MailOf("3", "three"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(),
              ElementsAre("Account=a,Inbox one", "Account=a,Inbox,Self three", "Account=a,Inbox,Sub two"));
  EXPECT_EQ(Nodes(), "Account 'a' [Account=a]\n  Inbox [Inbox]\n    Self [Self]\n    Sub [Sub]\n");
  EXPECT_THAT(Raises(), IsEmpty());
  // The walk starts anew each time.
  connector->Einlesen();
  EXPECT_EQ(Mails().size(), 3U);
}

TEST_F(LocationThunderbirdWalkTest, FolderThatTwoLinksLeadToIsWalkedOnBothWays) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "x.sbd/Box", MailOf("1", "one"));
  const fs::path account = os::ToNativePath(tree.AccountFolder("p", "a"));
  for (const std::string name : {"A", "B"}) {
    tree.AddMailbox("p", "a", name);
    MAKE_OR_SKIP(MakeLink("x.sbd", account / (name + ".sbd")));
  }
  EXPECT_EQ(Noted("thunderbird://p/a").size(), 2U);
}

TEST_F(LocationThunderbirdWalkTest, WhatIsNoFileIsPassedOverAndToldAndTheRestIsRead) {
  tree.AddProfile("p", {"a"});
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one"));
  tree.AddFile("p", "a", "Device.msf");
  tree.AddFile("p", "a", "Pipe.msf");
  tree.AddMailbox("p", "a", "Sent", MailOf("2", "two"));
  const std::string account = tree.AccountFolder("p", "a");
  MAKE_OR_SKIP(MakeLink("/dev/zero", os::ToNativePath(account + "Device")));
  MAKE_OR_SKIP(MakePipe(os::ToNativePath(account + "Pipe")));
  const auto told = [&](const std::string& name) {
    return Report(
        27, account + name + ": keine Datei, sondern Pipe, Socket oder Ger\xE4t; wird \xFC" + "bergangen!");
  };
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Sent two"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), ElementsAre(told("Device"), told("Pipe")));
  host.Log.Clear();
  EXPECT_EQ(Noted("thunderbird://p/a").size(), 2U);
  EXPECT_THAT(host.Log.Only({"Global.Report(27"}), ElementsAre(told("Device"), told("Pipe")));
}

// --- The disks

class DiskWalkTest : public LocationThunderbirdWalkTest {
 protected:
  DiskWalkTest() {
    disk.Write("d/Inbox", MailOf("1", "one"));
    disk.Write("d/Inbox.msf", "");
    disk.Write("d/Inbox.sbd/Sub", MailOf("2", "two"));
    disk.Write("d/Inbox.sbd/Sub.msf", "");
    disk.Write("d/plain/Other", MailOf("3", "three"));
    disk.Write("d/plain/Other.msf", "");
    disk.MakeFolder("d/void");
    address = "thunderbird://./C" + disk.Path("d").substr(2);
    for (char& c : address) {
      if (c == '\\') c = '/';
    }
    // The keywords begin with a comma, since no account stands before them.
    outer = disk.Path("d");
  }

  TemporaryFolder disk;
  std::string address;
  std::string outer;
};

TEST_F(DiskWalkTest, FolderOfTheDisksIsReadWithAllThatIsBelowIt) {
  EXPECT_EQ(Read(address), LocationState::Read);
  EXPECT_EQ(Nodes(),
            "Account 'C' [Account=C]\n  d [d]\n    Inbox [Inbox]\n    plain [plain]\n    void [void]\n");
  EXPECT_THAT(Mails(), ElementsAre(",Inbox one", ",Inbox,Sub two", ",plain,Other three"));
}

TEST_F(DiskWalkTest, LinkThatLeadsBackUpIsNotWalkedAgain) {
  MAKE_OR_SKIP(MakeLink("..", disk.Native("d/plain/up")));
  MAKE_OR_SKIP(MakeLink(".", disk.Native("d/void/self")));
  MAKE_OR_SKIP(MakeLink("../plain", disk.Native("d/void/aside")));
  EXPECT_EQ(Read(address), LocationState::Read);
  EXPECT_EQ(Nodes(),
            "Account 'C' [Account=C]\n  d [d]\n    Inbox [Inbox]\n    plain [plain]\n      up [up]\n"
            "    void [void]\n      aside [aside]\n        up [up]\n      self [self]\n");
}

TEST_F(DiskWalkTest, AddressesOnTheDisksKeepTheWholePath) {
  Connect(address);
  connector->InitLocation(address);
  EXPECT_EQ(Nodes(),
            "Account 'C' [Account=C]\n  d [d]\n    Inbox [Inbox]\n    plain [plain]\n    void [void]\n");
  // The folder itself was noted as if it were a mailbox, so the stream can't tell its size.
  connector->SourceInit(nullptr, false);
  std::string record;
  EXPECT_THROW(connector->SourceGetNext(record), Failure);

  EXPECT_THAT(Noted(address + "/Inbox"), ElementsAre(outer + "\\Inbox " + address + "/Inbox/"));
  EXPECT_THAT(Noted(address + "/Inbox.sbd/Sub"),
              ElementsAre(outer + "\\Inbox.sbd\\Sub " + address + "/Inbox.sbd/Sub/"));
}

TEST_F(DiskWalkTest, FolderOfTheDisksIsNotedForAMailboxOnlyByTheRulesOfOld) {
  EXPECT_NE(SwallowedNumber([&] { Noted(address); }), 0) << "a folder has no size";
  const ScopedRules today({.folderAddresses = FolderAddresses::OfFolders});
  EXPECT_THAT(Noted(address), ElementsAre(outer + "\\Inbox " + address + "/Inbox",
                                          outer + "\\Inbox.sbd\\Sub " + address + "/Inbox.sbd/Sub",
                                          outer + "\\plain\\Other " + address + "/plain/Other"));
  EXPECT_EQ(Read(address), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre(",Inbox one", ",Inbox,Sub two", ",plain,Other three"));
}

TEST_F(DiskWalkTest, MailboxesNeedNoSummaryToday) {
  disk.Write("d/plain/Raw", MailOf("4", "four"));
  disk.Write("d/plain/empty", "");
  disk.Write("d/plain/Other.dat", "5: " + MailOf("5"));
  disk.Write("d/plain/notes.txt", "It came\r\nFrom far away.\r\n");
  EXPECT_EQ(Read(address + "/plain"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre(",Other three"));
  const ScopedRules today({.mailboxes = MailboxFiles::OfThunderbird});
  EXPECT_EQ(Read(address + "/plain"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre(",Other three", ",Raw four"));
  EXPECT_EQ(Read(address + "/plain/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre(StartsWith("Other "), StartsWith("Raw ")));
}

TEST_F(DiskWalkTest, MailboxOfTheDisksHasNoKeywords) {
  EXPECT_EQ(Read(address + "/Inbox/-"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'C' [Account=C]\n");
  EXPECT_THAT(Mails(), ElementsAre(" one"));
}

TEST_F(DiskWalkTest, NodeOfAFolderHasNoSuffix) {
  EXPECT_EQ(Read(address + "/Inbox.sbd"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'C' [Account=C]\n  Inbox [Inbox]\n");
  EXPECT_THAT(Mails(), ElementsAre(",Sub two"));
}

TEST_F(DiskWalkTest, WholeDriveIsReadByItsPlainFiles) {
  EXPECT_EQ(Read("thunderbird://./Q"), LocationState::Read);
  EXPECT_EQ(Nodes(), "Account 'Q' [Account=Q]\n");
  EXPECT_EQ(Read("thunderbird://./QQ"), LocationState::Read);
  EXPECT_THAT(Raises(), ElementsAre(Raised("Account 'QQ' nicht gefunden!")));
}

TEST_F(DiskWalkTest, DisksAreBrowsed) {
  EXPECT_EQ(Read(address + "/*"), LocationState::Read);
  const std::string check = " [inkl. Unterverzeichnis;;-;1] ";
  EXPECT_THAT(Places(), ElementsAre("Inbox.sbd " + address + "/Inbox.sbd/*" + check + outer + "\\Inbox.sbd",
                                    "plain " + address + "/plain/*" + check + outer + "\\plain",
                                    "void " + address + "/void/ [] " + outer + "\\void",
                                    "Inbox " + address + "/Inbox/*" + check + outer + "\\Inbox"));
  EXPECT_EQ(Read(address + "/nosuch/*"), LocationState::Unreadable);
  EXPECT_THAT(Raises(), ElementsAre(Raised(address + "/nosuch nicht gefunden!")));
}

TEST_F(DiskWalkTest, DrivesAreBrowsed) {
  platform->drives = {{'C', 3}, {'E', 5}};
  EXPECT_EQ(Read("thunderbird://./*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre("C:\\ thunderbird://./C/* [] C:\\", "E:\\ thunderbird://./E/* [] E:\\"));
}

// --- Browsing

class BrowseTest : public LocationThunderbirdWalkTest {
 protected:
  BrowseTest() {
    tree.AddProfile("p", {"a", "b"});
    tree.AddProfile("q", {});
    tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
    tree.AddMailbox("p", "a", "Inbox.sbd/Sub");
    tree.AddMailbox("p", "a", "Inbox.sbd/Sub.sbd/Deep");
    tree.AddMailbox("p", "a", "Sent");
    tree.AddFile("p", "a", "Raw");
  }

  const std::string a = tree.AccountFolder("p", "a");
  const std::string check = " [inkl. Unterverzeichnis;;-;1] ";
};

TEST_F(BrowseTest, ProfilesAndTheDisks) {
  EXPECT_EQ(Read("thunderbird://*"), LocationState::Read);
  EXPECT_THAT(Places(),
              ElementsAre("Profil 'p' thunderbird://p/* [] " + tree.AccountFolder("p", "a") + "|" +
                              tree.AccountFolder("p", "b"),
                          "Profil 'q' thunderbird://q/* [] ", "Lokale Laufwerke thunderbird://./* [] C:\\"));
  EXPECT_EQ(Nodes(), "");
}

TEST_F(BrowseTest, PlacesArePastedOneByOneAndNothingElseIsReported) {
  Connect("thunderbird://q/*");
  EXPECT_EQ(connector->Einlesen(), LocationState::Read);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("tree.Clear"));
  Connect("thunderbird://p/*");
  host.Log.Clear();
  EXPECT_EQ(connector->Einlesen(), LocationState::Read);
  const auto records = {host.Items[0]->Record, host.Items[1]->Record};
  std::vector<std::string> expected = {"tree2.Clear"};
  int number = 0;
  for (const std::string& record : records) {
    ++number;
    expected = expected + PasteCalls(number, number, record);
    EXPECT_TRUE(record.starts_with("ID={"));
  }
  EXPECT_EQ(host.Log.Lines(), expected);
  EXPECT_EQ(host.Items[0]->Record.substr(41),
            "|Type=location|Text=a|DataLocation=thunderbird://p/a/*|DataCheck=|DataPath=" + EscapeValue(a));
}

TEST_F(BrowseTest, AccountsOfAProfile) {
  EXPECT_EQ(Read("thunderbird://p/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre("a thunderbird://p/a/* [] " + a,
                                    "b thunderbird://p/b/* [] " + tree.AccountFolder("p", "b")));
}

TEST_F(BrowseTest, FoldersOfAnAccount) {
  EXPECT_EQ(Read("thunderbird://p/a/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre("Inbox thunderbird://p/a/Inbox/*" + check + a + "Inbox",
                                    "Sent thunderbird://p/a/Sent/ [] " + a + "Sent"));
}

TEST_F(BrowseTest, FoldersOfAFolder) {
  EXPECT_EQ(Read("thunderbird://p/a/Inbox/*"), LocationState::Read);
  EXPECT_THAT(Places(), ElementsAre("Sub thunderbird://p/a/Inbox/Sub/*" + check + a + "Inbox.sbd\\Sub"));
  EXPECT_EQ(Read("thunderbird://p/a/Inbox/Sub/*"), LocationState::Read);
  EXPECT_THAT(Places(),
              ElementsAre("Deep thunderbird://p/a/Inbox/Sub/Deep/ [] " + a + "Inbox.sbd\\Sub.sbd\\Deep"));
  EXPECT_EQ(Read("thunderbird://p/a/Sent/*"), LocationState::Read);
  EXPECT_THAT(Places(), IsEmpty());
}

TEST_F(BrowseTest, SamePlaceHasAnotherIDEachTime) {
  Read("thunderbird://p/*");
  const std::string first = connector->Item(1)->ID();
  connector->Einlesen();
  EXPECT_NE(connector->Item(1)->ID(), first);
}

struct MissingRow {
  std::string address;
  std::string text;
};

TEST_F(BrowseTest, SegmentThatIsNotFoundIsRaised) {
  for (const MissingRow& row :
       {MissingRow{"thunderbird://nosuch/*", "thunderbird://nosuch"},
        MissingRow{"thunderbird://p/nosuch/*", "thunderbird://p/nosuch"},
        MissingRow{"thunderbird://p/a/nosuch/*", "thunderbird://p/a/nosuch"},
        MissingRow{"thunderbird://p/a/inbox/*", "thunderbird://p/a/inbox"},
        MissingRow{"thunderbird://p/a/Inbox/nosuch/x/*", "thunderbird://p/a/Inbox/nosuch"},
        MissingRow{"thunderbird:////*", "thunderbird://"},
        MissingRow{"thunderbird://./CC/*", "thunderbird://./CC"},
        MissingRow{"thunderbird://p/*/x/*", "thunderbird://p/x"}}) {
    host.Log.Clear();
    EXPECT_EQ(Read(row.address), LocationState::Unreadable) << row.address;
    EXPECT_THAT(Raises(), ElementsAre(Raised(row.text + " nicht gefunden!"))) << row.address;
  }
}

TEST_F(BrowseTest, TwoAccountsOfOneNameStillResolve) {
  tree.AddProfile("twins", {"t", "t"});
  EXPECT_EQ(Read("thunderbird://twins/t/*"), LocationState::Read);
  EXPECT_THAT(Raises(), IsEmpty());
}

TEST_F(BrowseTest, SegmentsBehindAStarAreStillWalked) {
  EXPECT_EQ(Read("thunderbird://*/*"), LocationState::Read);
  // The second level asks for the accounts of no profile, which has none.
  EXPECT_THAT(Places(),
              ElementsAre(StartsWith("Profil 'p'"), StartsWith("Profil 'q'"), StartsWith("Lokale")));
}

// --- Reading a mailbox

class ReadMailboxTest : public LocationThunderbirdWalkTest {
 protected:
  ReadMailboxTest() { tree.AddProfile("p", {"a"}); }

  // What the host hears of a mailbox of mails "1", "2", ... read as the n-th item on.
  std::vector<std::string> Reading(const std::string& file, const std::vector<std::string>& ids, int number,
                                   int counter, const std::string& keywords) {
    const auto total = static_cast<double>(ReadBytes(file).size());
    std::vector<std::string> calls = {Report(32, "0/100:Thunderbird " + file)};
    std::size_t offset = 0;
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const std::size_t size = MailOf(ids[i]).size();
      const std::size_t counted = size + (i + 1 < ids.size() ? kSeparatorLine.size() : 0);
      calls = calls + PasteCalls(number++, counter++, RecordOf(ids[i], "S", keywords, counted, file, offset));
      // Progress goes by the position, from 1, at which the mail begins.
      calls.push_back(Report(32, NumberText(static_cast<double>(offset + 1) / total * 100)));
      offset += size;
    }
    calls.push_back(Report(32, ""));
    return calls;
  }
};

TEST_F(ReadMailboxTest, EveryMailIsPastedAndTheProgressReported) {
  const std::string file = tree.AddMailbox("p", "a", "Inbox", MailOf("1") + MailOf("2") + MailOf("3"));
  EXPECT_EQ(Read("thunderbird://p/a/Inbox/-"), LocationState::Read);
  EXPECT_EQ(host.Log.Lines(),
            (std::vector<std::string>{"tree.Clear", "tree.AddChild(\"Account 'a'\",\"Account=a\")"} +
             Reading(file, {"1", "2", "3"}, 1, 1, "Account=a,Inbox")));
  EXPECT_THAT(platform->CallsOf("YieldOnce"), IsEmpty());
}

TEST_F(ReadMailboxTest, MailboxesFollowEachOther) {
  const std::string first = tree.AddMailbox("p", "a", "A", MailOf("1") + MailOf("2"));
  const std::string second = tree.AddMailbox("p", "a", "B");
  const std::string third = tree.AddMailbox("p", "a", "C", MailOf("3"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_EQ(host.Log.Lines(),
            (std::vector<std::string>{"tree.Clear", "tree.AddChild(\"Account 'a'\",\"Account=a\")"} +
             Reading(first, {"1", "2"}, 1, 1, "Account=a,A") + Reading(second, {}, 3, 3, "Account=a,B") +
             Reading(third, {"3"}, 3, 3, "Account=a,C")));
}

TEST_F(ReadMailboxTest, MailOfTheSameIdentityIsReplaced) {
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "old") + MailOf("2", "two") + MailOf("1", "new"));
  Read("thunderbird://p/a");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox two", "Account=a,Inbox new"));
}

TEST_F(ReadMailboxTest, MailsOfOneIdAreItemsOfTheirOwn) {
  const ScopedRules rules(Rules::Today());
  const std::string file = tree.AddMailbox(
      "p", "a", "Inbox", MailOf("1", "old") + MailOf("2", "two") + MailOf("1", "new") + MailOf("1", "x"));
  for (int times = 0; times < 2; ++times) {
    Read("thunderbird://p/a");
    EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox old", "Account=a,Inbox two", "Account=a,Inbox new",
                                     "Account=a,Inbox x"));
    const std::string id = connector->Item(1)->ID();
    EXPECT_EQ(connector->Item(3)->ID(), id + "~2");
    EXPECT_EQ(connector->Item(4)->ID(), id + "~3");
  }
  EXPECT_EQ(StandingOf(*connector->Item(3)), Standing::AtItsPlace);
  const std::size_t third = ReadBytes(file).rfind("From - ", ReadBytes(file).find("Subject: new"));
  ASSERT_TRUE(connector->DeleteItem(connector->Item(3)));
  EXPECT_EQ(StatusOf(ReadBytes(file), third), '9');
  EXPECT_EQ(StatusOf(ReadBytes(file), 0), '1');
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox old", "Account=a,Inbox two", "Account=a,Inbox x"));
}

TEST_F(ReadMailboxTest, NumberOfACopyStaysWhenOneBeforeItIsMarked) {
  const ScopedRules rules(Rules::Today());
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "a") + MailOf("1", "b") + MailOf("1", "c"));
  tree.AddMailbox("p", "a", "Sent", MailOf("1", "d"));
  Read("thunderbird://p/a");
  const std::string id = connector->Item(1)->ID();
  // Thunderbird makes the summary anew, which goes with a mark.
  const auto withdraw = [&](const std::string& wanted) {
    connector->DeleteItem(connector->GetItem(wanted));
    tree.Folder().Write("Thunderbird/Profiles/p/Mail/a/Inbox.msf", "");
  };
  withdraw(id);
  withdraw(id + "~2");
  Read("thunderbird://p/a");
  ASSERT_THAT(Mails(), ElementsAre("Account=a,Inbox c", "Account=a,Sent d"));
  EXPECT_EQ(connector->Item(1)->ID(), id + "~3");
  EXPECT_EQ(connector->Item(2)->ID(), id + "~4");
  // A mail that was moved is no copy of the one that is marked in its old folder.
  withdraw(id + "~3");
  Read("thunderbird://p/a");
  ASSERT_THAT(Mails(), ElementsAre("Account=a,Sent d"));
  EXPECT_EQ(connector->Item(1)->ID(), id);
}

TEST_F(ReadMailboxTest, MailThatBecomesNoItemIsNamedAndTheNextOneComes) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  const std::string file =
      tree.AddMailbox("p", "a", "Inbox", MailOf("1") + MailOf("2") + MailOf("3", "three"));
  host.Log.FailOn("item2.ImportRecord");
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox S", " ", "Account=a,Inbox three"));
  const std::string place = std::to_string(MailOf("1").size());
  EXPECT_THAT(host.Log.Only({"Global.Report(27,"}),
              ElementsAre(testing::HasSubstr("Inbox: Mail an Stelle " + place + ": ")));
}

TEST_F(ReadMailboxTest, MailboxThatCannotBeOpenedIsToldAndTheNextOneIsRead) {
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  os::WriteAttributes(tree.AddMailbox("p", "a", "A", MailOf("1")), os::kReadOnly);
  tree.AddMailbox("p", "a", "B", MailOf("2", "two"));
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,B two"));
  EXPECT_THAT(host.Log.Lines(), testing::Contains(StartsWith("Global.Report(27,")));
}

TEST_F(ReadMailboxTest, LinkThatLeadsNowhereIsToldAndTheNextOneIsRead) {
  tree.AddFile("p", "a", "A.msf");
  MAKE_OR_SKIP(MakeLink("nowhere", os::ToNativePath(tree.AccountFolder("p", "a") + "A")));
  tree.AddMailbox("p", "a", "B", MailOf("1"));
  EXPECT_NE(SwallowedNumber([&] { Noted("thunderbird://p/a"); }), 0);
  host.Log.Clear();

  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,B S"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27,"}), ElementsAre(testing::HasSubstr("\\A: ")));
  host.Log.Clear();
  EXPECT_EQ(Noted("thunderbird://p/a").size(), 1U);
  EXPECT_THAT(host.Log.Only({"Global.Report(27,"}), ElementsAre(testing::HasSubstr("\\A: ")));
}

TEST_F(ReadMailboxTest, MailboxThatIsNoneIsTold) {
  std::string expunged = MailOf("1");
  expunged[expunged.find("Status: 0001") + 11] = '9';
  tree.AddMailbox("p", "a", "Blank", "\r\n");
  tree.AddMailbox("p", "a", "Expunged", expunged);
  tree.AddMailbox("p", "a", "Lead", "text before\r\n\r\n" + MailOf("2"));
  const std::string file = tree.AddMailbox("p", "a", "Zeros", std::string(100000, '\0'));
  Read("thunderbird://p/a");
  EXPECT_THAT(host.Log.Only({"Global.Report(27,"}), IsEmpty());

  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  Read("thunderbird://p/a");
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Lead S"));
  EXPECT_THAT(host.Log.Only({"Global.Report(27,"}),
              ElementsAre(Report(27, file + ": kein Postfach; keine Mail darin")));
}

TEST_F(ReadMailboxTest, FailedReportRisesAndTheItemsReadSoFarStay) {
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one") + MailOf("2", "two") + MailOf("3", "three"));
  // The first report opens the display, the second and third follow a mail each.
  host.Log.FailOn("Global.Report(32", 3);
  EXPECT_THROW(Read("thunderbird://p/a"), Failure);
  EXPECT_THAT(Mails(), ElementsAre("Account=a,Inbox one", "Account=a,Inbox two"));
}

TEST_F(ReadMailboxTest, FailedCallsOfTheHostRise) {
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  for (const std::string call :
       {"tree", "Location(\"thunderbird://p/a\").Name", "Global.TempPath", "Global.Report"}) {
    test::RecordingHost fresh;
    const auto reader = std::make_shared<Location_Thunderbird>();
    reader->SetLocObject(fresh.MakeLocation("thunderbird://p/a"));
    fresh.Log.FailOn(call);
    EXPECT_THROW(reader->Einlesen(), Failure) << call;
  }
}

TEST_F(ReadMailboxTest, FailedCallsOfThePasteDoNotStopTheReading) {
  tree.AddMailbox("p", "a", "Inbox", MailOf("1", "one") + MailOf("2", "two"));
  host.Log.FailOn("item1.ImportRecord");
  EXPECT_EQ(Read("thunderbird://p/a"), LocationState::Read);
  EXPECT_THAT(Mails(), ElementsAre(" ", "Account=a,Inbox two"));
}

TEST_F(ReadMailboxTest, TemporaryFolderIsOneOfTheConnectorAndGoesWithIt) {
  tree.AddMailbox("p", "a", "A", MailOf("1"));
  tree.AddMailbox("p", "a", "B", MailOf("2"));
  Connect("thunderbird://p/a");
  EXPECT_THAT(TemporaryNames(), IsEmpty());
  connector->InitLocation("thunderbird://p/a");
  connector->Einlesen();
  ASSERT_EQ(TemporaryNames().size(), 1U);
  const std::string name = TemporaryNames().front();
  EXPECT_EQ(name.size(), 38U);
  EXPECT_TRUE(name.starts_with('{'));
  temporary.Write(name + "/deep/file", "x");
  const std::shared_ptr<Location_Thunderbird> other = connector;
  Read("thunderbird://p/a");
  EXPECT_EQ(TemporaryNames().size(), 2U);
  connector.reset();
  EXPECT_THAT(TemporaryNames(), ElementsAre(name));
}

TEST_F(ReadMailboxTest, ReleasedConnectorRemovesItsTemporaryFolderWithAllItHolds) {
  tree.AddMailbox("p", "a", "A", MailOf("1"));
  Read("thunderbird://p/a");
  temporary.Write(TemporaryNames().front() + "/deep/file", "x");
  connector.reset();
  EXPECT_THAT(TemporaryNames(), IsEmpty());
}

}  // namespace
}  // namespace vorlent
