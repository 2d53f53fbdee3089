#include "Support/OddEntries.h"

#include <windows.h>

namespace vorlent {

// Those of the system lie in no folder.
bool MakePipe(const std::filesystem::path&) {
  return false;
}

// Users mostly lack the right. Wine says that it did it, and did nothing.
bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& place) {
  constexpr DWORD kUnprivileged = 2;
  std::filesystem::path absolute = target.is_absolute() ? target : place.parent_path() / target;
  const DWORD kind = std::filesystem::is_directory(absolute) ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
  const BOOLEAN isMade = CreateSymbolicLinkW(place.c_str(), target.c_str(), kind | kUnprivileged);
  return isMade != 0 && GetFileAttributesW(place.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool MakeFullDevice(const std::filesystem::path&) {
  return false;
}

}  // namespace vorlent
