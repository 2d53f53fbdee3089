#include "Apps/Wizard/LogView.h"

#include <QScrollBar>

namespace vorlent::wizard {

// The end moves with each line, but also when the first long one takes room for a bar at the bottom: a view
// that compares its place with the end only when a line comes would stand still from then on.
LogView::LogView(QWidget* parent) : QPlainTextEdit(parent) {
  setReadOnly(true);
  setLineWrapMode(NoWrap);
  setTabChangesFocus(true);
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this,
          [this] { follows_ = verticalScrollBar()->sliderPosition() == verticalScrollBar()->maximum(); });
  connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { StayAtTheEnd(); });
}

void LogView::StayAtTheEnd() {
  if (follows_) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

}  // namespace vorlent::wizard
