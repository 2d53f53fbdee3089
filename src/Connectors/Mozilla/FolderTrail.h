// The folders of a walk.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Files.h"

namespace vorlent {

// Those from the start of the walk down to where it stands.
class FolderTrail {
 public:
  // One step down. A link may lead back up to a folder of the trail, and the walk would have no end: such a
  // folder holds nothing that isn't walked already.
  class Step {
   public:
    Step(FolderTrail& trail, std::string_view folder) : trail_(trail) {
      const std::optional<os::Identity> identity = os::TryIdentify(folder);
      auto& above = trail_.folders_;
      leadsBack_ = identity && std::find(above.begin(), above.end(), identity) != above.end();
      above.push_back(identity);
    }
    ~Step() { trail_.folders_.pop_back(); }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    bool LeadsBack() const { return leadsBack_; }

   private:
    FolderTrail& trail_;
    bool leadsBack_ = false;
  };

 private:
  std::vector<std::optional<os::Identity>> folders_;  // nothing for one that isn't there
};

// The folders that a walk has come to, whatever paths led to them.
class KnownFolders {
 public:
  void Clear() { folders_.clear(); }

  // Whether the walk comes to a folder for the first time. One that isn't there is always new.
  bool IsNew(std::string_view folder) {
    const std::optional<os::Identity> identity = os::TryIdentify(folder);
    return !identity || folders_.emplace(identity->device, identity->number).second;
  }

 private:
  std::set<std::pair<std::uint64_t, std::uint64_t>> folders_;
};

}  // namespace vorlent
