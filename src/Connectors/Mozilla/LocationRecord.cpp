#include "Connectors/Mozilla/LocationRecord.h"

#include <utility>

#include "Common/StdModul.h"
#include "Host/RecordKeys.h"

namespace vorlent {

namespace {

// Folders begin at this level of an address, after the profile and the account.
constexpr std::int32_t kFirstFolderLevel = 3;

// Label, an empty part, the mark that a cleared box puts into the address, and the state at first.
constexpr std::string_view kSubfolderCheck = "inkl. Unterverzeichnis;;-;1";

}  // namespace

DiscoveryEntry SplitDiscoveryEntry(std::string entry) {
  DiscoveryEntry parts;
  parts.text = CutLine(entry);
  parts.location = CutLine(entry);
  parts.path = CutLine(entry);
  return parts;
}

std::string JoinDiscoveryEntry(const DiscoveryEntry& entry) {
  return entry.text + '\n' + entry.location + '\n' + entry.path;
}

std::string NameOfDiscoveryEntry(std::string entry) {
  CutLine(entry);
  return CutToken(entry, "/");
}

std::string LocationRecord(std::string_view entry, std::int32_t level) {
  const DiscoveryEntry parts = SplitDiscoveryEntry(std::string(entry));
  const bool hasSubfolders = level >= kFirstFolderLevel && parts.location.ends_with('*');
  std::string record;
  AppendField(record, record_key::kId, NewGuidText());
  AppendField(record, record_key::kType, "location");
  AppendField(record, record_key::kText, EscapeValue(parts.text));
  AppendDataField(record, data_key::kLocation, EscapeValue(parts.location));
  AppendDataField(record, data_key::kCheck, hasSubfolders ? kSubfolderCheck : "");
  AppendDataField(record, data_key::kPath, EscapeValue(parts.path));
  return record;
}

}  // namespace vorlent
