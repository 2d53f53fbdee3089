// The folders from the start of a walk down to where it stands.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Files.h"

namespace vorlent {

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

}  // namespace vorlent
