// A host over COM for tests: objects known by names, made under the host's class identifiers for this
// process.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Component/Com/ScriptedObject.h"
#include "Host/Com/LateBound.h"
#include "Vorlent.h"

namespace vorlent::com {

// Makes objects by a function.
class ScriptedFactory final : public IClassFactory {
 public:
  explicit ScriptedFactory(std::function<ComPtr<ScriptedObject>()> make) : make_(std::move(make)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    *result = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory) ? this : nullptr;
    return *result == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** result) override {
    const ComPtr<ScriptedObject> made = make_();
    if (made == nullptr) return E_FAIL;
    return made->QueryInterface(id, result);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::function<ComPtr<ScriptedObject>()> make_;
};

// What a call does that goes wrong.
enum class Wrong { Fails, GivesNothing, GivesAnotherType };

class ScriptedHost {
 public:
  // What was called, as "Item.Ready" or "Global.Report 33 text".
  std::vector<std::string> calls;
  // The call from now on, from 1, that goes wrong; 0 for none. All after it do so too if `failsOn`.
  int failing = 0;
  bool failsOn = false;
  Wrong wrong = Wrong::Fails;

  explicit ScriptedHost(std::string tempPath) : tempPath_(std::move(tempPath)) {
    Serve(__uuidof(::Item), [this] { return NewItem(); });
    Serve(__uuidof(::Tree), [this] { return NewTree(); });
    Serve(__uuidof(::HostGlobal), [this] { return NewGlobal(); });
    Serve(__uuidof(::HostEnum), [this] { return NewEnum(); });
  }
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;
  ~ScriptedHost() {
    for (const DWORD served : served_)
      CoRevokeClassObject(served);
  }

  ComPtr<ScriptedObject> NewLocation(const std::string& address) {
    ComPtr<ScriptedObject> location = ScriptedObject::Make();
    location->Set(L"ItemCounter", Value(LONG{0}));
    for (const wchar_t* name : {L"Changed", L"LastItemTimer", L"ParameterItem"})
      location->Set(name, Value());
    Method(*location.Get(), "Location", L"Name",
           [address](const auto&) { return Value(std::string_view(address)); });
    Method(*location.Get(), "Location", L"ErrorFactory", [this](const auto&) { return ErrorFactory(); });
    return location;
  }

  ComPtr<ScriptedObject> NewItem() {
    ComPtr<ScriptedObject> item = ScriptedObject::Make();
    for (const wchar_t* name : {L"Type", L"Text", L"Connected", L"AccessList", L"AccessDefault", L"Ready"})
      item->Set(name, Value());
    item->HoldWeakly(L"Location");
    item->Set(L"ID", Value(std::string_view("item" + std::to_string(++items_))));
    Method(*item.Get(), "Item", L"SetData", [](const auto&) { return Value(); });
    ScriptedObject* const raw = item.Get();
    Method(*item.Get(), "Item", L"ImportRecord", [raw](const std::vector<VARIANT>& arguments) {
      const std::string record = TextOf(arguments.at(0).bstrVal);
      const std::size_t id = record.find("ID=");
      if (id != std::string::npos)
        raw->Set(L"ID", Value(std::string_view(record.substr(id + 3, record.find('|', id) - id - 3))));
      raw->Set(L"Text", Value(std::string_view(record)));
      return Value();
    });
    return item;
  }

  // A condition on items.
  static ComPtr<ScriptedObject> NewExpression(std::string_view text) {
    ComPtr<ScriptedObject> expression = ScriptedObject::Make();
    expression->Set(L"Text", Value(text));
    return expression;
  }

  // What the last HostEnum was given puts this in place of the expression, if it is set.
  ComPtr<ScriptedObject> replacement;

 private:
  using Body = std::function<Value(const std::vector<VARIANT>& arguments)>;

  void Serve(REFCLSID id, std::function<ComPtr<ScriptedObject>()> make) {
    factories_.push_back(std::make_unique<ScriptedFactory>(std::move(make)));
    DWORD served = 0;
    CoRegisterClassObject(id, factories_.back().get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &served);
    served_.push_back(served);
  }

  // Gives what a call that goes wrong gives.
  HRESULT GoWrong(Value& result) const {
    if (wrong == Wrong::Fails) return static_cast<HRESULT>(0x800A0046);
    if (wrong == Wrong::GivesAnotherType)
      result = Value(static_cast<IDispatch*>(ScriptedObject::Make().Get()));
    return S_OK;
  }

  bool GoesWrong() {
    if (failing == 0) return false;
    if (failing > 1) {
      --failing;
      return false;
    }
    failing = failsOn ? 1 : 0;
    return true;
  }

  void Method(ScriptedObject& object, const std::string& kind, const std::wstring& name, Body body) {
    object.On(name,
              [this, kind, name, body = std::move(body)](std::vector<VARIANT>& arguments, Value& result) {
                std::string line = kind + "." + TextOf(name);
                for (const VARIANT& argument : arguments)
                  line += argument.vt == VT_BSTR ? " " + TextOf(argument.bstrVal)
                          : argument.vt == VT_I4 ? " " + std::to_string(argument.lVal)
                                                 : "";
                calls.push_back(line);
                if (GoesWrong()) return GoWrong(result);
                result = body(arguments);
                return S_OK;
              });
  }

  ComPtr<ScriptedObject> NewTree() {
    ComPtr<ScriptedObject> tree = ScriptedObject::Make();
    for (const wchar_t* name : {L"Clear", L"ClearItems", L"AddItem", L"AddKeywordPath"})
      Method(*tree.Get(), "Tree", name, [](const auto&) { return Value(); });
    Method(*tree.Get(), "Tree", L"AddChild",
           [this](const auto&) { return Value(static_cast<IDispatch*>(NewTree().Get())); });
    return tree;
  }

  ComPtr<ScriptedObject> NewEnum() {
    ComPtr<ScriptedObject> made = ScriptedObject::Make();
    Method(*made.Get(), "Enum", L"Init", [this](const std::vector<VARIANT>& arguments) {
      if (replacement != nullptr) {
        IDispatch*& place = *arguments.at(1).ppdispVal;
        if (place != nullptr) place->Release();
        place = replacement.Get();
        place->AddRef();
      }
      return Value();
    });
    return made;
  }

  Value ErrorFactory() {
    const ComPtr<ScriptedObject> factory = ScriptedObject::Make();
    Method(*factory.Get(), "ErrorFactory", L"Error", [this](const auto&) {
      const ComPtr<ScriptedObject> error = ScriptedObject::Make();
      error->Set(L"Suppressed", Value(false));
      error->Set(L"Silent", Value(false));
      Method(*error.Get(), "Error", L"Raise", [](const auto&) { return Value(); });
      return Value(static_cast<IDispatch*>(error.Get()));
    });
    return Value(static_cast<IDispatch*>(factory.Get()));
  }

  ComPtr<ScriptedObject> NewGlobal() {
    ComPtr<ScriptedObject> global = ScriptedObject::Make();
    global->Set(L"LogEnabled", Value(false));
    global->Set(L"ProgressVisible", Value(false));
    Method(*global.Get(), "Global", L"UserName", [](const auto&) { return Value("anna"); });
    Method(*global.Get(), "Global", L"TempPath",
           [this](const auto&) { return Value(std::string_view(tempPath_)); });
    Method(*global.Get(), "Global", L"Cancelled", [](const auto&) { return Value(false); });
    Method(*global.Get(), "Global", L"Report", [](const auto&) { return Value(); });
    Method(*global.Get(), "Global", L"Locations", [](const auto&) {
      const ComPtr<ScriptedObject> none = ScriptedObject::Make();
      none->Set(L"Count", Value(LONG{0}));
      return Value(static_cast<IDispatch*>(none.Get()));
    });
    Method(*global.Get(), "Global", L"GetObject",
           [](const auto&) { return Value(static_cast<IDispatch*>(nullptr)); });
    Method(*global.Get(), "Global", L"ErrorFactory", [this](const auto&) { return ErrorFactory(); });
    return global;
  }

  std::string tempPath_;
  int items_ = 0;
  std::vector<std::unique_ptr<ScriptedFactory>> factories_;
  std::vector<DWORD> served_;
};

}  // namespace vorlent::com
