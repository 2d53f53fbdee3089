// What the faces of all public classes have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Component/Com/Counted.h"
#include "Component/Com/Faces.h"
#include "Component/Com/Module.h"
#include "Host/Com/Failures.h"
#include "Host/Com/HostFace.h"
#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// What a member is given and what it gives, in the types of automation. A place that the caller doesn't give
// raises NoPlace.
inline std::string Given(BSTR* text) {
  return TextOf(At(text));
}
inline bool Given(const VARIANT_BOOL* truth) {
  return At(truth) != VARIANT_FALSE;
}
template <class Contract, class Interface>
std::shared_ptr<Contract> GivenAs(Interface** object) {
  return Adopt<Contract>(At(object));
}

inline void Give(std::string_view text, BSTR* result) {
  At(result) = nullptr;
  *result = NewBstr(text);
}
inline void Give(bool truth, VARIANT_BOOL* result) {
  At(result) = truth ? VARIANT_TRUE : VARIANT_FALSE;
}
// An object that isn't of the interface is one that its host knows by names only; so will its caller.
template <class Interface>
void Give(const ObjectPtr& object, Interface** result) {
  At(result) = nullptr;
  ComPtr<IDispatch> face = FaceOf(object);
  if (face == nullptr) return;
  if (FAILED(face->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(result))))
    *result = static_cast<Interface*>(face.Detach());
}

// A face of a native object, which it keeps alive. Members are called by vtable, and by name through their
// description in the type library. Others are what it offers beside the interface.
template <class Interface, class Contract, class Kind = Object, class... Others>
class Face : public Counted<Interface, ISupportErrorInfo, Others...> {
 public:
  Face(std::shared_ptr<Contract> native, std::wstring_view progId)
      : native_(std::move(native)), progId_(progId) {
    FaceList<Kind>::Current().Add(native_, this);
  }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) final {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) final {
    if (index != 0) return DISP_E_BADINDEX;
    return Do([&] {
      At(info) = &Table().Info();
      (*info)->AddRef();
    });
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) final {
    HRESULT status = S_OK;
    const HRESULT found = Do([&] { status = Table().Info().GetIDsOfNames(names, count, ids); });
    return FAILED(found) ? found : status;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID, WORD flags, DISPPARAMS* arguments,
                                   VARIANT* result, EXCEPINFO* exception, UINT* badArgument) final {
    if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (arguments == nullptr) return E_POINTER;
    if (result != nullptr) VariantInit(result);
    HRESULT status = S_OK;
    const HRESULT called =
        Do([&] { status = Table().Invoke(*this, id, flags, *arguments, result, exception, badArgument); });
    return FAILED(called) ? called : status;
  }

  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) final {
    return IsEqualIID(id, __uuidof(Interface)) || IsEqualIID(id, IID_IDispatch) ? S_OK : S_FALSE;
  }

 protected:
  Contract& Native() { return *native_; }
  const std::shared_ptr<Contract>& Shared() const { return native_; }

  void OfferBases(REFIID id, void** result) override {
    if (IsEqualIID(id, IID_IDispatch)) *result = static_cast<IDispatch*>(this);
  }

  void LetGo() override {
    FaceList<Kind>::Current().Remove(native_.get(), this);
    native_ = nullptr;
  }

  // Runs a member. What the host does meanwhile may be to release the face.
  template <class Step>
  HRESULT Do(Step&& step) {
    if (native_ == nullptr) return CO_E_OBJNOTCONNECTED;
    const typename Counted<Interface, ISupportErrorInfo, Others...>::Running running(*this);
    return Answer(__uuidof(Interface), progId_, std::forward<Step>(step));
  }

 private:
  const DispatchTable& Table() {
    if (table_ == nullptr) table_ = &Module::Current().TableOf(__uuidof(Interface));
    return *table_;
  }

  std::shared_ptr<Contract> native_;
  std::wstring_view progId_;
  const DispatchTable* table_ = nullptr;
};

}  // namespace vorlent::com
