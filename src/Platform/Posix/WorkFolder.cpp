#include "Platform/WorkFolder.h"

#include <stdlib.h>
#include <sys/file.h>

#include <vector>

#include "Platform/NativePaths.h"
#include "Platform/Posix/System.h"
#include "Platform/User.h"

namespace vorlent::os {

namespace {

constexpr std::string_view kNamePattern = "vorlent-XXXXXX";
constexpr std::size_t kFixedLength = kNamePattern.find('X');
constexpr const char* kMarkerName = ".in-use";

bool HasWorkFolderName(std::string_view name) {
  return name.size() == kNamePattern.size() && name.starts_with(kNamePattern.substr(0, kFixedLength));
}

Descriptor OpenFolderAt(int parent, const char* name) {
  return Descriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Nothing that lies where a marker should can make this wait.
Descriptor OpenMarker(int folder, int flags) {
  return Descriptor(
      openat(folder, kMarkerName, flags | O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
}

std::vector<std::string> NamesIn(int folder) {
  std::vector<std::string> names;
  const int own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const Listing listing(own < 0 ? nullptr : fdopendir(own));
  while (const dirent* entry = listing ? readdir(listing.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

// Removes what a folder holds but for the entry `last`. Of a link only the link goes.
void Empty(int folder, std::string_view last = {}) {
  fchmod(folder, 0700);
  for (const std::string& name : NamesIn(folder)) {
    if (name == last || unlinkat(folder, name.c_str(), 0) == 0) continue;
    const Descriptor below = OpenFolderAt(folder, name.c_str());
    if (below.Get() >= 0) Empty(below.Get());
    unlinkat(folder, name.c_str(), AT_REMOVEDIR);
  }
}

// The marker goes last: a removal that is cut short leaves a folder that can still be told.
void Remove(int parent, const char* name, int folder) {
  Empty(folder, kMarkerName);
  unlinkat(folder, kMarkerName, 0);
  unlinkat(parent, name, AT_REMOVEDIR);
}

bool IsOwn(int descriptor, mode_t type) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && status.st_uid == geteuid() && (status.st_mode & S_IFMT) == type;
}

void RemoveIfAbandoned(int parent, const char* name) {
  const Descriptor folder = OpenFolderAt(parent, name);
  if (folder.Get() < 0 || !IsOwn(folder.Get(), S_IFDIR)) return;
  const Descriptor marker = OpenMarker(folder.Get(), 0);
  if (marker.Get() < 0 || !IsOwn(marker.Get(), S_IFREG)) return;
  if (flock(marker.Get(), LOCK_EX | LOCK_NB) == 0) Remove(parent, name, folder.Get());
}

std::string NativeTemporaryFolder() {
  return ToNativePath(TemporaryFolder());
}

}  // namespace

WorkFolder::WorkFolder() {
  while (!TryMake()) {
  }
}

bool WorkFolder::TryMake() {
  native_ = NativeTemporaryFolder().append(kNamePattern);
  path_ = TemporaryFolder().append(kNamePattern);
  Require(mkdtemp(native_.data()) != nullptr, path_);
  path_ = ToWindowsPath(native_) + '\\';
  const Descriptor folder = OpenFolderAt(AT_FDCWD, native_.c_str());
  Require(folder.Get() >= 0, path_);
  Descriptor marker = OpenMarker(folder.Get(), O_CREAT | O_EXCL);
  Require(marker.Get() >= 0, path_);
  // Before the lock holds, a program that starts now may find the marker, and then the folder is its own to
  // remove. Where a file system has no locks, that program gets none either.
  struct stat status;
  const bool isTaken = flock(marker.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  if (isTaken || fstat(marker.Get(), &status) != 0 || status.st_nlink == 0) return false;
  marker_ = marker.Release();
  return true;
}

WorkFolder::~WorkFolder() {
  const Descriptor folder = OpenFolderAt(AT_FDCWD, native_.c_str());
  if (folder.Get() >= 0) Remove(AT_FDCWD, native_.c_str(), folder.Get());
  close(static_cast<int>(marker_));
}

void RemoveAbandonedWorkFolders() {
  const Descriptor parent(open(NativeTemporaryFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (parent.Get() < 0) return;
  for (const std::string& name : NamesIn(parent.Get())) {
    if (HasWorkFolderName(name)) RemoveIfAbandoned(parent.Get(), name.c_str());
  }
}

}  // namespace vorlent::os
