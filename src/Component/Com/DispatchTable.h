// Calls by name on a dual interface, as its description in the type library says.
#pragma once

#include <vector>

#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// The members of one interface. Nothing but the type library says what they are, and calls go to the vtable,
// so that names, arguments and slots can't differ. Types of other libraries aren't looked up: an interface is
// any object, an enumeration a number.
class DispatchTable {
 public:
  // Raises a Failure if the library doesn't describe the interface as a dual one.
  DispatchTable(ITypeLib& library, REFIID interfaceId);

  // The description that a caller is shown.
  ITypeInfo& Info() const { return *info_.Get(); }

  // As IDispatch::Invoke. Beyond what a description can say: an argument may be a variant by reference, which
  // is how scripts pass their variables, and takes what the member leaves in it; a property without arguments
  // that is given some passes them to what it gives, so that a script can ask a collection directly.
  HRESULT Invoke(IDispatch& object, DISPID id, WORD flags, const DISPPARAMS& given, VARIANT* result,
                 EXCEPINFO* exception, UINT* badArgument) const;

 private:
  struct Parameter {
    VARTYPE type = VT_EMPTY;  // of the value itself
    bool isReference = false;
    bool isTaken = false;  // what the caller gives is read
    bool isResult = false;
    bool isOptional = false;
    Value standard;  // for one that is left out
  };
  struct Member {
    DISPID id = DISPID_UNKNOWN;
    INVOKEKIND kind = INVOKE_FUNC;
    ULONG_PTR slot = 0;  // in bytes
    std::vector<Parameter> parameters;

    std::size_t ArgumentCount() const;
  };
  class Call;

  static Parameter Describe(const ELEMDESC& parameter);
  void AddMember(ITypeInfo& slots, UINT index);
  const Member* Find(DISPID id, WORD flags) const;

  ComPtr<ITypeInfo> info_;
  std::vector<Member> members_;
};

}  // namespace vorlent::com
