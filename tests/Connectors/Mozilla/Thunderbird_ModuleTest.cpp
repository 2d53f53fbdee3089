#include "Connectors/Mozilla/Thunderbird_Module.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Connectors/Mozilla/ThunderbirdTree.h"
#include "Platform/Failure.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/DiskOperations.h"
#include "Support/RecordingPlatform.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Entries(const KeyedList<std::string>& list) {
  std::vector<std::string> entries;
  for (const std::string& entry : list)
    entries.push_back(entry);
  return entries;
}

class Thunderbird_ModuleTest : public testing::Test {
 protected:
  Thunderbird_ModuleTest() { platform->SetAppData(tree.Path()); }

  void WriteIni(const std::string& text) { tree.Folder().Write("Thunderbird/profiles.ini", text); }

  // Reads preferences of these lines and nothing else.
  void ReadPrefs(const std::string& lines) {
    tree.Folder().Write("prefs/prefs.js", lines);
    GetAccounts("", "*", tree.Folder().Path("prefs"));
  }

  ScopedRecordingPlatform platform;
  ThunderbirdTree tree;
  const std::string base = tree.Path() + "\\Thunderbird\\";
};

// --- Profiles

TEST_F(Thunderbird_ModuleTest, AllProfilesAreListedWithTheFoldersOfTheirAccountsAndTheDisksBehindThem) {
  tree.AddProfile("p", {"a", "b"});
  tree.AddProfile("q", {});
  platform->drives = {{'A', 2}, {'C', 3}, {'D', 5}};
  EXPECT_THAT(
      Entries(GetMozillaProfiles("thunderbird://", "*", "Thunderbird")),
      ElementsAre("Profil 'p'\nthunderbird://p/*\n" + tree.AccountFolder("p", "a") + "|" +
                      tree.AccountFolder("p", "b"),
                  "Profil 'q'\nthunderbird://q/*\n", "Lokale Laufwerke\nthunderbird://./*\nC:\\|D:\\"));
}

TEST_F(Thunderbird_ModuleTest, ProfileIsFoundByItsExactName) {
  WriteIni(
      "[General]\r\n[Profile0]\r\nName=default\r\nPath=Profiles/abc.default\r\n"
      "[Profile1]\r\nName=Default\r\nPath=D:\\Mail/x\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("x", "default", "Thunderbird")),
              ElementsAre(base + "Profiles\\abc.default"));
  EXPECT_THAT(Entries(GetMozillaProfiles("x", "Default", "Thunderbird")), ElementsAre("D:\\Mail\\x"));
  EXPECT_THAT(Entries(GetMozillaProfiles("x", "DEFAULT", "Thunderbird")), IsEmpty());
  EXPECT_THAT(Entries(GetMozillaProfiles("x", "", "Thunderbird")), IsEmpty());
}

TEST_F(Thunderbird_ModuleTest, FirstOfTwoProfilesOfOneNameIsFound) {
  WriteIni("[General]\r\n[Profile0]\r\nName=p\r\nPath=one\r\n[Profile1]\r\nName=p\r\nPath=two\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("", "p", "Thunderbird")), ElementsAre(base + "one"));
}

TEST_F(Thunderbird_ModuleTest, SectionThatStandsFirstIsPassedOverWhateverItIs) {
  WriteIni("[Profile0]\r\nName=p\r\nPath=p\r\n[General]\r\nx=1\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("", "p", "Thunderbird")), IsEmpty());
  platform->drives.clear();
  EXPECT_THAT(Entries(GetMozillaProfiles("", "*", "Thunderbird")),
              ElementsAre("Profil ''\n/*\n", "Lokale Laufwerke\n./*\n"));
}

TEST_F(Thunderbird_ModuleTest, SingleSectionListsNoProfile) {
  WriteIni("[Profile0]\r\nName=p\r\nPath=p\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("", "*", "Thunderbird")),
              ElementsAre("Lokale Laufwerke\n./*\nC:\\"));
}

TEST_F(Thunderbird_ModuleTest, MissingFileHasNoProfiles) {
  EXPECT_THAT(Entries(GetMozillaProfiles("", "p", "Thunderbird")), IsEmpty());
  EXPECT_THAT(Entries(GetMozillaProfiles("", "*", "Thunderbird")),
              ElementsAre("Lokale Laufwerke\n./*\nC:\\"));
}

TEST_F(Thunderbird_ModuleTest, PointStandsForTheDisksUnlessAProfileHasThatName) {
  EXPECT_THAT(Entries(GetMozillaProfiles("x", ".", "Thunderbird")), ElementsAre("."));
  WriteIni("[General]\r\n[Profile0]\r\nName=.\r\nPath=dot\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("x", ".", "Thunderbird")), ElementsAre(base + "dot"));
}

TEST_F(Thunderbird_ModuleTest, ProfilesOfAnotherApplicationLieInItsFolder) {
  tree.Folder().Write("Mozilla/Sunbird/profiles.ini", "[General]\r\n[Profile0]\r\nName=s\r\nPath=../up\r\n");
  EXPECT_THAT(Entries(GetMozillaProfiles("", "s", "Mozilla\\Sunbird")),
              ElementsAre(tree.Path() + "\\Mozilla\\up"));
  EXPECT_THAT(Entries(GetMozillaProfiles("", "s", "Thunderbird")), IsEmpty());
}

TEST_F(Thunderbird_ModuleTest, PreferenceThatOccursTwiceRisesOutOfTheListOfProfiles) {
  tree.AddProfile("p", {});
  tree.Folder().Write("Thunderbird/Profiles/p/prefs.js", "user_pref(\"a\", 1);\r\nuser_pref(\"A\", 2);\r\n");
  EXPECT_THROW(GetMozillaProfiles("", "*", "Thunderbird"), Failure);
  EXPECT_THAT(Entries(GetMozillaProfiles("", "p", "Thunderbird")), ElementsAre(base + "Profiles\\p"));
}

// --- Accounts

TEST_F(Thunderbird_ModuleTest, AccountsAreListedInTheOrderOfTheAccountManager) {
  tree.Folder().Write("p/prefs.js",
                      "user_pref(\"mail.accountmanager.accounts\", \"account2,account1\");\r\n"
                      "user_pref(\"mail.account.account1.server\", \"s1\");\r\n"
                      "user_pref(\"mail.account.account2.server\", \"s2\");\r\n"
                      "user_pref(\"mail.server.s1.name\", \"One\");\r\n"
                      "user_pref(\"mail.server.s1.directory\", \"C:\\\\Mail\\\\one\");\r\n"
                      "user_pref(\"mail.server.s2.name\", \"Two\");\r\n"
                      "user_pref(\"mail.server.s2.directory\", \"\\\\\\\\host\\\\two\\\\\");\r\n");
  EXPECT_THAT(Entries(GetAccounts("thunderbird://p/", "*", tree.Folder().Path("p"))),
              ElementsAre("Two\nthunderbird://p/Two/*\n\\\\host\\two\\",
                          "One\nthunderbird://p/One/*\nC:\\Mail\\one\\"));
  EXPECT_THAT(Entries(GetAccounts("x", "One", tree.Folder().Path("p") + "\\")),
              ElementsAre("C:\\Mail\\one\\"));
  EXPECT_THAT(Entries(GetAccounts("x", "one", tree.Folder().Path("p"))), IsEmpty());
  EXPECT_THAT(Entries(GetAccounts("x", "", tree.Folder().Path("p"))), IsEmpty());
}

TEST_F(Thunderbird_ModuleTest, AccountWithoutAServerIsSkipped) {
  tree.Folder().Write("p/prefs.js",
                      "user_pref(\"mail.accountmanager.accounts\", \"x,,account1, account1\");\r\n"
                      "user_pref(\"mail.account.account1.server\", \"s1\");\r\n"
                      "user_pref(\"mail.server.s1.name\", \"One\");\r\n");
  EXPECT_THAT(Entries(GetAccounts("", "*", tree.Folder().Path("p"))), ElementsAre("One\nOne/*\n"));
}

TEST_F(Thunderbird_ModuleTest, FirstAccountOfANameIsFound) {
  tree.Folder().Write("p/prefs.js",
                      "user_pref(\"mail.accountmanager.accounts\", \"a1,a2\");\r\n"
                      "user_pref(\"mail.account.a1.server\", \"s1\");\r\n"
                      "user_pref(\"mail.account.a2.server\", \"s2\");\r\n"
                      "user_pref(\"mail.server.s1.name\", \"n\");\r\n"
                      "user_pref(\"mail.server.s1.directory\", \"C:\\\\1\");\r\n"
                      "user_pref(\"mail.server.s2.name\", \"n\");\r\n"
                      "user_pref(\"mail.server.s2.directory\", \"C:\\\\2\");\r\n");
  EXPECT_THAT(Entries(GetAccounts("", "n", tree.Folder().Path("p"))), ElementsAre("C:\\1\\"));
  EXPECT_THAT(Entries(GetAccounts("", "*", tree.Folder().Path("p"))),
              ElementsAre("n\nn/*\nC:\\1\\", "n\nn/*\nC:\\2\\"));
}

TEST_F(Thunderbird_ModuleTest, MissingPreferencesHaveNoAccounts) {
  ReadPrefs("user_pref(\"a\", \"x\");\r\n");
  EXPECT_THAT(Entries(GetAccounts("", "*", tree.Folder().Path("nowhere"))), IsEmpty());
  EXPECT_THAT(Entries(PrefNames()), IsEmpty());
  EXPECT_EQ(GetPref("a"), "");
}

struct PrefRow {
  std::string lines;
  std::string key;
  std::string value;
};

TEST_F(Thunderbird_ModuleTest, PreferencesAreTakenLineByLine) {
  const std::vector<PrefRow> rows = {
      {"user_pref(\"a\", \"x\");\r\n", "a", "x"},
      {"user_pref(\"a\",\"x\");\r\n", "a", "x"},
      {"user_pref(\"a\"  \"x\");\r\n", "a", "x"},
      {"user_pref(\"a\",     \"x y \" );\r\n", "a", "x y "},
      {"user_pref(\"a\", \"x\");", "a", "x"},
      {"user_pref(\"Mixed.Case\", \"x\");\r\n", "mIXED.cASE", "x"},
      {"user_pref(\"a\", \"x\\\"y\");\r\n", "a", "x\\"},
      {"user_pref(\"a\", \"unclosed);\r\n", "a", "unclosed);"},
      {"user_pref(\"a\", \"abc   \r\n", "a", "abc"},
      {"user_pref(\"a\",    \r\n", "a", ""},
      {"user_pref(\"a\", \"\");\r\n", "a", ""},
      {"user_pref(\"a\n", "a\n", ""},
      // A value that isn't quoted leaves the quoted one above it.
      {"user_pref(\"a\", 1);\r\n", "a", ""},
      {"user_pref(\"b\", \"x\");\r\nuser_pref(\"a\", 1);\r\n", "a", "x"},
      {"user_pref(\"b\", \"x\");\r\nuser_pref(\"c\", true);\r\nuser_pref(\"a\", -1);\r\n", "a", "x"},
      {"user_pref(\"a\", 1);\r\nuser_pref(\"b\", \"x\");\r\n", "a", ""},
      // No lines of preferences.
      {" user_pref(\"a\", \"x\");\r\n", "a", ""},
      {"user_pref( \"a\", \"x\");\r\n", "a", ""},
      {"// user_pref(\"a\", \"x\");\r\n", "a", ""},
      {"User_pref(\"a\", \"x\");\r\n", "a", ""},
      {"pref(\"a\", \"x\");\r\n", "a", ""},
  };
  for (const PrefRow& row : rows) {
    ReadPrefs(row.lines);
    EXPECT_EQ(GetPref(row.key), row.value) << row.lines;
  }
}

TEST_F(Thunderbird_ModuleTest, PreferencesAreKeptInOrderAndByLowerCaseName) {
  ReadPrefs("user_pref(\"B\", \"1\");\r\nuser_pref(\"a\", 2);\r\n");
  EXPECT_THAT(Entries(PrefNames()), ElementsAre("B", "a"));
  EXPECT_THAT(Entries(PrefValues()), ElementsAre("1", "1"));
  EXPECT_EQ(PrefValues().Key(1), "b");
  EXPECT_EQ(GetPref("unknown"), "");
}

TEST_F(Thunderbird_ModuleTest, PreferencesAreThoseOfTheProfileReadLast) {
  ReadPrefs("user_pref(\"a\", \"1\");\r\n");
  ReadPrefs("user_pref(\"b\", \"2\");\r\n");
  EXPECT_EQ(GetPref("a"), "");
  EXPECT_EQ(GetPref("b"), "2");
  GetAccounts("", "*", ".");
  EXPECT_EQ(GetPref("b"), "2");
}

TEST_F(Thunderbird_ModuleTest, PreferenceThatOccursTwiceEndsTheReading) {
  try {
    ReadPrefs("user_pref(\"a\", \"1\");\r\nuser_pref(\"A\", \"2\");\r\nuser_pref(\"b\", \"3\");\r\n");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::KeyExists));
  }
  EXPECT_THAT(Entries(PrefNames()), ElementsAre("a", "A"));
  EXPECT_EQ(GetPref("a"), "1");
  EXPECT_EQ(GetPref("b"), "");
}

TEST_F(Thunderbird_ModuleTest, DrivesAreListedFromCOn) {
  platform->drives = {{'A', 2}, {'B', 2}, {'C', 3}, {'M', 4}, {'Z', 5}};
  EXPECT_THAT(Entries(GetAccounts("thunderbird://./", "*", ".")),
              ElementsAre("C:\\\nthunderbird://./C/*\nC:\\", "M:\\\nthunderbird://./M/*\nM:\\",
                          "Z:\\\nthunderbird://./Z/*\nZ:\\"));
  EXPECT_EQ(platform->CountOf("DriveType"), 24);
}

TEST_F(Thunderbird_ModuleTest, DriveIsNamedByOneLetterWhetherItExistsOrNot) {
  platform->drives.clear();
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"c", {"c:\\"}}, {"C", {"C:\\"}}, {"A", {"A:\\"}}, {"z", {"z:\\"}}, {"CC", {}}, {"", {}},
      {"1", {}},       {"C:\\", {}},    {"\xE4", {}},    {"@", {}},       {"[", {}}};
  for (const auto& [filter, expected] : rows) {
    EXPECT_EQ(Entries(GetAccounts("x", filter, ".")), expected) << filter;
  }
  EXPECT_EQ(platform->CountOf("DriveType"), 0);
}

TEST_F(Thunderbird_ModuleTest, UnreadableFilesRise) {
  tree.AddProfile("p", {});
  const std::string prefs = "Thunderbird/Profiles/p/prefs.js";
  const auto permit = [&](std::string_view name, int mode) {
    std::filesystem::permissions(tree.Folder().Native(name), static_cast<std::filesystem::perms>(mode));
  };
  for (const char* folder : {"", "Thunderbird", "Thunderbird/Profiles", "Thunderbird/Profiles/p"})
    permit(folder, 0755);
  permit(prefs, 0);
  {
    const AsOrdinaryUser user;
    EXPECT_EQ(SwallowedNumber([&] { GetAccounts("", "*", tree.Folder().Path("Thunderbird\\Profiles\\p")); }),
              static_cast<int>(ErrorNumber::PathAccess));
    EXPECT_EQ(SwallowedNumber([&] { GetMozillaProfiles("", "*", "Thunderbird"); }),
              static_cast<int>(ErrorNumber::PathAccess));
    // Only the profile itself is asked for here.
    EXPECT_EQ(SwallowedNumber([&] { GetMozillaProfiles("", "p", "Thunderbird"); }), 0);
  }
  permit("Thunderbird/profiles.ini", 0);
  const AsOrdinaryUser user;
  EXPECT_EQ(SwallowedNumber([&] { GetMozillaProfiles("", "p", "Thunderbird"); }),
            static_cast<int>(ErrorNumber::PathAccess));
  EXPECT_EQ(SwallowedNumber([&] { GetKeywordsOfFile("D:\\Inbox"); }),
            static_cast<int>(ErrorNumber::PathAccess));
}

// --- Mail folders

class MailFoldersTest : public Thunderbird_ModuleTest {
 protected:
  MailFoldersTest() {
    tree.Folder().Write("m/Inbox", "");
    tree.Folder().Write("m/Inbox.msf", "");
    tree.Folder().Write("m/Inbox.sbd/Sub", "");
    tree.Folder().Write("m/Drafts", "");
    tree.Folder().Write("m/Drafts.msf", "");
    tree.Folder().MakeFolder("m/Drafts.sbd");
    tree.Folder().Write("m/Raw", "");
    tree.Folder().MakeFolder("m/Alone.sbd");
  }

  const std::string mail = tree.Folder().Path("m") + "\\";
};

TEST_F(MailFoldersTest, MailboxesWithTheirSummaryAreListed) {
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", mail)),
              ElementsAre("Drafts\nt://p/a/Drafts/\n" + mail + "Drafts",
                          "Inbox\nt://p/a/Inbox/*\n" + mail + "Inbox"));
}

TEST_F(MailFoldersTest, SummaryAndSubfoldersMayBeWrittenInAnotherLetterCase) {
  tree.Folder().Write("n/Sent", "");
  tree.Folder().Write("n/SENT.MSF", "");
  tree.Folder().Write("n/sent.SBD/Sub", "");
  const std::string folder = tree.Folder().Path("n") + "\\";
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", folder)),
              ElementsAre("Sent\nt://p/a/Sent/*\n" + folder + "Sent"));
}

TEST_F(MailFoldersTest, NeitherAFolderNorAFileOfTheWrongKindCounts) {
  tree.Folder().Write("n/Sent", "");
  tree.Folder().MakeFolder("n/Sent.msf");
  tree.Folder().Write("n/Trash", "");
  tree.Folder().Write("n/Trash.msf", "");
  tree.Folder().Write("n/Trash.sbd", "");
  const std::string folder = tree.Folder().Path("n") + "\\";
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", folder)),
              ElementsAre("Trash\nt://p/a/Trash/\n" + folder + "Trash"));
}

TEST_F(MailFoldersTest, WithoutASeparatorTheNamesAreAskedForBesideTheFolder) {
  const std::string folder = tree.Folder().Path("m");
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", folder)), IsEmpty());
  tree.Folder().Write("mRaw.msf", "");
  tree.Folder().Write("mRaw.sbd/Sub", "");
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", folder)),
              ElementsAre("Raw\nt://p/a/Raw/*\n" + folder + "Raw"));
}

TEST_F(MailFoldersTest, MailboxIsFoundByNameWithoutItsSummaryOrSubfolders) {
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "Inbox", mail)), ElementsAre(mail + "Inbox.sbd\\"));
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "Raw", mail)), ElementsAre(mail + "Raw.sbd\\"));
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "inbox", mail)), IsEmpty());
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "Alone", mail)), IsEmpty());
  EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "Alone.sbd", mail)), IsEmpty());
}

TEST_F(MailFoldersTest, SubfoldersComeFirstOnTheDisks) {
  EXPECT_THAT(Entries(GetMailFolders("t://./C/", "*", mail)),
              ElementsAre("Alone.sbd\nt://./C/Alone.sbd/\n" + mail + "Alone.sbd",
                          "Drafts.sbd\nt://./C/Drafts.sbd/\n" + mail + "Drafts.sbd",
                          "Inbox.sbd\nt://./C/Inbox.sbd/*\n" + mail + "Inbox.sbd",
                          "Drafts\nt://./C/Drafts/\n" + mail + "Drafts",
                          "Inbox\nt://./C/Inbox/*\n" + mail + "Inbox"));
}

TEST_F(MailFoldersTest, OnlyFoldersAreFoundByNameOnTheDisks) {
  EXPECT_THAT(Entries(GetMailFolders("t://./C/", "Inbox.sbd", mail)), ElementsAre(mail + "Inbox.sbd\\"));
  EXPECT_THAT(Entries(GetMailFolders("t://./C/", "Inbox", mail)), IsEmpty());
}

TEST_F(MailFoldersTest, FolderThatIsNotThereHasNoEntries) {
  for (const std::string& folder : {std::string(), mail + "nowhere\\", mail + "Inbox"}) {
    EXPECT_THAT(Entries(GetMailFolders("t://p/a/", "*", folder)), IsEmpty()) << folder;
    EXPECT_THAT(Entries(GetMailFolders("t://./C/", "*", folder)), IsEmpty()) << folder;
  }
}

TEST_F(MailFoldersTest, FolderHasEntriesIfItHoldsAnything) {
  EXPECT_TRUE(FolderHasEntries(mail));
  EXPECT_TRUE(FolderHasEntries(mail + "Inbox.sbd"));
  EXPECT_FALSE(FolderHasEntries(mail + "Drafts.sbd"));
  EXPECT_FALSE(FolderHasEntries(mail + "nowhere"));
  tree.Folder().Write("m/Drafts.sbd/.hidden", "");
  EXPECT_TRUE(FolderHasEntries(mail + "Drafts.sbd"));
}

// What the folder is made of is asked of the disk in steps that swallow their failures, each by itself.
TEST_F(MailFoldersTest, NoFailureOfTheDiskRises) {
  const std::string beside = tree.Folder().Path("m");
  tree.Folder().Write("mRaw.msf", "");
  tree.Folder().Write("mRaw.sbd/Sub", "");
  struct Row {
    const char* prefix;
    std::string folder;
    std::size_t entries;
  };
  for (const Row& row : {Row{"t://p/a/", mail, 2}, Row{"t://./C/", mail, 5}, Row{"t://p/a/", beside, 1},
                         Row{"t://./C/", beside, 4}}) {
    bool reached = true;
    for (long number = 0; reached; ++number) {
      const DiskFault fault({.calls = DiskCall::Open | DiskCall::Status | DiskCall::List, .number = number});
      std::vector<std::string> found;
      EXPECT_EQ(SwallowedNumber([&] { found = Entries(GetMailFolders(row.prefix, "*", row.folder)); }), 0);
      EXPECT_LE(found.size(), row.entries);
      reached = fault.WasReached();
      if (!reached) {
        EXPECT_EQ(found.size(), row.entries) << "without a failure";
        EXPECT_GT(number, 2) << "the disk was asked";
      }
    }
  }
}

// --- Keywords of a file

TEST_F(Thunderbird_ModuleTest, KeywordsOfAFileAreItsAccountAndFolders) {
  tree.AddProfile("p", {"a"});
  tree.AddProfile("q", {"b", "c d"});
  EXPECT_EQ(GetKeywordsOfFile(tree.AccountFolder("p", "a") + "Inbox"), "Account=a,Inbox");
  EXPECT_EQ(GetKeywordsOfFile(tree.AccountFolder("q", "c d") + "Inbox.sbd\\Sub.sbd\\Deep"),
            "Account=c d,Inbox,Sub,Deep");
  EXPECT_EQ(GetKeywordsOfFile(tree.AccountFolder("q", "b")), "Account=b");
}

TEST_F(Thunderbird_ModuleTest, AccountOfAFileIsFoundWithoutRegardToCase) {
  tree.AddProfile("p", {"a"});
  std::string upper = tree.AccountFolder("p", "a");
  for (char& c : upper)
    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  EXPECT_EQ(GetKeywordsOfFile(upper + "Inbox.SBD\\Sub"), "Account=a,Inbox.SBD\\Sub");
}

TEST_F(Thunderbird_ModuleTest, KeywordsOfAFileOutsideAllAccountsAreThePartsOfItsPath) {
  tree.AddProfile("p", {"a"});
  EXPECT_EQ(GetKeywordsOfFile("D:\\old mail\\Inbox.sbd\\Sub"), "old mail,Inbox,Sub");
  EXPECT_EQ(GetKeywordsOfFile("D:\\Inbox"), "Inbox");
  EXPECT_EQ(GetKeywordsOfFile("D:\\"), "");
  EXPECT_EQ(GetKeywordsOfFile("D:"), "");
  EXPECT_EQ(GetKeywordsOfFile(""), "");
}

TEST_F(Thunderbird_ModuleTest, AccountWithoutAFolderHoldsEveryFile) {
  tree.AddProfile("p", {});
  tree.Folder().Write("Thunderbird/Profiles/p/prefs.js",
                      "user_pref(\"mail.accountmanager.accounts\", \"a1\");\r\n"
                      "user_pref(\"mail.account.a1.server\", \"s1\");\r\n"
                      "user_pref(\"mail.server.s1.name\", \"news\");\r\n");
  EXPECT_EQ(GetKeywordsOfFile("D:\\Mail\\Inbox.sbd\\Sub"), "Account=news,D:\\Mail\\Inbox,Sub");
}

TEST_F(Thunderbird_ModuleTest, KeywordsOfAFileLeaveThePreferencesOfTheLastProfile) {
  tree.AddProfile("p", {"a"});
  tree.AddProfile("q", {"b"});
  GetKeywordsOfFile("D:\\Inbox");
  EXPECT_EQ(GetPref("mail.server.server1.name"), "b");
  GetKeywordsOfFile(tree.AccountFolder("p", "a") + "Inbox");
  EXPECT_EQ(GetPref("mail.server.server1.name"), "a");
}

}  // namespace
}  // namespace vorlent
