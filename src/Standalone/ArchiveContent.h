// What an open archive consists of, shared by the archive and its items.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Host/Item.h"
#include "Platform/Files.h"
#include "Standalone/ArchiveFiles.h"
#include "Standalone/ArchiveIndex.h"
#include "Standalone/ArchivePortion.h"
#include "Standalone/ArchiveStore.h"

namespace vorlent {

// Opens what lies in a folder, or makes it. If the archive was not closed the last time, what was left half
// done is put in order: files that no item has are removed, items that lack a file are marked.
class ArchiveContent {
 public:
  explicit ArchiveContent(const std::string& folder);

  ArchiveStore& Store() { return store_; }
  ArchiveFiles& Files() { return files_; }
  ArchiveIndex& Index() { return index_; }

  // Adds an item.
  std::int64_t Insert(const ItemRecord& record, std::int64_t fingerprint,
                      const std::vector<StoredFile>& files);
  void Update(std::int64_t number, const ItemRecord& record, const std::vector<StoredFile>& files);
  // Files that items told of and that have not come yet become more, or fewer. An archive that is closed
  // while some are awaited is put in order at its next opening.
  void FilesExpected(std::int64_t change) { filesExpected_ += change; }
  // Removes an item and then its files.
  void Remove(const StoredItem& item);

  // The item's number by its position from 1, 0 for a position that there isn't.
  std::int64_t NumberAt(std::int32_t pos);
  // The other way round, 0 for a number that no item has.
  std::int32_t PositionOf(std::int64_t number);
  std::int32_t Count();

  // The object that stands for an item as long as someone holds it, so that there is only one; null if there
  // is none.
  ItemPtr HeldItem(std::int64_t number) const;
  void Hold(std::int64_t number, const ItemPtr& item);

  // Brings a file of an item in, see ArchiveFiles::Take.
  void TakeFile(std::string_view source, std::int64_t item, std::string_view name, bool move);

  // All changes from here on are of one ArchivePortion; that before is ended.
  void BeginPortion();
  // Ends a portion that is full, and begins another.
  void EndFullPortion();
  // Makes the portion durable, if there is one. If that fails, its items are gone, and so that nobody takes
  // them for durable this raises from then on.
  void EndPortion();

  // An item that was there already stands for one that came in.
  void Confirm(std::int64_t number);
  // Proves that what came in since the last time can be reached under the archive's path: folder, database
  // and files are still those that were opened, and each item's files are there. Raises what is wrong.
  void Prove();

  // The next opening finds nothing to put in order.
  void Finish();

 private:
  // Numbers of items that follow each other.
  struct Row {
    std::int64_t first;
    std::int64_t last;
  };

  void NoteChange();
  void PutInOrder();
  void PutInOrder(std::int64_t folderNumber);
  const std::vector<std::int64_t>& Numbers();
  void ProveLog();
  void EmptyLog();
  void ProveFiles();
  void ProveFiles(const Row& row);

  os::HeldFolder folder_;
  ArchiveFiles files_;
  os::HeldFolder filesFolder_;
  ArchiveStore store_;
  ArchiveIndex index_;
  const std::string databasePath_;
  // SQLite holds both files, so no other gets these.
  const std::optional<os::Identity> database_;
  const std::optional<os::Identity> log_;
  std::vector<Row> unproven_;  // nearly always one row for a mailbox
  bool changeNoted_;
  std::optional<ArchivePortion> portion_;
  std::int64_t filesExpected_ = 0;
  std::unordered_map<std::int64_t, std::weak_ptr<Item>> heldItems_;
  std::size_t heldItemsLimit_ = 0;
  std::unique_ptr<std::vector<std::int64_t>> numbers_;  // of all items in order, read on first use
};

}  // namespace vorlent
