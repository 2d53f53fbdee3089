#include "Connectors/Mozilla/Profiles.h"

#include <algorithm>
#include <cstdint>

#include "Common/StdIni.h"
#include "Common/StdModul.h"
#include "Common/StdRegistry.h"
#include "Connectors/Mozilla/AddressSegments.h"
#include "Platform/CodePage.h"
#include "Platform/Files.h"
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

constexpr std::string_view kProfilesFile = "profiles.ini";

// The folder of an application's data.
std::string BaseOf(std::string_view appFolder) {
  return AddPathSep(AppDataFolder()).append(appFolder) + "\\";
}

bool GoByName() {
  return CurrentRules().profiles == ProfileSections::ByName;
}

// The text of the file without the mark of its encoding, and without blanks around lines and keys.
std::string TidyText(const std::string& file) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  os::File source = os::File::Open(file, os::File::Mode::Read);
  std::string bytes(static_cast<std::size_t>(source.Length()), '\0');
  bytes.resize(source.Read(bytes.data(), bytes.size()));
  std::string_view rest = bytes;
  if (rest.starts_with(kMark)) rest.remove_prefix(kMark.size());
  std::string tidy;
  while (!rest.empty()) {
    std::string value = TrimBlank(CutLine(rest));
    const bool isEntry = !value.starts_with('[') && value.find('=') != std::string::npos;
    const std::string key = isEntry ? TrimBlank(CutToken(value, "=")) + "=" : "";
    tidy.append(key).append(TrimBlank(value)).append("\r\n");
  }
  return tidy;
}

// The profiles.ini of an application.
class ProfilesFile {
 public:
  explicit ProfilesFile(std::string base) : base_(std::move(base)) {
    const std::string file = base_ + std::string(kProfilesFile);
    if (!GoByName()) {
      ini_.Load(file);
    } else if (FileExists(file)) {
      ini_.LoadString(TidyText(file));
    }
  }

  // The first section is taken for the general one: it is passed over for its place, not for its name.
  std::vector<MozillaProfile> AllButFirst() const {
    std::vector<MozillaProfile> profiles;
    for (std::int32_t pos = 2; pos <= ini_.Count(); ++pos)
      profiles.push_back(Profile(ini_.GetSection(pos)));
    return profiles;
  }

  // The sections that are profiles by their names, wherever they stand. The profile in use comes first. Names
  // are given in the order of the file, as another profile may be in use tomorrow.
  std::vector<MozillaProfile> ByName() const {
    std::vector<MozillaProfile> profiles;
    OwnNames names;
    for (std::int32_t pos = 1; pos <= ini_.Count(); ++pos) {
      const std::string section = ini_.GetSection(pos);
      // Of two sections of one name only the first can be asked.
      if (!IsProfileSection(section) || ini_.GetSectionNr(section) != pos) continue;
      if (Value(section, "Name").empty() || Value(section, "Path").empty()) continue;
      profiles.push_back(Profile(section));
      profiles.back().name = names.Take(profiles.back().name);
      profiles.back().segment = AddressSegment(profiles.back().name);
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
    const std::string name = Value(section, "Name");
    return {name, Folder(Value(section, "path")), name};
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
  const ProfilesFile file(BaseOf(appFolder));
  return GoByName() ? file.ByName() : file.AllButFirst();
}

std::string ProfilesFileOf(std::string_view appFolder) {
  return BaseOf(appFolder).append(kProfilesFile);
}

}  // namespace vorlent
