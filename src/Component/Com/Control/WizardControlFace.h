// The import wizard as a control: its own members, and those by which a container shows it in a window.
#pragma once

#include <functional>
#include <memory>

#include "Component/Com/Control/FormWindow.h"
#include "Component/Com/Face.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "VorlentMozilla.h"  // made of the IDL file

namespace vorlent::com {

// Without a container it is an object as the others. In one it is active in place; what it holds of the
// container goes at Close, or when it is told so.
class WizardControlFace final
    : public Face<_WizardImport, WizardImport, Object, IOleObject, IOleInPlaceObject, IOleInPlaceActiveObject,
                  IOleControl, IPersistStreamInit, IViewObject2, IProvideClassInfo2>,
      private FormOwner {
 public:
  using Face::Face;

  // _WizardImport
  HRESULT STDMETHODCALLTYPE get_Pages(SHORT* result) override;
  HRESULT STDMETHODCALLTYPE put_Pages(SHORT rhs) override;
  HRESULT STDMETHODCALLTYPE ShowPage(SHORT* page) override;
  HRESULT STDMETHODCALLTYPE get_Parameter(BSTR* result) override;
  HRESULT STDMETHODCALLTYPE put_Parameter(BSTR rhs) override;
  HRESULT STDMETHODCALLTYPE Finish(VARIANT_BOOL* result) override;
  HRESULT STDMETHODCALLTYPE AddSubQueries(BSTR* qry, LONG pos, SHORT* ind, SHORT* cb,
                                          VARIANT_BOOL* result) override;

  // IOleObject
  HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override;
  HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite** site) override;
  HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Close(DWORD saves) override;
  HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** moniker) override;
  HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject** data) override;
  HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG index, HWND parent,
                                   LPCRECT place) override;
  HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB** verbs) override;
  HRESULT STDMETHODCALLTYPE Update() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE IsUpToDate() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID* id) override;
  HRESULT STDMETHODCALLTYPE GetUserType(DWORD form, LPOLESTR* name) override;
  HRESULT STDMETHODCALLTYPE SetExtent(DWORD aspect, SIZEL* size) override;
  HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, SIZEL* size) override;
  HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* sink, DWORD* connection) override;
  HRESULT STDMETHODCALLTYPE Unadvise(DWORD connection) override;
  HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA** connections) override;
  HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD aspect, DWORD* status) override;
  HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

  // IOleWindow, IOleInPlaceObject, IOleInPlaceActiveObject
  HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
  HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override;
  HRESULT STDMETHODCALLTYPE UIDeactivate() override;
  HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT place, LPCRECT clip) override;
  HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG message) override;
  HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }

  // IOleControl
  HRESULT STDMETHODCALLTYPE GetControlInfo(CONTROLINFO* info) override;
  HRESULT STDMETHODCALLTYPE OnMnemonic(LPMSG message) override;
  HRESULT STDMETHODCALLTYPE OnAmbientPropertyChange(DISPID property) override;
  HRESULT STDMETHODCALLTYPE FreezeEvents(BOOL) override { return S_OK; }

  // IPersistStreamInit: nothing of the control is kept.
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override { return GetUserClassID(id); }
  HRESULT STDMETHODCALLTYPE IsDirty() override { return S_FALSE; }
  HRESULT STDMETHODCALLTYPE Load(IStream*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override;
  HRESULT STDMETHODCALLTYPE InitNew() override { return S_OK; }

  // IViewObject2
  HRESULT STDMETHODCALLTYPE Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC device, LPCRECTL place,
                                 LPCRECTL, BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) override;
  HRESULT STDMETHODCALLTYPE GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Freeze(DWORD, LONG, void*, DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Unfreeze(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
  HRESULT STDMETHODCALLTYPE GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
  HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) override {
    return GetExtent(aspect, size);
  }

  // IProvideClassInfo2
  HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* id) override;

 private:
  void OfferBases(REFIID id, void** result) override;
  void LetGo() override;
  void RunForUser(const std::function<void()>& step) override;
  void FocusEntered() override;

  HRESULT Tried(const std::function<HRESULT()>& step);
  HRESULT Activate(HWND parent, LPCRECT place);
  HRESULT EnterContainer();
  void ActivateKeyboard();
  void DeactivateKeyboard();
  void Deactivate();
  void LeaveContainer();
  LOGFONTW ContainersFont() const;

  ComPtr<IOleClientSite> site_;
  ComPtr<IOleAdviseHolder> sinks_;
  ComPtr<IAdviseSink> viewSink_;
  DWORD viewAspects_ = 0;
  DWORD viewFlags_ = 0;
  SIZEL size_ = {};  // in hundredths of a millimetre, none before the container gives one

  // While it is active in place:
  ComPtr<IOleInPlaceSite> place_;
  ComPtr<IOleInPlaceFrame> frame_;
  ComPtr<IOleInPlaceUIWindow> document_;
  std::shared_ptr<FormWindow> form_;
  HACCEL mnemonics_ = nullptr;
  bool hasKeyboard_ = false;
};

}  // namespace vorlent::com
