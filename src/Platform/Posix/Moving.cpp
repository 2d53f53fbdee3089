#include <stdio.h>

#include <memory>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/Resolving.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

constexpr std::size_t kBufferSize = 256 * 1024;

void CopyBytes(const Descriptor& from, std::string_view source, const Descriptor& to,
               std::string_view target) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::size_t count;
  do {
    count = ReadFrom(from.Get(), buffer.get(), kBufferSize, source);
    WriteTo(to.Get(), buffer.get(), count, target);
  } while (count == kBufferSize);
}

enum class Replacing { Allowed, Refused };
enum class Syncing { No, Yes };

// Nobody may read the copy who couldn't read the source.
void CopyFile(std::string_view source, std::string_view target, Replacing replacing, Syncing syncing) {
  const OpenedFile from = OpenFile(source, O_RDONLY);
  if (!from.IsPlain()) RefuseAccess(source, "is no plain file");
  const mode_t permissions = from.status.st_mode & 0777;
  const int creation = O_CREAT | (replacing == Replacing::Refused ? O_EXCL : 0);
  OpenedFile to = OpenFile(target, O_WRONLY | creation, permissions | S_IWUSR);
  const bool isItself = to.status.st_dev == from.status.st_dev && to.status.st_ino == from.status.st_ino;
  if (!to.IsPlain()) RefuseAccess(target, "is no plain file");
  if (isItself) RefuseAccess(target, "is the file to be copied");
  try {
    Require(Retry([&] { return ftruncate(to.descriptor.Get(), 0); }) == 0, target);
    CopyBytes(from.descriptor, source, to.descriptor, target);
    // A file system that keeps no permissions or times refuses these two; the copy is whole nevertheless.
    const timespec times[] = {from.status.st_atim, from.status.st_mtim};
    (void)futimens(to.descriptor.Get(), times);
    (void)fchmod(to.descriptor.Get(), permissions);
    if (syncing == Syncing::Yes) Require(Retry([&] { return fsync(to.descriptor.Get()); }) == 0, target);
    Require(close(to.descriptor.Release()) == 0 || errno == EINTR, target);
  } catch (const Failure&) {
    unlink(ToNativePath(target).c_str());
    throw;
  }
}

// Renames if the target's name is free, in one step where the file system can.
int RenameToFreeName(const std::string& source, const std::string& target) {
  const int result = renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
  if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
  if (EntryExists(target)) {
    errno = EEXIST;
    return -1;
  }
  return rename(source.c_str(), target.c_str());
}

}  // namespace

void Copy(std::string_view source, std::string_view target) {
  CopyFile(source, target, Replacing::Allowed, Syncing::No);
}

void MoveByCopy(std::string_view source, std::string_view target) {
  CopyFile(source, target, Replacing::Refused, Syncing::Yes);
  const std::string nativeTarget = ToNativePath(target);
  try {
    const std::size_t slash = nativeTarget.rfind('/');
    SyncNativeFolder(slash == std::string::npos ? "." : nativeTarget.substr(0, slash + 1), target);
    Require(unlink(ToNativePath(source).c_str()) == 0, source);
  } catch (const Failure&) {
    unlink(nativeTarget.c_str());
    throw;
  }
}

bool RenameToNewName(std::string_view source, std::string_view target) {
  // Nearly always both are as written, and one question to the system is enough.
  int result = RenameToFreeName(AsWritten(source), WithoutClosingSlash(AsWritten(target)));
  if (result != 0 && errno == ENOENT) {
    const std::string from = ToNativePath(source);
    Require(EntryExists(from), source);
    result = RenameToFreeName(from, ToNewNativePath(target));
  }
  if (result != 0 && errno != EXDEV) RaiseSystemFailure(errno, target);
  return result == 0;
}

void Rename(std::string_view source, std::string_view target) {
  const std::string from = ToNativePath(source);
  const std::string found = ToNativePath(target);
  Require(EntryExists(from), source);
  // Names that differ in case only are one entry to Windows, and yet may be exchanged.
  const bool isSameEntry = found == from;
  if (!isSameEntry && EntryExists(found)) RaiseSystemFailure(EEXIST, target);
  const std::string to = ToNewNativePath(target);
  if (to == from || RenameToFreeName(from, to) == 0) return;
  if (errno != EXDEV) RaiseSystemFailure(errno, target);
  MoveByCopy(source, target);
}

}  // namespace vorlent::os
