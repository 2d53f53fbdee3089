#include "Platform/Posix/PathMapping.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Posix/KnownNames.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

// Native folders are kept absolute and without a closing slash; the root is "".
struct Settings {
  std::array<std::optional<std::string>, 26> drives;
  std::optional<std::string> home;
  std::optional<std::string> appData;

  Settings() { drives['C' - 'A'] = ""; }
};

Settings& Current() {
  static Settings settings;
  return settings;
}

// A folder in the form in which names follow it with a slash in front.
std::string AsPrefix(std::string folder) {
  folder = WithoutClosingSlash(std::move(folder));
  return folder == "/" ? "" : folder;
}

std::string AbsoluteFolder(std::string_view nativeFolder) {
  return AsPrefix(std::filesystem::absolute(nativeFolder).lexically_normal().string());
}

// The drive's place in the table, nothing if the character is no letter.
std::optional<std::size_t> DriveIndex(char letter) {
  const char lower = static_cast<char>(letter | 0x20);
  if (lower < 'a' || lower > 'z') return std::nullopt;
  return static_cast<std::size_t>(lower - 'a');
}

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

// --- The application-data folder -------------------------------------------------------------------------

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

std::optional<std::string> Home() {
  if (Current().home) return Current().home;
  const char* variable = std::getenv("HOME");
  if (variable != nullptr && variable[0] == '/') return AsPrefix(variable);
  const passwd* user = getpwuid(getuid());
  if (user == nullptr || user->pw_dir == nullptr || user->pw_dir[0] != '/') return std::nullopt;
  return AsPrefix(user->pw_dir);
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

// Puts the real place in for a path below the application-data folder of the user.
std::string WithRealPlace(std::string native) {
  if (Current().appData || !NamesAppData(native)) return native;
  const auto home = Home();
  if (!home || !IsWithin(native, *home + std::string(kAppDataName))) return native;
  const std::string below = native.substr(home->size() + kAppDataName.size());
  for (const Place& place : Places()) {
    if (IsWithin(below, place.name)) return PlaceOf(place, *home) + below.substr(place.name.size());
  }
  // "Mozilla" isn't one folder here; that around Firefox's place stands for it.
  if (EqualNoCase(below, "/Mozilla")) return std::filesystem::path(PlaceOf(Places()[1], *home)).parent_path();
  return *home + (below.empty() ? "/" : below);
}

// --- From Windows to native ------------------------------------------------------------------------------

// The names of a path, each converted, put behind `native` with single slashes; a closing separator stays.
void AppendNames(std::string& native, std::string_view names) {
  for (std::size_t at = 0; at < names.size();) {
    if (IsSeparator(names[at])) {
      if (native.empty() || native.back() != '/') native += '/';
      ++at;
      continue;
    }
    const auto found = std::find_if(names.begin() + at, names.end(), IsSeparator);
    const std::size_t end = static_cast<std::size_t>(found - names.begin());
    const std::string_view name = names.substr(at, end - at);
    if (IsAscii(name)) {
      native += name;
    } else {
      native += ToNativeName(name);
    }
    at = end;
  }
}

// Tells which names Windows takes for one name.
class NameMatcher {
 public:
  explicit NameMatcher(std::string_view nativeName)
      : name_(nativeName), key_(NameKey(ToWindowsName(nativeName))), isAscii_(IsAscii(nativeName)) {}

  const std::string& Key() const { return key_; }

  bool Matches(std::string_view entry) const {
    // The common case first, as a probe for a missing file passes through here for every entry of its folder.
    return isAscii_ ? EqualNoCase(entry, name_) : NameKey(ToWindowsName(entry)) == key_;
  }

 private:
  std::string_view name_;
  std::string key_;
  bool isAscii_;
};

// The entry of a folder that Windows takes for `name`; of several the first in sorted order. "" if there is
// none, nothing if there is no such folder.
std::optional<std::string> FindWithoutCase(const std::string& folder, const std::string& name) {
  const std::string place = folder.empty() ? "." : folder;
  static thread_local KnownNames known;
  const NameMatcher wanted(name);
  const KnownNames::Answer answer = known.Ask(place, name, wanted.Key());
  if (answer == KnownNames::Answer::None) return "";
  if (answer == KnownNames::Answer::JustThis) return name;
  const Descriptor opened = OpenFolder(place);
  std::string found;
  const bool isListed = opened.Get() >= 0 && ForEachName(opened, [&](const char* entry) {
                          if (wanted.Matches(entry) && (found.empty() || found > entry)) found = entry;
                        });
  if (!isListed) return std::nullopt;
  return found;
}

// `native` with every name that isn't there as written replaced by that of the entry which Windows would
// find, up to the first for which there is none.
std::string ResolveFromLeft(std::string_view native) {
  std::string found;
  found.reserve(native.size());
  for (std::size_t at = 0; at < native.size();) {
    const std::size_t end = std::min(native.find('/', at), native.size());
    const std::size_t next = std::min(end + 1, native.size());
    const std::size_t start = found.size();
    found += native.substr(at, next - at);
    if (end > at && !EntryExists(found)) {
      const auto entry = FindWithoutCase(found.substr(0, start), std::string(native.substr(at, end - at)));
      if (!entry || entry->empty()) return found.append(native.substr(next));
      found.replace(start, end - at, *entry);
    }
    at = next;
  }
  return found;
}

// The same for a path that isn't there as written.
std::string Resolve(const std::string& native) {
  const std::size_t end = native.find_last_not_of('/') + 1;
  const std::size_t start = native.rfind('/', end - 1) + 1;
  // Most often the folder is there as written, since the file is about to be made in it.
  const std::string folder = native.substr(0, start);
  const std::string name = native.substr(start, end - start);
  const std::optional<std::string> found = FindWithoutCase(folder, name);
  if (!found) return ResolveFromLeft(native);
  return folder + (found->empty() ? name : *found) + native.substr(end);
}

// --- From native to Windows ------------------------------------------------------------------------------

std::string DriveName(std::size_t index) {
  return {static_cast<char>('A' + index), ':'};
}

// Names and separators of a native path.
std::string ToWindowsNames(std::string_view native) {
  std::string path;
  for (std::size_t at = 0; at < native.size();) {
    if (native[at] == '/') {
      path += '\\';
      ++at;
      continue;
    }
    const std::size_t end = std::min(native.find('/', at), native.size());
    path += ToWindowsName(native.substr(at, end - at));
    at = end;
  }
  return path;
}

// --- Names without regard to case ------------------------------------------------------------------------

// Upper-case forms of the page's characters.
constexpr std::array<char, 256> kUpperCase = [] {
  std::array<char, 256> upper{};
  for (std::size_t c = 0; c < upper.size(); ++c)
    upper[c] = static_cast<char>(c);
  for (std::size_t c = 0; c < upper.size(); ++c) {
    const unsigned char lower = codepage::ToLower(static_cast<unsigned char>(c));
    if (lower != c) upper[lower] = static_cast<char>(c);
  }
  return upper;
}();

// In upper case; of a name that is UTF-8 only the ASCII letters, as a byte of it is no character.
std::string UpperCaseName(std::string_view name) {
  const bool isUtf8 = !IsAscii(name) && IsMultiByteUtf8(name);
  std::string upper(name);
  for (char& c : upper) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 || !isUtf8) c = kUpperCase[byte];
  }
  return upper;
}

}  // namespace

// --- Settings --------------------------------------------------------------------------------------------

void SetDrive(char letter, std::string_view nativeFolder) {
  const auto index = DriveIndex(letter);
  if (!index) throw Failure(ErrorNumber::InvalidCall, std::string("no drive letter: ") + letter);
  auto& drive = Current().drives[*index];
  if (nativeFolder.empty()) {
    drive.reset();
  } else {
    drive = AbsoluteFolder(nativeFolder);
  }
}

std::optional<std::string> DriveFolder(char letter) {
  const auto index = DriveIndex(letter);
  if (!index || !Current().drives[*index]) return std::nullopt;
  const std::string& folder = *Current().drives[*index];
  return folder.empty() ? "/" : folder;
}

void SetHomeFolder(std::string_view nativeFolder) {
  Current().home.reset();
  if (!nativeFolder.empty()) Current().home = AbsoluteFolder(nativeFolder);
}

void SetAppDataFolder(std::string_view nativeFolder) {
  Current().appData.reset();
  if (!nativeFolder.empty()) Current().appData = AbsoluteFolder(nativeFolder);
}

void ResetPathMapping() {
  Current() = Settings();
}

// --- Paths -----------------------------------------------------------------------------------------------

bool EntryExists(const std::string& native) {
  struct stat status;
  return lstat(native.c_str(), &status) == 0;
}

std::string AsWritten(std::string_view path) {
  if (path.empty() || path.find('\0') != std::string_view::npos) return "";
  std::string native;
  if (path.size() > 1 && path[1] == ':') {
    const auto index = DriveIndex(path[0]);
    if (!index || !Current().drives[*index]) return "";
    native = *Current().drives[*index] + "/";
    path.remove_prefix(2);
  }
  AppendNames(native, path);
  return WithRealPlace(std::move(native));
}

std::string AsFound(std::string native) {
  return native.empty() || EntryExists(native) ? native : Resolve(native);
}

std::string ToNativePath(std::string_view path) {
  return AsFound(AsWritten(path));
}

std::string ToNewNativePath(std::string_view path) {
  const std::string native = WithoutClosingSlash(AsWritten(path));
  const std::size_t name = native.rfind('/') + 1;
  return AsFound(native.substr(0, name)) + native.substr(name);
}

std::string ToWindowsPath(std::string_view nativePath) {
  if (nativePath.empty()) return "";
  const std::string native = std::filesystem::absolute(nativePath).string();
  std::string drive;
  std::size_t rootSize = 0;
  for (std::size_t i = 0; i < Current().drives.size(); ++i) {
    const auto& folder = Current().drives[i];
    const bool holds = folder && native.starts_with(*folder) &&
                       (native.size() == folder->size() || native[folder->size()] == '/');
    if (!holds || (!drive.empty() && folder->size() <= rootSize)) continue;
    drive = DriveName(i);
    rootSize = folder->size();
  }
  const std::string names = ToWindowsNames(std::string_view(native).substr(rootSize));
  return drive + (names.empty() ? "\\" : names);
}

std::string AppDataPath() {
  if (Current().appData) return ToWindowsPath(Current().appData->empty() ? "/" : *Current().appData);
  const auto home = Home();
  if (!home) return "";
  // Absolute native paths in the applications' files are resolved against this one. So it begins at the root.
  const auto& drives = Current().drives;
  const auto root = std::find(drives.begin(), drives.end(), std::string());
  const std::string drive =
      root == drives.end() ? "" : DriveName(static_cast<std::size_t>(root - drives.begin()));
  return drive + ToWindowsNames(*home + std::string(kAppDataName));
}

// --- Names -----------------------------------------------------------------------------------------------

std::string ToNativeName(std::string_view name) {
  return DisplayUtf8(name);
}

std::string ToWindowsName(std::string_view nativeName) {
  if (IsAscii(nativeName)) return std::string(nativeName);
  auto name = ExactUtf8ToCodePage(nativeName);
  // "Ã¼" in the code page has the bytes of "ü" in UTF-8, and would be taken for that on the way back.
  if (!name || IsMultiByteUtf8(*name)) return std::string(nativeName);
  return *std::move(name);
}

std::string NameKey(std::string_view name) {
  return IsAscii(name) || IsMultiByteUtf8(name) ? UpperCaseName(name) : CodePageToUtf8(UpperCaseName(name));
}

bool NameMatches(std::string_view name, std::string_view pattern) {
  if (pattern == "*.*") return true;
  const std::string text = UpperCaseName(name);
  const std::string wanted = UpperCaseName(pattern);
  // Upon a mismatch the last star takes one character more; earlier ones never need to.
  std::size_t at = 0;
  std::size_t next = 0;
  std::size_t star = std::string::npos;
  std::size_t starAt = 0;
  while (at < text.size()) {
    if (next < wanted.size() && wanted[next] == '*') {
      star = next++;
      starAt = at;
    } else if (next < wanted.size() && (wanted[next] == '?' || wanted[next] == text[at])) {
      ++next;
      ++at;
    } else if (star != std::string::npos) {
      next = star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  return wanted.find_first_not_of('*', next) == std::string::npos;
}

}  // namespace vorlent::os
