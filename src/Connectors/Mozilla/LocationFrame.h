// What the connectors have in common: the store of items, the keyword tree, the parameter item, and the
// host's questions about them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Common/KeyedList.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Host/Connector.h"
#include "Host/HostObjects.h"

namespace vorlent {

// What a connector writes into the parameter item of its Location.
struct ParameterSettings {
  std::string_view condition;
  std::string_view flags;
  bool restrictsAccess = false;  // names who may do what with the items: the current user, nobody else
};

// The parts of the frame that don't depend on the connector's interface.
namespace frame {

// Writes into a new parameter item what the host is to know of the connector's Location.
void FillParameterItem(Item& item, const ObjectPtr& connector, const ParameterSettings& settings);

// Runs `read` while the host's topics let go of the connector's items, and has them take up the new ones
// after it. A host without topics only gets `read`. A failure of `read` leaves the topics switched off.
void ReadBesideTopics(const ObjectPtr& connector, const std::function<void()>& read);

// Tells the host that the item was deleted from its Location.
void ReportDeleted(const ItemPtr& item);

// Tells the host why a Location could not be read.
void ReportUnreadable(const Cause& why);

// Tells the host something that a person has to know about what is read.
void Remark(const Cause& what);

// Tells the host that the address of a Location isn't one of the connector's.
void ReportForeignAddress();

// Cuts the scheme off an address and gives it; leaves an address of another scheme and gives "".
std::string CutScheme(std::string& address, std::string_view scheme);

// Whether something that isn't a file of bytes lies at a path where mails are expected: a pipe, a socket or a
// device, which might keep a reader waiting without end. Tells the host that it is passed over.
bool PassesOver(const std::string& path);

// As ReportUnreadable, after a message box that says the same.
void ShowUnreadable(std::string_view text);

}  // namespace frame

// An interface with Einlesen, which reads items and tree of the Location's address. The interface of the
// bookmarks lacks it: there only the frame calls it.
template <class Interface>
class Reading : public Interface {};

template <>
class Reading<BookmarkConnector> : public BookmarkConnector {
 public:
  virtual LocationState Einlesen() = 0;
};

// A connector of the interface given (MailConnector, BookmarkConnector or CalendarConnector), but for what is
// the connector's own: Parameters, Einlesen and Withdraw, which each connector has, and what it cares to
// override.
//
// It must be held by a shared pointer when InitLocation, NewItem or Reload is called, since items and topics
// learn of it. InitLocation, NewItem and DeleteItem need LocObject, and what makes or tells something needs
// the host; a failed call of either rises out of every member but PasteItem.
template <class Interface>
class LocationFrame : public Reading<Interface>,
                      public std::enable_shared_from_this<LocationFrame<Interface>> {
 public:
  LocationPtr LocObject() const final { return locObject_; }
  void SetLocObject(const LocationPtr& location) final { locObject_ = location; }

  TreePtr Tree() final {
    if (tree_ == nullptr) tree_ = HostObjects::Current().NewTree();
    return tree_;
  }
  void SetTree(const TreePtr& tree) final { tree_ = tree; }

  bool InitLocation(std::string_view file) final {
    const ItemPtr item = HostObjects::Current().NewItem();
    HostLocation().SetParameterItem(item);
    frame::FillParameterItem(Require(item), this->shared_from_this(), Parameters());
    return PrepareAddress(file);
  }

  LocationState OpenLocation(std::string_view) final { return this->Einlesen(); }

  // Nothing stays connected between calls.
  void Disconnect() final {}

  ItemPtr NewItem(bool conn = false) final {
    ItemPtr item = HostObjects::Current().NewItem();
    item->SetLocation(this->shared_from_this());
    if (conn) item->SetConnected(true);
    itemStore_.Add(item, item->ID());
    vorlent::Location& location = HostLocation();
    location.SetItemCounter(ToInt32(std::int64_t{location.ItemCounter()} + 1));
    location.SetLastItemTimer(static_cast<float>(SecondsSinceMidnight()));
    return item;
  }

  ItemPtr GetItem(std::string_view id) final {
    const ItemPtr* found = itemStore_.Find(id);
    return found == nullptr ? nullptr : *found;
  }

  bool HasID(std::string_view id) final { return HasObject(GetItem(id)); }

  std::int32_t Count() final { return itemStore_.Count(); }

  ItemPtr Item(std::int32_t pos) final { return pos < 1 || pos > Count() ? nullptr : itemStore_.Item(pos); }

  void Clear() final { ClearCollection(itemStore_); }

  ObjectPtr CreateEnum(ExpressionPtr& expr) final {
    const HostEnumPtr enumeration = HostObjects::Current().NewEnum();
    enumeration->Init(locObject_, expr);
    return enumeration;
  }

  // Swallows every failure step by step. The new item goes to the end, an earlier one of its ID goes.
  ItemPtr PasteItem(std::string_view import, bool conn) final {
    ItemPtr item;
    std::string bornAs;
    pasteLoss_ = {};
    PasteStep([&] { item = NewItem(conn); });
    PasteStep([&] { bornAs = Require(item).ID(); });
    PasteStep([&] { Require(item).ImportRecord(import); });
    PasteStep([&] { FileUnderNewID(item, bornAs); });
    if (conn) PasteStep([&] { Pasted(item, import); });
    PasteStep([&] { Require(item).SetConnected(true); });
    return item;
  }

  // Why the item of the last paste isn't there whole, empty if it is.
  const Cause& PasteLoss() const { return pasteLoss_; }

  bool DeleteItem(const ItemPtr& itm) final {
    if (IsNothing(itm)) return false;
    const bool withdrawn = Withdraw(itm);
    frame::ReportDeleted(itm);
    HostLocation().SetChanged(true);
    return withdrawn;
  }

  void Reload() override {
    frame::ReadBesideTopics(this->shared_from_this(), [this] { this->Einlesen(); });
  }

 protected:
  virtual ParameterSettings Parameters() const = 0;

  // What InitLocation does with the address after the parameter item; the result is that of InitLocation.
  virtual bool PrepareAddress(std::string_view file) {
    static_cast<void>(file);
    return true;
  }

  // Runs after a paste with `conn` true, its failures swallowed. The item is nothing if it could not be
  // made.
  virtual void Pasted(const ItemPtr& item, std::string_view import) {
    static_cast<void>(item);
    static_cast<void>(import);
  }

  // Deletes the item at its source, as far as the connector can, and takes it out of ItemStore. The result is
  // that of DeleteItem; a failure keeps the host from being told.
  virtual bool Withdraw(const ItemPtr& item) = 0;

  // The items in memory by ID, in order of arrival.
  KeyedList<ItemPtr>& ItemStore() { return itemStore_; }

  // The host's Location; raises ObjectNotSet before SetLocObject.
  vorlent::Location& HostLocation() const {
    if (locObject_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "the connector has no Location");
    return *locObject_;
  }

  // The address read by the last Einlesen.
  std::string lastAddress_;

 private:
  void FileUnderNewID(const ItemPtr& item, std::string_view bornAs) {
    const std::string id = Require(item).ID();
    if (id == bornAs) return;
    itemStore_.TryRemove(bornAs);
    itemStore_.TryRemove(id);
    itemStore_.Add(item, id);
  }

  // The first failure is kept.
  template <class Step>
  void PasteStep(Step&& step) {
    try {
      std::forward<Step>(step)();
    } catch (const Failure& failure) {
      if (pasteLoss_.IsEmpty()) pasteLoss_ = failure.Why();
    }
  }

  LocationPtr locObject_;
  Cause pasteLoss_;
  TreePtr tree_;
  KeyedList<ItemPtr> itemStore_;
};

}  // namespace vorlent
