// The narrow layer between qzelSQLite and the SQLite library: results come whole, as a table of text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;

namespace vorlent {

// The result of one statement. Row 0 holds the column names, the rows after it the data.
class SqliteTable {
 public:
  SqliteTable() = default;
  // Takes over what the library allocated for `cells`.
  SqliteTable(char** cells, std::int32_t rows, std::int32_t columns)
      : cells_(cells), rows_(rows), columns_(columns) {}

  // The row of names counted; 0 for a statement that yields no rows.
  std::int32_t RowCount() const { return rows_; }
  std::int32_t ColumnCount() const { return columns_; }

  // The bytes as the database holds them, "" for NULL; both positions from 0 and within the bounds. Valid as
  // long as the table.
  std::string_view Text(std::int32_t row, std::int32_t column) const {
    const char* cell = cells_.get()[std::size_t(row) * std::size_t(columns_) + std::size_t(column)];
    return cell == nullptr ? std::string_view() : std::string_view(cell);
  }

 private:
  struct Release {
    void operator()(char** cells) const;
  };

  std::unique_ptr<char*, Release> cells_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

// Opens a database file for reading and gives the library's result code. The handle is set even when the file
// can't be opened, and its first statement then fails; it is null only if the library had no memory for one.
// A missing file isn't made, and neither opening, reading nor closing changes a file beside or in the
// database.
int sqlite_open(std::string_view file, sqlite3*& handle);

// Opens a database file of this process's own, such as a copy, in which what was left unfinished is finished.
int sqlite_open_own(std::string_view file, sqlite3*& handle);

int sqlite_close(sqlite3* handle);

// What keeps a connection from reading a database.
enum class SqliteObstacle {
  None,    // it can be read; or it is none, or a damaged one
  Use,     // a program uses it, or left it in the middle of a change
  NoRight  // a file beside it would have to be made or written, which is not allowed
};
SqliteObstacle sqlite_obstacle_to_reading(sqlite3* handle);

// Whether the file may not be written, or a journal beside it keeps the connection from that.
bool sqlite_only_reads(sqlite3* handle);

// How long, in milliseconds, statements wait for a program that has the database locked.
void sqlite_wait_for_others(sqlite3* handle, int milliseconds);

// The library's version, such as "3.40.1".
std::string sqlite_libversion();

// Runs a statement. `error` is the library's message if it failed, which leaves the table empty, else "".
SqliteTable sqlite_get_table(sqlite3* handle, const std::string& sql, std::string& error);

// RowCount of the table that the latest call in the process gave, 0 if that failed.
std::int32_t number_of_rows_from_last_call();

}  // namespace vorlent
