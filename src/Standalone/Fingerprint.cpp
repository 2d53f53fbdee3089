#include "Standalone/Fingerprint.h"

#include <bit>
#include <string>

#include "Common/StdModul.h"
#include "Host/FileKeys.h"

namespace vorlent {

void Fingerprint::Add(std::string_view text) {
  constexpr std::uint64_t kPrime = 1099511628211ULL;
  std::uint64_t word = 0;
  for (; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
    text.copy(reinterpret_cast<char*>(&word), sizeof word);
    hash_ = std::rotl((hash_ ^ word) * kPrime, 29);
  }
  word = text.size();
  text.copy(reinterpret_cast<char*>(&word) + 1, text.size());
  hash_ = std::rotl((hash_ ^ word) * kPrime, 29);
}

std::int64_t FingerprintOf(const ItemRecord& record) {
  Fingerprint fingerprint;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == "Log") continue;
    std::string value = record.FieldValue(i);
    if (key.starts_with("Data") && DescribesFile(key.substr(4))) CutLine(value);
    fingerprint.Add(key);
    fingerprint.Add(value);
  }
  return fingerprint.Value();
}

}  // namespace vorlent
