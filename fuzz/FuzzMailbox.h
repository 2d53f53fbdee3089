// A mailbox of given bytes on the disk, for the fuzz targets of the mail engine.
#pragma once

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "Standalone/MemoryFolder.h"

namespace vorlent::fuzz {

// One folder serves all inputs of a run; it lies in memory where the system has such a place.
class FuzzMailbox {
 public:
  explicit FuzzMailbox(std::string_view bytes) : bytes_(bytes) {
    std::ofstream(Path(), std::ios::binary) << bytes_;
  }

  const std::string& Bytes() const { return bytes_; }
  std::string Path() const { return Folder().Native("Inbox").string(); }
  std::string TempPrefix() const { return Folder().Native("tmp").string() + "/"; }

  // The mailbox as it now stands.
  std::string Read() const {
    std::ifstream file(Path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static const TemporaryFolder& Folder() {
    static const struct Place : MemoryFolder {
      Place() { MakeFolder("tmp"); }
    } folder;
    return folder;
  }

  std::string bytes_;
};

}  // namespace vorlent::fuzz
