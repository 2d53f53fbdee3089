// The profiles of a Mozilla application, told by its profiles.ini.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

struct MozillaProfile {
  std::string name;
  std::string path;     // of its folder
  std::string segment;  // by which addresses name it
};

// The profiles of the application whose data lie in `appFolder` below the application-data folder, in the
// order of the file. Which sections of it are profiles, whether the one in use goes before all others, and
// whether two may have one name, is a matter of the rules. None without a file; one that can't be read
// raises.
std::vector<MozillaProfile> ReadMozillaProfiles(std::string_view appFolder);

// The file that tells them.
std::string ProfilesFileOf(std::string_view appFolder);

}  // namespace vorlent
