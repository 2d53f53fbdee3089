// A limit to the size of files, as on a full disk.
#pragma once

#include <cstdint>
#include <limits>

namespace vorlent {

inline constexpr std::uint64_t kNoSizeLimit = std::numeric_limits<std::uint64_t>::max();

// Files may grow to so many bytes only, as on a full disk.
class ScopedSizeLimit {
 public:
  explicit ScopedSizeLimit(std::uint64_t bytes);
  ~ScopedSizeLimit();
  ScopedSizeLimit(const ScopedSizeLimit&) = delete;
  ScopedSizeLimit& operator=(const ScopedSizeLimit&) = delete;

 private:
  std::uint64_t before_ = kNoSizeLimit;
};

}  // namespace vorlent
