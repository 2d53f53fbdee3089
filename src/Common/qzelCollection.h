// A list of values of any type with a hash index of fixed size over its keys.
#pragma once

#include <any>
#include <array>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// An ordered list, positions from 1. Other than in a KeyedList, a key may occur more than once, keys compare
// exactly, an entry can be put in front of any position, and a run of entries can be removed in one call.
// Values are held as std::any, objects in them as shared pointers; the empty value is an empty std::any.
//
// Subscripts outside an array raise SubscriptOutOfRange, counts and positions beyond 32 bits Overflow.
class qzelCollection {
 public:
  // A position, or a key: text that begins with a number greater than 0 is a position too, so that a numeric
  // key can only be reached by GetPosition. Text that begins so, but is no number as a whole, raises
  // TypeMismatch.
  class PositionOrKey {
   public:
    PositionOrKey(std::integral auto position) : text_(std::to_string(position)) {}
    PositionOrKey(std::string_view positionOrKey) : text_(positionOrKey) {}
    PositionOrKey(const std::string& positionOrKey) : text_(positionOrKey) {}
    PositionOrKey(const char* positionOrKey) : text_(positionOrKey) {}

    const std::string& Text() const { return text_; }

   private:
    std::string text_;
  };

  qzelCollection();

  std::int32_t Count() const { return itemCount_; }

  // Forgets all entries, but not where the chains of the hash index began: a key whose chain began after the
  // room of a new list raises from then on.
  void Clear();

  // Puts a value in front of position `before`, or at the end if that isn't a position of the list. An empty
  // key is none.
  void Add(std::any wrt, std::string_view key = {}, std::int32_t before = 0);

  // The value, an empty one if there is no such entry.
  std::any Item(const PositionOrKey& pos) const;

  // Does nothing if there is no such entry.
  void Remove(const PositionOrKey& pos);

  // Removes a run of `itmcount` entries. A run that goes past the end removes two entries fewer than remain
  // from the position on; from the last position it doubles the last entry.
  void RemoveMulti(const PositionOrKey& pos, std::int32_t itmcount);

  // The key at a position, "" without one or outside the list.
  std::string key(std::int32_t n) const;

  // Position of the entry of that key that was added first, 0 if there is none.
  std::int32_t GetPosition(std::string_view key) const;

  bool HasKey(std::string_view key) const { return GetPosition(key) >= 1; }

 private:
  // What stands in the four arrays at one position.
  struct Slot {
    std::any value;
    std::string key;             // "" for none
    std::int32_t chainPrev = 0;  // position before it in its chain, or the negated bucket if it is the first
    std::int32_t chainNext = 0;  // position after it in its chain, 0 at the end
  };

  static constexpr std::size_t kBuckets = 8192;
  static constexpr std::int32_t kFirstCapacity = 50;

  static std::size_t HashKey(std::string_view key);

  std::int32_t& HeadAt(std::int32_t negatedBucket);
  Slot& At(std::int32_t position);
  const Slot& At(std::int32_t position) const;
  std::int32_t Capacity() const { return static_cast<std::int32_t>(slots_.size()); }
  bool IsLive(std::int32_t position) const { return position >= 1 && position <= itemCount_; }

  std::int32_t Resolve(const PositionOrKey& pos) const;
  void GrowArrays(std::int32_t newCapacity);
  void Link(std::int32_t position);
  void UnlinkRange(std::int32_t start, std::int32_t n);
  void ShiftPositions(std::int32_t start, std::int32_t delta);

  std::int32_t itemCount_ = 0;
  std::vector<Slot> slots_;
  std::array<std::int32_t, kBuckets> heads_{};  // position of each chain's first entry, 0 for none
};

}  // namespace vorlent
