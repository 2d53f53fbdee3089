#include "Platform/Settings.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "Platform/Failure.h"
#include "Platform/Posix/Settings.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

Settings& MadeSettings() {
  static Settings settings;
  return settings;
}

std::string AsPrefix(std::string folder) {
  folder = WithoutClosingSlash(std::move(folder));
  return folder == "/" ? "" : folder;
}

// Nothing for "".
std::optional<std::string> AbsolutePrefix(std::string_view nativeFolder) {
  if (nativeFolder.empty()) return std::nullopt;
  return AsPrefix(std::filesystem::absolute(nativeFolder).lexically_normal().string());
}

// The drive's place in the table, nothing if the character is no letter.
std::optional<std::size_t> DriveIndex(char letter) {
  const char lower = static_cast<char>(letter | 0x20);
  if (lower < 'a' || lower > 'z') return std::nullopt;
  return static_cast<std::size_t>(lower - 'a');
}

}  // namespace

// --- Making them -----------------------------------------------------------------------------------------

void SetDrive(char letter, std::string_view nativeFolder) {
  const auto index = DriveIndex(letter);
  if (!index) throw Failure(ErrorNumber::InvalidCall, std::string("no drive letter: ") + letter);
  MadeSettings().drives[*index] = AbsolutePrefix(nativeFolder);
}

void SetHomeFolder(std::string_view nativeFolder) {
  MadeSettings().home = AbsolutePrefix(nativeFolder);
}

void SetAppDataFolder(std::string_view nativeFolder) {
  MadeSettings().appData = AbsolutePrefix(nativeFolder);
}

void ResetSettings() {
  MadeSettings() = Settings();
}

// --- Using them ------------------------------------------------------------------------------------------

const Settings& CurrentSettings() {
  return MadeSettings();
}

const std::string* FindDrive(char letter) {
  const auto index = DriveIndex(letter);
  if (!index || !MadeSettings().drives[*index]) return nullptr;
  return &*MadeSettings().drives[*index];
}

std::optional<std::string> DriveFolder(char letter) {
  const std::string* folder = FindDrive(letter);
  if (folder == nullptr) return std::nullopt;
  return folder->empty() ? "/" : *folder;
}

std::string DriveName(std::size_t index) {
  return {static_cast<char>('A' + index), ':'};
}

std::optional<std::string> HomeFolder() {
  if (MadeSettings().home) return MadeSettings().home;
  const char* variable = std::getenv("HOME");
  if (variable != nullptr && variable[0] == '/') return AsPrefix(variable);
  const passwd* user = getpwuid(getuid());
  if (user == nullptr || user->pw_dir == nullptr || user->pw_dir[0] != '/') return std::nullopt;
  return AsPrefix(user->pw_dir);
}

}  // namespace vorlent::os
