// Simple conditions on items.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Host/HostEnum.h"
#include "Host/Item.h"

namespace vorlent {

// Alternatives joined by "|", of which one must hold:
//   "$type=mail"   the item's type
//   "Key=value"    a data field with that value, or a keyword of exactly that text
//   "a,b"          a keyword path that the item's keywords begin with
// An empty condition holds for every item.
class Condition {
 public:
  explicit Condition(std::string_view text);

  bool Holds(const Item& item) const;

 private:
  std::vector<std::string> alternatives_;
};

// A condition as the component sees it.
class StandaloneExpression : public Expression {
 public:
  explicit StandaloneExpression(std::string_view text) : text_(text) {}
  std::string Text() const override { return text_; }

 private:
  std::string text_;
};

// Whether `keywords` are `path` itself or lie below it.
bool LiesUnder(std::string_view keywords, std::string_view path);

}  // namespace vorlent
