#include "Platform/Posix/Resolving.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "Platform/CodePage.h"
#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/ApplicationPlaces.h"
#include "Platform/Posix/KnownNames.h"
#include "Platform/Posix/Settings.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

bool IsPathSeparator(char c) {
  return c == '\\' || c == '/';
}

void ReplaceAll(std::string& text, std::string_view old, std::string_view by) {
  for (std::size_t at = text.find(old); at != std::string::npos; at = text.find(old, at + by.size()))
    text.replace(at, old.size(), by);
}

// Names with what stands for the characters that can't be said, and back, where text can hold that.
std::string WithStandIns(std::string names) {
  if (!SaysAllNames() || names.find_first_of(kUnsayable) == std::string::npos) return names;
  for (const char c : kUnsayable)
    ReplaceAll(names, {&c, 1}, StandInFor(c));
  return names;
}

std::string WithoutStandIns(std::string name) {
  if (!SaysAllNames()) return name;
  for (const char c : kUnsayable)
    ReplaceAll(name, StandInFor(c), {&c, 1});
  return name;
}

// The names of a path, each converted, put after `native` with single slashes; a closing separator stays.
void AppendNames(std::string& native, std::string_view names) {
  for (std::size_t at = 0; at < names.size();) {
    if (IsPathSeparator(names[at])) {
      if (native.empty() || native.back() != '/') native += '/';
      ++at;
      continue;
    }
    const auto found = std::find_if(names.begin() + at, names.end(), IsPathSeparator);
    const std::size_t end = static_cast<std::size_t>(found - names.begin());
    const std::string_view name = names.substr(at, end - at);
    if (IsAscii(name)) {
      native += name;
    } else {
      native += WithoutStandIns(ToNativeName(name));
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

}  // namespace

// --- From Windows to native ------------------------------------------------------------------------------

bool EntryExists(const std::string& native) {
  struct stat status;
  return lstat(native.c_str(), &status) == 0;
}

std::string AsWritten(std::string_view path) {
  if (path.empty() || path.find('\0') != std::string_view::npos) return "";
  std::string native;
  if (path.size() > 1 && path[1] == ':') {
    const std::string* drive = FindDrive(path[0]);
    if (drive == nullptr) return "";
    native = *drive + "/";
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

// --- From native to Windows ------------------------------------------------------------------------------

bool SaysAllNames() {
  return HoldsUtf8();
}

std::string NameOfEntry(std::string_view nativeName) {
  return WithStandIns(ToWindowsName(nativeName));
}

std::string ToWindowsPath(std::string_view nativePath) {
  if (nativePath.empty()) return "";
  const std::string native = std::filesystem::absolute(nativePath).string();
  std::string drive;
  std::size_t rootSize = 0;
  const auto& drives = CurrentSettings().drives;
  for (std::size_t i = 0; i < drives.size(); ++i) {
    const auto& folder = drives[i];
    const bool holds = folder && native.starts_with(*folder) &&
                       (native.size() == folder->size() || native[folder->size()] == '/');
    if (!holds || (!drive.empty() && folder->size() <= rootSize)) continue;
    drive = DriveName(i);
    rootSize = folder->size();
  }
  const std::string names = ToWindowsNames(WithStandIns(native.substr(rootSize)));
  return drive + (names.empty() ? "\\" : names);
}

}  // namespace vorlent::os
