// The host's changes to items, passed on to where the items come from.
#pragma once

#include <cstdint>
#include <string_view>

#include "Standalone/StandaloneItem.h"

namespace vorlent {

// Has the connector of an item repeat what was changed. Items of a connector that knows no such repetition
// keep their change to themselves.
class SourceEdits : public ItemListener {
 public:
  void ItemChanged(StandaloneItem& item, std::int32_t action, std::string_view value) override;
};

}  // namespace vorlent
