#include "Standalone/Fingerprint.h"

#include <string>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"

namespace vorlent {

std::int64_t FingerprintOf(const ItemRecord& record) {
  TextHash fingerprint;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == record_key::kLog) continue;
    std::string value = record.FieldValue(i);
    const bool isData = key.starts_with(record_key::kDataPrefix);
    if (isData && DescribesFile(key.substr(record_key::kDataPrefix.size()))) CutLine(value);
    fingerprint.Add(key);
    // A mail is known again whichever rules it is read by.
    fingerprint.Add(ToPageText(value));
  }
  return static_cast<std::int64_t>(fingerprint.Value());
}

}  // namespace vorlent
