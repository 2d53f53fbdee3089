#include "Support/TemporaryFolder.h"

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

namespace fs = std::filesystem;

// Independent of the path mapping under test: drive C at the root, names held as code page unless they are
// UTF-8.
fs::path NativeName(std::string_view windowsName) {
  std::string name(windowsName);
  if (!IsMultiByteUtf8(name)) name = TextToUtf8(name);
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

fs::path NativePath(std::string_view windowsPath) {
  const bool hasDrive = windowsPath.size() > 1 && windowsPath[1] == ':';
  return NativeName(hasDrive ? windowsPath.substr(2) : windowsPath);
}

void WriteNative(const fs::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("test file can't be written: " + path.string());
}

std::string ReadNative(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file || fs::is_directory(path)) throw std::runtime_error("test file can't be read: " + path.string());
  std::string bytes(static_cast<std::size_t>(fs::file_size(path)), '\0');
  if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())))
    throw std::runtime_error("test file can't be read: " + path.string());
  return bytes;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::string name = (fs::canonical(fs::temp_directory_path()) / "vorlent-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder: " + name);
  native_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  const auto openUp = [&](const fs::path& folder) {
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
  };
  openUp(native_);
  fs::recursive_directory_iterator walk(native_, ignored);
  for (; walk != fs::recursive_directory_iterator(); walk.increment(ignored)) {
    if (walk->is_directory(ignored) && !walk->is_symlink(ignored)) openUp(walk->path());
  }
  fs::remove_all(native_, ignored);
}

fs::path TemporaryFolder::Native(std::string_view name) const {
  return native_ / NativeName(name);
}

std::string TemporaryFolder::Path() const {
  std::string path = "C:" + native_.string();
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::string TemporaryFolder::Path(std::string_view name) const {
  std::string path = Path() + "\\" + std::string(name);
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::string TemporaryFolder::MakeFolder(std::string_view name) const {
  fs::create_directories(Native(name));
  return Path(name);
}

std::string TemporaryFolder::Write(std::string_view name, std::string_view bytes) const {
  fs::create_directories(Native(name).parent_path());
  WriteNative(Native(name), bytes);
  return Path(name);
}

std::string TemporaryFolder::Read(std::string_view name) const {
  return ReadNative(Native(name));
}

bool TemporaryFolder::Exists(std::string_view name) const {
  return fs::symlink_status(Native(name)).type() != fs::file_type::not_found;
}

void WriteBytes(std::string_view path, std::string_view bytes) {
  WriteNative(NativePath(path), bytes);
}

std::string ReadBytes(std::string_view path) {
  return ReadNative(NativePath(path));
}

}  // namespace vorlent
