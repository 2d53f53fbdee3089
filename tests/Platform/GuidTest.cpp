#include "Platform/Guid.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace vorlent {
namespace {

TEST(GuidTest, EveryGuidIsNewAndOfVersionFour) {
  std::set<std::array<std::uint8_t, 16>> seen;
  for (int i = 0; i < 1000; ++i) {
    const auto bytes = os::NewGuidBytes();
    EXPECT_EQ(bytes[6] >> 4, 4);
    EXPECT_EQ(bytes[8] >> 6, 2);
    EXPECT_TRUE(seen.insert(bytes).second);
  }
}

TEST(GuidTest, EveryOtherBitVaries) {
  std::array<std::uint8_t, 16> ones{};
  std::array<std::uint8_t, 16> zeros{};
  for (int i = 0; i < 200; ++i) {
    const auto bytes = os::NewGuidBytes();
    for (std::size_t k = 0; k < bytes.size(); ++k) {
      ones[k] = static_cast<std::uint8_t>(ones[k] | bytes[k]);
      zeros[k] = static_cast<std::uint8_t>(zeros[k] | ~bytes[k]);
    }
  }
  for (std::size_t k = 0; k < ones.size(); ++k) {
    const int fixed = k == 6 ? 0xF0 : k == 8 ? 0xC0 : 0;
    EXPECT_EQ(ones[k] & zeros[k], 0xFF & ~fixed) << k;
  }
}

TEST(GuidTest, ThreadsGiveOutDifferentOnes) {
  constexpr int kEach = 2000;
  std::vector<std::array<std::uint8_t, 16>> guids(2 * kEach);
  const auto fill = [&](int from) {
    for (int i = from; i < from + kEach; ++i)
      guids[static_cast<std::size_t>(i)] = os::NewGuidBytes();
  };
  std::thread other(fill, 0);
  fill(kEach);
  other.join();
  EXPECT_EQ(std::set(guids.begin(), guids.end()).size(), guids.size());
}

}  // namespace
}  // namespace vorlent
