#include "Apps/Wizard/Guarded.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <stdexcept>

#include "Platform/Failure.h"
#include "UserScript.h"

namespace vorlent::wizard {
namespace {

// Presses a button whose slot runs a step, and returns what a message box tells.
QString ToldOf(const std::function<void()>& step) {
  QPushButton button;
  QObject::connect(&button, &QPushButton::clicked, &button, [&] { Guarded(&button, step); });
  UserScript user;
  QString told;
  user.In<QMessageBox>([&](QMessageBox& box) {
    told = box.text();
    Press(Qt::Key_Return);
  });
  button.show();
  button.click();
  return told;
}

TEST(GuardedTest, FailureInASlotIsToldWithWhatAPersonCanDo) {
  const QString told = ToldOf([] { throw Failure(ErrorNumber::DiskFull, "C:\\x", "full", Hint::MakeRoom); });
  EXPECT_EQ(told.toStdString(),
            "/x: full\n\nBitte auf diesem Datenträger Platz schaffen und es noch einmal versuchen.");
}

TEST(GuardedTest, AnyOtherErrorInASlotIsToldToo) {
  EXPECT_EQ(ToldOf([] { throw std::runtime_error("torn"); }).toStdString(), "torn");
}

// A window whose size can't be taken over.
class FailingWindow : public QWidget {
 protected:
  void resizeEvent(QResizeEvent*) override {
    Guarded(this, [] { throw Failure(ErrorNumber::Overflow, "overflow"); });
  }
};

TEST(GuardedTest, FailureInAnEventHandlerIsToldAndTheApplicationGoesOn) {
  FailingWindow window;
  window.setWindowTitle("Import");
  UserScript user;
  QString told;
  user.In<QMessageBox>([&](QMessageBox& box) {
    told = box.windowTitle() + ": " + box.text();
    Press(Qt::Key_Return);
  });
  window.show();
  EXPECT_EQ(told.toStdString(), "Import: overflow");
  EXPECT_TRUE(window.isVisible());
}

TEST(GuardedTest, StepThatSucceedsShowsNothing) {
  int steps = 0;
  EXPECT_TRUE(Guarded(nullptr, [&] { ++steps; }));
  EXPECT_EQ(steps, 1);
}

}  // namespace
}  // namespace vorlent::wizard
