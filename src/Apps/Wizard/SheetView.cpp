#include "Apps/Wizard/SheetView.h"

#include <QHeaderView>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "Apps/Wizard/Twips.h"

namespace vorlent::wizard {

namespace {

// Rows of the height that the sheet asks for, but never lower than their text.
class RowDelegate : public QStyledItemDelegate {
 public:
  RowDelegate(const Sheet& sheet, QWidget* view) : QStyledItemDelegate(view), sheet_(sheet), view_(*view) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(std::max(size.height(), ToPixels(sheet_.RowLayout(), view_)));
    return size;
  }

 private:
  const Sheet& sheet_;
  const QWidget& view_;
};

}  // namespace

SheetView::SheetView(Sheet& sheet, UserStep user, QWidget* parent)
    : QTreeView(parent),
      sheet_(sheet),
      user_(std::move(user)),
      model_(new SheetModel(sheet, style()->standardIcon(QStyle::SP_FileIcon), this)) {
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setEditTriggers(NoEditTriggers);
  setItemDelegate(new RowDelegate(sheet, this));
  setModel(model_);
  // Long paths scroll; only the rows on the screen are measured.
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  header()->setResizeContentsPrecision(0);

  model_->OnTick = [this](SheetRow& row, CheckState state) { user_([&] { sheet_.UserTicks(row, state); }); };
  model_->OnExpanded = [this](const QModelIndex& index, bool expanded) { ShowExpanded(index, expanded); };
  connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
    if (!syncing_) user_([&] { sheet_.UserOpens(model_->RowOf(index)); });
  });
  connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
    if (!syncing_) user_([&] { sheet_.UserCloses(model_->RowOf(index)); });
  });
  sheet_.OnRowsChange = [this] { SyncLater(); };
}

SheetView::~SheetView() {
  sheet_.OnRowsChange = nullptr;
}

void SheetView::Sync() {
  if (!syncIsDue_) return;
  syncIsDue_ = false;
  syncing_ = true;
  model_->Sync();
  syncing_ = false;
  if (!currentIndex().isValid()) setCurrentIndex(model_->index(0, 0));
}

int SheetView::sizeHintForColumn(int column) const {
  return std::max(QTreeView::sizeHintForColumn(column), viewport()->width());
}

void SheetView::SyncLater() {
  if (std::exchange(syncIsDue_, true)) return;
  QTimer::singleShot(0, this, [this] { Sync(); });
}

void SheetView::ShowExpanded(const QModelIndex& index, bool expanded) {
  setExpanded(index, expanded);
}

}  // namespace vorlent::wizard
