#include "Connectors/Mozilla/FolderNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr char kHashed[] = "Ein sehr langer Ordnername der laenger als fuen9e7872c0";

class FolderNamesTest : public testing::Test {
 protected:
  FolderNamesTest() {
    folder_.MakeFolder(kAccount);
    names_.TurnTo(folder_.Path("p"));
  }

  // The native path of an entry in the account's folder, as JSON writes it.
  std::string In(const std::string& name) const {
    std::string path = (folder_.Native("p/Mail/Local Folders") / name).make_preferred().string();
    ReplaceText(path, "\\", "\\\\");
    return path;
  }

  void WriteCache(std::string_view json) { folder_.Write("p/folderCache.json", json); }

  std::string Shown(const std::string& name) { return names_.Shown(Account(), name); }
  std::string Account() const { return folder_.Path("p\\Mail\\Local Folders\\"); }

  // The name shown for a folder "f" of which the cache tells this.
  std::string ShownOf(const std::string& member) {
    WriteCache("{\"" + In("f.msf") + "\":" + member + "}");
    return ShownAnew("f");
  }

  // As Shown, with nothing known from before.
  std::string ShownAnew(const std::string& name) const {
    FolderNames names;
    names.TurnTo(folder_.Path("p"));
    return names.Shown(Account(), name);
  }

  static constexpr char kAccount[] = "p/Mail/Local Folders";
  TemporaryFolder folder_;
  ScopedRules today_{{.folderNames = MailFolderNames::Shown}};
  FolderNames names_;
};

TEST_F(FolderNamesTest, NameIsThatOfTheProfilesCache) {
  WriteCache(
      "{\"" + In("") + "\":{\"flags\":12,\"folderName\":\"Local Folders\"},\"" + In("Inbox.msf") +
      "\":{\"folderName\":\"Inbox\",\"flags\":4096},\"" + In(std::string(kHashed) + ".msf") +
      "\":{\"flags\":[1],\"folderName\":\"Ein sehr langer Ordnername, der l\\u00e4nger als f\\u00fcnfzig "
      "Zeichen ist\",\"x\":null},\"" +
      In("Inbox.sbd/a4c2.msf") + "\":{\"folderName\":\"2026/01: #1\"}}");
  EXPECT_EQ(Shown("Inbox"), "Inbox");
  EXPECT_EQ(Shown(kHashed), std::string("Ein sehr langer Ordnername, der länger als fünfzig Zeichen ist"_cp));
  EXPECT_EQ(Shown("Sent"), "Sent");
  EXPECT_EQ(Shown("a4c2"), "a4c2");
  EXPECT_EQ(names_.Shown(Account() + "Inbox.sbd\\", "a4c2"), "2026/01: #1");
}

TEST_F(FolderNamesTest, ByTheOtherRulesFilesGiveTheNames) {
  folder_.Write("p/Mail/Local Folders/f.msf", "");
  EXPECT_EQ(ShownOf(R"({"folderName":"F"})"), "F");
  EXPECT_EQ(names_.OnDisk(Account(), "F"), "f");
  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(Shown("f"), "f");
  EXPECT_EQ(names_.OnDisk(Account(), "F"), "F");
}

TEST_F(FolderNamesTest, MovedProfileHasThePathsOfItsOldPlace) {
  WriteCache(R"({"/home/old/.thunderbird/q.default/Mail/Local Folders/a.msf":{"folderName":"A"},)"
             R"("C:\\Users\\old\\Thunderbird\\Profiles\\q\\Mail\\Local Folders\\b.msf":{"folderName":"B"},)"
             R"("/home/old/.thunderbird/q.default/Mail/Other/c.msf":{"folderName":"C"},)"
             R"("/home/old/q/Mail/Local Folders/d.msf":{"folderName":"old"},")" +
             In("d.msf") + R"(":{"folderName":"own"}})");
  EXPECT_EQ(Shown("a"), "A");
  EXPECT_EQ(Shown("b"), "B");
  EXPECT_EQ(Shown("c"), "c");
  EXPECT_EQ(Shown("d"), "own");
  // Outside the profile only the whole path tells.
  EXPECT_EQ(names_.Shown(folder_.Path("elsewhere\\Mail\\Local Folders\\"), "a"), "a");
}

TEST_F(FolderNamesTest, NameThatCanNotBeShownLeavesThatOfTheFile) {
  EXPECT_EQ(ShownOf(R"({"folderName":"a b"})"), "a b");
  for (const char* member :
       {R"({"folderName":""})", R"({"folderName":"a\nb"})", R"({"folderName":"a\u0000b"})",
        R"({"folderName":1})", R"({"folderName":null})", R"({"name":"x"})", "{}", "[]", "\"x\"", "null"}) {
    EXPECT_EQ(ShownOf(member), "f") << member;
  }
}

TEST_F(FolderNamesTest, SummaryWithoutAPathNamesNoFolder) {
  for (const std::string key : {".msf", "C.msf", "C:.msf", "f.msf"}) {
    WriteCache("{\"" + key + "\":{\"folderName\":\"wrong\"}}");
    EXPECT_EQ(ShownAnew("f"), "f") << key;
  }
}

TEST_F(FolderNamesTest, LastOfSeveralCounts) {
  WriteCache("{\"" + In("f.msf") + "\":{\"folderName\":\"A\",\"folderName\":\"B\"},\"" + In("g.msf") +
             "\":{\"folderName\":\"C\"},\"" + In("g.msf") + "\":{\"folderName\":\"D\"}}");
  EXPECT_EQ(Shown("f"), "B");
  EXPECT_EQ(Shown("g"), "D");
}

TEST_F(FolderNamesTest, OfACacheThatIsCutOffWhatIsWholeCounts) {
  const std::string first = "{\"" + In("f.msf") + "\":{\"folderName\":\"F\"},";
  WriteCache(first + "\"" + In("g.msf") + "\":{\"folderName\":\"G");
  EXPECT_EQ(Shown("f"), "F");
  EXPECT_EQ(Shown("g"), "g");
}

TEST_F(FolderNamesTest, CacheThatIsNoneOrCanNotBeReadTellsNothing) {
  EXPECT_EQ(Shown("f"), "f");
  for (const std::string& bytes : {std::string(), std::string("x"), std::string("[]"), std::string(1000, '{'),
                                   std::string(1000, '\0')}) {
    WriteCache(bytes);
    EXPECT_EQ(ShownAnew("f"), "f");
  }
  WriteCache("{\"" + In("f.msf") + "\":{\"folderName\":\"F\"}}");
  const DiskFault fault(
      {.calls = DiskCall::Read, .trouble = DiskTrouble::FromHere, .pathEnd = "folderCache.json"});
  EXPECT_EQ(ShownAnew("f"), "f");
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(FolderNamesTest, ChangedCacheIsReadAgainAndAnotherIsNot) {
  WriteCache("{\"" + In("f.msf") + "\":{\"folderName\":\"F\"}}");
  EXPECT_EQ(Shown("f"), "F");
  {
    const DiskCallCount reads(DiskCall::Read, "folderCache.json");
    names_.TurnTo(folder_.Path("p"));
    EXPECT_EQ(Shown("f"), "F");
    EXPECT_EQ(reads.Count(), 0);
  }
  WriteCache("{\"" + In("f.msf") + "\":{\"folderName\":\"Changed\"}}");
  EXPECT_EQ(Shown("f"), "F");
  names_.TurnTo(folder_.Path("p"));
  EXPECT_EQ(Shown("f"), "Changed");
  names_.TurnTo("");
  EXPECT_EQ(Shown("f"), "f");
}

TEST_F(FolderNamesTest, CacheOfAHundredMegabytesIsReadAsFarAsItMay) {
  std::string json = "{\"" + In("f.msf") + "\":{\"folderName\":\"F\"}";
  json.reserve(101 << 20);
  // Many folders of one name in as many places.
  for (std::size_t i = 0; json.size() < (60 << 20); ++i)
    json += ",\"/old/" + std::to_string(i) + "/Mail/f.msf\":{\"folderName\":\"x\"}";
  json += ",\"" + In("g.msf") + "\":{\"x\":\"" + std::string(40 << 20, 'x') + "\",\"folderName\":\"G\"}}";
  WriteCache(json);
  EXPECT_EQ(Shown("f"), "F");
  EXPECT_EQ(Shown("g"), "g");
}

// --- Back to the disk

TEST_F(FolderNamesTest, MailboxIsFoundByEitherName) {
  WriteCache("{\"" + In("hash.msf") + "\":{\"folderName\":\"Shown\"},\"" + In("other.msf") +
             "\":{\"folderName\":\"taken\"}}");
  for (const char* name : {"hash.msf", "hash", "other.msf", "taken", "taken.msf"})
    folder_.Write(std::string("p/Mail/Local Folders/") + name, "");
  EXPECT_EQ(names_.OnDisk(Account(), "Shown"), "hash");
  EXPECT_EQ(names_.OnDisk(Account(), "hash"), "hash");
  EXPECT_EQ(names_.OnDisk(Account(), "taken"), "taken");
  EXPECT_EQ(names_.OnDisk(Account(), "missing"), "missing");
  EXPECT_EQ(names_.OnDisk(folder_.Path("no\\folder\\"), "Shown"), "Shown");
}

TEST_F(FolderNamesTest, FolderOfSubfoldersCountsAsTheMailbox) {
  WriteCache("{\"" + In("x.msf") + "\":{\"folderName\":\"Archive\"}}");
  folder_.Write("p/Mail/Local Folders/x.msf", "");
  folder_.MakeFolder("p/Mail/Local Folders/Archive.sbd");
  EXPECT_EQ(names_.OnDisk(Account(), "Archive"), "Archive");
}

}  // namespace
}  // namespace vorlent
