#include "Platform/LockHolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>

#include "Platform/NativePaths.h"

namespace vorlent::os {

namespace {

// The name of a process; a system without this folder, or a process that has ended, gives none.
std::string ProgramOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace

std::optional<LockHolder> TryFindLockHolder(std::string_view path) {
  const int file = open(ToNativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return std::nullopt;
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  const bool isAsked = fcntl(file, F_GETLK, &lock) == 0;
  close(file);
  // A process beyond the reach of this one, as in a container, has no number.
  if (!isAsked || lock.l_type == F_UNLCK || lock.l_pid <= 0) return std::nullopt;
  const std::string program = ProgramOf(lock.l_pid);
  if (program.empty()) return std::nullopt;
  return LockHolder{static_cast<std::uint32_t>(lock.l_pid), program};
}

}  // namespace vorlent::os
