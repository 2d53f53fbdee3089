#include "Connectors/Mozilla/Profiles.h"

#include <algorithm>
#include <cstdint>

#include "Common/StdIni.h"
#include "Common/StdModul.h"
#include "Common/StdRegistry.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kProfileSection = "Profile";
constexpr std::string_view kInstallationSection = "Install";

bool HasLead(std::string_view name, std::string_view lead) {
  return EqualNoCase(name.substr(0, lead.size()), lead);
}

// "Profile" and a number.
bool IsProfileSection(std::string_view name) {
  if (!HasLead(name, kProfileSection) || name.size() == kProfileSection.size()) return false;
  name.remove_prefix(kProfileSection.size());
  return name.find_first_not_of("0123456789") == std::string_view::npos;
}

// The profiles.ini of an application.
class ProfilesFile {
 public:
  explicit ProfilesFile(std::string base) : base_(std::move(base)) { ini_.Load(base_ + "profiles.ini"); }

  // The first section is taken for the general one: it is passed over for its place, not for its name.
  std::vector<MozillaProfile> AllButFirst() const {
    std::vector<MozillaProfile> profiles;
    for (std::int32_t pos = 2; pos <= ini_.Count(); ++pos)
      profiles.push_back(Profile(ini_.GetSection(pos)));
    return profiles;
  }

  // The sections that are profiles by their names, wherever they stand. The profile in use comes first.
  std::vector<MozillaProfile> ByName() const {
    std::vector<MozillaProfile> profiles;
    for (std::int32_t pos = 1; pos <= ini_.Count(); ++pos) {
      const std::string section = ini_.GetSection(pos);
      // Of two sections of one name only the first can be asked.
      if (!IsProfileSection(section) || ini_.GetSectionNr(section) != pos) continue;
      if (Value(section, "Name").empty() || Value(section, "Path").empty()) continue;
      profiles.push_back(Profile(section));
    }
    for (const std::string& folder : FoldersInUse()) {
      const auto inUse = std::find_if(profiles.begin(), profiles.end(),
                                      [&](const MozillaProfile& profile) { return profile.path == folder; });
      if (inUse == profiles.end()) continue;
      std::rotate(profiles.begin(), inUse, inUse + 1);
      break;
    }
    return profiles;
  }

 private:
  // The folders that are told to be in use, the surest first. An installation names the profile that it
  // starts with, and locks the one that it has for itself. The mark of old on a profile may be left from
  // before there were such sections.
  std::vector<std::string> FoldersInUse() const {
    std::vector<std::string> locked, named, marked;
    for (std::int32_t pos = 1; pos <= ini_.Count(); ++pos) {
      const std::string section = ini_.GetSection(pos);
      const std::string choice = Value(section, "Default");
      if (HasLead(section, kInstallationSection) && !choice.empty()) {
        (Value(section, "Locked") == "1" ? locked : named).push_back(Folder(choice));
      } else if (IsProfileSection(section) && choice == "1") {
        marked.push_back(Folder(Value(section, "Path")));
      }
    }
    locked.insert(locked.end(), named.begin(), named.end());
    locked.insert(locked.end(), marked.begin(), marked.end());
    return locked;
  }

  MozillaProfile Profile(const std::string& section) const {
    return {Value(section, "Name"), Folder(Value(section, "path"))};
  }

  std::string Folder(std::string path) const {
    ReplaceText(path, "/", "\\");
    return AddPath(base_, path);
  }

  std::string Value(std::string_view section, std::string_view key) const {
    return ini_.GetString(section, key);
  }

  std::string base_;
  StdIni ini_;
};

}  // namespace

std::vector<MozillaProfile> ReadMozillaProfiles(std::string_view appFolder) {
  const ProfilesFile file(AddPathSep(AppDataFolder()).append(appFolder) + "\\");
  return CurrentRules().profiles == ProfileSections::ByName ? file.ByName() : file.AllButFirst();
}

}  // namespace vorlent
