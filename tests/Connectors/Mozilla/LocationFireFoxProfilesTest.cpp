// Addresses, profiles and the connection to a profile's database.

#include <chrono>

#include "Connectors/Mozilla/FireFoxFixture.h"
#include "Platform/CodePage.h"
#include "Support/ForeignLock.h"
#include "Support/ForeignProgram.h"
#include "Support/ScopedRules.h"

namespace vorlent::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LocationFireFoxProfilesTest : public FireFoxTest {
 protected:
  static std::string ProfileRecord(const std::string& name) {
    return "ID={}|Type=location|Text=Profil '" + name + "'|DataLocation=firefox://" + name + "/*";
  }

  // A database of one bookmark, called as its profile.
  void AddPlaces(const std::string& profile) {
    PlacesFile places(PlacesPath(profile));
    const std::int64_t menu = places.AddFolder(places.AddFolder(0, ""), "Menu");
    places.AddBookmark(menu, profile, "http://" + profile + "/");
  }
};

// --- The frame

TEST_F(LocationFireFoxProfilesTest, InitLocationRegistersTheParameterItemAndLooksAtNothingElse) {
  const auto connector = Connect("firefox://x/");
  EXPECT_TRUE(connector->InitLocation("nonsense"));
  EXPECT_THAT(
      host_.Log.Lines(),
      ElementsAre("Location(\"firefox://x/\").SetParameterItem(item1)", "item1.SetLocation(connector)",
                  "item1.SetReady(false)", "item1.SetID(\"parameter\")", "item1.SetType(\"parameter\")",
                  "item1.SetText(\"Parameter\")", "item1.SetData(\"Condition\",\"$type=url\",false)",
                  "item1.SetData(\"Flags\",\"KeywordTree,Log\",false)", "item1.SetReady(true)",
                  "item1.SetConnected(true)"));
  EXPECT_TRUE(host_.Trees.empty());
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(LocationFireFoxProfilesTest, AddressIsThatOfTheLocation) {
  WriteProfiles({"x", "y"});
  AddPlaces("x");
  AddPlaces("y");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(connector->OpenLocation("firefox://y/"), LocationState::Read);
  EXPECT_THAT(Texts(*connector), ElementsAre("x"));
}

TEST_F(LocationFireFoxProfilesTest, DisconnectDoesNothing) {
  WriteProfiles({"x"});
  AddPlaces("x");
  const auto connector = Open("firefox://x/");
  host_.Log.Clear();
  connector->Disconnect();
  EXPECT_THAT(host_.Log.Lines(), IsEmpty());
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(LocationFireFoxProfilesTest, BookmarksHaveNoFiles) {
  WriteProfiles({"x"});
  AddPlaces("x");
  const auto connector = Open("firefox://x/");
  EXPECT_EQ(connector->GetFile(connector->Item(1), "Url"), "");
  EXPECT_EQ(connector->GetFile(nullptr, ""), "");
}

// --- Addresses of other kinds

class ForeignAddress : public FireFoxTest, public testing::WithParamInterface<const char*> {};

TEST_P(ForeignAddress, IsReportedAndEmptiesTheLocation) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Open("firefox://x/");
  ASSERT_EQ(connector->Count(), 1);
  location_->Address = GetParam();
  host_.Log.Clear();

  EXPECT_EQ(connector->OpenLocation(""), LocationState::Unreadable);
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("tree.Clear",
                          "Global.Report(27,\"" + std::string("ungültige Location!"_cp) + "\",nothing)"));
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_EQ(TreeText(), "");
  EXPECT_THAT(Boxes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, ForeignAddress,
                         testing::Values("", "firefox:/", "firefox:/x/", "Firefox://x/", "thunderbird://x/",
                                         " firefox://x/"));

// --- profiles.ini

TEST_F(LocationFireFoxProfilesTest, StarListsTheProfiles) {
  WriteProfiles({"x", "y", "z"});
  const auto connector = Open("firefox://*");
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_EQ(connector->Count(), 3);
  EXPECT_THAT(Records(), ElementsAre(ProfileRecord("x"), ProfileRecord("y"), ProfileRecord("z")));
  EXPECT_EQ(connector->Item(2)->DataText("Location"), "firefox://y/*");
}

TEST_F(LocationFireFoxProfilesTest, ListedProfileIsPastedUnconnected) {
  WriteProfiles({"x"});
  Open("firefox://*");
  EXPECT_THAT(
      WithoutGuids(host_.Log.Lines()),
      ElementsAre("tree.Clear", "item1.SetLocation(connector)", "Location(\"firefox://*\").SetItemCounter(1)",
                  "Location(\"firefox://*\").SetLastItemTimer(52205)",
                  "item1.ImportRecord(\"" + ProfileRecord("x") + "\")", "item1.SetConnected(true)"));
}

TEST_F(LocationFireFoxProfilesTest, NamesAreEscapedInTheRecord) {
  WriteProfiles({"a|b\\c"});
  const auto connector = Open("firefox://*");
  EXPECT_THAT(Records(), ElementsAre("ID={}|Type=location|Text=Profil 'a\\|b\\\\c'|DataLocation="
                                     "firefox://a\\|b\\\\c/*"));
  EXPECT_EQ(connector->Item(1)->DataText("Location"), "firefox://a|b\\c/*");
}

TEST_F(LocationFireFoxProfilesTest, FirstSectionIsNeverAProfile) {
  WriteProfilesIni(
      "[Profile0]\r\nName=first\r\nPath=a\r\n[General]\r\nStartWithLastProfile=1\r\n"
      "[Profile1]\r\nName=second\r\nPath=b\r\n");
  Open("firefox://*");
  // A general section further down counts as a profile without a name.
  EXPECT_THAT(Records(), ElementsAre("ID={}|Type=location|Text=Profil ''|DataLocation=firefox:///*",
                                     ProfileRecord("second")));
  Open("firefox://first/");
  EXPECT_EQ(state_, LocationState::Unreadable);
}

struct NoProfiles {
  const char* name;
  const char* ini;  // null for no file
};

class WithoutProfiles : public FireFoxTest, public testing::WithParamInterface<NoProfiles> {
 protected:
  WithoutProfiles() {
    if (GetParam().ini != nullptr) WriteProfilesIni(GetParam().ini);
  }
};

TEST_P(WithoutProfiles, ListIsEmptyWithoutAMessage) {
  EXPECT_EQ(Open("firefox://*")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_P(WithoutProfiles, NamedProfileIsMissing) {
  EXPECT_EQ(Open("firefox://x/")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_THAT(Boxes(), ElementsAre(CriticalBox("Profil 'x' nicht gefunden!", "error")));
  EXPECT_THAT(Reports(), ElementsAre("Global.Report(27,\"Profil 'x' nicht gefunden!\",nothing)"));
}

TEST_P(WithoutProfiles, FirstProfileIsNothing) {
  EXPECT_EQ(Open("firefox://")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(host_.Log.Lines(), ElementsAre("tree.Clear"));
  EXPECT_THAT(Boxes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, WithoutProfiles,
                         testing::Values(NoProfiles{"NoFile", nullptr}, NoProfiles{"EmptyFile", ""},
                                         NoProfiles{"GeneralSectionOnly",
                                                    "[General]\r\nStartWithLastProfile=1\r\n"},
                                         NoProfiles{"OneSectionOnly", "[Profile0]\r\nName=x\r\nPath=a\r\n"}),
                         [](const auto& each) { return each.param.name; });

TEST_F(LocationFireFoxProfilesTest, FirstOfTwoProfilesOfOneNameWins) {
  WriteProfilesIni(
      "[General]\r\n[Profile0]\r\nName=x\r\nPath=Profiles/x.default\r\n"
      "[Profile1]\r\nName=x\r\nPath=Profiles/y.default\r\n");
  folder_.MakeFolder(ProfileFolder("x"));
  folder_.MakeFolder(ProfileFolder("y"));
  AddPlaces("x");
  AddPlaces("y");
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("x"));
  EXPECT_EQ(Open("firefox://*")->Count(), 2);
}

TEST_F(LocationFireFoxProfilesTest, ProfileNamesCompareExactly) {
  WriteProfiles({"Default"});
  Open("firefox://default/");
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_THAT(Boxes(), ElementsAre(CriticalBox("Profil 'default' nicht gefunden!", "error")));
}

TEST_F(LocationFireFoxProfilesTest, MissingProfileIsToldBehindTheEmptiedTree) {
  WriteProfiles({"x"});
  std::vector<std::string> order;
  host_.Log.OnCall = [&](const std::string& line) {
    order.push_back(line);
    for (const std::string& box : Boxes())
      order.push_back("after " + box);
  };
  Open("firefox://y/");
  EXPECT_THAT(order, ElementsAre("tree.Clear", "Global.Report(27,\"Profil 'y' nicht gefunden!\",nothing)",
                                 "after " + CriticalBox("Profil 'y' nicht gefunden!", "error")));
}

TEST_F(LocationFireFoxProfilesTest, AddressWithoutAProfileReadsTheOneListedFirst) {
  WriteProfiles({"x", "y"});
  AddPlaces("x");
  AddPlaces("y");
  EXPECT_THAT(Texts(*Open("firefox://")), ElementsAre("x"));
  // What follows the missing name is not looked at.
  EXPECT_THAT(Texts(*Open("firefox:///Nope/")), ElementsAre("x"));
  EXPECT_THAT(Texts(*Open("firefox:///-")), ElementsAre("x"));
}

TEST_F(LocationFireFoxProfilesTest, FirstProfileIsReadUpToASlashInItsName) {
  WriteProfilesIni("[General]\r\n[Profile0]\r\nName=x/y\r\nPath=Profiles/x.default\r\n");
  Open("firefox://");
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_THAT(Boxes(), ElementsAre(CriticalBox("Profil 'x' nicht gefunden!", "error")));
}

TEST_F(LocationFireFoxProfilesTest, ProfileFolderMayLieAnywhere) {
  folder_.MakeFolder("elsewhere");
  WriteProfilesIni("[General]\r\n[Profile0]\r\nName=x\r\nIsRelative=0\r\nPath=" + folder_.Path("elsewhere") +
                   "\r\n");
  {
    PlacesFile places(folder_.Native("elsewhere\\places.sqlite"));
    places.AddBookmark(places.AddFolder(0, ""), "a", "http://a/");
  }
  const auto connector = Open("firefox://x/");
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
  connector->Save();
  EXPECT_TRUE(folder_.Exists("elsewhere\\bookmarks.html"));
}

TEST_F(LocationFireFoxProfilesTest, SlashesOfTheProfilePathSeparateFolders) {
  WriteProfilesIni("[General]\r\n[Profile0]\r\nName=x\r\nPath=Profiles/deep/x.default\r\n");
  folder_.MakeFolder("Mozilla\\FireFox\\Profiles\\deep\\x.default");
  {
    PlacesFile places(folder_.Native("Mozilla\\FireFox\\Profiles\\deep\\x.default\\places.sqlite"));
    places.AddBookmark(places.AddFolder(0, ""), "a", "http://a/");
  }
  const auto connector = Open("firefox://x/");
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
  connector->Save();
  EXPECT_TRUE(folder_.Exists("Mozilla\\FireFox\\Profiles\\deep\\x.default\\bookmarks.html"));
}

// --- The database

TEST_F(LocationFireFoxProfilesTest, ProfileWithoutDatabaseIsEmptyWithoutAMessage) {
  WriteProfiles({"x"});
  for (const char* address : {"firefox://x/", "firefox://x", "firefox://x/Menu/", "firefox://x/*"}) {
    SCOPED_TRACE(address);
    EXPECT_EQ(Open(address)->Count(), 0);
    EXPECT_EQ(state_, LocationState::Read);
    EXPECT_EQ(TreeText(), "");
  }
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
  EXPECT_FALSE(folder_.Exists(PlacesName()));
}

TEST_F(LocationFireFoxProfilesTest, FolderBelowAMissingDatabaseIsNotFound) {
  WriteProfiles({"x"});
  Open("firefox://x/Menu/*");
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_THAT(Boxes(), ElementsAre(CriticalBox("firefox://x/Menu nicht gefunden!", "error")));
}

struct BadDatabase {
  const char* name;
  const char* bytes;  // null for the statements
  const char* sql;
  const char* error;
};

class UnreadableDatabase : public FireFoxTest, public testing::WithParamInterface<BadDatabase> {
 protected:
  UnreadableDatabase() {
    WriteProfiles({"x"});
    if (GetParam().bytes != nullptr) {
      folder_.Write(PlacesName(), GetParam().bytes);
    } else {
      SqliteFile(PlacesPath()).Run(GetParam().sql);
    }
    content_ = FolderContent(folder_.Native(ProfileFolder()));
  }
  ~UnreadableDatabase() override { EXPECT_EQ(FolderContent(folder_.Native(ProfileFolder())), content_); }

  std::map<std::string, std::string> content_;
};

TEST_P(UnreadableDatabase, IsToldWithItsReasonAndLeavesTheLocationEmpty) {
  EXPECT_EQ(Open("firefox://x/")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox(GetParam().error)));
  EXPECT_THAT(Reports(), IsEmpty());
  EXPECT_EQ(TreeText(), "");
}

TEST_P(UnreadableDatabase, IsToldByItsFileTodayWhereNothingHasToBeClosed) {
  const ScopedRules today({.brokenItems = BrokenItems::AreNamed});
  EXPECT_EQ(Open("firefox://x/")->Count(), 0);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), ElementsAre(testing::HasSubstr("places.sqlite: " + std::string(GetParam().error))));
}

INSTANTIATE_TEST_SUITE_P(
    Of, UnreadableDatabase,
    testing::Values(
        BadDatabase{"EmptyFile", "", nullptr, "no such table: moz_bookmarks"},
        BadDatabase{"NoDatabase",
                    "<html>this is a text of more than a hundred bytes, which no library would take for "
                    "the header of a database file</html>",
                    nullptr, "file is not a database"},
        BadDatabase{"OtherTables", nullptr, "CREATE TABLE other(a)", "no such table: moz_bookmarks"},
        BadDatabase{
            "NoPlaces", nullptr,
            "CREATE TABLE moz_bookmarks(id, type, fk, parent, position, title, dateAdded, lastModified)",
            "no such table: moz_places"},
        BadDatabase{"MissingColumn", nullptr,
                    "CREATE TABLE moz_places(id, url);"
                    "CREATE TABLE moz_bookmarks(id, type, fk, parent, position, title, dateAdded)",
                    "no such column: moz_bookmarks.lastModified"}),
    [](const auto& each) { return each.param.name; });

TEST_F(LocationFireFoxProfilesTest, ListingAnUnreadableDatabaseIsToldForEachStep) {
  WriteProfiles({"x"});
  folder_.Write(PlacesName(), "");
  EXPECT_EQ(Open("firefox://x/*")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("no such table: moz_bookmarks")));
  EXPECT_THAT(Reports(), IsEmpty());

  platform_->calls.clear();
  Open("firefox://x/Menu/*");
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("no such table: moz_bookmarks"),
                                   CriticalBox("firefox://x/Menu nicht gefunden!", "error")));
}

TEST_F(LocationFireFoxProfilesTest, LockedDatabaseIsToldAtOnce) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Connect("firefox://x/");
  {
    const ForeignLock lock(PlacesPath());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  }
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("database is locked")));
  // Once the other program is gone the same connector reads.
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
}

TEST_F(LocationFireFoxProfilesTest, RunningFirefoxHoldsItsLogForItself) {
  Places().Commit();
  SqliteFile firefox(PlacesPath());
  firefox.Run("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; DELETE FROM moz_places");
  Open("firefox://x/");
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("database is locked")));
}

TEST_F(LocationFireFoxProfilesTest, RunningFirefoxIsReadAsOfAMomentThatIsTold) {
  Places().AddBookmark(1, "before", "http://a/");
  Places().Commit();
  const ForeignProgram firefox(PlacesPath());
  firefox.Run(
      "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL;"
      "UPDATE moz_bookmarks SET title='committed' WHERE type=1");
  const auto before = FolderContent(folder_.Native(ProfileFolder()));
  const ScopedRules today({.databaseInUse = DatabaseInUse::Copied});
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("committed"));
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), ElementsAre("Global.Report(1001," +
                                     Quoted(folder_.Path(PlacesName()) +
                                            ": in Gebrauch; gelesen wird der Stand vom 09.05.2010 14:30:05") +
                                     ",nothing)"));
  EXPECT_EQ(FolderContent(folder_.Native(ProfileFolder())), before);
}

TEST_F(LocationFireFoxProfilesTest, WriterWithALogIsReadUpToItsLastCommit) {
  Places().AddBookmark(1, "before", "http://a/");
  Places().Commit();
  SqliteFile writer(PlacesPath());
  writer.Run(
      "PRAGMA journal_mode=WAL; UPDATE moz_bookmarks SET title='committed' WHERE type=1;"
      "BEGIN IMMEDIATE; UPDATE moz_bookmarks SET title='open' WHERE type=1");
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("committed"));
  EXPECT_THAT(Boxes(), IsEmpty());
  writer.Run("COMMIT");
}

TEST_F(LocationFireFoxProfilesTest, ReadingLeavesTheProfileAsItIs) {
  Places().AddBookmark(1, "a", "http://a/");
  Places().Commit();
  places_.reset();
  SqliteFile(PlacesPath()).Run("PRAGMA journal_mode=WAL");
  const auto before = FolderContent(folder_.Native(ProfileFolder()));
  const auto changed = std::filesystem::last_write_time(PlacesPath());
  EXPECT_EQ(Open("firefox://x/")->Count(), 1);
  EXPECT_EQ(Open("firefox://x/*")->Count(), 0);
  EXPECT_EQ(FolderContent(folder_.Native(ProfileFolder())), before);
  EXPECT_EQ(std::filesystem::last_write_time(PlacesPath()), changed);
}

}  // namespace
}  // namespace vorlent::test
