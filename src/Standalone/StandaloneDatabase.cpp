#include "Standalone/StandaloneDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/CalendarFiles.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Standalone/ConnectionText.h"

namespace vorlent {

namespace {

[[noreturn]] void RaiseClosed() {
  throw Failure(SQLITE_MISUSE, "the database connection is not open");
}

// Text of a column of the present row. A float gets the plain form of its number, which SQLite's own form
// ("1.0") isn't.
std::string ColumnText(const SqliteStatement& row, int column) {
  return row.IsReal(column) ? NumberText(row.Real(column)) : std::string(row.Text(column));
}

class StandaloneRecordset final : public HostRecordset {
 public:
  StandaloneRecordset(const std::shared_ptr<SqliteDatabase>& connection, std::string_view sql)
      : connection_(connection), statement_(*connection, sql) {
    if (statement_.ColumnCount() == 0) throw Failure(SQLITE_ERROR, "not a query: " + std::string(sql));
  }

  std::int32_t RecordCount() override {
    if (!inMemory_) TakeIntoMemory();
    return ToInt32(cells_.size() / columns_.size());
  }

  void MoveFirst() override {
    row_ = 0;
    if (inMemory_) {
      place_ = PlaceInMemory();
      return;
    }
    place_ = Place::AfterLast;
    if (StepFromStart()) place_ = Place::OnRow;
  }

  void MoveNext() override {
    if (place_ == Place::BeforeFirst) return MoveFirst();
    if (place_ == Place::AfterLast) return;
    ++row_;
    if (inMemory_) {
      place_ = PlaceInMemory();
      return;
    }
    place_ = Place::AfterLast;
    RequireOpened();
    if (statement_.Step()) place_ = Place::OnRow;
  }

  std::string Field(std::string_view name) override {
    RequireOpened();
    if (place_ != Place::OnRow)
      throw Failure(SQLITE_RANGE, "no row to take '" + std::string(name) + "' from");
    const std::size_t column = ColumnOf(name);
    if (inMemory_) return cells_[row_ * columns_.size() + column];
    return ColumnText(statement_, static_cast<int>(column));
  }

  // SQLite has no columns of dates: a time is the number that it is kept as.
  std::string FieldDate(std::string_view name) override { return Field(name); }

  bool EndOfRows() override { return place_ == Place::AfterLast; }

 private:
  enum class Place { BeforeFirst, OnRow, AfterLast };

  void RequireOpened() const {
    if (connection_.expired()) RaiseClosed();
  }

  // Runs the query anew and tells whether it has a row. The columns are named here, since a schema that has
  // changed in the meantime may have changed them.
  bool StepFromStart() {
    RequireOpened();
    statement_.Reset();
    const bool hasRow = statement_.Step();
    columns_.clear();
    for (int i = 0; i < statement_.ColumnCount(); ++i)
      columns_.push_back(statement_.ColumnName(i));
    return hasRow;
  }

  // The walk goes on from memory at the row where it stood.
  void TakeIntoMemory() {
    std::vector<std::string> cells;
    for (bool more = StepFromStart(); more; more = statement_.Step()) {
      for (int i = 0; i < static_cast<int>(columns_.size()); ++i)
        cells.push_back(ColumnText(statement_, i));
    }
    cells_ = std::move(cells);
    inMemory_ = true;
    if (place_ == Place::OnRow) place_ = PlaceInMemory();
  }

  Place PlaceInMemory() const {
    return row_ < cells_.size() / columns_.size() ? Place::OnRow : Place::AfterLast;
  }

  std::size_t ColumnOf(std::string_view name) const {
    const auto found = std::find_if(columns_.begin(), columns_.end(),
                                    [&](const auto& column) { return EqualNoCase(column, name); });
    if (found == columns_.end()) throw Failure(SQLITE_RANGE, "no column '" + std::string(name) + "'");
    return static_cast<std::size_t>(found - columns_.begin());
  }

  std::weak_ptr<SqliteDatabase> connection_;
  SqliteStatement statement_;
  std::vector<std::string> columns_;
  Place place_ = Place::BeforeFirst;
  std::size_t row_ = 0;
  bool inMemory_ = false;
  std::vector<std::string> cells_;  // row by row, once in memory
};

}  // namespace

StandaloneDatabase::~StandaloneDatabase() = default;

bool StandaloneDatabase::Open(std::string_view kind, std::string_view connection) {
  Close();
  const ConnectionText text = ParseConnectionText(std::string(connection));
  if (!EqualNoCase(kind, "ODBC") || !text.timeout.has_value() || !FileExists(text.database)) return false;
  return Swallow([&] {
    if (IsThunderbirdCalendarFile(text.database)) {
      lightning_ = std::make_unique<LightningDatabase>(text.database, *text.timeout, *shelf_);
      connection_ = lightning_->Connection();
      return;
    }
    connection_ = std::make_shared<SqliteDatabase>(
        SqliteDatabase::OpenExisting(text.database, *text.timeout, SqliteDatabase::Numbers::OfSqlite));
  });
}

HostRecordsetPtr StandaloneDatabase::Query(std::string_view sql, std::int32_t) {
  return std::make_shared<StandaloneRecordset>(Opened(), sql);
}

bool StandaloneDatabase::Execute(std::string_view sql) {
  if (lightning_ == nullptr) {
    SqliteStatement(*Opened(), sql).Run();
  } else {
    lightning_->Execute(sql);
    connection_ = lightning_->Connection();
  }
  return true;
}

void StandaloneDatabase::Close() {
  if (const auto finished = std::exchange(lightning_, nullptr)) finished->Finish();
  connection_.reset();
}

const std::shared_ptr<SqliteDatabase>& StandaloneDatabase::Opened() const {
  if (connection_ == nullptr) RaiseClosed();
  return connection_;
}

}  // namespace vorlent
