// How a command ends.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace vorlent::app {

enum class ExitCode : int {
  Done = 0,
  Partly = 1,      // nothing was found, or a part failed
  Usage = 2,       // the command line is wrong
  Unreadable = 3,  // the Location or a file could not be read or written
  Cancelled = 130,
};

// An error at the apps' edge: a text that says what failed, a hint what to do about it (may be empty), and
// the code for scripts. Texts are UTF-8.
class AppError : public std::runtime_error {
 public:
  AppError(ExitCode code, const std::string& text, std::string hint = {})
      : std::runtime_error(text), hint_(std::move(hint)), code_(code) {}

  const std::string& Hint() const { return hint_; }
  ExitCode Code() const { return code_; }

 private:
  std::string hint_;
  ExitCode code_;
};

}  // namespace vorlent::app
