#include "Connectors/Mozilla/LocationRecord.h"

#include <gtest/gtest.h>

#include <string>

#include "Common/StdModul.h"

namespace vorlent {
namespace {

constexpr std::size_t kGuidLength = 38;

// A record without its ID, which is another each time.
std::string BehindID(const std::string& record) {
  EXPECT_TRUE(record.starts_with("ID={"));
  EXPECT_EQ(record[3 + kGuidLength - 1], '}');
  return record.substr(3 + kGuidLength);
}

TEST(LocationRecordTest, FieldsStandInTheirOrder) {
  EXPECT_EQ(BehindID(LocationRecord("Profil 'p'\nthunderbird://p/*\nC:\\a\\", 1)),
            "|Type=location|Text=Profil 'p'|DataLocation=thunderbird://p/*|DataCheck=|DataPath=C:\\\\a\\\\");
}

TEST(LocationRecordTest, EveryRecordHasANewID) {
  const std::string entry = "Inbox\nx://Inbox/\nC:\\Inbox";
  EXPECT_NE(LocationRecord(entry, 3), LocationRecord(entry, 3));
}

TEST(LocationRecordTest, SubfolderCheckIsForFoldersWithSubfolders) {
  struct Row {
    int level;
    std::string location;
    std::string check;
  };
  for (const Row& row :
       {Row{1, "t://p/*", ""}, Row{2, "t://p/a/*", ""}, Row{3, "t://p/a/i/*", "inkl. Unterverzeichnis;;-;1"},
        Row{3, "t://p/a/i/", ""}, Row{4, "t://p/a/i/k/*", "inkl. Unterverzeichnis;;-;1"}, Row{9, "", ""},
        Row{3, "*x", ""}}) {
    SCOPED_TRACE(row.location);
    const std::string record = LocationRecord("name\n" + row.location + "\npath", row.level);
    EXPECT_EQ(GetParam(record, "DataCheck"), row.check);
    EXPECT_EQ(GetParam(record, "DataLocation"), row.location);
  }
}

TEST(LocationRecordTest, ValuesComeBackThroughTheRecord) {
  const std::string record = LocationRecord("a|b\\c\nt://a|b/\nC:\\x|C:\\y", 3);
  EXPECT_EQ(GetParam(record, "Text"), "a|b\\c");
  EXPECT_EQ(GetParam(record, "DataLocation"), "t://a|b/");
  EXPECT_EQ(GetParam(record, "DataPath"), "C:\\x|C:\\y");
}

TEST(LocationRecordTest, CarriageReturnAtALineEndIsDropped) {
  EXPECT_EQ(BehindID(LocationRecord("a\r\nb\r\nc\r", 1)),
            "|Type=location|Text=a|DataLocation=b|DataCheck=|DataPath=c");
}

TEST(LocationRecordTest, MissingLinesAreEmpty) {
  EXPECT_EQ(BehindID(LocationRecord("only", 3)),
            "|Type=location|Text=only|DataLocation=|DataCheck=|DataPath=");
  EXPECT_EQ(BehindID(LocationRecord("", 3)), "|Type=location|Text=|DataLocation=|DataCheck=|DataPath=");
}

TEST(LocationRecordTest, EntrySplitsIntoItsThreeLines) {
  const DiscoveryEntry entry = SplitDiscoveryEntry("text\nlocation\npath\nmore");
  EXPECT_EQ(entry.text, "text");
  EXPECT_EQ(entry.location, "location");
  EXPECT_EQ(entry.path, "path");
  EXPECT_EQ(JoinDiscoveryEntry(entry), "text\nlocation\npath");
}

TEST(LocationRecordTest, NameOfAnEntryStandsBeforeTheFirstSlashOfItsAddress) {
  EXPECT_EQ(NameOfDiscoveryEntry("Profil 'p'\np/*\nC:\\x/y"), "p");
  EXPECT_EQ(NameOfDiscoveryEntry("Lokale Laufwerke\n./*\nC:\\"), ".");
  EXPECT_EQ(NameOfDiscoveryEntry("Profil ''\n/*\n"), "");
}

}  // namespace
}  // namespace vorlent
