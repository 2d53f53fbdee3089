// Windows paths are the system's own but for the drives that were set. Names are found in any case of letters
// by the system itself.
#include <algorithm>

#include "Platform/CodePage.h"
#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Windows/Settings.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

bool IsPathSeparator(char c) {
  return c == '\\' || c == '/';
}

// The names of a path, each converted, put after `native`. Separators become backslashes, single ones but for
// those that begin the name of a server.
void AppendNames(std::string& native, std::string_view names) {
  for (std::size_t at = 0; at < names.size();) {
    if (IsPathSeparator(names[at])) {
      if (at < 2 || !IsPathSeparator(names[at - 1])) native += '\\';
      ++at;
      continue;
    }
    const auto found =
        std::find_if(names.begin() + static_cast<std::ptrdiff_t>(at), names.end(), IsPathSeparator);
    const std::size_t end = static_cast<std::size_t>(found - names.begin());
    native += ToNativeName(names.substr(at, end - at));
    at = end;
  }
}

// Whether an absolute native path is a folder or lies below it.
bool IsWithin(std::string_view native, std::string_view folder) {
  return EqualNoCase(native.substr(0, folder.size()), folder) &&
         (native.size() == folder.size() || native[folder.size()] == '\\');
}

}  // namespace

std::string ToNativePath(std::string_view path) {
  if (path.empty() || path.find('\0') != std::string_view::npos) return "";
  std::string native;
  const std::string* drive = path.size() > 1 && path[1] == ':' ? FindDrive(path[0]) : nullptr;
  if (drive != nullptr) {
    native = *drive + '\\';
    path.remove_prefix(2);
    path.remove_prefix(std::min(path.find_first_not_of("\\/"), path.size()));
  }
  AppendNames(native, path);
  return native;
}

std::string ToWindowsPath(std::string_view nativePath) {
  if (nativePath.empty()) return "";
  std::string native = CompletePath(std::string(nativePath));
  std::string drive;
  std::size_t rootSize = 0;
  const auto& drives = CurrentSettings().drives;
  for (std::size_t i = 0; i < drives.size(); ++i) {
    const auto& folder = drives[i];
    if (!folder || !IsWithin(native, *folder) || (!drive.empty() && folder->size() <= rootSize)) continue;
    drive = DriveName(i);
    rootSize = folder->size();
  }
  std::string below = native.substr(rootSize);
  std::replace(below.begin(), below.end(), '\\', '/');
  const std::string names = ToWindowsNames(below);
  return drive + (names.empty() ? "\\" : names);
}

}  // namespace vorlent::os
