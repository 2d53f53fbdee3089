// The standalone host's keyword tree.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Host/Tree.h"

namespace vorlent {

// A node. The path of a node is the comma-separated text of the keywords from the top down, as connectors
// join them: an empty keyword in front adds nothing, so that an unnamed top node is passed through.
//
// An item is filed at the node whose path is its keyword text, else at the nearest one above. So a keyword
// that holds a comma is found again, and filing costs no more than the depth. An item without a node for its
// keywords goes to the top node "<key>=<value>" of one of its data fields, such as "Calendar=Home", and
// without that to the unnamed top node or the root.
class StandaloneTree : public Tree, public std::enable_shared_from_this<StandaloneTree> {
 public:
  // A root.
  StandaloneTree();

  std::string Text() const override { return text_; }
  KeyedList<ItemPtr> Items() const override { return items_; }
  // "" unless the host was told one.
  std::string Description() const override { return description_; }
  KeyedList<TreePtr> Children() const override { return children_; }
  void Clear() override;
  TreePtr AddChild(std::string_view text, std::string_view keyword) override;
  void ClearItems() override;
  void AddItem(const ItemPtr& item) override;
  std::int32_t ItemCount() const override { return items_.Count(); }
  std::int32_t ChildCount() const override { return children_.Count(); }
  // Nodes that are made show the keyword as text. Empty keywords are passed over.
  void AddKeywordPath(std::string_view keywords) override;

  // --- What the host itself knows and does beyond the contract

  const std::string& Keyword() const { return keyword_; }
  const std::string& Path() const { return path_; }
  void SetDescription(std::string_view description) { description_ = description; }

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  // Nodes of a whole tree by path, the first of a path only, and the keys of its "<key>=<value>" top nodes.
  struct Index {
    std::unordered_map<std::string, std::weak_ptr<StandaloneTree>, TextHash, std::equal_to<>> nodes;
    std::set<std::string, std::less<>> conditionKeys;
  };

  StandaloneTree(std::shared_ptr<Index> index, std::string_view text, std::string_view keyword,
                 std::string path);

  std::string PathBelow(std::string_view keyword) const;
  std::shared_ptr<StandaloneTree> NodeAt(std::string_view path) const;
  std::shared_ptr<StandaloneTree> NodeOf(const Item& item);
  void Forget();

  std::shared_ptr<Index> index_;
  std::string text_, keyword_, path_, description_;
  bool isRoot_;
  KeyedList<TreePtr> children_;
  KeyedList<ItemPtr> items_;
};

}  // namespace vorlent
