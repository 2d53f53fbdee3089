// The database of an archive: items with their fields, and which files belong to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Standalone/ItemRecord.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// A file of an item: the data field that describes it, and its bare name among the item's files. Where a
// description in a record begins with the path of the file, the database keeps only the lines after it.
struct StoredFile {
  std::string key;
  std::string name;
  bool missing = false;  // should be there and isn't
};

struct StoredItem {
  std::int64_t number = 0;
  ItemRecord record;
  std::vector<StoredFile> files;
};

// Every change is durable once the member that makes it returns, unless a transaction of the caller encloses
// it. Numbers of items are never used again. Failures are those of SqliteDatabase.
//
// The database can be read with any SQLite tool: texts are stored as UTF-8, each byte of the code page as its
// character.
class ArchiveStore {
 public:
  // Own opens the database and makes it if need be; it is this program's alone until it is closed. Look opens
  // one that was closed, and changes nothing: members that write raise.
  enum class Access { Own, Look };
  explicit ArchiveStore(std::string_view path, Access access = Access::Own);

  SqliteDatabase& Database() { return database_; }

  // Adds an item and returns its number. `fingerprint` tells two mails of one ID apart; the files are in the
  // order of their keys, here and below.
  std::int64_t Insert(const ItemRecord& record, std::int64_t fingerprint,
                      const std::vector<StoredFile>& files);
  // Writes an item's fields anew, and adds or renames files. Raises ObjectNotSet if there is no such item any
  // more.
  void Update(std::int64_t number, const ItemRecord& record, const std::vector<StoredFile>& files);
  void Remove(std::int64_t number);

  // False if there is no item of that number.
  bool Read(std::int64_t number, StoredItem& item);
  // The numbers of all items of an ID, the oldest first; of those with the same fingerprint in the second
  // form.
  std::vector<std::int64_t> NumbersOf(std::string_view id);
  std::vector<std::int64_t> NumbersOf(std::string_view id, std::int64_t fingerprint);
  bool HasId(std::string_view id);
  // The same as renewed for items that came in with another fingerprint.
  std::vector<std::int64_t> NumbersOfRenewed(std::string_view id, std::int64_t fingerprint);
  // Those of items that may be the same as the one of a record, but for the bytes of their files: those of
  // its ID first, then those that have one of before.
  std::vector<std::int64_t> NumbersOfTwins(const ItemRecord& record);
  std::vector<std::int64_t> AllNumbers();
  // 0 for an empty archive.
  std::int64_t HighestNumber();

  // The files of the items numbered `first` to `last`.
  struct ItemFile {
    std::int64_t item;
    StoredFile file;
  };
  std::vector<ItemFile> FilesOf(std::int64_t first, std::int64_t last);
  void MarkMissing(std::int64_t number, std::string_view key, bool missing);
  // The numbers of all items that lack a file.
  std::vector<std::int64_t> IncompleteNumbers();

  // Settings of the archive, "" if absent.
  std::string Setting(std::string_view key);
  void SetSetting(std::string_view key, std::string_view value);

  // Numbers that the archive keeps about itself, 0 if absent.
  std::int64_t State(std::string_view key);
  void SetState(std::string_view key, std::int64_t value);

 private:
  std::vector<std::int64_t> NumbersOfSame(const ItemRecord& record);
  void RenewFingerprints(Access access);
  void WriteFiles(std::int64_t number, const std::vector<StoredFile>& files);
  bool ReadFields(std::int64_t number, ItemRecord& record);
  static std::vector<std::int64_t> Numbers(SqliteStatement& select);

  SqliteDatabase database_;
  SqliteStatement insertItem_, updateItem_, removeItem_, selectItem_;
  SqliteStatement putFile_, removeFiles_, selectFiles_, markFile_;
  SqliteStatement selectById_, selectHasId_, selectTwins_, selectRenewed_, selectNumbers_, selectHighest_,
      selectIncomplete_;
  SqliteStatement selectSetting_, putSetting_, selectState_, putState_;
};

}  // namespace vorlent
