#include "Standalone/Fingerprint.h"

#include <string>
#include <string_view>
#include <utility>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

enum class Sizes { Count, AreLeftOut };

// The lines of a description without that of the size.
std::string WithoutSize(std::string lines) {
  std::string kept;
  while (!lines.empty()) {
    const std::string line = CutLine(lines);
    if (!line.starts_with("size=")) kept.append(line) += '\n';
  }
  return kept;
}

std::int64_t HashOf(const ItemRecord& record, Sizes sizes) {
  TextHash fingerprint;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == record_key::kLog) continue;
    const bool isData = key.starts_with(record_key::kDataPrefix);
    const std::string_view name = isData ? key.substr(record_key::kDataPrefix.size()) : "";
    if (name == data_key::kSize && sizes == Sizes::AreLeftOut) continue;
    std::string value = record.FieldValue(i);
    if (isData && DescribesFile(name)) CutLine(value);
    if (name == kMailFileKey && sizes == Sizes::AreLeftOut) value = WithoutSize(std::move(value));
    fingerprint.Add(key);
    // A mail is known again whichever rules it is read by.
    fingerprint.Add(ToPageText(value));
  }
  return static_cast<std::int64_t>(fingerprint.Value());
}

}  // namespace

std::int64_t FingerprintOf(const ItemRecord& record) {
  return HashOf(record, Sizes::AreLeftOut);
}

std::int64_t FingerprintWithSizesOf(const ItemRecord& record) {
  return HashOf(record, Sizes::Count);
}

}  // namespace vorlent
