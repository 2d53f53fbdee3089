#include "Platform/Posix/AbsentNames.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <functional>

#include "Platform/Posix/PathMapping.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

constexpr std::size_t kFolders = 8;
constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * kSecond + time.tv_nsec;
}

}  // namespace

bool AbsentNames::Hold(const std::string& folder, std::string_view key) {
  const std::optional<Stamp> stamp = StampOf(folder);
  if (!stamp) return false;
  Folder* known = Remembered(*stamp);
  if (known == nullptr || known->stamp != *stamp) {
    // One question alone is answered faster by looking through the folder than by remembering it.
    Remember(*stamp);
    return false;
  }
  auto& hashes = known->hashes;
  if (!hashes && IsSettled(*stamp)) hashes = ListHashes(folder);
  return hashes && !std::binary_search(hashes->begin(), hashes->end(), std::hash<std::string_view>()(key));
}

AbsentNames::Folder* AbsentNames::Remembered(const Stamp& stamp) {
  const auto found = std::find_if(folders_.begin(), folders_.end(), [&](const Folder& folder) {
    return folder.stamp.device == stamp.device && folder.stamp.inode == stamp.inode;
  });
  return found == folders_.end() ? nullptr : &*found;
}

void AbsentNames::Remember(const Stamp& stamp) {
  if (Folder* known = Remembered(stamp)) {
    *known = {stamp, std::nullopt};
  } else if (folders_.size() < kFolders) {
    folders_.push_back({stamp, std::nullopt});
  } else {
    folders_[oldest_] = {stamp, std::nullopt};
    oldest_ = (oldest_ + 1) % kFolders;
  }
}

std::optional<AbsentNames::Stamp> AbsentNames::StampOf(const std::string& folder) {
  struct stat status;
  if (stat(folder.c_str(), &status) != 0) return std::nullopt;
  return Stamp{status.st_dev, status.st_ino, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim)};
}

// Whether a change from now on is sure to leave another stamp. File systems count time in steps of some
// milliseconds, some in whole seconds.
bool AbsentNames::IsSettled(const Stamp& stamp) {
  const std::int64_t last = std::max(stamp.modified, stamp.changed);
  const bool isCoarse = stamp.modified % kSecond == 0 && stamp.changed % kSecond == 0;
  const std::int64_t step = isCoarse ? 3 * kSecond : kSecond / 10;
  const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                               std::chrono::system_clock::now().time_since_epoch())
                               .count();
  return last + step < now;
}

std::optional<std::vector<std::size_t>> AbsentNames::ListHashes(const std::string& folder) {
  std::vector<std::size_t> hashes;
  const bool isListed = ForEachName(folder, [&](const char* name) {
    hashes.push_back(std::hash<std::string>()(NameKey(ToWindowsName(name))));
  });
  if (!isListed) return std::nullopt;
  std::sort(hashes.begin(), hashes.end());
  return hashes;
}

}  // namespace vorlent::os
