#include "Standalone/Sqlite.h"

#include <sqlite3.h>

#include <utility>

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Failure.h"
#include "Platform/NativePaths.h"

namespace vorlent {

namespace {

ErrorNumber NumberOf(int result) {
  switch (result & 0xFF) {
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

SqliteStatementHandle Prepared(const SqliteDatabase& database, std::string_view sql) {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v3(database.Handle(), sql.data(), ToInt32(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  if (result != SQLITE_OK) database.RaiseFailure(result);
  return SqliteStatementHandle(prepared);
}

// A path within a URI, where these characters have a meaning.
std::string UriPath(std::string path) {
  for (const auto& [meaning, code] : {std::pair{"%", "%25"}, {"?", "%3F"}, {"#", "%23"}})
    ReplaceText(path, meaning, code);
  return path;
}

}  // namespace

void CloseSqlite::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

void FinalizeSqlite::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, std::string_view sql)
    : database_(&database), statement_(Prepared(database, sql)) {}

SqliteStatement& SqliteStatement::Bind(int parameter, std::int64_t value) {
  Check(sqlite3_bind_int64(statement_.get(), parameter, value));
  return *this;
}

SqliteStatement& SqliteStatement::Bind(int parameter, std::string_view text) {
  // A null pointer would bind NULL, and an empty view may hold one.
  const char* bytes = text.data() == nullptr ? "" : text.data();
  Check(sqlite3_bind_text64(statement_.get(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  sqlite3_reset(statement_.get());
  if (result != SQLITE_DONE) database_->RaiseFailure(result);
  return false;
}

void SqliteStatement::Run() {
  while (Step()) {
  }
}

void SqliteStatement::Reset() {
  sqlite3_reset(statement_.get());
}

std::int64_t SqliteStatement::Number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string_view SqliteStatement::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (text == nullptr) return {};
  return std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

void SqliteStatement::Check(int result) const {
  if (result != SQLITE_OK) database_->RaiseFailure(result);
}

SqliteDatabase::SqliteDatabase(std::string_view path, int timeout)
    : SqliteDatabase(path, os::ToNativePath(path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) {
  sqlite3_busy_timeout(handle_.get(), timeout);
}

SqliteDatabase SqliteDatabase::OpenToLook(std::string_view path) {
  return {path, "file:" + UriPath(os::ToNativePath(path)) + "?immutable=1",
          SQLITE_OPEN_READONLY | SQLITE_OPEN_URI};
}

SqliteDatabase::SqliteDatabase(std::string_view path, const std::string& file, int flags) : path_(path) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(opened);
  if (result != SQLITE_OK) RaiseFailure(result);
  sqlite3_extended_result_codes(opened, 1);
}

void SqliteDatabase::Execute(const std::string& statements) {
  const int result = sqlite3_exec(handle_.get(), statements.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) RaiseFailure(result);
}

void SqliteDatabase::Execute(Control control) {
  static constexpr std::array<std::string_view, 4> kTexts = {"BEGIN IMMEDIATE", "COMMIT", "SAVEPOINT part",
                                                             "RELEASE part"};
  const auto index = static_cast<std::size_t>(control);
  SqliteStatementHandle& statement = controls_[index];
  if (statement == nullptr) statement = Prepared(*this, kTexts[index]);
  sqlite3_step(statement.get());
  const int result = sqlite3_reset(statement.get());
  if (result != SQLITE_OK) RaiseFailure(result);
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

void SqliteDatabase::RaiseFailure(int result) const {
  const char* reason = handle_ == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(handle_.get());
  throw Failure(NumberOf(result), path_ + ": " + reason);
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
  sqlite3_exec(database_.Handle(), takeBack, nullptr, nullptr, nullptr);
}

void SqliteTransaction::Commit() {
  using Control = SqliteDatabase::Control;
  database_.Execute(nested_ ? Control::CommitPart : Control::Commit);
  open_ = false;
}

}  // namespace vorlent
