// A calendar-data/local.sqlite as Thunderbird lays it out, with the rows that a test puts into it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Support/SqliteFile.h"

namespace vorlent {

class LightningFile : public SqliteFile {
 public:
  static constexpr const char* kFirst = "65089248-54be-4d44-a3fc-922ffc102e8d";
  static constexpr const char* kSecond = "19cf1c7b-f359-4b80-8f47-e511ea4346d2";

  // Makes file and tables, in a write-ahead log's mode as Thunderbird has it, if they aren't there.
  explicit LightningFile(const std::filesystem::path& native);

  // Adds a row; the columns are those of the table, the values SQL.
  void Add(std::string_view table, std::string_view columns, std::string_view values);
  // An event in UTC with title and times in microseconds, made and changed at 1795364577 seconds.
  void AddEvent(const std::string& calendar, const std::string& id, const std::string& title,
                const std::string& start, const std::string& end, const std::string& zone = "UTC",
                int flags = 4);

  // All rows of all tables, each with its table's name and its number in front.
  std::vector<std::string> AllRows();
  // The schema's statements.
  std::vector<std::string> Schema();
};

// The preferences of a profile with those two calendars under names, as a prefs.js.
std::string LightningPreferences(std::string_view first, std::string_view second,
                                 std::string_view zone = "Europe/Berlin");

}  // namespace vorlent
