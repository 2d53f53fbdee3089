#include <stdio.h>

#include <memory>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Posix/PathMapping.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

constexpr std::size_t kBufferSize = 256 * 1024;

struct stat StatusOf(const Descriptor& file, std::string_view path) {
  struct stat status;
  Require(fstat(file.Get(), &status) == 0, path);
  return status;
}

void CopyBytes(const Descriptor& from, std::string_view source, const Descriptor& to,
               std::string_view target) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::size_t count;
  do {
    count = ReadFrom(from.Get(), buffer.get(), kBufferSize, source);
    WriteTo(to.Get(), buffer.get(), count, target);
  } while (count == kBufferSize);
}

// Copies into a target opened with `creation`; nobody may read it who couldn't read the source. Once this
// returns the bytes are on the disk.
void CopyFile(std::string_view source, std::string_view target, int creation) {
  const Descriptor from = OpenPlainFile(source, O_RDONLY);
  const struct stat status = StatusOf(from, source);
  const mode_t permissions = status.st_mode & 0777;
  Descriptor to = OpenPlainFile(target, O_WRONLY | O_CREAT | creation, permissions | S_IWUSR);
  const struct stat targetStatus = StatusOf(to, target);
  if (targetStatus.st_dev == status.st_dev && targetStatus.st_ino == status.st_ino) {
    RefuseAccess(target, "is the file to be copied");
  }
  try {
    Require(Retry([&] { return ftruncate(to.Get(), 0); }) == 0, target);
    CopyBytes(from, source, to, target);
    // A file system that keeps no permissions or times refuses these two; the copy is whole nevertheless.
    const timespec times[] = {status.st_atim, status.st_mtim};
    (void)futimens(to.Get(), times);
    (void)fchmod(to.Get(), permissions);
    Require(Retry([&] { return fsync(to.Get()); }) == 0, target);
    Require(close(to.Release()) == 0 || errno == EINTR, target);
  } catch (const Failure&) {
    unlink(ToNativePath(target).c_str());
    throw;
  }
}

// Renames if the target's name is free, in one step where the file system can.
int RenameToFreeName(const std::string& source, const std::string& target) {
  const int result = renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
  if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
  struct stat status;
  if (lstat(target.c_str(), &status) == 0) {
    errno = EEXIST;
    return -1;
  }
  return rename(source.c_str(), target.c_str());
}

}  // namespace

void Copy(std::string_view source, std::string_view target) {
  CopyFile(source, target, 0);
}

void MoveByCopy(std::string_view source, std::string_view target) {
  CopyFile(source, target, O_EXCL);
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

bool RenameInPlace(std::string_view source, std::string_view target) {
  const std::string from = ToNativePath(source);
  const std::string found = ToNativePath(target);
  struct stat status;
  Require(lstat(from.c_str(), &status) == 0, source);
  // Names that differ in case only are one entry to Windows, and yet may be exchanged.
  const bool isSameEntry = found == from;
  if (!isSameEntry && lstat(found.c_str(), &status) == 0) RaiseSystemFailure(EEXIST, target);
  const std::string to = ToNewNativePath(target);
  if (to == from || RenameToFreeName(from, to) == 0) return true;
  if (errno != EXDEV) RaiseSystemFailure(errno, target);
  return false;
}

void Rename(std::string_view source, std::string_view target) {
  if (!RenameInPlace(source, target)) MoveByCopy(source, target);
}

}  // namespace vorlent::os
