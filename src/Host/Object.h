// The root of everything that crosses between the host and the component.
#pragma once

#include <memory>

#include "Platform/Failure.h"
#include "Platform/Public.h"

namespace vorlent {

class VORLENT_PUBLIC Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  // Whether both are the very same object. Not a comparison of pointers, since an adapter may wrap one object
  // twice.
  virtual bool IsSame(const Object& other) const { return this == &other; }
};

using ObjectPtr = std::shared_ptr<Object>;

// The object itself; raises ObjectNotSet for nothing.
template <class Class>
Class& Require(const std::shared_ptr<Class>& object) {
  if (object == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "object not set");
  return *object;
}

// The object seen as another of its classes. Raises ObjectNotSet for nothing and NoSuchMember for an object
// that isn't of that class, as a call by name on it would.
template <class Class>
std::shared_ptr<Class> RequireAs(const ObjectPtr& object) {
  Require(object);
  auto seen = std::dynamic_pointer_cast<Class>(object);
  if (seen == nullptr) throw Failure(ErrorNumber::NoSuchMember, "the object doesn't have this member");
  return seen;
}

}  // namespace vorlent
