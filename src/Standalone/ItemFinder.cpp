#include "Standalone/ItemFinder.h"

#include <cstdint>
#include <utility>

#include "Common/Width.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"

namespace vorlent {

ItemFinder::ItemFinder(std::vector<StandaloneItemPtr> items) : items_(std::move(items)) {
  for (const StandaloneItemPtr& item : items_)
    byId_.emplace(DisplayUtf8(item->ID()), item);
}

StandaloneItemPtr ItemFinder::Find(const std::string& wanted) const {
  if (const auto found = byId_.find(wanted); found != byId_.end()) return found->second;
  std::int32_t number = 0;
  if (!Swallow([&] { number = ParseInt32(wanted); }) || number < 1) return nullptr;
  const auto position = static_cast<std::size_t>(number);
  return position <= items_.size() ? items_[position - 1] : nullptr;
}

}  // namespace vorlent
