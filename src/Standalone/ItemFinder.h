// Finds the items that a user names.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "Standalone/StandaloneItem.h"

namespace vorlent {

// Items by their IDs and by their numbers, from 1, in the list. They are looked through once; each is found
// in constant time then.
class ItemFinder {
 public:
  explicit ItemFinder(std::vector<StandaloneItemPtr> items);

  // The item of that ID, or else with that number; null if there is none. `wanted` is UTF-8. Of several with
  // one ID the first is meant.
  StandaloneItemPtr Find(const std::string& wanted) const;

 private:
  std::vector<StandaloneItemPtr> items_;
  std::unordered_map<std::string, StandaloneItemPtr> byId_;
};

}  // namespace vorlent
