#include "Host/Com/LateBound.h"

#include <algorithm>
#include <iterator>

#include "Host/Com/Failures.h"

namespace vorlent::com {

namespace {

// What the other side says of its failure; its texts are freed.
struct Exception {
  ~Exception() {
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrHelpFile);
  }

  Failure Taken() {
    if (info.pfnDeferredFillIn != nullptr) info.pfnDeferredFillIn(&info);
    const std::string text = TextOf(info.bstrDescription);
    if (info.scode != 0) return FailureOf(info.scode, text, TextOf(info.bstrHelpFile), info.dwHelpContext);
    return Failure(info.wCode, text);
  }

  EXCEPINFO info = {};
};

DISPID LookUp(IDispatch* object, std::wstring name) {
  DISPID id = DISPID_UNKNOWN;
  LPOLESTR names[] = {name.data()};
  HRESULT status = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  if (SUCCEEDED(status)) return id;
  IDispatchEx* extended = nullptr;
  if (SUCCEEDED(object->QueryInterface(__uuidof(IDispatchEx), reinterpret_cast<void**>(&extended)))) {
    const ComPtr<IDispatchEx> held = Taken(extended);
    BSTR const text = SysAllocStringLen(name.data(), static_cast<UINT>(name.size()));
    status = held->GetDispID(text, fdexNameCaseInsensitive, &id);
    SysFreeString(text);
  }
  if (FAILED(status)) throw FailureOf(status, {});
  return id;
}

void ChangeType(Value& value, VARTYPE type) {
  const HRESULT status = VariantChangeType(value.Place(), value.Place(), 0, type);
  if (FAILED(status)) throw FailureOf(status, {});
}

}  // namespace

bool AreSame(IUnknown* a, IUnknown* b) {
  if (a == nullptr || b == nullptr) return a == b;
  ComPtr<IUnknown> first, second;
  a->QueryInterface(IID_PPV_ARGS(first.GetAddressOf()));
  b->QueryInterface(IID_PPV_ARGS(second.GetAddressOf()));
  return first.Get() == second.Get();
}

DISPID LateBound::IdOf(std::wstring_view name) {
  const auto found =
      std::find_if(known_.begin(), known_.end(), [&](const auto& entry) { return entry.first == name; });
  if (found != known_.end()) return found->second;
  if (object_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "object not set");
  const DISPID id = LookUp(object_.Get(), std::wstring(name));
  known_.emplace_back(name, id);
  return id;
}

Value LateBound::Call(std::wstring_view name, std::initializer_list<const Value*> arguments) {
  const DISPID id = IdOf(name);
  // The last argument comes first. They are the caller's, so none is cleared here.
  std::vector<VARIANT> reversed;
  for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument)
    reversed.push_back((*argument)->Raw());
  DISPPARAMS passed = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  return Invoke(id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, passed);
}

void LateBound::Put(std::wstring_view name, const Value& value) {
  const DISPID id = IdOf(name);
  VARIANT passedValue = value.Raw();
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS passed = {&passedValue, &named, 1, 1};
  Invoke(id, passedValue.vt == VT_DISPATCH ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT, passed);
}

Value LateBound::Invoke(DISPID id, WORD flags, DISPPARAMS& arguments) {
  Value result;
  Exception exception;
  // The host may let go of the object meanwhile.
  const ComPtr<IDispatch> held = object_;
  const bool writes = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  const HRESULT status = held->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &arguments,
                                      writes ? nullptr : result.Place(), &exception.info, nullptr);
  if (status == DISP_E_EXCEPTION) throw exception.Taken();
  if (FAILED(status)) throw FailureOf(status, {});
  return result;
}

std::string ToText(Value value) {
  ChangeType(value, VT_BSTR);
  return TextOf(value->bstrVal);
}

std::int32_t ToNumber(Value value) {
  ChangeType(value, VT_I4);
  return value->lVal;
}

bool ToTruth(Value value) {
  ChangeType(value, VT_BOOL);
  return value->boolVal != VARIANT_FALSE;
}

ComPtr<IDispatch> ToObject(Value value) {
  if (value->vt == VT_EMPTY || value->vt == VT_NULL) return nullptr;
  if (value->vt != VT_DISPATCH && value->vt != VT_UNKNOWN) throw FailureOf(DISP_E_TYPEMISMATCH, {});
  ComPtr<IDispatch> object;
  if (value->punkVal != nullptr) Check(value->punkVal->QueryInterface(IID_PPV_ARGS(object.GetAddressOf())));
  return object;
}

std::vector<Value> EntriesOf(IDispatch* collection) {
  std::vector<Value> entries;
  if (collection == nullptr) return entries;
  LateBound list(collection);
  const std::int32_t count = ToNumber(list.Call(L"Count"));
  for (std::int32_t i = 1; i <= count; ++i)
    entries.push_back(list.Call(L"Item", Value(LONG{i})));
  return entries;
}

}  // namespace vorlent::com
