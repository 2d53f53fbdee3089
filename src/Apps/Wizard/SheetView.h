// A sheet of the wizard on the screen.
#pragma once

#include <QTreeView>
#include <functional>
#include <optional>

#include "Apps/Wizard/SheetModel.h"
#include "Connectors/Mozilla/WizardSheet.h"

namespace vorlent::wizard {

// Runs something the user did, and deals with its failure.
using UserStep = std::function<void(const std::function<void()>& step)>;

// A tree with check boxes: the space bar ticks the row at hand, the arrow keys open and close it. What the
// sheet changes by itself is shown once control is back with Qt, at the latest with the next Sync.
class SheetView : public QTreeView {
 public:
  SheetView(Sheet& sheet, UserStep user, QWidget* parent);
  ~SheetView() override;

  void Sync();

 protected:
  // At least as wide as the view, so that the whole row shows that it is the current one, and as the widest
  // row, so that it can be scrolled to its end wherever it stands.
  int sizeHintForColumn(int column) const override;
  void changeEvent(QEvent* event) override;

 private:
  void SyncLater();
  void ShowExpanded(const QModelIndex& index, bool expanded);
  int WidestRow() const;

  Sheet& sheet_;
  UserStep user_;
  SheetModel* model_;
  bool syncing_ = false;
  bool syncIsDue_ = false;
  mutable std::optional<int> widestRow_;  // pixels; nothing until it is asked for
};

}  // namespace vorlent::wizard
