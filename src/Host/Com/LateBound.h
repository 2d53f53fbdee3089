// An object of the host, called by the names of its members.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// Whether both are faces of one object.
bool AreSame(IUnknown* a, IUnknown* b);

// Holds the object by one reference. A name is looked up once, without regard to case where the object can do
// that. A call that fails raises a Failure with the host's text and number, a member that the object doesn't
// have NoSuchMember.
class LateBound {
 public:
  explicit LateBound(IDispatch* object) : object_(object) {}

  IDispatch* Object() const { return object_.Get(); }

  // Calls a method or reads a property. An argument may be a reference to a place, which the host may change.
  Value Call(std::wstring_view name, std::initializer_list<const Value*> arguments);
  template <class... Arguments>
  Value Call(std::wstring_view name, const Arguments&... arguments) {
    return Call(name, std::initializer_list<const Value*>{&arguments...});
  }

  // Writes a property, an object by reference.
  void Put(std::wstring_view name, const Value& value);

 private:
  DISPID IdOf(std::wstring_view name);
  Value Invoke(DISPID id, WORD flags, DISPPARAMS& arguments);

  ComPtr<IDispatch> object_;
  std::vector<std::pair<std::wstring, DISPID>> known_;
};

// What the host gave, seen as a type. Raises TypeMismatch for what can't be seen so.
std::string ToText(Value value);
std::int32_t ToNumber(Value value);
bool ToTruth(Value value);
// Null for Nothing.
ComPtr<IDispatch> ToObject(Value value);

// The entries of a collection of the host, in order; none for Nothing.
std::vector<Value> EntriesOf(IDispatch* collection);

}  // namespace vorlent::com
