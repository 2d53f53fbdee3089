// A small container of a control: a window with a site in it, which the control fills.
#pragma once

#include <string>
#include <utility>

#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// Gives the control its place, its frame and a font, and notes what the control tells it. It lives as long as
// the test; its references are counted, so that a control that keeps one shows.
class ControlContainer final : public IOleClientSite,
                               public IOleInPlaceSite,
                               public IOleInPlaceFrame,
                               public IOleControlSite,
                               public IDispatch {
 public:
  std::string told;  // what the control told, in words with blanks between
  ComPtr<IFontDisp> font;

  explicit ControlContainer(HWND window) : window_(window) {}
  ControlContainer(const ControlContainer&) = delete;
  ControlContainer& operator=(const ControlContainer&) = delete;

  // Beyond the test's own.
  ULONG References() const { return references_; }

  // The control in the whole of the window.
  void Embed(IUnknown* control) {
    Check(control->QueryInterface(IID_IOleObject, reinterpret_cast<void**>(control_.GetAddressOf())));
    Check(control_->SetClientSite(this));
    ComPtr<IPersistStreamInit> kept;
    Check(control_.As(&kept));
    Check(kept->InitNew());
  }
  HRESULT Do(LONG verb) {
    const RECT place = Place();
    return control_->DoVerb(verb, nullptr, this, 0, window_, &place);
  }
  void Fit() {
    ComPtr<IOleInPlaceObject> placed;
    const RECT place = Place();
    if (control_ != nullptr && SUCCEEDED(control_.As(&placed))) placed->SetObjectRects(&place, &place);
  }
  // Whether the control had a use for the message.
  bool Translate(MSG& message) {
    ComPtr<IOleInPlaceActiveObject> active;
    return control_ != nullptr && SUCCEEDED(control_.As(&active)) &&
           active->TranslateAccelerator(&message) == S_OK;
  }
  void Leave() {
    if (control_ == nullptr) return;
    control_->Close(OLECLOSE_NOSAVE);
    control_->SetClientSite(nullptr);
    control_.Reset();
  }
  IOleObject* Object() const { return control_.Get(); }

  // The room of the control, which a container may keep smaller than its window.
  RECT Place() const {
    RECT place = {};
    GetClientRect(window_, &place);
    place.bottom -= reserved_;
    return place;
  }
  void Reserve(LONG height) { reserved_ = height; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    *result = nullptr;
    if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IOleClientSite))
      *result = static_cast<IOleClientSite*>(this);
    if (IsEqualIID(id, IID_IOleInPlaceSite) || IsEqualIID(id, IID_IOleWindow))
      *result = static_cast<IOleInPlaceSite*>(this);
    if (IsEqualIID(id, IID_IOleInPlaceFrame) || IsEqualIID(id, IID_IOleInPlaceUIWindow))
      *result = static_cast<IOleInPlaceFrame*>(this);
    if (IsEqualIID(id, IID_IOleControlSite)) *result = static_cast<IOleControlSite*>(this);
    if (IsEqualIID(id, IID_IDispatch)) *result = static_cast<IDispatch*>(this);
    if (*result == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override { return --references_; }

  HRESULT STDMETHODCALLTYPE SaveObject() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** moniker) override {
    *moniker = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** container) override {
    *container = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE ShowObject() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override {
    *window = window_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return refuses ? S_FALSE : S_OK; }
  HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override { return Note("in-place"); }
  HRESULT STDMETHODCALLTYPE OnUIActivate() override { return Note("active"); }
  HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                             LPRECT place, LPRECT clip, LPOLEINPLACEFRAMEINFO info) override {
    *frame = this;
    AddRef();
    *document = nullptr;
    *place = *clip = Place();
    info->fMDIApp = FALSE;
    info->hwndFrame = window_;
    info->haccel = nullptr;
    info->cAccelEntries = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Scroll(SIZE) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL) override { return Note("inactive"); }
  HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override { return Note("out"); }
  HRESULT STDMETHODCALLTYPE DiscardUndoState() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override { return S_OK; }

  HRESULT STDMETHODCALLTYPE GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
  HRESULT STDMETHODCALLTYPE RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
  HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject* active, LPCOLESTR) override {
    active_ = active;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RemoveMenus(HMENU) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetStatusText(LPCOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

  HRESULT STDMETHODCALLTYPE OnControlInfoChanged() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockInPlaceActive(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetExtendedControl(IDispatch** control) override {
    *control = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, DWORD) override {
    if (!takesTab) return S_FALSE;
    return Note("tab");
  }
  HRESULT STDMETHODCALLTYPE OnFocus(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ShowPropertyFrame() override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                   UINT*) override {
    if (id != DISPID_AMBIENT_FONT || font == nullptr) return DISP_E_MEMBERNOTFOUND;
    *result = std::exchange(*Value(static_cast<IDispatch*>(font.Get())), VARIANT{});
    return S_OK;
  }

  bool refuses = false;   // to take the control in place
  bool takesTab = false;  // that leads out of the control

 private:
  HRESULT Note(std::string_view what) {
    told += (told.empty() ? "" : " ") + std::string(what);
    return S_OK;
  }

  HWND window_;
  LONG reserved_ = 0;
  ULONG references_ = 0;
  ComPtr<IOleObject> control_;
  IOleInPlaceActiveObject* active_ = nullptr;
};

}  // namespace vorlent::com
