// The profiles of a Mozilla application, told by its profiles.ini.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

struct MozillaProfile {
  std::string name;
  std::string path;  // of its folder
};

// The profiles of the application whose data lie in `appFolder` below the application-data folder, in the
// order of the file; two may have one name. Which sections of it are profiles, and whether the one in use
// goes before all others, is a matter of the rules. None without a file, a file that can't be read raises.
std::vector<MozillaProfile> ReadMozillaProfiles(std::string_view appFolder);

}  // namespace vorlent
