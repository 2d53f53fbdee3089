// SQLite files for tests, handled without the system's own code.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vorlent {

// Runs SQL statements on a database file, which is made if it is missing. Raises std::runtime_error.
void RunSql(const std::filesystem::path& file, const std::string& sql);

// The rows of a query, each as one text of its fields joined by "|"; NULL is "NULL".
std::vector<std::string> QueryRows(const std::filesystem::path& file, const std::string& sql);

// Another process that holds a database file locked against reading and writing: until the destructor, or
// until that many milliseconds have passed. The lock is in force when the constructor returns.
class ForeignLock {
 public:
  explicit ForeignLock(const std::filesystem::path& file, int milliseconds = 60000);
  ~ForeignLock();
  ForeignLock(const ForeignLock&) = delete;
  ForeignLock& operator=(const ForeignLock&) = delete;

 private:
  pid_t process_;
};

}  // namespace vorlent
