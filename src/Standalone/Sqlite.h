// A thin owner of an SQLite connection and its prepared statements.
//
// Every failure is a Failure whose text names the database file and SQLite's reason: DiskFull, PathAccess for
// a file that may not be opened or written, PermissionDenied for one that another program holds, DeviceIo for
// the rest. Text goes in and out as UTF-8.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace vorlent {

struct CloseSqlite {
  void operator()(sqlite3* connection) const;
};
struct FinalizeSqlite {
  void operator()(sqlite3_stmt* statement) const;
};
using SqliteHandle = std::unique_ptr<sqlite3, CloseSqlite>;
using SqliteStatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeSqlite>;

class SqliteDatabase;

// A prepared statement, to be run any number of times. It may not outlive its database.
class SqliteStatement {
 public:
  SqliteStatement() = default;
  SqliteStatement(SqliteDatabase& database, std::string_view sql);

  // Sets parameters, from 1. Text must stay as it is until the statement has been run.
  SqliteStatement& Bind(int parameter, std::int64_t value);
  SqliteStatement& Bind(int parameter, std::string_view text);

  // The next row; false behind the last, where the statement is ready to be run again.
  bool Step();
  // Runs a statement that gives no rows, or whose rows are of no interest.
  void Run();
  // Ends a walk before its last row.
  void Reset();

  // Columns of the present row, from 0. A text is valid until the next step.
  std::int64_t Number(int column) const;
  std::string_view Text(int column) const;

 private:
  void Check(int result) const;

  SqliteDatabase* database_ = nullptr;
  SqliteStatementHandle statement_;
};

class SqliteDatabase {
 public:
  // Opens a database given by its Windows path, and makes it if it isn't there. Waits up to `timeout`
  // milliseconds for another program's lock.
  SqliteDatabase(std::string_view path, int timeout);
  // Opens one to be looked at while no program writes to it: nothing changes on the disk, no lock is held.
  static SqliteDatabase OpenToLook(std::string_view path);

  // Runs statements one behind the other.
  void Execute(const std::string& statements);
  // What begins and ends transactions, which happens for every item: it stays prepared.
  enum class Control { Begin, Commit, BeginPart, CommitPart };
  void Execute(Control control);
  // The number of the row inserted last.
  std::int64_t LastRow() const;
  // How many rows the last INSERT, UPDATE or DELETE touched.
  std::int64_t ChangedRows() const;

  bool InTransaction() const;

  [[noreturn]] void RaiseFailure(int result) const;
  sqlite3* Handle() const { return handle_.get(); }

 private:
  SqliteDatabase(std::string_view path, const std::string& file, int flags);

  std::string path_;
  SqliteHandle handle_;
  std::array<SqliteStatementHandle, 4> controls_;  // by their enumerators, each from its first use on
};

// A transaction from its making to Commit; without that it is rolled back. Within another it is a part that
// goes back by itself but becomes durable with the whole.
class SqliteTransaction {
 public:
  explicit SqliteTransaction(SqliteDatabase& database);
  ~SqliteTransaction();
  SqliteTransaction(const SqliteTransaction&) = delete;
  SqliteTransaction& operator=(const SqliteTransaction&) = delete;

  void Commit();

 private:
  SqliteDatabase& database_;
  bool nested_;
  bool open_ = true;
};

}  // namespace vorlent
