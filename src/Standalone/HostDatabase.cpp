#include "Standalone/HostDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Standalone/ConnectionText.h"
#include "Standalone/LiftedQuery.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

namespace {

// Prepared statements that a connection keeps for the next query of the same form.
constexpr std::size_t kIdleStatements = 8;

[[noreturn]] void RaiseClosed() {
  throw Failure(SQLITE_MISUSE, "the database connection is not open");
}

// Text of a column of the present row. A float gets the plain form of its number, which SQLite's own form
// ("1.0") isn't.
std::string ColumnText(sqlite3_stmt* statement, int column) {
  if (sqlite3_column_type(statement, column) == SQLITE_FLOAT) {
    return NumberText(sqlite3_column_double(statement, column));
  }
  if (sqlite3_column_type(statement, column) == SQLITE_NULL) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  if (text == nullptr) throw std::bad_alloc();
  return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

}  // namespace

class StandaloneDatabase::Connection {
 public:
  Connection(SqliteHandle handle, std::string path) : handle_(std::move(handle)), path_(std::move(path)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Recordsets that are still held lose their locks on the file at once.
  ~Connection() {
    for (auto* s = sqlite3_next_stmt(handle_.get(), nullptr); s != nullptr;
         s = sqlite3_next_stmt(handle_.get(), s)) {
      sqlite3_reset(s);
    }
  }

  // Nothing if the system can't open the file.
  static std::shared_ptr<Connection> Open(const std::string& path, int timeout) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(os::ToNativePath(path).c_str(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteHandle handle(opened);
    if (result == SQLITE_NOMEM) throw std::bad_alloc();
    if (result != SQLITE_OK) return nullptr;
    sqlite3_busy_timeout(opened, timeout);
    return std::make_shared<Connection>(std::move(handle), path);
  }

  SqliteStatementHandle Prepare(std::string_view sql) {
    // SQLite itself reads up to a zero character and would pass over what follows.
    if (sql.find('\0') != std::string_view::npos)
      throw Failure(SQLITE_ERROR, "zero character in a statement");
    sqlite3_stmt* prepared = nullptr;
    const char* rest = nullptr;
    Check(sqlite3_prepare_v2(handle_.get(), sql.data(), ToInt32(sql.size()), &prepared, &rest));
    SqliteStatementHandle statement(prepared);
    if (statement == nullptr) throw Failure(SQLITE_ERROR, "no statement");
    if (std::any_of(rest, sql.data() + sql.size(),
                    [](char c) { return static_cast<unsigned char>(c) > ' '; })) {
      throw Failure(SQLITE_ERROR, "text behind the statement: " + std::string(rest, sql.data() + sql.size()));
    }
    return statement;
  }

  // As Prepare, but one that GiveBack kept if there is one.
  SqliteStatementHandle Take(const std::string& sql) {
    const auto found =
        std::find_if(idle_.begin(), idle_.end(), [&](const auto& idle) { return idle.first == sql; });
    if (found == idle_.end()) return Prepare(sql);
    SqliteStatementHandle statement = std::move(found->second);
    idle_.erase(found);
    return statement;
  }

  void GiveBack(std::string sql, SqliteStatementHandle statement) {
    sqlite3_reset(statement.get());
    sqlite3_clear_bindings(statement.get());
    if (idle_.size() == kIdleStatements) idle_.erase(idle_.begin());
    idle_.emplace_back(std::move(sql), std::move(statement));
  }

  // Whether there is a further row.
  bool Step(sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) Check(result);
    return false;
  }

  void Check(int result) const {
    if (result == SQLITE_OK) return;
    if (result == SQLITE_NOMEM) throw std::bad_alloc();
    throw Failure(result, path_ + ": " + sqlite3_errmsg(handle_.get()));
  }

 private:
  SqliteHandle handle_;
  std::string path_;
  std::vector<std::pair<std::string, SqliteStatementHandle>> idle_;
};

class StandaloneDatabase::Recordset final : public HostRecordset {
 public:
  Recordset(const std::shared_ptr<Connection>& connection, LiftedQuery query)
      : connection_(connection), sql_(std::move(query.sql)), lifted_(!query.values.empty()) {
    statement_ = lifted_ ? connection->Take(sql_) : connection->Prepare(sql_);
    if (sqlite3_column_count(statement_.get()) == 0) throw Failure(SQLITE_ERROR, "not a query: " + sql_);
    for (std::size_t i = 0; i < query.values.size(); ++i) {
      const std::string& value = query.values[i];
      connection->Check(sqlite3_bind_text(statement_.get(), static_cast<int>(i) + 1, value.data(),
                                          ToInt32(value.size()), SQLITE_TRANSIENT));
    }
  }

  ~Recordset() override {
    const auto connection = connection_.lock();
    if (lifted_ && connection != nullptr) connection->GiveBack(std::move(sql_), std::move(statement_));
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
    place_ = Place::Behind;
    if (StepFromStart()) place_ = Place::OnRow;
  }

  void MoveNext() override {
    if (place_ == Place::BeforeFirst) return MoveFirst();
    if (place_ == Place::Behind) return;
    ++row_;
    if (inMemory_) {
      place_ = PlaceInMemory();
      return;
    }
    place_ = Place::Behind;
    if (Opened()->Step(statement_.get())) place_ = Place::OnRow;
  }

  std::string Field(std::string_view name) override {
    Opened();
    if (place_ != Place::OnRow)
      throw Failure(SQLITE_RANGE, "no row to take '" + std::string(name) + "' from");
    const std::size_t column = ColumnOf(name);
    if (inMemory_) return cells_[row_ * columns_.size() + column];
    return ColumnText(statement_.get(), static_cast<int>(column));
  }

  // SQLite has no columns of dates: a time is the number that it is kept as.
  std::string FieldDate(std::string_view name) override { return Field(name); }

  bool EndOfRows() override { return place_ == Place::Behind; }

 private:
  enum class Place { BeforeFirst, OnRow, Behind };

  std::shared_ptr<Connection> Opened() const {
    auto connection = connection_.lock();
    if (connection == nullptr) RaiseClosed();
    return connection;
  }

  // Runs the query anew and tells whether it has a row. The columns are named here, since a schema that has
  // changed in the meantime may have changed them.
  bool StepFromStart() {
    const auto connection = Opened();
    sqlite3_reset(statement_.get());
    const bool hasRow = connection->Step(statement_.get());
    columns_.clear();
    for (int i = 0; i < sqlite3_column_count(statement_.get()); ++i) {
      columns_.emplace_back(sqlite3_column_name(statement_.get(), i));
    }
    return hasRow;
  }

  // The walk goes on from memory at the row where it stood.
  void TakeIntoMemory() {
    const auto connection = Opened();
    std::vector<std::string> cells;
    for (bool more = StepFromStart(); more; more = connection->Step(statement_.get())) {
      for (int i = 0; i < static_cast<int>(columns_.size()); ++i) {
        cells.push_back(ColumnText(statement_.get(), i));
      }
    }
    cells_ = std::move(cells);
    inMemory_ = true;
    if (place_ == Place::OnRow) place_ = PlaceInMemory();
  }

  Place PlaceInMemory() const {
    return row_ < cells_.size() / columns_.size() ? Place::OnRow : Place::Behind;
  }

  std::size_t ColumnOf(std::string_view name) const {
    const auto found = std::find_if(columns_.begin(), columns_.end(),
                                    [&](const auto& column) { return EqualNoCase(column, name); });
    if (found == columns_.end()) throw Failure(SQLITE_RANGE, "no column '" + std::string(name) + "'");
    return static_cast<std::size_t>(found - columns_.begin());
  }

  std::weak_ptr<Connection> connection_;
  std::string sql_;
  bool lifted_;
  SqliteStatementHandle statement_;
  std::vector<std::string> columns_;
  Place place_ = Place::BeforeFirst;
  std::size_t row_ = 0;
  bool inMemory_ = false;
  std::vector<std::string> cells_;  // row by row, once in memory
};

StandaloneDatabase::~StandaloneDatabase() = default;

bool StandaloneDatabase::Open(std::string_view kind, std::string_view connection) {
  Close();
  const ConnectionText text = ParseConnectionText(std::string(connection));
  if (!EqualNoCase(kind, "ODBC") || !text.timeout.has_value() || !FileExists(text.database)) return false;
  connection_ = Connection::Open(text.database, *text.timeout);
  return connection_ != nullptr;
}

HostRecordsetPtr StandaloneDatabase::Query(std::string_view sql, std::int32_t) {
  Opened();
  return std::make_shared<Recordset>(connection_, LiftLiterals(sql));
}

bool StandaloneDatabase::Execute(std::string_view sql) {
  Connection& connection = Opened();
  const SqliteStatementHandle statement = connection.Prepare(sql);
  while (connection.Step(statement.get())) {
  }
  return true;
}

void StandaloneDatabase::Close() {
  connection_.reset();
}

StandaloneDatabase::Connection& StandaloneDatabase::Opened() const {
  if (connection_ == nullptr) RaiseClosed();
  return *connection_;
}

}  // namespace vorlent
