#include "Platform/Files.h"

#include <utility>

#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

int OpenFlags(File::Mode mode) {
  switch (mode) {
    case File::Mode::Read:
      return O_RDONLY;
    case File::Mode::ReadWrite:
      return O_RDWR | O_CREAT;
    case File::Mode::Change:
      return O_RDWR;
    case File::Mode::Create:
      return O_RDWR | O_CREAT;
    case File::Mode::Append:
      return O_WRONLY | O_CREAT | O_APPEND;
  }
  return O_RDONLY;
}

}  // namespace

// --- Descriptors -----------------------------------------------------------------------------------------

OpenedFile OpenFile(std::string_view path, int flags, mode_t permissions) {
  // Opening must have no effect before the entry is known: no waiting, no emptying.
  const std::string native = ToNativePath(path);
  OpenedFile file{Descriptor(Retry([&] {
                    return open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, permissions);
                  })),
                  {}};
  Require(file.descriptor.Get() >= 0, path);
  Require(fstat(file.descriptor.Get(), &file.status) == 0, path);
  if (S_ISDIR(file.status.st_mode)) RefuseAccess(path, "is a folder");
  if (!file.IsPlain() && !S_ISCHR(file.status.st_mode)) RefuseAccess(path, "is no file of bytes");
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  if (writes && (file.status.st_mode & S_IWUSR) == 0) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  return file;
}

std::size_t ReadFrom(int descriptor, char* buffer, std::size_t size, std::string_view path) {
  std::size_t filled = 0;
  while (filled < size) {
    const ssize_t count = Retry([&] { return read(descriptor, buffer + filled, size - filled); });
    Require(count >= 0, path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

void WriteTo(int descriptor, const char* bytes, std::size_t size, std::string_view path) {
  while (size > 0) {
    const ssize_t count = Retry([&] { return write(descriptor, bytes, size); });
    Require(count >= 0, path);
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
}

// --- File ------------------------------------------------------------------------------------------------

File File::Open(std::string_view path, Mode mode) {
  OpenedFile opened = OpenFile(path, OpenFlags(mode));
  // An empty file is left alone: a file system may take one that is emptied for one that replaces another,
  // and write it out at once when it is closed.
  if (mode == Mode::Create && opened.IsPlain() && opened.status.st_size > 0) {
    Require(Retry([&] { return ftruncate(opened.descriptor.Get(), 0); }) == 0, path);
  }
  File file;
  file.path_ = path;
  file.handle_ = opened.descriptor.Release();
  return file;
}

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kClosed)), path_(std::move(other.path_)) {}

File& File::operator=(File&& other) noexcept {
  File old(std::move(*this));
  handle_ = std::exchange(other.handle_, kClosed);
  path_ = std::move(other.path_);
  return *this;
}

File::~File() {
  if (IsOpen()) close(static_cast<int>(handle_));
}

std::size_t File::Read(char* buffer, std::size_t size) {
  return ReadFrom(static_cast<int>(handle_), buffer, size, path_);
}

void File::Write(const char* bytes, std::size_t size) {
  WriteTo(static_cast<int>(handle_), bytes, size, path_);
}

void File::Seek(std::uint64_t position) {
  Require(lseek(static_cast<int>(handle_), static_cast<off_t>(position), SEEK_SET) >= 0, path_);
}

std::uint64_t File::Length() const {
  struct stat status;
  Require(fstat(static_cast<int>(handle_), &status) == 0, path_);
  return static_cast<std::uint64_t>(status.st_size);
}

void File::Sync() {
  Require(Retry([&] { return fsync(static_cast<int>(handle_)); }) == 0, path_);
}

void File::Close() {
  if (!IsOpen()) return;
  const int result = close(static_cast<int>(std::exchange(handle_, kClosed)));
  // The descriptor is gone even if a signal interrupted the call.
  if (result != 0 && errno != EINTR) RaiseSystemFailure(errno, path_);
}

}  // namespace vorlent::os
