// An object of a host that is known by the names of its members only.
#pragma once

#include <cwchar>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

struct NoCase {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return _wcsicmp(a.c_str(), b.c_str()) < 0;
  }
};

// Properties are kept as they are put; methods are functions of their arguments, in the caller's order.
// Counts how many live.
class ScriptedObject final : public IDispatch {
 public:
  // Gives a status; the result is empty at first.
  using Method = std::function<HRESULT(std::vector<VARIANT>& arguments, Value& result)>;

  static ComPtr<ScriptedObject> Make() { return Taken(new ScriptedObject); }
  static int Living() { return living; }

  void Set(const std::wstring& name, Value value) { Entry(name).value = std::move(value); }
  // From now on what is put there isn't kept alive.
  void HoldWeakly(const std::wstring& name) { Entry(name).isWeak = true; }
  const VARIANT& Get(const std::wstring& name) { return Entry(name).value.Raw(); }
  void On(const std::wstring& name, Method method) { Entry(name).method = std::move(method); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    *result = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IDispatch)) return E_NOINTERFACE;
    *result = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  ULONG References() const { return references_; }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    const auto found = ids_.find(names[0]);
    if (found == ids_.end()) return DISP_E_UNKNOWNNAME;
    ids[0] = found->second;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* given, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) override {
    if (id < 1 || id > static_cast<DISPID>(members_.size())) return DISP_E_MEMBERNOTFOUND;
    Member& member = members_[static_cast<std::size_t>(id) - 1];
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) return member.Put(given->rgvarg[0]);
    Value outcome;
    HRESULT status = VariantCopy(outcome.Place(), member.value.Place());
    if (member.method) {
      std::vector<VARIANT> arguments(given->rgvarg, given->rgvarg + given->cArgs);
      std::reverse(arguments.begin(), arguments.end());
      status = member.method(arguments, outcome);
    }
    if (FAILED(status) && exception != nullptr) {
      *exception = {};
      exception->scode = status;
      exception->bstrDescription = SysAllocString(L"the host says no");
      return DISP_E_EXCEPTION;
    }
    if (SUCCEEDED(status) && result != nullptr) *result = std::exchange(*outcome, VARIANT{});
    return status;
  }

 private:
  struct Member {
    HRESULT Put(const VARIANT& given) {
      if (!isWeak) return VariantCopy(value.Place(), Readable(given));
      *value = given;
      return S_OK;
    }

    Value value;
    bool isWeak = false;
    Method method;
  };

  ScriptedObject() { ++living; }
  ~ScriptedObject() {
    --living;
    for (Member& member : members_) {
      if (member.isWeak) member.value->vt = VT_EMPTY;
    }
  }

  Member& Entry(const std::wstring& name) {
    const auto [at, isNew] = ids_.try_emplace(name, static_cast<DISPID>(members_.size() + 1));
    if (isNew) members_.emplace_back();
    return members_[static_cast<std::size_t>(at->second) - 1];
  }

  static inline int living = 0;
  ULONG references_ = 1;
  std::map<std::wstring, DISPID, NoCase> ids_;
  std::vector<Member> members_;
};

}  // namespace vorlent::com
