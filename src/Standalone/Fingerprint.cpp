#include "Standalone/Fingerprint.h"

#include <string>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Host/FileKeys.h"

namespace vorlent {

std::int64_t FingerprintOf(const ItemRecord& record) {
  TextHash fingerprint;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == "Log") continue;
    std::string value = record.FieldValue(i);
    if (key.starts_with("Data") && DescribesFile(key.substr(4))) CutLine(value);
    fingerprint.Add(key);
    fingerprint.Add(value);
  }
  return static_cast<std::int64_t>(fingerprint.Value());
}

}  // namespace vorlent
