// Native paths, which are UTF-8, as the standard library holds them, and back. Its own conversions take bytes
// for the system's code page where the system has one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vorlent::os {

inline std::filesystem::path StandardPath(std::string_view native) {
  return std::u8string(native.begin(), native.end());
}

inline std::string NativeText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace vorlent::os
