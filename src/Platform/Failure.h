// The one exception type of the system, and the visible way to swallow it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "Platform/Public.h"

namespace vorlent {

// Error numbers of the runtime, as they stand in logs and reach the host.
enum class ErrorNumber : int {
  InvalidCall = 5,
  Overflow = 6,
  SubscriptOutOfRange = 9,
  TypeMismatch = 13,
  BadFileNumber = 52,
  FileNotFound = 53,
  DeviceIo = 57,
  FileExists = 58,
  DiskFull = 61,
  PermissionDenied = 70,
  PathAccess = 75,
  PathNotFound = 76,
  ObjectNotSet = 91,
  NoSuchMember = 438,
  KeyExists = 457,
  Host = 440,
};

// What a person can do about a failure.
enum class Hint {
  None,
  AllowAccess,
  MakeWritable,
  MakeRoom,
  MakeFolder,
  CloseOther,
  CompactMailbox,
};

// What a person can do about what the system refused.
VORLENT_PUBLIC Hint HintFor(const std::error_code& error);

// Why something failed: the file that it concerns, in the component's form, "" if none; the reason, the
// system's or one of our own; and what a person can do about it.
struct Cause {
  std::string path = {};
  std::string reason = {};
  Hint hint = Hint::None;

  bool IsEmpty() const { return reason.empty(); }
  // As it stands in logs and reaches the host.
  std::string Text() const { return path.empty() ? reason : path + ": " + reason; }

  bool operator==(const Cause&) const = default;
};

// A failed step: the runtime's error number, and why it failed. what() is the text of the cause.
class VORLENT_PUBLIC Failure : public std::runtime_error {
 public:
  Failure(int number, Cause why) : std::runtime_error(why.Text()), number_(number), why_(std::move(why)) {}
  Failure(int number, const std::string& reason) : Failure(number, Cause{.reason = reason}) {}
  Failure(ErrorNumber number, const std::string& reason) : Failure(static_cast<int>(number), reason) {}
  // One that concerns a file.
  Failure(ErrorNumber number, std::string_view path, std::string_view reason, Hint hint = Hint::None)
      : Failure(static_cast<int>(number), Cause{std::string(path), std::string(reason), hint}) {}

  int Number() const { return number_; }
  bool Is(ErrorNumber number) const { return number_ == static_cast<int>(number); }

  const Cause& Why() const { return why_; }
  const std::string& Path() const { return why_.path; }
  const std::string& Reason() const { return why_.reason; }

 private:
  int number_;
  Cause why_;
};

// Runs one step whose failure is of no consequence. Returns whether it succeeded.
// Only a Failure is swallowed; running out of memory is not.
template <class Step>
bool Swallow(Step&& step) {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const Failure&) {
    return false;
  }
}

// Runs one step and returns the number of its failure, 0 if it succeeded.
template <class Step>
int SwallowedNumber(Step&& step) {
  try {
    std::forward<Step>(step)();
    return 0;
  } catch (const Failure& failure) {
    return failure.Number();
  }
}

}  // namespace vorlent
