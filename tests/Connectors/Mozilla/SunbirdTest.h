// What the tests of the calendar connector share: profiles on the disk, a recording host over real databases.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/Location_Sunbird.h"
#include "Standalone/StandaloneDatabase.h"
#include "Support/ForeignLock.h"
#include "Support/Lines.h"
#include "Support/RecordingDatabase.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTimeZone.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// The tables that the connector knows, with the columns that it names.
inline constexpr const char* kCalendarTables = R"sql(
    CREATE TABLE cal_calendars_prefs (id INTEGER PRIMARY KEY, calendar INTEGER, name TEXT, value TEXT);
    CREATE TABLE cal_events (cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT,
      flags INTEGER, event_start INTEGER, event_end INTEGER, event_start_tz TEXT, event_end_tz TEXT);
    CREATE TABLE cal_todos (cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT,
      flags INTEGER);
    CREATE TABLE cal_properties (item_id TEXT, key TEXT, value BLOB);
)sql";

// A database file that doesn't wait for the disk.
class StorageFile : public SqliteFile {
 public:
  explicit StorageFile(const std::filesystem::path& native) : SqliteFile(native) {
    Run("PRAGMA synchronous=OFF");
  }
};

// Lists of call lines, put together in order.
class SunbirdTest : public testing::Test {
 protected:
  SunbirdTest() {
    platform_->SetAppData(folder_.Path());
    host_.MakeDatabase = [this]() -> HostDatabasePtr {
      ++databasesMade_;
      return std::make_shared<test::RecordingDatabase>(host_.Log, std::make_shared<StandaloneDatabase>(),
                                                       databasesMade_ >= refusedFrom_);
    };
    connector_->SetLocObject(location_);
  }

  // Writes profiles.ini of an application folder, "Mozilla\Sunbird" or "Thunderbird".
  void WriteProfiles(std::string_view app, const std::vector<std::string>& names) const {
    std::string ini = "[General]\r\nStartWithLastProfile=1\r\n";
    for (std::size_t i = 0; i < names.size(); ++i) {
      ini += "\r\n[Profile" + std::to_string(i) + "]\r\nName=" + names[i] +
             "\r\nIsRelative=1\r\nPath=Profiles/" + names[i] + "\r\n";
      folder_.MakeFolder(ProfileFolder(app, names[i]));
    }
    folder_.Write(std::string(app) + "\\profiles.ini", ini);
  }

  static std::string ProfileFolder(std::string_view app, std::string_view profile) {
    return std::string(app) + "\\Profiles\\" + std::string(profile);
  }

  // The storage.sdb of a profile, made on first use.
  StorageFile Storage(std::string_view profile = "p", std::string_view app = "Mozilla\\Sunbird") const {
    return StorageFile(folder_.Native(ProfileFolder(app, profile) + "\\storage.sdb"));
  }

  // Sunbird's profile "p" with the calendar "Home" of that id.
  void WriteHome(const std::string& calendarId = "2") const {
    WriteProfiles("Mozilla\\Sunbird", {"p"});
    Storage().Run(std::string(kCalendarTables) +
                  "INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (" + calendarId +
                  ", 'name', 'Home');");
  }

  LocationState Read(std::string_view address) {
    location_->Address = address;
    return connector_->Einlesen();
  }

  // The lines since the log was cleared, but for those about items and trees.
  Lines HostCalls() const { return host_.Log.Only({"Global.", "Error.", "Database.", "Location("}); }

  // The records of the items in the connector's store, each with a line end.
  std::string Records() const {
    std::string records;
    for (std::int32_t i = 1; i <= connector_->Count(); ++i)
      records += Stored(i).Record + "\n";
    return records;
  }

  test::RecordingItem& Stored(std::int32_t position) const {
    return dynamic_cast<test::RecordingItem&>(*connector_->Item(position));
  }

  // --- What the log must hold

  std::string Connection(std::string_view profile = "p", std::string_view app = "Mozilla\\Sunbird") const {
    return "Driver={SQLite3 ODBC Driver};Database=" +
           folder_.Path(ProfileFolder(app, profile) + "\\storage.sdb") + ";Timeout=2000";
  }

  static Lines Connected(const std::string& connection) {
    return {"Database.Open(\"ODBC\",\"" + connection + "\")",
            "Global.Report(30,\"DBConnect: True (" + connection + ")\",nothing)",
            "Error.Raise(1,\"VorlentMozilla.Location_Sunbird\",true,\"" + connection + "\")"};
  }

  static Lines NotConnected(const std::string& connection) {
    return {"Database.Open(\"ODBC\",\"" + connection + "\")",
            "Global.Report(30,\"DBConnect: False (" + connection + ")\",nothing)",
            "Error.Raise(2,\"VorlentMozilla.Location_Sunbird\",false,\"" + connection + "\")"};
  }

  std::string StorageBytes() const {
    return folder_.Read(ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb");
  }

  static Lines Queried(const std::string& sql) { return {"Database.Query(\"" + sql + "\",2)"}; }

  static Lines Executed(const std::string& sql, int number = 0) {
    const std::string quoted = test::Quoted(sql);
    const std::string inner = quoted.substr(1, quoted.size() - 2);
    const std::string n = std::to_string(number);
    return {"Database.Execute(\"" + inner + "\")", "Global.Report(30,\"" + n + "<-" + inner + "\",nothing)",
            "Error.Raise(1,\"VorlentMozilla.Location_Sunbird\"," +
                std::string(number == 0 ? "true" : "false") + ",\"" + inner + " -> " + n + "\")"};
  }

  // A statement that is logged as one that failed, and that the database never sees.
  static Lines Refused(const std::string& sql) {
    const Lines lines = Executed(sql, 1);
    return {lines.begin() + 1, lines.end()};
  }

  static Lines Closed() { return {"Database.Close"}; }

  // One call of GetCalendars that reaches the database.
  static Lines CalendarsListed(const std::string& connection) {
    return Connected(connection) +
           Queried("SELECT calendar, value FROM cal_calendars_prefs WHERE name='name'") + Closed();
  }

  ScopedTimeZone zone_{"Europe/Berlin"};
  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;
  test::RecordingHost host_;
  std::shared_ptr<test::RecordingLocation> location_ = host_.MakeLocation("");
  std::shared_ptr<Location_Sunbird> connector_ = std::make_shared<Location_Sunbird>();
  int databasesMade_ = 0;
  int refusedFrom_ = 1000;  // the number, from 1, of the first database that can't be opened
};

}  // namespace vorlent
