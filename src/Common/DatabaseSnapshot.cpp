#include "Common/DatabaseSnapshot.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/qzelSQLiteBinding.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/LockHolder.h"
#include "Platform/Platform.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// The file itself, and what holds the transactions that it lacks or has too much of. The index of a log is
// made anew from the log.
constexpr std::array<std::string_view, 3> kPartSuffixes = {"", "-wal", "-journal"};

// A program that is in the middle of writing is soon done.
constexpr int kMostTries = 20;
constexpr std::uint32_t kPause = 50;

constexpr std::size_t kSnapshotBlock = 1 << 20;

std::string PartOf(std::string_view file, std::string_view suffix) {
  return std::string(file).append(suffix);
}

void CopyPart(const std::string& source, const std::string& target) {
  if (!FileExists(source)) {
    os::TryRemovePlainFile(target);
    return;
  }
  os::File from = os::File::Open(source, os::File::Mode::Read);
  os::File to = os::File::Open(target, os::File::Mode::Create);
  std::vector<char> block(kSnapshotBlock);
  while (const std::size_t count = from.Read(block.data(), block.size()))
    to.Write(block.data(), count);
  to.Close();
}

bool IsSamePart(const std::string& a, const std::string& b) {
  if (FileExists(a) != FileExists(b)) return false;
  if (!FileExists(a)) return true;
  os::File first = os::File::Open(a, os::File::Mode::Read);
  os::File second = os::File::Open(b, os::File::Mode::Read);
  std::vector<char> blockOfFirst(kSnapshotBlock), blockOfSecond(kSnapshotBlock);
  for (;;) {
    blockOfFirst.resize(first.Read(blockOfFirst.data(), kSnapshotBlock));
    blockOfSecond.resize(second.Read(blockOfSecond.data(), kSnapshotBlock));
    if (blockOfFirst != blockOfSecond) return false;
    if (blockOfFirst.empty()) return true;
  }
}

bool IsSameDatabase(std::string_view a, std::string_view b) {
  for (const std::string_view suffix : kPartSuffixes) {
    if (!IsSamePart(PartOf(a, suffix), PartOf(b, suffix))) return false;
  }
  return true;
}

// Whether the file's header asks for a log.
bool HasALog(std::string_view file) {
  constexpr std::uint64_t kReadVersion = 19;
  constexpr char kOfLogs = 2;
  char version = 0;
  Swallow([&] {
    os::File header = os::File::Open(file, os::File::Mode::Read);
    header.Seek(kReadVersion);
    header.Read(&version, 1);
  });
  return version == kOfLogs;
}

// A connection to try a database with.
class Probe {
 public:
  Probe(std::string_view file, int timeout) : file_(file) {
    sqlite_open(file, handle_);
    sqlite_wait_for_others(handle_, timeout);
  }
  ~Probe() { sqlite_close(handle_); }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;

  sqlite3* Handle() const { return handle_; }

  // Whether reading would make a log and its index that stay, since only a connection that may write clears
  // them up.
  bool LeavesALog() const {
    return sqlite_only_reads(handle_) && !FileExists(PartOf(file_, "-shm")) &&
           !FileExists(PartOf(file_, "-journal")) && HasALog(file_);
  }

 private:
  std::string file_;
  sqlite3* handle_ = nullptr;
};

DatabaseSnapshot::PartStates PartStatesOf(std::string_view file) {
  DatabaseSnapshot::PartStates states;
  for (const std::string_view suffix : kPartSuffixes) {
    const std::string part = PartOf(file, suffix);
    if (FileExists(part)) states.emplace_back(os::FileLength(part), os::ReadChangeTime(part));
  }
  return states;
}

}  // namespace

DatabaseSnapshot::DatabaseSnapshot(std::string_view file, SqliteObstacle why)
    : source_(file), why_(why), copy_(folder_.Path() + "copy.sqlite") {
  for (int tried = 0; tried < kMostTries; ++tried) {
    if (tried > 0) Platform::Current().Wait(kPause);
    for (const std::string_view suffix : kPartSuffixes)
      CopyPart(PartOf(file, suffix), PartOf(copy_, suffix));
    // Whatever is the same before and after this moment was so at this moment.
    moment_ = Platform::Current().Now();
    states_ = PartStatesOf(file);
    if (IsSameDatabase(file, copy_)) return;
  }
  throw Failure(ErrorNumber::PermissionDenied, file, "another program writes to it without a rest",
                Hint::CloseOther);
}

bool DatabaseSnapshot::IsCurrent() const {
  bool isSame = false;
  Swallow([&] { isSame = PartStatesOf(source_) == states_; });
  return isSame;
}

Cause SnapshotRemark(std::string_view file, const DateTime& moment) {
  return {std::string(file), "in Gebrauch; gelesen wird der Stand vom " + FormatDisplay(moment)};
}

SqliteObstacle ObstacleToReading(std::string_view file, int timeout) {
  if (!FileExists(file)) return SqliteObstacle::None;
  const Probe probe(file, timeout);
  const SqliteObstacle obstacle =
      probe.LeavesALog() ? SqliteObstacle::NoRight : sqlite_obstacle_to_reading(probe.Handle());
  // What may not be written may be in use all the same.
  const bool isInUse = obstacle == SqliteObstacle::NoRight && os::TryFindLockHolder(file).has_value();
  return isInUse ? SqliteObstacle::Use : obstacle;
}

SqliteObstacle ObstacleToWriting(std::string_view file, int timeout) {
  const SqliteObstacle obstacle = ObstacleToReading(file, timeout);
  const bool onlyReads = obstacle == SqliteObstacle::None && sqlite_only_reads(Probe(file, timeout).Handle());
  return onlyReads ? SqliteObstacle::NoRight : obstacle;
}

Cause CauseOf(SqliteObstacle obstacle, std::string_view file) {
  if (obstacle == SqliteObstacle::NoRight)
    return {std::string(file), "attempt to write a readonly database", Hint::AllowAccess};
  const std::optional<os::LockHolder> holder = os::TryFindLockHolder(file);
  std::string reason = "in Gebrauch durch ein anderes Programm";
  if (holder)
    reason = "in Gebrauch durch " + holder->program + " (Prozess " + std::to_string(holder->process) + ")";
  return {std::string(file), reason, Hint::CloseOther};
}

std::unique_ptr<DatabaseSnapshot> SnapshotIfKeptFrom(std::string_view file) {
  if (CurrentRules().databaseInUse == DatabaseInUse::Locked) return nullptr;
  const SqliteObstacle obstacle = ObstacleToReading(file);
  std::unique_ptr<DatabaseSnapshot> snapshot;
  if (obstacle != SqliteObstacle::None)
    Swallow([&] { snapshot = std::make_unique<DatabaseSnapshot>(file, obstacle); });
  return snapshot;
}

}  // namespace vorlent
