// A database file in the hands of another program.
#pragma once

#include <sys/types.h>

#include <filesystem>

namespace vorlent {

// Another process that holds a database file locked against reading and writing: until the destructor, or
// until that many milliseconds have passed. The lock is in force when the constructor returns.
class ForeignLock {
 public:
  explicit ForeignLock(const std::filesystem::path& native, int milliseconds = 60000);
  ~ForeignLock();
  ForeignLock(const ForeignLock&) = delete;
  ForeignLock& operator=(const ForeignLock&) = delete;

 private:
  pid_t process_;
};

}  // namespace vorlent
