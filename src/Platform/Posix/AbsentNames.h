// Which names a folder doesn't hold, in any letter case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent::os {

// Answers the second and every further question about the same folder without listing it: a folder of
// thousands of mailboxes is asked for a ".sbd" beside each of them. The folder's own times tell whether its
// entries are still those of the listing, so a change by anyone is seen. A few folders are remembered.
class AbsentNames {
 public:
  // Whether surely no entry of the native folder has that key, see NameKey. False where it isn't known: at
  // the first question, and shortly after a change, when the next one could fall into the same step of the
  // clock.
  bool Hold(const std::string& folder, std::string_view key);

 private:
  // Two listings of equal stamp show the same entries.
  struct Stamp {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t modified;  // nanoseconds of the epoch, as the next
    std::int64_t changed;

    bool operator==(const Stamp&) const = default;
  };

  struct Folder {
    Stamp stamp;
    std::optional<std::vector<std::size_t>> hashes;  // of the keys of the entries, sorted
  };

  static std::optional<Stamp> StampOf(const std::string& folder);
  static bool IsSettled(const Stamp& stamp);
  static std::optional<std::vector<std::size_t>> ListHashes(const std::string& folder);
  Folder* Remembered(const Stamp& stamp);
  void Remember(const Stamp& stamp);

  std::vector<Folder> folders_;
  std::size_t oldest_ = 0;
};

}  // namespace vorlent::os
