#include "Common/KeyIndex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace vorlent {
namespace {

// Entries whose key is their number.
std::size_t PlaceOf(const KeyIndex& index, std::size_t hash, std::uint32_t number) {
  return index.Find(hash, [&](std::uint32_t found) { return found == number; });
}

TEST(KeyIndex, StartsEmpty) {
  EXPECT_EQ(PlaceOf(KeyIndex(), 0, 0), KeyIndex::kNone);
}

TEST(KeyIndex, FindsByHashAndThenByNumber) {
  KeyIndex index;
  index.Add(7, 1);
  index.Add(7, 2);
  index.Add(0, 0);
  EXPECT_EQ(index.Number(PlaceOf(index, 7, 1)), 1U);
  EXPECT_EQ(index.Number(PlaceOf(index, 7, 2)), 2U);
  EXPECT_EQ(index.Number(PlaceOf(index, 0, 0)), 0U);
  EXPECT_EQ(PlaceOf(index, 7, 3), KeyIndex::kNone);
  EXPECT_EQ(PlaceOf(index, 8, 1), KeyIndex::kNone);
}

TEST(KeyIndex, AsksOnlyForEntriesOfTheHash) {
  KeyIndex index;
  // All of them belong to the same place of a small table.
  for (std::uint32_t number = 1; number <= 3; ++number)
    index.Add(number * 1024, number);
  int asked = 0;
  EXPECT_EQ(index.Find(9 * 1024, [&](std::uint32_t) { return ++asked > 0; }), KeyIndex::kNone);
  EXPECT_EQ(asked, 0);
}

// Adds and removes at random beside a table of what is there. The hashes say how the entries crowd together.
void CompareWithAModel(unsigned seed, std::size_t hashes, std::size_t step, std::size_t mostEntries) {
  std::mt19937 random(seed);
  KeyIndex index;
  std::map<std::uint32_t, std::size_t> model;  // hash by number
  std::uint32_t lastNumber = 0;
  for (int i = 0; i < 20000; ++i) {
    if (model.empty() || (random() % 2 == 0 && model.size() < mostEntries)) {
      const std::size_t hash = random() % hashes * step;
      index.Add(hash, ++lastNumber);
      model.emplace(lastNumber, hash);
    } else {
      auto victim = model.lower_bound(static_cast<std::uint32_t>(random()) % lastNumber);
      if (victim == model.end()) victim = model.begin();
      index.Remove(PlaceOf(index, victim->second, victim->first));
      ASSERT_EQ(PlaceOf(index, victim->second, victim->first), KeyIndex::kNone);
      model.erase(victim);
    }
    if (i % 20 != 0) continue;
    for (const auto& [number, hash] : model)
      ASSERT_NE(PlaceOf(index, hash, number), KeyIndex::kNone) << "step " << i << ", number " << number;
  }
}

TEST(KeyIndex, FindsWhatCrowdsInOnePlace) {
  CompareWithAModel(1, 1, 1, 12);
}

TEST(KeyIndex, FindsWhatCrowdsAroundTheEndOfTheTable) {
  // The last places of a table of any size up to 1024, and the first ones after them.
  CompareWithAModel(2, 6, 1023, 100);
}

TEST(KeyIndex, FindsWhatIsSpread) {
  CompareWithAModel(3, 1000003, 2654435761, 200);
}

}  // namespace
}  // namespace vorlent
