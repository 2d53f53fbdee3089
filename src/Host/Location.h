#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Host/HostError.h"
#include "Host/Item.h"
#include "Platform/Public.h"

namespace vorlent {

// The result of reading a Location.
enum class LocationState : std::int32_t { Read = 1, Unreadable = 3 };

// A data source of the host.
class VORLENT_PUBLIC Location : public Object {
 public:
  // Always given true, after an item was deleted.
  virtual void SetChanged(bool changed) = 0;

  // The connector object of this Location.
  virtual ObjectPtr Connector() const = 0;

  virtual std::int32_t ItemCounter() const = 0;
  virtual void SetItemCounter(std::int32_t count) = 0;

  // Seconds since midnight at which the last item was made.
  virtual void SetLastItemTimer(float seconds) = 0;

  // The Location's own item of settings.
  virtual ItemPtr ParameterItem() const = 0;
  virtual void SetParameterItem(const ItemPtr& item) = 0;

  virtual std::shared_ptr<HostErrorFactory> ErrorFactory() = 0;

  // Opens a Location that the caller created; which connector serves the address is the host's choice.
  virtual LocationState Open(std::string_view address) = 0;
  // Ends what Open began.
  virtual void Close() = 0;

  // Adds an item from a record string.
  virtual ItemPtr PasteRecord(std::string_view record) = 0;

  // The Location's address: the same text that InitLocation gets.
  virtual std::string Name() const = 0;

  // Item by position from 1 of an opened Location.
  virtual ItemPtr ItemAt(std::int32_t pos) = 0;
  virtual std::int32_t ItemCount() const = 0;

  // A setting by key, "" if there is none; such as "#FilePattern", "Keywords", "ArchiveCondition".
  virtual std::string GetSetting(std::string_view key) = 0;

  // An option of a Location that the host knows, such as "type"; "" if it has none.
  virtual std::string GetOption(std::string_view key) = 0;

  // Reads an opened Location.
  virtual void Load() = 0;

  // Folder of the Location's files.
  virtual std::string FileLocation() const = 0;
};

using LocationPtr = std::shared_ptr<Location>;

// The connector of the host's Location of topics.
class VORLENT_PUBLIC TopicsConnector : public Object {
 public:
  // Whether the topics follow each single change.
  virtual void SetNotify(bool notify) = 0;
  // Drops what the topics hold of a connector or Location.
  virtual void ClearLocation(const ObjectPtr& source) = 0;
  // Takes up all items of a connector or Location.
  virtual void AddLocation(const ObjectPtr& source) = 0;
};

}  // namespace vorlent
