// A places.sqlite as Firefox lays it out, with the bookmarks that a test puts into it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "Support/SqliteFile.h"

namespace vorlent {

// Texts are UTF-8, none is NULL; times are microseconds since 1970. Rows of a folder lie in the order in
// which they were added. All rows are added in one transaction, which Commit or the destructor ends.
class PlacesFile : public SqliteFile {
 public:
  using Text = std::optional<std::string>;

  static constexpr std::int64_t kAdded = 1262304000123456;    // 2010-01-01 00:00:00 UTC
  static constexpr std::int64_t kChanged = 1273415405654321;  // 2010-05-09 14:30:05 UTC

  explicit PlacesFile(const std::filesystem::path& native);
  ~PlacesFile();  // NOLINT(bugprone-exception-escape): ends the test

  // Each adds a row and returns its id, from 1. The root row is the first folder, with parent 0.
  std::int64_t AddFolder(std::int64_t parent, const Text& title);
  std::int64_t AddBookmark(std::int64_t parent, const Text& title, const Text& url,
                           std::int64_t dateAdded = kAdded, std::int64_t lastModified = kChanged);
  std::int64_t AddRow(int type, std::int64_t parent, const Text& title);

  void Commit();

 private:
  std::int64_t Insert(int type, const std::string& fk, std::int64_t parent, const Text& title,
                      std::int64_t dateAdded, std::int64_t lastModified);

  std::int64_t rows_ = 0;
  std::int64_t places_ = 0;
  std::map<std::int64_t, int> positions_;
  bool committed_ = false;
};

}  // namespace vorlent
