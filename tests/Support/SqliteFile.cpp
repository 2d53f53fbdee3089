#include "Support/SqliteFile.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vorlent {

SqliteFile::SqliteFile(const std::filesystem::path& native) {
  if (sqlite3_open(native.c_str(), &handle_) == SQLITE_OK) return;
  const std::string message = sqlite3_errmsg(handle_);
  sqlite3_close(handle_);
  throw std::runtime_error(native.string() + ": " + message);
}

SqliteFile::~SqliteFile() {
  sqlite3_close(handle_);
}

void SqliteFile::Run(const std::string& sql) {
  if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string(sqlite3_errmsg(handle_)) + " in " + sql);
  }
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
