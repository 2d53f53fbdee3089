#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SunbirdTest.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kSunbirdFolder = "Mozilla\\Sunbird";

class SunbirdDiscoveryTest : public SunbirdTest {
 protected:
  // A profile with calendars whose ids count from 2, each with one task "<profile>-<calendar>".
  void WriteCalendars(std::string_view profile, const std::vector<std::string>& names,
                      std::string_view app = kSunbirdFolder) const {
    StorageFile storage = Storage(profile, app);
    storage.Run(kCalendarTables);
    int id = 2;
    for (const std::string& name : names) {
      const std::string number = std::to_string(id++);
      storage.Run("INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (" + number +
                  ", 'name', '" + name + "'); INSERT INTO cal_todos VALUES (" + number + ", '" +
                  std::string(profile) + "-" + name + "', 0, 0, '', 0)");
    }
  }

  std::string IDs() const {
    std::string ids;
    for (std::int32_t i = 1; i <= connector_->Count(); ++i)
      ids += Stored(i).IdText + " ";
    return ids;
  }

  // The fields of the location items, one line each: text, address, check, path.
  std::string Places() const {
    std::string places;
    for (std::int32_t i = 1; i <= connector_->Count(); ++i) {
      const test::RecordingItem& item = Stored(i);
      EXPECT_EQ(item.TypeText, "location");
      places += item.DisplayText + " " + item.DataText("Location") + " [" + item.DataText("Check") + "] " +
                item.DataText("Path") + "\n";
    }
    return places;
  }

  std::string Tree() const { return host_.Trees.empty() ? std::string() : host_.Trees.front()->Dump(); }

  Lines Boxes() const { return platform_->CallsOf("ShowMessage"); }
};

// --- InitLocation

TEST_F(SunbirdDiscoveryTest, ParameterItemSelectsEventsAndTasks) {
  EXPECT_TRUE(connector_->InitLocation("sunbird://*"));
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("Location(\"\").SetParameterItem(item1)", "item1.SetLocation(connector)",
                          "item1.SetReady(false)", "item1.SetID(\"parameter\")",
                          "item1.SetType(\"parameter\")", "item1.SetText(\"Parameter\")",
                          "item1.SetData(\"Condition\",\"$type=termin|$type=task\",false)",
                          "item1.SetData(\"Flags\",\"\",false)", "item1.SetReady(true)",
                          "item1.SetConnected(true)", "tree.Clear"));
}

TEST_F(SunbirdDiscoveryTest, InitLocationReadsTheAddressGiven) {
  WriteProfiles(kSunbirdFolder, {"p", "q"});
  WriteCalendars("p", {"Home", "Work"});
  WriteCalendars("q", {"Club"});
  location_->Address = "sunbird://q";
  EXPECT_TRUE(connector_->InitLocation("sunbird://p/Work"));
  EXPECT_EQ(IDs(), "p-Work ");
  EXPECT_EQ(Tree(), "Calendar 'Work' [Calendar=Work]\n");
}

TEST_F(SunbirdDiscoveryTest, InitLocationEmptiesTheTree) {
  connector_->Tree()->AddChild("old", "old");
  EXPECT_TRUE(connector_->InitLocation("other://"));
  EXPECT_EQ(Tree(), "");
}

TEST_F(SunbirdDiscoveryTest, InitLocationPassesOverWhatIsNotItsOwn) {
  WriteHome();
  for (const char* address : {"thunderbird://p", "firefox://p", "", "x", "Sunbird://p", "sunbird://*",
                              "sunbird://p/*", "lightning://p/*", "sunbird://missing*"}) {
    EXPECT_TRUE(connector_->InitLocation(address)) << address;
  }
  EXPECT_EQ(databasesMade_, 0);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Global.Report"}), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, InitLocationTellsWhetherTheReadingWentWell) {
  WriteProfiles(kSunbirdFolder, {"p", "q"});
  WriteCalendars("p", {"Home"});
  EXPECT_TRUE(connector_->InitLocation("sunbird://"));
  EXPECT_TRUE(connector_->InitLocation("sunbird://p"));
  EXPECT_TRUE(connector_->InitLocation("sunbird://p/"));
  EXPECT_TRUE(connector_->InitLocation("sunbird://p/Home"));
  EXPECT_TRUE(connector_->InitLocation("sunbird://p/Home/further"));
  EXPECT_FALSE(connector_->InitLocation("sunbird://p/Work"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_FALSE(connector_->InitLocation("sunbird://x"));
  EXPECT_THAT(Boxes(),
              ElementsAre("ShowMessage(\"Profil 'x' nicht gefunden!\",\"error\",Critical,Ok) -> Ok"));
}

TEST_F(SunbirdDiscoveryTest, InitLocationTakesALightningAddressForAllProfiles) {
  WriteProfiles("Thunderbird", {"p", "q"});
  WriteCalendars("p", {"Home", "Work"}, "Thunderbird");
  WriteCalendars("q", {"Club"}, "Thunderbird");
  EXPECT_TRUE(connector_->InitLocation("lightning://p/Home"));
  EXPECT_EQ(IDs(), "p-Home p-Work q-Club ");
  EXPECT_EQ(Read("lightning://p/Home"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Home ");
}

// --- Reading

TEST_F(SunbirdDiscoveryTest, OpenLocationReadsTheAddressOfTheLocation) {
  WriteProfiles(kSunbirdFolder, {"p"});
  WriteCalendars("p", {"Home", "Work"});
  location_->Address = "sunbird://p/Home";
  EXPECT_TRUE(connector_->InitLocation("sunbird://p"));
  EXPECT_EQ(connector_->OpenLocation("sunbird://p/Work"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Home ");
  EXPECT_EQ(Tree(), "Calendar 'Home' [Calendar=Home]\n");
  connector_->Disconnect();
  EXPECT_EQ(IDs(), "p-Home ");
}

TEST_F(SunbirdDiscoveryTest, AddressWithoutProfileReadsAllCalendarsOfAllProfiles) {
  WriteProfiles(kSunbirdFolder, {"p", "q", "empty"});
  WriteCalendars("p", {"Home", "Work"});
  WriteCalendars("q", {"Club"});
  EXPECT_EQ(Read("sunbird://"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Home p-Work q-Club ");
  EXPECT_EQ(
      Tree(),
      "Calendar 'Home' [Calendar=Home]\nCalendar 'Work' [Calendar=Work]\nCalendar 'Club' [Calendar=Club]\n");
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, DisksAreNoProfileOfCalendarsToday) {
  WriteProfiles(kSunbirdFolder, {"p"});
  WriteCalendars("p", {"Home"});
  const ScopedRules today({.disksProfile = DisksProfile::OfMail});
  EXPECT_EQ(Read("sunbird://"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Home ");
  EXPECT_EQ(Read("sunbird://*"), LocationState::Read);
  EXPECT_EQ(Places(), "Profil 'p' sunbird://p/* [] \n");
  EXPECT_EQ(Read("sunbird://."), LocationState::Unreadable);
  EXPECT_THAT(Boxes(),
              ElementsAre("ShowMessage(\"Profil '.' nicht gefunden!\",\"error\",Critical,Ok) -> Ok"));
}

TEST_F(SunbirdDiscoveryTest, SchemeChoosesTheApplication) {
  WriteProfiles(kSunbirdFolder, {"p"});
  WriteCalendars("p", {"Sun"});
  WriteProfiles("Thunderbird", {"p"});
  WriteCalendars("p", {"Light"}, "Thunderbird");
  EXPECT_EQ(Read("sunbird://p"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Sun ");
  EXPECT_EQ(Read("lightning://p"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Light ");
  EXPECT_EQ(Read("lightning://"), LocationState::Read);
  EXPECT_EQ(IDs(), "p-Light ");
}

TEST_F(SunbirdDiscoveryTest, ForeignSchemeIsAnInvalidLocation) {
  for (const char* address : {"thunderbird://p", "", "sunbird:/p", "SUNBIRD://p", "lightning:p"}) {
    connector_->NewItem();
    host_.Log.Clear();
    EXPECT_EQ(Read(address), LocationState::Unreadable) << address;
    EXPECT_THAT(HostCalls(), ElementsAre("Global.Report(27,\"ung\xFCltige Location!\",nothing)")) << address;
    EXPECT_EQ(connector_->Count(), 0);
  }
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, MissingProfileIsToldByBoxAndReport) {
  WriteProfiles(kSunbirdFolder, {"p"});
  EXPECT_EQ(Read("sunbird://P/Home"), LocationState::Unreadable);
  EXPECT_THAT(Boxes(),
              ElementsAre("ShowMessage(\"Profil 'P' nicht gefunden!\",\"error\",Critical,Ok) -> Ok"));
  EXPECT_THAT(HostCalls(), ElementsAre("Global.Report(27,\"Profil 'P' nicht gefunden!\",nothing)"));
}

TEST_F(SunbirdDiscoveryTest, CalendarWithoutARowIsUnreadableWithoutAWord) {
  WriteHome();
  EXPECT_EQ(Read("sunbird://p/Work"), LocationState::Unreadable);
  EXPECT_EQ(Read("sunbird://p/home"), LocationState::Unreadable);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}), IsEmpty());
  EXPECT_THAT(HostCalls(), CalendarsListed(Connection()) + CalendarsListed(Connection()));
  EXPECT_EQ(Tree(), "Calendar 'home' [Calendar=home]\n");
}

TEST_F(SunbirdDiscoveryTest, PathBehindTheCalendarIsNotLookedAt) {
  WriteHome();
  EXPECT_EQ(Read("sunbird://p/Home/-"), LocationState::Read);
  EXPECT_EQ(Read("sunbird://p/Home/x/y"), LocationState::Read);
  EXPECT_EQ(Tree(), "Calendar 'Home' [Calendar=Home]\n");
}

TEST_F(SunbirdDiscoveryTest, MissingDatabaseHasNoCalendars) {
  WriteProfiles(kSunbirdFolder, {"p"});
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Unreadable);
  EXPECT_EQ(Read("sunbird://p"), LocationState::Read);
  EXPECT_EQ(Read("sunbird://"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_THAT(HostCalls(), IsEmpty());
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_FALSE(folder_.Exists(ProfileFolder(kSunbirdFolder, "p") + "\\storage.sdb"));
}

TEST_F(SunbirdDiscoveryTest, RefusedConnectionCountsAsNoCalendars) {
  WriteHome();
  refusedFrom_ = 1;
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Unreadable);
  EXPECT_THAT(HostCalls(), NotConnected(Connection()));
  host_.Log.Clear();
  EXPECT_EQ(Read("sunbird://p"), LocationState::Read);
  EXPECT_THAT(HostCalls(), NotConnected(Connection()));
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, CalendarNamedOverTwoLinesStopsTheReading) {
  WriteProfiles(kSunbirdFolder, {"p", "q"});
  WriteCalendars("p", {"Home", "Two\nLines", "Work"});
  WriteCalendars("q", {"Club"});
  EXPECT_EQ(Read("sunbird://"), LocationState::Unreadable);
  EXPECT_EQ(IDs(), "p-Home ");
  EXPECT_EQ(Tree(), "Calendar 'Home' [Calendar=Home]\nCalendar 'Two' [Calendar=Two]\n");
  EXPECT_THAT(Boxes(), IsEmpty());
}

// --- Listing

TEST_F(SunbirdDiscoveryTest, TopLevelListsTheProfilesAndTheDisks) {
  WriteProfiles(kSunbirdFolder, {"p", "q"});
  EXPECT_EQ(Read("sunbird://*"), LocationState::Read);
  EXPECT_EQ(Places(),
            "Profil 'p' sunbird://p/* [] \n"
            "Profil 'q' sunbird://q/* [] \n"
            "Lokale Laufwerke sunbird://./* [] C:\\\n");
  EXPECT_EQ(databasesMade_, 0);
}

TEST_F(SunbirdDiscoveryTest, ProfileLevelListsTheCalendars) {
  WriteProfiles("Thunderbird", {"p"});
  WriteCalendars("p", {"Home", "Ho|me"}, "Thunderbird");
  EXPECT_EQ(Read("lightning://p/*"), LocationState::Read);
  EXPECT_EQ(Places(),
            "Home lightning://p/Home/ [] 2\n"
            "Ho|me lightning://p/Ho|me/ [] 3\n");
  EXPECT_EQ(Stored(2).Record,
            "ID=" + Stored(2).IdText +
                "|Type=location|Text=Ho\\|me|DataLocation=lightning://p/Ho\\|me/|DataCheck=|"
                "DataPath=3");
  EXPECT_THAT(HostCalls(), testing::Contains(CalendarsListed(Connection("p", "Thunderbird"))[3]));
  EXPECT_EQ(Tree(), "");
}

TEST_F(SunbirdDiscoveryTest, BelowACalendarNothingIsListed) {
  WriteHome();
  // Two calendars of one name: the first resolves it.
  Storage().Run("INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (3, 'name', 'Home')");
  EXPECT_EQ(Read("sunbird://p/Home/*"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, PartThatDoesNotResolveIsToldByBoxAndReport) {
  WriteHome();
  const struct {
    std::string address;
    std::string text;
  } cases[] = {
      {"sunbird://x/*", "sunbird://x nicht gefunden!"},
      {"sunbird://p/x/*", "sunbird://p/x nicht gefunden!"},
      {"sunbird://p/Home/x/*", "sunbird://p/Home/x nicht gefunden!"},
      {"lightning://p/*", "lightning://p nicht gefunden!"},
      {"sunbird:///*", "sunbird:// nicht gefunden!"},
  };
  for (const auto& c : cases) {
    platform_->calls.clear();
    host_.Log.Clear();
    EXPECT_EQ(Read(c.address), LocationState::Unreadable) << c.address;
    EXPECT_THAT(Boxes(), ElementsAre("ShowMessage(\"" + c.text + "\",\"error\",Critical,Ok) -> Ok"));
    EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
                ElementsAre("Global.Report(27,\"" + c.text + "\",nothing)"));
  }
}

TEST_F(SunbirdDiscoveryTest, UnreachableDatabaseResolvesNoCalendar) {
  WriteHome();
  refusedFrom_ = 1;
  EXPECT_EQ(Read("sunbird://p/Home/*"), LocationState::Unreadable);
  EXPECT_THAT(HostCalls(), NotConnected(Connection()) +
                               Lines{"Global.Report(27,\"sunbird://p/Home nicht gefunden!\",nothing)"});
}

TEST_F(SunbirdDiscoveryTest, ListedItemsGetNewIDsOnEveryReading) {
  WriteHome();
  EXPECT_EQ(Read("sunbird://p/*"), LocationState::Read);
  const std::string before = Stored(1).IdText;
  EXPECT_EQ(before.size(), 38u);
  EXPECT_EQ(Read("sunbird://p/*"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 1);
  EXPECT_NE(Stored(1).IdText, before);
}

// --- GetCalendars

TEST_F(SunbirdDiscoveryTest, CalendarsAreTheRowsOfTheName) {
  WriteHome();
  Storage().Run(
      "INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'color', '#ff0000'), "
      "(7, 'name', 'Work'), (8, 'NAME', 'No'), (9, 'name', 'Home')");
  const std::string folder = folder_.Path(ProfileFolder(kSunbirdFolder, "p"));
  const auto list = [&](std::string_view fld, const std::string& path) {
    Lines calendars;
    for (const std::string& entry : connector_->GetCalendars("pre/", fld, path))
      calendars.push_back(entry);
    return calendars;
  };
  EXPECT_THAT(list("*", folder),
              ElementsAre("Home\npre/Home/\n2", "Work\npre/Work/\n7", "Home\npre/Home/\n9"));
  EXPECT_THAT(list("*", folder + "\\"),
              ElementsAre("Home\npre/Home/\n2", "Work\npre/Work/\n7", "Home\npre/Home/\n9"));
  EXPECT_THAT(list("Work", folder), ElementsAre("7"));
  EXPECT_THAT(list("Home", folder), ElementsAre("2"));
  EXPECT_THAT(list("work", folder), IsEmpty());
  EXPECT_THAT(list("", folder), IsEmpty());
  EXPECT_THAT(list("*", folder_.Path("missing")), IsEmpty());
}

TEST_F(SunbirdDiscoveryTest, ListOfCalendarsIsOneConnection) {
  WriteHome();
  connector_->GetCalendars("", "Home", folder_.Path(ProfileFolder(kSunbirdFolder, "p")));
  EXPECT_THAT(HostCalls(), CalendarsListed(Connection()));
}

TEST_F(SunbirdDiscoveryTest, DatabaseWithoutTheTableRaises) {
  WriteProfiles(kSunbirdFolder, {"p"});
  Storage().Run("CREATE TABLE other (a)");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p"); }), 1);
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/*"); }), 1);
  EXPECT_EQ(SwallowedNumber([&] { connector_->InitLocation("sunbird://p"); }), 1);
}

TEST_F(SunbirdDiscoveryTest, FileThatIsNoDatabaseRaises) {
  WriteProfiles(kSunbirdFolder, {"p"});
  folder_.Write(ProfileFolder(kSunbirdFolder, "p") + "\\storage.sdb", std::string(2000, 'x'));
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p"); }), 26);
  EXPECT_THAT(HostCalls(), Connected(Connection()) +
                               Queried("SELECT calendar, value FROM cal_calendars_prefs WHERE name='name'"));
}

// --- Reload

TEST_F(SunbirdDiscoveryTest, ReloadReadsBesideTheTopics) {
  WriteHome();
  location_->Address = "sunbird://p/Home";
  host_.AddTopics();
  connector_->Reload();
  const Lines calls = host_.Log.Only({"Topics.", "tree.Clear", "Database.Open"});
  EXPECT_THAT(calls, ElementsAre("Topics.SetNotify(false)", "Topics.ClearLocation(connector)", "tree.Clear",
                                 "Database.Open(\"ODBC\",\"" + Connection() + "\")",
                                 "Database.Open(\"ODBC\",\"" + Connection() + "\")",
                                 "Topics.AddLocation(connector)", "Topics.SetNotify(true)"));
}

TEST_F(SunbirdDiscoveryTest, ReloadWithoutTopicsReads) {
  WriteProfiles(kSunbirdFolder, {"p"});
  WriteCalendars("p", {"Home"});
  location_->Address = "sunbird://p";
  connector_->Reload();
  EXPECT_EQ(IDs(), "p-Home ");
}

}  // namespace
}  // namespace vorlent
