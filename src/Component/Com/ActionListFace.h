// The face of the action list.
#pragma once

#include <memory>

#include "Component/Com/Face.h"
#include "Host/Connector.h"
#include "VorlentMozilla.h"  // made of the IDL file

namespace vorlent::com {

class ActionListFace final : public Face<_Actions, ActionList> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE GetActions(IDispatch** result) override {
    return Do([&] {
      At(result) = nullptr;
      *result = ExposeList(std::make_shared<TextList>(Native().GetActions())).Detach();
    });
  }
  HRESULT STDMETHODCALLTYPE execute(BSTR* cmd) override {
    return Do([&] { Native().execute(Given(cmd)); });
  }
};

}  // namespace vorlent::com
