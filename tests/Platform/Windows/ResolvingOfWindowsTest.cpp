#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Settings.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

class ResolvingOfWindowsTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetSettings(); }
  void TearDown() override {
    os::ResetSettings();
    fs::current_path(startFolder_);
  }

  TemporaryFolder folder_;
  fs::path startFolder_ = fs::current_path();
};

TEST_F(ResolvingOfWindowsTest, PathsAreTheSystemsOwnButForTheDrivesThatWereSet) {
  os::SetDrive('D', "C:\\mnt\\data\\");
  struct Row {
    std::string_view path, native;
  };
  const Row rows[] = {
      {"C:\\", "C:\\"},
      {"C:", "C:"},
      {"C:\\no such\\b.txt", "C:\\no such\\b.txt"},
      {"C:/no such/b.txt", "C:\\no such\\b.txt"},
      {"D:\\", "C:\\mnt\\data\\"},
      {"d:\\x", "C:\\mnt\\data\\x"},
      {"D:x", "C:\\mnt\\data\\x"},
      {"D:\\x\\", "C:\\mnt\\data\\x\\"},
      {"C:\\no such\\\\b", "C:\\no such\\b"},
      {"\\no such\\b", "\\no such\\b"},
      {"\\\\server\\share\\x", "\\\\server\\share\\x"},
      {"//server/share", "\\\\server\\share"},
      {"no such\\b", "no such\\b"},
      {"", ""},
      {std::string_view("C:\\a\0b", 6), ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(os::ToNativePath(row.path), row.native) << row.path;
  os::SetDrive('D', "");
  EXPECT_EQ(os::ToNativePath("D:\\x"), "D:\\x");
}

TEST_F(ResolvingOfWindowsTest, EachNameOfAPathIsTextOfItsOwn) {
  EXPECT_EQ(os::ToNativePath("\\Ärger\\" + std::string("Übung"_cp) + "\\Ж"), "\\Ärger\\Übung\\Ж");
}

TEST_F(ResolvingOfWindowsTest, EveryListedFileCanBeOpened) {
  for (const wchar_t* name : {L"plain", L"Entwürfe", L"Черновики", L"Ã¼", L"€uro", L"日本"})
    std::ofstream(folder_.Native() / name);
  const auto names = os::ListNames(folder_.Path(), "*.*", 0);
  ASSERT_EQ(names.size(), 6u);
  for (const std::string& name : names)
    EXPECT_NO_THROW(os::FileLength(folder_.Path(name))) << name;
}

TEST_F(ResolvingOfWindowsTest, MissingDriveIsAMissingPath) {
  EXPECT_EQ(SwallowedNumber([] { os::FileLength("Q:\\x"); }), 76);
  EXPECT_EQ(SwallowedNumber([] { os::FileLength("1:\\x"); }), 76);
}

TEST_F(ResolvingOfWindowsTest, RelativePathIsOneOfTheCurrentFolder) {
  folder_.Write("here", "abc");
  fs::current_path(folder_.Native());
  EXPECT_EQ(os::FileLength("here"), 3u);
  EXPECT_EQ(os::FileLength(".\\HERE"), 3u);
  EXPECT_EQ(os::ToWindowsPath("x/y"), folder_.Path("x\\y"));
}

TEST_F(ResolvingOfWindowsTest, DriveThatHoldsAPathMostCloselyNamesIt) {
  os::SetDrive('M', "C:\\u\\Mail");
  os::SetDrive('N', "C:\\u\\Mail");
  os::SetDrive('U', "C:\\u");
  EXPECT_EQ(os::ToWindowsPath("C:\\u\\Mail\\Inbox"), "M:\\Inbox");
  EXPECT_EQ(os::ToWindowsPath("c:\\U\\mail"), "M:\\");
  EXPECT_EQ(os::ToWindowsPath("C:\\u\\Mailbox"), "U:\\Mailbox");
  EXPECT_EQ(os::ToWindowsPath("C:\\user"), "C:\\user");
  EXPECT_EQ(os::ToWindowsPath("C:\\"), "C:\\");
  EXPECT_EQ(os::ToWindowsPath(""), "");
  EXPECT_EQ(os::ToWindowsPath("C:\\Entwürfe\\Ж"), "C:\\" + std::string("Entwürfe"_cp) + "\\Ж");
}

TEST_F(ResolvingOfWindowsTest, FilesOfASetDriveAreThoseOfItsFolder) {
  folder_.Write("Mail/Inbox", "x");
  os::SetDrive('m', folder_.Native("Mail").string());
  EXPECT_EQ(os::FileLength("M:\\Inbox"), 1u);
  EXPECT_EQ(os::ToWindowsPath(folder_.Native("Mail/Inbox").string()), "M:\\Inbox");
  EXPECT_THROW(os::SetDrive('1', folder_.Native().string()), Failure);
}

}  // namespace
}  // namespace vorlent
