#include "Apps/Wizard/SheetModel.h"

#include <iterator>
#include <utility>

#include "Apps/Wizard/QtText.h"
#include "Standalone/Phrases.h"

namespace vorlent::wizard {

struct SheetModel::Node {
  Node* parent = nullptr;
  int place = 0;  // among the parent's children
  SheetRow* row = nullptr;
  std::uint64_t serial = 0;
  QString text;
  bool hasIcon = false;
  CheckState state = CheckState::Clear;
  bool expanded = false;
  Nodes children;
};

SheetModel::SheetModel(Sheet& sheet, QIcon icon, QObject* parent)
    : QAbstractItemModel(parent), sheet_(sheet), icon_(std::move(icon)), root_(std::make_unique<Node>()) {
  Sync();
}

SheetModel::~SheetModel() = default;

// --- What views ask -------------------------------------------------------------------------------------

const SheetModel::Node* SheetModel::NodeOf(const QModelIndex& index) {
  return static_cast<const Node*>(index.constInternalPointer());
}

QModelIndex SheetModel::IndexOf(const Node& node) const {
  return node.parent == nullptr ? QModelIndex() : createIndex(node.place, 0, &node);
}

QModelIndex SheetModel::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) return {};
  const Node& above = parent.isValid() ? *NodeOf(parent) : *root_;
  return IndexOf(*above.children[static_cast<std::size_t>(row)]);
}

QModelIndex SheetModel::parent(const QModelIndex& child) const {
  return child.isValid() ? IndexOf(*NodeOf(child)->parent) : QModelIndex();
}

int SheetModel::rowCount(const QModelIndex& parent) const {
  const Node& above = parent.isValid() ? *NodeOf(parent) : *root_;
  return static_cast<int>(above.children.size());
}

QVariant SheetModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Node& node = *NodeOf(index);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return node.text;
    case Qt::DecorationRole:
      return node.hasIcon ? QVariant(icon_) : QVariant();
    case Qt::CheckStateRole:
      return node.state == CheckState::Ticked ? Qt::Checked : Qt::Unchecked;
    default:
      return {};
  }
}

bool SheetModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::CheckStateRole || !OnTick) return false;
  OnTick(RowOf(index), value.toInt() == Qt::Checked ? CheckState::Ticked : CheckState::Clear);
  return true;
}

Qt::ItemFlags SheetModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
  return index.isValid() ? flags | Qt::ItemIsUserCheckable : flags;
}

SheetRow& SheetModel::RowOf(const QModelIndex& index) {
  return *NodeOf(index)->row;
}

// --- Taking over changes --------------------------------------------------------------------------------

void SheetModel::Sync() {
  if (std::exchange(shape_, sheet_.Shape()) != sheet_.Shape()) SyncRows(*root_, 1, sheet_.RowCount() + 1);
  SyncStates(*root_);
}

std::vector<std::int32_t> SheetModel::DirectRows(std::int32_t first, std::int32_t end) const {
  std::vector<std::int32_t> positions;
  std::int16_t indent = 0;
  for (std::int32_t position = first; position < end; ++position) {
    const std::int16_t own = sheet_.Row(position).Indent();
    if (!positions.empty() && own > indent) continue;
    indent = own;
    positions.push_back(position);
  }
  return positions;
}

// Rows in front and rows behind that are the same as before stay; what lies between goes and comes in one run
// each.
void SheetModel::SyncRows(Node& parent, std::int32_t first, std::int32_t end) {
  const std::vector<std::int32_t> wanted = DirectRows(first, end);
  const auto isSame = [&](std::size_t node, std::size_t row) {
    return parent.children[node]->serial == sheet_.Row(wanted[row]).Serial();
  };
  const std::size_t had = parent.children.size();
  const std::size_t shorter = std::min(had, wanted.size());
  std::size_t inFront = 0;
  while (inFront < shorter && isSame(inFront, inFront))
    ++inFront;
  std::size_t behind = 0;
  while (behind < shorter - inFront && isSame(had - 1 - behind, wanted.size() - 1 - behind))
    ++behind;

  RemoveNodes(parent, inFront, had - behind);
  InsertNodes(parent, inFront, wanted, inFront, wanted.size() - behind, end);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const bool isNew = i >= inFront && i < wanted.size() - behind;
    if (!isNew) SyncRows(*parent.children[i], wanted[i] + 1, i + 1 < wanted.size() ? wanted[i + 1] : end);
  }
}

void SheetModel::RemoveNodes(Node& parent, std::size_t first, std::size_t end) {
  if (first == end) return;
  beginRemoveRows(IndexOf(parent), static_cast<int>(first), static_cast<int>(end) - 1);
  const auto begin = parent.children.begin();
  parent.children.erase(begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end));
  Renumber(parent.children, first);
  endRemoveRows();
}

void SheetModel::InsertNodes(Node& parent, std::size_t place, const std::vector<std::int32_t>& positions,
                             std::size_t first, std::size_t last, std::int32_t end) {
  if (first == last) return;
  Nodes added;
  for (std::size_t i = first; i < last; ++i) {
    added.push_back(NewNode(parent, positions[i], i + 1 < positions.size() ? positions[i + 1] : end));
  }
  beginInsertRows(IndexOf(parent), static_cast<int>(place), static_cast<int>(place + added.size()) - 1);
  parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(place),
                         std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
  Renumber(parent.children, place);
  endInsertRows();
}

std::unique_ptr<SheetModel::Node> SheetModel::NewNode(Node& parent, std::int32_t position, std::int32_t end) {
  SheetRow& row = sheet_.Row(position);
  auto node = std::make_unique<Node>();
  node->parent = &parent;
  node->row = &row;
  node->serial = row.Serial();
  node->text = ToQt(TranslatedName(paths_.Of(row.Text())));
  node->hasIcon = !row.Icon().empty();
  node->state = row.State();
  const std::vector<std::int32_t> below = DirectRows(position + 1, end);
  for (std::size_t i = 0; i < below.size(); ++i) {
    node->children.push_back(NewNode(*node, below[i], i + 1 < below.size() ? below[i + 1] : end));
  }
  Renumber(node->children, 0);
  return node;
}

void SheetModel::Renumber(Nodes& nodes, std::size_t first) {
  for (std::size_t place = first; place < nodes.size(); ++place)
    nodes[place]->place = static_cast<int>(place);
}

void SheetModel::ForEachOpen(const Node& parent, int depth, const Visit& visit) const {
  for (const auto& node : parent.children) {
    visit(IndexOf(*node), node->text, depth);
    if (node->expanded) ForEachOpen(*node, depth + 1, visit);
  }
}

void SheetModel::SyncStates(Node& parent) {
  for (const auto& node : parent.children) {
    SyncState(*node);
    SyncStates(*node);
  }
}

void SheetModel::SyncState(Node& node) {
  if (std::exchange(node.state, node.row->State()) != node.state) {
    Q_EMIT dataChanged(IndexOf(node), IndexOf(node), {Qt::CheckStateRole});
  }
  if (std::exchange(node.expanded, node.row->Expanded()) != node.expanded && OnExpanded) {
    OnExpanded(IndexOf(node), node.expanded);
  }
}

}  // namespace vorlent::wizard
