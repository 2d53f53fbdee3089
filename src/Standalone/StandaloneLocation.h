// A Location of the standalone host whose items a connector of the component delivers.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Host/Connector.h"
#include "Standalone/LocationBase.h"

namespace vorlent {

// Location and connector hold each other from Open to Close.
class StandaloneLocation : public LocationBase, public std::enable_shared_from_this<StandaloneLocation> {
 public:
  explicit StandaloneLocation(std::weak_ptr<StandaloneGlobal> global) : LocationBase(std::move(global)) {}

  ObjectPtr Connector() const override { return connector_; }

  // Makes the connector of the address's scheme and lets it prepare the address. An unknown scheme is
  // reported as unreadable. A failure leaves the Location closed and rises.
  LocationState Open(std::string_view address) override;
  // Reads items and tree. Does nothing on a closed Location.
  void Load() override;
  void Close() override;

  // Both raise ObjectNotSet on a closed Location. A pasted record is passed on to the source as far as the
  // connector can.
  ItemPtr PasteRecord(std::string_view record) override;
  ItemPtr ItemAt(std::int32_t pos) override;
  // 0 on a closed Location.
  std::int32_t ItemCount() const override;

  // --- What the host itself knows and does beyond the contract

  bool IsOpen() const { return connector_ != nullptr; }
  // The result of the last Load, Unreadable before the first.
  LocationState State() const { return state_; }
  // The connector's tree with every item filed in it. Raises ObjectNotSet on a closed Location.
  TreePtr FiledTree();

 private:
  vorlent::Connector& Opened() const;

  ConnectorPtr connector_;
  LocationState state_ = LocationState::Unreadable;
};

using StandaloneLocationPtr = std::shared_ptr<StandaloneLocation>;

}  // namespace vorlent
