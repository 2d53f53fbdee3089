#include "Support/OddEntries.h"

#include <sys/stat.h>

#include <stdexcept>

namespace vorlent {

bool MakePipe(const std::filesystem::path& place) {
  if (mkfifo(place.c_str(), 0600) != 0) throw std::runtime_error("no pipe at " + place.string());
  return true;
}

bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& place) {
  std::filesystem::create_symlink(target, place);
  return true;
}

bool MakeFullDevice(const std::filesystem::path& place) {
  return MakeLink("/dev/full", place);
}

}  // namespace vorlent
