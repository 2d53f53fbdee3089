#include "Platform/WorkFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>

#include <optional>

#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Support/ScopedEnvironment.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

class WorkFolderTest : public testing::Test {
 protected:
  fs::path NativeOf(const os::WorkFolder& folder) { return os::ToNativePath(folder.Path()); }

  std::size_t Count() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(place_.Native()), {}));
  }

  // A folder as a program leaves it that is killed.
  fs::path Abandoned() {
    const fs::path copy = place_.Native("vorlent-killed");
    {
      const os::WorkFolder folder;
      fs::copy(NativeOf(folder), copy);
    }
    fs::create_directory(copy / "below");
    place_.Write("vorlent-killed/below/mail.eml", "mail");
    return copy;
  }

  TemporaryFolder place_;
  ScopedEnvironment environment_{"TMPDIR", place_.Native().c_str()};
};

TEST_F(WorkFolderTest, IsANewOnePrivateToTheUser) {
  const os::WorkFolder one;
  const os::WorkFolder another;
  EXPECT_NE(one.Path(), another.Path());
  EXPECT_TRUE(one.Path().ends_with('\\'));
  EXPECT_EQ(fs::status(NativeOf(one)).permissions(), fs::perms::owner_all);
}

TEST_F(WorkFolderTest, GoesWithAllThatItHolds) {
  {
    const os::WorkFolder folder;
    const fs::path native = NativeOf(folder);
    fs::create_directories(native / "a/b");
    fs::create_directory_symlink("/", native / "link");
    fs::permissions(native / "a", fs::perms::owner_read);
  }
  EXPECT_EQ(Count(), 0U);
}

TEST_F(WorkFolderTest, CanNotBeMadeWhereThereIsNoPlace) {
  const ScopedEnvironment nowhere("TMPDIR", place_.Native("none").c_str());
  EXPECT_THROW(os::WorkFolder(), Failure);
  os::RemoveAbandonedWorkFolders();
}

TEST_F(WorkFolderTest, OneThatWasLeftIsRemoved) {
  Abandoned();
  os::RemoveAbandonedWorkFolders();
  EXPECT_EQ(Count(), 0U);
}

TEST_F(WorkFolderTest, OneInUseStays) {
  const os::WorkFolder folder;
  fs::create_directory(NativeOf(folder) / "below");
  os::RemoveAbandonedWorkFolders();
  EXPECT_TRUE(fs::exists(NativeOf(folder) / "below"));
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

TEST_F(WorkFolderTest, FolderWithoutAMarkerStays) {
  place_.MakeFolder("vorlent-naked_");
  os::RemoveAbandonedWorkFolders();
  EXPECT_EQ(Count(), 1U);
}

}  // namespace
}  // namespace vorlent
