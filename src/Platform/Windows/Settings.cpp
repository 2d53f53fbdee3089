#include "Platform/Settings.h"

#include "Platform/Failure.h"
#include "Platform/Windows/Settings.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

Settings& MadeSettings() {
  static Settings settings;
  return settings;
}

// Nothing for "".
std::optional<std::string> AbsoluteFolder(std::string_view nativeFolder) {
  if (nativeFolder.empty()) return std::nullopt;
  std::string folder = CompletePath(std::string(nativeFolder));
  while (folder.ends_with('\\'))
    folder.pop_back();
  return folder;
}

// The drive's place in the table, nothing if the character is no letter.
std::optional<std::size_t> DriveIndex(char letter) {
  const char lower = static_cast<char>(letter | 0x20);
  if (lower < 'a' || lower > 'z') return std::nullopt;
  return static_cast<std::size_t>(lower - 'a');
}

}  // namespace

void SetDrive(char letter, std::string_view nativeFolder) {
  const auto index = DriveIndex(letter);
  if (!index) throw Failure(ErrorNumber::InvalidCall, std::string("no drive letter: ") + letter);
  MadeSettings().drives[*index] = AbsoluteFolder(nativeFolder);
}

// The system names the folder of the applications' data itself.
void SetHomeFolder(std::string_view) {}

void SetAppDataFolder(std::string_view nativeFolder) {
  MadeSettings().appData = AbsoluteFolder(nativeFolder);
}

void ResetSettings() {
  MadeSettings() = Settings();
}

const Settings& CurrentSettings() {
  return MadeSettings();
}

const std::string* FindDrive(char letter) {
  const auto index = DriveIndex(letter);
  if (!index || !MadeSettings().drives[*index]) return nullptr;
  return &*MadeSettings().drives[*index];
}

std::string DriveName(std::size_t index) {
  return {static_cast<char>('A' + index), ':'};
}

}  // namespace vorlent::os
