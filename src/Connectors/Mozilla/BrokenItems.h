// What becomes of the mails, bookmarks and events that can't be read.
#pragma once

#include "Platform/Rules.h"

namespace vorlent {

// Whether such a one is told with its place and counted, and the next one comes; else it ends the run.
inline bool BrokenItemsAreNamed() {
  return CurrentRules().brokenItems == BrokenItems::AreNamed;
}

// Failures to deliver what was read, each of which is the item's own, or that of a target that takes nothing
// any more: then one item after the other fails.
class DeliveryFailures {
 public:
  void Delivered() { inARow_ = 0; }
  // Whether the next item is to be tried after another failure.
  bool GoesOn() {
    constexpr int kMostInARow = 10;
    if (BrokenItemsAreNamed() && ++inARow_ < kMostInARow) return true;
    inARow_ = 0;
    return false;
  }

 private:
  int inARow_ = 0;
};

}  // namespace vorlent
