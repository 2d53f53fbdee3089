// A thin owner of an SQLite connection and its prepared statements.
//
// Every failure is a Failure with the database file and SQLite's reason; only running out of memory is
// std::bad_alloc. Text goes in and out as UTF-8. A connection and all that belongs to it are used from one
// thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Failure.h"

struct sqlite3;
struct sqlite3_context;
struct sqlite3_stmt;
struct sqlite3_value;

namespace vorlent {

class SqliteDatabase;

struct CloseSqlite {
  // Statements that are still held lose their locks on the file at once.
  void operator()(sqlite3* connection) const;
};
struct FinalizeSqlite {
  void operator()(sqlite3_stmt* statement) const;
};
using SqliteHandle = std::unique_ptr<sqlite3, CloseSqlite>;
using SqliteStatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeSqlite>;

// A prepared statement, to be run any number of times. When its database is gone it may only be destroyed.
class SqliteStatement {
 public:
  SqliteStatement() = default;
  // `sql` is exactly one statement: text after it, be it a comment, raises as what isn't valid does.
  SqliteStatement(SqliteDatabase& database, std::string_view sql);

  // Sets parameters, from 1. Text must stay as it is until the statement has been run.
  SqliteStatement& Bind(int parameter, std::int64_t value);
  SqliteStatement& Bind(int parameter, std::string_view text);

  // The next row; false after the last, where the statement is ready to be run again.
  bool Step();
  // Runs a statement that gives no rows, or whose rows are of no interest.
  void Run();
  // Runs a statement that gives one number: that of its first row, 0 without a row.
  std::int64_t RunForNumber();
  // Ends a walk before its last row.
  void Reset();

  // 0 for a statement that gives no rows. What has changed in the database shows from the first step on.
  int ColumnCount() const;
  // The name of a column, from 0 as below.
  std::string ColumnName(int column) const;

  // Columns of the present row. A text is valid until the next step, and "" for NULL.
  std::int64_t Number(int column) const;
  bool IsReal(int column) const;
  double Real(int column) const;
  std::string_view Text(int column) const;

 private:
  SqliteDatabase* database_ = nullptr;
  SqliteStatementHandle statement_;
};

// A walk over the rows of a statement whose parameters are set. However it ends, the statement is ready to be
// run again.
class SqliteWalk {
 public:
  explicit SqliteWalk(SqliteStatement& statement) : statement_(statement) {}
  ~SqliteWalk() { statement_.Reset(); }
  SqliteWalk(const SqliteWalk&) = delete;
  SqliteWalk& operator=(const SqliteWalk&) = delete;

  bool Step() { return statement_.Step(); }
  std::int64_t Number(int column) const { return statement_.Number(column); }
  std::string_view Text(int column) const { return statement_.Text(column); }

 private:
  SqliteStatement& statement_;
};

class SqliteDatabase {
 public:
  // What the numbers of failures are. Of the runtime: DiskFull, PathAccess for a file that may not be opened
  // or written, PermissionDenied for one that another program holds, DeviceIo for the rest. Or SQLite's
  // primary result codes.
  enum class Numbers { OfTheRuntime, OfSqlite };

  // Opens a database given by its Windows path, and makes it if it isn't there. Waits up to `timeout`
  // milliseconds for another program's lock.
  SqliteDatabase(std::string_view path, int timeout);
  // As above, but none is made.
  static SqliteDatabase OpenExisting(std::string_view path, int timeout, Numbers numbers);
  // Takes over a connection. `path` is the database's own, whatever copy of it is connected.
  static SqliteDatabase Adopt(std::string_view path, SqliteHandle connection, int timeout, Numbers numbers);
  // Opens one to be looked at while no program writes to it: nothing changes on the disk, no lock is held.
  static SqliteDatabase OpenToLook(std::string_view path);

  // Runs statements one after the other.
  void Execute(const std::string& statements);
  // What begins and ends transactions, which happens for every item: it stays prepared.
  enum class Control { Begin, Commit, BeginPart, CommitPart };
  void Execute(Control control);
  // The number of the row inserted last.
  std::int64_t LastRow() const;
  // How many rows the last INSERT, UPDATE or DELETE touched.
  std::int64_t ChangedRows() const;

  bool InTransaction() const;

  // Makes a function known to this connection's statements. It must not raise.
  using Function = void (*)(sqlite3_context*, int, sqlite3_value**);
  void AddFunction(const char* name, int arguments, Function function);

  // Whatever the connection was opened for, its end now leaves nothing in a log.
  void FinishLogAtEnd();

 private:
  friend class SqliteStatement;
  friend class SqliteTransaction;

  SqliteDatabase(std::string_view path, const std::string& file, int flags, Numbers numbers);
  SqliteDatabase(std::string_view path, SqliteHandle connection, Numbers numbers)
      : path_(path), numbers_(numbers), handle_(std::move(connection)) {}

  SqliteStatementHandle Prepare(std::string_view sql) const;
  // Raises what a result other than "done" and "row" means.
  void Check(int result) const;
  [[noreturn]] void Raise(int result, Cause why) const;

  std::string path_;
  Numbers numbers_;
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
