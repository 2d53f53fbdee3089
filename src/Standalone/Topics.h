// The standalone host's topics: the keywords of all items of the Locations that were taken up.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Host/Location.h"
#include "Host/Tree.h"
#include "Standalone/LocationBase.h"

namespace vorlent {

// Keeps which sources are taken up, without keeping them alive; their items are looked at when the tree is
// asked for, so that an import of any size costs nothing here.
class Topics : public TopicsConnector {
 public:
  void SetNotify(bool notify) override { notify_ = notify; }
  void ClearLocation(const ObjectPtr& source) override;
  // A source that is taken up already stays so once.
  void AddLocation(const ObjectPtr& source) override;

  bool Notify() const { return notify_; }
  // The sources that still exist, in the order in which they were taken up.
  std::vector<ObjectPtr> Sources() const;
  // A new tree of the keywords of all items of the sources, with the items filed in it.
  TreePtr BuildTree() const;

 private:
  std::vector<std::weak_ptr<Object>> sources_;
  bool notify_ = true;
};

// The Location named "topics" that the component asks the host for. It has no items of its own.
class TopicsLocation : public LocationBase {
 public:
  explicit TopicsLocation(std::weak_ptr<StandaloneGlobal> global);

  ObjectPtr Connector() const override { return topics_; }
  const std::shared_ptr<Topics>& Content() const { return topics_; }

  LocationState Open(std::string_view) override { return LocationState::Read; }
  void Close() override {}
  void Load() override {}
  // Raises PathAccess: topics come from items of other Locations only.
  ItemPtr PasteRecord(std::string_view record) override;
  ItemPtr ItemAt(std::int32_t) override { return nullptr; }
  std::int32_t ItemCount() const override { return 0; }

 private:
  std::shared_ptr<Topics> topics_ = std::make_shared<Topics>();
};

}  // namespace vorlent
