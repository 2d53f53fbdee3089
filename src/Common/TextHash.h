// A hash of several texts, each told apart from the next.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace vorlent {

// Archives keep it: it may never change. Whoever wants two texts of one hash finds some.
class TextHash {
 public:
  void Add(std::string_view text) {
    std::uint64_t word = 0;
    for (; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
      text.copy(reinterpret_cast<char*>(&word), sizeof word);
      Mix(word);
    }
    word = text.size();
    text.copy(reinterpret_cast<char*>(&word) + 1, text.size());
    Mix(word);
  }

  std::uint64_t Value() const { return hash_; }

 private:
  void Mix(std::uint64_t word) {
    constexpr std::uint64_t kPrime = 1099511628211ULL;
    hash_ = std::rotl((hash_ ^ word) * kPrime, 29);
  }

  std::uint64_t hash_ = 14695981039346656037ULL;
};

}  // namespace vorlent
