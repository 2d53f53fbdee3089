#include "Standalone/StandaloneHost.h"

#include "Standalone/LightningDatabase.h"
#include "Standalone/StandaloneDatabase.h"
#include "Standalone/StandaloneEnum.h"

namespace vorlent {

namespace {

class NoDialogs : public HostDialogs {
 public:
  std::string ShowWizard(std::string_view, std::string_view, std::string_view) override { return {}; }
  std::string ChooseLocation(std::string_view, std::string_view, std::string_view) override { return {}; }
};

}  // namespace

StandaloneHost::StandaloneHost(HostObserver& observer)
    : global_(std::make_shared<StandaloneGlobal>(observer)),
      listeners_(std::make_shared<ItemListenerSlot>()),
      dialogs_(std::make_shared<NoDialogs>()),
      shelf_(std::make_shared<SnapshotShelf>()) {}

ItemPtr StandaloneHost::NewItem() {
  return std::make_shared<StandaloneItem>(listeners_);
}

HostEnumPtr StandaloneHost::NewEnum() {
  return std::make_shared<StandaloneEnum>();
}

HostDatabasePtr StandaloneHost::NewDatabase() {
  return std::make_shared<StandaloneDatabase>(shelf_);
}

StandaloneLocationPtr StandaloneHost::MakeLocation() {
  return std::make_shared<StandaloneLocation>(global_);
}

}  // namespace vorlent
