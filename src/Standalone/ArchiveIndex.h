// The full-text index of an archive.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Standalone/ArchiveFiles.h"
#include "Standalone/ArchiveStore.h"

namespace vorlent {

// Words of an item's text, keywords, data and file names, and of the beginning of its mail. It follows the
// archive when somebody searches, since it costs as much as all the rest of an import: items are taken up in
// order of their numbers, many at once, and how far it reaches is kept in the database beside it.
class ArchiveIndex {
 public:
  ArchiveIndex(ArchiveStore& store, ArchiveFiles& files);

  // Takes up the items up to a number that aren't in the index yet. `goOn` hears every so often how much of
  // that is done, from 0 to 1, and may end it there with false; the next call continues. Tells whether the
  // index reaches that far.
  bool Reach(std::int64_t number, const std::function<bool(double)>& goOn);
  // Follows a change of an item's fields, or its removal.
  void Update(std::int64_t number, const ItemRecord& record);
  void Remove(std::int64_t number);

  // The numbers of the items that hold every one of the words, the oldest first; letter case and accents of
  // no matter, "*" after a word stands for any ending. No words find nothing. `words` is code page.
  std::vector<std::int64_t> Find(std::string_view words);

 private:
  void Step(std::int64_t number);
  void Insert(const StoredItem& item);
  static void WriteHead(SqliteStatement& statement, std::int64_t number, const ItemRecord& record);

  ArchiveStore& store_;
  ArchiveFiles& files_;
  SqliteStatement insertHead_, replaceHead_, removeHead_, insertBody_;
  std::int64_t reached_;
};

}  // namespace vorlent
