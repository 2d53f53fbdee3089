#include "Support/DiskOperations.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

#include "Support/DiskCalls.h"

namespace {

using vorlent::DiskCall;

// True, with errno set, if a call that the plan is about shall fail.
bool FailsNow() {
  if (!vorlent::FailsNow()) return false;
  errno = vorlent::PlannedError();
  return true;
}

std::string_view PathOf(int fd, char (&path)[4096]) {
  char link[32];
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t size = readlink(link, path, sizeof path);
  return {path, size < 0 ? 0 : static_cast<std::size_t>(size)};
}

std::string_view PathOf(const char* path, const char (&)[4096]) {
  return path;
}

template <class File>
void NoteCall(DiskCall call, File file) {
  if (!vorlent::IsWatched(call)) return;
  const int number = errno;
  char path[4096];
  vorlent::TellWatcher(call, std::string(PathOf(file, path)));
  errno = number;
}

bool Fails(DiskCall call, const char* path) {
  NoteCall(call, path);
  return vorlent::IsPlanned(call) && std::string_view(path).ends_with(vorlent::PlannedPathEnd()) &&
         FailsNow();
}

bool Fails(DiskCall call, int fd) {
  NoteCall(call, fd);
  if (!vorlent::IsPlanned(call)) return false;
  if (vorlent::PlannedPathEnd().empty()) return FailsNow();
  char path[4096];
  return PathOf(fd, path).ends_with(vorlent::PlannedPathEnd()) && FailsNow();
}

template <class Result = int, class File, class... Arguments>
Result CallOrFail(DiskCall call, File file, long number, Arguments... arguments) {
  return static_cast<Result>(Fails(call, file) ? -1 : syscall(number, arguments...));
}

int OpenOrFail(int folder, const char* path, int flags, mode_t mode) {
  return CallOrFail(DiskCall::Open, path, SYS_openat, folder, path, flags, mode);
}

// The creation mode, which stands after the flags only where it is needed.
mode_t ModeBehind(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

// The C library's own function of that name, for what isn't a system call.
template <class Function>
Function* Own(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// What this program defines, its libraries call.
extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeBehind(flags, arguments);
  va_end(arguments);
  return OpenOrFail(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeBehind(flags, arguments);
  va_end(arguments);
  return OpenOrFail(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeBehind(flags, arguments);
  va_end(arguments);
  return OpenOrFail(folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeBehind(flags, arguments);
  va_end(arguments);
  return OpenOrFail(folder, path, flags, mode);
}
int close(int fd) {
  const bool fails = Fails(DiskCall::Close, fd);
  const int error = errno;
  const int result = static_cast<int>(syscall(SYS_close, fd));
  if (!fails) return result;
  errno = error;
  return -1;
}

ssize_t read(int fd, void* bytes, size_t size) {
  return CallOrFail<ssize_t>(DiskCall::Read, fd, SYS_read, fd, bytes, size);
}
ssize_t pread(int fd, void* bytes, size_t size, off_t at) {
  return CallOrFail<ssize_t>(DiskCall::Read, fd, SYS_pread64, fd, bytes, size, at);
}
ssize_t pread64(int fd, void* bytes, size_t size, off64_t at) {
  return CallOrFail<ssize_t>(DiskCall::Read, fd, SYS_pread64, fd, bytes, size, at);
}
ssize_t write(int fd, const void* bytes, size_t size) {
  return CallOrFail<ssize_t>(DiskCall::Write, fd, SYS_write, fd, bytes, size);
}
ssize_t pwrite(int fd, const void* bytes, size_t size, off_t at) {
  return CallOrFail<ssize_t>(DiskCall::Write, fd, SYS_pwrite64, fd, bytes, size, at);
}
ssize_t pwrite64(int fd, const void* bytes, size_t size, off64_t at) {
  return CallOrFail<ssize_t>(DiskCall::Write, fd, SYS_pwrite64, fd, bytes, size, at);
}
off_t lseek(int fd, off_t offset, int whence) noexcept {
  return CallOrFail<off_t>(DiskCall::Seek, fd, SYS_lseek, fd, offset, whence);
}
off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
  return CallOrFail<off64_t>(DiskCall::Seek, fd, SYS_lseek, fd, offset, whence);
}
int ftruncate(int fd, off_t size) noexcept {
  return CallOrFail(DiskCall::Truncate, fd, SYS_ftruncate, fd, size);
}
int ftruncate64(int fd, off64_t size) noexcept {
  return CallOrFail(DiskCall::Truncate, fd, SYS_ftruncate, fd, size);
}

int stat(const char* path, struct stat* status) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, AT_FDCWD, path, status, 0);
}
int stat64(const char* path, struct stat64* status) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, AT_FDCWD, path, status, 0);
}
int lstat(const char* path, struct stat* status) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
int lstat64(const char* path, struct stat64* status) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
int fstat(int fd, struct stat* status) noexcept {
  return CallOrFail(DiskCall::Status, fd, SYS_fstat, fd, status);
}
int fstat64(int fd, struct stat64* status) noexcept {
  return CallOrFail(DiskCall::Status, fd, SYS_fstat, fd, status);
}
int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, folder, path, status, flags);
}
int fstatat64(int folder, const char* path, struct stat64* status, int flags) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_newfstatat, folder, path, status, flags);
}
int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept {
  return CallOrFail(DiskCall::Status, path, SYS_statx, folder, path, flags, mask, status);
}

DIR* opendir(const char* path) {
  static const auto own = Own<DIR*(const char*)>("opendir");
  return Fails(DiskCall::List, path) ? nullptr : own(path);
}
struct dirent* readdir(DIR* listing) {
  static const auto own = Own<struct dirent*(DIR*)>("readdir");
  return Fails(DiskCall::List, dirfd(listing)) ? nullptr : own(listing);
}
struct dirent64* readdir64(DIR* listing) {
  static const auto own = Own<struct dirent64*(DIR*)>("readdir64");
  return Fails(DiskCall::List, dirfd(listing)) ? nullptr : own(listing);
}
ssize_t getdents64(int fd, void* buffer, size_t size) noexcept {
  return CallOrFail<ssize_t>(DiskCall::List, fd, SYS_getdents64, fd, buffer, size);
}

int fsync(int fd) {
  return CallOrFail(DiskCall::Sync, fd, SYS_fsync, fd);
}
int fdatasync(int fd) {
  return CallOrFail(DiskCall::Sync, fd, SYS_fdatasync, fd);
}
int syncfs(int fd) noexcept {
  return CallOrFail(DiskCall::Sync, fd, SYS_syncfs, fd);
}

int rename(const char* from, const char* to) noexcept {
  return CallOrFail(DiskCall::Rename, to, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0);
}
int renameat2(int fromFd, const char* from, int toFd, const char* to, unsigned flags) noexcept {
  return CallOrFail(DiskCall::Rename, to, SYS_renameat2, fromFd, from, toFd, to, flags);
}
int unlink(const char* path) noexcept {
  return CallOrFail(DiskCall::Remove, path, SYS_unlinkat, AT_FDCWD, path, 0);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
  return CallOrFail(DiskCall::Remove, path, SYS_unlinkat, folder, path, flags);
}
int rmdir(const char* path) noexcept {
  return CallOrFail(DiskCall::Remove, path, SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR);
}
int mkdir(const char* path, mode_t mode) noexcept {
  return CallOrFail(DiskCall::MakeFolder, path, SYS_mkdirat, AT_FDCWD, path, mode);
}

int chmod(const char* path, mode_t mode) noexcept {
  return CallOrFail(DiskCall::SetMode, path, SYS_fchmodat, AT_FDCWD, path, mode);
}
int fchmod(int fd, mode_t mode) noexcept {
  return CallOrFail(DiskCall::SetMode, fd, SYS_fchmod, fd, mode);
}
int utimensat(int folder, const char* path, const struct timespec times[2], int flags) noexcept {
  return CallOrFail(DiskCall::SetTimes, path, SYS_utimensat, folder, path, times, flags);
}
int futimens(int fd, const struct timespec times[2]) noexcept {
  return CallOrFail(DiskCall::SetTimes, fd, SYS_utimensat, fd, nullptr, times, 0);
}
}

void vorlent::Die() {
  kill(getpid(), SIGKILL);
  _exit(1);
}
