// What tells mails of one ID apart.
#pragma once

#include <cstdint>
#include <string_view>

#include "Standalone/ItemRecord.h"

namespace vorlent {

// A hash of texts, one behind the other. Archives keep it: it may never change.
class Fingerprint {
 public:
  void Add(std::string_view text);
  std::int64_t Value() const { return static_cast<std::int64_t>(hash_); }

 private:
  std::uint64_t hash_ = 14695981039346656037ULL;
};

// A hash of all that makes two mails the same: every field but the time of import, and of a description of a
// file all but its path.
std::int64_t FingerprintOf(const ItemRecord& record);

}  // namespace vorlent
