#include "Platform/Posix/KnownNames.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/System.h"

namespace vorlent::os {

namespace {

constexpr std::size_t kFolders = 8;
constexpr std::size_t kMostNames = 500'000;  // of all folders together: some 25 MB
constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * kSecond + time.tv_nsec;
}

std::size_t HashOf(std::string_view text) {
  return std::hash<std::string_view>()(text);
}

std::size_t KeyHashOf(std::string_view nativeName) {
  return HashOf(NameKey(ToWindowsName(nativeName)));
}

}  // namespace

KnownNames::Answer KnownNames::Ask(const std::string& folder, std::string_view name, std::string_view key) {
  struct stat status;
  if (stat(folder.c_str(), &status) != 0) return Answer::Unknown;
  const Stamp stamp = StampOf(status);
  StartAnewAfterFork();
  TakeChanges();
  Folder* known = Remembered(stamp);
  if (known == nullptr) {
    // One question alone is answered faster by looking through the folder than by remembering it.
    Remember(stamp);
    return Answer::Unknown;
  }
  if (!MayTrust(*known, stamp)) known->names.reset();
  if (!known->names) Learn(*known, folder);
  if (!known->names) return Answer::Unknown;
  const auto [first, end] = known->names->equal_range(HashOf(key));
  if (first == end) return Answer::None;
  return std::next(first) == end && first->second == HashOf(name) ? Answer::JustThis : Answer::Unknown;
}

// --- Changes ---------------------------------------------------------------------------------------------

// What the system tells, parent and child would take away from each other.
void KnownNames::StartAnewAfterFork() {
  if (process_ != getpid()) *this = KnownNames();
}

void KnownNames::TakeChanges() {
  const bool isAllTold = watch_.TakeChanges([&](const FolderWatch::Change& change) {
    if (change.kind == FolderWatch::Change::Kind::SomeLost) {
      ForgetAll();
      return;
    }
    const auto folder = std::find_if(folders_.begin(), folders_.end(),
                                     [&](const Folder& each) { return each.watch == change.watch; });
    if (folder != folders_.end()) Apply(*folder, change);
  });
  if (!isAllTold) ForgetAll();
}

// The listing may show already what is told here, as it was made after the watch began.
void KnownNames::Apply(Folder& folder, const FolderWatch::Change& change) {
  if (change.kind == FolderWatch::Change::Kind::WatchEnded) {
    folder = {folder.stamp};
    return;
  }
  if (!folder.names) return;
  const auto [first, end] = folder.names->equal_range(KeyHashOf(change.name));
  const auto entry = std::find_if(
      first, end, [&, hash = HashOf(change.name)](const auto& each) { return each.second == hash; });
  if (change.kind == FolderWatch::Change::Kind::Gone) {
    if (entry != end) folder.names->erase(entry);
  } else if (entry == end) {
    folder.names->emplace(KeyHashOf(change.name), HashOf(change.name));
    if (CountNames() > kMostNames) ForgetAll();
  }
}

void KnownNames::ForgetAll() {
  for (Folder& folder : folders_)
    Forget(folder);
}

void KnownNames::Forget(Folder& folder) {
  if (folder.watch != FolderWatch::kNone) watch_.End(folder.watch);
  folder = {folder.stamp};
}

// --- Folders ---------------------------------------------------------------------------------------------

KnownNames::Folder* KnownNames::Remembered(const Stamp& stamp) {
  const auto found = std::find_if(folders_.begin(), folders_.end(),
                                  [&](const Folder& folder) { return folder.stamp.IsOfSameFolder(stamp); });
  return found == folders_.end() ? nullptr : &*found;
}

void KnownNames::Remember(const Stamp& stamp) {
  if (folders_.size() < kFolders) {
    folders_.push_back({stamp});
    return;
  }
  Forget(folders_[oldest_]);
  folders_[oldest_] = {stamp};
  oldest_ = (oldest_ + 1) % kFolders;
}

// Whether the names known of a folder, and the decision about it, are those of today.
bool KnownNames::MayTrust(Folder& folder, const Stamp& stamp) {
  const bool isUnchanged = folder.stamp == stamp;
  folder.stamp = stamp;
  return isUnchanged || folder.watch != FolderWatch::kNone;
}

void KnownNames::Learn(Folder& folder, const std::string& path) {
  if (folder.isTooLarge) return;
  const Descriptor opened = OpenFolder(path);
  struct stat status;
  if (opened.Get() < 0 || fstat(opened.Get(), &status) != 0) return;
  if (!folder.stamp.IsOfSameFolder(StampOf(status))) return;
  if (folder.watch == FolderWatch::kNone) folder.watch = watch_.Begin(opened.Get());
  if (folder.watch == FolderWatch::kNone && !IsSettled(folder.stamp)) return;
  Names names;
  if (!ForEachName(opened, [&](const char* name) { names.emplace(KeyHashOf(name), HashOf(name)); })) return;
  if (CountNames() + names.size() > kMostNames) {
    // The next question finds room for it, unless it needs more than there is.
    ForgetAll();
    folder.isTooLarge = names.size() > kMostNames;
  } else {
    folder.names = std::move(names);
  }
}

std::size_t KnownNames::CountNames() const {
  std::size_t count = 0;
  for (const Folder& folder : folders_)
    count += folder.names ? folder.names->size() : 0;
  return count;
}

// --- Times -----------------------------------------------------------------------------------------------

KnownNames::Stamp KnownNames::StampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim)};
}

// Whether a change from now on is sure to leave another stamp. File systems count time in steps of some
// milliseconds, some in whole seconds.
bool KnownNames::IsSettled(const Stamp& stamp) {
  const std::int64_t last = std::max(stamp.modified, stamp.changed);
  const bool isCoarse = stamp.modified % kSecond == 0 && stamp.changed % kSecond == 0;
  const std::int64_t step = isCoarse ? 3 * kSecond : kSecond / 10;
  const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                               std::chrono::system_clock::now().time_since_epoch())
                               .count();
  return last + step < now;
}

}  // namespace vorlent::os
