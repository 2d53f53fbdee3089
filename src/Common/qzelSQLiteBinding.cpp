#include "Common/qzelSQLiteBinding.h"

#include <sqlite3.h>

#include "Common/StdModul.h"
#include "Platform/NativePaths.h"

namespace vorlent {

namespace {

std::int32_t rowsFromLastCall = 0;

// A connection is used from one thread, so it needs no lock of its own.
int OpenUnlocked(std::string_view file, int mode, sqlite3*& handle) {
  return sqlite3_open_v2(os::ToNativePath(file).c_str(), &handle, mode | SQLITE_OPEN_NOMUTEX, nullptr);
}

}  // namespace

void SqliteTable::Release::operator()(char** cells) const {
  sqlite3_free_table(cells);
}

int sqlite_open(std::string_view file, sqlite3*& handle) {
  const std::string path(file);
  // What another program left unfinished is left to that program, so the connection may finish nothing:
  // - A rollback journal would be rolled back by a connection that can write.
  const int mode = FileExists(path + "-journal") ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  // - A write-ahead log would be copied into the database and removed by the last connection to close.
  //   Without a log, the same clearing up removes the empty one that reading makes, so a read-only
  //   connection, which can't clear up, is no way out.
  const bool keepLog = FileExists(path + "-wal");
  // - The log's index would be made beside it, unless the connection has the file to itself and keeps the
  //   index in memory.
  const bool indexInMemory = keepLog && !FileExists(path + "-shm");

  const int result = OpenUnlocked(file, mode, handle);
  if (result != SQLITE_OK) return result;
  if (keepLog) sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (indexInMemory) sqlite3_exec(handle, "PRAGMA locking_mode=EXCLUSIVE", nullptr, nullptr, nullptr);
  return result;
}

int sqlite_open_own(std::string_view file, sqlite3*& handle) {
  return OpenUnlocked(file, SQLITE_OPEN_READWRITE, handle);
}

int sqlite_close(sqlite3* handle) {
  return sqlite3_close(handle);
}

SqliteObstacle sqlite_obstacle_to_reading(sqlite3* handle) {
  switch (sqlite3_exec(handle, "SELECT 1 FROM sqlite_master", nullptr, nullptr, nullptr)) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return SqliteObstacle::Use;
    // A journal to be rolled back, or a log whose index may not be made.
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
      return sqlite3_extended_errcode(handle) == SQLITE_READONLY_ROLLBACK ? SqliteObstacle::Use
                                                                          : SqliteObstacle::NoRight;
    default:
      return SqliteObstacle::None;
  }
}

bool sqlite_only_reads(sqlite3* handle) {
  return sqlite3_db_readonly(handle, "main") == 1;
}

void sqlite_wait_for_others(sqlite3* handle, int milliseconds) {
  sqlite3_busy_timeout(handle, milliseconds);
}

std::string sqlite_libversion() {
  const char* version = sqlite3_libversion();
  return version == nullptr ? std::string() : std::string(version);
}

SqliteTable sqlite_get_table(sqlite3* handle, const std::string& sql, std::string& error) {
  rowsFromLastCall = 0;
  char** cells = nullptr;
  char* message = nullptr;
  int dataRows = 0;
  int columns = 0;
  const int result = sqlite3_get_table(handle, sql.c_str(), &cells, &dataRows, &columns, &message);
  if (result != SQLITE_OK) {
    // A handle whose file could not be opened refuses the statement without a message of its own.
    error = message != nullptr ? message : sqlite3_errmsg(handle);
    sqlite3_free(message);
    return {};
  }
  error.clear();
  rowsFromLastCall = dataRows == 0 ? 0 : dataRows + 1;
  return {cells, rowsFromLastCall, columns};
}

std::int32_t number_of_rows_from_last_call() {
  return rowsFromLastCall;
}

}  // namespace vorlent
