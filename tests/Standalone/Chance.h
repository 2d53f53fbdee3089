// Chance that a number brings back, on every machine.
#pragma once

#include <cstdint>
#include <random>

namespace vorlent {

class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  // A number from 0 on and below the limit, which isn't 0.
  std::uint64_t Below(std::uint64_t limit) { return engine_() % limit; }
  bool OneIn(std::uint64_t count) { return Below(count) == 0; }

 private:
  std::mt19937_64 engine_;
};

}  // namespace vorlent
