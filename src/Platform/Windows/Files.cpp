#include "Platform/Files.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "Platform/Failure.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

// A call takes no more bytes than a 32-bit number tells.
constexpr std::size_t kMostAtOnce = 1 << 30;

struct Opening {
  DWORD access;
  DWORD creation;
};

Opening OpeningOf(File::Mode mode) {
  switch (mode) {
    case File::Mode::Read:
      return {GENERIC_READ, OPEN_EXISTING};
    case File::Mode::ReadWrite:
    case File::Mode::Create:
      return {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS};
    case File::Mode::Change:
      return {GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING};
    case File::Mode::Append:
      // With this right alone the system writes to the end, wherever that is by then.
      return {FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS};
  }
  return {};
}

// What the system denies for these two reasons it doesn't tell apart.
[[noreturn]] void RaiseUnopened(DWORD error, const std::wstring& native, std::string_view path,
                                File::Mode mode) {
  const DWORD attributes = GetFileAttributesW(native.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      if (mode == File::Mode::Read) RefuseAccess(path, "is a folder");
      RaiseSystemFailure(kIsFolder, path);
    }
    if (error == ERROR_ACCESS_DENIED && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
      RefuseAccess(path, "is read-only", Hint::MakeWritable);
  }
  RaiseSystemFailure(error, path);
}

// Not every system that runs this refuses it to every user.
bool IsReadOnly(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION status;
  return GetFileInformationByHandle(file, &status) != 0 &&
         (status.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
}

std::uint64_t LengthOf(HANDLE file, std::string_view path) {
  LARGE_INTEGER size;
  Require(GetFileSizeEx(file, &size) != 0, path);
  return static_cast<std::uint64_t>(size.QuadPart);
}

void MoveTo(HANDLE file, std::uint64_t position, std::string_view path) {
  LARGE_INTEGER distance;
  distance.QuadPart = static_cast<LONGLONG>(position);
  Require(SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != 0, path);
}

}  // namespace

File File::Open(std::string_view path, Mode mode) {
  const std::wstring native = CallPathOf(path);
  const auto [access, creation] = OpeningOf(mode);
  Handle handle(CreateFileW(native.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle.IsOpen()) RaiseUnopened(LastError(), native, path, mode);
  const DWORD type = GetFileType(handle.Get());
  if (type != FILE_TYPE_DISK && type != FILE_TYPE_CHAR) RefuseAccess(path, "is no file of bytes");
  if (mode != Mode::Read && IsReadOnly(handle.Get())) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  if (mode == Mode::Create && type == FILE_TYPE_DISK && LengthOf(handle.Get(), path) > 0)
    Require(SetEndOfFile(handle.Get()) != 0, path);
  File file;
  file.path_ = path;
  file.handle_ = handle.Release();
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
  if (IsOpen()) CloseHandle(AsHandle(handle_));
}

std::size_t File::Read(char* buffer, std::size_t size) {
  std::size_t filled = 0;
  while (filled < size) {
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size - filled, kMostAtOnce));
    const bool isRead = ReadFile(AsHandle(handle_), buffer + filled, wanted, &count, nullptr) != 0;
    Require(isRead || LastError() == ERROR_HANDLE_EOF, path_);
    if (count == 0) break;
    filled += count;
  }
  return filled;
}

void File::Write(const char* bytes, std::size_t size) {
  while (size > 0) {
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size, kMostAtOnce));
    Require(WriteFile(AsHandle(handle_), bytes, wanted, &count, nullptr) != 0, path_);
    bytes += count;
    size -= count;
  }
}

void File::Seek(std::uint64_t position) {
  MoveTo(AsHandle(handle_), position, path_);
}

std::uint64_t File::Length() const {
  return LengthOf(AsHandle(handle_), path_);
}

// The system flushes by handles that may write only. None may on a read-only file, which is left to it.
void File::Sync() {
  if (FlushFileBuffers(AsHandle(handle_)) != 0) return;
  const DWORD error = LastError();
  if (error != ERROR_ACCESS_DENIED) RaiseSystemFailure(error, path_);
  if (IsReadOnly(AsHandle(handle_))) return;
  const Handle writing = OpenEntry(CallPathOf(path_), GENERIC_WRITE, OfLink::Target);
  Require(writing.IsOpen() && FlushFileBuffers(writing.Get()) != 0, path_);
}

void File::Close() {
  if (!IsOpen()) return;
  Require(CloseHandle(AsHandle(std::exchange(handle_, kClosed))) != 0, path_);
}

}  // namespace vorlent::os
