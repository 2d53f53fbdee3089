#include "Connectors/Mozilla/Profiles.h"

#include <cstdint>

#include "Common/StdIni.h"
#include "Common/StdModul.h"
#include "Common/StdRegistry.h"

namespace vorlent {

std::vector<MozillaProfile> ReadMozillaProfiles(std::string_view appFolder) {
  const std::string base = AddPathSep(AppDataFolder()).append(appFolder) + "\\";
  StdIni ini;
  ini.Load(base + "profiles.ini");
  std::vector<MozillaProfile> profiles;
  // The first section is taken for the general one: it is passed over for its place, not for its name.
  for (std::int32_t pos = 2; pos <= ini.Count(); ++pos) {
    const std::string section = ini.GetSection(pos);
    std::string path = ini.GetString(section, "path");
    ReplaceText(path, "/", "\\");
    profiles.push_back({ini.GetString(section, "Name"), AddPath(base, path)});
  }
  return profiles;
}

}  // namespace vorlent
