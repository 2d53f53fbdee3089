// A user in front of modal windows: steps that are taken one after the other while the program waits for
// input.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <string>

namespace vorlent::wizard {

// Each step waits for its window to be the active one. A window that doesn't come fails the test and closes
// all, so that the program goes on.
class UserScript {
 public:
  UserScript() {
    waiting_.start();
    Watch();
  }
  ~UserScript() { EXPECT_TRUE(steps_.empty()) << steps_.size() << " steps were not taken"; }

  // Acts once a window of that class is the active modal one and, if told, ready.
  template <class Window>
  void In(std::function<void(Window&)> act, std::function<bool(Window&)> ready = nullptr) {
    steps_.push_back([act = std::move(act), ready = std::move(ready)]() -> std::function<void()> {
      auto* window = dynamic_cast<Window*>(QApplication::activeModalWidget());
      // There is no window manager that gives the focus back after a window that closed.
      if (window != nullptr && QApplication::focusWindow() == nullptr) window->activateWindow();
      if (window == nullptr || !window->isActiveWindow() || (ready && !ready(*window))) return nullptr;
      return [act, window] { act(*window); };
    });
  }

 private:
  // Anew each time: a step may open a window in which the next one is taken.
  void Watch() {
    QTimer::singleShot(5, &context_, [this] { TakeStep(); });
  }

  void TakeStep() {
    Watch();
    if (steps_.empty()) return waiting_.start(), void();
    if (const auto act = steps_.front()()) {
      steps_.pop_front();
      waiting_.start();
      act();
    } else if (waiting_.elapsed() > 10'000) {
      ADD_FAILURE() << "a window that the user waits for didn't come";
      steps_.clear();
      QApplication::closeAllWindows();
    }
  }

  QObject context_;
  QElapsedTimer waiting_;
  std::deque<std::function<std::function<void()>()>> steps_;
};

// The widget of that object name in a window.
template <class Widget>
Widget& Find(QWidget& window, const char* name) {
  auto* widget = window.findChild<Widget*>(name);
  if (widget == nullptr) {
    // Nothing may be thrown through Qt.
    std::fprintf(stderr, "no widget %s\n", name);
    std::abort();
  }
  return *widget;
}

// Keys go to the window that has the focus, as from a keyboard.
inline void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  // As for a step: nobody else gives the focus back.
  if (QApplication::focusWindow() == nullptr) QApplication::activeModalWidget()->activateWindow();
  if (!QTest::qWaitFor([] { return QApplication::focusWindow() != nullptr; })) {
    ADD_FAILURE() << "no window has the focus";
    return;
  }
  QTest::keyClick(QApplication::focusWindow(), key, modifiers);
}
// A mnemonic; the button that it means stays pressed for a moment before it acts.
inline void PressAlt(Qt::Key key) {
  Press(key, Qt::AltModifier);
  const bool acted = QTest::qWaitFor([] {
    const QWidgetList widgets = QApplication::allWidgets();
    return std::none_of(widgets.begin(), widgets.end(), [](const QWidget* widget) {
      const auto* button = dynamic_cast<const QAbstractButton*>(widget);
      return button != nullptr && button->isDown();
    });
  });
  EXPECT_TRUE(acted) << "a button stayed pressed";
}
inline void Type(const QString& text) {
  for (const QChar c : text)
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_unknown, c, Qt::NoModifier);
}
inline void Click(QWidget& window, const char* name) {
  QTest::mouseClick(&Find<QWidget>(window, name), Qt::LeftButton);
}

}  // namespace vorlent::wizard
