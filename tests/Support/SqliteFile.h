// A database file that a test fills, locks or keeps open, as another program would.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

struct sqlite3;

namespace vorlent {

class SqliteFile {
 public:
  // Creates the file if it isn't there. Raises std::runtime_error where the library fails, as Run does.
  explicit SqliteFile(const std::filesystem::path& native);
  ~SqliteFile();
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;

  // Runs statements, separated by semicolons.
  void Run(const std::string& sql);

  // The rows of a query, each as one text of its fields joined by "|"; NULL is "NULL".
  std::vector<std::string> Rows(const std::string& sql);

 private:
  sqlite3* handle_ = nullptr;
};

// Names and bytes of the files in a folder. Reading a database in this way takes away the locks that the
// test's own connections hold on it.
std::map<std::string, std::string> FolderContent(const std::filesystem::path& folder);

}  // namespace vorlent
