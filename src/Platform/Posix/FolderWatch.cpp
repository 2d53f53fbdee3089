#include "Platform/Posix/FolderWatch.h"

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace vorlent::os {

namespace {

// File systems that only this machine changes, by the numbers that they have in Linux.
constexpr unsigned kOwnFileSystems[] = {
    EXT4_SUPER_MAGIC,  // ext2 and ext3 too
    BTRFS_SUPER_MAGIC, TMPFS_MAGIC,       XFS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,
    0x2FC12FC1,  // ZFS
    0x7366746E,  // NTFS
    MSDOS_SUPER_MAGIC, EXFAT_SUPER_MAGIC,
};

bool IsChangedHereOnly(int folder) {
  struct statfs status;
  if (fstatfs(folder, &status) != 0) return false;
  const auto type = static_cast<unsigned>(status.f_type);
  return std::find(std::begin(kOwnFileSystems), std::end(kOwnFileSystems), type) != std::end(kOwnFileSystems);
}

}  // namespace

int FolderWatch::Begin(int folder) {
  if (!IsChangedHereOnly(folder)) return kNone;
  if (events_.Get() < 0) events_ = Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  const std::string path = "/proc/self/fd/" + std::to_string(folder);
  return inotify_add_watch(events_.Get(), path.c_str(),
                           IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR);
}

void FolderWatch::End(int watch) {
  inotify_rm_watch(events_.Get(), watch);
}

FolderWatch::Change FolderWatch::CutChange(std::string_view& events) {
  inotify_event event;
  std::memcpy(&event, events.data(), sizeof event);
  // The name is filled up with zeros.
  std::string_view name = events.substr(sizeof event, event.len);
  name = name.substr(0, name.find('\0'));
  events.remove_prefix(sizeof event + event.len);
  if ((event.mask & IN_Q_OVERFLOW) != 0) return {Change::Kind::SomeLost, kNone, {}};
  if ((event.mask & IN_IGNORED) != 0) return {Change::Kind::WatchEnded, event.wd, {}};
  const bool appeared = (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0;
  return {appeared ? Change::Kind::Appeared : Change::Kind::Gone, event.wd, name};
}

}  // namespace vorlent::os
