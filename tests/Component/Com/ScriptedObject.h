// An object of a host that is known by the names of its members only.
#pragma once

#include <algorithm>
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

// What a call of the host does that goes wrong: it raises an error with a text, fails with nothing but a
// status, gives nothing, gives what isn't of the member's type, or lets go of an object of the component's
// once more than it holds it.
enum class Wrong { Nothing, Raises, Fails, GivesNothing, GivesAnotherType, ReleasesTooOften };

// Properties are kept as they are put; methods are functions of their arguments, in the caller's order.
// Counts how many live.
class ScriptedObject final : public IDispatch {
 public:
  // Gives a status; the result is empty at first.
  using Method = std::function<HRESULT(std::vector<VARIANT>& arguments, Value& result)>;
  // Hears of a call before it is made, as "Item.SetData Flags LogReadonly", and says what goes wrong with it.
  using Watcher = std::function<Wrong(const std::string& call)>;

  static constexpr HRESULT kRaised = static_cast<HRESULT>(0x800A0046);

  // An object without a kind isn't watched.
  static ComPtr<ScriptedObject> Make(std::string kind = {}) {
    return Taken(new ScriptedObject(std::move(kind)));
  }
  static int Living() { return living; }
  static void WatchBy(Watcher given) { watcher = std::move(given); }

  void Set(const std::wstring& name, Value value) { Entry(name).value = std::move(value); }
  // From now on what is put there isn't kept alive.
  void HoldWeakly(const std::wstring& name) { Entry(name).isWeak = true; }
  const VARIANT& Get(const std::wstring& name) { return Entry(name).value.Raw(); }
  void On(const std::wstring& name, Method method) { Entry(name).method = std::move(method); }
  void OnPut(const std::wstring& name, std::function<void(const VARIANT& given)> put) {
    Entry(name).put = std::move(put);
  }

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
    const ComPtr<IDispatch> held(this);
    Member& member = members_[static_cast<std::size_t>(id) - 1];
    std::vector<VARIANT> arguments(given->rgvarg, given->rgvarg + given->cArgs);
    std::reverse(arguments.begin(), arguments.end());
    const Wrong wrong = Ask(member, arguments);
    if (wrong == Wrong::Raises) return Raise(exception, kRaised);
    if (wrong == Wrong::Fails) return E_FAIL;
    if (wrong == Wrong::ReleasesTooOften)
      std::for_each(arguments.begin(), arguments.end(), ReleaseComponents);
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0)
      return wrong == Wrong::GivesNothing ? S_OK : member.Put(given->rgvarg[0]);
    Value outcome;
    const HRESULT status = member.Call(arguments, outcome);
    if (FAILED(status)) return Raise(exception, status);
    Spoil(wrong, outcome);
    if (result != nullptr) *result = std::exchange(*outcome, VARIANT{});
    return status;
  }

 private:
  struct Member {
    HRESULT Put(const VARIANT& given) {
      if (put) put(given);
      if (!isWeak) return VariantCopy(value.Place(), Readable(given));
      *value = given;
      return S_OK;
    }
    HRESULT Call(std::vector<VARIANT>& arguments, Value& result) {
      return method ? method(arguments, result) : VariantCopy(result.Place(), value.Place());
    }

    std::string name;
    Value value;
    bool isWeak = false;
    Method method;
    std::function<void(const VARIANT& given)> put;
  };

  explicit ScriptedObject(std::string kind) : kind_(std::move(kind)) { ++living; }
  ~ScriptedObject() {
    --living;
    for (Member& member : members_) {
      if (member.isWeak) member.value->vt = VT_EMPTY;
    }
  }

  Wrong Ask(const Member& member, const std::vector<VARIANT>& arguments) const {
    if (kind_.empty() || !watcher) return Wrong::Nothing;
    std::string call = kind_ + "." + member.name;
    for (const VARIANT& argument : arguments) {
      if (argument.vt == VT_BSTR) call += " " + TextOf(argument.bstrVal);
      if (argument.vt == VT_I4) call += " " + std::to_string(argument.lVal);
    }
    return watcher(call);
  }

  static HRESULT Raise(EXCEPINFO* exception, HRESULT status) {
    if (exception == nullptr) return status;
    *exception = {};
    exception->scode = status;
    exception->bstrDescription = SysAllocString(L"the host says no");
    return DISP_E_EXCEPTION;
  }

  // Only the component's objects explain their failures.
  static void ReleaseComponents(const VARIANT& argument) {
    if (argument.vt != VT_DISPATCH || argument.pdispVal == nullptr) return;
    ComPtr<ISupportErrorInfo> explaining;
    if (FAILED(argument.pdispVal->QueryInterface(__uuidof(ISupportErrorInfo),
                                                 reinterpret_cast<void**>(explaining.GetAddressOf()))))
      return;
    argument.pdispVal->Release();
  }

  static void Spoil(Wrong wrong, Value& outcome) {
    if (wrong == Wrong::GivesNothing) outcome = Value();
    if (wrong != Wrong::GivesAnotherType) return;
    outcome = outcome->vt == VT_DISPATCH ? Value("no object") : Value(static_cast<IDispatch*>(Make().Get()));
  }

  Member& Entry(const std::wstring& name) {
    const auto [at, isNew] = ids_.try_emplace(name, static_cast<DISPID>(members_.size() + 1));
    if (isNew) members_.emplace_back().name = TextOf(std::wstring_view(name));
    return members_[static_cast<std::size_t>(at->second) - 1];
  }

  static inline int living = 0;
  static inline Watcher watcher;

  std::string kind_;
  ULONG references_ = 1;
  std::map<std::wstring, DISPID, NoCase> ids_;
  std::vector<Member> members_;
};

}  // namespace vorlent::com
