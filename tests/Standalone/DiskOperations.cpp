#include "Standalone/DiskOperations.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using vorlent::DiskTrouble;

// Operations left until the trouble; negative for never.
volatile long operationsLeft = -1;
volatile DiskTrouble planned = DiskTrouble::Death;
volatile bool reached = false;

// Counts an operation; true if it shall fail for lack of space.
bool FindsDiskFull() {
  if (operationsLeft < 0) return false;
  if (operationsLeft > 0) {
    operationsLeft = operationsLeft - 1;
    return false;
  }
  if (planned == DiskTrouble::Death) kill(getpid(), SIGKILL);
  if (planned == DiskTrouble::FullOnce) operationsLeft = -1;
  reached = true;
  errno = ENOSPC;
  return true;
}

}  // namespace

// What this program defines, its libraries call.
extern "C" {
int fsync(int fd) {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_fsync, fd));
}
int fdatasync(int fd) {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_fdatasync, fd));
}
int syncfs(int fd) noexcept {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_syncfs, fd));
}
ssize_t write(int fd, const void* bytes, size_t size) {
  return FindsDiskFull() ? -1 : syscall(SYS_write, fd, bytes, size);
}
ssize_t pwrite64(int fd, const void* bytes, size_t size, off64_t at) {
  return FindsDiskFull() ? -1 : syscall(SYS_pwrite64, fd, bytes, size, at);
}
int ftruncate64(int fd, off64_t size) noexcept {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_ftruncate, fd, size));
}
int rename(const char* from, const char* to) noexcept {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int renameat2(int fromFd, const char* from, int toFd, const char* to, unsigned flags) noexcept {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_renameat2, fromFd, from, toFd, to, flags));
}
int unlink(const char* path) noexcept {
  // Space isn't needed for that, but it is a moment to die at.
  if (planned == DiskTrouble::Death) FindsDiskFull();
  return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}
int mkdir(const char* path, mode_t mode) noexcept {
  return FindsDiskFull() ? -1 : static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}
}

namespace vorlent {

void BeginDiskTrouble(long operation, DiskTrouble trouble) {
  planned = trouble;
  reached = false;
  operationsLeft = operation;
}

bool EndDiskTrouble() {
  operationsLeft = -1;
  return reached;
}

}  // namespace vorlent
