#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <sstream>

#include "SunbirdTest.h"
#include "Support/ScopedRules.h"
#include "Support/SourceTree.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Numbers of the recording host for the five actions.
constexpr std::int32_t kChangeText = 1;
constexpr std::int32_t kDate = 2;
constexpr std::int32_t kDataSet = 3;
constexpr std::int32_t kItemInsert = 37;
constexpr std::int32_t kItemRemove = 38;

constexpr const char* kZone = "'/mozilla.org/20050126_1/Europe/Berlin'";

class SunbirdWriteBackTest : public SunbirdTest {
 protected:
  // Sunbird's calendar "Home" of that id, read, so that it is where changes go.
  void OpenHome(const std::string& calendarId = "2") {
    WriteHome(calendarId);
    ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
    host_.Log.Clear();
  }

  // An item that lasts from 14:30 to 15:30 on the ninth of May and was changed on the tenth at 08:00:01.
  std::shared_ptr<test::RecordingItem> MakeItem(std::string_view type) {
    auto item = host_.MakeItem();
    item->IdText = "id-1";
    item->TypeText = type;
    item->DisplayText = "Lunch";
    item->DateText = "09.05.2010 14:30";
    item->Created = "01.05.2010 07:00:00";
    item->Modified = "10.05.2010 08:00:01";
    item->Data = {{"DateEnd", "09.05.2010 15:30"}, {"Location", "Room 5"}, {"Calendar", "Other"}};
    item->Full = "Lunch Room 5";
    return item;
  }

  void Redo(const ItemPtr& item, std::int32_t msg, std::string_view value = {}) {
    connector_->RedoAction(item, "20100510080001", msg, value);
  }

  // The line of an action in the log.
  static Lines Announced(const std::string& action, const std::string& id = "id-1") {
    return {"Global.Report(30,\"RedoAction: 20100510080001 " + id + " " + action +
            ": Lunch Room 5\",nothing)"};
  }

  // An action as a whole: its line, a connection, the statements, all of which go well.
  Lines Done(const std::string& action, const Lines& statements) const {
    Lines lines = Announced(action) + Connected(Connection());
    for (const std::string& sql : statements)
      lines = lines + Executed(sql);
    return lines + Closed();
  }

  std::filesystem::path StorageFileName() const {
    return folder_.Native(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb");
  }

  std::vector<std::string> Events() const { return Storage().Rows("SELECT * FROM cal_events"); }
  std::vector<std::string> Tasks() const { return Storage().Rows("SELECT * FROM cal_todos"); }
  std::vector<std::string> Properties() const { return Storage().Rows("SELECT * FROM cal_properties"); }
};

// --- The statements of each action for each type of item

TEST_F(SunbirdWriteBackTest, EachActionHasItsStatements) {
  OpenHome();
  const std::string eventDeletion = "DELETE FROM cal_events WHERE id='id-1';";
  const std::string taskDeletion = "DELETE FROM cal_todos WHERE id='id-1';";
  const std::string propertiesDeletion = "DELETE FROM cal_properties WHERE item_id='id-1';";
  const std::string locationInsertion =
      "INSERT INTO cal_properties (item_id,key,value) VALUES ('id-1','LOCATION','Room 5');";
  const std::string modification = "UPDATE cal_events SET last_modified=1273471201000000 WHERE id='id-1';";
  const struct {
    std::string type;
    std::int32_t msg;
    std::string value;
    std::string action;  // as the log shows it
    Lines statements;
  } cases[] = {
      {"termin",
       kChangeText,
       "",
       "ChangeText",
       {"UPDATE cal_events SET title='Lunch', last_modified=1273471201000000 WHERE id='id-1';"}},
      {"task",
       kChangeText,
       "",
       "ChangeText",
       {"UPDATE cal_todos SET title='Lunch', last_modified=1273471201000000 WHERE id='id-1';"}},
      {"mail",
       kChangeText,
       "",
       "ChangeText",
       {"UPDATE cal_todos SET title='Lunch', last_modified=1273471201000000 WHERE id='id-1';"}},
      {"termin",
       kChangeText,
       "Supper",
       "ChangeText=Supper",
       {"UPDATE cal_events SET title='Lunch', last_modified=1273471201000000 WHERE id='id-1';"}},
      {"termin", kItemRemove, "", "ItemRemove", {propertiesDeletion, eventDeletion}},
      {"task", kItemRemove, "", "ItemRemove", {propertiesDeletion, taskDeletion}},
      {"", kItemRemove, "", "ItemRemove", {propertiesDeletion, taskDeletion}},
      {"termin",
       kDate,
       "",
       "Date",
       {"UPDATE cal_events SET event_start=1273408200000000, last_modified=1273471201000000 WHERE "
        "id='id-1';"}},
      {"task", kDate, "", "Date", {}},
      {"mail", kDate, "", "Date", {}},
      {"termin",
       kDataSet,
       "DateEnd=x",
       "DataSet=DateEnd=x",
       {"UPDATE cal_events SET event_end=1273411800000000, last_modified=1273471201000000 WHERE id='id-1';"}},
      {"termin",
       kDataSet,
       "DateEnd",
       "DataSet=DateEnd",
       {"UPDATE cal_events SET event_end=1273411800000000, last_modified=1273471201000000 WHERE id='id-1';"}},
      {"termin",
       kDataSet,
       "Location=a=b",
       "DataSet=Location=a=b",
       {modification,
        "DELETE FROM cal_properties WHERE item_id='id-1' AND key='LOCATION' AND value='Room 5';",
        locationInsertion}},
      {"termin", kDataSet, "Calendar=Work", "DataSet=Calendar=Work", {modification}},
      {"termin", kDataSet, "location=x", "DataSet=location=x", {modification}},
      {"termin", kDataSet, "dateend=x", "DataSet=dateend=x", {modification}},
      {"termin", kDataSet, "", "DataSet", {modification}},
      {"task", kDataSet, "DateEnd=x", "DataSet=DateEnd=x", {}},
      {"task", kDataSet, "Location=x", "DataSet=Location=x", {}},
      {"termin",
       kItemInsert,
       "",
       "ItemInsert",
       {eventDeletion, propertiesDeletion,
        "INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, time_created, "
        "flags, "
        "event_start_tz, event_end_tz) VALUES ('id-1', 2, 'Lunch', 1273408200000000, 1273411800000000, "
        "1273471201000000, 1273471201000000, 4, " +
            std::string(kZone) + ", " + kZone + ");",
        locationInsertion}},
      {"task",
       kItemInsert,
       "ID=id-1|Type=task",
       "ItemInsert=ID=id-1|Type=task",
       {taskDeletion, propertiesDeletion,
        "INSERT INTO cal_todos (id, cal_id, title, last_modified, time_created, flags) VALUES ('id-1', 2, "
        "'Lunch', 1273471201000000, 1273471201000000, 4);"}},
      {"mail", kItemInsert, "", "ItemInsert", {}},
      {"Termin", kItemInsert, "", "ItemInsert", {}},
  };
  for (const auto& c : cases) {
    host_.Log.Clear();
    Redo(MakeItem(c.type), c.msg, c.value);
    EXPECT_EQ(HostCalls(), Done(c.action, c.statements)) << c.type << " " << c.action;
  }
}

TEST_F(SunbirdWriteBackTest, EventWithoutLocationIsInsertedWithoutOne) {
  OpenHome();
  auto item = MakeItem("termin");
  item->Data = {{"DateEnd", "09.05.2010 15:30"}};
  Redo(item, kItemInsert);
  EXPECT_THAT(host_.Log.Only({"Database.Execute(\"INSERT INTO cal_properties"}), IsEmpty());
  EXPECT_EQ(Events().size(), 1u);
  EXPECT_THAT(Properties(), IsEmpty());
}

TEST_F(SunbirdWriteBackTest, ClearedLocationIsAddedAsAnEmptyOne) {
  OpenHome();
  auto item = MakeItem("termin");
  item->Data.clear();
  Redo(item, kDataSet, "Location=");
  EXPECT_EQ(HostCalls(),
            Done("DataSet=Location=",
                 {"UPDATE cal_events SET last_modified=1273471201000000 WHERE id='id-1';",
                  "DELETE FROM cal_properties WHERE item_id='id-1' AND key='LOCATION' AND value='';",
                  "INSERT INTO cal_properties (item_id,key,value) VALUES ('id-1','LOCATION','');"}));
}

TEST_F(SunbirdWriteBackTest, ParameterItemIsPassedOverWithoutALine) {
  OpenHome();
  auto item = MakeItem("parameter");
  item->IdText = "parameter";
  for (const std::int32_t msg : {kChangeText, kDate, kDataSet, kItemInsert, kItemRemove, 99})
    Redo(item, msg);
  EXPECT_THAT(host_.Log.Lines(), IsEmpty());
}

TEST_F(SunbirdWriteBackTest, UnknownActionOnlyLeavesItsLine) {
  OpenHome();
  host_.Global.ActionNames[5] = "AddKeyword";
  Redo(MakeItem("termin"), 5, "Work");
  Redo(MakeItem("termin"), 99);
  host_.Global.ActionNames[6] = "changetext";
  Redo(MakeItem("termin"), 6);
  EXPECT_EQ(host_.Log.Lines(), Announced("AddKeyword=Work") + Announced("") + Announced("changetext"));
}

TEST_F(SunbirdWriteBackTest, NoItemIsNoAction) {
  OpenHome();
  Redo(nullptr, kChangeText);
  EXPECT_THAT(host_.Log.Lines(), IsEmpty());
}

TEST_F(SunbirdWriteBackTest, WithoutConnectionAnActionEndsInSilence) {
  OpenHome();
  refusedFrom_ = 1;
  for (const std::int32_t msg : {kChangeText, kDate, kDataSet, kItemInsert, kItemRemove}) {
    for (const char* type : {"termin", "task", "mail"}) {
      host_.Log.Clear();
      Redo(MakeItem(type), msg);
      EXPECT_EQ(HostCalls(), Announced(host_.Global.ActionNames[msg]) + NotConnected(Connection()));
    }
  }
}

TEST_F(SunbirdWriteBackTest, MissingFileIsNotCreatedByAWrite) {
  OpenHome();
  std::filesystem::remove(StorageFileName());
  Redo(MakeItem("termin"), kItemInsert);
  EXPECT_EQ(HostCalls(), Announced("ItemInsert") + NotConnected(Connection()));
  EXPECT_FALSE(std::filesystem::exists(StorageFileName()));
}

// --- Which calendar

TEST_F(SunbirdWriteBackTest, InsertIntoCalendarOneWritesCalendarZero) {
  OpenHome("1");
  Redo(MakeItem("termin"), kItemInsert);
  Redo(MakeItem("task"), kItemInsert);
  EXPECT_THAT(Events(), ElementsAre("0|id-1|1273471201000000|1273471201000000|Lunch|4|1273408200000000|"
                                    "1273411800000000|/mozilla.org/20050126_1/Europe/Berlin|"
                                    "/mozilla.org/20050126_1/Europe/Berlin"));
  EXPECT_THAT(Tasks(), ElementsAre("0|id-1|1273471201000000|1273471201000000|Lunch|4"));
}

TEST_F(SunbirdWriteBackTest, InsertGoesToTheCalendarReadLast) {
  WriteHome();
  Storage().Run("INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (7, 'name', 'Work')");
  ASSERT_EQ(Read("sunbird://p"), LocationState::Read);
  auto item = MakeItem("task");
  item->Data = {{"Calendar", "Home"}};
  Redo(item, kItemInsert);
  EXPECT_THAT(Storage().Rows("SELECT cal_id FROM cal_todos"), ElementsAre("7"));
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  Redo(item, kItemInsert);
  EXPECT_THAT(Storage().Rows("SELECT cal_id FROM cal_todos"), ElementsAre("2"));
}

TEST_F(SunbirdWriteBackTest, BehindAReadingOfAllProfilesThereIsNoFileToWriteTo) {
  WriteHome();
  ASSERT_EQ(Read("sunbird://"), LocationState::Read);
  host_.Log.Clear();
  Redo(MakeItem("task"), kItemInsert);
  // The disks, last of the profiles, have been looked at last.
  EXPECT_EQ(HostCalls(),
            Announced("ItemInsert") +
                NotConnected("Driver={SQLite3 ODBC Driver};Database=.\\storage.sdb;Timeout=2000"));
}

TEST_F(SunbirdWriteBackTest, ReadingOfAllProfilesEndsWithTheLastRealOneToday) {
  WriteHome();
  const ScopedRules today({.disksProfile = DisksProfile::OfMail});
  ASSERT_EQ(Read("sunbird://"), LocationState::Read);
  Redo(MakeItem("task"), kItemInsert);
  EXPECT_THAT(Storage().Rows("SELECT cal_id FROM cal_todos"), ElementsAre("2"));
}

// --- Times

TEST_F(SunbirdWriteBackTest, StoredTimesAgreeWithTheTimeZoneDatabase) {
  OpenHome();
  int rows = 0;
  std::istringstream table(SourceBytes("tests/data/time_zones.txt"));
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string kind, zone, date, time, moment;
    fields >> kind >> zone >> date >> time >> moment;
    if (kind != "local") continue;
    const ScopedTimeZone scope(zone);
    auto item = MakeItem("termin");
    item->DateText = date + " " + time;
    host_.Log.Clear();
    Redo(item, kDate);
    const std::string statement = host_.Log.Only({"Database.Execute"}).at(0);
    EXPECT_TRUE(statement.starts_with("Database.Execute(\"UPDATE cal_events SET event_start=" + moment +
                                      "000000, last_modified="))
        << line << "\n"
        << statement;
    ++rows;
  }
  EXPECT_GT(rows, 300);
}

TEST_F(SunbirdWriteBackTest, WrittenTimesAreReadBackAsTheyWere) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DateText = "27.03.2010 23:30";
  item->Data = {{"DateEnd", "28.03.2010 03:30"}};
  Redo(item, kItemInsert);
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Records(),
            "ID=id-1|Type=termin|Text=Lunch|Date=27.03.2010 23:30|DataDateEnd=28.03.2010 03:30|DataLocation=|"
            "DataCalendar=Home|Log=20100510080001,20100510080001*1\n");
}

TEST_F(SunbirdWriteBackTest, EmptyAndUnreadableTimesAreStoredAsZero) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DateText = "";
  item->Modified = "no date";
  Redo(item, kDate);
  EXPECT_EQ(
      HostCalls(),
      Done("Date", {"UPDATE cal_events SET event_start=0000000, last_modified=0000000 WHERE id='id-1';"}));
}

TEST_F(SunbirdWriteBackTest, LastStoredTimeIsThatOf32Bits) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DateText = "19.01.2038 04:14:07";
  Redo(item, kDate);
  EXPECT_EQ(HostCalls(), Done("Date", {"UPDATE cal_events SET event_start=2147483647000000, "
                                       "last_modified=1273471201000000 WHERE id='id-1';"}));
}

TEST_F(SunbirdWriteBackTest, ChangeToATimeBehindJanuary2038RunsNoStatement) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DateText = "19.01.2038 04:14:08";
  item->Data = {{"DateEnd", "01.01.2040 00:00"}, {"Location", "Room 5"}};
  Redo(item, kDate);
  EXPECT_EQ(HostCalls(), Done("Date", {}));
  host_.Log.Clear();
  Redo(item, kDataSet, "DateEnd=x");
  EXPECT_EQ(HostCalls(), Done("DataSet=DateEnd=x", {}));
  host_.Log.Clear();
  item->Modified = "01.02.2038 00:00";
  Redo(item, kChangeText);
  EXPECT_EQ(HostCalls(), Done("ChangeText", {}));
  host_.Log.Clear();
  // The steps after the one that fails still run.
  Redo(item, kDataSet, "Location=x");
  EXPECT_EQ(HostCalls(),
            Done("DataSet=Location=x",
                 {"DELETE FROM cal_properties WHERE item_id='id-1' AND key='LOCATION' AND value='Room 5';",
                  "INSERT INTO cal_properties (item_id,key,value) VALUES ('id-1','LOCATION','Room 5');"}));
}

TEST_F(SunbirdWriteBackTest, InsertOfATimeBehindJanuary2038FailsInItsStatement) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DateText = "01.02.2038 00:00";
  Redo(item, kItemInsert);
  const std::string insertion =
      "INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, time_created, "
      "flags, "
      "event_start_tz, event_end_tz) VALUES ('id-1', 2, 'Lunch', , 1273411800000000, 1273471201000000, "
      "1273471201000000, 4, " +
      std::string(kZone) + ", " + kZone + ");";
  EXPECT_EQ(
      HostCalls(),
      Announced("ItemInsert") + Connected(Connection()) +
          Executed("DELETE FROM cal_events WHERE id='id-1';") +
          Executed("DELETE FROM cal_properties WHERE item_id='id-1';") + Executed(insertion, 1) +
          Executed("INSERT INTO cal_properties (item_id,key,value) VALUES ('id-1','LOCATION','Room 5');") +
          Closed());
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(SunbirdWriteBackTest, InsertOfATaskChangedBehindJanuary2038FailsInItsStatement) {
  OpenHome();
  auto item = MakeItem("task");
  item->Modified = "01.02.2038 00:00";
  Redo(item, kItemInsert);
  EXPECT_EQ(HostCalls(),
            Announced("ItemInsert") + Connected(Connection()) +
                Executed("DELETE FROM cal_todos WHERE id='id-1';") +
                Executed("DELETE FROM cal_properties WHERE item_id='id-1';") +
                Executed("INSERT INTO cal_todos (id, cal_id, title, last_modified, time_created, flags) "
                         "VALUES ('id-1', 2, 'Lunch', , , 4);",
                         1) +
                Closed());
  EXPECT_THAT(Tasks(), IsEmpty());
}

TEST_F(SunbirdWriteBackTest, InsertOfAnEventThatEndsOrWasChangedBehindJanuary2038FailsInItsStatement) {
  OpenHome();
  struct Row {
    std::string end;
    std::string modified;
    std::string times;
  };
  for (const Row& row :
       {Row{"01.02.2038 00:00", "10.05.2010 08:00:01", ", 1273471201000000, 1273471201000000"},
        Row{"09.05.2010 15:30", "01.02.2038 00:00", "1273411800000000, , "}}) {
    host_.Log.Clear();
    auto item = MakeItem("termin");
    item->Data = {{"DateEnd", row.end}};
    item->Modified = row.modified;
    Redo(item, kItemInsert);
    EXPECT_EQ(
        HostCalls(),
        Announced("ItemInsert") + Connected(Connection()) +
            Executed("DELETE FROM cal_events WHERE id='id-1';") +
            Executed("DELETE FROM cal_properties WHERE item_id='id-1';") +
            Executed("INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, "
                     "time_created, flags, event_start_tz, event_end_tz) VALUES ('id-1', 2, 'Lunch', "
                     "1273408200000000, " +
                         row.times + ", 4, " + kZone + ", " + kZone + ");",
                     1) +
            Closed());
    EXPECT_THAT(Events(), IsEmpty());
  }
}

TEST_F(SunbirdWriteBackTest, InsertAsksForTheCreationToo) {
  OpenHome();
  host_.Log.RecordReads = true;
  for (const char* type : {"termin", "task"}) {
    auto item = MakeItem(type);
    // What it can't convert is of no consequence.
    item->Created = "01.02.2038 00:00";
    host_.Log.Clear();
    Redo(item, kItemInsert);
    EXPECT_EQ(host_.Log.Only({item->Name + ".DateCreated"}).size(), 1U) << type;
  }
  EXPECT_EQ(Events().size(), 1U);
  EXPECT_EQ(Tasks().size(), 1U);
}

// --- In the file

TEST_F(SunbirdWriteBackTest, InsertIsAReplacement) {
  OpenHome();
  auto item = MakeItem("termin");
  Redo(item, kItemInsert);
  item->DisplayText = "Supper";
  Redo(item, kItemInsert);
  EXPECT_THAT(Storage().Rows("SELECT title FROM cal_events"), ElementsAre("Supper"));
  EXPECT_THAT(Properties(), ElementsAre("id-1|LOCATION|Room 5"));
}

TEST_F(SunbirdWriteBackTest, ChangesReachTheRowOfTheItemAlone) {
  OpenHome();
  auto item = MakeItem("termin");
  Redo(item, kItemInsert);
  item->IdText = "id-2";
  Redo(item, kItemInsert);
  item->DisplayText = "Supper";
  item->DateText = "09.05.2010 18:30";
  item->Data[0].second = "09.05.2010 19:30";
  item->Modified = "11.05.2010 08:00:01";
  Redo(item, kChangeText);
  Redo(item, kDate);
  Redo(item, kDataSet, "DateEnd=09.05.2010 19:30");
  EXPECT_THAT(Storage().Rows("SELECT id, title, event_start, event_end, last_modified FROM cal_events"),
              ElementsAre("id-1|Lunch|1273408200000000|1273411800000000|1273471201000000",
                          "id-2|Supper|1273422600000000|1273426200000000|1273557601000000"));
  Redo(item, kItemRemove);
  EXPECT_THAT(Storage().Rows("SELECT id FROM cal_events"), ElementsAre("id-1"));
  EXPECT_THAT(Properties(), ElementsAre("id-1|LOCATION|Room 5"));
}

TEST_F(SunbirdWriteBackTest, ChangedLocationStandsBehindTheOldOneWhichIsStillRead) {
  OpenHome();
  auto item = MakeItem("termin");
  Redo(item, kItemInsert);
  item->Data[1].second = "Room 6";
  Redo(item, kDataSet, "Location=Room 6");
  Redo(item, kDataSet, "Location=Room 6");
  EXPECT_THAT(Properties(), ElementsAre("id-1|LOCATION|Room 5", "id-1|LOCATION|Room 6"));
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_EQ(Stored(1).DataText("Location"), "Room 5");
}

TEST_F(SunbirdWriteBackTest, BytesOfTheTextsAreWrittenAsTheyAre) {
  OpenHome();
  auto item = MakeItem("task");
  item->DisplayText = "a|b\nM\xC3\xBCller;--\"x\" 100%";
  Redo(item, kItemInsert);
  EXPECT_THAT(Storage().Rows("SELECT title FROM cal_todos"), ElementsAre(item->DisplayText));
}

// --- Failing statements

TEST_F(SunbirdWriteBackTest, QuoteInATitleSpoilsTheStatement) {
  OpenHome();
  auto item = MakeItem("termin");
  Redo(item, kItemInsert);
  item->DisplayText = "Anna's";
  host_.Log.Clear();
  Redo(item, kChangeText);
  EXPECT_EQ(
      HostCalls(),
      Announced("ChangeText") + Connected(Connection()) +
          Refused("UPDATE cal_events SET title='Anna's', last_modified=1273471201000000 WHERE id='id-1';") +
          Closed());
  EXPECT_THAT(Storage().Rows("SELECT title FROM cal_events"), ElementsAre("Lunch"));
}

// Texts that end their literal and say something of their own.
std::vector<std::string> Intruders() {
  using namespace std::string_literals;
  return {
      "x'; DELETE FROM cal_events; --",
      "x' WHERE id='id-1'; DROP TABLE cal_events; --",
      "x' WHERE id='id-1'; DROP TABLE cal_events",
      "x' WHERE id='id-1'; --",
      "x' WHERE id='id-1';\0"s,
      "x' WHERE id='id-1'; /*",
      "'; DELETE FROM cal_properties; SELECT '",
      // One statement still, without its condition or with another.
      "Anna' --Notiz",
      "Anna' /* Notiz",
      "x' OR 'a'='a",
      "x' OR 1=1 --",
      "x' OR 1=1 /*",
      "x', title='y",
      "x' || 'y",
      "'",
      "''",
      "id-1''",
      // Drivers end a statement here.
      "id-1\0"s,
      "x\0' OR 'a'='a"s,
  };
}

class SunbirdIntruderTest : public SunbirdWriteBackTest {
 protected:
  // Two events and a task, of which nothing may change.
  void Fill() {
    OpenHome();
    Redo(MakeItem("termin"), kItemInsert);
    Redo(MakeItem("task"), kItemInsert);
    auto other = MakeItem("termin");
    other->IdText = "id-2";
    Redo(other, kItemInsert);
    before_ = StorageBytes();
  }

  // Every statement is logged twice as one that failed, and the database sees none.
  void ExpectRefused(const ItemPtr& item, std::int32_t msg, std::size_t statements, const std::string& what,
                     std::string_view value = {}) {
    host_.Log.Clear();
    Redo(item, msg, value);
    EXPECT_THAT(host_.Log.Only({"Database.Execute"}), IsEmpty()) << what;
    EXPECT_EQ(host_.Log.Only({"Global.Report(30,\"1<-"}).size(), statements) << what;
    EXPECT_EQ(host_.Log.Only({"Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",false"}).size(), statements)
        << what;
    EXPECT_TRUE(StorageBytes() == before_) << what;
  }

  std::string before_;
};

TEST_F(SunbirdIntruderTest, NoTitleRunsAStatementOfItsOwn) {
  Fill();
  for (const std::string& text : Intruders()) {
    for (const char* type : {"termin", "task"}) {
      auto item = MakeItem(type);
      item->DisplayText = text;
      ExpectRefused(item, kChangeText, 1, text);
    }
  }
}

TEST_F(SunbirdIntruderTest, NoIDRunsAStatementOfItsOwn) {
  Fill();
  for (const std::string& text : Intruders()) {
    for (const std::string type : {"termin", "task"}) {
      auto item = MakeItem(type);
      item->IdText = text;
      ExpectRefused(item, kChangeText, 1, text);
      ExpectRefused(item, kItemRemove, 2, text);
      ExpectRefused(item, kItemInsert, type == "termin" ? 4 : 3, text);
    }
    auto item = MakeItem("termin");
    item->IdText = text;
    ExpectRefused(item, kDate, 1, text);
    ExpectRefused(item, kDataSet, 1, text, "DateEnd=x");
    ExpectRefused(item, kDataSet, 1, text, "Calendar=x");
    ExpectRefused(item, kDataSet, 3, text, "Location=x");
  }
}

TEST_F(SunbirdIntruderTest, NoLocationRunsAStatementOfItsOwn) {
  Fill();
  const auto properties = Properties();
  const auto events = Events();
  for (const std::string& text : Intruders()) {
    auto item = MakeItem("termin");
    item->Data = {{"DateEnd", "09.05.2010 15:30"}, {"Location", text}};
    host_.Log.Clear();
    Redo(item, kDataSet, "Location=" + text);
    // The time of change alone is written, which is what it was.
    EXPECT_THAT(host_.Log.Only({"Database.Execute"}),
                ElementsAre("Database.Execute(\"UPDATE cal_events SET last_modified=1273471201000000 WHERE "
                            "id='id-1';\")"))
        << text;
    EXPECT_THAT(host_.Log.Only({"Global.Report(30,\"1<-"}),
                ElementsAre(testing::HasSubstr("1<-DELETE FROM cal_properties"),
                            testing::HasSubstr("1<-INSERT INTO cal_properties")))
        << text;
    EXPECT_EQ(Properties(), properties) << text;
    EXPECT_EQ(Events(), events) << text;
    // An insert goes on to its end without the location.
    item->IdText = "id-3";
    Redo(item, kItemInsert);
    EXPECT_EQ(Properties(), properties) << text;
    EXPECT_EQ(Events().size(), events.size() + 1) << text;
    Redo(item, kItemRemove);
  }
}

TEST_F(SunbirdIntruderTest, CalendarThatIsNoNumberIsNotInserted) {
  Fill();
  for (const std::string calendar :
       {"2, ''x'', 0, 0, 0, 0, 4, , ) --", "2 OR 1", "2;", "cal_id", "-", "2.5", "(SELECT 7)"}) {
    Storage().Run("UPDATE cal_calendars_prefs SET calendar='" + calendar + "'");
    // What a reading makes of it is of no matter here.
    Swallow([&] { Read("sunbird://p/Home"); });
    before_ = StorageBytes();
    for (const char* type : {"termin", "task"}) {
      auto item = MakeItem(type);
      item->IdText = "id-3";
      item->Data.clear();
      host_.Log.Clear();
      Redo(item, kItemInsert);
      EXPECT_THAT(host_.Log.Only({"Database.Execute(\"INSERT"}), IsEmpty()) << calendar;
      EXPECT_EQ(host_.Log.Only({"Global.Report(30,\"1<-INSERT"}).size(), 1U) << calendar;
      EXPECT_TRUE(StorageBytes() == before_) << calendar;
    }
  }
}

TEST_F(SunbirdIntruderTest, SpoiledStatementIsLoggedAsItStandsAndTheNextOneRuns) {
  OpenHome();
  auto item = MakeItem("termin");
  item->DisplayText = "Anna' --Notiz";
  Redo(item, kItemInsert);
  EXPECT_EQ(
      HostCalls(),
      Announced("ItemInsert") + Connected(Connection()) +
          Executed("DELETE FROM cal_events WHERE id='id-1';") +
          Executed("DELETE FROM cal_properties WHERE item_id='id-1';") +
          Refused("INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, "
                  "time_created, flags, event_start_tz, event_end_tz) VALUES ('id-1', 2, 'Anna' --Notiz', "
                  "1273408200000000, 1273411800000000, 1273471201000000, 1273471201000000, 4, " +
                  std::string(kZone) + ", " + kZone + ");") +
          Executed("INSERT INTO cal_properties (item_id,key,value) VALUES ('id-1','LOCATION','Room 5');") +
          Closed());
}

TEST_F(SunbirdWriteBackTest, FailedStatementDoesNotStopTheNext) {
  OpenHome();
  Storage().Run("DROP TABLE cal_properties");
  Redo(MakeItem("termin"), kItemInsert);
  EXPECT_THAT(host_.Log.Only({"Global.Report(30,\"0<-", "Global.Report(30,\"1<-"}),
              ElementsAre(testing::HasSubstr("\"0<-DELETE FROM cal_events"),
                          testing::HasSubstr("\"1<-DELETE FROM cal_properties"),
                          testing::HasSubstr("\"0<-INSERT INTO cal_events"),
                          testing::HasSubstr("\"1<-INSERT INTO cal_properties")));
  EXPECT_EQ(Events().size(), 1u);
}

TEST_F(SunbirdWriteBackTest, DamagedFileIsToldByTheNumberOfTheDatabase) {
  OpenHome();
  const std::string bytes(4000, 'x');
  WriteBytes(folder_.Path(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb"), bytes);
  Redo(MakeItem("task"), kItemRemove);
  EXPECT_EQ(HostCalls(), Announced("ItemRemove") + Connected(Connection()) +
                             Executed("DELETE FROM cal_properties WHERE item_id='id-1';", 26) +
                             Executed("DELETE FROM cal_todos WHERE id='id-1';", 26) + Closed());
  EXPECT_EQ(ReadBytes(folder_.Path(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb")), bytes);
}

TEST_F(SunbirdWriteBackTest, FailedHostCallSkipsItsStepAlone) {
  OpenHome();
  auto item = MakeItem("termin");
  const std::string update =
      "UPDATE cal_events SET title='Lunch', last_modified=1273471201000000 WHERE id='id-1';";
  const Lines whole = Done("ChangeText", {update});
  // Each of the calls that are seen in the log, failed once. A failing call is still noted.
  const struct {
    std::string call;
    Lines rest;  // what is left of the action
  } cases[] = {
      {"Global.Report(30,\"RedoAction", whole},
      {"Database.Open", Announced("ChangeText") + Lines{whole[1]}},
      {"Global.Report(30,\"DBConnect", Announced("ChangeText") + Lines{whole[1], whole[2]}},
      {"Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",true,\"Driver",
       Announced("ChangeText") + Lines{whole[1], whole[2], whole[3]}},
      {"Database.Execute",
       Announced("ChangeText") + Connected(Connection()) + Executed(update, 440) + Closed()},
      {"Global.Report(30,\"0<-", whole},
      {"Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",true,\"UPDATE", whole},
      {"Database.Close", whole},
  };
  for (const auto& c : cases) {
    host_.Log.Clear();
    host_.Log.FailOn(c.call);
    Redo(item, kChangeText);
    EXPECT_EQ(HostCalls(), c.rest) << c.call;
  }
}

TEST_F(SunbirdWriteBackTest, HostWithoutDatabasesIsNoConnection) {
  OpenHome();
  host_.MakeDatabase = []() -> HostDatabasePtr { throw Failure(ErrorNumber::Host, "no database"); };
  EXPECT_NO_THROW(Redo(MakeItem("termin"), kChangeText));
  EXPECT_EQ(HostCalls(), Announced("ChangeText"));
}

// A database to which everything is right.
class WillingDatabase : public HostDatabase {
 public:
  bool Open(std::string_view, std::string_view) override { return true; }
  HostRecordsetPtr Query(std::string_view, std::int32_t) override { return nullptr; }
  bool Execute(std::string_view) override { return true; }
  void Close() override {}
};

TEST_F(SunbirdWriteBackTest, NoFailureOfTheHostRisesOutOfAnAction) {
  OpenHome();
  host_.MakeDatabase = [this] {
    return std::make_shared<test::RecordingDatabase>(host_.Log, std::make_shared<WillingDatabase>(), false);
  };
  host_.Log.RecordReads = true;
  for (const char* type : {"termin", "task"}) {
    for (const std::int32_t msg : {kChangeText, kDate, kDataSet, kItemInsert, kItemRemove}) {
      const auto item = MakeItem(type);
      host_.Log.Clear();
      Redo(item, msg, "Location=Room 5");
      const int calls = static_cast<int>(host_.Log.Lines().size());
      ASSERT_GT(calls, 5);
      for (int nth = 1; nth <= calls; ++nth) {
        for (const bool always : {false, true}) {
          host_.Log.FailOn("", nth, always);
          EXPECT_NO_THROW(Redo(item, msg, "Location=Room 5")) << type << msg << " call " << nth;
          host_.Log.ClearFaults();
        }
      }
    }
  }
}

// --- Locks

TEST_F(SunbirdWriteBackTest, LockThatOutlastsTheTimeoutIsLoggedAndTheItemKeepsItsChange) {
  OpenHome();
  auto item = MakeItem("termin");
  Redo(item, kItemInsert);
  const std::string before =
      ReadBytes(folder_.Path(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb"));
  item->DisplayText = "Supper";
  host_.Log.Clear();
  {
    const ForeignLock lock(StorageFileName());
    const auto start = std::chrono::steady_clock::now();
    Redo(item, kChangeText);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
  }
  EXPECT_EQ(
      HostCalls(),
      Announced("ChangeText") + Connected(Connection()) +
          Executed("UPDATE cal_events SET title='Supper', last_modified=1273471201000000 WHERE id='id-1';",
                   5) +
          Closed());
  EXPECT_EQ(item->DisplayText, "Supper");
  EXPECT_EQ(ReadBytes(folder_.Path(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb")), before);
}

TEST_F(SunbirdWriteBackTest, LockReleasedWithinTheTimeoutLetsTheWriteSucceed) {
  OpenHome();
  const ForeignLock lock(StorageFileName(), 200);
  Redo(MakeItem("termin"), kItemInsert);
  EXPECT_THAT(host_.Log.Only({"Global.Report(30,\"5<-"}), IsEmpty());
  EXPECT_EQ(Events().size(), 1u);
  EXPECT_THAT(Properties(), ElementsAre("id-1|LOCATION|Room 5"));
}

// --- PasteItem and DeleteItem

TEST_F(SunbirdWriteBackTest, ConnectedPasteInsertsTheItem) {
  OpenHome();
  const std::string record = "ID=id-9|Type=task|Text=Pasted";
  const ItemPtr item = connector_->PasteItem(record, true);
  EXPECT_EQ(
      HostCalls(),
      (Lines{"Location(\"sunbird://p/Home\").SetItemCounter(1)",
             "Location(\"sunbird://p/Home\").SetLastItemTimer(52205)",
             "Global.Report(30,\"RedoAction: 20100509143005 id-9 ItemInsert=" + record + ": \",nothing)"}) +
          Connected(Connection()) + Executed("DELETE FROM cal_todos WHERE id='id-9';") +
          Executed("DELETE FROM cal_properties WHERE item_id='id-9';") +
          Executed("INSERT INTO cal_todos (id, cal_id, title, last_modified, time_created, flags) VALUES "
                   "('id-9', 2, 'Pasted', 0000000, 0000000, 4);") +
          Closed());
  EXPECT_EQ(connector_->GetItem("id-9"), item);
  EXPECT_THAT(Tasks(), ElementsAre("2|id-9|0|0|Pasted|4"));
}

TEST_F(SunbirdWriteBackTest, UnconnectedPasteWritesNothing) {
  OpenHome();
  connector_->PasteItem("ID=id-9|Type=task|Text=Pasted", false);
  EXPECT_EQ(databasesMade_, 2);  // those of the reading
  EXPECT_THAT(host_.Log.Only({"Global.", "Error.", "Database."}), IsEmpty());
}

class SunbirdDeletionTest : public SunbirdWriteBackTest {
 protected:
  // An event of the calendar as the reading made it, under the id "id-1".
  ItemPtr ReadEvent() {
    OpenHome();
    Redo(MakeItem("termin"), kItemInsert);
    EXPECT_EQ(Read("sunbird://p/Home"), LocationState::Read);
    Stored(1).Full = "Lunch Room 5";
    Stored(1).Name = "event";
    host_.Log.Clear();
    return connector_->Item(1);
  }

  static Lines Told() {
    return {"Global.Report(38,\"\",event)", "Location(\"sunbird://p/Home\").SetChanged(true)"};
  }

  const Lines rowFirst_ = Executed("DELETE FROM cal_events WHERE id='id-1';") +
                          Executed("DELETE FROM cal_properties WHERE item_id='id-1';");
  const Lines rowLast_ = Executed("DELETE FROM cal_properties WHERE item_id='id-1';") +
                         Executed("DELETE FROM cal_events WHERE id='id-1';");

  static Lines AnnouncedNow(const std::string& action) {
    return {"Global.Report(30,\"RedoAction: 20100509143005 id-1 " + action + ": Lunch Room 5\",nothing)"};
  }
};

TEST_F(SunbirdDeletionTest, DeletionRunsItsStatementsTwice) {
  const ItemPtr item = ReadEvent();
  EXPECT_TRUE(connector_->DeleteItem(item));
  EXPECT_EQ(HostCalls(), AnnouncedNow("ItemRemove") + Connected(Connection()) + rowLast_ + Closed() +
                             Connected(Connection()) + rowFirst_ + Closed() + Told());
  EXPECT_FALSE(connector_->HasID("id-1"));
  EXPECT_THAT(Events(), IsEmpty());
  EXPECT_THAT(Properties(), IsEmpty());
}

TEST_F(SunbirdDeletionTest, DeletionUnderAnotherActionNameRunsThemOnce) {
  const ItemPtr item = ReadEvent();
  host_.Global.ActionNames[38] = "Gone";
  EXPECT_TRUE(connector_->DeleteItem(item));
  EXPECT_EQ(HostCalls(), AnnouncedNow("Gone") + Connected(Connection()) + rowFirst_ + Closed() + Told());
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(SunbirdDeletionTest, DeletedTaskLeavesItsOwnTable) {
  OpenHome();
  Redo(MakeItem("task"), kItemInsert);
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  host_.Log.Clear();
  EXPECT_TRUE(connector_->DeleteItem(connector_->Item(1)));
  EXPECT_THAT(Tasks(), IsEmpty());
  EXPECT_EQ(host_.Log.Only({"Database.Execute(\"DELETE FROM cal_todos WHERE id='id-1';\""}).size(), 2u);
}

TEST_F(SunbirdDeletionTest, UnreachableDatabaseStillLosesTheItemToTheHost) {
  const ItemPtr item = ReadEvent();
  refusedFrom_ = 1;
  EXPECT_FALSE(connector_->DeleteItem(item));
  EXPECT_EQ(HostCalls(),
            AnnouncedNow("ItemRemove") + NotConnected(Connection()) + NotConnected(Connection()) + Told());
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_EQ(Events().size(), 1u);
}

TEST_F(SunbirdDeletionTest, FailedDeletionIsLoggedAndCountsAsDone) {
  const ItemPtr item = ReadEvent();
  host_.Global.ActionNames.clear();
  Storage().Run("DROP TABLE cal_events");
  EXPECT_TRUE(connector_->DeleteItem(item));
  EXPECT_EQ(HostCalls(), AnnouncedNow("") + Connected(Connection()) +
                             Executed("DELETE FROM cal_events WHERE id='id-1';", 1) +
                             Executed("DELETE FROM cal_properties WHERE item_id='id-1';") + Closed() +
                             Told());
}

TEST_F(SunbirdDeletionTest, StatementThatCannotBeLoggedIsRunAndTheNextOneFollows) {
  const ItemPtr item = ReadEvent();
  host_.Global.ActionNames.clear();
  host_.Log.FailOn("Global.Report(30,\"0<-");
  host_.Log.FailOn("Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",true,\"DELETE FROM cal_events");
  EXPECT_TRUE(connector_->DeleteItem(item));
  EXPECT_EQ(HostCalls(), AnnouncedNow("") + Connected(Connection()) + rowFirst_ + Closed() + Told());
  EXPECT_THAT(Events(), IsEmpty());
  EXPECT_THAT(Properties(), IsEmpty());
}

TEST_F(SunbirdDeletionTest, DeletionOfAnIDWithQuotesLeavesTheFileAsItWas) {
  const std::string id = "x' OR 'a'='a";
  OpenHome();
  Redo(MakeItem("termin"), kItemInsert);
  Storage().Run(
      "INSERT INTO cal_events (cal_id, id, time_created, last_modified, event_start, event_end) "
      "VALUES (2, 'x'' OR ''a''=''a', 0, 0, 0, 0)");
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  ASSERT_TRUE(connector_->HasID(id));
  const std::string before = StorageBytes();
  host_.Log.Clear();
  EXPECT_TRUE(connector_->DeleteItem(connector_->GetItem(id)));
  const Lines properties = Refused("DELETE FROM cal_properties WHERE item_id='" + id + "';");
  const Lines event = Refused("DELETE FROM cal_events WHERE id='" + id + "';");
  EXPECT_EQ(host_.Log.Only({"Database.Execute", "Global.Report(30,\"1",
                            "Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",false"}),
            properties + event + event + properties);
  EXPECT_TRUE(StorageBytes() == before);
  EXPECT_FALSE(connector_->HasID(id));
}

TEST_F(SunbirdDeletionTest, DeletionOfNothingIsFalseWithoutALine) {
  OpenHome();
  EXPECT_FALSE(connector_->DeleteItem(nullptr));
  EXPECT_THAT(host_.Log.Lines(), IsEmpty());
}

TEST_F(SunbirdDeletionTest, ItemThatIsNotInTheStoreEndsTheDeletionBehindTheStatements) {
  const ItemPtr item = ReadEvent();
  connector_->Clear();
  EXPECT_EQ(SwallowedNumber([&] { connector_->DeleteItem(item); }), 5);
  EXPECT_THAT(host_.Log.Only({"Global.Report(38", "Location("}), IsEmpty());
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(SunbirdDeletionTest, FailedReportRises) {
  const ItemPtr item = ReadEvent();
  host_.Log.FailOn("Global.Report(38");
  EXPECT_EQ(SwallowedNumber([&] { connector_->DeleteItem(item); }), 440);
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_THAT(host_.Log.Only({"Location("}), IsEmpty());
}

}  // namespace
}  // namespace vorlent
