// Which names a folder holds, in any letter case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Platform/Posix/FolderWatch.h"

namespace vorlent::os {

// Answers the second and every further question about the same folder without listing it: a folder of
// thousands of mailboxes is asked for a ".sbd" beside each of them, and that for temporary files for each
// name that an attachment is about to get. A change by anyone is seen: the system tells of it where it can,
// else the folder's own times do. A few folders are remembered.
class KnownNames {
 public:
  enum class Answer {
    None,      // surely no entry has that key
    JustThis,  // surely no other entry has it, and one of just that name is there
    Unknown,   // anything else, and everything at the first question about a folder
  };

  // What the native folder holds under the key of a native name, see NameKey.
  Answer Ask(const std::string& folder, std::string_view name, std::string_view key);

 private:
  // Two listings of equal stamp show the same entries, once it is settled.
  struct Stamp {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t modified;  // nanoseconds of the epoch, as the next
    std::int64_t changed;

    bool operator==(const Stamp&) const = default;
    bool IsOfSameFolder(const Stamp& other) const { return device == other.device && inode == other.inode; }
  };

  // The hash of each name by that of its key.
  using Names = std::unordered_multimap<std::size_t, std::size_t>;

  struct Folder {
    Stamp stamp;
    int watch = FolderWatch::kNone;
    bool isTooLarge = false;
    std::optional<Names> names = std::nullopt;
  };

  static Stamp StampOf(const struct stat& status);
  static bool IsSettled(const Stamp& stamp);
  void StartAnewAfterFork();
  void TakeChanges();
  void Apply(Folder& folder, const FolderWatch::Change& change);
  void ForgetAll();
  void Forget(Folder& folder);
  Folder* Remembered(const Stamp& stamp);
  void Remember(const Stamp& stamp);
  bool MayTrust(Folder& folder, const Stamp& stamp);
  void Learn(Folder& folder, const std::string& path);
  std::size_t CountNames() const;

  FolderWatch watch_;
  pid_t process_ = getpid();
  std::vector<Folder> folders_;
  std::size_t oldest_ = 0;
};

}  // namespace vorlent::os
