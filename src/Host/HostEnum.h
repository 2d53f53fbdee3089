#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Host/Location.h"
#include "Platform/Public.h"

namespace vorlent {

// A condition on items, such as "$type=mail".
class VORLENT_PUBLIC Expression : public Object {
 public:
  virtual std::string Text() const = 0;
};

using ExpressionPtr = std::shared_ptr<Expression>;

// An enumeration of the items of a Location that meet a condition.
class VORLENT_PUBLIC HostEnum : public Object {
 public:
  // Binds the enumeration. May replace both references.
  virtual void Init(LocationPtr& location, ExpressionPtr& expression) = 0;

  // The keywords below a keyword.
  virtual std::shared_ptr<KeyedList<std::string>> SubKeywords(std::string_view keyword) = 0;
};

using HostEnumPtr = std::shared_ptr<HostEnum>;

}  // namespace vorlent
