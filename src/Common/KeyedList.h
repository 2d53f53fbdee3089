// The general collection of the system: values in order, positions from 1, optional keys.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/KeyIndex.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"

namespace vorlent {

// Keys compare without regard to letter case. Adding a key that the list holds raises KeyExists; a key or
// position that it doesn't hold raises InvalidCall for a key and SubscriptOutOfRange for a position.
//
// Appending, lookup by key, lookup by position and removal at either end are constant time. A removal from
// the middle leaves a hole; while there are holes, positions are found in logarithmic time.
template <class T>
class KeyedList {
 public:
  KeyedList() = default;
  // What was moved from is empty.
  KeyedList(KeyedList&& other) noexcept { Swap(other); }
  KeyedList& operator=(KeyedList&& other) noexcept {
    KeyedList taken(std::move(other));
    Swap(taken);
    return *this;
  }
  KeyedList(const KeyedList& other) { AppendAll(other); }
  KeyedList& operator=(const KeyedList& other) {
    if (this != &other) *this = KeyedList(other);
    return *this;
  }
  ~KeyedList() = default;

  std::int32_t Count() const { return static_cast<std::int32_t>(slots_.size() - first_ - holes_); }
  bool IsEmpty() const { return Count() == 0; }

  // Appends a value without a key.
  void Add(T value) { Append({std::move(value), {}, State::Unkeyed}); }

  // Appends a value under a key; an empty key is a key like any other.
  void Add(T value, std::string_view key) {
    if (!TryAdd(std::move(value), key))
      throw Failure(ErrorNumber::KeyExists, "key exists: '" + std::string(key) + "'");
  }

  // The same, unless the key is there already. Tells whether it wasn't.
  bool TryAdd(T value, std::string_view key) {
    const std::size_t hash = HashNoCase(key);
    if (PlaceOf(hash, key) != KeyIndex::kNone) return false;
    Append({std::move(value), std::string(key), State::Keyed});
    index_.Add(hash, NumberOf(slots_.size() - 1));
    return true;
  }

  bool HasKey(std::string_view key) const { return PlaceOf(key) != KeyIndex::kNone; }

  T& Item(std::int32_t position) { return slots_[SlotAt(position)].value; }
  const T& Item(std::int32_t position) const { return slots_[SlotAt(position)].value; }
  T& Item(std::string_view key) { return slots_[SlotOf(key)].value; }
  const T& Item(std::string_view key) const { return slots_[SlotOf(key)].value; }

  // The entry of a key, null if there is none: for callers to whom a missing key is no failure.
  const T* Find(std::string_view key) const {
    const std::size_t place = PlaceOf(key);
    return place == KeyIndex::kNone ? nullptr : &slots_[SlotAtPlace(place)].value;
  }

  // The key of the entry at a position, "" if it has none. Valid until the next change.
  std::string_view Key(std::int32_t position) const { return slots_[SlotAt(position)].key; }

  void Remove(std::int32_t position) { RemoveSlot(SlotAt(position)); }
  void Remove(std::string_view key) {
    if (!TryRemove(key)) RaiseNoKey(key);
  }

  // Removes the entry of a key if there is one, and tells whether there was.
  bool TryRemove(std::string_view key) {
    const std::size_t place = PlaceOf(key);
    if (place == KeyIndex::kNone) return false;
    RemoveSlot(SlotAtPlace(place), place);
    return true;
  }

  void Clear() { *this = KeyedList(); }

  // Walks the entries in order.
  template <class Slots, class Value>
  class Walk {
   public:
    Walk(Slots* slots, std::size_t at) : slots_(slots), at_(at) { SkipHoles(); }
    Value& operator*() const { return (*slots_)[at_].value; }
    Value* operator->() const { return &(*slots_)[at_].value; }
    Walk& operator++() {
      ++at_;
      SkipHoles();
      return *this;
    }
    bool operator==(const Walk& other) const { return at_ == other.at_; }

   private:
    void SkipHoles() {
      while (at_ < slots_->size() && (*slots_)[at_].state == State::Removed)
        ++at_;
    }

    Slots* slots_;
    std::size_t at_;
  };

  auto begin() { return Walk<std::vector<Slot>, T>(&slots_, first_); }
  auto end() { return Walk<std::vector<Slot>, T>(&slots_, slots_.size()); }
  auto begin() const { return Walk<const std::vector<Slot>, const T>(&slots_, first_); }
  auto end() const { return Walk<const std::vector<Slot>, const T>(&slots_, slots_.size()); }

 private:
  enum class State : std::uint8_t { Removed, Unkeyed, Keyed };

  struct Slot {
    T value;
    std::string key;
    State state;

    bool IsLive() const { return state != State::Removed; }
  };

  void Swap(KeyedList& other) noexcept {
    std::swap(index_, other.index_);
    slots_.swap(other.slots_);
    liveCounts_.swap(other.liveCounts_);
    std::swap(first_, other.first_);
    std::swap(holes_, other.holes_);
    std::swap(removedInFront_, other.removedInFront_);
  }

  void AppendAll(const KeyedList& other) {
    for (std::size_t i = other.first_; i < other.slots_.size(); ++i) {
      const Slot& slot = other.slots_[i];
      if (slot.state == State::Keyed) Add(slot.value, slot.key);
      if (slot.state == State::Unkeyed) Add(slot.value);
    }
  }

  void Append(Slot slot) {
    slots_.push_back(std::move(slot));
    if (!liveCounts_.empty()) AppendToLiveCounts();
  }

  // What the index holds for a slot. It counts from the first slot that the list ever had and wraps around,
  // so that dropping slots in front needs no renumbering.
  std::uint32_t NumberOf(std::size_t slot) const {
    return static_cast<std::uint32_t>(slot) + removedInFront_;
  }
  std::size_t SlotOfNumber(std::uint32_t number) const { return number - removedInFront_; }
  std::size_t SlotAtPlace(std::size_t place) const { return SlotOfNumber(index_.Number(place)); }

  std::size_t PlaceOf(std::string_view key) const { return PlaceOf(HashNoCase(key), key); }
  std::size_t PlaceOf(std::size_t hash, std::string_view key) const {
    return index_.Find(
        hash, [&](std::uint32_t number) { return EqualNoCase(slots_[SlotOfNumber(number)].key, key); });
  }

  std::size_t SlotAt(std::int32_t position) const {
    if (position < 1 || position > Count()) {
      throw Failure(ErrorNumber::SubscriptOutOfRange, "no entry at position " + std::to_string(position));
    }
    const auto rank = static_cast<std::size_t>(position);
    return holes_ == 0 ? first_ + rank - 1 : FindRank(rank);
  }

  std::size_t SlotOf(std::string_view key) const {
    const std::size_t place = PlaceOf(key);
    if (place == KeyIndex::kNone) RaiseNoKey(key);
    return SlotAtPlace(place);
  }

  [[noreturn]] static void RaiseNoKey(std::string_view key) {
    throw Failure(ErrorNumber::InvalidCall, "no entry of key '" + std::string(key) + "'");
  }

  void RemoveSlot(std::size_t at) {
    RemoveSlot(at, slots_[at].state == State::Keyed ? PlaceOf(slots_[at].key) : KeyIndex::kNone);
  }

  // `place` is that of the slot's key.
  void RemoveSlot(std::size_t at, std::size_t place) {
    if (place != KeyIndex::kNone) index_.Remove(place);
    if (at + 1 == slots_.size()) {
      slots_.pop_back();
      if (!liveCounts_.empty()) liveCounts_.pop_back();
      DropHolesAtEnd();
      return;
    }
    slots_[at] = {T(), {}, State::Removed};
    if (at == first_) {
      if (!liveCounts_.empty()) AddToLiveCounts(at, -1);
      ++first_;
      while (first_ < slots_.size() && !slots_[first_].IsLive()) {
        ++first_;
        --holes_;
      }
      CompactFront();
    } else {
      ++holes_;
      if (liveCounts_.empty()) {
        BuildLiveCounts();
      } else {
        AddToLiveCounts(at, -1);
      }
      if (holes_ > slots_.size() / 2) CompactHoles();
    }
  }

  void DropHolesAtEnd() {
    while (slots_.size() > first_ && !slots_.back().IsLive()) {
      slots_.pop_back();
      if (!liveCounts_.empty()) liveCounts_.pop_back();
      --holes_;
    }
    if (slots_.size() == first_) Clear();
  }

  // Gives back the room of removed entries in front once it is the larger part: amortised constant.
  void CompactFront() {
    if (first_ <= slots_.size() / 2) return;
    slots_.erase(slots_.begin(), slots_.begin() + static_cast<std::ptrdiff_t>(first_));
    removedInFront_ += static_cast<std::uint32_t>(first_);
    first_ = 0;
    if (holes_ > 0) {
      BuildLiveCounts();
    } else {
      liveCounts_.clear();
    }
  }

  void CompactHoles() {
    std::vector<Slot> packed;
    packed.reserve(slots_.size() - first_ - holes_);
    for (std::size_t i = first_; i < slots_.size(); ++i) {
      if (slots_[i].IsLive()) packed.push_back(std::move(slots_[i]));
    }
    slots_ = std::move(packed);
    first_ = holes_ = removedInFront_ = 0;
    liveCounts_.clear();
    index_ = {};
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      if (slots_[i].state == State::Keyed) index_.Add(HashNoCase(slots_[i].key), NumberOf(i));
    }
  }

  // A binary indexed tree over the slots counts the live ones; it exists only while there are holes.
  void BuildLiveCounts() {
    liveCounts_.clear();
    liveCounts_.reserve(slots_.size());
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      liveCounts_.push_back(0);
      SumUpLiveCount(i);
    }
  }

  void AppendToLiveCounts() {
    liveCounts_.push_back(0);
    SumUpLiveCount(liveCounts_.size() - 1);
  }

  // Sets node `at`, whose children in the tree are all in place, from its own slot and theirs.
  void SumUpLiveCount(std::size_t at) {
    const std::size_t node = at + 1;
    std::uint32_t sum = slots_[at].IsLive() ? 1 : 0;
    for (std::size_t child = node - 1; child > node - (node & -node); child -= child & -child) {
      sum += liveCounts_[child - 1];
    }
    liveCounts_[at] = sum;
  }

  void AddToLiveCounts(std::size_t at, int change) {
    for (std::size_t node = at + 1; node <= liveCounts_.size(); node += node & -node) {
      liveCounts_[node - 1] = static_cast<std::uint32_t>(static_cast<int>(liveCounts_[node - 1]) + change);
    }
  }

  // The slot of the live entry with that rank.
  std::size_t FindRank(std::size_t rank) const {
    std::size_t step = 1;
    while (step * 2 <= liveCounts_.size())
      step *= 2;
    std::size_t passed = 0;
    for (; step > 0; step /= 2) {
      if (passed + step <= liveCounts_.size() && liveCounts_[passed + step - 1] < rank) {
        passed += step;
        rank -= liveCounts_[passed - 1];
      }
    }
    return passed;
  }

  KeyIndex index_;
  std::vector<Slot> slots_;
  std::vector<std::uint32_t> liveCounts_;
  std::size_t first_ = 0;             // slots in front of it are removed
  std::size_t holes_ = 0;             // removed slots after first_
  std::uint32_t removedInFront_ = 0;  // slots dropped from the vector's front so far, wrapping around
};

}  // namespace vorlent
