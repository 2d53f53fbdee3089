#include "Support/SqliteFile.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vorlent {

namespace {

int AppendRow(void* rows, int count, char** fields, char**) {
  std::string row;
  for (int i = 0; i < count; ++i) {
    if (i > 0) row += '|';
    row += fields[i] == nullptr ? "NULL" : fields[i];
  }
  static_cast<std::vector<std::string>*>(rows)->push_back(row);
  return 0;
}

void RunAll(sqlite3* handle, const std::string& sql, std::vector<std::string>* rows) {
  if (sqlite3_exec(handle, sql.c_str(), rows == nullptr ? nullptr : &AppendRow, rows, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string(sqlite3_errmsg(handle)) + " in " + sql);
  }
}

}  // namespace

SqliteFile::SqliteFile(const std::filesystem::path& native) {
  if (sqlite3_open(native.string().c_str(), &handle_) == SQLITE_OK) return;
  const std::string message = sqlite3_errmsg(handle_);
  sqlite3_close(handle_);
  throw std::runtime_error(native.string() + ": " + message);
}

SqliteFile::~SqliteFile() {
  sqlite3_close(handle_);
}

void SqliteFile::Run(const std::string& sql) {
  RunAll(handle_, sql, nullptr);
}

std::vector<std::string> SqliteFile::Rows(const std::string& sql) {
  std::vector<std::string> rows;
  RunAll(handle_, sql, &rows);
  return rows;
}

std::map<std::string, std::string> FolderContent(const std::filesystem::path& folder) {
  std::map<std::string, std::string> content;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    content[entry.path().filename().string()] = std::string(std::istreambuf_iterator<char>(file), {});
  }
  return content;
}

}  // namespace vorlent
