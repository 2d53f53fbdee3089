// Reading an SQLite database: one statement at a time, its whole result in memory as text.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Common/DatabaseSnapshot.h"
#include "Common/KeyedList.h"
#include "Common/NumberText.h"
#include "Common/qzelSQLiteBinding.h"

namespace vorlent {

// One data row of a result: a keyed list of its values, the key of each the name of its column. The values
// are not copied out of the result, which the row keeps alive.
class SqliteRow {
 public:
  // A result as all of its rows see it.
  struct Result {
    SqliteTable table;
    KeyedList<std::int32_t> columns;  // number from 0 by name
  };

  // `row` is a row of the table, from 1.
  SqliteRow(std::shared_ptr<const Result> result, std::int32_t row) : result_(std::move(result)), row_(row) {}

  std::int32_t Count() const { return result_->columns.Count(); }
  bool HasKey(std::string_view column) const { return result_->columns.HasKey(column); }

  // The value at a position from 1, or of a column name without regard to case; "" for NULL. Raises as
  // KeyedList does. Valid as long as the row or a copy of it.
  std::string_view Item(std::int32_t position) const { return Text(result_->columns.Item(position)); }
  std::string_view Item(std::string_view column) const { return Text(result_->columns.Item(column)); }

  // The column name at a position.
  std::string_view Key(std::int32_t position) const { return result_->columns.Key(position); }

 private:
  std::string_view Text(std::int32_t column) const { return result_->table.Text(row_, column); }

  std::shared_ptr<const Result> result_;
  std::int32_t row_;
};

// One connection. The order of calls is: set `file`, openFile, any number of execute, closeFile. The
// destructor closes nothing.
//
// Columns, Rows and each row stay as they are when a further statement runs. Positions count from 1.
class qzelSQLite {
 public:
  // Windows path of the database file.
  std::string file;

  // False without a file name or a handle. A file that can't be opened or isn't a database shows only when
  // the first statement fails. By today's rules one that another program has in use is read from a snapshot.
  bool openFile();

  // False if never opened.
  bool closeFile();

  // As of when the connection reads what another program uses, in local time; nothing if it reads what there
  // is.
  std::optional<DateTime> SnapshotMoment() const;

  // Runs a statement. False if there is no connection, which changes nothing, or if the statement failed;
  // then LastError tells why, and there are no columns and rows. By the rules of old more than 32,767 data
  // rows raise the overflow failure; two columns of one name raise KeyExists. Columns and Rows are as far as
  // they came then.
  bool execute(const std::string& sql);

  // The message of the last execute, "" if it succeeded.
  const std::string& LastError() const { return lastError_; }

  std::int32_t ColumnsCount() { return Columns()->Count(); }
  // "" for a position out of range.
  std::string Column(std::int32_t pos);
  // The column names without keys; a result without rows has none.
  std::shared_ptr<const KeyedList<std::string>> Columns();
  // The column names, joined.
  template <class Separator>
  std::string ColumnsString(const Separator& separator) {
    return JoinColumns(AsText(separator));
  }

  std::int32_t RowsCount() { return Rows()->Count(); }
  // Nothing for a position out of range.
  std::optional<SqliteRow> Row(std::int32_t pos);
  std::shared_ptr<const KeyedList<SqliteRow>> Rows();
  // The values of a row, joined; "" for a position out of range. A character is a separator, no position.
  template <class Separator>
  std::string RowString(std::int32_t pos, const Separator& separator) {
    return JoinRow(pos, AsText(separator));
  }
  template <class Separator>
  std::string RowString(char pos, const Separator& separator) = delete;

  // Data rows of the latest statement of any connection: the size of its result, not how many it changed.
  std::int32_t RowsAffected() const;

  std::string Version() const { return sqlite_libversion(); }

 private:
  template <class Value>
  static std::string AsText(const Value& value) {
    if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
      return std::string(std::string_view(value));
    } else if constexpr (std::is_same_v<Value, char>) {
      return std::string(1, value);
    } else {
      return NumberText(value);
    }
  }
  std::string JoinColumns(std::string_view separator);
  std::string JoinRow(std::int32_t pos, std::string_view separator);

  std::unique_ptr<DatabaseSnapshot> snapshot_;  // null if the file itself is read
  sqlite3* handle_ = nullptr;                   // stays set after closeFile
  bool closed_ = false;
  std::string lastError_;
  std::shared_ptr<KeyedList<std::string>> columns_;  // made on first use, as rows_
  std::shared_ptr<KeyedList<SqliteRow>> rows_;
};

}  // namespace vorlent
