#include "Platform/Posix/ApplicationPlaces.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/Resolving.h"
#include "Platform/Posix/Settings.h"

namespace vorlent::os {

namespace {

constexpr std::string_view kAppDataName = "/AppData";

struct Place {
  std::string_view name;                     // below the application-data folder
  std::vector<std::string_view> candidates;  // below the home, in the order of preference
};

const std::array<Place, 3>& Places() {
  static const std::array<Place, 3> places = {{
      {"/Thunderbird",
       {"/.thunderbird", "/snap/thunderbird/common/.thunderbird",
        "/.var/app/org.mozilla.Thunderbird/.thunderbird", "/.var/app/org.mozilla.thunderbird/.thunderbird"}},
      {"/Mozilla/FireFox",
       {"/.mozilla/firefox", "/.config/mozilla/firefox", "/snap/firefox/common/.mozilla/firefox",
        "/.var/app/org.mozilla.firefox/.mozilla/firefox",
        "/.var/app/org.mozilla.firefox/config/mozilla/firefox"}},
      {"/Mozilla/Sunbird", {"/.mozilla/sunbird"}},
  }};
  return places;
}

// The first place that exists. One that holds profiles goes before one that was merely made by another
// program.
std::string PlaceOf(const Place& place, const std::string& home) {
  for (const char* proof : {"/profiles.ini", ""}) {
    for (const std::string_view candidate : place.candidates) {
      const std::string folder = home + std::string(candidate);
      if (EntryExists(folder + proof)) return folder;
    }
  }
  return home + std::string(place.candidates.front());
}

// Whether `path` is `folder` or lies below it, without regard to case.
bool IsWithin(std::string_view path, std::string_view folder) {
  return path.size() >= folder.size() && (path.size() == folder.size() || path[folder.size()] == '/') &&
         EqualNoCase(path.substr(0, folder.size()), folder);
}

// Nearly all paths lie elsewhere, and the home need not be asked for.
bool NamesAppData(std::string_view native) {
  for (std::size_t at = native.find('/'); at != std::string_view::npos; at = native.find('/', at + 1)) {
    if (EqualNoCase(native.substr(at, kAppDataName.size()), kAppDataName)) return true;
  }
  return false;
}

}  // namespace

std::string WithRealPlace(std::string native) {
  if (CurrentSettings().appData || !NamesAppData(native)) return native;
  const auto home = HomeFolder();
  if (!home || !IsWithin(native, *home + std::string(kAppDataName))) return native;
  const std::string below = native.substr(home->size() + kAppDataName.size());
  for (const Place& place : Places()) {
    if (IsWithin(below, place.name)) return PlaceOf(place, *home) + below.substr(place.name.size());
  }
  // "Mozilla" isn't one folder here; that around Firefox's place stands for it.
  if (EqualNoCase(below, "/Mozilla")) return std::filesystem::path(PlaceOf(Places()[1], *home)).parent_path();
  return *home + (below.empty() ? "/" : below);
}

std::string AppDataPath() {
  const auto& appData = CurrentSettings().appData;
  if (appData) return ToWindowsPath(appData->empty() ? "/" : *appData);
  const auto home = HomeFolder();
  if (!home) return "";
  // Absolute native paths in the applications' files are resolved against this one. So it begins at the root.
  const auto& drives = CurrentSettings().drives;
  const auto root = std::find(drives.begin(), drives.end(), std::string());
  const std::string drive =
      root == drives.end() ? "" : DriveName(static_cast<std::size_t>(root - drives.begin()));
  return drive + ToWindowsNames(*home + std::string(kAppDataName));
}

}  // namespace vorlent::os
