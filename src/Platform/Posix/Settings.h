// What was settled by Platform/Settings.h, as the files of this folder use it.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace vorlent::os {

// Native folders are kept in the form in which names follow them with a slash in front: absolute and without
// a closing slash, so that the root is "".
struct Settings {
  Settings() { drives['C' - 'A'] = ""; }

  std::array<std::optional<std::string>, 26> drives;
  std::optional<std::string> home;
  std::optional<std::string> appData;
};

const Settings& CurrentSettings();

// The folder of a drive as above, null if there is no such drive.
const std::string* FindDrive(char letter);

// The native folder of a drive, nothing if there is no such drive.
std::optional<std::string> DriveFolder(char letter);

// "C:" and so on, by the drive's place in the table.
std::string DriveName(std::size_t index);

// The user's home as above: that of the settings, of the environment, or of the user's account. Nothing if
// none of them tells.
std::optional<std::string> HomeFolder();

}  // namespace vorlent::os
