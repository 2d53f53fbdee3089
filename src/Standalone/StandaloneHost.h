// The standalone host: a host in small, for the command line and the wizard program.
#pragma once

#include <memory>

#include "Host/HostObjects.h"
#include "Standalone/HostObserver.h"
#include "Standalone/StandaloneGlobal.h"
#include "Standalone/StandaloneItem.h"
#include "Standalone/StandaloneLocation.h"
#include "Standalone/StandaloneTree.h"

namespace vorlent {

class SnapshotShelf;

// Made, given to HostObjects::Install, and used as the host from then on.
class StandaloneHost : public HostObjects {
 public:
  // The observer must outlive the host.
  explicit StandaloneHost(HostObserver& observer);

  ItemPtr NewItem() override;
  TreePtr NewTree() override { return std::make_shared<StandaloneTree>(); }
  LocationPtr NewLocation() override { return MakeLocation(); }
  HostEnumPtr NewEnum() override;
  HostDatabasePtr NewDatabase() override;

  StandaloneGlobal& Global() override { return *global_; }
  // Answers as if the user had cancelled, until SetDialogs.
  HostDialogs& Dialogs() override { return *dialogs_; }

  // --- What the host itself knows and does beyond the contract

  // A Location that isn't open yet.
  StandaloneLocationPtr MakeLocation();
  void SetDialogs(std::shared_ptr<HostDialogs> dialogs) { dialogs_ = std::move(dialogs); }

 private:
  friend class ItemListening;

  std::shared_ptr<StandaloneGlobal> global_;
  std::shared_ptr<ItemListenerSlot> listeners_;
  std::shared_ptr<HostDialogs> dialogs_;
  std::shared_ptr<SnapshotShelf> shelf_;
};

// A listener hears of changes to connected items as long as this lives.
class ItemListening {
 public:
  ItemListening(StandaloneHost& host, ItemListener& listener) : slot_(host.listeners_) {
    slot_->listener = &listener;
  }
  ~ItemListening() { slot_->listener = nullptr; }
  ItemListening(const ItemListening&) = delete;
  ItemListening& operator=(const ItemListening&) = delete;

 private:
  std::shared_ptr<ItemListenerSlot> slot_;
};

}  // namespace vorlent
