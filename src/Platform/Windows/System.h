// What the files of this folder share: texts of the system, open handles, and failures of its calls.
//
// Nothing here includes the system's headers, whose macros would reach those who include this.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent::os {

// UTF-8 as the system's wide calls take it, and back; nothing for wide text that isn't Unicode, as a name on
// a disk may be.
std::wstring ToWide(std::string_view utf8);
std::optional<std::string> ToUtf8(std::wstring_view wide);

// What is to be called with a native path: absolute, and without a limit to its length, where it would be too
// long for the system as it is.
std::wstring ToCallPath(const std::string& native);
// The same for a Windows path.
std::wstring CallPathOf(std::string_view path);

// A native path as the system completes it: absolute, with single backslashes and without dots. "" if it
// can't be one.
std::string CompletePath(const std::string& native);

// The system's error for a folder where a file is asked for, which the headers of MinGW lack.
constexpr unsigned long kIsFolder = 336;

// The number of the error that the system's last call on this thread left.
unsigned long LastError();

// Raises the failure of a system call on a path given in its Windows form: the path and the reason.
[[noreturn]] void RaiseSystemFailure(unsigned long error, std::string_view path);

// Raises the last error if a call's result says that it failed.
inline void Require(bool succeeded, std::string_view path) {
  if (!succeeded) RaiseSystemFailure(LastError(), path);
}

// Raises PathAccess with a reason of our own.
[[noreturn]] void RefuseAccess(std::string_view path, std::string_view reason, Hint hint = Hint::None);

// An open handle of the system that closes itself.
class Handle {
 public:
  static constexpr std::intptr_t kNone = -1;

  explicit Handle(void* value) : value_(reinterpret_cast<std::intptr_t>(value)) {}
  Handle(Handle&& other) noexcept : value_(std::exchange(other.value_, kNone)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Handle();

  // Some calls give the one, some the other for a failure.
  bool IsOpen() const { return value_ != kNone && value_ != 0; }
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type
  void* Get() const { return reinterpret_cast<void*>(value_); }
  std::intptr_t Release() { return std::exchange(value_, kNone); }

 private:
  std::intptr_t value_;
};

// A handle as it is kept in a class that doesn't know the system.
inline void* AsHandle(std::intptr_t kept) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type
  return reinterpret_cast<void*>(kept);
}

// Opens an entry of the disks, be it a folder, to ask about it or to change what its folder tells of it. Not
// open if that fails, for the reason in LastError.
enum class OfLink { Target, Itself };
Handle OpenEntry(const std::wstring& path, unsigned long access, OfLink ofLink);

}  // namespace vorlent::os
