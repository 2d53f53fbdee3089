#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "Platform/Guid.h"

namespace vorlent {
namespace {

TEST(GuidsOfForksTest, ForkedProcessGivesOutNoneOfItsParents) {
  os::NewGuidBytes();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    const auto bytes = os::NewGuidBytes();
    _exit(write(ends[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  std::array<std::uint8_t, 16> theirs;
  ASSERT_EQ(read(ends[0], theirs.data(), theirs.size()), static_cast<ssize_t>(theirs.size()));
  close(ends[0]);
  close(ends[1]);
  for (int i = 0; i < 1000; ++i)
    EXPECT_NE(os::NewGuidBytes(), theirs);
}

}  // namespace
}  // namespace vorlent
