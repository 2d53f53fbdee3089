#include "Common/qzelSQLite.h"

#include <limits>
#include <utility>

#include "Common/Width.h"

namespace vorlent {

namespace {

// Rows are counted in 16 bits by the rules of old.
constexpr std::int32_t kMostRows = std::numeric_limits<std::int16_t>::max();

Failure TooManyRows(std::int32_t count) {
  return {ErrorNumber::Overflow, "overflow: the result has " + std::to_string(count) + " rows, at most " +
                                     std::to_string(kMostRows) + " fit"};
}

}  // namespace

bool qzelSQLite::openFile() {
  if (file.empty()) return false;
  snapshot_ = SnapshotIfKeptFrom(file);
  if (snapshot_ == nullptr) {
    sqlite_open(file, handle_);
  } else {
    sqlite_open_own(snapshot_->File(), handle_);
  }
  return handle_ != nullptr;
}

bool qzelSQLite::closeFile() {
  if (handle_ == nullptr) return false;
  if (!std::exchange(closed_, true)) sqlite_close(handle_);
  snapshot_.reset();
  return true;
}

std::optional<DateTime> qzelSQLite::SnapshotMoment() const {
  return snapshot_ == nullptr ? std::nullopt : snapshot_->MomentToTell();
}

bool qzelSQLite::execute(const std::string& sql) {
  if (handle_ == nullptr || closed_) return false;
  columns_ = std::make_shared<KeyedList<std::string>>();
  rows_ = std::make_shared<KeyedList<SqliteRow>>();
  auto result = std::make_shared<SqliteRow::Result>();
  result->table = sqlite_get_table(handle_, sql, lastError_);
  if (!lastError_.empty()) return false;
  if (number_of_rows_from_last_call() <= 0) return true;

  const SqliteTable& table = result->table;
  for (std::int32_t column = 0; column < table.ColumnCount(); ++column) {
    columns_->Add(std::string(table.Text(0, column)));
  }
  for (std::int32_t column = 0; column < table.ColumnCount(); ++column) {
    result->columns.Add(column, table.Text(0, column));
  }
  for (std::int32_t row = 1; row < table.RowCount(); ++row) {
    if (row > kMostRows && !WidthsAreAmple()) throw TooManyRows(table.RowCount() - 1);
    rows_->Add(SqliteRow(result, row));
  }
  return true;
}

std::string qzelSQLite::Column(std::int32_t pos) {
  return pos < 1 || pos > ColumnsCount() ? std::string() : columns_->Item(pos);
}

std::shared_ptr<const KeyedList<std::string>> qzelSQLite::Columns() {
  if (columns_ == nullptr) columns_ = std::make_shared<KeyedList<std::string>>();
  return columns_;
}

std::optional<SqliteRow> qzelSQLite::Row(std::int32_t pos) {
  if (pos < 1 || pos > RowsCount()) return std::nullopt;
  return rows_->Item(pos);
}

std::shared_ptr<const KeyedList<SqliteRow>> qzelSQLite::Rows() {
  if (rows_ == nullptr) rows_ = std::make_shared<KeyedList<SqliteRow>>();
  return rows_;
}

std::int32_t qzelSQLite::RowsAffected() const {
  const std::int32_t rows = number_of_rows_from_last_call();
  return rows > 0 ? rows - 1 : rows;
}

std::string qzelSQLite::JoinColumns(std::string_view separator) {
  std::string joined;
  for (std::int32_t pos = 1; pos <= ColumnsCount(); ++pos) {
    if (pos > 1) joined += separator;
    joined += columns_->Item(pos);
  }
  return joined;
}

std::string qzelSQLite::JoinRow(std::int32_t pos, std::string_view separator) {
  std::string joined;
  const std::optional<SqliteRow> row = Row(pos);
  for (std::int32_t column = 1; row && column <= row->Count(); ++column) {
    if (column > 1) joined += separator;
    joined += row->Item(column);
  }
  return joined;
}

}  // namespace vorlent
