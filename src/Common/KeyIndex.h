// What finds the entries of a keyed list by their keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorlent {

// An open hash table of numbers that stand for entries. The keys stay with the entries, so an entry takes up
// no memory of its own here, and most look-ups touch one place.
class KeyIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // The place of the entry of that hash which `isSought` accepts by its number, kNone without one. Valid
  // until the next change.
  template <class IsSought>
  std::size_t Find(std::size_t hash, const IsSought& isSought) const {
    if (cells_.empty()) return kNone;
    const std::uint32_t mark = MarkOf(hash);
    for (std::size_t place = Home(mark); cells_[place].mark != kEmpty; place = Next(place)) {
      if (cells_[place].mark == mark && isSought(cells_[place].number)) return place;
    }
    return kNone;
  }

  std::uint32_t Number(std::size_t place) const { return cells_[place].number; }

  // Adds an entry, which must not be there yet.
  void Add(std::size_t hash, std::uint32_t number) {
    if (2 * (count_ + 1) > cells_.size()) Grow();
    Put({MarkOf(hash), number});
    ++count_;
  }

  void Remove(std::size_t place) {
    // Those after it close up, so that each is still found from its home on without a gap.
    for (std::size_t next = Next(place); cells_[next].mark != kEmpty; next = Next(next)) {
      if (Distance(Home(cells_[next].mark), next) < Distance(place, next)) continue;
      cells_[place] = cells_[next];
      place = next;
    }
    cells_[place] = {};
    --count_;
  }

 private:
  static constexpr std::uint32_t kEmpty = 0;
  static constexpr std::size_t kFewestCells = 8;

  struct Cell {
    std::uint32_t mark = kEmpty;  // the hash, never 0
    std::uint32_t number = 0;
  };

  static std::uint32_t MarkOf(std::size_t hash) { return static_cast<std::uint32_t>(hash) | 0x80000000; }

  // The number of cells is a power of two.
  std::size_t Home(std::uint32_t mark) const { return mark & (cells_.size() - 1); }
  std::size_t Next(std::size_t place) const { return (place + 1) & (cells_.size() - 1); }
  std::size_t Distance(std::size_t from, std::size_t to) const { return (to - from) & (cells_.size() - 1); }

  void Put(const Cell& cell) {
    std::size_t place = Home(cell.mark);
    while (cells_[place].mark != kEmpty)
      place = Next(place);
    cells_[place] = cell;
  }

  void Grow() {
    std::vector<Cell> before(cells_.empty() ? kFewestCells : 2 * cells_.size());
    before.swap(cells_);
    for (const Cell& cell : before) {
      if (cell.mark != kEmpty) Put(cell);
    }
  }

  std::vector<Cell> cells_;
  std::size_t count_ = 0;
};

}  // namespace vorlent
