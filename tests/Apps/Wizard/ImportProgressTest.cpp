#include "Apps/Wizard/ImportProgress.h"

#include <gtest/gtest.h>

#include <QScrollBar>
#include <string>

#include "UserScript.h"

namespace vorlent::wizard {
namespace {

class ImportProgressTest : public testing::Test {
 protected:
  void SetUp() override {
    progress.ProgressOpened("Import");
    progress.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&progress));
  }
  ~ImportProgressTest() override { progress.ProgressClosed(); }

  void Write(int lines) {
    for (int i = 0; i < lines; ++i)
      progress.LogLine(" 12:00:00: C:\\" + std::string(300, 'm'));
    QApplication::processEvents();
  }
  QScrollBar& Place() { return *Find<QPlainTextEdit>(progress, "Log").verticalScrollBar(); }

  std::atomic<bool> cancelled = false;
  ImportProgress progress{[this]() -> std::atomic<bool>& { return cancelled; }, nullptr};
};

TEST_F(ImportProgressTest, LogFollowsItsEnd) {
  for (int i = 0; i < 100; ++i) {
    Write(1);
    EXPECT_EQ(Place().value(), Place().maximum()) << "line " << i;
  }
  EXPECT_GT(Place().maximum(), 0);
}

TEST_F(ImportProgressTest, LogStaysWhereTheUserScrolledItUntilTheEndIsSeenAgain) {
  Write(100);
  Press(Qt::Key_PageUp);
  const int place = Place().value();
  EXPECT_LT(place, Place().maximum());
  Write(50);
  EXPECT_EQ(Place().value(), place);
  Press(Qt::Key_End);
  EXPECT_EQ(Place().value(), Place().maximum());
  Write(50);
  EXPECT_EQ(Place().value(), Place().maximum());
}

TEST_F(ImportProgressTest, LogFollowsItsEndInAWindowOfAnotherSize) {
  Write(100);
  progress.resize(progress.width(), progress.height() - 50);
  Write(1);
  EXPECT_EQ(Place().value(), Place().maximum());
}

}  // namespace
}  // namespace vorlent::wizard
