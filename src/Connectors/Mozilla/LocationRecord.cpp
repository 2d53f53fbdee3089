#include "Connectors/Mozilla/LocationRecord.h"

#include <utility>

#include "Common/StdModul.h"

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
  std::string record = "ID=" + NewGuidText() + "|Type=location|Text=" + EscapeValue(parts.text);
  record += "|DataLocation=" + EscapeValue(parts.location) + "|DataCheck=";
  if (level >= kFirstFolderLevel && parts.location.ends_with('*')) record += kSubfolderCheck;
  record += "|DataPath=" + EscapeValue(parts.path);
  return record;
}

}  // namespace vorlent
