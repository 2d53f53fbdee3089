#include "Platform/WorkFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Platform/WorkFolderTest.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

TEST_F(WorkFolderTest, IsANewOne) {
  const os::WorkFolder one;
  const os::WorkFolder another;
  EXPECT_NE(one.Path(), another.Path());
  EXPECT_TRUE(one.Path().ends_with('\\'));
}

TEST_F(WorkFolderTest, GoesWithAllThatItHolds) {
  {
    const os::WorkFolder folder;
    const fs::path native = NativeOf(folder);
    fs::create_directories(native / "a/b");
    WriteBytes(folder.Path() + "a\\b\\mail.eml", "mail");
    fs::permissions(native / "a/b/mail.eml", fs::perms::owner_read);
  }
  EXPECT_EQ(Count(), 0U);
}

TEST_F(WorkFolderTest, CanNotBeMadeWhereThereIsNoPlace) {
  const ScopedTemporaryPlace nowhere(place_.Native("none"));
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

TEST_F(WorkFolderTest, FolderWithoutAMarkerStays) {
  place_.MakeFolder("vorlent-naked_");
  os::RemoveAbandonedWorkFolders();
  EXPECT_EQ(Count(), 1U);
}

}  // namespace
}  // namespace vorlent
