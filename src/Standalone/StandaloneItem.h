// The standalone host's items.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Item.h"
#include "Standalone/ItemRecord.h"

namespace vorlent {

class StandaloneItem;

// Hears of changes that the host makes to an item which is connected to its source, so that they can be
// passed on to it. A change is an action number (HostActions.h) and its value: "" but for a data field, where
// it is "key=value".
class ItemListener {
 public:
  virtual ~ItemListener() = default;
  virtual void ItemChanged(StandaloneItem& item, std::int32_t action, std::string_view value) = 0;
};

// What the listeners and items of one host share: the listener in use, null for none.
struct ItemListenerSlot {
  ItemListener* listener = nullptr;
};

// An item is the fields of its record. It tells its listener of changes while it is connected and ready.
class StandaloneItem : public Item, public std::enable_shared_from_this<StandaloneItem> {
 public:
  // Born with an ID of its own.
  explicit StandaloneItem(std::shared_ptr<const ItemListenerSlot> listeners = nullptr);

  std::string ID() const override { return record_.Value(record_key::kId); }
  void SetID(std::string_view id) override { record_.Set(record_key::kId, id); }
  std::string Type() const override { return record_.Value(record_key::kType); }
  void SetType(std::string_view type) override { record_.Set(record_key::kType, type); }
  std::string Text() const override { return record_.Value(record_key::kText); }
  void SetText(std::string_view text) override;
  std::string Date() const override { return record_.Value(record_key::kDate); }
  void SetConnected(bool connected) override { connected_ = connected; }

  std::int32_t DataCount() const override { return record_.DataCount(); }
  std::string DataKey(std::int32_t pos) const override { return record_.DataKey(pos); }
  std::string DataText(std::string_view key) const override { return record_.DataValue(key); }
  void SetData(std::string_view key, std::string_view value, bool flag) override;

  // Adds a keyword to the list unless it is there.
  void AddKeyword(std::string_view keyword, bool flag = false) override;

  // The first stamp of the log. An item without a log was made at its date.
  std::string DateCreated() const override;
  // The second stamp of the log; an item that was never changed gives its DateCreated.
  std::string DateModified() const override;
  // Nothing in a record tells it.
  std::string DateVisited() const override { return {}; }

  void SetAccessList(std::string_view list) override { accessList_ = list; }
  void SetAccessDefault(std::string_view access) override { accessDefault_ = access; }
  void SetReady(bool ready) override { ready_ = ready; }
  void SetLocation(const ObjectPtr& connector) override { location_ = connector; }

  // Text, data and file names, each on a line.
  std::string FullText() const override;

  void ImportRecord(std::string_view record) override;

  // The Location's address, "#" and the ID; the ID alone without a Location.
  std::string Address() const override;

  // Brings the file out of its source, or gives the path that the data field names. "" for an index other
  // than 0, or for a field that is absent or empty.
  std::string DataFile(std::string_view key, std::int32_t index) const override;

  // An item in memory has no place for files: raises PathAccess. The items of an archive have.
  void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                std::string_view metaData) override;

  // --- What the host itself knows and does beyond the contract

  std::string Keywords() const { return record_.Value(record_key::kKeywords); }
  std::string Owner() const { return record_.Value(record_key::kOwner); }
  std::string Log() const { return record_.Value(record_key::kLog); }
  // The address of the mailbox that a streamed mail came from.
  std::string Source() const { return record_.Value(record_key::kSource); }
  // The item's fields as a record string.
  std::string Record() const { return record_.Text(); }

  // Whether the Location that was given the item had it already.
  virtual bool WasThere() const { return false; }

  void SetDate(std::string_view date);

  bool IsConnected() const { return connected_; }
  bool IsReady() const { return ready_; }
  const std::string& AccessList() const { return accessList_; }
  const std::string& AccessDefault() const { return accessDefault_; }
  // The connector that owns the item, null once it is gone.
  ObjectPtr Location() const { return location_.lock(); }

 protected:
  // Runs after every change of a field. This one notes the time of a change made by the host and tells the
  // listener.
  virtual void Changed(std::int32_t action, std::string_view value);

  ItemRecord record_;

 private:
  void NoteModification();

  std::shared_ptr<const ItemListenerSlot> listeners_;
  std::weak_ptr<Object> location_;
  std::string accessList_;
  std::string accessDefault_;
  bool connected_ = false;
  bool ready_ = true;
};

using StandaloneItemPtr = std::shared_ptr<StandaloneItem>;

// The item as this host's own; null for nothing and for an item of another host.
inline StandaloneItemPtr AsStandalone(const ItemPtr& item) {
  return std::dynamic_pointer_cast<StandaloneItem>(item);
}

// The item's keywords, comma-separated; "" for an item of another host.
std::string KeywordsOf(const Item& item);

// The bare names of an item's files, in order of its data fields.
std::vector<std::string> FileNames(const Item& item);

}  // namespace vorlent
