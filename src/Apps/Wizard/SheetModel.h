// A sheet of the wizard as a model that Qt's views can show.
#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Connectors/Mozilla/WizardSheet.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::wizard {

// Mirrors the rows as a tree of nodes, which hold copies of what is shown: paths as this system has them. The
// sheet tells each change by itself; Sync takes over all that piled up since, a run of new or gone rows below
// one parent in one step.
class SheetModel : public QAbstractItemModel {
 public:
  SheetModel(Sheet& sheet, QIcon icon, QObject* parent);
  ~SheetModel() override;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex&) const override { return 1; }
  QVariant data(const QModelIndex& index, int role) const override;
  // Ticks and clears rows through OnTick.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

  void Sync();

  // The sheet's row of an index. Valid until the sheet changes.
  SheetRow& RowOf(const QModelIndex& index);

  // Visits every row of which all rows above are open; the depth of the outermost is 0.
  using Visit = std::function<void(const QModelIndex& index, const QString& text, int depth)>;
  void ForEachOpen(const Visit& visit) const { ForEachOpen(*root_, 0, visit); }

  // The user ticks or clears a row.
  std::function<void(SheetRow& row, CheckState state)> OnTick;
  // A row is to be shown open or closed; called by Sync after the change of rows.
  std::function<void(const QModelIndex& index, bool expanded)> OnExpanded;

 private:
  struct Node;
  using Nodes = std::vector<std::unique_ptr<Node>>;

  // Positions of the rows directly below a row, among those from `first` up to, but not with, `end`.
  std::vector<std::int32_t> DirectRows(std::int32_t first, std::int32_t end) const;
  void SyncRows(Node& parent, std::int32_t first, std::int32_t end);
  void RemoveNodes(Node& parent, std::size_t first, std::size_t end);
  void InsertNodes(Node& parent, std::size_t place, const std::vector<std::int32_t>& positions,
                   std::size_t first, std::size_t last, std::int32_t end);
  std::unique_ptr<Node> NewNode(Node& parent, std::int32_t position, std::int32_t end);
  void ForEachOpen(const Node& parent, int depth, const Visit& visit) const;
  void SyncStates(Node& parent);
  void SyncState(Node& node);
  QModelIndex IndexOf(const Node& node) const;
  static void Renumber(Nodes& nodes, std::size_t first);
  static const Node* NodeOf(const QModelIndex& index);

  Sheet& sheet_;
  QIcon icon_;
  NativePaths paths_;
  std::unique_ptr<Node> root_;
  std::uint64_t shape_ = 0;
};

}  // namespace vorlent::wizard
