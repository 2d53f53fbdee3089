#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Host/Object.h"
#include "Platform/Public.h"

namespace vorlent {

// An item of the host: a mail, a bookmark, an event, a task, a place to browse, or a Location's parameters.
class VORLENT_PUBLIC Item : public Object {
 public:
  // A new item comes with an ID of its own, which is the key in the connector's store.
  virtual std::string ID() const = 0;
  virtual void SetID(std::string_view id) = 0;

  // The type word: "mail", "url", "location", "parameter", "termin", "task".
  virtual std::string Type() const = 0;
  virtual void SetType(std::string_view type) = 0;

  // Display text.
  virtual std::string Text() const = 0;
  virtual void SetText(std::string_view text) = 0;

  // Date text.
  virtual std::string Date() const = 0;

  virtual void SetConnected(bool connected) = 0;

  virtual std::int32_t DataCount() const = 0;
  // Key of a data field, by position from 1.
  virtual std::string DataKey(std::int32_t pos) const = 0;
  // Value of a data field, "" if absent.
  virtual std::string DataText(std::string_view key) const = 0;
  // Writes a data field. The component passes false as flag; its meaning is the host's.
  virtual void SetData(std::string_view key, std::string_view value, bool flag) = 0;

  // Adds a keyword. The meaning of the flag is the host's.
  virtual void AddKeyword(std::string_view keyword, bool flag = false) = 0;

  // Date texts of the item, "" where there is none.
  virtual std::string DateCreated() const = 0;
  virtual std::string DateModified() const = 0;
  virtual std::string DateVisited() const = 0;

  // Who may do what with the Location's items.
  virtual void SetAccessList(std::string_view list) = 0;
  virtual void SetAccessDefault(std::string_view access) = 0;

  // False while a parameter item is set up, then true.
  virtual void SetReady(bool ready) = 0;

  // The connector that owns the item, held without keeping it alive.
  virtual void SetLocation(const ObjectPtr& connector) = 0;

  // The text in which automatic topics are searched.
  virtual std::string FullText() const = 0;

  // Fills the item from a record string; a record with an "ID=" changes the item's ID.
  virtual void ImportRecord(std::string_view record) = 0;

  // A text that addresses the item from outside.
  virtual std::string Address() const = 0;

  // Path of the file of a data field; the component passes index 0.
  virtual std::string DataFile(std::string_view key, std::int32_t index) const = 0;

  // Brings the file at `path` into the item under a key. `options` such as "move|nofileattribute"; `metaData`
  // are lines of key=value that describe the file.
  virtual void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                        std::string_view metaData) = 0;
};

using ItemPtr = std::shared_ptr<Item>;

}  // namespace vorlent
