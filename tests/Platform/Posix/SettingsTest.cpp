#include "Platform/Settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/PathsTest.h"
#include "Platform/Posix/Settings.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

class SettingsTest : public PathsTest {};

TEST_F(SettingsTest, DriveCIsTheRootAndNoOtherExists) {
  EXPECT_EQ(os::DriveFolder('C'), "/");
  EXPECT_EQ(os::DriveFolder('c'), "/");
  for (const char letter : std::string("ABDEFGHIJKLMNOPQRSTUVWXYZ")) {
    EXPECT_EQ(os::DriveFolder(letter), std::nullopt) << letter;
  }
}

TEST_F(SettingsTest, DriveStandsForTheFolderGiven) {
  folder_.Write("Mail/Inbox", "x");
  os::SetDrive('m', In("Mail"));
  EXPECT_EQ(os::FileLength("M:\\Inbox"), 1u);
  EXPECT_EQ(os::DriveFolder('M'), In("Mail"));
}

TEST_F(SettingsTest, RelativeDriveFolderIsThatOfTheMoment) {
  folder_.MakeFolder("Mail");
  fs::current_path(folder_.Native());
  os::SetDrive('M', "Mail/../Mail/");
  fs::current_path(startFolder_);
  EXPECT_EQ(os::DriveFolder('M'), In("Mail"));
}

TEST_F(SettingsTest, DriveCanBeTakenAway) {
  os::SetDrive('C', "");
  EXPECT_EQ(os::DriveFolder('C'), std::nullopt);
  EXPECT_EQ(os::ToNativePath("C:\\tmp"), "");
}

TEST_F(SettingsTest, OnlyLettersAreDrives) {
  for (const char c : {'1', '@', '[', '`', '{', ' ', '\xC4'}) {
    EXPECT_THROW(os::SetDrive(c, "/"), Failure) << c;
    EXPECT_EQ(os::DriveFolder(c), std::nullopt) << c;
  }
}

TEST_F(SettingsTest, ResetTakesBackAllOfThem) {
  os::SetDrive('C', In("windows"));
  os::SetDrive('M', In("Mail"));
  os::SetHomeFolder(In("home"));
  os::SetAppDataFolder(In("copy"));
  EXPECT_EQ(os::HomeFolder(), In("home"));
  EXPECT_EQ(os::CurrentSettings().appData, In("copy"));
  os::ResetSettings();
  EXPECT_EQ(os::DriveFolder('C'), "/");
  EXPECT_EQ(os::DriveFolder('M'), std::nullopt);
  EXPECT_NE(os::HomeFolder(), In("home"));
  EXPECT_EQ(os::CurrentSettings().appData, std::nullopt);
}

}  // namespace
}  // namespace vorlent
