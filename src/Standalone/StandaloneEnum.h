// The standalone host's enumeration of items.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Host/HostEnum.h"

namespace vorlent {

class StandaloneEnum : public HostEnum {
 public:
  // Takes both as they are. Without an expression every item meets the condition.
  void Init(LocationPtr& location, ExpressionPtr& expression) override;

  // The different keywords that stand directly below a keyword path in the items of the enumeration, in order
  // of first appearance; those at the top for "".
  std::shared_ptr<KeyedList<std::string>> SubKeywords(std::string_view keyword) override;

  // The items that meet the condition, as they are at the time of the call. Raises ObjectNotSet before Init.
  std::vector<ItemPtr> Items() const;

 private:
  LocationPtr location_;
  std::string condition_;
};

}  // namespace vorlent
