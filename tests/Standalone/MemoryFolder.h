// A temporary folder in memory.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "Support/TemporaryFolder.h"

namespace vorlent {

// Points the system's temporary folder at a file system in memory, if there is one, while it lives.
class TemporaryPlaceInMemory {
 public:
  TemporaryPlaceInMemory() {
    if (const char* value = getenv("TMPDIR")) previous_ = value;
    if (std::filesystem::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
  }
  ~TemporaryPlaceInMemory() {
    if (previous_.empty()) {
      unsetenv("TMPDIR");
    } else {
      setenv("TMPDIR", previous_.c_str(), 1);
    }
  }
  TemporaryPlaceInMemory(const TemporaryPlaceInMemory&) = delete;
  TemporaryPlaceInMemory& operator=(const TemporaryPlaceInMemory&) = delete;

 private:
  std::string previous_;
};

// An archive waits for the disk at every step, and its tests are about the steps, not about the disk.
class MemoryFolder : private TemporaryPlaceInMemory, public TemporaryFolder {};

}  // namespace vorlent
