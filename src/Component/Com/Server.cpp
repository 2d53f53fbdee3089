// The four entry points of the server, and the class objects that they lead to.
#include <string>
#include <utility>

#include "Component/Com/Counted.h"
#include "Component/Com/Faces.h"
#include "Component/Com/InsideAnswers.h"
#include "Component/Com/Module.h"
#include "Component/Com/Registration.h"
#include "Component/Component.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Inside.h"
#include "Host/Com/Text.h"
#include "Platform/Settings.h"

namespace vorlent::com {

namespace {

class ClassObject final : public Counted<IClassFactory, IInside> {
 public:
  explicit ClassObject(const ComponentClass& made) : made_(made) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Answer(IID_IClassFactory, WideOf(made_.progId), [&] {
      Module::Current().InstallHost(ExposeObject);
      Check(ExposeObject(made_.create())->QueryInterface(id, result));
    });
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL locks) override {
    if (locks) {
      Module::Current().Hold();
    } else {
      Module::Current().Release();
    }
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SetDrive(WCHAR letter, BSTR folder) override {
    return Do([&] { os::SetDrive(static_cast<char>(letter), Utf8Of(folder)); });
  }
  HRESULT STDMETHODCALLTYPE SetAppDataFolder(BSTR folder) override {
    return Do([&] { os::SetAppDataFolder(Utf8Of(folder)); });
  }
  HRESULT STDMETHODCALLTYPE ShowMessagesBy(IMessages* messages) override {
    return Do([&] { com::ShowMessagesBy(messages); });
  }
  HRESULT STDMETHODCALLTYPE Observe(IDispatch* object, IRunObserver* observer) override {
    return Do([&] { com::Observe(*NativeBehind(object), observer); });
  }
  HRESULT STDMETHODCALLTYPE Ask(IDispatch* object, BSTR question, BSTR given, VARIANT* result) override {
    return Do([&] {
      At(result) = VARIANT{};
      *result = std::exchange(*com::Ask(*NativeBehind(object), TextOf(question), TextOf(given)), VARIANT{});
    });
  }

 private:
  template <class Step>
  HRESULT Do(Step&& step) {
    return Answer(__uuidof(IInside), WideOf(made_.progId), std::forward<Step>(step));
  }

  const ComponentClass& made_;
};

const ComponentClass* FindClass(REFCLSID id) {
  for (const ComponentClass& entry : ComponentClasses()) {
    CLSID known = {};
    if (SUCCEEDED(CLSIDFromString(WideOf(entry.classId).c_str(), &known)) && IsEqualCLSID(known, id))
      return &entry;
  }
  return nullptr;
}

HRESULT GetClassObject(REFCLSID classId, REFIID id, void** result) {
  if (result == nullptr) return E_POINTER;
  *result = nullptr;
  HRESULT status = CLASS_E_CLASSNOTAVAILABLE;
  const HRESULT answered = Answer(IID_IClassFactory, L"VorlentMozilla", [&] {
    const ComponentClass* const found = FindClass(classId);
    if (found == nullptr) return;
    status = Taken<IClassFactory>(new ClassObject(*found))->QueryInterface(id, result);
  });
  return FAILED(answered) ? answered : status;
}

}  // namespace

}  // namespace vorlent::com

STDAPI DllGetClassObject(REFCLSID classId, REFIID id, void** result) {
  return vorlent::com::GetClassObject(classId, id, result);
}

STDAPI DllCanUnloadNow() {
  return vorlent::com::Module::Current().MayUnload() ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
  return vorlent::com::Answer(IID_NULL, L"VorlentMozilla", vorlent::com::Register);
}

STDAPI DllUnregisterServer() {
  return vorlent::com::Answer(IID_NULL, L"VorlentMozilla", vorlent::com::Unregister);
}
