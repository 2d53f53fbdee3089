// The faces of the action list and of the import wizard.
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

class WizardControlFace final : public Face<_WizardImport, WizardControl> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_Pages(SHORT* result) override {
    return Do([&] { At(result) = Native().Pages(); });
  }
  HRESULT STDMETHODCALLTYPE put_Pages(SHORT rhs) override {
    return Do([&] { Native().SetPages(rhs); });
  }
  HRESULT STDMETHODCALLTYPE ShowPage(SHORT* page) override {
    return Do([&] { Native().ShowPage(At(page)); });
  }
  HRESULT STDMETHODCALLTYPE get_Parameter(BSTR* result) override {
    return Do([&] { Give(Native().Parameter(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_Parameter(BSTR rhs) override {
    return Do([&] { Native().SetParameter(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE Finish(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().Finish(), result); });
  }
  HRESULT STDMETHODCALLTYPE AddSubQueries(BSTR* qry, LONG pos, SHORT* ind, SHORT* cb,
                                          VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().AddSubQueries(Given(qry), pos, At(ind), At(cb)), result); });
  }
};

}  // namespace vorlent::com
