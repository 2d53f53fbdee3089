// The status of a mail in its mailbox.
#pragma once

#include <cstdint>
#include <string>

#include "Standalone/StandaloneItem.h"

namespace vorlent::app {

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
