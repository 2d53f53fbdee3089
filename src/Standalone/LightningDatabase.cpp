#include "Standalone/LightningDatabase.h"

#include <sqlite3.h>

#include "Common/qzelSQLiteBinding.h"
#include "Connectors/Mozilla/CalendarFiles.h"
#include "Host/HostObjects.h"
#include "Platform/Failure.h"
#include "Standalone/LightningRegistry.h"
#include "Standalone/LightningTables.h"

namespace vorlent {

namespace {

constexpr auto kNumbers = SqliteDatabase::Numbers::OfSqlite;

// Tells the host what fails in a step: the component keeps the number only.
template <class Step>
void Told(Step step) {
  try {
    step();
  } catch (const Failure& failure) {
    HostObjects::Current().Global().ReportUnreadable(failure.Why());
    throw;
  }
}

}  // namespace

std::shared_ptr<const DatabaseSnapshot> SnapshotShelf::For(std::string_view file) {
  if (ObstacleToReading(file) == SqliteObstacle::None) {
    snapshot_.reset();
  } else if (file != file_ || snapshot_ == nullptr || !snapshot_->IsCurrent()) {
    file_ = file;
    snapshot_ = SnapshotIfKeptFrom(file);
  }
  return snapshot_;
}

LightningDatabase::LightningDatabase(std::string_view file, int timeout, SnapshotShelf& shelf)
    : file_(file), timeout_(timeout), names_(shelf.NamesOf(file)) {
  Told([&] {
    snapshot_ = shelf.For(file);
    Connect(snapshot_ == nullptr ? std::string_view() : snapshot_->File());
    const auto moment = snapshot_ == nullptr ? std::nullopt : snapshot_->MomentToTell();
    if (moment) HostObjects::Current().Global().Remark(SnapshotRemark(file, *moment));
  });
}

// To a copy, or to the file itself without one.
void LightningDatabase::Connect(std::string_view copy) {
  sqlite3* opened = nullptr;
  if (copy.empty()) {
    sqlite_open(file_, opened);
  } else {
    sqlite_open_own(copy, opened);
  }
  connection_ = std::make_shared<SqliteDatabase>(
      SqliteDatabase::Adopt(file_, SqliteHandle(opened), timeout_, kNumbers));
  AddTablesOfOld(*connection_, ReadLightningRegistry(ProfileOfCalendarFile(file_)), names_);
}

void LightningDatabase::Execute(std::string_view sql) {
  if (hasFailed_) throw Failure(SQLITE_ABORT, {file_, "the change has failed already"});
  hasFailed_ = true;
  Told([&] {
    if (change_ == nullptr) BeginChange();
    SqliteTransaction part(*connection_);
    SqliteStatement(*connection_, sql).Run();
    ApplyToThunderbirdsTables(*connection_);
    part.Commit();
  });
  hasFailed_ = false;
}

void LightningDatabase::BeginChange() {
  if (snapshot_ != nullptr) ConnectToChange();
  connection_->FinishLogAtEnd();
  change_ = std::make_unique<SqliteTransaction>(*connection_);
}

void LightningDatabase::ConnectToChange() {
  const SqliteObstacle obstacle = ObstacleToWriting(file_, timeout_);
  if (obstacle != SqliteObstacle::None)
    throw Failure(obstacle == SqliteObstacle::Use ? SQLITE_BUSY : SQLITE_READONLY, CauseOf(obstacle, file_));
  snapshot_.reset();
  Connect({});
}

void LightningDatabase::Finish() {
  if (change_ == nullptr) return;
  Told([&] {
    if (!hasFailed_) change_->Commit();
  });
  change_.reset();
}

}  // namespace vorlent
