// What the Locations of the standalone host have in common: the plain values that the contract reads and
// writes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "Host/Location.h"

namespace vorlent {

class StandaloneGlobal;

class LocationBase : public Location {
 public:
  void SetChanged(bool changed) override { changed_ = changed; }
  std::int32_t ItemCounter() const override { return itemCounter_; }
  void SetItemCounter(std::int32_t count) override { itemCounter_ = count; }
  void SetLastItemTimer(float seconds) override { lastItemTimer_ = seconds; }
  ItemPtr ParameterItem() const override { return parameterItem_; }
  void SetParameterItem(const ItemPtr& item) override { parameterItem_ = item; }
  // The host's; raises ObjectNotSet once the host is gone.
  std::shared_ptr<HostErrorFactory> ErrorFactory() override;
  std::string Name() const override { return name_; }
  // The data field of that key of the parameter item.
  std::string GetSetting(std::string_view key) override;
  std::string GetOption(std::string_view key) override;
  std::string FileLocation() const override { return {}; }

  // --- What the host itself knows and does beyond the contract

  void SetOption(std::string_view key, std::string_view value) {
    options_.insert_or_assign(std::string(key), value);
  }
  bool IsChanged() const { return changed_; }
  float LastItemTimer() const { return lastItemTimer_; }
  // What PasteRecord made last, null before the first.
  ItemPtr LastPasted() const { return lastPasted_; }

 protected:
  explicit LocationBase(std::weak_ptr<StandaloneGlobal> global, std::string_view name = {})
      : name_(name), global_(std::move(global)) {}

  // Raises ObjectNotSet once the host is gone.
  std::shared_ptr<StandaloneGlobal> Global() const;
  // Null once the host is gone.
  std::shared_ptr<StandaloneGlobal> GlobalIfThere() const { return global_.lock(); }

  void NotePasted(const ItemPtr& item) { lastPasted_ = item; }

  std::string name_;

 private:
  std::weak_ptr<StandaloneGlobal> global_;
  bool changed_ = false;
  std::int32_t itemCounter_ = 0;
  float lastItemTimer_ = 0;
  ItemPtr parameterItem_;
  ItemPtr lastPasted_;
  std::map<std::string, std::string, std::less<>> options_;
};

}  // namespace vorlent
