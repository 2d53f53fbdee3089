#include "Common/qzelCollection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Failure.h"
#include "Support/ErrorNumbers.h"

namespace vorlent {
namespace {

std::string Text(const std::any& value) {
  return value.has_value() ? std::any_cast<std::string>(value) : "(empty)";
}

// Values in order, an entry with a key as value:key.
std::string Entries(const qzelCollection& list) {
  std::string text;
  for (std::int32_t i = 1; i <= list.Count(); ++i) {
    if (i > 1) text += ' ';
    text += Text(list.Item(i));
    if (!list.key(i).empty()) text += ":" + list.key(i);
  }
  return text;
}

// A list of the values "1", "2" and so on, each under the key "k" and its value.
qzelCollection Numbered(int count) {
  qzelCollection list;
  for (int i = 1; i <= count; ++i)
    list.Add(std::to_string(i), "k" + std::to_string(i));
  return list;
}

// --- Positions and keys ----------------------------------------------------------------------------------

TEST(qzelCollectionTest, NewListIsEmpty) {
  const qzelCollection list;
  EXPECT_EQ(list.Count(), 0);
  EXPECT_FALSE(list.Item(1).has_value());
  EXPECT_EQ(list.key(1), "");
  EXPECT_EQ(list.GetPosition("a"), 0);
}

TEST(qzelCollectionTest, EntriesAreReachedByPositionAndByKey) {
  qzelCollection list;
  list.Add(std::string("x"), "a");
  list.Add(std::string("y"));
  list.Add(42, "c");
  EXPECT_EQ(list.Count(), 3);
  EXPECT_EQ(Text(list.Item("a")), "x");
  EXPECT_EQ(Text(list.Item(2)), "y");
  EXPECT_EQ(std::any_cast<int>(list.Item("c")), 42);
  EXPECT_EQ(list.key(1), "a");
  EXPECT_EQ(list.key(2), "");
  EXPECT_EQ(list.GetPosition("c"), 3);
  EXPECT_TRUE(list.HasKey("c"));
  EXPECT_FALSE(list.HasKey(""));
}

TEST(qzelCollectionTest, WhatIsOutsideTheListIsEmptyAndNoFailure) {
  qzelCollection list = Numbered(3);
  for (const std::int32_t position : {0, -1, 4, INT32_MIN, INT32_MAX}) {
    EXPECT_FALSE(list.Item(position).has_value()) << position;
    EXPECT_EQ(list.key(position), "") << position;
    list.Remove(position);
    list.RemoveMulti(position, 2);
  }
  list.Remove("unknown");
  list.RemoveMulti("unknown", 2);
  list.Remove("");
  EXPECT_FALSE(list.Item("unknown").has_value());
  EXPECT_EQ(Entries(list), "1:k1 2:k2 3:k3");
}

TEST(qzelCollectionTest, KeysCompareExactly) {
  qzelCollection list;
  list.Add(std::string("upper"), "ABC");
  list.Add(std::string("lower"), "abc");
  EXPECT_EQ(Text(list.Item("ABC")), "upper");
  EXPECT_EQ(Text(list.Item("abc")), "lower");
  EXPECT_EQ(list.GetPosition("Abc"), 0);
}

TEST(qzelCollectionTest, TextThatBeginsWithANumberIsAPosition) {
  qzelCollection list;
  for (const char* key : {"7", "0", "-3", "abc", " 2", "00"})
    list.Add(std::string("at ") + key, key);
  EXPECT_FALSE(list.Item("7").has_value());
  EXPECT_EQ(list.GetPosition("7"), 1);
  EXPECT_TRUE(list.HasKey("7"));
  EXPECT_EQ(Text(list.Item("2")), "at 0");
  EXPECT_EQ(Text(list.Item("2 ")), "at 0");
  EXPECT_EQ(Text(list.Item("003")), "at -3");
  for (const char* key : {"0", "-3", "abc", " 2", "00"})
    EXPECT_EQ(Text(list.Item(key)), std::string("at ") + key);
  EXPECT_EQ(Text(list.Item(-3)), "at -3");  // a number that is no position is looked up by its text
}

TEST(qzelCollectionTest, TextThatOnlyBeginsWithANumberFails) {
  qzelCollection list = Numbered(3);
  list.Add(std::string("x"), "12abc");
  EXPECT_EQ(SwallowedNumber([&] { list.Item("12abc"); }), kTypeMismatch);
  EXPECT_EQ(SwallowedNumber([&] { list.Remove("1x"); }), kTypeMismatch);
  EXPECT_EQ(SwallowedNumber([&] { list.RemoveMulti("1-2", 1); }), kTypeMismatch);
  EXPECT_EQ(SwallowedNumber([&] { list.Item("99999999999"); }), kOverflow);
  EXPECT_EQ(list.GetPosition("12abc"), 4);
  EXPECT_EQ(list.Count(), 4);
}

TEST(qzelCollectionTest, OfTwinsTheOneAddedFirstIsFound) {
  qzelCollection list;
  list.Add(std::string("first"), "k");
  list.Add(std::string("second"), "k", 1);
  EXPECT_EQ(Entries(list), "second:k first:k");
  EXPECT_EQ(list.GetPosition("k"), 2);
  list.Remove("k");
  EXPECT_EQ(list.GetPosition("k"), 1);
  EXPECT_EQ(Text(list.Item("k")), "second");
  list.Remove("k");
  EXPECT_EQ(list.GetPosition("k"), 0);
}

TEST(qzelCollectionTest, KeysOfOneBucketAreToldApart) {
  qzelCollection list;
  // Both hash to the code of "B" (66): 65 xor 2*1 xor 4*0 ... and so do chains of keys that differ in order
  // only.
  list.Add(std::string("1"), "B");
  list.Add(std::string("2"), std::string("@\x01", 2));
  list.Add(std::string("3"), "B");
  EXPECT_EQ(list.GetPosition(std::string("@\x01", 2)), 2);
  EXPECT_EQ(list.GetPosition("B"), 1);
  list.Remove(1);
  EXPECT_EQ(list.GetPosition("B"), 2);
  EXPECT_EQ(list.GetPosition(std::string("@\x01", 2)), 1);
  list.Remove(1);
  EXPECT_EQ(list.GetPosition("B"), 1);
  EXPECT_EQ(list.GetPosition(std::string("@\x01", 2)), 0);
}

TEST(qzelCollectionTest, KeyOfHashZeroWorksLikeAnyOther) {
  const std::string zero("\0", 1);
  const std::string alsoZero("\x02\x01", 2);  // 2 xor 1*2
  qzelCollection list;
  list.Add(std::string("x"), "other");
  list.Add(std::string("a"), zero);
  list.Add(std::string("b"), alsoZero);
  list.Add(std::string("y"), "more", 1);
  EXPECT_EQ(list.GetPosition(zero), 3);
  EXPECT_EQ(list.GetPosition(alsoZero), 4);
  list.Remove(3);
  EXPECT_EQ(list.GetPosition(zero), 0);
  EXPECT_EQ(list.GetPosition(alsoZero), 3);
  list.Remove(3);
  EXPECT_EQ(list.GetPosition(alsoZero), 0);
  list.Add(std::string("c"), zero);
  EXPECT_EQ(list.GetPosition(zero), 3);
}

TEST(qzelCollectionTest, LongKeysOfHighCharactersStayInTheBuckets) {
  qzelCollection list;
  for (int length = 1; length <= 40; ++length) {
    const std::string key(static_cast<std::size_t>(length), '\xFF');
    list.Add(std::to_string(length), key);
    EXPECT_EQ(list.GetPosition(key), length);
  }
}

// --- Adding ----------------------------------------------------------------------------------------------

TEST(qzelCollectionTest, BeforeChoosesThePlace) {
  struct Row {
    std::int32_t before;
    const char* entries;
  };
  const Row rows[] = {{1, "x:x 1:k1 2:k2 3:k3"}, {3, "1:k1 2:k2 x:x 3:k3"},  {4, "1:k1 2:k2 3:k3 x:x"},
                      {0, "1:k1 2:k2 3:k3 x:x"}, {-1, "1:k1 2:k2 3:k3 x:x"}, {99, "1:k1 2:k2 3:k3 x:x"}};
  for (const Row& row : rows) {
    qzelCollection list = Numbered(3);
    list.Add(std::string("x"), "x", row.before);
    EXPECT_EQ(Entries(list), row.entries) << row.before;
    for (const char* key : {"k1", "k2", "k3", "x"})
      EXPECT_EQ(list.key(list.GetPosition(key)), key) << row.before;
  }
}

TEST(qzelCollectionTest, ObjectsAreSharedAndOtherValuesCopied) {
  const auto object = std::make_shared<int>(1);
  std::string text = "before";
  qzelCollection list;
  list.Add(object, "o");
  list.Add(text, "t");
  *object = 2;
  text = "after";
  EXPECT_EQ(std::any_cast<std::shared_ptr<int>>(list.Item("o")), object);
  EXPECT_EQ(*std::any_cast<std::shared_ptr<int>>(list.Item(1)), 2);
  EXPECT_EQ(Text(list.Item("t")), "before");
}

// The room of a list shows when its last entry is doubled: where the room is used up, that fails.
bool IsFull(qzelCollection list) {
  return SwallowedNumber([&] { list.RemoveMulti(list.Count(), 2); }) == kSubscriptOutOfRange;
}

TEST(qzelCollectionTest, RoomGrowsInSteps) {
  qzelCollection list;
  std::vector<int> full;
  for (int count = 1; count <= 2450; ++count) {
    list.Add(count);
    if (count % 50 < 2 && IsFull(list)) full.push_back(count);
  }
  std::vector<int> expected;
  for (int capacity = 50; capacity <= 2450; capacity += capacity < 300 ? 50 : capacity < 2000 ? 100 : 200) {
    expected.push_back(capacity);
  }
  EXPECT_EQ(full, expected);
  EXPECT_EQ(list.Count(), 2450);
}

// --- Removing --------------------------------------------------------------------------------------------

TEST(qzelCollectionTest, RunsAreRemovedByTheirFormula) {
  struct Row {
    std::int32_t position, number;
    const char* entries;
  };
  const Row rows[] = {
      {8, 3, "1 2 3 4 5 6 7"},
      {8, 5, "1 2 3 4 5 6 7 9 10"},
      {9, 5, "1 2 3 4 5 6 7 8 9 10"},
      {10, 5, "1 2 3 4 5 6 7 8 9 10 10"},
      {10, 1, "1 2 3 4 5 6 7 8 9"},
      {9, 2, "1 2 3 4 5 6 7 8"},
      {1, 10, ""},
      {1, 11, "9 10"},
      {1, 1, "2 3 4 5 6 7 8 9 10"},
      {3, 0, "1 2 3 4 5 6 7 8 9 10"},
      {3, -2, "1 2 3 4 3 4 5 6 7 8 9 10"},  // a negative number moves the entries up
  };
  for (const Row& row : rows) {
    qzelCollection list;
    for (int i = 1; i <= 10; ++i)
      list.Add(std::to_string(i));
    list.RemoveMulti(row.position, row.number);
    EXPECT_EQ(Entries(list), row.entries) << row.position << " " << row.number;
  }
}

TEST(qzelCollectionTest, RunMayBeNamedByAKey) {
  qzelCollection list = Numbered(5);
  list.RemoveMulti("k2", 3);
  EXPECT_EQ(Entries(list), "1:k1 5:k5");
  EXPECT_EQ(list.GetPosition("k5"), 2);
  EXPECT_EQ(list.GetPosition("k3"), 0);
}

TEST(qzelCollectionTest, DoubledLastEntryIsFoundAtItsUpperPlace) {
  qzelCollection list = Numbered(3);
  list.RemoveMulti(3, 5);
  EXPECT_EQ(Entries(list), "1:k1 2:k2 3:k3 3:k3");
  EXPECT_EQ(list.GetPosition("k3"), 4);
  // The lower twin stands in no chain, but its removal cuts off the chain's head.
  list.Remove(3);
  EXPECT_EQ(Entries(list), "1:k1 2:k2 3:k3");
  EXPECT_EQ(list.GetPosition("k3"), 0);
}

TEST(qzelCollectionTest, NumbersBeyondThirtyTwoBitsOverflow) {
  qzelCollection list = Numbered(3);
  EXPECT_EQ(SwallowedNumber([&] { list.RemoveMulti(2, INT32_MAX); }), kOverflow);
  EXPECT_EQ(SwallowedNumber([&] { list.RemoveMulti(2, INT32_MIN); }), kOverflow);
  EXPECT_EQ(Entries(list), "1:k1 2:k2 3:k3");
}

TEST(qzelCollectionTest, DoublingInAFullListFails) {
  qzelCollection list = Numbered(50);
  EXPECT_EQ(SwallowedNumber([&] { list.RemoveMulti(50, 5); }), kSubscriptOutOfRange);
  EXPECT_EQ(list.Count(), 51);
}

TEST(qzelCollectionTest, LostTwinWhoseLinkLeavesTheBucketsFails) {
  qzelCollection list;
  list.Add(std::string("first"), "k");
  for (int i = 2; i <= 9000; ++i)
    list.Add(i);
  list.Add(std::string("second"), "k");
  list.RemoveMulti(9001, 2);  // doubles it; the lower twin still links back to position 1
  list.RemoveMulti(1, 9000);
  EXPECT_EQ(Entries(list), "second:k second:k");
  EXPECT_EQ(list.GetPosition("k"), 2);
  // Its link is now 1 - 9000, which as a negated bucket is none of the 8192.
  EXPECT_EQ(SwallowedNumber([&] { list.Remove(1); }), kSubscriptOutOfRange);
  EXPECT_EQ(list.Count(), 1);
}

TEST(qzelCollectionTest, RemovedTopSlotKeepsItsObjectUntilOverwritten) {
  auto object = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = object;
  qzelCollection list;
  list.Add(std::move(object));
  list.Remove(1);
  EXPECT_EQ(list.Count(), 0);
  EXPECT_FALSE(list.Item(1).has_value());
  EXPECT_FALSE(watch.expired());
  list.Add(1);
  EXPECT_TRUE(watch.expired());
}

// --- Clearing --------------------------------------------------------------------------------------------

TEST(qzelCollectionTest, ClearReleasesTheValues) {
  auto object = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = object;
  qzelCollection list;
  list.Add(std::move(object), "o");
  list.Clear();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(list.Count(), 0);
  EXPECT_EQ(list.GetPosition("o"), 0);
}

TEST(qzelCollectionTest, ClearedListTakesEntriesAgain) {
  qzelCollection list = Numbered(50);
  list.Clear();
  for (int i = 1; i <= 50; ++i)
    list.Add(std::to_string(i), "k" + std::to_string(i));
  EXPECT_EQ(list.GetPosition("k50"), 50);
  EXPECT_EQ(list.GetPosition("k1"), 1);
  EXPECT_FALSE(IsFull(Numbered(51)));
  EXPECT_TRUE(IsFull(list));
}

TEST(qzelCollectionTest, HeadBehindTheNewRoomFailsAfterClear) {
  qzelCollection list = Numbered(50);
  list.Add(std::string("51"), "zz");  // alone in its bucket: "z" is an even number, the "k" of all others odd
  list.Clear();
  EXPECT_EQ(SwallowedNumber([&] { list.GetPosition("zz"); }), kSubscriptOutOfRange);
  EXPECT_EQ(SwallowedNumber([&] { list.Item("zz"); }), kSubscriptOutOfRange);
  EXPECT_EQ(SwallowedNumber([&] { list.Add(std::string("x"), "zz"); }), kSubscriptOutOfRange);
  EXPECT_EQ(list.Count(), 1);  // the value is there, its chain is not
  EXPECT_EQ(Text(list.Item(1)), "x");
  EXPECT_EQ(list.GetPosition("k50"), 0);
}

TEST(qzelCollectionTest, HeadWithinTheNewRoomChainsThroughAStrangeSlot) {
  qzelCollection list = Numbered(49);
  list.Add(std::string("50"), "zz");
  list.Clear();
  EXPECT_EQ(list.GetPosition("zz"), 0);
  list.Add(std::string("x"), "zz");  // position 1, chained after the slot 50 that the head still names
  EXPECT_EQ(list.GetPosition("zz"), 1);
  for (int i = 2; i <= 50; ++i)
    list.Add(std::to_string(i));
  EXPECT_EQ(list.GetPosition("zz"), 0);  // slot 50 has been given anew, and its way on is lost
  EXPECT_EQ(Text(list.Item(1)), "x");
}

TEST(qzelCollectionTest, RemovalBringsAHeadBackToEmpty) {
  qzelCollection list = Numbered(50);
  list.Add(std::string("51"), "zz");
  list.Remove("zz");
  list.Clear();
  EXPECT_EQ(list.GetPosition("zz"), 0);
  list.Add(std::string("x"), "zz");
  EXPECT_EQ(list.GetPosition("zz"), 1);
}

// --- Against a model -------------------------------------------------------------------------------------

// What the list is meant to be: a row of entries, each knowing when it was added.
class CollectionModel {
 public:
  void Add(int value, const std::string& key, std::int32_t before) {
    const auto count = static_cast<std::int32_t>(entries_.size());
    const std::int32_t position = before >= 1 && before <= count ? before : count + 1;
    entries_.insert(entries_.begin() + (position - 1), {value, key, ++added_});
  }
  void Remove(std::int32_t position, std::int32_t number) {
    const auto count = static_cast<std::int32_t>(entries_.size());
    if (position < 1 || position > count) return;
    const std::int32_t effective = position + number - 1 <= count ? number : count - position - 1;
    entries_.erase(entries_.begin() + (position - 1), entries_.begin() + (position - 1 + effective));
  }
  std::int32_t Find(const std::string& key) const {
    std::int32_t found = 0;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (key.empty() || entries_[i].key != key) continue;
      if (found == 0 || entries_[i].added < entries_[static_cast<std::size_t>(found - 1)].added) {
        found = static_cast<std::int32_t>(i + 1);
      }
    }
    return found;
  }
  // The number 0 is no position, so its text is looked up as a key.
  std::int32_t Resolve(std::int32_t position) const { return position == 0 ? Find("0") : position; }
  std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }
  int Value(std::int32_t position) const { return entries_[static_cast<std::size_t>(position - 1)].value; }
  const std::string& Key(std::int32_t position) const {
    return entries_[static_cast<std::size_t>(position - 1)].key;
  }

 private:
  struct Entry {
    int value;
    std::string key;
    int added;
  };
  std::vector<Entry> entries_;
  int added_ = 0;
};

void ExpectSame(const qzelCollection& list, const CollectionModel& model,
                const std::vector<std::string>& keys) {
  ASSERT_EQ(list.Count(), model.Count());
  for (std::int32_t i = 1; i <= model.Count(); ++i) {
    ASSERT_EQ(std::any_cast<int>(list.Item(i)), model.Value(i)) << i;
    ASSERT_EQ(list.key(i), model.Key(i)) << i;
  }
  for (const std::string& key : keys)
    ASSERT_EQ(list.GetPosition(key), model.Find(key)) << key;
}

class qzelCollectionModelTest : public testing::TestWithParam<unsigned> {};

TEST_P(qzelCollectionModelTest, LongRunOfCallsLeavesListAndModelTheSame) {
  std::mt19937 random(GetParam());
  const auto upTo = [&](int limit) {
    return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit + 1));
  };
  // Few keys, so that twins are many; with pairs and a triple of one bucket, and of the bucket 0.
  const std::vector<std::string> keys = {
      "",  "a", "A",  "B",  std::string("@\x01", 2),    std::string("\0", 1),
      "7", "0", "ab", "ba", std::string("\x02\x01", 2), "\xFF\xFF\xFF"};
  qzelCollection list;
  CollectionModel model;
  for (int step = 0; step < 400; ++step) {
    const std::string& key = keys[static_cast<std::size_t>(upTo(static_cast<int>(keys.size()) - 1))];
    const std::int32_t position = upTo(model.Count() + 2);
    switch (upTo(9)) {
      case 0:
        list.Remove(position);
        model.Remove(model.Resolve(position), 1);
        break;
      case 1:
        if (key != "7") {
          list.Remove(key);
          model.Remove(model.Find(key), 1);
        }
        break;
      case 2: {
        // A run that overshoots from the last position doubles it, which a row of entries can't tell.
        const std::int32_t target = model.Resolve(position);
        const std::int32_t number = target == model.Count() ? upTo(1) : upTo(4);
        list.RemoveMulti(position, number);
        model.Remove(target, number);
        break;
      }
      default:
        list.Add(step, key, position);
        model.Add(step, key, position);
    }
    ExpectSame(list, model, keys);
    if (HasFatalFailure()) FAIL() << "after step " << step;
  }
  EXPECT_GT(list.Count(), 100);
}

INSTANTIATE_TEST_SUITE_P(Seeds, qzelCollectionModelTest, testing::Range(1u, 13u));

// --- Against the bare arrays -----------------------------------------------------------------------------

// The list as six pieces of data that are changed step by step, with every oddity that comes of it: heads
// that outlive Clear, doubled entries, runs that overshoot, and what a failing step leaves behind.
class Arrays {
 public:
  // Where the links of a chain form a ring, a walk would never end.
  struct Endless {};

  Arrays() { Clear(); }

  std::int32_t Count() const { return count_; }

  void Clear() {
    count_ = 0;
    values_.assign(50, 0);
    keys_.assign(50, "");
    prev_.assign(50, 0);
    next_.assign(50, 0);
  }

  void Add(int value, const std::string& key, std::int32_t before) {
    const std::size_t capacity = values_.size();
    if (std::cmp_equal(capacity, count_))
      Grow(capacity + (capacity < 300 ? 50 : capacity < 2000 ? 100 : 200));
    ++count_;
    std::int32_t position = count_;
    if (before >= 1 && before < count_) {
      Shift(before, 1);
      position = before;
    }
    At(values_, position) = value;
    At(keys_, position) = key;
    if (key.empty()) {
      At(prev_, position) = 0;
    } else {
      Chain(position, Hash(key));
    }
    At(next_, position) = 0;
  }

  void RemoveMulti(std::int32_t position, std::int32_t number) {
    if (position < 1 || position > count_) return;
    const std::int32_t effective = position + number - 1 <= count_ ? number : count_ - position - 1;
    count_ -= effective;
    Unlink(position, effective);
    Shift(position, -effective);
  }
  void Remove(std::int32_t position) { RemoveMulti(position, 1); }

  // 0 stands for the empty value.
  int Value(std::int32_t position) { return position < 1 || position > count_ ? 0 : At(values_, position); }
  std::string Key(std::int32_t position) {
    return position < 1 || position > count_ ? "" : At(keys_, position);
  }

  std::int32_t Find(const std::string& key) {
    if (key.empty()) return 0;
    std::int32_t steps = 0;
    for (std::int32_t at = heads_[Hash(key)]; at >= 1; at = At(next_, at)) {
      if (At(keys_, at) == key) return at;
      Step(steps);
    }
    return 0;
  }

  static std::size_t Hash(const std::string& key) {
    static constexpr std::size_t kFactors[] = {1, 2, 4, 8, 16, 32};
    std::size_t hash = 0;
    for (std::size_t i = 0; i < key.size(); ++i)
      hash ^= static_cast<unsigned char>(key[i]) * kFactors[i % 6];
    return hash;
  }

 private:
  template <class T>
  static T& At(std::vector<T>& array, std::int32_t position) {
    if (position < 1 || std::cmp_greater(position, array.size())) {
      throw Failure(ErrorNumber::SubscriptOutOfRange, "subscript");
    }
    return array[static_cast<std::size_t>(position - 1)];
  }
  static void Step(std::int32_t& steps) {
    if (++steps > 10'000) throw Endless();
  }

  void Grow(std::size_t capacity) {
    values_.resize(capacity);
    keys_.resize(capacity);
    prev_.resize(capacity);
    next_.resize(capacity);
  }

  void Chain(std::int32_t position, std::size_t bucket) {
    if (heads_[bucket] == 0) {
      heads_[bucket] = position;
      At(prev_, position) = -static_cast<std::int32_t>(bucket);
      return;
    }
    std::int32_t steps = 0;
    std::int32_t last = heads_[bucket];
    for (; At(next_, last) != 0; last = At(next_, last))
      Step(steps);
    At(next_, last) = position;
    At(prev_, position) = last;
  }

  void Unlink(std::int32_t start, std::int32_t number) {
    for (std::int32_t at = start; at <= start + number - 1; ++at) {
      if (At(keys_, at).empty()) continue;
      if (At(prev_, at) < 1) {
        At(heads_, 1 - At(prev_, at)) = At(next_, at);
      } else {
        At(next_, At(prev_, at)) = At(next_, at);
      }
      if (At(next_, at) > 0) At(prev_, At(next_, at)) = At(prev_, at);
    }
  }

  void Shift(std::int32_t start, std::int32_t delta) {
    for (std::int32_t& head : heads_)
      if (head >= start) head += delta;
    const auto move = [&](std::int32_t to) {
      At(values_, to) = At(values_, to - delta);
      At(keys_, to) = At(keys_, to - delta);
      At(prev_, to) = At(prev_, to - delta);
      At(next_, to) = At(next_, to - delta);
    };
    if (delta >= 1) {
      for (std::int32_t i = count_; i >= start + delta; --i)
        move(i);
    }
    if (delta < 0) {
      for (std::int32_t i = start; i <= count_; ++i)
        move(i);
    }
    for (std::int32_t i = 1; i <= count_; ++i) {
      if (At(prev_, i) >= start) At(prev_, i) += delta;
      if (At(next_, i) >= start) At(next_, i) += delta;
    }
  }

  std::int32_t count_ = 0;
  std::vector<int> values_;
  std::vector<std::string> keys_;
  std::vector<std::int32_t> prev_;
  std::vector<std::int32_t> next_;
  std::vector<std::int32_t> heads_ = std::vector<std::int32_t>(8192);
};

// What a call gives, or the number of its failure.
std::string Outcome(const std::function<std::string()>& call) {
  std::string result;
  const int failed = SwallowedNumber([&] { result = call(); });
  return failed == 0 ? result : "failure " + std::to_string(failed);
}

// All that can be asked of a list.
template <class Key>
std::vector<std::string> Asked(std::int32_t count, const Key& value, const Key& key,
                               const std::function<std::int32_t(const std::string&)>& find,
                               const std::vector<std::string>& keys) {
  std::vector<std::string> told = {std::to_string(count)};
  for (std::int32_t i = 1; i <= count + 1; ++i)
    told.push_back(Outcome([&] { return value(i); }) + ":" + Outcome([&] { return key(i); }));
  for (const std::string& wanted : keys)
    told.push_back(Outcome([&] { return std::to_string(find(wanted)); }));
  return told;
}

class qzelCollectionArraysTest : public testing::TestWithParam<unsigned> {};

TEST_P(qzelCollectionArraysTest, EveryOddityAndFailureIsThatOfTheArrays) {
  std::mt19937 random(GetParam());
  const auto upTo = [&](int limit) {
    return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit + 1));
  };
  // Twins, a pair and a triple of one bucket, the bucket 0, and a key that is a number without being a
  // position.
  const std::vector<std::string> keys = {"",  "a",  "B",  std::string("@\x01", 2),   std::string("\0", 1),
                                         "0", "ab", "ba", std::string("\x02\x01", 2)};
  qzelCollection list;
  Arrays arrays;
  int doubled = 0;
  for (int step = 1; step <= 400; ++step) {
    const std::string& key = keys[static_cast<std::size_t>(upTo(static_cast<int>(keys.size()) - 1))];
    const bool byKey = upTo(3) == 0;
    const std::int32_t number = upTo(7) - 2;
    // Now and then near the end, where runs overshoot.
    const std::int32_t position = upTo(2) == 0 ? arrays.Count() - upTo(2) : upTo(arrays.Count() + 2);
    const int what = upTo(99);
    Arrays after = arrays;
    std::string expected;
    try {
      // A number that is no position is looked up by its text.
      const auto resolved = [&] {
        return byKey ? after.Find(key) : position > 0 ? position : after.Find(std::to_string(position));
      };
      expected = Outcome([&] {
        if (what == 0) {
          after.Clear();
        } else if (what < 12) {
          after.Remove(resolved());
        } else if (what < 30) {
          after.RemoveMulti(resolved(), number);
        } else {
          after.Add(step, key, byKey ? 0 : position);
        }
        return std::string();
      });
    } catch (const Arrays::Endless&) {
      continue;
    }
    const qzelCollection::PositionOrKey pos =
        byKey ? qzelCollection::PositionOrKey(key) : qzelCollection::PositionOrKey(position);
    const std::string got = Outcome([&] {
      if (what == 0) {
        list.Clear();
      } else if (what < 12) {
        list.Remove(pos);
      } else if (what < 30) {
        list.RemoveMulti(pos, number);
      } else {
        list.Add(step, key, byKey ? 0 : position);
      }
      return std::string();
    });
    ASSERT_EQ(got, expected) << "step " << step;
    if (what >= 12 && what < 30 && after.Count() > arrays.Count()) ++doubled;
    arrays = after;
    try {
      const auto wanted = Asked<std::function<std::string(std::int32_t)>>(
          arrays.Count(), [&](std::int32_t i) { return std::to_string(arrays.Value(i)); },
          [&](std::int32_t i) { return arrays.Key(i); }, [&](const std::string& k) { return arrays.Find(k); },
          keys);
      const auto told = Asked<std::function<std::string(std::int32_t)>>(
          list.Count(),
          [&](std::int32_t i) {
            const std::any value = list.Item(i);
            return std::to_string(value.has_value() ? std::any_cast<int>(value) : 0);
          },
          [&](std::int32_t i) { return list.key(i); },
          [&](const std::string& k) { return list.GetPosition(k); }, keys);
      ASSERT_EQ(told, wanted) << "after step " << step;
    } catch (const Arrays::Endless&) {
      break;
    }
  }
  EXPECT_GT(doubled, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, qzelCollectionArraysTest, testing::Range(1u, 11u));

}  // namespace
}  // namespace vorlent
