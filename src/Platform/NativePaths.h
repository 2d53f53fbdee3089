// How the Windows paths that the system works with, and the paths of the machine lead to each other.
//
// Native paths and names are UTF-8. Windows paths are those of the drives: see Platform/Settings.h.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Public.h"

namespace vorlent::os {

// The characters that a system lets names hold, and that no name of a Windows path or of a line of text can.
inline constexpr std::string_view kUnsayable = "\\\r\n";

// What stands for one of them where text can hold it: U+F05C for a backslash, as others write such names on
// Windows, and by the same rule U+F000 and its code for each other one.
inline std::string StandInFor(char c) {
  const auto code = static_cast<unsigned char>(c);
  return {'\xEF', static_cast<char>(0x80 | (code >> 6)), static_cast<char>(0x80 | (code & 0x3F))};
}

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
