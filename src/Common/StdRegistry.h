// Reading a value of the registry as text, and the application-data folder that stands there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// A value as text, `defaultText` if the key or the value is missing. `hive` is 0 to 6, or -1 if the key text
// begins with the hive's name; the value "@" is the key's own.
std::string GetRegistryValue(std::int32_t hive, std::string_view key, std::string_view value,
                             std::string_view defaultText);

// The system's handle of a hive; with -1 the hive's name is cut off the front of `key`.
std::uint32_t ResolveHive(std::int32_t& hive, std::string& key);

// The number of a hive's name, -1 for any other text.
std::int32_t HiveFromName(std::string_view name);

// The user's application-data folder, "" if it can't be told.
std::string AppDataFolder();

}  // namespace vorlent
