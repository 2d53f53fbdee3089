// The control in its place: how it gets there, what it does with the keyboard, and how it leaves.
#include <cwctype>
#include <string>
#include <utility>
#include <vector>

#include "Component/Com/Control/Scale.h"
#include "Component/Com/Control/WizardControlFace.h"

namespace vorlent::com {

namespace {

constexpr int kPointSize = 8;  // the font for which the form was drawn
constexpr int kPointsPerInch = 72;

DWORD KeyModifiers() {
  const auto isPressed = [](int key) { return (GetKeyState(key) & 0x8000) != 0; };
  return (isPressed(VK_SHIFT) ? 1U : 0U) | (isPressed(VK_CONTROL) ? 2U : 0U) | (isPressed(VK_MENU) ? 4U : 0U);
}

LOGFONTW OwnFont() {
  LOGFONTW font = {};
  GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
  font.lfHeight = -MulDiv(kPointSize, DpiOf(nullptr), kPointsPerInch);
  return font;
}

}  // namespace

// --- Into the container ---------------------------------------------------------------------------------

HRESULT WizardControlFace::DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG, HWND parent,
                                  LPCRECT place) {
  return Tried([&]() -> HRESULT {
    if (site_ == nullptr) site_ = site;
    if (verb == OLEIVERB_HIDE) {
      DeactivateKeyboard();
      if (form_ != nullptr) ShowWindow(form_->Window(), SW_HIDE);
      return S_OK;
    }
    if (verb == OLEIVERB_DISCARDUNDOSTATE) return S_OK;
    if (verb != OLEIVERB_PRIMARY && verb != OLEIVERB_SHOW && verb != OLEIVERB_INPLACEACTIVATE &&
        verb != OLEIVERB_UIACTIVATE)
      return verb > 0 ? OLEOBJ_S_INVALIDVERB : E_NOTIMPL;
    const HRESULT activated = Activate(parent, place);
    if (FAILED(activated) || verb == OLEIVERB_INPLACEACTIVATE) return activated;
    const bool comesBackwards = message != nullptr && message->message == WM_KEYDOWN &&
                                message->wParam == VK_TAB && (KeyModifiers() & 1U) != 0;
    if (comesBackwards) {
      form_->FocusLast();
    } else if (!form_->HasFocus()) {
      form_->FocusFirst();
    }
    ActivateKeyboard();
    return S_OK;
  });
}

// Fills place_, frame_ and document_ from the container, which may say no.
HRESULT WizardControlFace::EnterContainer() {
  ComPtr<IOleInPlaceSite> place;
  if (site_ == nullptr || FAILED(site_.As(&place))) return E_FAIL;
  if (place->CanInPlaceActivate() != S_OK) return E_FAIL;
  const HRESULT entered = place->OnInPlaceActivate();
  if (FAILED(entered)) return entered;
  place_ = place;
  return S_OK;
}

HRESULT WizardControlFace::Activate(HWND parent, LPCRECT place) {
  if (form_ != nullptr) {
    ShowWindow(form_->Window(), SW_SHOWNA);
    return S_OK;
  }
  const HRESULT entered = EnterContainer();
  if (FAILED(entered)) return entered;
  RECT position = place == nullptr ? RECT{} : *place;
  RECT clip = position;
  OLEINPLACEFRAMEINFO info = {};
  info.cb = sizeof(info);
  HWND container = parent;
  place_->GetWindow(&container);
  place_->GetWindowContext(&frame_, &document_, &position, &clip, &info);
  try {
    form_ = FormWindow::Open(*this, Shared(), container == nullptr ? parent : container, position,
                             ContainersFont());
  } catch (const std::exception&) {
    Deactivate();
    throw;
  }
  SetObjectRects(&position, &clip);
  ShowWindow(form_->Window(), SW_SHOWNA);
  if (site_ != nullptr) site_->ShowObject();
  return S_OK;
}

// Is told by each of its controls that gets the focus.
void WizardControlFace::FocusEntered() {
  Do([&] { ActivateKeyboard(); });
}

void WizardControlFace::ActivateKeyboard() {
  if (place_ == nullptr || std::exchange(hasKeyboard_, true)) return;
  place_->OnUIActivate();
  if (frame_ != nullptr) frame_->SetActiveObject(this, L"WizardImport");
  if (document_ != nullptr) document_->SetActiveObject(this, L"WizardImport");
  // The control has no bars of its own.
  if (frame_ != nullptr) frame_->SetBorderSpace(nullptr);
  ComPtr<IOleControlSite> control;
  if (site_ != nullptr && SUCCEEDED(site_.As(&control))) control->OnFocus(TRUE);
}

// --- In its place ---------------------------------------------------------------------------------------

HRESULT WizardControlFace::GetWindow(HWND* window) {
  return Tried([&]() -> HRESULT {
    At(window) = form_ == nullptr ? nullptr : form_->Window();
    return *window == nullptr ? E_FAIL : S_OK;
  });
}

HRESULT WizardControlFace::SetObjectRects(LPCRECT place, LPCRECT clip) {
  return Do([&] {
    if (form_ == nullptr) return;
    const RECT& whole = At(place);
    RECT seen = whole;
    const bool isSeen = clip == nullptr || IntersectRect(&seen, &whole, clip) != 0;
    HRGN region = nullptr;  // all of it
    if (!EqualRect(&seen, &whole)) {
      OffsetRect(&seen, -whole.left, -whole.top);
      region = isSeen ? CreateRectRgnIndirect(&seen) : CreateRectRgn(0, 0, 0, 0);
    }
    SetWindowRgn(form_->Window(), region, TRUE);
    SetWindowPos(form_->Window(), nullptr, whole.left, whole.top, whole.right - whole.left,
                 whole.bottom - whole.top, SWP_NOZORDER | SWP_NOACTIVATE);
  });
}

// A tab key that leads out of the form is the container's; if it has no use for it, the form begins anew.
HRESULT WizardControlFace::TranslateAccelerator(LPMSG message) {
  return Tried([&]() -> HRESULT {
    MSG& key = At(message);
    const std::shared_ptr<FormWindow> form = form_;
    if (form == nullptr) return S_FALSE;
    if (form->TakeKey(key)) return S_OK;
    ComPtr<IOleControlSite> control;
    if (site_ != nullptr && SUCCEEDED(site_.As(&control)) &&
        control->TranslateAccelerator(message, KeyModifiers()) == S_OK)
      return S_OK;
    if (key.message != WM_KEYDOWN || key.wParam != VK_TAB || !form->HasFocus()) return S_FALSE;
    if ((KeyModifiers() & 1U) != 0) {
      form->FocusLast();
    } else {
      form->FocusFirst();
    }
    return S_OK;
  });
}

HRESULT WizardControlFace::GetControlInfo(CONTROLINFO* info) {
  return Do([&] {
    if (mnemonics_ != nullptr) DestroyAcceleratorTable(std::exchange(mnemonics_, nullptr));
    std::vector<ACCEL> keys;
    for (const wchar_t letter : form_ == nullptr ? std::wstring() : form_->Mnemonics())
      keys.push_back({FVIRTKEY | FALT, static_cast<WORD>(std::towupper(letter)), 0});
    if (!keys.empty()) mnemonics_ = CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
    At(info).hAccel = mnemonics_;
    info->cAccel = static_cast<USHORT>(keys.size());
    info->dwFlags = 0;
  });
}

HRESULT WizardControlFace::OnMnemonic(LPMSG message) {
  return Do([&] {
    if (form_ == nullptr) return;
    const std::shared_ptr<FormWindow> form = form_;
    form->PressMnemonic(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(At(message).wParam))));
  });
}

HRESULT WizardControlFace::OnAmbientPropertyChange(DISPID property) {
  return Do([&] {
    const bool isFont = property == DISPID_AMBIENT_FONT || property == DISPID_UNKNOWN;
    if (isFont && form_ != nullptr) form_->SetFont(ContainersFont());
  });
}

LOGFONTW WizardControlFace::ContainersFont() const {
  LOGFONTW font = OwnFont();
  ComPtr<IDispatch> ambient;
  if (site_ == nullptr || FAILED(site_.As(&ambient))) return font;
  Value given;
  DISPPARAMS none = {};
  if (FAILED(ambient->Invoke(DISPID_AMBIENT_FONT, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                             given.Place(), nullptr, nullptr)))
    return font;
  ComPtr<IFont> known;
  HFONT handle = nullptr;
  const bool isObject = (given->vt == VT_DISPATCH || given->vt == VT_UNKNOWN) && given->punkVal != nullptr;
  if (isObject &&
      SUCCEEDED(given->punkVal->QueryInterface(IID_IFont, reinterpret_cast<void**>(known.GetAddressOf()))) &&
      SUCCEEDED(known->get_hFont(&handle)))
    GetObjectW(handle, sizeof(font), &font);
  return font;
}

void WizardControlFace::RunForUser(const std::function<void()>& step) {
  const HRESULT status = Do(step);
  if (SUCCEEDED(status) || form_ == nullptr) return;
  const std::wstring told = WideOf(ToldFailure(status).what());
  const ComPtr<IOleInPlaceFrame> frame = frame_;
  if (frame != nullptr) frame->EnableModeless(FALSE);
  MessageBoxW(GetAncestor(form_->Window(), GA_ROOT), told.c_str(), L"Vor-LENT", MB_OK | MB_ICONEXCLAMATION);
  if (frame != nullptr) frame->EnableModeless(TRUE);
}

// --- Out of the container -------------------------------------------------------------------------------

HRESULT WizardControlFace::UIDeactivate() {
  return Do([&] { DeactivateKeyboard(); });
}

HRESULT WizardControlFace::InPlaceDeactivate() {
  return Do([&] { Deactivate(); });
}

HRESULT WizardControlFace::Close(DWORD) {
  return Do([&] {
    if (sinks_ != nullptr) sinks_->SendOnClose();
    LeaveContainer();
  });
}

void WizardControlFace::DeactivateKeyboard() {
  if (!std::exchange(hasKeyboard_, false)) return;
  if (frame_ != nullptr) frame_->SetActiveObject(nullptr, nullptr);
  if (document_ != nullptr) document_->SetActiveObject(nullptr, nullptr);
  if (place_ != nullptr) place_->OnUIDeactivate(FALSE);
  ComPtr<IOleControlSite> control;
  if (site_ != nullptr && SUCCEEDED(site_.As(&control))) control->OnFocus(FALSE);
}

void WizardControlFace::Deactivate() {
  DeactivateKeyboard();
  if (const std::shared_ptr<FormWindow> form = std::exchange(form_, nullptr)) form->Close();
  const ComPtr<IOleInPlaceSite> place = std::exchange(place_, nullptr);
  frame_ = nullptr;
  document_ = nullptr;
  if (place != nullptr) place->OnInPlaceDeactivate();
}

void WizardControlFace::LeaveContainer() {
  Deactivate();
  site_ = nullptr;
  sinks_ = nullptr;
  viewSink_ = nullptr;
  if (mnemonics_ != nullptr) DestroyAcceleratorTable(std::exchange(mnemonics_, nullptr));
}

}  // namespace vorlent::com
