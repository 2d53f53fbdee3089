#include "Standalone/StandaloneTree.h"

#include <utility>

#include "Common/StdModul.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent {

namespace {

StandaloneTree& Node(const TreePtr& tree) {
  return static_cast<StandaloneTree&>(*tree);
}

}  // namespace

StandaloneTree::StandaloneTree() : index_(std::make_shared<Index>()), isRoot_(true) {}

StandaloneTree::StandaloneTree(std::shared_ptr<Index> index, std::string_view text, std::string_view keyword,
                               std::string path)
    : index_(std::move(index)), text_(text), keyword_(keyword), path_(std::move(path)), isRoot_(false) {}

void StandaloneTree::Clear() {
  if (isRoot_) {
    // Nodes that someone still holds keep the old index, so what is done to them can't reach this tree.
    index_ = std::make_shared<Index>();
  } else {
    for (const TreePtr& child : children_)
      Node(child).Forget();
  }
  children_.Clear();
  items_.Clear();
}

TreePtr StandaloneTree::AddChild(std::string_view text, std::string_view keyword) {
  const std::shared_ptr<StandaloneTree> child(new StandaloneTree(index_, text, keyword, PathBelow(keyword)));
  index_->nodes.try_emplace(child->path_, child);
  if (const std::size_t equals = keyword.find('='); isRoot_ && equals != std::string_view::npos) {
    index_->conditionKeys.emplace(keyword.substr(0, equals));
  }
  children_.Add(child);
  return child;
}

void StandaloneTree::ClearItems() {
  items_.Clear();
  for (const TreePtr& child : children_)
    child->ClearItems();
}

void StandaloneTree::AddItem(const ItemPtr& item) {
  if (item == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no item to file");
  const std::shared_ptr<StandaloneTree> node = NodeOf(*item);
  (node == nullptr ? *this : *node).items_.Add(item);
}

void StandaloneTree::AddKeywordPath(std::string_view keywords) {
  std::string rest(keywords);
  auto node = shared_from_this();
  while (!rest.empty()) {
    const std::string keyword = CutToken(rest, ",");
    if (keyword.empty()) continue;
    auto child = NodeAt(node->PathBelow(keyword));
    if (child == nullptr) child = std::static_pointer_cast<StandaloneTree>(node->AddChild(keyword, keyword));
    node = std::move(child);
  }
}

std::string StandaloneTree::PathBelow(std::string_view keyword) const {
  return path_.empty() ? std::string(keyword) : path_ + "," + std::string(keyword);
}

std::shared_ptr<StandaloneTree> StandaloneTree::NodeAt(std::string_view path) const {
  const auto found = index_->nodes.find(path);
  return found == index_->nodes.end() ? nullptr : found->second.lock();
}

// Null for the node itself.
std::shared_ptr<StandaloneTree> StandaloneTree::NodeOf(const Item& item) {
  const std::string keywords = PathBelow(KeywordsOf(item));
  for (std::string_view path = keywords; path.size() > path_.size();) {
    if (auto node = NodeAt(path)) return node;
    const std::size_t comma = path.rfind(',');
    path = comma == std::string_view::npos ? std::string_view() : path.substr(0, comma);
  }
  if (!isRoot_) return nullptr;
  for (const std::string& key : index_->conditionKeys) {
    const std::string value = item.DataText(key);
    if (value.empty()) continue;
    if (auto node = NodeAt(key + "=" + value)) return node;
  }
  return NodeAt({});
}

// Takes the node and all below it out of the index, in which a later node of the same path may stand by then.
void StandaloneTree::Forget() {
  const auto found = index_->nodes.find(path_);
  if (found != index_->nodes.end() && found->second.lock().get() == this) index_->nodes.erase(found);
  for (const TreePtr& child : children_)
    Node(child).Forget();
}

}  // namespace vorlent
