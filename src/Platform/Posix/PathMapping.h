// Windows paths on a POSIX system: what they stand for, and how native paths are called.
//
// A drive letter is a native folder; "C:" is the root until told otherwise, and no other exists. A path
// without a drive that begins with a separator is native from the root, any other is relative to the current
// folder. The settings belong to the process and are made before paths are used.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlent::os {

// --- Settings --------------------------------------------------------------------------------------------

// Says what a drive letter stands for, in either case; an empty folder takes the drive away. A relative
// folder is one of the folder that is current now. Any other character raises InvalidCall.
void SetDrive(char letter, std::string_view nativeFolder);

// The native folder of a drive, nothing if there is no such drive.
std::optional<std::string> DriveFolder(char letter);

// The user's home, where it isn't to be that of the environment; "" goes back to that.
void SetHomeFolder(std::string_view nativeFolder);

// Points the application-data folder at a native folder with the Windows layout; "" goes back to the user's
// own.
void SetAppDataFolder(std::string_view nativeFolder);

// Takes back all of these settings.
void ResetPathMapping();

// --- Paths -----------------------------------------------------------------------------------------------

// The native path that a Windows path stands for. Names that aren't there as written are looked for without
// regard to case, component by component, and stay as written where none is found. "" for a path that can't
// stand for anything: an empty one, one of a drive that isn't there, or one that holds a zero character.
std::string ToNativePath(std::string_view path);

// The two steps of ToNativePath: the path with its names as written, which is nearly always the one that is
// meant, and the entry that is there instead. A call on a file that must exist may try the first by itself.
std::string AsWritten(std::string_view path);
std::string AsFound(std::string native);

// Whether there is an entry of exactly that native path, be it a link that leads nowhere. If not, errno tells
// the reason.
bool EntryExists(const std::string& native);

// As ToNativePath, but the last name stays as written: the native path of an entry that is to be called so.
std::string ToNewNativePath(std::string_view path);

// The Windows path of a native one, absolute in any case: below the drive whose folder holds it most closely,
// from the root without a drive if none does; "" for "".
std::string ToWindowsPath(std::string_view nativePath);

// The Windows path of the application-data folder, "" if no home can be told. That of the user's own begins
// at the root: with the letter of a drive that stands for the root, without a drive if there is none.
//
// The user's own is no real folder: "AppData" in the home stands for the home itself, and the names
// "Thunderbird", "Mozilla\FireFox" and "Mozilla\Sunbird" below it for the first of the places where these
// applications keep their data on this system.
std::string AppDataPath();

// --- Names -----------------------------------------------------------------------------------------------

// Native bytes of a single name: text that is multi-byte UTF-8 stays, all else is code page and becomes
// UTF-8.
std::string ToNativeName(std::string_view name);

// The name as code page if that leads back to the same native name, else its bytes as they are.
std::string ToWindowsName(std::string_view nativeName);

// The name in upper case and as UTF-8: two names are one and the same to Windows if their keys are equal, and
// listings are sorted by it.
std::string NameKey(std::string_view name);

// Whether a name matches a pattern with "*" and "?", without regard to case; "*.*" matches every name.
bool NameMatches(std::string_view name, std::string_view pattern);

}  // namespace vorlent::os
