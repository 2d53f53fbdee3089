// Runs scripts in the system's own engines, as clients of the server that know names only.
#pragma once

#include <activscp.h>

#include <map>
#include <string>
#include <string_view>

#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

class ScriptHost final : public IActiveScriptSite {
 public:
  explicit ScriptHost(const wchar_t* language) {
    CLSID id = {};
    Check(CLSIDFromProgID(language, &id));
    Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript),
                           reinterpret_cast<void**>(script_.GetAddressOf())));
    Check(script_.As(&parser_));
    Check(parser_->InitNew());
    Check(script_->SetScriptSite(this));
  }
  ScriptHost(const ScriptHost&) = delete;
  ScriptHost& operator=(const ScriptHost&) = delete;
  ~ScriptHost() { script_->Close(); }

  // A name that scripts know the object by.
  void Name(const std::wstring& name, IDispatch* object) {
    named_[name] = object;
    Check(script_->AddNamedItem(name.c_str(), SCRIPTITEM_ISVISIBLE));
  }

  // Runs a text. What it didn't catch is "<number> <source>: <description>", "" if all went well.
  std::string Run(std::string_view text) {
    error_.clear();
    parser_->ParseScriptText(WideOf(text).c_str(), nullptr, nullptr, nullptr, 0, 0, SCRIPTTEXT_ISVISIBLE,
                             nullptr, nullptr);
    script_->SetScriptState(SCRIPTSTATE_CONNECTED);
    return error_;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, __uuidof(IActiveScriptSite))) {
      *result = nullptr;
      return E_NOINTERFACE;
    }
    *result = static_cast<IActiveScriptSite*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE GetLCID(LCID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item,
                                        ITypeInfo** type) override {
    if (type != nullptr) *type = nullptr;
    const auto found = named_.find(name);
    if (found == named_.end()) return TYPE_E_ELEMENTNOTFOUND;
    if ((wanted & SCRIPTINFO_IUNKNOWN) != 0) {
      *item = found->second.Get();
      (*item)->AddRef();
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError* error) override {
    EXCEPINFO info = {};
    error->GetExceptionInfo(&info);
    error_ = std::to_string(info.scode & 0xFFFF) + " " + TextOf(info.bstrSource) + ": " +
             TextOf(info.bstrDescription);
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnEnterScript() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnLeaveScript() override { return S_OK; }

 private:
  ComPtr<IActiveScript> script_;
  ComPtr<IActiveScriptParse> parser_;
  std::map<std::wstring, ComPtr<IDispatch>> named_;
  std::string error_;
};

}  // namespace vorlent::com
