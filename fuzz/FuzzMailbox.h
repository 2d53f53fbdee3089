// A mailbox of given bytes on the disk, for the fuzz targets of the mail engine.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace vorlent::fuzz {

// One folder serves all inputs of a run; it lies in memory where the system has such a place.
class FuzzMailbox {
 public:
  explicit FuzzMailbox(std::string_view bytes) : bytes_(bytes) {
    std::filesystem::create_directories(Folder() / "tmp");
    std::ofstream(Folder() / "Inbox", std::ios::binary) << bytes_;
  }

  const std::string& Bytes() const { return bytes_; }
  std::string Path() const { return (Folder() / "Inbox").string(); }
  std::string TempPrefix() const { return (Folder() / "tmp").string() + "/"; }

  // The mailbox as it now stands.
  std::string Read() const {
    std::ifstream file(Folder() / "Inbox", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static const std::filesystem::path& Folder() {
    static const std::filesystem::path folder = [] {
      const std::filesystem::path memory = "/dev/shm";
      const auto base = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
      return base / ("vorlent-fuzz-" + std::to_string(std::random_device()()));
    }();
    return folder;
  }

  std::string bytes_;
};

}  // namespace vorlent::fuzz
