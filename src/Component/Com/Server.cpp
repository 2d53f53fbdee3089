// The four entry points of the server, and the class objects that they lead to.
#include <string>

#include "Component/Com/Counted.h"
#include "Component/Com/Faces.h"
#include "Component/Com/Module.h"
#include "Component/Com/Registration.h"
#include "Component/Component.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"

namespace vorlent::com {

namespace {

class ClassObject final : public Counted<IClassFactory> {
 public:
  explicit ClassObject(const ComponentClass& made) : made_(made) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Answer(IID_IClassFactory, WideOf(made_.progId), [&] {
      Module::Current().InstallHost();
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

 private:
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
