#include "Common/KeyedList.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlent {
namespace {

// "value:key" of each entry in order, as the positions tell, for comparison at one glance.
template <class T>
std::string Entries(const KeyedList<T>& list) {
  std::string text;
  for (std::int32_t i = 1; i <= list.Count(); ++i) {
    if (i > 1) text += ' ';
    text += std::to_string(list.Item(i));
    if (!list.Key(i).empty()) text.append(":").append(list.Key(i));
  }
  return text;
}

// The same, as a walk tells.
template <class T>
std::string Walked(const KeyedList<T>& list) {
  std::string text;
  for (const T& value : list)
    text += (text.empty() ? "" : " ") + std::to_string(value);
  return text;
}

KeyedList<int> Sample() {
  KeyedList<int> list;
  list.Add(1, "one");
  list.Add(2);
  list.Add(3, "three");
  list.Add(4, "four");
  list.Add(5);
  return list;
}

TEST(KeyedList, StartsEmpty) {
  const KeyedList<int> list;
  EXPECT_EQ(list.Count(), 0);
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_TRUE(list.begin() == list.end());
  EXPECT_FALSE(list.HasKey(""));
}

TEST(KeyedList, KeepsTheOrderAndCountsFromOne) {
  const KeyedList<int> list = Sample();
  EXPECT_EQ(Entries(list), "1:one 2 3:three 4:four 5");
  EXPECT_EQ(Walked(list), "1 2 3 4 5");
  EXPECT_EQ(list.Item(1), 1);
  EXPECT_EQ(list.Item("three"), 3);
  EXPECT_EQ(*list.Find("four"), 4);
  EXPECT_EQ(list.Find("five"), nullptr);
}

TEST(KeyedList, ComparesKeysWithoutCase) {
  KeyedList<int> list;
  list.Add(1, "Größe"_cp);
  EXPECT_TRUE(list.HasKey("GRÖßE"_cp));
  EXPECT_EQ(list.Item("gRÖßE"_cp), 1);
  EXPECT_EQ(list.Key(1), "Größe"_cp) << "a key keeps its form";
  EXPECT_EQ(SwallowedNumber([&] { list.Add(2, "GRößE"_cp); }), 457);
  EXPECT_EQ(Entries(list), std::string("1:Größe"_cp)) << "the refused entry left nothing behind";
}

TEST(KeyedList, TakesAnEmptyKeyForAKey) {
  KeyedList<int> list;
  list.Add(1);
  list.Add(2, "");
  EXPECT_TRUE(list.HasKey(""));
  EXPECT_EQ(list.Item(""), 2);
  EXPECT_EQ(SwallowedNumber([&] { list.Add(3, ""); }), 457);
  list.Remove("");
  EXPECT_FALSE(list.HasKey(""));
  EXPECT_EQ(Entries(list), "1");
}

TEST(KeyedList, RaisesForWhatItDoesntHold) {
  KeyedList<int> list = Sample();
  const KeyedList<int>& fixed = list;
  for (const std::int32_t position : {-1, 0, 6, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(SwallowedNumber([&] { list.Item(position); }), 9) << position;
    EXPECT_EQ(SwallowedNumber([&] { fixed.Item(position); }), 9) << position;
    EXPECT_EQ(SwallowedNumber([&] { fixed.Key(position); }), 9) << position;
    EXPECT_EQ(SwallowedNumber([&] { list.Remove(position); }), 9) << position;
  }
  EXPECT_EQ(SwallowedNumber([&] { list.Item("six"); }), 5);
  EXPECT_EQ(SwallowedNumber([&] { fixed.Item("six"); }), 5);
  EXPECT_EQ(SwallowedNumber([&] { list.Remove("six"); }), 5);
  EXPECT_FALSE(list.TryRemove("six"));
  EXPECT_EQ(Entries(list), "1:one 2 3:three 4:four 5");
}

TEST(KeyedList, RemovesAtEitherEndAndInTheMiddle) {
  KeyedList<int> list = Sample();
  list.Remove(1);
  EXPECT_EQ(Entries(list), "2 3:three 4:four 5");
  list.Remove("four");
  EXPECT_EQ(Entries(list), "2 3:three 5");
  EXPECT_EQ(Walked(list), "2 3 5");
  list.Remove(3);
  EXPECT_EQ(Entries(list), "2 3:three");
  EXPECT_TRUE(list.TryRemove("THREE"));
  list.Remove(1);
  EXPECT_TRUE(list.IsEmpty());
  list.Add(9, "one");
  EXPECT_EQ(Entries(list), "9:one") << "removed keys are free again";
}

TEST(KeyedList, RemovesTheEndBehindHoles) {
  KeyedList<int> list = Sample();
  list.Remove(4);
  list.Remove(3);
  list.Remove(3);
  EXPECT_EQ(Entries(list), "1:one 2");
  list.Add(6, "six");
  EXPECT_EQ(Entries(list), "1:one 2 6:six");
  EXPECT_EQ(list.Item("six"), 6);
}

TEST(KeyedList, LetsValuesBeChanged) {
  KeyedList<int> list = Sample();
  list.Item(2) = 20;
  list.Item("three") = 30;
  for (int& value : list)
    value += 1;
  EXPECT_EQ(Entries(list), "2:one 21 31:three 5:four 6");
}

TEST(KeyedList, CopiesAreIndependent) {
  KeyedList<int> list = Sample();
  list.Remove(2);
  KeyedList<int> copy = list;
  copy.Item("one") = 10;
  copy.Remove("three");
  copy.Add(6, "six");
  EXPECT_EQ(Entries(list), "1:one 3:three 4:four 5");
  EXPECT_EQ(Entries(copy), "10:one 4:four 5 6:six");
  list = copy;
  EXPECT_EQ(Entries(list), Entries(copy));
  const KeyedList<int>& itself = list;
  list = itself;
  EXPECT_EQ(Entries(list), "10:one 4:four 5 6:six");
  EXPECT_EQ(list.Item("six"), 6);
}

TEST(KeyedList, CopiesKeepAnEmptyKeyApartFromNone) {
  KeyedList<int> list;
  list.Add(1);
  list.Add(2, "");
  const KeyedList<int> copy = list;
  EXPECT_EQ(copy.Item(""), 2);
}

TEST(KeyedList, MovedListsKeepTheirKeys) {
  KeyedList<int> list = Sample();
  list.Remove(3);
  KeyedList<int> moved = std::move(list);
  EXPECT_EQ(Entries(moved), "1:one 2 4:four 5");
  EXPECT_EQ(moved.Item("four"), 4);
  KeyedList<int> assigned;
  assigned.Add(0, "old");
  assigned = std::move(moved);
  EXPECT_EQ(Entries(assigned), "1:one 2 4:four 5");
  EXPECT_FALSE(assigned.HasKey("old"));
}

TEST(KeyedList, MovedFromListsAreEmpty) {
  KeyedList<int> list = Sample();
  list.Remove(1);
  list.Remove(2);
  const KeyedList<int> moved = std::move(list);
  // What is left is an empty list like any other.
  EXPECT_EQ(list.Count(), 0);  // NOLINT(bugprone-use-after-move)
  list.Add(7, "one");
  EXPECT_EQ(Entries(list), "7:one");
  EXPECT_EQ(list.Item("one"), 7);
}

TEST(KeyedList, HoldsWhatCanOnlyBeMoved) {
  KeyedList<std::unique_ptr<int>> list;
  list.Add(std::make_unique<int>(1), "a");
  list.Add(std::make_unique<int>(2), "b");
  list.Add(std::make_unique<int>(3), "c");
  list.Remove("b");
  EXPECT_EQ(*list.Item("c"), 3);
  EXPECT_EQ(*list.Item(2), 3);
}

TEST(KeyedList, LetsGoOfRemovedValuesAtOnce) {
  const auto value = std::make_shared<int>(1);
  KeyedList<std::shared_ptr<int>> list;
  for (int i = 0; i < 3; ++i)
    list.Add(value);
  list.Remove(2);
  EXPECT_EQ(value.use_count(), 3);
  list.Remove(1);
  EXPECT_EQ(value.use_count(), 2);
  list.Clear();
  EXPECT_EQ(value.use_count(), 1);
}

TEST(KeyedList, KeepsItsOrderWhenAddingFailed) {
  KeyedList<int> list = Sample();
  list.Remove(2);
  EXPECT_FALSE(Swallow([&] { list.Add(9, "ONE"); }));
  list.Add(10, "ten");
  EXPECT_EQ(Entries(list), "1:one 3:three 4:four 5 10:ten");
  EXPECT_EQ(list.Item("ten"), 10);
}

TEST(KeyedList, TakesItsOwnKeysAsArguments) {
  KeyedList<int> list;
  for (int i = 0; i < 10; ++i)
    list.Add(i, "key" + std::to_string(i));
  EXPECT_FALSE(Swallow([&] { list.Add(10, list.Key(3)); }));
  list.Remove(list.Key(1));
  EXPECT_TRUE(list.TryRemove(list.Key(5)));
  EXPECT_EQ(Entries(list), "1:key1 2:key2 3:key3 4:key4 6:key6 7:key7 8:key8 9:key9");
}

// --- Against a slow obvious model ---

// A row of entries that is searched from the front each time.
class ListModel {
 public:
  struct Entry {
    int value;
    std::optional<std::string> key;
  };

  std::size_t Count() const { return entries_.size(); }
  const Entry& At(std::size_t position) const { return entries_[position - 1]; }
  void Add(int value, std::optional<std::string> key) { entries_.push_back({value, std::move(key)}); }
  void RemoveAt(std::size_t position) { entries_.erase(entries_.begin() + static_cast<long>(position) - 1); }
  void Clear() { entries_.clear(); }

  // 0 without such an entry.
  std::size_t PositionOf(std::string_view key) const {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].key && EqualNoCase(*entries_[i].key, key)) return i + 1;
    }
    return 0;
  }

 private:
  std::vector<Entry> entries_;
};

// Does the same to a list and to a model and compares what comes of it.
class Pair {
 public:
  explicit Pair(unsigned seed) : random_(seed) {}

  void DoSomething(std::size_t wantedCount) {
    const bool grow = Below(2 * wantedCount) >= model_.Count();
    switch (Below(10)) {
      case 0:
        return CopyOrClear();
      case 1:
        return Lookup();
      case 2:
        return RemoveByKey();
      case 3:
      case 4:
        return Add();
      default:
        return grow ? Add() : RemoveByPosition();
    }
  }

  void Compare() const {
    ASSERT_EQ(static_cast<std::size_t>(list_.Count()), model_.Count());
    auto walk = list_.begin();
    for (std::size_t i = 1; i <= model_.Count(); ++i, ++walk) {
      const auto position = static_cast<std::int32_t>(i);
      ASSERT_EQ(list_.Item(position), model_.At(i).value);
      ASSERT_EQ(list_.Key(position), model_.At(i).key.value_or(""));
      ASSERT_EQ(*walk, model_.At(i).value);
      if (model_.At(i).key) {
        ASSERT_EQ(list_.Item(*model_.At(i).key), model_.At(i).value);
      }
    }
    ASSERT_TRUE(walk == list_.end());
  }

 private:
  std::size_t Below(std::size_t bound) { return random_() % bound; }

  std::string SomeKey() {
    const std::size_t number = Below(40);
    return (Below(2) == 0 ? "key" : "KEY") + std::to_string(number);
  }

  void Add() {
    ++lastValue_;
    if (Below(3) == 0) {
      list_.Add(lastValue_);
      model_.Add(lastValue_, std::nullopt);
      return;
    }
    const std::string key = SomeKey();
    const bool isNew = model_.PositionOf(key) == 0;
    EXPECT_EQ(SwallowedNumber([&] { list_.Add(lastValue_, key); }), isNew ? 0 : 457);
    if (isNew) model_.Add(lastValue_, key);
  }

  void RemoveByPosition() {
    if (model_.Count() == 0) return;
    const std::size_t places[] = {1, model_.Count(), 1 + Below(model_.Count())};
    const std::size_t position = places[Below(3)];
    list_.Remove(static_cast<std::int32_t>(position));
    model_.RemoveAt(position);
  }

  void RemoveByKey() {
    const std::string key = SomeKey();
    const std::size_t position = model_.PositionOf(key);
    if (Below(2) == 0) {
      EXPECT_EQ(list_.TryRemove(key), position > 0);
    } else {
      EXPECT_EQ(SwallowedNumber([&] { list_.Remove(key); }), position > 0 ? 0 : 5);
    }
    if (position > 0) model_.RemoveAt(position);
  }

  void Lookup() {
    const std::string key = SomeKey();
    const std::size_t position = model_.PositionOf(key);
    EXPECT_EQ(list_.HasKey(key), position > 0);
    const int* found = list_.Find(key);
    ASSERT_EQ(found != nullptr, position > 0);
    if (found != nullptr) {
      EXPECT_EQ(*found, model_.At(position).value);
    }
  }

  void CopyOrClear() {
    if (Below(40) == 0) {
      list_.Clear();
      model_.Clear();
    } else if (Below(4) == 0) {
      const KeyedList<int> copy = list_;
      list_ = copy;
    } else {
      KeyedList<int> moved = std::move(list_);
      list_ = std::move(moved);
    }
  }

  std::mt19937 random_;
  KeyedList<int> list_;
  ListModel model_;
  int lastValue_ = 0;
};

TEST(KeyedList, DoesWhatTheModelDoes) {
  for (const std::size_t wantedCount : {3U, 20U, 200U}) {
    Pair pair(static_cast<unsigned>(20100509 + wantedCount));
    for (int step = 0; step < 6000; ++step) {
      pair.DoSomething(wantedCount);
      if (step % (wantedCount < 100 ? 1 : 20) == 0) pair.Compare();
      if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "step " << step << " of " << wantedCount;
    }
  }
}

// --- Large lists: what were quadratic would not end within the time limit ---

constexpr int kMany = 50000;

KeyedList<int> ManyKeyed() {
  KeyedList<int> list;
  for (int i = 1; i <= kMany; ++i)
    list.Add(i, "key" + std::to_string(i));
  return list;
}

TEST(LargeKeyedList, HoldsAMillionEntries) {
  KeyedList<int> list;
  for (int i = 1; i <= 1000000; ++i) {
    if (i % 10 == 0) {
      list.Add(i, std::to_string(i));
    } else {
      list.Add(i);
    }
  }
  EXPECT_EQ(list.Count(), 1000000);
  EXPECT_EQ(list.Item(765432), 765432);
  EXPECT_EQ(list.Item("765430"), 765430);
  list.Remove("500000");
  EXPECT_EQ(list.Item(500000), 500001);
}

TEST(LargeKeyedList, RemovesFromTheMiddleByKey) {
  KeyedList<int> list = ManyKeyed();
  for (int i = kMany / 4; i < kMany - 1; ++i)
    list.Remove("key" + std::to_string(i));
  EXPECT_EQ(list.Count(), kMany / 4 + 1);
  EXPECT_EQ(list.Item(list.Count() - 1), kMany - 1);
  EXPECT_EQ(list.Item(1), 1);
}

TEST(LargeKeyedList, RemovesFromTheMiddleByPosition) {
  KeyedList<int> list = ManyKeyed();
  while (list.Count() > 2)
    list.Remove(list.Count() / 2 + 1);
  EXPECT_EQ(list.Item(1), 1);
}

TEST(LargeKeyedList, RemovesFromTheFront) {
  KeyedList<int> list = ManyKeyed();
  for (int i = 1; i < kMany; ++i) {
    ASSERT_EQ(list.Item(1), i);
    list.Remove(1);
  }
  EXPECT_EQ(list.Item("key" + std::to_string(kMany)), kMany);
}

TEST(LargeKeyedList, RemovesFromTheFrontBesideAHole) {
  KeyedList<int> list = ManyKeyed();
  list.Remove(kMany - 1);
  for (int i = 1; i < kMany - 1; ++i) {
    ASSERT_EQ(list.Item(1), i);
    list.Remove(1);
  }
  EXPECT_EQ(list.Item(1), kMany);
}

TEST(LargeKeyedList, WorksAsAQueue) {
  KeyedList<int> list;
  for (int i = 1; i <= 100; ++i)
    list.Add(i, std::to_string(i));
  for (int i = 101; i <= kMany; ++i) {
    list.Add(i, std::to_string(i));
    ASSERT_EQ(list.Item(1), i - 100);
    list.Remove(std::to_string(i - 100));
  }
  EXPECT_EQ(list.Count(), 100);
}

TEST(LargeKeyedList, WorksAsAQueueWithAHole) {
  KeyedList<int> list;
  for (int i = 1; i <= 100; ++i)
    list.Add(i);
  for (int i = 101; i <= kMany; ++i) {
    list.Add(i);
    list.Remove(i % 2 == 0 ? 1 : 50);
  }
  EXPECT_EQ(list.Count(), 100);
  EXPECT_EQ(list.Item(100), kMany);
}

TEST(LargeKeyedList, ReplacesInTheMiddleAndAtTheEnd) {
  KeyedList<int> list = ManyKeyed();
  for (int i = 0; i < kMany; ++i) {
    list.Remove(list.Count() - 1);
    list.Add(i);
  }
  EXPECT_EQ(list.Count(), kMany);
  EXPECT_EQ(list.Item(kMany), kMany - 1);
}

}  // namespace
}  // namespace vorlent
