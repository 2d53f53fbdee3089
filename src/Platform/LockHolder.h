// Who has locked a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorlent::os {

struct LockHolder {
  std::uint32_t process;
  std::string program;  // the name that the system knows the process by
};

// Another process that holds a lock on a part of a file; nothing if there is none, or none that the system
// tells. This process loses its own locks on the file.
std::optional<LockHolder> TryFindLockHolder(std::string_view path);

}  // namespace vorlent::os
