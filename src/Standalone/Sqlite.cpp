#include "Standalone/Sqlite.h"

#include <sqlite3.h>

#include <algorithm>
#include <new>
#include <utility>

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Failure.h"
#include "Platform/NativePaths.h"

namespace vorlent {

namespace {

ErrorNumber RuntimeNumberOf(int primaryCode) {
  switch (primaryCode) {
    case SQLITE_FULL:
      return ErrorNumber::DiskFull;
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return ErrorNumber::PathAccess;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return ErrorNumber::PermissionDenied;
    default:
      return ErrorNumber::DeviceIo;
  }
}

Hint HintOf(ErrorNumber number) {
  switch (number) {
    case ErrorNumber::DiskFull:
      return Hint::MakeRoom;
    case ErrorNumber::PathAccess:
      return Hint::AllowAccess;
    case ErrorNumber::PermissionDenied:
      return Hint::CloseOther;
    default:
      return Hint::None;
  }
}

// A path within a URI, where these characters have a meaning.
std::string UriPath(std::string path) {
  for (const auto& [meaning, code] : {std::pair{"%", "%25"}, {"?", "%3F"}, {"#", "%23"}})
    ReplaceText(path, meaning, code);
  return path;
}

}  // namespace

void CloseSqlite::operator()(sqlite3* connection) const {
  for (auto* statement = sqlite3_next_stmt(connection, nullptr); statement != nullptr;
       statement = sqlite3_next_stmt(connection, statement)) {
    sqlite3_reset(statement);
  }
  sqlite3_close_v2(connection);
}

void FinalizeSqlite::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, std::string_view sql)
    : database_(&database), statement_(database.Prepare(sql)) {}

SqliteStatement& SqliteStatement::Bind(int parameter, std::int64_t value) {
  database_->Check(sqlite3_bind_int64(statement_.get(), parameter, value));
  return *this;
}

SqliteStatement& SqliteStatement::Bind(int parameter, std::string_view text) {
  // A null pointer would bind NULL, and an empty view may hold one.
  const char* bytes = text.data() == nullptr ? "" : text.data();
  database_->Check(
      sqlite3_bind_text64(statement_.get(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  sqlite3_reset(statement_.get());
  database_->Check(result);
  return false;
}

void SqliteStatement::Run() {
  while (Step()) {
  }
}

std::int64_t SqliteStatement::RunForNumber() {
  SqliteWalk row(*this);
  return row.Step() ? row.Number(0) : 0;
}

void SqliteStatement::Reset() {
  sqlite3_reset(statement_.get());
}

int SqliteStatement::ColumnCount() const {
  return sqlite3_column_count(statement_.get());
}

std::string SqliteStatement::ColumnName(int column) const {
  const char* name = sqlite3_column_name(statement_.get(), column);
  if (name == nullptr) throw std::bad_alloc();
  return name;
}

std::int64_t SqliteStatement::Number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

bool SqliteStatement::IsReal(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_FLOAT;
}

double SqliteStatement::Real(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}

std::string_view SqliteStatement::Text(int column) const {
  if (sqlite3_column_type(statement_.get(), column) == SQLITE_NULL) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (text == nullptr) throw std::bad_alloc();
  return std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

SqliteDatabase::SqliteDatabase(std::string_view path, int timeout)
    : SqliteDatabase(path, os::ToNativePath(path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                     Numbers::OfTheRuntime) {
  sqlite3_busy_timeout(handle_.get(), timeout);
}

SqliteDatabase SqliteDatabase::OpenExisting(std::string_view path, int timeout, Numbers numbers) {
  SqliteDatabase database(path, os::ToNativePath(path), SQLITE_OPEN_READWRITE, numbers);
  sqlite3_busy_timeout(database.handle_.get(), timeout);
  return database;
}

SqliteDatabase SqliteDatabase::Adopt(std::string_view path, SqliteHandle connection, int timeout,
                                     Numbers numbers) {
  SqliteDatabase database(path, std::move(connection), numbers);
  sqlite3_busy_timeout(database.handle_.get(), timeout);
  return database;
}

SqliteDatabase SqliteDatabase::OpenToLook(std::string_view path) {
  return {path, "file:" + UriPath(os::ToNativePath(path)) + "?immutable=1",
          SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, Numbers::OfTheRuntime};
}

SqliteDatabase::SqliteDatabase(std::string_view path, const std::string& file, int flags, Numbers numbers)
    : path_(path), numbers_(numbers) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(opened);
  Check(result);
}

void SqliteDatabase::Execute(const std::string& statements) {
  Check(sqlite3_exec(handle_.get(), statements.c_str(), nullptr, nullptr, nullptr));
}

void SqliteDatabase::Execute(Control control) {
  static constexpr std::array<std::string_view, 4> kTexts = {"BEGIN IMMEDIATE", "COMMIT", "SAVEPOINT part",
                                                             "RELEASE part"};
  const auto index = static_cast<std::size_t>(control);
  SqliteStatementHandle& statement = controls_[index];
  if (statement == nullptr) statement = Prepare(kTexts[index]);
  sqlite3_step(statement.get());
  Check(sqlite3_reset(statement.get()));
}

std::int64_t SqliteDatabase::LastRow() const {
  return sqlite3_last_insert_rowid(handle_.get());
}

std::int64_t SqliteDatabase::ChangedRows() const {
  return sqlite3_changes64(handle_.get());
}

bool SqliteDatabase::InTransaction() const {
  return sqlite3_get_autocommit(handle_.get()) == 0;
}

void SqliteDatabase::AddFunction(const char* name, int arguments, Function function) {
  Check(sqlite3_create_function_v2(handle_.get(), name, arguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                   nullptr, function, nullptr, nullptr, nullptr));
}

void SqliteDatabase::FinishLogAtEnd() {
  Check(sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr));
}

SqliteStatementHandle SqliteDatabase::Prepare(std::string_view sql) const {
  // SQLite itself reads up to a zero character and would pass over what follows.
  if (sql.find('\0') != std::string_view::npos)
    Raise(SQLITE_ERROR, {.reason = "zero character in a statement"});
  sqlite3_stmt* prepared = nullptr;
  const char* rest = nullptr;
  Check(sqlite3_prepare_v2(handle_.get(), sql.data(), ToInt32(sql.size()), &prepared, &rest));
  SqliteStatementHandle statement(prepared);
  if (statement == nullptr) Raise(SQLITE_ERROR, {.reason = "no statement"});
  const std::string_view after = sql.substr(static_cast<std::size_t>(rest - sql.data()));
  if (std::ranges::any_of(after, [](char c) { return static_cast<unsigned char>(c) > ' '; }))
    Raise(SQLITE_ERROR, {.reason = "text behind the statement: " + std::string(after)});
  return statement;
}

void SqliteDatabase::Check(int result) const {
  if (result == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) return;
  if (result == SQLITE_NOMEM) throw std::bad_alloc();
  const char* reason = handle_ == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(handle_.get());
  Raise(result, {path_, reason});
}

void SqliteDatabase::Raise(int result, Cause why) const {
  constexpr int kPrimaryCode = 0xFF;
  const int code = result & kPrimaryCode;
  const ErrorNumber number = RuntimeNumberOf(code);
  if (!why.path.empty()) why.hint = HintOf(number);
  throw Failure(numbers_ == Numbers::OfSqlite ? code : static_cast<int>(number), std::move(why));
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database)
    : database_(database), nested_(database.InTransaction()) {
  using Control = SqliteDatabase::Control;
  database_.Execute(nested_ ? Control::BeginPart : Control::Begin);
}

SqliteTransaction::~SqliteTransaction() {
  // A failure such as a full disk may have ended the whole transaction already.
  if (!open_ || !database_.InTransaction()) return;
  const char* takeBack = nested_ ? "ROLLBACK TO part; RELEASE part" : "ROLLBACK";
  sqlite3_exec(database_.handle_.get(), takeBack, nullptr, nullptr, nullptr);
}

void SqliteTransaction::Commit() {
  using Control = SqliteDatabase::Control;
  database_.Execute(nested_ ? Control::CommitPart : Control::Commit);
  open_ = false;
}

}  // namespace vorlent
