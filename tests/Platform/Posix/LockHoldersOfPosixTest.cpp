#include "Platform/LockHolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/ForeignLock.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

TEST(LockHoldersOfPosixTest, OtherProcessIsTold) {
  const TemporaryFolder folder;
  { SqliteFile(folder.Native("a.db")).Run("CREATE TABLE t(x)"); }
  const ForeignLock lock(folder.Native("a.db"), 60000);
  const auto holder = os::TryFindLockHolder(folder.Path("a.db"));
  ASSERT_TRUE(holder.has_value());
  EXPECT_NE(holder->process, static_cast<std::uint32_t>(getpid()));
  EXPECT_FALSE(holder->program.empty());
}

TEST(LockHoldersOfPosixTest, FileThatNobodyHoldsAndNoFileHaveNone) {
  const TemporaryFolder folder;
  folder.Write("a.txt", "x");
  EXPECT_FALSE(os::TryFindLockHolder(folder.Path("a.txt")).has_value());
  EXPECT_FALSE(os::TryFindLockHolder(folder.Path("missing")).has_value());
}

}  // namespace
}  // namespace vorlent
