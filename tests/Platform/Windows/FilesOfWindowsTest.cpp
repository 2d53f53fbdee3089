// Files where there are drives, attributes and share modes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "Platform/Files.h"
#include "Platform/FilesTest.h"
#include "Support/ErrorNumbers.h"

namespace vorlent {

void MarkHidden(const std::filesystem::path& native) {
  const DWORD attributes = GetFileAttributesW(native.c_str());
  ASSERT_NE(SetFileAttributesW(native.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN), 0);
}

namespace {

using os::File;
using testing::ElementsAre;

class ForeignHandle {
 public:
  ForeignHandle(const std::filesystem::path& native, DWORD share)
      : handle_(CreateFileW(native.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr)) {}
  ~ForeignHandle() { CloseHandle(handle_); }
  ForeignHandle(const ForeignHandle&) = delete;
  ForeignHandle& operator=(const ForeignHandle&) = delete;

 private:
  HANDLE handle_;
};

TEST_F(FilesTest, FileThatAnotherHandleKeepsForItselfIsRefusedUntilThatGoes) {
  folder_.Write("f", "abc");
  {
    const ForeignHandle other(folder_.Native("f"), 0);
    for (const File::Mode mode : kAllModes)
      EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("f"), mode); }), kPathAccess);
    EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("f")); }), kPathAccess);
    EXPECT_EQ(os::FileLength(folder_.Path("f")), 3u);
  }
  EXPECT_NO_THROW(File::Open(folder_.Path("f"), File::Mode::ReadWrite));
}

TEST_F(FilesTest, FileThatAnotherHandleOnlySharesForReadingIsRead) {
  folder_.Write("f", "abc");
  const ForeignHandle other(folder_.Native("f"), FILE_SHARE_READ);
  File file = File::Open(folder_.Path("f"), File::Mode::Read);
  EXPECT_EQ(ReadAll(file), "abc");
  EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("f"), File::Mode::ReadWrite); }), kPathAccess);
  try {
    File::Open(folder_.Path("f"), File::Mode::ReadWrite);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Why().hint, Hint::CloseOther);
  }
}

TEST_F(FilesTest, AllAttributesOfTheSystemAreWrittenAndTakenAway) {
  folder_.Write("f", "");
  const int all = os::kReadOnly | os::kHidden | os::kSystem | os::kArchive;
  os::WriteAttributes(folder_.Path("f"), all);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("f")), all);
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kHidden | os::kSystem), ElementsAre("f"));
  os::WriteAttributes(folder_.Path("f"), 0);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("f")) & ~os::kArchive, 0);
}

TEST_F(FilesTest, CreationTimeIsWrittenToo) {
  folder_.Write("f", "");
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_NE(GetFileAttributesExW(folder_.Native("f").c_str(), GetFileExInfoStandard, &data), 0);
  EXPECT_EQ(CompareFileTime(&data.ftCreationTime, &data.ftLastWriteTime), 0);
  EXPECT_EQ(CompareFileTime(&data.ftLastAccessTime, &data.ftLastWriteTime), 0);
}

TEST_F(FilesTest, PathsMayBeLongerThanTheSystemsOldLimit) {
  std::string path = folder_.Path();
  for (int i = 0; i < 8; ++i) {
    path += "\\" + std::string(60, static_cast<char>('a' + i));
    os::CreateFolder(path);
  }
  ASSERT_GT(path.size(), 480u);
  File::Open(path + "\\Inbox", File::Mode::Create).Write("abc", 3);
  EXPECT_EQ(os::FileLength(path + "\\.\\Inbox"), 3u);
  EXPECT_THAT(os::ListNames(path + "\\", "*", 0), ElementsAre("Inbox"));
  os::Rename(path + "\\Inbox", path + "\\Sent");
  os::Copy(path + "\\Sent", folder_.Path("copy"));
  EXPECT_EQ(folder_.Read("copy"), "abc");
  os::RemoveFile(path + "\\Sent");
  EXPECT_TRUE(os::ListNames(path, "*", 63).empty());
  for (; path.size() > folder_.Path().size(); path.resize(path.rfind('\\')))
    os::RemoveFolder(path);
}

TEST_F(FilesTest, RemovedFileMayBeOpenInThisProcess) {
  folder_.Write("f", "abc");
  const File file = File::Open(folder_.Path("f"), File::Mode::Read);
  EXPECT_NO_THROW(os::Rename(folder_.Path("f"), folder_.Path("g")));
  EXPECT_NO_THROW(os::RemoveFile(folder_.Path("g")));
}

}  // namespace
}  // namespace vorlent
