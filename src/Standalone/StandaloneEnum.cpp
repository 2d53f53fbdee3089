#include "Standalone/StandaloneEnum.h"

#include <unordered_set>

#include "Common/StdModul.h"
#include "Standalone/Condition.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent {

void StandaloneEnum::Init(LocationPtr& location, ExpressionPtr& expression) {
  location_ = location;
  condition_ = expression == nullptr ? std::string() : expression->Text();
}

std::vector<ItemPtr> StandaloneEnum::Items() const {
  if (location_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "the enumeration has no Location");
  const Condition condition(condition_);
  std::vector<ItemPtr> items;
  const std::int32_t count = location_->ItemCount();
  for (std::int32_t pos = 1; pos <= count; ++pos) {
    const ItemPtr item = location_->ItemAt(pos);
    if (item != nullptr && condition.Holds(*item)) items.push_back(item);
  }
  return items;
}

std::shared_ptr<KeyedList<std::string>> StandaloneEnum::SubKeywords(std::string_view keyword) {
  auto found = std::make_shared<KeyedList<std::string>>();
  std::unordered_set<std::string> seen;
  for (const ItemPtr& item : Items()) {
    std::string keywords = KeywordsOf(*item);
    if (!LiesUnder(keywords, keyword)) continue;
    if (!keyword.empty()) keywords.erase(0, keyword.size() + 1);
    if (keywords.empty()) continue;
    std::string child = CutToken(keywords, ",");
    if (seen.insert(child).second) found->Add(std::move(child));
  }
  return found;
}

}  // namespace vorlent
