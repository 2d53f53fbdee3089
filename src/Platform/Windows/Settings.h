// What was settled by Platform/Settings.h, as the files of this folder use it.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace vorlent::os {

// Native folders are kept absolute and without a closing backslash, so that names follow them with one.
struct Settings {
  std::array<std::optional<std::string>, 26> drives;  // those that go before the system's own
  std::optional<std::string> appData;
};

const Settings& CurrentSettings();

// The folder that was set for a drive letter, null if none was.
const std::string* FindDrive(char letter);

// "C:" and so on, by the drive's place in the table.
std::string DriveName(std::size_t index);

}  // namespace vorlent::os
