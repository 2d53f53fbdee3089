// Where a mail lies in its mailbox.
#pragma once

#include "Standalone/StandaloneItem.h"

namespace vorlent::app {

// Whether the item's mail lies, not marked as deleted, where the item says. A mail with a header Address of
// its own has that for its place, and another mail may lie there. A mailbox that can't be opened raises.
bool LiesAtItsPlace(const StandaloneItem& item);

}  // namespace vorlent::app
