// A folder on the disk for one test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vorlent {

// A new empty folder below the system's temporary folder, removed with all that it holds by the destructor,
// read-only entries included. Relative names may use "/" or "\".
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // The place as the operating system names it.
  const std::filesystem::path& Native() const { return native_; }
  std::filesystem::path Native(std::string_view name) const;

  // The Windows path of the folder, without a closing separator: "C:\tmp\...", below the drive's default
  // root.
  std::string Path() const;
  // The Windows path of an entry of it.
  std::string Path(std::string_view name) const;

  // Makes a folder and those above it, and returns its Windows path.
  std::string MakeFolder(std::string_view name) const;
  // Writes a file and makes the folders above it; returns its Windows path. `name` is relative here.
  std::string Write(std::string_view name, std::string_view bytes) const;
  std::string Read(std::string_view name) const;
  // Whether an entry of that name, in that letter case, is there.
  bool Exists(std::string_view name) const;

 private:
  std::filesystem::path native_;
};

// The bytes of a whole file, given by its Windows path with drive C. A file that isn't there or can't be
// handled raises std::runtime_error.
void WriteBytes(std::string_view path, std::string_view bytes);
std::string ReadBytes(std::string_view path);

}  // namespace vorlent
