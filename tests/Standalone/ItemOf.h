// Items from their records.
#pragma once

#include <memory>
#include <string_view>

#include "Standalone/StandaloneItem.h"

namespace vorlent {

inline StandaloneItemPtr ItemOf(std::string_view record) {
  auto item = std::make_shared<StandaloneItem>();
  item->ImportRecord(record);
  return item;
}

}  // namespace vorlent
