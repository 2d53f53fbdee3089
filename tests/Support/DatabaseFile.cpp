#include "Support/DatabaseFile.h"

#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

namespace vorlent {

namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

Database OpenFile(const std::filesystem::path& file) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open(file.c_str(), &opened);
  Database database(opened, &sqlite3_close);
  if (result != SQLITE_OK) throw std::runtime_error("can't open " + file.string());
  return database;
}

void Check(sqlite3* database, int result, const std::string& sql) {
  if (result != SQLITE_OK) throw std::runtime_error(std::string(sqlite3_errmsg(database)) + ": " + sql);
}

int AppendRow(void* rows, int count, char** fields, char**) {
  std::string row;
  for (int i = 0; i < count; ++i) {
    if (i > 0) row += '|';
    row += fields[i] == nullptr ? "NULL" : fields[i];
  }
  static_cast<std::vector<std::string>*>(rows)->push_back(row);
  return 0;
}

// What the other process does: nothing of the test program may run in it but this.
[[noreturn]] void HoldLock(const std::filesystem::path& file, int milliseconds, int ready) {
  sqlite3* database = nullptr;
  bool locked = sqlite3_open(file.c_str(), &database) == SQLITE_OK;
  locked = locked && sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) == SQLITE_OK;
  const char mark = locked ? '+' : '-';
  if (write(ready, &mark, 1) == 1 && locked) usleep(static_cast<useconds_t>(milliseconds) * 1000);
  sqlite3_close(database);
  _exit(0);
}

}  // namespace

void RunSql(const std::filesystem::path& file, const std::string& sql) {
  const Database database = OpenFile(file);
  Check(database.get(), sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr), sql);
}

std::vector<std::string> QueryRows(const std::filesystem::path& file, const std::string& sql) {
  const Database database = OpenFile(file);
  std::vector<std::string> rows;
  Check(database.get(), sqlite3_exec(database.get(), sql.c_str(), &AppendRow, &rows, nullptr), sql);
  return rows;
}

ForeignLock::ForeignLock(const std::filesystem::path& file, int milliseconds) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    HoldLock(file, milliseconds, ends[1]);
  }
  close(ends[1]);
  char mark = 0;
  const bool locked = process_ > 0 && read(ends[0], &mark, 1) == 1 && mark == '+';
  close(ends[0]);
  if (!locked) throw std::runtime_error("can't lock " + file.string());
}

ForeignLock::~ForeignLock() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace vorlent
