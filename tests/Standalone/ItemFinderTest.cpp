#include "Standalone/ItemFinder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Standalone/ItemOf.h"

namespace vorlent {
namespace {

TEST(ItemFinderTest, ItemIsFoundByItsIdOrItsNumber) {
  const std::vector<StandaloneItemPtr> items = {ItemOf("ID=a|Type=mail"), ItemOf("ID=B\xFCro|Type=mail"),
                                                ItemOf("ID=1|Type=mail"), ItemOf("ID=a|Type=mail")};
  const ItemFinder finder(items);
  EXPECT_EQ(finder.Find("a"), items[0]) << "the first of two";
  EXPECT_EQ(finder.Find("Büro"), items[1]);
  EXPECT_EQ(finder.Find("1"), items[2]) << "an ID goes before a number";
  EXPECT_EQ(finder.Find("2"), items[1]);
  EXPECT_EQ(finder.Find("4"), items[3]);
  for (const char* none : {"A", "", "0", "-1", "5", "4294967297", "x"})
    EXPECT_EQ(finder.Find(none), nullptr) << none;
}

// Counts how often its ID is asked for.
class CountedItem : public StandaloneItem {
 public:
  CountedItem(const std::string& id, int& asked) : asked_(asked) { SetID(id); }
  std::string ID() const override {
    ++asked_;
    return StandaloneItem::ID();
  }

 private:
  int& asked_;
};

TEST(ItemFinderTest, ItemsAreLookedThroughOnceHoweverManyAreWanted) {
  constexpr int kItems = 1000;
  int asked = 0;
  std::vector<StandaloneItemPtr> items;
  items.reserve(kItems);
  for (int i = 0; i < kItems; ++i)
    items.push_back(std::make_shared<CountedItem>("id " + std::to_string(i), asked));
  const ItemFinder finder(items);
  for (int i = 0; i < kItems; ++i)
    EXPECT_EQ(finder.Find("id " + std::to_string(i)), items[static_cast<std::size_t>(i)]);
  EXPECT_EQ(asked, kItems);
}

}  // namespace
}  // namespace vorlent
