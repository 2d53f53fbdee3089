// The counting of references that all objects here share.
#pragma once

#include <memory>

#include "Component/Com/Module.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// An object with its interfaces, the first of which is its identity. It begins with one reference, its
// maker's, and keeps the library loaded.
//
// Once the last reference is gone it lets go of what it holds, but not before the member that is running has
// ended. What remains of it bears further calls for a while: a host that releases too often gets a status.
template <class Main, class... Others>
class Counted : public Main, public Others..., public Remains {
 public:
  Counted() { Module::Current().Hold(); }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() override {
    if (!isGone_) Module::Current().Release();
  }

  ULONG STDMETHODCALLTYPE AddRef() final {
    return isGone_ ? 0 : static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() final {
    if (references_ == 0) return 0;
    const LONG left = InterlockedDecrement(&references_);
    EndIfUnused();
    return static_cast<ULONG>(left);
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) final {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (IsEqualIID(id, IID_IUnknown)) *result = static_cast<Main*>(this);
    OfferAs<Main>(id, result);
    (OfferAs<Others>(id, result), ...);
    OfferBases(id, result);
    if (*result == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

 protected:
  // Keeps the object whole while one of its members runs.
  class Running {
   public:
    explicit Running(Counted& object) : object_(object) { ++object_.running_; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
      --object_.running_;
      object_.EndIfUnused();
    }

   private:
    Counted& object_;
  };

  // Lets go of what the object holds. Its members are called no more, or say that it is gone.
  virtual void LetGo() {}

  // Answers for the interfaces that those of the object are derived from.
  virtual void OfferBases(REFIID, void**) {}

  template <class Interface>
  void OfferAs(REFIID id, void** result) {
    if (IsEqualIID(id, __uuidof(Interface))) *result = static_cast<Interface*>(this);
  }

 private:
  void EndIfUnused() {
    if (references_ != 0 || running_ != 0 || isGone_) return;
    isGone_ = true;
    LetGo();
    Module::Current().Release();
    Module::Current().Bury(std::unique_ptr<Remains>(this));
  }

  LONG references_ = 1;
  int running_ = 0;
  bool isGone_ = false;
};

}  // namespace vorlent::com
