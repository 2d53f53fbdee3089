#include "Platform/Posix/ApplicationPlaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/PathsTest.h"
#include "Platform/Settings.h"
#include "Support/ScopedEnvironment.h"

namespace vorlent {
namespace {

using testing::IsEmpty;

class ApplicationPlacesTest : public PathsTest {
 protected:
  void SetUp() override {
    PathsTest::SetUp();
    os::SetHomeFolder(folder_.Native().string());
  }
};

TEST_F(ApplicationPlacesTest, ApplicationsAreFoundWhereTheyKeepTheirData) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.Write(".mozilla/firefox/profiles.ini", "f");
  folder_.Write(".mozilla/sunbird/profiles.ini", "s");
  const std::string base = os::AppDataPath();
  EXPECT_EQ(base, folder_.Path("AppData"));
  EXPECT_EQ(os::ToNativePath(base + "\\Thunderbird\\profiles.ini"), In(".thunderbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla\\FireFox\\profiles.ini"), In(".mozilla/firefox/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla\\Sunbird\\profiles.ini"), In(".mozilla/sunbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Thunderbird"), In(".thunderbird"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla"), In(".mozilla"));
}

TEST_F(ApplicationPlacesTest, LetterCaseAndSeparatorsOfThePathDoNotMatter) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  const std::string path = LowerCase(os::AppDataPath()) + "/THUNDERBIRD/Profiles.INI";
  EXPECT_EQ(os::ToNativePath(path), In(".thunderbird/profiles.ini"));
}

TEST_F(ApplicationPlacesTest, FolderItselfStandsForTheHome) {
  folder_.Write("notes.txt", "");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath()), In(""));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\notes.txt"), In("notes.txt"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbirds"), In("Thunderbirds"));
}

TEST_F(ApplicationPlacesTest, FirstPlaceThatExistsIsTaken) {
  struct Row {
    std::string_view name;
    const char* place;
  };
  // From the last choice to the first: each goes before those made earlier.
  const Row rows[] = {
      {"Thunderbird", ".var/app/org.mozilla.thunderbird/.thunderbird"},
      {"Thunderbird", ".var/app/org.mozilla.Thunderbird/.thunderbird"},
      {"Thunderbird", "snap/thunderbird/common/.thunderbird"},
      {"Thunderbird", ".thunderbird"},
      {"Mozilla\\FireFox", ".var/app/org.mozilla.firefox/config/mozilla/firefox"},
      {"Mozilla\\FireFox", ".var/app/org.mozilla.firefox/.mozilla/firefox"},
      {"Mozilla\\FireFox", "snap/firefox/common/.mozilla/firefox"},
      {"Mozilla\\FireFox", ".config/mozilla/firefox"},
      {"Mozilla\\FireFox", ".mozilla/firefox"},
      {"Mozilla\\Sunbird", ".mozilla/sunbird"},
  };
  for (const Row& row : rows) {
    folder_.MakeFolder(row.place);
    EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\" + std::string(row.name)), In(row.place));
  }
}

TEST_F(ApplicationPlacesTest, PlaceWithProfilesGoesBeforeOneWithout) {
  folder_.MakeFolder(".mozilla/firefox/native-messaging-hosts");
  folder_.Write(".config/mozilla/firefox/profiles.ini", "");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Mozilla\\FireFox"), In(".config/mozilla/firefox"));
}

TEST_F(ApplicationPlacesTest, WithoutAnyPlaceTheFirstIsNamed) {
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird\\profiles.ini"),
            In(".thunderbird/profiles.ini"));
}

TEST_F(ApplicationPlacesTest, ProgramFolderInTheHomeIsNotTakenForTheData) {
  folder_.Write("thunderbird/thunderbird-bin", "program");
  folder_.Write(".thunderbird/profiles.ini", "t");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird"), In(".thunderbird"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("Thunderbird")), In("thunderbird"));
}

TEST_F(ApplicationPlacesTest, FolderWithTheWindowsLayoutIsTakenAsItIs) {
  folder_.Write("copy/thunderbird/profiles.ini", "t");
  folder_.Write("copy/Mozilla/Firefox/profiles.ini", "f");
  folder_.Write(".thunderbird/profiles.ini", "own");
  os::SetAppDataFolder(In("copy/"));
  EXPECT_EQ(os::AppDataPath(), folder_.Path("copy"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird\\profiles.ini"),
            In("copy/thunderbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Mozilla\\FireFox\\profiles.ini"),
            In("copy/Mozilla/Firefox/profiles.ini"));
  os::SetAppDataFolder("");
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData"));
}

TEST_F(ApplicationPlacesTest, HomeBelowAnotherDriveIsNamedFromTheRoot) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.Write("elsewhere/prefs.js", "");
  os::SetDrive('H', folder_.Native().string());
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData"));
  os::SetDrive('R', "/");
  os::SetDrive('C', "");
  EXPECT_EQ(os::AppDataPath(), "R" + folder_.Path("AppData").substr(1));
  // A profile that profiles.ini names by an absolute path is found for that.
  const std::string profile = folder_.Path("elsewhere").substr(2);
  EXPECT_TRUE(FileExists(AddPath(os::AppDataPath() + "\\Thunderbird\\", profile) + "\\prefs.js"));
  EXPECT_EQ(os::FileLength("H:\\AppData\\Thunderbird\\profiles.ini"), 1u);
}

TEST_F(ApplicationPlacesTest, HomeOutsideEveryDriveIsNamedFromTheRoot) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.MakeFolder("windows");
  os::SetDrive('C', In("windows"));
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData").substr(2));
  EXPECT_EQ(os::FileLength(os::AppDataPath() + "\\Thunderbird\\profiles.ini"), 1u);
}

TEST_F(ApplicationPlacesTest, HomeIsThatOfTheEnvironmentUnlessTold) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", "/no/such/home/");
  EXPECT_EQ(os::AppDataPath(), "C:\\no\\such\\home\\AppData");
}

TEST_F(ApplicationPlacesTest, HomeMayBeTheRoot) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", "/");
  EXPECT_EQ(os::AppDataPath(), "C:\\AppData");
  EXPECT_EQ(os::ToNativePath("C:\\AppData"), "/");
}

TEST_F(ApplicationPlacesTest, WithoutEnvironmentTheUserTellsTheHome) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", nullptr);
  EXPECT_TRUE(os::AppDataPath().empty() || os::AppDataPath().ends_with("\\AppData"));
}

TEST_F(ApplicationPlacesTest, MakingTheFolderLeavesNothingBehind) {
  EXPECT_THROW(os::CreateFolder(os::AppDataPath()), Failure);
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 63), IsEmpty());
}

}  // namespace
}  // namespace vorlent
