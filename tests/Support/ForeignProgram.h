// Another program that works on a database file.
#pragma once

#include <filesystem>
#include <memory>
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

  // Ends it after so many milliseconds, whatever happens here meanwhile.
  void EndAfter(int milliseconds) const;

 private:
  struct Process;
  std::unique_ptr<Process> process_;
};

}  // namespace vorlent
