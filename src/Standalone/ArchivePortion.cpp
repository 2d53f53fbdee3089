#include "Standalone/ArchivePortion.h"

#include <utility>

namespace vorlent {

namespace {

constexpr std::int64_t kItemsOfPortion = 1024;

}  // namespace

ArchivePortion::ArchivePortion(SqliteDatabase& database, ArchiveFiles& files)
    : files_(files), rows_(std::in_place, database) {}

bool ArchivePortion::IsFull() const {
  return items_ >= kItemsOfPortion;
}

void ArchivePortion::MakeDurable() {
  if (failure_) throw *failure_;
  try {
    // Files first: what the database tells of must be there.
    files_.SyncAll();
    rows_->Commit();
  } catch (const Failure& failure) {
    rows_.reset();
    failure_ = failure;
    throw;
  }
}

}  // namespace vorlent
