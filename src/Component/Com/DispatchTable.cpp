#include "Component/Com/DispatchTable.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "Host/Com/Failures.h"

namespace vorlent::com {

namespace {

// Members of IUnknown and IDispatch, which callers by name have no use for.
constexpr ULONG_PTR kInheritedSlots = 7;

// A call that isn't made, since the caller gave something wrong.
struct Refusal {
  HRESULT status;
};

void Demand(HRESULT status) {
  if (FAILED(status)) throw Refusal{status};
}

bool IsLeftOut(const VARIANT* given) {
  return given == nullptr || (given->vt == VT_ERROR && given->scode == DISP_E_PARAMNOTFOUND);
}

// The bytes of a value that a reference refers to.
std::size_t SizeOf(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
      return 4;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return sizeof(void*);
    case VT_DECIMAL:
      return sizeof(DECIMAL);
    default:
      return 8;
  }
}

// What a caller means by an object: an object, or Nothing as it is written in its language.
void ReadObject(const VARIANT& given, Value& value) {
  Value plain;
  Demand(VariantCopyInd(plain.Place(), Readable(given)));
  value->vt = VT_DISPATCH;
  value->pdispVal = nullptr;
  if (plain->vt == VT_NULL) return;
  if (plain->vt != VT_DISPATCH && plain->vt != VT_UNKNOWN) throw Refusal{DISP_E_TYPEMISMATCH};
  if (plain->punkVal == nullptr) return;
  const HRESULT status =
      plain->punkVal->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&value->pdispVal));
  if (FAILED(status)) throw Refusal{DISP_E_TYPEMISMATCH};
}

void Read(const VARIANT& given, VARTYPE type, Value& value) {
  if (type == VT_DISPATCH) {
    ReadObject(given, value);
  } else if (type == VT_VARIANT) {
    Demand(VariantCopyInd(value.Place(), Readable(given)));
  } else {
    Demand(VariantChangeType(value.Place(), Readable(given), 0, type));
  }
}

// Puts what a member left in an argument where the caller can see it. A variable of a type that can't take it
// stays as it was.
void GiveBack(Value& value, VARIANT& given) {
  if (given.vt == (VT_BYREF | VT_VARIANT)) {
    VariantCopy(given.pvarVal, value.Place());
    return;
  }
  if ((given.vt & VT_BYREF) == 0) return;
  const auto type = static_cast<VARTYPE>(given.vt & ~VT_BYREF);
  Value changed;
  if (FAILED(VariantChangeType(changed.Place(), value.Place(), 0, type))) return;
  if (type == VT_BSTR) SysFreeString(*given.pbstrVal);
  if ((type == VT_DISPATCH || type == VT_UNKNOWN) && *given.ppunkVal != nullptr) (*given.ppunkVal)->Release();
  const void* const from = type == VT_DECIMAL ? static_cast<void*>(&changed->decVal) : &changed->llVal;
  std::memcpy(given.byref, from, SizeOf(type));
  changed->vt = VT_EMPTY;  // its value is the caller's now
}

}  // namespace

// One call of a member, with its arguments on their way.
class DispatchTable::Call {
 public:
  Call(const Member& member, const DISPPARAMS& given)
      : member_(member), given_(member.parameters.size()), values_(given_.size()), passed_(given_.size()) {
    Distribute(given);
  }

  // Reads the arguments. `badArgument` is that of the one that is refused.
  void ReadArguments(UINT* badArgument) {
    for (std::size_t i = 0; i < given_.size(); ++i) {
      if (badArgument != nullptr) *badArgument = static_cast<UINT>(member_.ArgumentCount() - 1 - i);
      Take(i);
      Pass(i);
    }
  }

  HRESULT Run(IDispatch& object) {
    std::vector<VARTYPE> types;
    std::vector<VARIANTARG*> places;
    for (VARIANT& argument : passed_) {
      types.push_back(argument.vt);
      places.push_back(&argument);
    }
    VARIANT status;
    VariantInit(&status);
    Demand(DispCallFunc(&object, member_.slot, CC_STDCALL, VT_ERROR, static_cast<UINT>(passed_.size()),
                        types.data(), places.data(), &status));
    return status.scode;
  }

  // After a call that went well.
  void Finish(VARIANT* result) {
    for (std::size_t i = 0; i < given_.size(); ++i) {
      if (!member_.parameters[i].isReference) continue;
      if (member_.parameters[i].isResult) {
        if (result != nullptr) *result = std::exchange(*values_[i], VARIANT{});
      } else if (given_[i] != nullptr) {
        GiveBack(values_[i], *given_[i]);
      }
    }
  }

 private:
  // The caller's arguments stand in reverse order, those with names first.
  void Distribute(const DISPPARAMS& given) {
    const std::size_t count = member_.ArgumentCount();
    if (given.cArgs > count) throw Refusal{DISP_E_BADPARAMCOUNT};
    for (UINT i = 0; i < given.cArgs; ++i) {
      std::size_t at = given.cArgs - 1 - i;
      if (i < given.cNamedArgs) {
        const DISPID name = given.rgdispidNamedArgs[i];
        at = name == DISPID_PROPERTYPUT ? count - 1 : static_cast<std::size_t>(name);
      }
      if (at >= count || given_[at] != nullptr) throw Refusal{DISP_E_PARAMNOTFOUND};
      given_[at] = &given.rgvarg[i];
    }
  }

  void Take(std::size_t i) {
    const Parameter& parameter = member_.parameters[i];
    if (parameter.isResult) return;
    const VARIANT* given = given_[i];
    if (given != nullptr && given->vt == (VT_BYREF | VT_VARIANT)) given = given->pvarVal;
    if (IsLeftOut(given)) {
      if (!parameter.isOptional)
        throw Refusal{given == nullptr ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL};
      given_[i] = nullptr;
      given = &parameter.standard.Raw();
    }
    if (parameter.isTaken) Read(*given, parameter.type, values_[i]);
  }

  // A reference refers to the value here, which is of the member's type whatever the caller's is.
  void Pass(std::size_t i) {
    const Parameter& parameter = member_.parameters[i];
    if (!parameter.isReference) {
      passed_[i] = *values_[i];
      return;
    }
    if (parameter.type != VT_VARIANT) values_[i]->vt = parameter.type;
    passed_[i].vt = VT_BYREF | parameter.type;
    passed_[i].byref = parameter.type == VT_VARIANT ? static_cast<void*>(values_[i].Place())
                                                    : static_cast<void*>(&values_[i]->llVal);
  }

  const Member& member_;
  std::vector<VARIANT*> given_;  // null for one that is left out, and for the result
  std::vector<Value> values_;
  std::vector<VARIANT> passed_;
};

DispatchTable::DispatchTable(ITypeLib& library, REFIID interfaceId) {
  Check(library.GetTypeInfoOfGuid(interfaceId, &info_));
  // The other half of a dual interface, whose members are slots.
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> slots;
  Check(info_->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
  Check(info_->GetRefTypeInfo(reference, &slots));
  TYPEATTR* attributes = nullptr;
  Check(slots->GetTypeAttr(&attributes));
  const UINT count = attributes->cFuncs;
  slots->ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < count; ++i)
    AddMember(*slots.Get(), i);
}

void DispatchTable::AddMember(ITypeInfo& slots, UINT index) {
  FUNCDESC* function = nullptr;
  Check(slots.GetFuncDesc(index, &function));
  Member member;
  member.id = function->memid;
  member.kind = function->invkind;
  member.slot = static_cast<ULONG_PTR>(function->oVft);
  for (SHORT i = 0; i < function->cParams; ++i)
    member.parameters.push_back(Describe(function->lprgelemdescParam[i]));
  slots.ReleaseFuncDesc(function);
  if (member.slot >= kInheritedSlots * sizeof(void*)) members_.push_back(std::move(member));
}

DispatchTable::Parameter DispatchTable::Describe(const ELEMDESC& described) {
  const USHORT flags = described.paramdesc.wParamFlags;
  const TYPEDESC* type = &described.tdesc;
  Parameter parameter;
  parameter.isResult = (flags & PARAMFLAG_FRETVAL) != 0;
  parameter.isTaken = (flags & PARAMFLAG_FIN) != 0;
  parameter.isOptional = (flags & PARAMFLAG_FOPT) != 0;
  // A pointer to a type of the library is an interface, unless something comes back: then it is an
  // enumeration, as an interface would be one pointer further.
  if (type->vt == VT_PTR && (type->lptdesc->vt != VT_USERDEFINED || (flags & PARAMFLAG_FOUT) != 0)) {
    parameter.isReference = true;
    type = type->lptdesc;
  }
  parameter.type = type->vt == VT_PTR           ? VARTYPE{VT_DISPATCH}
                   : type->vt == VT_USERDEFINED ? VARTYPE{VT_I4}
                                                : type->vt;
  if ((flags & PARAMFLAG_FHASDEFAULT) != 0)
    VariantCopy(parameter.standard.Place(), &described.paramdesc.pparamdescex->varDefaultValue);
  return parameter;
}

std::size_t DispatchTable::Member::ArgumentCount() const {
  const bool hasResult = !parameters.empty() && parameters.back().isResult;
  return parameters.size() - (hasResult ? 1 : 0);
}

const DispatchTable::Member* DispatchTable::Find(DISPID id, WORD flags) const {
  // A caller that doesn't tell objects from values puts where a reference is to be set.
  const auto kinds =
      static_cast<WORD>((flags & DISPATCH_PROPERTYPUT) != 0 ? flags | DISPATCH_PROPERTYPUTREF : flags);
  const auto found = std::find_if(members_.begin(), members_.end(), [&](const Member& member) {
    return member.id == id && (member.kind & kinds) != 0;
  });
  return found == members_.end() ? nullptr : &*found;
}

HRESULT DispatchTable::Invoke(IDispatch& object, DISPID id, WORD flags, const DISPPARAMS& given,
                              VARIANT* result, EXCEPINFO* exception, UINT* badArgument) const {
  const Member* member = Find(id, flags);
  if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
  try {
    if (member->kind == INVOKE_PROPERTYGET && member->ArgumentCount() == 0 && given.cArgs > 0) {
      Value whole;
      DISPPARAMS none = {};
      const HRESULT status = Invoke(object, id, flags, none, whole.Place(), exception, badArgument);
      if (FAILED(status)) return status;
      if (whole->vt != VT_DISPATCH || whole->pdispVal == nullptr) return DISP_E_BADPARAMCOUNT;
      DISPPARAMS passedOn = given;
      return whole->pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, flags, &passedOn, result,
                                     exception, badArgument);
    }
    Call call(*member, given);
    call.ReadArguments(badArgument);
    const HRESULT status = call.Run(object);
    if (FAILED(status)) return ExplainTo(exception, status);
    call.Finish(result);
    return S_OK;
  } catch (const Refusal& refusal) {
    return refusal.status;
  }
}

}  // namespace vorlent::com
