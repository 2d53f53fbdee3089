#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Common/StdModul.h"
#include "SunbirdTest.h"
#include "Support/ErrorNumbers.h"
#include "Support/ScopedRules.h"
#include "Support/SourceTree.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

constexpr const char* kEvents =
    "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, "
    "event_start/1000000 AS start, event_end/1000000 As ende, id FROM cal_events WHERE cal_id=";
constexpr const char* kTasks =
    "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, id FROM cal_todos "
    "WHERE cal_id=";

std::string LocationOf(const std::string& id) {
  return "SELECT value FROM cal_properties WHERE item_id='" + id + "' AND key='LOCATION'";
}

class SunbirdReadingTest : public SunbirdTest {
 protected:
  // An event of the calendar with id 2, its times in seconds of 2010-05-09 in UTC if not told otherwise.
  void AddEvent(const std::string& id, const std::string& title = "x",
                const std::string& start = "1273408200", const std::string& end = "1273411800",
                const std::string& created = "1272690000", const std::string& modified = "1273471201",
                const std::string& calendar = "2") const {
    Storage().Run("INSERT INTO cal_events VALUES (" + calendar + ", '" + id + "', " + created + "*1000000, " +
                  modified + "*1000000, '" + title + "', 4, " + start + "*1000000, " + end +
                  "*1000000, 'floating', 'UTC')");
  }

  void AddTask(const std::string& id, const std::string& title = "x",
               const std::string& created = "1272690000", const std::string& modified = "1273471201",
               const std::string& calendar = "2") const {
    Storage().Run("INSERT INTO cal_todos VALUES (" + calendar + ", '" + id + "', " + created + "*1000000, " +
                  modified + "*1000000, '" + title + "', 4)");
  }

  void AddLocation(const std::string& id, const std::string& value) const {
    Storage().Run("INSERT INTO cal_properties VALUES ('" + id + "', 'LOCATION', '" + value + "')");
  }

  std::vector<std::string> IDs() const {
    std::vector<std::string> ids;
    for (std::int32_t i = 1; i <= connector_->Count(); ++i)
      ids.push_back(Stored(i).IdText);
    return ids;
  }
};

TEST_F(SunbirdReadingTest, EventBecomesATermin) {
  WriteHome();
  AddEvent("e1", "Meeting");
  AddLocation("e1", "Room 5");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Records(),
            "ID=e1|Type=termin|Text=Meeting|Date=09.05.2010 14:30|DataDateEnd=09.05.2010 15:30|"
            "DataLocation=Room 5|DataCalendar=Home|Log=20100501070000,20100510080001*1\n");
  EXPECT_EQ(Stored(1).DataText("Calendar"), "Home");
  EXPECT_TRUE(Stored(1).Connected);
}

TEST_F(SunbirdReadingTest, TextsOfEveryScriptAreRead) {
  const ScopedRules today(Rules::Today());
  WriteHome();
  AddEvent("e1", "Встреча 😀 你好");
  AddLocation("e1", "Αθήνα, مكتب");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DisplayText, "Встреча 😀 你好");
  EXPECT_EQ(Stored(1).DataText("Location"), "Αθήνα, مكتب");
}

TEST_F(SunbirdReadingTest, TaskBecomesATask) {
  WriteHome();
  AddTask("t1", "Shopping");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Records(),
            "ID=t1|Type=task|Text=Shopping|DataCalendar=Home|Log=20100501070000,20100510080001*1\n");
}

TEST_F(SunbirdReadingTest, EveryCallOfAReadingIsInItsPlace) {
  WriteHome();
  AddEvent("e1");
  AddEvent("e2");
  AddTask("t1");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(host_.Log.Only({"Global.", "Error.", "Database."}),
            CalendarsListed(Connection()) + Connected(Connection()) + Queried(kEvents + std::string("2")) +
                Queried(LocationOf("e1")) + Queried(LocationOf("e2")) + Queried(kTasks + std::string("2")) +
                Closed());
}

TEST_F(SunbirdReadingTest, AllCalendarsOfAProfileAreListedOnceMoreForEach) {
  WriteHome();
  Storage().Run("INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (1, 'name', 'Work')");
  EXPECT_EQ(Read("sunbird://p"), LocationState::Read);
  const Lines listed = CalendarsListed(Connection());
  const Lines connected = Connected(Connection());
  EXPECT_EQ(HostCalls(), listed + listed + connected + Queried(kEvents + std::string("2")) +
                             Queried(kTasks + std::string("2")) + Closed() + listed + connected +
                             Queried(kEvents + std::string("1 OR cal_id=0")) +
                             Queried(kTasks + std::string("1 OR cal_id=0")) + Closed());
}

TEST_F(SunbirdReadingTest, EventsComeBeforeTasksInTheOrderOfTheRows) {
  WriteHome();
  AddTask("t1");
  AddEvent("e2");
  AddEvent("e1");
  AddTask("t0");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e2", "e1", "t1", "t0"));
}

TEST_F(SunbirdReadingTest, EventWithoutLocationRowHasAnEmptyLocation) {
  WriteHome();
  AddEvent("e1");
  Storage().Run(
      "INSERT INTO cal_properties VALUES ('e1', 'CATEGORIES', 'Work'), ('e2', 'LOCATION', 'there')");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(GetParam(Stored(1).Record, "DataLocation"), "");
  EXPECT_NE(Stored(1).Record.find("|DataLocation=|DataCalendar="), std::string::npos);
}

TEST_F(SunbirdReadingTest, OfSeveralLocationsTheFirstCounts) {
  WriteHome();
  AddEvent("e1");
  AddLocation("e1", "old");
  AddLocation("e1", "new");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DataText("Location"), "old");
}

TEST_F(SunbirdReadingTest, TextsAreEscaped) {
  WriteHome();
  AddEvent("e1", "a|b\\c\r\nd");
  AddLocation("e1", "x|y\nz");
  AddTask("t1", "a|b\\c\r\nd=1");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_NE(Stored(1).Record.find("|Text=a\\|b\\\\c\\nd|Date="), std::string::npos);
  EXPECT_NE(Stored(1).Record.find("|DataLocation=x\\|y\\nz|DataCalendar="), std::string::npos);
  EXPECT_EQ(GetParam(Stored(1).Record, "Text"), "a|b\\c\r\nd");
  EXPECT_EQ(GetParam(Stored(1).Record, "DataLocation"), "x|y\r\nz");
  EXPECT_EQ(GetParam(Stored(2).Record, "Text"), "a|b\\c\r\nd=1");
}

TEST_F(SunbirdReadingTest, BytesOfTheTextsStayAsTheyAre) {
  WriteHome();
  AddEvent("e1", "M\xC3\xBCller \xE2\x82\xAC");
  AddTask("t1", "M\xFCller");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DisplayText, "M\xC3\xBCller \xE2\x82\xAC");
  EXPECT_EQ(Stored(2).DisplayText, "M\xFCller");
}

TEST_F(SunbirdReadingTest, MissingTitleIsEmpty) {
  WriteHome();
  Storage().Run("INSERT INTO cal_todos (cal_id, id, time_created, last_modified) VALUES (2, 't1', 0, 0)");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Records(), "ID=t1|Type=task|Text=|DataCalendar=Home|Log=19700101010000,19700101010000*1\n");
}

TEST_F(SunbirdReadingTest, NameOfTheCalendarIsNotEscaped) {
  WriteProfiles("Mozilla\\Sunbird", {"p"});
  Storage().Run(std::string(kCalendarTables) +
                "INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'name', 'A|B')");
  AddTask("t1");
  EXPECT_EQ(Read("sunbird://p/A|B"), LocationState::Read);
  EXPECT_NE(Stored(1).Record.find("|DataCalendar=A|B|Log="), std::string::npos);
}

TEST_F(SunbirdReadingTest, CalendarOneAlsoShowsTheRowsOfCalendarZero) {
  for (const char* id : {"e0", "e1", "e2"}) {
    if (std::string(id) == "e0") WriteHome("1");
    AddEvent(id, "x", "0", "0", "0", "0", std::string(1, id[1]));
    AddTask(std::string("t") + id[1], "x", "0", "0", std::string(1, id[1]));
  }
  Storage().Run(
      "INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'name', 'Two'), (0, 'name', "
      "'Zero')");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e0", "e1", "t0", "t1"));
  EXPECT_EQ(Read("sunbird://p/Two"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e2", "t2"));
  EXPECT_EQ(Read("sunbird://p/Zero"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e0", "t0"));
}

TEST_F(SunbirdReadingTest, RepeatedIDReplacesAndGoesToTheEnd) {
  WriteHome();
  AddEvent("e1", "first");
  AddEvent("e2", "second");
  AddEvent("e1", "third");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e2", "e1"));
  EXPECT_EQ(Stored(2).DisplayText, "third");
}

TEST_F(SunbirdReadingTest, ReloadKeepsTheIDs) {
  WriteHome();
  AddEvent("e1");
  AddTask("t1");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  const auto before = IDs();
  connector_->Reload();
  EXPECT_EQ(IDs(), before);
  EXPECT_EQ(connector_->Count(), 2);
}

TEST_F(SunbirdReadingTest, SecondConnectionRefusedReadsNothingAndIsNoFailure) {
  WriteHome();
  AddEvent("e1");
  refusedFrom_ = 2;
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(HostCalls(), CalendarsListed(Connection()) + NotConnected(Connection()));
  EXPECT_EQ(connector_->Count(), 0);
}

// --- Times

TEST_F(SunbirdReadingTest, SecondsOfStartAndEndAreCutOff) {
  WriteHome();
  AddEvent("e1", "x", "1273408245", "1273408259");  // 14:30:45 and 14:30:59
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DateText, "09.05.2010 14:30");
  EXPECT_EQ(Stored(1).DataText("DateEnd"), "09.05.2010 14:30");
}

TEST_F(SunbirdReadingTest, FractionsOfASecondAreCutOff) {
  WriteHome();
  Storage().Run("INSERT INTO cal_todos VALUES (2, 't1', 1273408200999999, 1273408201999999, 'x', 4)");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).Log, "20100509143000,20100509143001*1");
}

TEST_F(SunbirdReadingTest, LocalTimeFollowsTheDateInQuestion) {
  WriteHome();
  AddEvent("e1", "x", "1262347200", "1277985600");  // noon in UTC, on the first of January and of July
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DateText, "01.01.2010 13:00");
  EXPECT_EQ(Stored(1).DataText("DateEnd"), "01.07.2010 14:00");
}

// Every moment of the table is read as start, end, time of making and of change of one event.
TEST_F(SunbirdReadingTest, LocalTimesAgreeWithTheTimeZoneDatabase) {
  std::string sql;
  std::vector<std::pair<std::string, std::string>> expected;  // zone and local text
  std::istringstream table(SourceBytes("tests/data/time_zones.txt"));
  for (std::string kind, zone, moment, date, time; table >> kind >> zone >> moment >> date >> time;) {
    if (kind != "moment") continue;
    const std::string value = moment + "000000";
    sql += "INSERT INTO cal_events VALUES (2, '" + std::to_string(expected.size()) + "', " + value + ", " +
           value + ", '', 4, " + value + ", " + value + ", '', '');";
    expected.emplace_back(zone, date + " " + time);
  }
  ASSERT_GT(expected.size(), 300u);
  WriteHome();
  Storage().Run("BEGIN;" + sql + "COMMIT");
  for (const char* zone : {"Europe/Berlin", "America/New_York", "Asia/Kolkata", "UTC"}) {
    const ScopedTimeZone scope(zone);
    ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
    ASSERT_EQ(static_cast<std::size_t>(connector_->Count()), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (expected[i].first != zone) continue;
      const test::RecordingItem& item = Stored(static_cast<std::int32_t>(i) + 1);
      const std::string& text = expected[i].second;  // dd.mm.yyyy hh:mm:ss
      const std::string stamp = text.substr(6, 4) + text.substr(3, 2) + text.substr(0, 2) +
                                text.substr(11, 2) + text.substr(14, 2) + text.substr(17, 2);
      EXPECT_EQ(item.DateText, text.substr(0, 16)) << zone;
      EXPECT_EQ(item.DataText("DateEnd"), text.substr(0, 16)) << zone;
      EXPECT_EQ(item.Log, stamp + "," + stamp + "*1") << zone;
    }
  }
}

TEST_F(SunbirdReadingTest, EmptyTimeFieldEndsTheReadingWithAFailure) {
  for (const std::string column : {"event_start", "event_end", "time_created", "last_modified"}) {
    folder_.MakeFolder("Mozilla\\Sunbird");
    std::filesystem::remove(folder_.Native(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb"));
    WriteHome();
    AddEvent("e1");
    AddEvent("e2");
    AddEvent("e3");
    AddTask("t1");
    Storage().Run("UPDATE cal_events SET " + column + "=NULL WHERE id='e2'");
    EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), kTypeMismatch) << column;
    EXPECT_THAT(IDs(), ElementsAre("e1")) << column;
  }
}

TEST_F(SunbirdReadingTest, EmptyTimeFieldOfATaskEndsTheReadingToo) {
  WriteHome();
  AddEvent("e1");
  AddTask("t1");
  Storage().Run("INSERT INTO cal_todos VALUES (2, 't2', 0, NULL, 'x', 4)");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), kTypeMismatch);
  EXPECT_THAT(IDs(), ElementsAre("e1", "t1"));
}

TEST_F(SunbirdReadingTest, TimesEndInJanuary2038) {
  WriteHome();
  AddEvent("e1", "x", "2147483647", "2147483647");
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DateText, "19.01.2038 04:14");
  AddEvent("e2", "x", "2147483647", "2147483648");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), kOverflow);
  EXPECT_THAT(IDs(), ElementsAre("e1"));
}

// --- What can't be read

TEST_F(SunbirdReadingTest, MissingTableEndsTheReadingWhereItIsAskedFor) {
  WriteHome();
  AddEvent("e1");
  Storage().Run("DROP TABLE cal_todos");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
  EXPECT_THAT(IDs(), ElementsAre("e1"));
  Storage().Run("DROP TABLE cal_properties");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
  EXPECT_EQ(connector_->Count(), 0);
  Storage().Run("DROP TABLE cal_events");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
}

TEST_F(SunbirdReadingTest, IDWithAQuoteSpoilsItsLocationQuery) {
  WriteHome();
  AddEvent("e1");
  AddEvent("e''2");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
  EXPECT_THAT(IDs(), ElementsAre("e1"));
}

TEST_F(SunbirdReadingTest, IDCanNotBringInASecondStatement) {
  WriteHome();
  AddEvent("e''; DELETE FROM cal_events; --");
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1);
  EXPECT_THAT(Storage().Rows("SELECT count(*) FROM cal_events"), ElementsAre("1"));
}

TEST_F(SunbirdReadingTest, IDOfQuotesInPairsAsksForNothingElse) {
  WriteHome();
  const std::string prefix = "x'' UNION SELECT ";
  const std::string suffix = " WHERE ''a''=''a";
  AddEvent("e1");
  AddLocation("e1", "Room 5");
  AddEvent("x'' OR ''a''=''a");
  AddEvent(prefix + "value FROM cal_calendars_prefs" + suffix);
  // This one would be asked for until the end of days.
  AddEvent(prefix +
           "count(*) FROM (WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM c) SELECT n FROM c)" +
           suffix);
  AddEvent("e1''''");
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  ASSERT_EQ(connector_->Count(), 5);
  EXPECT_EQ(host_.Log.Only({"Database.Query(\"SELECT value"}), Queried(LocationOf("e1")));
  EXPECT_NE(Stored(1).Record.find("|DataLocation=Room 5|"), std::string::npos);
  for (std::int32_t i = 2; i <= 5; ++i)
    EXPECT_NE(Stored(i).Record.find("|DataLocation=|"), std::string::npos) << Stored(i).Record;
}

TEST_F(SunbirdReadingTest, IDThatEndsItsQueryFailsWithoutBeingAsked) {
  WriteHome();
  for (const std::string id : {"x'' --", "x'' /*", "x''"}) {
    Storage().Run("DELETE FROM cal_events");
    AddEvent(id);
    host_.Log.Clear();
    EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 1) << id;
    EXPECT_THAT(host_.Log.Only({"Database.Query(\"SELECT value"}), testing::IsEmpty()) << id;
  }
}

TEST_F(SunbirdReadingTest, DamagedFileEndsTheReadingWithTheNumberOfTheDatabase) {
  WriteHome();
  for (int i = 0; i < 200; ++i)
    AddEvent("e" + std::to_string(i), std::string(300, 'x'));
  const std::string path = ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb";
  std::string bytes = folder_.Read(path);
  ASSERT_GT(bytes.size(), 40000u);
  const std::size_t half = bytes.size() / 2;
  bytes.replace(half, bytes.size() - half, bytes.size() - half, '\xFF');
  folder_.Write(path, bytes);
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 11);
}

TEST_F(SunbirdReadingTest, EveryFailingCallOfTheHostRisesOrIsSwallowedWithoutHarm) {
  WriteHome();
  AddEvent("e1");
  AddTask("t1");
  for (const char* call : {"Database.Open", "Database.Query", "Database.Close", "Global.Report(30",
                           "Error.Raise", "ErrorFactory.Error", "tree.AddChild", "tree.Clear"}) {
    host_.Log.FailOn(call);
    EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 440) << call;
    EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read) << call;
    EXPECT_EQ(connector_->Count(), 2) << call;
  }
}

TEST_F(SunbirdReadingTest, DatabaseLockedForLongerThanTheTimeoutRaisesItsNumber) {
  WriteHome();
  const ForeignLock lock(folder_.Native(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb"));
  EXPECT_EQ(SwallowedNumber([&] { Read("sunbird://p/Home"); }), 5);
  EXPECT_EQ(HostCalls(), Connected(Connection()) +
                             Queried("SELECT calendar, value FROM cal_calendars_prefs WHERE name='name'"));
}

TEST_F(SunbirdReadingTest, DatabaseLockedForAMomentIsWaitedFor) {
  WriteHome();
  AddEvent("e1");
  const ForeignLock lock(folder_.Native(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb"), 150);
  EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_THAT(IDs(), ElementsAre("e1"));
}

}  // namespace
}  // namespace vorlent
