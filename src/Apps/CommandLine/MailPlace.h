// Where a mail lies in its mailbox.
#pragma once

#include <cstdint>
#include <string>

#include "Standalone/StandaloneItem.h"

namespace vorlent::app {

// Whether the item's mail lies, not marked as deleted, where the item says. A mail with a header Address of
// its own has that for its place, and another mail may lie there. A mailbox that can't be opened raises.
bool LiesAtItsPlace(const StandaloneItem& item);

// The status of an item's mail as its mailbox has it, from before a deletion. A status that is no number is
// changed by it too: its last character counts as the digit 0.
class WatchedStatus {
 public:
  explicit WatchedStatus(const StandaloneItem& item);

  // What has become of the status since, if it was no number and has changed; else "".
  std::string ChangeOfNoNumber() const;

 private:
  std::string file_;
  std::uint64_t position_ = 0;  // 0 without a status
  std::string before_;
};

}  // namespace vorlent::app
