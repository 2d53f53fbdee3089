// How the Windows paths that the system works with, and the paths of the machine lead to each other.
//
// Native paths and names are UTF-8. Windows paths are those of the drives: see Platform/Settings.h.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Public.h"

namespace vorlent::os {

// Stands for a backslash in a name of a system that lets names hold one, where text can hold it: U+F05C, as
// others write such names on Windows.
inline constexpr std::string_view kBackslashOfName = "\xEF\x81\x9C";

// The native path that a Windows path stands for, as libraries open it and as people read it. Names that
// aren't there as written are looked for without regard to case, component by component, and stay as written
// where none is found. "" for a path that can't stand for anything: an empty one, one of a drive that isn't
// there, or one that holds a zero character.
// A path without a drive that begins with a separator is native from the root, any other is relative to the
// current folder. A system whose own paths are of this kind finds names in any case itself, and only puts in
// the folders of drives that were set.
VORLENT_PUBLIC std::string ToNativePath(std::string_view path);

// The Windows path of a native one, absolute in any case: below the drive whose folder holds it most closely,
// from the root without a drive if none does; "" for "".
VORLENT_PUBLIC std::string ToWindowsPath(std::string_view nativePath);

// Native bytes of a single name: text that is multi-byte UTF-8 stays, all else is code page and becomes
// UTF-8.
VORLENT_PUBLIC std::string ToNativeName(std::string_view name);

// The name of a native one as code page if that leads back to the same native name, else its bytes as they
// are.
VORLENT_PUBLIC std::string ToWindowsName(std::string_view nativeName);

}  // namespace vorlent::os
