#include "Apps/Wizard/SheetView.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QHeaderView>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Apps/Wizard/Guarded.h"
#include "Apps/Wizard/Twips.h"
#include "Platform/AtEnd.h"

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

// How much room texts take. Each character is measured once: what two of them share is left out of account,
// and thousands of rows are measured at once.
class TextWidths {
 public:
  explicit TextWidths(const QFont& font) : metrics_(font), widths_(0x10000, kUnknown) {}

  double Of(const QString& text) {
    double width = 0;
    for (const QChar c : text) {
      double& own = widths_[c.unicode()];
      if (own == kUnknown) own = metrics_.horizontalAdvance(c);
      width += own;
    }
    return width;
  }

 private:
  static constexpr double kUnknown = -1;

  QFontMetricsF metrics_;
  std::vector<double> widths_;
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
  // Long paths scroll.
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
  const auto measureAnew = [this] { widestRow_.reset(); };
  connect(model_, &SheetModel::rowsInserted, this, measureAnew);
  connect(model_, &SheetModel::rowsRemoved, this, measureAnew);
  connect(this, &QTreeView::expanded, this, measureAnew);
  connect(this, &QTreeView::collapsed, this, measureAnew);
  sheet_.OnRowsChange = [this] { SyncLater(); };
}

SheetView::~SheetView() {
  sheet_.OnRowsChange = nullptr;
}

void SheetView::Sync() {
  if (!syncIsDue_) return;
  syncIsDue_ = false;
  {
    const AtEnd isSynced([&] { syncing_ = false; });
    syncing_ = true;
    model_->Sync();
  }
  if (!currentIndex().isValid()) setCurrentIndex(model_->index(0, 0));
}

int SheetView::sizeHintForColumn(int column) const {
  if (!widestRow_) widestRow_ = WidestRow();
  return std::max({QTreeView::sizeHintForColumn(column), *widestRow_, viewport()->width()});
}

int SheetView::WidestRow() const {
  TextWidths widths(font());
  QModelIndex widest;
  double textWidth = 0;
  double width = -1;
  int indented = 0;
  model_->ForEachOpen([&](const QModelIndex& index, const QString& text, int depth) {
    const double own = widths.Of(text);
    const int left = (depth + 1) * indentation();
    if (own + left <= width) return;
    widest = index;
    textWidth = own;
    width = own + left;
    indented = left;
  });
  if (!widest.isValid()) return 0;
  // The check box, the icon and the margins are those of every row.
  const double drawn = QFontMetricsF(font()).horizontalAdvance(widest.data().toString());
  return sizeHintForIndex(widest).width() + indented +
         static_cast<int>(std::ceil(std::max(0.0, textWidth - drawn)));
}

void SheetView::changeEvent(QEvent* event) {
  QTreeView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) widestRow_.reset();
}

void SheetView::SyncLater() {
  if (std::exchange(syncIsDue_, true)) return;
  QTimer::singleShot(0, this, [this] { Guarded(this, [&] { Sync(); }); });
}

void SheetView::ShowExpanded(const QModelIndex& index, bool expanded) {
  setExpanded(index, expanded);
}

}  // namespace vorlent::wizard
