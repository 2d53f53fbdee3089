#include "Platform/SystemPlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <tuple>

#include "Platform/Failure.h"
#include "Platform/Settings.h"
#include "Support/PrintDateTime.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTimeZone.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

class DesktopTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetSettings(); }
  void TearDown() override {
    os::ResetSettings();
    fs::current_path(startFolder_);
  }

  TemporaryFolder folder_;
  fs::path startFolder_ = fs::current_path();
  SystemPlatform platform_;
};

TEST_F(DesktopTest, CurrentFolderIsReadAndSet) {
  folder_.MakeFolder("Mail");
  platform_.SetCurrentFolder(folder_.Path("Mail"));
  EXPECT_EQ(platform_.CurrentFolder(), folder_.Path("Mail"));
  EXPECT_EQ(fs::current_path(), folder_.Native("Mail"));
  platform_.SetCurrentFolder(folder_.Path());
  platform_.SetCurrentFolder(folder_.Path("MAIL"));
  EXPECT_TRUE(fs::equivalent(fs::current_path(), folder_.Native("Mail")));
}

TEST_F(DesktopTest, MissingFolderCannotBecomeCurrent) {
  folder_.Write("file", "");
  for (const std::string& path :
       {folder_.Path("none"), folder_.Path("file"), std::string("Q:\\"), std::string()}) {
    EXPECT_EQ(SwallowedNumber([&] { platform_.SetCurrentFolder(path); }), 76) << path;
  }
  EXPECT_EQ(fs::current_path(), startFolder_);
}

TEST_F(DesktopTest, WaitTakesItsTime) {
  const auto start = std::chrono::steady_clock::now();
  platform_.Wait(30);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST_F(DesktopTest, ClockIsThatOfTheSystem) {
  const DateTime before = os::LocalNow();
  const DateTime now = platform_.Now();
  const DateTime after = os::LocalNow();
  const auto order = [](const DateTime& t) {
    return std::tie(t.year, t.month, t.day, t.hour, t.minute, t.second, t.millisecond);
  };
  EXPECT_LE(order(before), order(now));
  EXPECT_LE(order(now), order(after));
}

TEST_F(DesktopTest, SystemsOwnPlatformIsTheFirstAndComesBack) {
  EXPECT_NE(dynamic_cast<SystemPlatform*>(&Platform::Current()), nullptr);
  {
    const ScopedRecordingPlatform recording;
    EXPECT_EQ(&Platform::Current(), &*recording);
    const auto previous = Platform::Install(nullptr);
    EXPECT_EQ(previous.get(), &*recording);
    EXPECT_NE(dynamic_cast<SystemPlatform*>(&Platform::Current()), nullptr);
  }
  EXPECT_NE(dynamic_cast<SystemPlatform*>(&Platform::Current()), nullptr);
}

}  // namespace
}  // namespace vorlent
