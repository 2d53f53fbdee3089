#include "Component/Com/Control/WizardControlFace.h"

#include "Component/Com/Control/ControlStatus.h"
#include "Component/Com/Control/Scale.h"

namespace vorlent::com {

HRESULT WizardControlFace::Tried(const std::function<HRESULT()>& step) {
  HRESULT status = S_OK;
  const HRESULT done = Do([&] { status = step(); });
  return FAILED(done) ? done : status;
}

void WizardControlFace::OfferBases(REFIID id, void** result) {
  Face::OfferBases(id, result);
  if (IsEqualIID(id, IID_IOleWindow)) *result = static_cast<IOleInPlaceObject*>(this);
  if (IsEqualIID(id, IID_IPersist)) *result = static_cast<IPersistStreamInit*>(this);
  if (IsEqualIID(id, IID_IViewObject)) *result = static_cast<IViewObject2*>(this);
  if (IsEqualIID(id, IID_IProvideClassInfo)) *result = static_cast<IProvideClassInfo2*>(this);
}

void WizardControlFace::LetGo() {
  LeaveContainer();
  Face::LetGo();
}

// --- The wizard -----------------------------------------------------------------------------------------

HRESULT WizardControlFace::get_Pages(SHORT* result) {
  return Do([&] { At(result) = Native().Pages(); });
}

HRESULT WizardControlFace::put_Pages(SHORT rhs) {
  return Do([&] { Native().SetPages(rhs); });
}

// The focus goes to the new page if it was on the one before.
HRESULT WizardControlFace::ShowPage(SHORT* page) {
  return Do([&] {
    const bool hadFocus = form_ != nullptr && form_->HasFocus();
    Native().ShowPage(At(page));
    if (form_ == nullptr) return;
    if (hadFocus) form_->FocusFirst();
    ComPtr<IOleControlSite> control;
    if (site_ != nullptr && SUCCEEDED(site_.As(&control))) control->OnControlInfoChanged();
  });
}

HRESULT WizardControlFace::get_Parameter(BSTR* result) {
  return Do([&] { Give(Native().Parameter(), result); });
}

HRESULT WizardControlFace::put_Parameter(BSTR rhs) {
  return Do([&] { Native().SetParameter(TextOf(rhs)); });
}

HRESULT WizardControlFace::Finish(VARIANT_BOOL* result) {
  return Do([&] { Give(Native().Finish(), result); });
}

HRESULT WizardControlFace::AddSubQueries(BSTR* qry, LONG pos, SHORT* ind, SHORT* cb, VARIANT_BOOL* result) {
  return Do([&] { Give(Native().AddSubQueries(Given(qry), pos, At(ind), At(cb)), result); });
}

// --- What a container asks for --------------------------------------------------------------------------

HRESULT WizardControlFace::SetClientSite(IOleClientSite* site) {
  return Do([&] {
    if (site == nullptr) Deactivate();
    site_ = site;
  });
}

HRESULT WizardControlFace::GetClientSite(IOleClientSite** site) {
  return Do([&] { site_.CopyTo(&At(site)); });
}

HRESULT WizardControlFace::GetMoniker(DWORD, DWORD, IMoniker** moniker) {
  if (moniker != nullptr) *moniker = nullptr;
  return E_NOTIMPL;
}

HRESULT WizardControlFace::GetClipboardData(DWORD, IDataObject** data) {
  if (data != nullptr) *data = nullptr;
  return E_NOTIMPL;
}

HRESULT WizardControlFace::EnumVerbs(IEnumOLEVERB** verbs) {
  return verbs == nullptr ? E_POINTER : OleRegEnumVerbs(__uuidof(::WizardImport), verbs);
}

HRESULT WizardControlFace::GetUserClassID(CLSID* id) {
  return Do([&] { At(id) = __uuidof(::WizardImport); });
}

HRESULT WizardControlFace::GetUserType(DWORD form, LPOLESTR* name) {
  return name == nullptr ? E_POINTER : OleRegGetUserType(__uuidof(::WizardImport), form, name);
}

HRESULT WizardControlFace::SetExtent(DWORD aspect, SIZEL* size) {
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  return Do([&] { size_ = At(size); });
}

// As large as designed until the container gives another size.
HRESULT WizardControlFace::GetExtent(DWORD aspect, SIZEL* size) {
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  return Do([&] {
    const Box page = Native().Form().Get<Control>("Picture1").Bounds();
    const SIZEL designed = {ToHimetric(page.width), ToHimetric(kPageTop + page.height)};
    At(size) = size_.cx == 0 && size_.cy == 0 ? designed : size_;
  });
}

HRESULT WizardControlFace::Advise(IAdviseSink* sink, DWORD* connection) {
  return Do([&] {
    if (sinks_ == nullptr) Check(CreateOleAdviseHolder(&sinks_));
    Check(sinks_->Advise(sink, &At(connection)));
  });
}

HRESULT WizardControlFace::Unadvise(DWORD connection) {
  return sinks_ == nullptr ? OLE_E_NOCONNECTION : sinks_->Unadvise(connection);
}

HRESULT WizardControlFace::EnumAdvise(IEnumSTATDATA** connections) {
  if (connections == nullptr) return E_POINTER;
  *connections = nullptr;
  return sinks_ == nullptr ? S_OK : sinks_->EnumAdvise(connections);
}

HRESULT WizardControlFace::GetMiscStatus(DWORD aspect, DWORD* status) {
  return Do([&] { At(status) = aspect == DVASPECT_CONTENT ? kControlStatus : 0; });
}

HRESULT WizardControlFace::GetSizeMax(ULARGE_INTEGER* size) {
  return Do([&] { At(size).QuadPart = 0; });
}

// --- How it looks where it isn't active -----------------------------------------------------------------

HRESULT WizardControlFace::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC device, LPCRECTL place,
                                LPCRECTL, BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  return Do([&] {
    const RECTL& given = At(place);
    const RECT whole = {given.left, given.top, given.right, given.bottom};
    FillRect(device, &whole, GetSysColorBrush(COLOR_BTNFACE));
    if (form_ == nullptr) return;
    POINT origin = {};
    OffsetViewportOrgEx(device, whole.left, whole.top, &origin);
    SendMessageW(form_->Window(), WM_PRINT, reinterpret_cast<WPARAM>(device),
                 PRF_CHILDREN | PRF_CLIENT | PRF_NONCLIENT | PRF_ERASEBKGND);
    SetViewportOrgEx(device, origin.x, origin.y, nullptr);
  });
}

HRESULT WizardControlFace::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
  return Do([&] {
    viewSink_ = sink;
    viewAspects_ = aspects;
    viewFlags_ = flags;
    if (sink != nullptr && (flags & ADVF_PRIMEFIRST) != 0) sink->OnViewChange(DVASPECT_CONTENT, -1);
    if ((flags & ADVF_ONLYONCE) != 0) viewSink_ = nullptr;
  });
}

HRESULT WizardControlFace::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
  if (aspects != nullptr) *aspects = viewAspects_;
  if (flags != nullptr) *flags = viewFlags_;
  return sink == nullptr ? S_OK : viewSink_.CopyTo(sink);
}

// --- Its description ------------------------------------------------------------------------------------

HRESULT WizardControlFace::GetClassInfo(ITypeInfo** info) {
  return Do([&] {
    At(info) = nullptr;
    Check(Module::Current().TypeLibrary().GetTypeInfoOfGuid(__uuidof(::WizardImport), info));
  });
}

HRESULT WizardControlFace::GetGUID(DWORD kind, GUID* id) {
  if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
  return Do([&] { At(id) = __uuidof(__WizardImport); });
}

}  // namespace vorlent::com
