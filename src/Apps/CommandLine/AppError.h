// What ends a command.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "Apps/ExitCodes.h"

namespace vorlent::app {

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
