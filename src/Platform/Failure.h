// The one exception type of the system, and the visible way to swallow it.
#pragma once

#include <stdexcept>
#include <string>
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

// A failed step: the runtime's error number and a text for people, which names the file where one is
// concerned.
class VORLENT_PUBLIC Failure : public std::runtime_error {
 public:
  Failure(ErrorNumber number, const std::string& text) : Failure(static_cast<int>(number), text) {}
  Failure(int number, const std::string& text) : std::runtime_error(text), number_(number) {}

  int Number() const { return number_; }
  bool Is(ErrorNumber number) const { return number_ == static_cast<int>(number); }

 private:
  int number_;
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
