#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Host/Item.h"
#include "Platform/Public.h"

namespace vorlent {

class Tree;
using TreePtr = std::shared_ptr<Tree>;

// A node of the keyword tree; the root is the connector's tree.
class VORLENT_PUBLIC Tree : public Object {
 public:
  // The text that the node shows.
  virtual std::string Text() const = 0;

  // Items of the node, in order.
  virtual KeyedList<ItemPtr> Items() const = 0;

  // A longer text about the node, "" if it has none.
  virtual std::string Description() const = 0;

  // Child nodes, in order.
  virtual KeyedList<TreePtr> Children() const = 0;

  // Removes all nodes.
  virtual void Clear() = 0;

  // Adds a child node that shows `text` and stands for `keyword`, and returns it.
  virtual TreePtr AddChild(std::string_view text, std::string_view keyword) = 0;

  // Drops the items of the whole tree; the nodes stay.
  virtual void ClearItems() = 0;

  // Files an item under the nodes of its keywords.
  virtual void AddItem(const ItemPtr& item) = 0;

  virtual std::int32_t ItemCount() const = 0;
  virtual std::int32_t ChildCount() const = 0;

  // Ensures that the nodes of a comma-separated keyword path exist.
  virtual void AddKeywordPath(std::string_view keywords) = 0;
};

}  // namespace vorlent
