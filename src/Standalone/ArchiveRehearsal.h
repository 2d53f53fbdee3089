// What an import would bring into an archive.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Standalone/ArchiveFiles.h"
#include "Standalone/ArchiveStore.h"
#include "Standalone/LocationBase.h"
#include "Standalone/RehearsedItem.h"

namespace vorlent {

// A Location that stands in for an archive and keeps nothing: its items know whether the archive has them
// already. The archive isn't made, and one that is there isn't changed.
class ArchiveRehearsal : public LocationBase, public std::enable_shared_from_this<ArchiveRehearsal> {
 public:
  // A damaged archive and one of another format raise, as opening it would.
  ArchiveRehearsal(std::weak_ptr<StandaloneGlobal> global, std::string_view folder);

  ObjectPtr Connector() const override { return nullptr; }
  LocationState Open(std::string_view) override { return LocationState::Read; }
  void Load() override {}
  void Close() override {}
  ItemPtr PasteRecord(std::string_view record) override;
  ItemPtr ItemAt(std::int32_t) override { return nullptr; }
  std::int32_t ItemCount() const override { return 0; }

  // --- What the host itself knows and does beyond the contract

  // False for an archive that another program has open, or that none has closed: what it has isn't written
  // where it could be read without a change.
  bool KnowsArchive() const { return knowsArchive_; }
  // Whether the archive has the item with all its files, or an earlier one was the same.
  bool Has(const RehearsedItem& item);

 private:
  bool ArchiveHas(const RehearsedItem& item);
  bool HasFilesOf(const StoredItem& stored, const RehearsedItem& item) const;

  bool knowsArchive_ = true;
  std::optional<ArchiveStore> store_;
  std::optional<ArchiveFiles> files_;
  std::set<std::int64_t> seen_;  // fingerprints of what came so far
};

}  // namespace vorlent
