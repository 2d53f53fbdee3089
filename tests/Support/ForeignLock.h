// A database file in the hands of another program.
#pragma once

#include <filesystem>

#include "Support/ForeignProgram.h"

namespace vorlent {

// Another process that holds a database file locked against reading and writing: until the destructor, or
// until that many milliseconds have passed. The lock is in force when the constructor returns.
class ForeignLock {
 public:
  explicit ForeignLock(const std::filesystem::path& native, int milliseconds = 60000) : program_(native) {
    program_.Run("BEGIN EXCLUSIVE");
    program_.EndAfter(milliseconds);
  }

 private:
  ForeignProgram program_;
};

}  // namespace vorlent
