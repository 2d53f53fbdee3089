#include "Support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <random>
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
  return std::u8string(name.begin(), name.end());
}

fs::path NativePath(std::string_view windowsPath) {
  const fs::path native = NativeName(windowsPath);
  const bool hasDrive = windowsPath.size() > 1 && windowsPath[1] == ':';
  return hasDrive && !native.has_root_name() ? NativeName(windowsPath.substr(2)) : native;
}

bool IsListed(const fs::path& native) {
  const fs::directory_iterator entries(native.parent_path());
  return std::any_of(begin(entries), end(entries),
                     [&](const auto& entry) { return entry.path().filename() == native.filename(); });
}

std::string RandomName() {
  static std::random_device device;
  std::string name;
  for (int i = 0; i < 8; ++i)
    name += static_cast<char>('a' + device() % 26);
  return name;
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
  const fs::path place = fs::canonical(fs::temp_directory_path());
  do {
    native_ = place / ("vorlent-test-" + RandomName());
  } while (!fs::create_directory(native_));
  fs::permissions(native_, fs::perms::owner_all);
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
  if (!fs::exists(native_, ignored)) return;
  // Some systems keep files that may not be written.
  walk = fs::recursive_directory_iterator(native_, ignored);
  for (; walk != fs::recursive_directory_iterator(); walk.increment(ignored)) {
    if (!walk->is_symlink(ignored)) openUp(walk->path());
  }
  fs::remove_all(native_, ignored);
}

fs::path TemporaryFolder::Native(std::string_view name) const {
  return native_ / NativeName(name);
}

std::string TemporaryFolder::Path() const {
  // A system with drives of its own says which one it is.
  std::string path = (native_.has_root_name() ? "" : "C:") + native_.string();
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
  const fs::path native = Native(name);
  if (fs::symlink_status(native).type() == fs::file_type::not_found) return false;
  // A system with drives finds names of any case.
  return !native.has_root_name() || IsListed(native);
}

void WriteBytes(std::string_view path, std::string_view bytes) {
  WriteNative(NativePath(path), bytes);
}

std::string ReadBytes(std::string_view path) {
  return ReadNative(NativePath(path));
}

}  // namespace vorlent
