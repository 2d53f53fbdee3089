// What the files of this folder share: system calls and their failures.
#pragma once

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent::os {

static_assert(sizeof(off_t) == 8, "mailboxes grow beyond 2 GB");

// Raises the failure of a system call on a path given in its Windows form: the path and the system's reason.
[[noreturn]] void RaiseSystemFailure(int error, std::string_view path);

// Raises `error` if a call's result says that it failed.
inline void Require(bool succeeded, std::string_view path) {
  if (!succeeded) RaiseSystemFailure(errno, path);
}

// Repeats a call that a signal interrupted.
template <class Call>
auto Retry(Call&& call) {
  decltype(call()) result;
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

// A native path without the slashes at its end; the root keeps its own.
std::string WithoutClosingSlash(std::string native);

// An open descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Descriptor() {
    if (value_ >= 0) close(value_);
  }

  int Get() const { return value_; }
  int Release() { return std::exchange(value_, -1); }

 private:
  int value_;
};

// An open folder; a descriptor below 0 if it can't be opened, for the reason in errno.
inline Descriptor OpenFolder(const std::string& native) {
  return Descriptor(Retry([&] { return open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

// Hands the names in an open folder to `take`. False if it can't be read to its end. Unlike a Listing it
// makes no buffer of its own, which for a folder of few names costs more than reading it.
template <class Take>
bool ForEachName(const Descriptor& folder, Take&& take) {
  alignas(dirent64) char buffer[16 * 1024];
  ssize_t size;
  while ((size = getdents64(folder.Get(), buffer, sizeof buffer)) > 0) {
    for (ssize_t at = 0; at < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
      take(entry->d_name);
      at += entry->d_reclen;
    }
  }
  return size == 0;
}

// An open listing of a folder that closes itself; nothing if the folder can't be opened.
struct ListingCloser {
  void operator()(DIR* listing) const { closedir(listing); }
};
using Listing = std::unique_ptr<DIR, ListingCloser>;

// An open file and what it is.
struct OpenedFile {
  Descriptor descriptor;
  struct stat status;

  bool IsPlain() const { return S_ISREG(status.st_mode); }
};

// Opens a file without ever waiting for one to answer. What bytes can't simply be read from or written to,
// such as a folder or a pipe, raises PathAccess, and so does, unless it is only read, a file without write
// permission, whoever the user is.
OpenedFile OpenFile(std::string_view path, int flags, mode_t permissions = 0666);

// Reads up to `size` bytes, fewer only at the end; writes all bytes.
std::size_t ReadFrom(int descriptor, char* buffer, std::size_t size, std::string_view path);
void WriteTo(int descriptor, const char* bytes, std::size_t size, std::string_view path);

// Raises PathAccess with a reason of our own.
[[noreturn]] void RefuseAccess(std::string_view path, std::string_view reason, Hint hint = Hint::None);

// SyncFolder of a native folder, whose failure is told of `path`.
void SyncNativeFolder(const std::string& native, std::string_view path);

// Moves a plain file to a name that isn't taken, by copying: the target is complete and on the disk before
// the source goes, and goes itself if the source can't.
void MoveByCopy(std::string_view source, std::string_view target);

}  // namespace vorlent::os
