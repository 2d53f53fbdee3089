#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Platform/WorkFolder.h"
#include "Platform/WorkFolderTest.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

TEST_F(WorkFolderTest, IsPrivateToTheUser) {
  const os::WorkFolder folder;
  EXPECT_EQ(fs::status(NativeOf(folder)).permissions(), fs::perms::owner_all);
}

TEST_F(WorkFolderTest, GoesWithLinksAndWithFoldersThatAreClosed) {
  {
    const os::WorkFolder folder;
    const fs::path native = NativeOf(folder);
    fs::create_directories(native / "a/b");
    fs::create_directory_symlink("/", native / "link");
    fs::permissions(native / "a", fs::perms::owner_read);
  }
  EXPECT_EQ(Count(), 0U);
}

TEST_F(WorkFolderTest, OneWhoseMarkerIsHeldStaysUntilItIsLetGo) {
  const fs::path left = Abandoned();
  std::string marker;
  for (const auto& entry : fs::directory_iterator(left)) {
    if (entry.is_regular_file()) marker = entry.path();
  }
  const int held = open(marker.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(held, LOCK_EX), 0);
  os::RemoveAbandonedWorkFolders();
  EXPECT_TRUE(fs::exists(left / "below/mail.eml"));
  close(held);
  os::RemoveAbandonedWorkFolders();
  EXPECT_EQ(Count(), 0U);
}

TEST_F(WorkFolderTest, LinkToOneThatWasLeftStays) {
  const fs::path elsewhere = place_.Native("elsewhere");
  fs::rename(Abandoned(), elsewhere);
  fs::create_directory_symlink("elsewhere", place_.Native("vorlent-linked"));
  os::RemoveAbandonedWorkFolders();
  EXPECT_TRUE(fs::exists(elsewhere / "below/mail.eml"));
  EXPECT_EQ(Count(), 2U);
}

}  // namespace
}  // namespace vorlent
