#include "Standalone/LightningNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace vorlent {
namespace {

using testing::ElementsAre;

std::vector<std::string> NamesOf(LightningNames& names, std::vector<LightningItem> items) {
  names.GiveNames(items);
  std::vector<std::string> given;
  given.reserve(items.size());
  for (const LightningItem& item : items)
    given.push_back(item.name);
  return given;
}

LightningItem ItemOfRow(std::int64_t row) {
  return {.row = row, .calendar = "c", .id = "x"};
}

TEST(LightningNamesTest, RowsThatComeTakeTheNamesOfThoseThatAreGone) {
  LightningNames names;
  EXPECT_THAT(NamesOf(names, {ItemOfRow(1), ItemOfRow(2), ItemOfRow(3)}), ElementsAre("x", "x~2", "x~3"));
  EXPECT_THAT(NamesOf(names, {ItemOfRow(3), ItemOfRow(7), ItemOfRow(2)}), ElementsAre("x~3", "x", "x~2"));
  EXPECT_THAT(NamesOf(names, {ItemOfRow(8), ItemOfRow(7)}), ElementsAre("x~2", "x"));
  EXPECT_THAT(NamesOf(names, {ItemOfRow(7), ItemOfRow(8), ItemOfRow(9), ItemOfRow(10)}),
              ElementsAre("x", "x~2", "x~3", "x~4"));
}

TEST(LightningNamesTest, ManyRowsOfOneIdAreKnownAgainInLinearTime) {
  constexpr int kRows = 30000;
  std::vector<LightningItem> items;
  for (int row = 1; row <= kRows; ++row)
    items.push_back(ItemOfRow(row));
  LightningNames names;
  const auto start = std::chrono::steady_clock::now();
  const std::vector<std::string> first = NamesOf(names, items);
  EXPECT_EQ(NamesOf(names, items), first);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vorlent
