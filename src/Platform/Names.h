// Names of files: when Windows takes two for one and the same.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files.h"

namespace vorlent::os {

// The names of a native path by ToWindowsName, and its separators.
std::string ToWindowsNames(std::string_view native);

// The name in upper case and as UTF-8: two names are one and the same to Windows if their keys are equal, and
// listings are sorted by it.
std::string NameKey(std::string_view name);

// Whether a name matches a pattern with "*" and "?", without regard to case; "*.*" matches every name.
bool NameMatches(std::string_view name, std::string_view pattern);

// The entries in the order of their names' keys.
std::vector<FolderEntry> InOrderOfNames(std::vector<FolderEntry> entries);

}  // namespace vorlent::os
