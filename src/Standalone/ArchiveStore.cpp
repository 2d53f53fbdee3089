#include "Standalone/ArchiveStore.h"

#include <algorithm>
#include <array>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Standalone/FieldLines.h"

namespace vorlent {

namespace {

constexpr int kLockTimeout = 500;

// The fields of a record that have a column of their own; all others share one, a line for each.
struct ItemColumn {
  std::string_view key;
  std::string_view column;
};
constexpr std::array<ItemColumn, 7> kItemColumns = {{{"ID", "id"},
                                                     {"Type", "type"},
                                                     {"Text", "text"},
                                                     {"Keywords", "keywords"},
                                                     {"Date", "date"},
                                                     {"Owner", "owner"},
                                                     {"Log", "log"}}};

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS items (number INTEGER PRIMARY KEY AUTOINCREMENT, fingerprint INTEGER NOT "
    "NULL,"
    " id TEXT NOT NULL, type TEXT, text TEXT, keywords TEXT, date TEXT, owner TEXT, log TEXT,"
    " fields TEXT NOT NULL);"
    "CREATE INDEX IF NOT EXISTS items_by_id ON items (id);"
    "CREATE TABLE IF NOT EXISTS files (item INTEGER NOT NULL, key TEXT NOT NULL, name TEXT NOT NULL,"
    " missing INTEGER NOT NULL, PRIMARY KEY (item, key)) WITHOUT ROWID;"
    "CREATE INDEX IF NOT EXISTS files_missing ON files (item) WHERE missing;"
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS state (key TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;"
    // Words of what an item shows, and of the text of its mail, which never changes and so isn't kept here.
    "CREATE VIRTUAL TABLE IF NOT EXISTS search USING fts5 (text, keywords, data, files, columnsize = 0,"
    " tokenize = 'unicode61 remove_diacritics 2');"
    "CREATE VIRTUAL TABLE IF NOT EXISTS bodies USING fts5 (body, content = '', columnsize = 0,"
    " tokenize = 'unicode61 remove_diacritics 2');";

// Counts with every change of the schema.
constexpr std::int64_t kFormat = 2;

std::int64_t NumberFrom(SqliteDatabase& database, std::string_view sql) {
  SqliteStatement statement(database, sql);
  statement.Step();
  return statement.Number(0);
}

void RefuseOtherFormat(SqliteDatabase& database, std::string_view path) {
  if (NumberFrom(database, "SELECT count(*) FROM sqlite_schema") == 0) return;
  if (NumberFrom(database, "PRAGMA user_version") == kFormat) return;
  throw Failure(ErrorNumber::PathAccess, path, "is no archive, or one of another version of this program");
}

SqliteDatabase Opened(std::string_view path) {
  SqliteDatabase database(path, kLockTimeout);
  // Before the first read, so that SQLite needs no memory shared with other programs: some file systems have
  // none.
  database.Execute("PRAGMA locking_mode = EXCLUSIVE");
  RefuseOtherFormat(database, path);
  // The log grows to about 16 MB, and as much is held of the database: an import writes the same pages again
  // and again.
  database.Execute(
      "PRAGMA journal_mode = WAL;"
      "PRAGMA synchronous = FULL;"
      "PRAGMA journal_size_limit = 16777216;"
      "PRAGMA wal_autocheckpoint = 4000;"
      "PRAGMA cache_size = -16384;");
  SqliteTransaction transaction(database);
  database.Execute(kSchema);
  database.Execute("PRAGMA user_version = " + std::to_string(kFormat));
  transaction.Commit();
  return database;
}

SqliteDatabase OpenedToLook(std::string_view path) {
  SqliteDatabase database = SqliteDatabase::OpenToLook(path);
  RefuseOtherFormat(database, path);
  return database;
}

// Both are exact inverses, whatever bytes the text holds.
std::string ToStored(std::string_view text) {
  return IsAscii(text) ? std::string(text) : CodePageToUtf8(text);
}
std::string FromStored(std::string_view text) {
  return IsAscii(text) ? std::string(text) : Utf8ToCodePage(text);
}

// A name that damage has put a separator into leads to no other folder.
std::string FileNameFrom(std::string_view stored) {
  std::string name = FromStored(stored);
  std::ranges::replace(name, '\\', '_');
  std::ranges::replace(name, '/', '_');
  return name;
}

bool HasColumn(std::string_view key) {
  for (const ItemColumn& column : kItemColumns) {
    if (column.key == key) return true;
  }
  return false;
}

// All columns of a record, each with that suffix.
std::string ColumnList(std::string_view suffix) {
  std::string list;
  for (const ItemColumn& column : kItemColumns)
    list.append(column.column).append(suffix) += ", ";
  return list.append("fields").append(suffix);
}

// The fields without a column of their own, of descriptions of files the lines behind the path. The files are
// in the order of their keys.
std::string SharedColumn(const ItemRecord& record, const std::vector<StoredFile>& files) {
  const auto describesFile = [&](std::string_view key) {
    if (!key.starts_with("Data")) return false;
    return std::ranges::binary_search(files, key.substr(4), {}, &StoredFile::key);
  };
  std::string lines;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (HasColumn(key)) continue;
    std::string value = record.FieldValue(i);
    if (describesFile(key)) CutLine(value);
    AppendFieldLine(lines, key, value);
  }
  return lines;
}

// The values of the columns, held while a statement needs them.
class ColumnValues {
 public:
  ColumnValues(const ItemRecord& record, const std::vector<StoredFile>& files) {
    for (std::size_t i = 0; i < kItemColumns.size(); ++i)
      values_[i] = ToStored(record.Value(kItemColumns[i].key));
    values_.back() = ToStored(SharedColumn(record, files));
  }

  // Gives the parameter behind the last.
  int Bind(SqliteStatement& statement, int first) const {
    for (const std::string& value : values_)
      statement.Bind(first++, value);
    return first;
  }

 private:
  std::array<std::string, kItemColumns.size() + 1> values_;
};

}  // namespace

ArchiveStore::ArchiveStore(std::string_view path, Access access)
    : database_(access == Access::Own ? Opened(path) : OpenedToLook(path)),
      insertItem_(database_, "INSERT INTO items (fingerprint, " + ColumnList("") +
                                 ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      updateItem_(database_, "UPDATE items SET " + ColumnList(" = ?") + " WHERE number = ?"),
      removeItem_(database_, "DELETE FROM items WHERE number = ?"),
      selectItem_(database_, "SELECT " + ColumnList("") + " FROM items WHERE number = ?"),
      insertFile_(database_,
                  "INSERT INTO files (item, key, name, missing) VALUES (?, ?, ?, ?)"
                  " ON CONFLICT (item, key) DO UPDATE SET name = excluded.name, missing = excluded.missing"),
      removeFiles_(database_, "DELETE FROM files WHERE item = ?"),
      selectFiles_(database_, "SELECT key, name, missing FROM files WHERE item = ?"),
      selectFilesOfRange_(database_, "SELECT item, key, name, missing FROM files WHERE item BETWEEN ? AND ?"),
      markFile_(database_, "UPDATE files SET missing = ? WHERE item = ? AND key = ?"),
      selectById_(database_, "SELECT number FROM items WHERE id = ? ORDER BY number"),
      selectTwins_(database_, "SELECT number FROM items WHERE id = ? AND fingerprint = ? ORDER BY number"),
      selectNumbers_(database_, "SELECT number FROM items ORDER BY number"),
      selectCount_(database_, "SELECT count(*) FROM items"),
      selectHighest_(database_, "SELECT max(number) FROM items"),
      selectIncomplete_(database_, "SELECT DISTINCT item FROM files WHERE missing ORDER BY item"),
      selectSetting_(database_, "SELECT value FROM settings WHERE key = ?"),
      replaceSetting_(database_, "INSERT OR REPLACE INTO settings (key, value) VALUES (?, ?)"),
      selectState_(database_, "SELECT value FROM state WHERE key = ?"),
      replaceState_(database_, "INSERT OR REPLACE INTO state (key, value) VALUES (?, ?)") {}

std::int64_t ArchiveStore::Insert(const ItemRecord& record, std::int64_t fingerprint,
                                  const std::vector<StoredFile>& files) {
  SqliteTransaction transaction(database_);
  const ColumnValues values(record, files);
  insertItem_.Bind(1, fingerprint);
  values.Bind(insertItem_, 2);
  insertItem_.Run();
  const std::int64_t number = database_.LastRow();
  WriteFiles(number, files);
  transaction.Commit();
  return number;
}

void ArchiveStore::Update(std::int64_t number, const ItemRecord& record,
                          const std::vector<StoredFile>& files) {
  SqliteTransaction transaction(database_);
  const ColumnValues values(record, files);
  const int last = values.Bind(updateItem_, 1);
  updateItem_.Bind(last, number).Run();
  if (database_.ChangedRows() == 0) {
    throw Failure(ErrorNumber::ObjectNotSet,
                  "the item '" + record.Value("ID") + "' is no longer in the archive");
  }
  WriteFiles(number, files);
  transaction.Commit();
}

void ArchiveStore::WriteFiles(std::int64_t number, const std::vector<StoredFile>& files) {
  for (const StoredFile& file : files) {
    const std::string key = ToStored(file.key);
    const std::string name = ToStored(file.name);
    insertFile_.Bind(1, number).Bind(2, key).Bind(3, name).Bind(4, file.missing ? 1 : 0).Run();
  }
}

void ArchiveStore::Remove(std::int64_t number) {
  SqliteTransaction transaction(database_);
  for (SqliteStatement* remove : {&removeItem_, &removeFiles_})
    remove->Bind(1, number).Run();
  transaction.Commit();
}

bool ArchiveStore::Read(std::int64_t number, StoredItem& item) {
  item = {};
  selectItem_.Bind(1, number);
  if (!selectItem_.Step()) return false;
  item.number = number;
  for (std::size_t i = 0; i < kItemColumns.size(); ++i) {
    const std::string value = FromStored(selectItem_.Text(static_cast<int>(i)));
    if (!value.empty()) item.record.Add(kItemColumns[i].key, value);
  }
  AddFieldLines(item.record, FromStored(selectItem_.Text(static_cast<int>(kItemColumns.size()))));
  selectItem_.Reset();
  for (selectFiles_.Bind(1, number); selectFiles_.Step();) {
    item.files.push_back(
        {FromStored(selectFiles_.Text(0)), FileNameFrom(selectFiles_.Text(1)), selectFiles_.Number(2) != 0});
  }
  return true;
}

std::vector<std::int64_t> ArchiveStore::Numbers(SqliteStatement& select) {
  std::vector<std::int64_t> numbers;
  while (select.Step())
    numbers.push_back(select.Number(0));
  return numbers;
}

std::vector<std::int64_t> ArchiveStore::NumbersOf(std::string_view id) {
  const std::string stored = ToStored(id);
  return Numbers(selectById_.Bind(1, stored));
}

std::vector<std::int64_t> ArchiveStore::NumbersOf(std::string_view id, std::int64_t fingerprint) {
  const std::string stored = ToStored(id);
  return Numbers(selectTwins_.Bind(1, stored).Bind(2, fingerprint));
}

std::vector<std::int64_t> ArchiveStore::AllNumbers() {
  return Numbers(selectNumbers_);
}

std::int64_t ArchiveStore::Count() {
  selectCount_.Step();
  const std::int64_t count = selectCount_.Number(0);
  selectCount_.Reset();
  return count;
}

std::int64_t ArchiveStore::HighestNumber() {
  selectHighest_.Step();
  const std::int64_t highest = selectHighest_.Number(0);
  selectHighest_.Reset();
  return highest;
}

std::vector<ArchiveStore::ItemFile> ArchiveStore::FilesOf(std::int64_t first, std::int64_t last) {
  std::vector<ItemFile> files;
  for (selectFilesOfRange_.Bind(1, first).Bind(2, last); selectFilesOfRange_.Step();) {
    files.push_back({selectFilesOfRange_.Number(0),
                     {FromStored(selectFilesOfRange_.Text(1)), FileNameFrom(selectFilesOfRange_.Text(2)),
                      selectFilesOfRange_.Number(3) != 0}});
  }
  return files;
}

void ArchiveStore::MarkMissing(std::int64_t number, std::string_view key, bool missing) {
  const std::string stored = ToStored(key);
  markFile_.Bind(1, missing ? 1 : 0).Bind(2, number).Bind(3, stored).Run();
}

std::vector<std::int64_t> ArchiveStore::IncompleteNumbers() {
  return Numbers(selectIncomplete_);
}

std::string ArchiveStore::Setting(std::string_view key) {
  const std::string stored = ToStored(key);
  std::string value;
  if (selectSetting_.Bind(1, stored).Step()) value = FromStored(selectSetting_.Text(0));
  selectSetting_.Reset();
  return value;
}

void ArchiveStore::SetSetting(std::string_view key, std::string_view value) {
  const std::string storedKey = ToStored(key);
  const std::string storedValue = ToStored(value);
  replaceSetting_.Bind(1, storedKey).Bind(2, storedValue).Run();
}

std::int64_t ArchiveStore::State(std::string_view key) {
  const std::int64_t value = selectState_.Bind(1, key).Step() ? selectState_.Number(0) : 0;
  selectState_.Reset();
  return value;
}

void ArchiveStore::SetState(std::string_view key, std::int64_t value) {
  replaceState_.Bind(1, key).Bind(2, value).Run();
}

}  // namespace vorlent
