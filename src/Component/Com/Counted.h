// The counting of references that all objects here share.
#pragma once

#include "Component/Com/Module.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// An object with its interfaces, the first of which is its identity. It begins with one reference, its
// maker's, and keeps the library loaded.
template <class Main, class... Others>
class Counted : public Main, public Others... {
 public:
  Counted() { Module::Current().Hold(); }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  virtual ~Counted() { Module::Current().Release(); }

  ULONG STDMETHODCALLTYPE AddRef() final { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  ULONG STDMETHODCALLTYPE Release() final {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (IsEqualIID(id, IID_IUnknown)) *result = static_cast<Main*>(this);
    OfferAs<Main>(id, result);
    (OfferAs<Others>(id, result), ...);
    if (*result == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

 protected:
  template <class Interface>
  void OfferAs(REFIID id, void** result) {
    if (IsEqualIID(id, __uuidof(Interface))) *result = static_cast<Interface*>(this);
  }

 private:
  LONG references_ = 1;
};

}  // namespace vorlent::com
