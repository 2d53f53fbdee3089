#include "Apps/Wizard/Guarded.h"

#include <QApplication>
#include <QMessageBox>
#include <exception>

#include "Apps/Wizard/QtText.h"
#include "Platform/Failure.h"

namespace vorlent::wizard {

bool Guarded(QWidget* window, const std::function<void()>& step) {
  const QString failure = FailureOf(step);
  if (failure.isEmpty()) return true;
  TellFailure(window, failure);
  return false;
}

QString FailureOf(const std::function<void()>& step) {
  try {
    step();
  } catch (const Failure& failure) {
    return ShownWithHint(failure.Why());
  } catch (const std::exception& error) {
    return QString::fromUtf8(error.what());
  }
  return {};
}

void TellFailure(QWidget* window, const QString& failure) {
  QWidget* over = window == nullptr ? QApplication::activeWindow() : window->window();
  QMessageBox::critical(over, over == nullptr ? QString() : over->windowTitle(), failure);
}

}  // namespace vorlent::wizard
