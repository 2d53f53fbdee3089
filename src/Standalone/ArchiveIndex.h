// The full-text index of an archive.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Standalone/ArchiveFiles.h"
#include "Standalone/ArchiveStore.h"

namespace vorlent {

// Words of an item's text, keywords, data and file names, and of the beginning of its mail. Items are taken
// up in order of their numbers, many at once, since that is far cheaper than one by one; how far the index
// reaches is kept in the database beside it. What a mail says costs as much as all the rest of its import, so
// that is taken up apart, once somebody searches.
class ArchiveIndex {
 public:
  ArchiveIndex(ArchiveStore& store, ArchiveFiles& files);

  ~ArchiveIndex();

  // Takes up what the items up to a number show, as far as it isn't in the index yet.
  void Reach(std::int64_t number);
  std::int64_t Reached() const { return shown_.reached; }
  // Keeps what a new item shows until then, so that it need not be read back.
  void Await(std::int64_t number, const ItemRecord& record);
  // Takes up what their mails say. `goOn` hears every so often how much of it is done, from 0 to 1, and may
  // end it there with false; the next call continues.
  void ReachTexts(std::int64_t number, const std::function<bool(double)>& goOn);
  // Follows a change of an item's fields, its removal.
  void Update(std::int64_t number, const ItemRecord& record);
  void Remove(std::int64_t number);

  // The numbers of the items that hold every one of the words, the oldest first; letter case and accents of
  // no matter, "*" behind a word stands for any ending. No words find nothing. `words` is code page.
  std::vector<std::int64_t> Find(std::string_view words);

 private:
  // How far one of the two parts of the index reaches, and where the database keeps that.
  struct Part {
    std::string_view key;
    std::int64_t reached;
  };

  struct Head;

  // Takes up items of one part in a transaction, and no further than up to the number.
  void Step(Part& part, std::int64_t number, const std::function<void(std::int64_t)>& insert);
  void InsertHead(std::int64_t number);
  void InsertText(std::int64_t number);
  static void WriteHead(SqliteStatement& statement, std::int64_t number, const Head& head);

  ArchiveStore& store_;
  ArchiveFiles& files_;
  SqliteStatement insertHead_, updateHead_, removeHead_, insertBody_;
  Part shown_, said_;
  std::map<std::int64_t, Head> awaited_;  // by item number
};

}  // namespace vorlent
