// A temporary folder in memory.
#pragma once

#include <filesystem>
#include <optional>

#include "Support/ScopedTemporaryPlace.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// Points the system's temporary folder at a file system in memory, if there is one, while it lives.
class TemporaryPlaceInMemory {
 public:
  TemporaryPlaceInMemory() {
    const std::filesystem::path memory = "/dev/shm";
    if (std::filesystem::is_directory(memory)) place_.emplace(memory);
  }
  TemporaryPlaceInMemory(const TemporaryPlaceInMemory&) = delete;
  TemporaryPlaceInMemory& operator=(const TemporaryPlaceInMemory&) = delete;

 private:
  std::optional<ScopedTemporaryPlace> place_;
};

// An archive waits for the disk at every step, and its tests are about the steps, not about the disk.
class MemoryFolder : private TemporaryPlaceInMemory, public TemporaryFolder {};

}  // namespace vorlent
