// Which entry of the disks a Windows path means: the steps that Platform/NativePaths.h does in one.
#pragma once

#include <string>
#include <string_view>

namespace vorlent::os {

// The two steps of ToNativePath: the path with its names as written, which is nearly always the one that is
// meant, and the entry that is there instead. A call on a file that must exist may try the first by itself.
std::string AsWritten(std::string_view path);
std::string AsFound(std::string native);

// Whether every name can be said in a Windows path, also one that holds a backslash; and the name of an entry
// in one.
bool SaysAllNames();
std::string NameOfEntry(std::string_view nativeName);

// Whether there is an entry of exactly that native path, be it a link that leads nowhere. If not, errno tells
// the reason.
bool EntryExists(const std::string& native);

// As ToNativePath, but the last name stays as written: the native path of an entry that is to be called so.
std::string ToNewNativePath(std::string_view path);

}  // namespace vorlent::os
