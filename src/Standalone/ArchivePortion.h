// The changes of an archive that become durable together.
#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Failure.h"
#include "Standalone/ArchiveFiles.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// What is deferred while the archive changes: the commit of its rows, and the syncs of the files that are
// moved in meanwhile. A portion lives from its making to MakeDurable; one that goes away without is dropped:
// its rows are gone, and its files lie there until the archive is put in order. As a crash drops it too, it
// is for sources that keep what they gave until MakeDurable has returned. (The index has nothing to defer: it
// follows when somebody searches, and the database keeps how far it reaches.)
class ArchivePortion {
 public:
  // The portion's files are those moved in with Safe::AfterSync as long as it lives.
  ArchivePortion(SqliteDatabase& database, ArchiveFiles& files);

  // An item belongs to the portion.
  void Note() { ++items_; }
  // Whether so many items were noted that they should be made durable and another portion begin.
  bool IsFull() const;

  // Once this returns all that came since the portion's making is safe from a crash of the machine. Raises if
  // it can't be made so, and the portion is dropped: a system that failed to write once may tell the next
  // time that all is well. Each further call raises the same.
  void MakeDurable();

 private:
  ArchiveFiles& files_;
  std::optional<SqliteTransaction> rows_;
  std::optional<Failure> failure_;
  std::int64_t items_ = 0;
};

}  // namespace vorlent
