// The lines of a log on the screen.
#pragma once

#include <QPlainTextEdit>

namespace vorlent::wizard {

// Shows the end of what was written, until the user scrolls up, and again once the user scrolled back to it.
class LogView : public QPlainTextEdit {
 public:
  explicit LogView(QWidget* parent);

 private:
  void StayAtTheEnd();

  bool follows_ = true;
};

}  // namespace vorlent::wizard
