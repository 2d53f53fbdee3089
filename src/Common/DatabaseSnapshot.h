// An SQLite database that another program has in use, as it stood at one moment.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/qzelSQLiteBinding.h"
#include "Platform/Failure.h"
#include "Platform/Time.h"
#include "Platform/WorkFolder.h"

namespace vorlent {

// A copy of a database file and of the log or journal beside it, in a temporary folder of its own and removed
// with this object. The three stood so together at one moment: they are copied, read again and compared, and
// copied anew if one of them moved meanwhile. So the copy holds what was committed by then, and nothing else,
// just as if the other program had ended at that moment. Nothing is made or changed beside the source.
//
// No connection of this process may be open on the source: it would lose its locks.
class DatabaseSnapshot {
 public:
  // Lengths and times of change.
  using PartStates = std::vector<std::pair<std::uint64_t, DateTime>>;

  // `why` is what keeps others from reading the database itself. Raises PermissionDenied for one that doesn't
  // come to rest, else the failure of the file that can't be read or written.
  explicit DatabaseSnapshot(std::string_view file, SqliteObstacle why = SqliteObstacle::Use);

  // The Windows path of the copy. Whoever opens it may write to it, and has to: what the journal holds must
  // go back into the file.
  const std::string& File() const { return copy_; }
  // Whether nothing tells that the database has changed since.
  bool IsCurrent() const;

  // When the database stood so, in local time.
  const DateTime& Moment() const { return moment_; }
  // The same as far as a reader has to know: nothing if no program uses the database, so that it stands so
  // still.
  std::optional<DateTime> MomentToTell() const {
    return why_ == SqliteObstacle::Use ? std::optional(moment_) : std::nullopt;
  }

 private:
  std::string source_;
  SqliteObstacle why_;
  os::WorkFolder folder_;
  std::string copy_;
  DateTime moment_;
  PartStates states_;
};

// What a reader has to know of a database of which a snapshot is read.
Cause SnapshotRemark(std::string_view file, const DateTime& moment);

// What keeps this program from reading a database as it lies there, or from changing it. Waits up to
// `timeout` milliseconds for another that uses it.
SqliteObstacle ObstacleToReading(std::string_view file, int timeout = 0);
SqliteObstacle ObstacleToWriting(std::string_view file, int timeout);

// An obstacle in words, with the program that uses the database as far as the system knows it.
Cause CauseOf(SqliteObstacle obstacle, std::string_view file);

// What is to be read in place of a database file that can't be read as it lies there: a snapshot, if the
// rules in force ask for one. Nothing if the file itself can be read, or has no content that a copy could
// show; and nothing if there can be no snapshot, so that the connection to the file tells what is in its way.
std::unique_ptr<DatabaseSnapshot> SnapshotIfKeptFrom(std::string_view file);

}  // namespace vorlent
