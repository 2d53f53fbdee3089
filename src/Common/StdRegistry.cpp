#include "Common/StdRegistry.h"

#include <array>
#include <cstddef>
#include <utility>

#include "Common/StdModul.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::int32_t kHiveInKey = -1;
constexpr std::int32_t kCurrentUser = 1;
constexpr std::int32_t kLastHive = 6;
constexpr std::uint32_t kHandleBase = 0x80000000;

constexpr std::uint32_t kBinaryValue = 3;
constexpr std::uint32_t kNumber = 4;
constexpr std::uint32_t kSeveralTexts = 7;

constexpr std::pair<std::string_view, std::int32_t> kHives[] = {
    {"HKEY_CLASSES_ROOT", 0},   {"HKCR", 0},         {"HKEY_CURRENT_USER", 1}, {"HKCU", 1},
    {"HKEY_LOCAL_MACHINE", 2},  {"HKLM", 2},         {"HKEY_USERS", 3},        {"HKEY_PERFORMANCE_DATA", 4},
    {"HKEY_CURRENT_CONFIG", 5}, {"HKEY_DYN_DATA", 6}};

// Four bytes, the lowest first, as a signed number.
std::int32_t ReadInt32(const std::string& bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i)
    number |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << 8 * i;
  return static_cast<std::int32_t>(number);
}

std::string AsText(const RegistryValue& value) {
  if (!value.bytes) return "";
  std::string buffer = *value.bytes;
  if (value.type == kNumber) {
    buffer.resize(sizeof(std::int32_t));
    return std::to_string(ReadInt32(buffer));
  }
  buffer.resize(value.size);
  if (value.type == kBinaryValue) return buffer;
  if (!buffer.empty()) buffer.pop_back();
  if (value.type == kSeveralTexts) ReplaceText(buffer, std::string_view("\0", 1), "\r\n");
  return buffer;
}

}  // namespace

std::string GetRegistryValue(std::int32_t hive, std::string_view key, std::string_view value,
                             std::string_view defaultText) {
  std::string path(key);
  const std::uint32_t handle = ResolveHive(hive, path);
  const auto found = Platform::Current().QueryRegistry(handle, path, value == "@" ? "" : value);
  return found ? AsText(*found) : std::string(defaultText);
}

std::uint32_t ResolveHive(std::int32_t& hive, std::string& key) {
  if (hive == kHiveInKey) {
    ReplaceText(key, "/", "\\");
    const bool hasColon = key.find(":\\") != std::string::npos;
    hive = HiveFromName(CutToken(key, hasColon ? ":\\" : "\\"));
  }
  const auto handle = static_cast<std::uint32_t>(hive);
  return hive >= 0 && hive <= kLastHive ? handle + kHandleBase : handle;
}

std::int32_t HiveFromName(std::string_view name) {
  for (const auto& [hiveName, number] : kHives) {
    if (hiveName == name) return number;
  }
  return kHiveInKey;
}

std::string AppDataFolder() {
  return GetRegistryValue(
      kCurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", "AppData", "");
}

}  // namespace vorlent
