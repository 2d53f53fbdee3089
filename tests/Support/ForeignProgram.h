// Another program that works on a database file.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace vorlent {

// Another process with a connection of its own to a database file, until the destructor kills it in the
// middle of whatever it is in.
class ForeignProgram {
 public:
  explicit ForeignProgram(const std::filesystem::path& native);
  ~ForeignProgram();
  ForeignProgram(const ForeignProgram&) = delete;
  ForeignProgram& operator=(const ForeignProgram&) = delete;

  // Runs statements there and waits for their end. Raises std::runtime_error if they fail.
  void Run(std::string_view sql) const;

 private:
  pid_t process_;
  int channel_ = -1;
};

}  // namespace vorlent
