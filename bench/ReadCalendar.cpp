// How long the calendar connector takes for a large calendar, beside the bare statements stepped through with
// SQLite on the same file. With --quick the calendar is a small one.
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Host/Connector.h"
#include "Measuring.h"
#include "Platform/Settings.h"
#include "Standalone/StandaloneHost.h"
#include "Support/ScopedTimeZone.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr int kRuns = 5;
constexpr double kLimit = 2.5;

constexpr const char* kEventQuery =
    "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, "
    "event_start/1000000 AS start, event_end/1000000 As ende, id FROM cal_events WHERE cal_id=2";
constexpr const char* kTaskQuery =
    "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, id FROM cal_todos "
    "WHERE cal_id=2";

// Events over twenty years, each with a location.
void WriteCalendar(const std::filesystem::path& file, int count) {
  SqliteFile storage(file);
  storage.Run(
      "PRAGMA synchronous=OFF; BEGIN;"
      "CREATE TABLE cal_calendars_prefs (id INTEGER PRIMARY KEY, calendar INTEGER, name TEXT, value TEXT);"
      "CREATE TABLE cal_events (cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title "
      "TEXT,"
      " flags INTEGER, event_start INTEGER, event_end INTEGER, event_start_tz TEXT, event_end_tz TEXT);"
      "CREATE TABLE cal_todos (cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title "
      "TEXT,"
      " flags INTEGER);"
      "CREATE TABLE cal_properties (item_id TEXT, key TEXT, value BLOB);"
      "CREATE INDEX idx_cal_properies_item_id ON cal_properties(item_id);"
      "INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'name', 'Home');"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
      std::to_string(count) +
      ") INSERT INTO cal_events SELECT 2, printf('%08x-1f0e-4b5c-9a51-0a7b9c3e6f01', "
      "i*2654435761&4294967295),"
      " (946684800+i*12000)*1000000, (946684800+i*12345)*1000000, 'Besprechung Nummer '||i, 4,"
      " (946684800+i*12600)*1000000, (946684800+i*12600+5400)*1000000, 'UTC', 'UTC' FROM n;"
      "INSERT INTO cal_properties SELECT id, 'CATEGORIES', 'Arbeit' FROM cal_events WHERE rowid%2=0;"
      "INSERT INTO cal_properties SELECT id, 'LOCATION', 'Raum '||rowid FROM cal_events;"
      "COMMIT");
}

// Runs one statement to its end, each row's columns fetched as text. Returns the number of rows.
int StepThrough(sqlite3* database, const std::string& sql,
                const std::function<void(sqlite3_stmt*)>& onRow = nullptr) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) std::abort();
  int rows = 0;
  for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) {
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      if (sqlite3_column_text(statement, i) == nullptr) std::abort();
    }
    if (onRow) onRow(statement);
  }
  sqlite3_finalize(statement);
  return rows;
}

void RunBareStatements(const std::filesystem::path& file, int count) {
  sqlite3* database = nullptr;
  if (sqlite3_open(file.c_str(), &database) != SQLITE_OK) std::abort();
  int locations = 0;
  const int events = StepThrough(database, kEventQuery, [&](sqlite3_stmt* event) {
    const std::string id = reinterpret_cast<const char*>(sqlite3_column_text(event, 5));
    locations += StepThrough(
        database, "SELECT value FROM cal_properties WHERE item_id='" + id + "' AND key='LOCATION'");
  });
  StepThrough(database, kTaskQuery);
  sqlite3_close(database);
  if (events != count || locations != count) std::abort();
}

double Milliseconds(const std::function<void()>& work) {
  return 1000 * Timed(work).processor;
}

class SilentObserver : public HostObserver {};

int Run(bool quick) {
  const int events = quick ? 10'000 : 50'000;
  const ScopedTimeZone zone("Europe/Berlin");
  const TemporaryFolder folder;
  folder.Write("Mozilla\\Sunbird\\profiles.ini",
               "[General]\r\n\r\n[Profile0]\r\nName=p\r\nPath=Profiles/p\r\n");
  folder.MakeFolder("Mozilla\\Sunbird\\Profiles\\p");
  const std::filesystem::path file = folder.Native("Mozilla\\Sunbird\\Profiles\\p\\storage.sdb");
  WriteCalendar(file, events);

  os::SetAppDataFolder(folder.Native().string());
  SilentObserver observer;
  const auto host = std::make_shared<StandaloneHost>(observer);
  HostObjects::Install(host);
  const StandaloneLocationPtr location = host->MakeLocation();
  location->Open("sunbird://p/Home");

  // The best of several runs of each, in turn, so that a busy moment of the machine strikes all alike.
  double bare = 1e9;
  std::vector<double> times;
  std::vector<double> todaysTimes;
  for (int run = 0; run < kRuns; ++run) {
    bare = std::min(bare, Milliseconds([&] { RunBareStatements(file, events); }));
    times.push_back(Milliseconds([&] { location->Load(); }));
    todaysTimes.push_back(Milliseconds(ByTodaysRules([&] { location->Load(); })));
  }
  if (location->ItemCount() != events) std::abort();
  location->Close();
  HostObjects::Install(nullptr);

  const double connector = *std::min_element(times.begin(), times.end());
  const double todays = *std::min_element(todaysTimes.begin(), todaysTimes.end());
  const double ratio = connector / bare;
  std::printf("%-36s %10s %12s\n", "", "ms", "events/s");
  std::printf("%-36s %10.1f %12.0f\n", "bare statements", bare, events / bare * 1000);
  std::printf("%-36s %10.1f %12.0f\n", "connector, to items of the host", connector,
              events / connector * 1000);
  std::printf("%-36s %10.1f %12.0f\n", "the same by today's rules", todays, events / todays * 1000);
  std::printf("%d events with locations: %.2f times the bare statements, at most %.1f allowed: %s\n", events,
              ratio, kLimit, ratio <= kLimit ? "met" : "MISSED");
  const bool isTodaysFast = PrintTodays("reading", RatioOf(todaysTimes, times), kTodaysTime.For(quick));
  return ratio <= kLimit && isTodaysFast ? 0 : 1;
}

}  // namespace
}  // namespace vorlent

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  return vorlent::Run(vorlent::IsQuick(argc, argv));
}
