// What stands beside the files of a folder: "Inbox.msf" and "Inbox.sbd" beside "Inbox".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Common/KeyedList.h"
#include "Platform/CodePage.h"

namespace vorlent {

inline constexpr std::string_view kSummary = ".msf";
inline constexpr std::string_view kSubfolders = ".sbd";
// From a mailbox into the folder of its subfolders.
inline constexpr std::string_view kSubfolderStep = ".sbd\\";

// Whether a name ends so, without regard to letter case.
inline bool HasEnding(std::string_view name, std::string_view ending) {
  return name.size() >= ending.size() && EqualNoCase(name.substr(name.size() - ending.size()), ending);
}

// Of a listing the names with a certain ending. A folder of thousands of mailboxes is listed once and not
// probed on the disk for each of them. The listing must outlive this.
class SiblingNames {
 public:
  SiblingNames(const KeyedList<std::string>& listed, std::string_view ending) {
    for (const std::string& name : listed) {
      if (HasEnding(name, ending))
        stems_.insert(std::string_view(name).substr(0, name.size() - ending.size()));
    }
  }

  // Whether `name` with the ending after it is listed, in any letter case, as the system finds files.
  bool StandBeside(std::string_view name) const { return stems_.contains(name); }

 private:
  struct Hash {
    std::size_t operator()(std::string_view name) const { return HashNoCase(name); }
  };
  struct Equal {
    bool operator()(std::string_view a, std::string_view b) const { return EqualNoCase(a, b); }
  };

  std::unordered_set<std::string_view, Hash, Equal> stems_;
};

}  // namespace vorlent
