#include <dirent.h>

#include <chrono>
#include <optional>
#include <utility>

#include "Platform/EpochTime.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/Resolving.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

// An entry of the disks.
struct Entry {
  std::string native;
  struct stat status;
};

// Nothing, with the reason in errno, if `look` finds no entry.
template <int (&look)(const char*, struct stat*)>
std::optional<Entry> TryFind(std::string native) {
  Entry entry = {std::move(native), {}};
  if (look(entry.native.c_str(), &entry.status) == 0) return entry;
  entry.native = AsFound(std::move(entry.native));
  if (look(entry.native.c_str(), &entry.status) == 0) return entry;
  return std::nullopt;
}

Entry Found(std::optional<Entry> entry, std::string_view path) {
  Require(entry.has_value(), path);
  return *std::move(entry);
}

// The entry with the status of what it leads to.
Entry FindTarget(std::string_view path) {
  return Found(TryFind<stat>(AsWritten(path)), path);
}

// The entry itself, be it a link.
Entry FindEntry(std::string_view path) {
  return Found(TryFind<lstat>(WithoutClosingSlash(AsWritten(path))), path);
}

bool IsHiddenName(std::string_view name) {
  return name.starts_with('.') && name != "." && name != "..";
}

// A link has no permissions of its own.
bool IsReadOnly(const struct stat& status) {
  return !S_ISLNK(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

int TypeAndPermissionBits(const struct stat& status) {
  const int type = S_ISDIR(status.st_mode) ? kDirectory : S_ISREG(status.st_mode) ? kArchive : 0;
  return type | (IsReadOnly(status) ? kReadOnly : 0);
}

}  // namespace

// --- Length, attributes, times ---------------------------------------------------------------------------

std::uint64_t FileLength(std::string_view path) {
  const struct stat status = FindTarget(path).status;
  if (S_ISDIR(status.st_mode)) RefuseAccess(path, "is a folder");
  return static_cast<std::uint64_t>(status.st_size);
}

namespace {

int AttributesOf(const Entry& entry) {
  const auto& [native, own] = entry;
  int attributes = TypeAndPermissionBits(own);
  if (S_ISLNK(own.st_mode)) {
    struct stat target;
    const bool leadsSomewhere = stat(native.c_str(), &target) == 0;
    attributes = kLink | (leadsSomewhere ? TypeAndPermissionBits(target) : kArchive);
  }
  if (IsHiddenName(std::string_view(native).substr(native.rfind('/') + 1))) attributes |= kHidden;
  return attributes;
}

}  // namespace

int ReadAttributes(std::string_view path) {
  return AttributesOf(FindEntry(path));
}

std::optional<int> TryReadAttributes(std::string_view path) {
  const std::optional<Entry> entry = TryFind<lstat>(WithoutClosingSlash(AsWritten(path)));
  if (!entry) return std::nullopt;
  return AttributesOf(*entry);
}

std::optional<Identity> TryIdentify(std::string_view path) {
  const std::optional<Entry> entry = TryFind<stat>(AsWritten(path));
  if (!entry) return std::nullopt;
  return Identity{entry->status.st_dev, entry->status.st_ino};
}

HeldFolder::HeldFolder(std::string_view path) : path_(path) {
  const std::string native = ToNativePath(path);
  Descriptor folder(open(native.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status;
  Require(folder.Get() >= 0 && fstat(folder.Get(), &status) == 0, path);
  identity_ = {status.st_dev, status.st_ino};
  handle_ = folder.Release();
}

HeldFolder::~HeldFolder() {
  close(static_cast<int>(handle_));
}

void WriteAttributes(std::string_view path, int attributes) {
  const auto [native, status] = FindEntry(path);
  const bool readOnly = (attributes & kReadOnly) != 0;
  // Without a change nothing is asked of the system: a file of another owner could not be set, only used.
  if (S_ISLNK(status.st_mode) || IsReadOnly(status) == readOnly) return;
  const mode_t permissions = status.st_mode & 07777;
  const mode_t wanted = readOnly ? permissions & ~(S_IWUSR | S_IWGRP | S_IWOTH) : permissions | S_IWUSR;
  Require(chmod(native.c_str(), wanted) == 0, path);
}

DateTime ReadChangeTime(std::string_view path) {
  const struct stat status = FindTarget(path).status;
  const std::chrono::sys_seconds second{std::chrono::seconds(status.st_mtim.tv_sec)};
  return EpochToLocal(second, static_cast<int>(status.st_mtim.tv_nsec / 1'000'000));
}

void WriteTimes(std::string_view path, const DateTime& local) {
  const auto [native, status] = FindTarget(path);
  if (!S_ISDIR(status.st_mode) && IsReadOnly(status)) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  timespec time = {};
  time.tv_sec = LocalToEpoch(local).time_since_epoch().count();
  time.tv_nsec = local.millisecond * 1'000'000L;
  const timespec accessAndChange[] = {time, time};
  Require(utimensat(AT_FDCWD, native.c_str(), accessAndChange, 0) == 0, path);
}

// --- Listing ---------------------------------------------------------------------------------------------

namespace {

bool IsFolder(DIR* listing, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(dirfd(listing), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// Whether a listing with these attributes shows an entry, whose name can be said in a Windows path.
bool IsShown(std::string_view name, bool isFolder, int attributes) {
  if (name == "." || name == "..") return false;
  if (name.find('\\') != std::string_view::npos && !SaysAllNames()) return false;
  if (IsHiddenName(name) && (attributes & kHidden) == 0) return false;
  return (attributes & kDirectory) != 0 || !isFolder;
}

}  // namespace

bool MayList(std::string_view path) {
  return Listing(opendir(ToNativePath(path).c_str())) != nullptr;
}

std::vector<FolderEntry> ListEntries(std::string_view folder, std::string_view pattern, int attributes) {
  const std::string native = ToNativePath(folder);
  if (native.empty()) return {};
  const Listing listing(opendir(native.c_str()));
  if (!listing) {
    if (errno == ENOENT || errno == ENOTDIR) return {};
    RaiseSystemFailure(errno, folder);
  }
  std::vector<FolderEntry> found;
  errno = 0;
  while (const dirent* entry = readdir(listing.get())) {
    const bool isFolder = IsFolder(listing.get(), *entry);
    if (IsShown(entry->d_name, isFolder, attributes)) {
      std::string name = NameOfEntry(entry->d_name);
      if (NameMatches(name, pattern)) found.push_back({std::move(name), isFolder});
    }
    errno = 0;
  }
  if (errno != 0) RaiseSystemFailure(errno, folder);
  return InOrderOfNames(std::move(found));
}

// --- Making and removing ---------------------------------------------------------------------------------

void RemoveFile(std::string_view path) {
  const auto [native, status] = Found(TryFind<lstat>(AsWritten(path)), path);
  if (S_ISDIR(status.st_mode)) RefuseAccess(path, "is a folder");
  if (IsReadOnly(status)) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  Require(unlink(native.c_str()) == 0, path);
}

bool TryRemovePlainFile(std::string_view path) {
  const std::string native = AsWritten(path);
  struct stat status;
  return lstat(native.c_str(), &status) == 0 && S_ISREG(status.st_mode) && !IsReadOnly(status) &&
         unlink(native.c_str()) == 0;
}

void CreateFolder(std::string_view path) {
  const std::string native = WithoutClosingSlash(ToNativePath(path));
  const std::string parent = native.substr(0, native.rfind('/') + 1);
  struct stat status;
  const bool isShared =
      stat(parent.empty() ? "." : parent.c_str(), &status) == 0 && (status.st_mode & S_ISVTX) != 0;
  if (mkdir(native.c_str(), isShared ? 0700 : 0777) == 0) return;
  if (errno == EEXIST) RefuseAccess(path, "exists");
  RaiseSystemFailure(errno, path);
}

void RemoveFolder(std::string_view path) {
  const auto [native, status] = FindEntry(path);
  if (IsReadOnly(status)) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  if (S_ISLNK(status.st_mode) && S_ISDIR(FindTarget(path).status.st_mode)) {
    Require(unlink(native.c_str()) == 0, path);
  } else {
    Require(rmdir(native.c_str()) == 0, path);
  }
}

void SyncFolder(std::string_view path) {
  SyncNativeFolder(ToNativePath(path), path);
}

namespace {

Descriptor OpenExistingFolder(const std::string& native, std::string_view path) {
  Descriptor folder = OpenFolder(native);
  Require(folder.Get() >= 0, path);
  return folder;
}

}  // namespace

void SyncNativeFolder(const std::string& native, std::string_view path) {
  const Descriptor folder = OpenExistingFolder(native, path);
  Require(Retry([&] { return fsync(folder.Get()); }) == 0, path);
}

void SyncTogether(std::string_view folder, const std::vector<std::string>&) {
  const Descriptor opened = OpenExistingFolder(ToNativePath(folder), folder);
  Require(Retry([&] { return syncfs(opened.Get()); }) == 0, folder);
}

}  // namespace vorlent::os
