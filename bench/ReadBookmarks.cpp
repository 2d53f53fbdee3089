// How long the bookmark connector takes to read a large profile and to export it, beside the bare statements
// run with SQLite on the same file, and how that grows with the profile. With --quick that is a small one.
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
#include "Support/PlacesFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr int kBookmarksInFolder = 20;
constexpr int kSubfolders = 49;  // of each folder on the top level
constexpr int kRuns = 7;
constexpr Bound kLimit = {3.0, 4.3};
// Four times the bookmarks may take this many times as long for each of them.
constexpr Bound kGrowthLimit = {1.3, 1.8};

int BookmarksIn(int folders) {
  return folders * kBookmarksInFolder;
}

void WritePlaces(const std::filesystem::path& file, int folders) {
  PlacesFile places(file);
  const std::int64_t root = places.AddFolder(0, "");
  std::int64_t top = root;
  for (int i = 0; i < folders; ++i) {
    const bool isTop = i % (kSubfolders + 1) == 0;
    const std::int64_t folder =
        places.AddFolder(isTop ? root : top, "Ordner für Größeres " + std::to_string(i));
    if (isTop) top = folder;
    for (int k = 0; k < kBookmarksInFolder; ++k) {
      const std::string number = std::to_string(i) + "/" + std::to_string(k);
      places.AddBookmark(folder, "Eine Seite über Bücher und mehr, Nummer " + number,
                         "https://www.example.org/pages/" + number + "/index.html?lang=de");
    }
  }
}

// The connector's own statement.
std::string EverythingIn(const std::string& id) {
  return "SELECT moz_bookmarks.id, moz_bookmarks.type, moz_bookmarks.title, moz_places.url, "
         "moz_bookmarks.dateAdded, moz_bookmarks.lastModified FROM moz_bookmarks OUTER LEFT JOIN moz_places "
         "ON moz_bookmarks.fk=moz_places.id WHERE moz_bookmarks.parent=" +
         id + " ORDER BY moz_bookmarks.position";
}

// The statement of a folder and of those below it, its result stepped through and each column fetched as
// text. Returns the number of bookmarks.
int StepThrough(sqlite3* database, const std::string& id) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, EverythingIn(id).c_str(), -1, &statement, nullptr) != SQLITE_OK)
    std::abort();
  int bookmarks = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    const char* texts[6];
    for (int i = 0; i < 6; ++i)
      texts[i] = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
    bookmarks += texts[1][0] == '2' ? StepThrough(database, texts[0]) : 1;
  }
  sqlite3_finalize(statement);
  return bookmarks;
}

// The same with each result fetched whole, as the connector needs it to go on below the rows.
int FetchWhole(sqlite3* database, const std::string& id) {
  char** cells = nullptr;
  int rows = 0;
  int columns = 0;
  if (sqlite3_get_table(database, EverythingIn(id).c_str(), &cells, &rows, &columns, nullptr) != SQLITE_OK)
    std::abort();
  int bookmarks = 0;
  for (int row = 1; row <= rows; ++row) {
    char** texts = cells + row * columns;
    bookmarks += texts[1][0] == '2' ? FetchWhole(database, texts[0]) : 1;
  }
  sqlite3_free_table(cells);
  return bookmarks;
}

using Statements = int (*)(sqlite3* database, const std::string& id);

void RunBare(const std::filesystem::path& file, int folders, Statements run) {
  sqlite3* database = nullptr;
  if (sqlite3_open(file.c_str(), &database) != SQLITE_OK) std::abort();
  if (run(database, "0") != BookmarksIn(folders)) std::abort();
  sqlite3_close(database);
}

double Milliseconds(const std::function<void()>& work) {
  return 1000 * Timed(work).processor;
}

// Of each run.
struct Times {
  std::vector<double> stepped, fetched;
  std::vector<double> read, whole;  // whole: read, exported and closed
  std::vector<double> todaysRead, todaysWhole;
};

double BestOf(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

// Opening the Location, which reads, and then exporting and closing it.
struct Work {
  double read;
  double rest;
};

Work ReadAndExport(StandaloneHost& host, const std::string& address, int folders) {
  StandaloneLocationPtr location;
  const double read = Milliseconds([&] {
    location = host.MakeLocation();
    location->Open(address);
    location->Load();
  });
  if (location->ItemCount() != BookmarksIn(folders)) std::abort();
  const double rest = Milliseconds([&] {
    RequireAs<BookmarkConnector>(location->Connector())->Save();
    location->Close();
    location.reset();
  });
  return {read, rest};
}

// Several runs of each, in turn, so that a busy moment of the machine strikes all alike.
Times Measure(StandaloneHost& host, const TemporaryFolder& folder, const std::string& profile, int folders) {
  const std::string place = "Mozilla\\FireFox\\Profiles\\" + profile;
  folder.MakeFolder(place);
  const std::filesystem::path file = folder.Native(place + "\\places.sqlite");
  WritePlaces(file, folders);
  const std::string address = "firefox://" + profile + "/";
  Times times;
  for (int run = 0; run < kRuns; ++run) {
    times.stepped.push_back(Milliseconds([&] { RunBare(file, folders, StepThrough); }));
    times.fetched.push_back(Milliseconds([&] { RunBare(file, folders, FetchWhole); }));

    const Work work = ReadAndExport(host, address, folders);
    times.read.push_back(work.read);
    times.whole.push_back(work.read + work.rest);

    const ScopedRules today(Rules::Today());
    const Work todays = ReadAndExport(host, address, folders);
    times.todaysRead.push_back(todays.read);
    times.todaysWhole.push_back(todays.read + todays.rest);
  }
  return times;
}

void PrintRow(const char* what, const std::vector<double>& times, int bookmarks) {
  const double milliseconds = BestOf(times);
  std::printf("  %-34s %10.1f %14.0f\n", what, milliseconds, bookmarks / milliseconds * 1000);
}

void PrintTimes(const Times& times, int folders) {
  const int bookmarks = BookmarksIn(folders);
  std::printf("%-36s %10s %14s\n",
              (std::to_string(bookmarks) + " bookmarks in " + std::to_string(folders) + " folders").c_str(),
              "ms", "bookmarks/s");
  PrintRow("bare statements, stepped through", times.stepped, bookmarks);
  PrintRow("bare statements, fetched whole", times.fetched, bookmarks);
  PrintRow("read", times.read, bookmarks);
  PrintRow("read, exported and closed", times.whole, bookmarks);
  PrintRow("read, by today's rules", times.todaysRead, bookmarks);
  PrintRow("all of it, by today's rules", times.todaysWhole, bookmarks);
}

bool PrintVerdict(const char* what, double value, double limit) {
  const bool met = value <= limit;
  std::printf("%s: %.2f, at most %.1f allowed: %s\n", what, value, limit, met ? "met" : "MISSED");
  return met;
}

class SilentObserver : public HostObserver {};

int Run(bool quick) {
  const int folders = quick ? 1'000 : 5'000;
  const TemporaryFolder folder;
  folder.Write("Mozilla\\FireFox\\profiles.ini",
               "[General]\r\n[Profile0]\r\nName=small\r\nPath=Profiles/small\r\n"
               "[Profile1]\r\nName=large\r\nPath=Profiles/large\r\n");
  os::SetAppDataFolder(folder.Native().string());
  SilentObserver observer;
  const auto host = std::make_shared<StandaloneHost>(observer);
  HostObjects::Install(host);
  const Times small = Measure(*host, folder, "small", folders / 4);
  const Times large = Measure(*host, folder, "large", folders);
  HostObjects::Install(nullptr);

  PrintTimes(small, folders / 4);
  PrintTimes(large, folders);
  const double whole = BestOf(large.whole);
  bool kept = PrintVerdict("the whole, times the statements fetched whole", whole / BestOf(large.fetched),
                           kLimit.For(quick));
  kept &= PrintVerdict("time of a bookmark, times that in a quarter of the profile",
                       whole / 4 / BestOf(small.whole), kGrowthLimit.For(quick));
  kept &= PrintTodays("reading", RatioOf(large.todaysRead, large.read), kTodaysTime.For(quick));
  kept &= PrintTodays("all of it", RatioOf(large.todaysWhole, large.whole), kTodaysTime.For(quick));
  return kept ? 0 : 1;
}

}  // namespace
}  // namespace vorlent

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  return vorlent::Run(vorlent::IsQuick(argc, argv));
}
