#include "Standalone/ArchiveStore.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Standalone/ArchiveSql.h"
#include "Standalone/FieldLines.h"
#include "Standalone/Fingerprint.h"

namespace vorlent {

namespace sql = archive_sql;

namespace {

constexpr int kLockTimeout = 500;

void RefuseOtherFormat(SqliteDatabase& database, std::string_view path) {
  if (SqliteStatement(database, sql::kTableCount).RunForNumber() == 0) return;
  if (SqliteStatement(database, sql::kFormatOf).RunForNumber() == sql::kFormat) return;
  throw Failure(ErrorNumber::PathAccess, path, "is no archive, or one of another version of this program");
}

// Set once all items have today's fingerprints.
constexpr std::string_view kRenewed = "renewed";

bool IsRenewed(SqliteDatabase& database) {
  return SqliteStatement(database, sql::kState).Bind(1, kRenewed).RunForNumber() != 0;
}

SqliteDatabase Opened(std::string_view path) {
  SqliteDatabase database(path, kLockTimeout);
  database.Execute(sql::kOwn);
  RefuseOtherFormat(database, path);
  database.Execute(sql::kSettings);
  SqliteTransaction transaction(database);
  database.Execute(sql::kSchema);
  database.Execute(sql::kSetFormat + std::to_string(sql::kFormat));
  transaction.Commit();
  return database;
}

SqliteDatabase OpenedToLook(std::string_view path) {
  SqliteDatabase database = SqliteDatabase::OpenToLook(path);
  RefuseOtherFormat(database, path);
  if (IsRenewed(database)) return database;
  database.Execute(sql::kRenewedInMemory);
  return database;
}

// An archive is the same by all rules, so that one of either can be read by the other: text stands in it as
// page text, each byte of that as the character of the page.
std::string ToStored(std::string_view text) {
  return IsAscii(text) ? std::string(text) : codepage::ToUtf8(ToPageText(text));
}
std::string FromStored(std::string_view text) {
  return IsAscii(text) ? std::string(text) : FromPageText(codepage::FromUtf8(text));
}

// A name that damage has put a separator into leads to no other folder.
std::string FileNameFrom(std::string_view stored) {
  std::string name = FromStored(stored);
  std::ranges::replace(name, '\\', '_');
  std::ranges::replace(name, '/', '_');
  return name;
}

bool HasColumn(std::string_view key) {
  return std::ranges::find(sql::kColumnKeys, key) != sql::kColumnKeys.end();
}

// The fields without a column of their own, of descriptions of files the lines after the path. The files are
// in the order of their keys.
std::string SharedColumn(const ItemRecord& record, const std::vector<StoredFile>& files) {
  const auto describesFile = [&](std::string_view key) {
    if (!key.starts_with(record_key::kDataPrefix)) return false;
    return std::ranges::binary_search(files, key.substr(record_key::kDataPrefix.size()), {},
                                      &StoredFile::key);
  };
  std::string lines;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (HasColumn(key)) continue;
    std::string value = record.FieldValue(i);
    if (describesFile(key)) CutLine(value);
    AppendFieldLine(lines, ToPageText(key), ToPageText(value));
  }
  return lines;
}

// Each field is page text for itself, since one may be code page where another isn't.
void AddSharedColumn(ItemRecord& record, std::string_view stored) {
  ItemRecord fields;
  AddFieldLines(fields, codepage::FromUtf8(stored));
  for (std::size_t i = 0; i < fields.FieldCount(); ++i)
    record.Add(FromPageText(fields.FieldKey(i)), FromPageText(fields.FieldValue(i)));
}

// The values of the columns, held while a statement needs them.
class ColumnValues {
 public:
  ColumnValues(const ItemRecord& record, const std::vector<StoredFile>& files) {
    for (std::size_t i = 0; i < sql::kColumnKeys.size(); ++i)
      values_[i] = ToStored(record.Value(sql::kColumnKeys[i]));
    values_.back() = codepage::ToUtf8(SharedColumn(record, files));
  }

  // Gives the parameter after the last.
  int Bind(SqliteStatement& statement, int first) const {
    for (const std::string& value : values_)
      statement.Bind(first++, value);
    return first;
  }

 private:
  std::array<std::string, sql::kColumnKeys.size() + 1> values_;
};

}  // namespace

ArchiveStore::ArchiveStore(std::string_view path, Access access)
    : database_(access == Access::Own ? Opened(path) : OpenedToLook(path)),
      insertItem_(database_, sql::kInsertItem),
      updateItem_(database_, sql::kUpdateItem),
      removeItem_(database_, sql::kRemoveItem),
      selectItem_(database_, sql::kSelectItem),
      putFile_(database_, sql::kPutFile),
      removeFiles_(database_, sql::kRemoveFiles),
      selectFiles_(database_, sql::kFilesOfRange),
      markFile_(database_, sql::kMarkFile),
      selectById_(database_, sql::kNumbersOfId),
      selectHasId_(database_, sql::kHasId),
      selectTwins_(database_, sql::kNumbersOfTwins),
      selectRenewed_(database_, sql::kNumbersOfRenewed),
      selectNumbers_(database_, sql::kAllNumbers),
      selectHighest_(database_, sql::kHighestNumber),
      selectIncomplete_(database_, sql::kIncompleteNumbers),
      selectSetting_(database_, sql::kSetting),
      putSetting_(database_, sql::kPutSetting),
      selectState_(database_, sql::kState),
      putState_(database_, sql::kPutState) {
  if (!IsRenewed(database_)) RenewFingerprints(access);
}

// What stands in an item may have been added to since it came in, so that the fingerprint of then stays.
void ArchiveStore::RenewFingerprints(Access access) {
  SqliteTransaction transaction(database_);
  SqliteStatement renew(database_, sql::kRenew);
  for (const std::int64_t number : AllNumbers()) {
    ItemRecord record;
    if (ReadFields(number, record)) renew.Bind(1, number).Bind(2, FingerprintOf(record)).Run();
  }
  if (access == Access::Own) SetState(kRenewed, 1);
  transaction.Commit();
}

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
                  "the item '" + record.Value(record_key::kId) + "' is no longer in the archive");
  }
  WriteFiles(number, files);
  transaction.Commit();
}

void ArchiveStore::WriteFiles(std::int64_t number, const std::vector<StoredFile>& files) {
  for (const StoredFile& file : files) {
    const std::string key = ToStored(file.key);
    const std::string name = ToStored(file.name);
    putFile_.Bind(1, number).Bind(2, key).Bind(3, name).Bind(4, file.missing ? 1 : 0).Run();
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
  if (!ReadFields(number, item.record)) return false;
  item.number = number;
  for (ItemFile& each : FilesOf(number, number))
    item.files.push_back(std::move(each.file));
  return true;
}

bool ArchiveStore::ReadFields(std::int64_t number, ItemRecord& record) {
  SqliteWalk row(selectItem_.Bind(1, number));
  if (!row.Step()) return false;
  int column = 0;
  for (const std::string_view key : sql::kColumnKeys) {
    const std::string value = FromStored(row.Text(column++));
    if (!value.empty()) record.Add(key, value);
  }
  AddSharedColumn(record, row.Text(column));
  return true;
}

std::vector<std::int64_t> ArchiveStore::Numbers(SqliteStatement& select) {
  std::vector<std::int64_t> numbers;
  for (SqliteWalk row(select); row.Step();)
    numbers.push_back(row.Number(0));
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

std::vector<std::int64_t> ArchiveStore::NumbersOfRenewed(std::string_view id, std::int64_t fingerprint) {
  const std::string stored = ToStored(id);
  return Numbers(selectRenewed_.Bind(1, stored).Bind(2, fingerprint));
}

bool ArchiveStore::HasId(std::string_view id) {
  const std::string stored = ToStored(id);
  return selectHasId_.Bind(1, stored).RunForNumber() != 0;
}

std::vector<std::int64_t> ArchiveStore::NumbersOfTwins(const ItemRecord& record) {
  std::vector<std::int64_t> numbers = NumbersOfSame(record);
  if (record.Value(record_key::kType) != "mail") return numbers;
  for (const std::string& id : IdsOfOld(record.Value(record_key::kId))) {
    if (!HasId(id)) continue;
    ItemRecord before = record;
    before.Set(record_key::kId, id);
    std::ranges::copy(NumbersOfSame(before), std::back_inserter(numbers));
  }
  return numbers;
}

std::vector<std::int64_t> ArchiveStore::NumbersOfSame(const ItemRecord& record) {
  const std::string id = record.Value(record_key::kId);
  const std::int64_t fingerprint = FingerprintOf(record);
  std::vector<std::int64_t> numbers = NumbersOf(id, fingerprint);
  std::ranges::copy(NumbersOfRenewed(id, fingerprint), std::back_inserter(numbers));
  for (const std::int64_t old : FingerprintsOfOld(record))
    std::ranges::copy(NumbersOf(id, old), std::back_inserter(numbers));
  std::ranges::sort(numbers);
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

std::vector<std::int64_t> ArchiveStore::AllNumbers() {
  return Numbers(selectNumbers_);
}

std::int64_t ArchiveStore::HighestNumber() {
  return selectHighest_.RunForNumber();
}

std::vector<ArchiveStore::ItemFile> ArchiveStore::FilesOf(std::int64_t first, std::int64_t last) {
  std::vector<ItemFile> files;
  for (SqliteWalk row(selectFiles_.Bind(1, first).Bind(2, last)); row.Step();) {
    files.push_back(
        {row.Number(0), {FromStored(row.Text(1)), FileNameFrom(row.Text(2)), row.Number(3) != 0}});
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
  SqliteWalk row(selectSetting_.Bind(1, stored));
  return row.Step() ? FromStored(row.Text(0)) : std::string();
}

void ArchiveStore::SetSetting(std::string_view key, std::string_view value) {
  const std::string storedKey = ToStored(key);
  const std::string storedValue = ToStored(value);
  putSetting_.Bind(1, storedKey).Bind(2, storedValue).Run();
}

std::int64_t ArchiveStore::State(std::string_view key) {
  return selectState_.Bind(1, key).RunForNumber();
}

void ArchiveStore::SetState(std::string_view key, std::int64_t value) {
  putState_.Bind(1, key).Bind(2, value).Run();
}

}  // namespace vorlent
