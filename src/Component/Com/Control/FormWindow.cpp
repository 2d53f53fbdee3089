#include "Component/Com/Control/FormWindow.h"

#include <algorithm>
#include <cwctype>
#include <utility>

#include "Component/Com/Control/Scale.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"

extern "C" IMAGE_DOS_HEADER __ImageBase;  // the linker's name for where the library lies

namespace vorlent::com {

namespace {

constexpr wchar_t kFormClass[] = L"VorlentMozilla.WizardImport";
constexpr UINT kSyncSheets = WM_APP;
constexpr UINT kScaleChanged = 0x02E3;  // WM_DPICHANGED_AFTERPARENT, which older headers lack

HINSTANCE OwnInstance() {
  return reinterpret_cast<HINSTANCE>(&__ImageBase);
}

// The class is known while there are forms: it would outlive the library otherwise.
int formCount = 0;

void RegisterFormClass(WNDPROC procedure) {
  if (formCount++ > 0) return;
  const INITCOMMONCONTROLSEX used = {sizeof(used), ICC_TREEVIEW_CLASSES | ICC_STANDARD_CLASSES};
  InitCommonControlsEx(&used);
  WNDCLASSEXW form = {};
  form.cbSize = sizeof(form);
  form.lpfnWndProc = procedure;
  form.hInstance = OwnInstance();
  form.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // the arrow
  form.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  form.lpszClassName = kFormClass;
  RegisterClassExW(&form);
}

void UnregisterFormClass() {
  if (--formCount == 0) UnregisterClassW(kFormClass, OwnInstance());
}

std::wstring TextIn(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)), L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1)));
  return text;
}

void SetStyle(HWND window, LONG_PTR style, bool isSet) {
  const LONG_PTR old = GetWindowLongPtrW(window, GWL_STYLE);
  SetWindowLongPtrW(window, GWL_STYLE, isSet ? old | style : old & ~style);
}

std::wstring WithoutMarks(const std::wstring& caption) {
  std::wstring marked;
  for (const wchar_t letter : caption)
    marked += letter == L'&' ? std::wstring(L"&&") : std::wstring(1, letter);
  return marked;
}

struct Look {
  const wchar_t* windowClass;
  DWORD style;
  DWORD extended;
};

Look LookOf(const Control& control) {
  switch (control.Kind()) {
    case ControlKind::Page:
      return {kFormClass, WS_CLIPCHILDREN, WS_EX_CONTROLPARENT};
    case ControlKind::OptionButton:
      return {L"BUTTON", BS_RADIOBUTTON | BS_NOTIFY, 0};
    case ControlKind::CheckBox:
      return {L"BUTTON", BS_CHECKBOX | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlKind::Button:
      return {L"BUTTON", BS_PUSHBUTTON | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlKind::DropDown:
      return {L"COMBOBOX", CBS_DROPDOWNLIST | CBS_HASSTRINGS | WS_VSCROLL | WS_TABSTOP, 0};
    case ControlKind::TextBox:
      if (dynamic_cast<const TextBox&>(control).MultiLine)
        return {L"EDIT",
                ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | ES_AUTOHSCROLL | WS_VSCROLL | WS_TABSTOP,
                WS_EX_CLIENTEDGE};
      return {L"EDIT", ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE};
    case ControlKind::Label:
    case ControlKind::Sheet:
      break;
  }
  // What a label has room for beyond its text belongs to the controls under it.
  return {L"STATIC", SS_LEFTNOWORDWRAP, WS_EX_TRANSPARENT};
}

}  // namespace

// --- Life -----------------------------------------------------------------------------------------------

FormWindow::FormWindow(FormOwner& owner, std::shared_ptr<WizardImport> wizard)
    : owner_(owner), wizard_(std::move(wizard)) {
  RegisterFormClass(Procedure);
}

FormWindow::~FormWindow() {
  Close();
  if (font_ != nullptr) DeleteObject(font_);
  UnregisterFormClass();
}

std::shared_ptr<FormWindow> FormWindow::Open(FormOwner& owner, std::shared_ptr<WizardImport> wizard,
                                             HWND parent, const RECT& place, const LOGFONTW& font) {
  auto form = std::make_shared<FormWindow>(owner, std::move(wizard));
  form->window_ =
      CreateWindowExW(WS_EX_CONTROLPARENT, kFormClass, L"", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS,
                      place.left, place.top, place.right - place.left, place.bottom - place.top, parent,
                      nullptr, OwnInstance(), form.get());
  if (form->window_ == nullptr) throw FailureOf(HRESULT_FROM_WIN32(GetLastError()), {});
  form->AddAll();
  form->SetMnemonics();
  form->ConnectControls();
  form->SetFont(font);
  form->SyncSheets();
  form->wizard_->SetWindow(static_cast<std::int32_t>(reinterpret_cast<INT_PTR>(form->window_)));
  return form;
}

void FormWindow::Close() {
  if (window_ == nullptr) return;
  const HWND window = window_;
  Forget();
  DestroyWindow(window);
}

void FormWindow::Forget() {
  for (const Shown& shown : shown_)
    shown.control->OnChange = nullptr;
  shown_.clear();
  window_ = nullptr;
  wizard_->SetWindow(0);
}

// --- Messages -------------------------------------------------------------------------------------------

LRESULT CALLBACK FormWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    const auto* const made = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made->lpCreateParams));
  }
  auto* const form = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_NCDESTROY) SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  // What runs may close the form.
  const std::shared_ptr<FormWindow> held = form == nullptr ? nullptr : form->weak_from_this().lock();
  if (held != nullptr && held->window_ != nullptr) {
    if (const auto answer = held->Answer(window, message, wParam, lParam)) return *answer;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

std::optional<LRESULT> FormWindow::Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
      Commanded(reinterpret_cast<HWND>(lParam), HIWORD(wParam));
      return 0;
    case WM_NOTIFY:
      return Notified(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_CTLCOLORSTATIC: {
      const Shown* const shown = ShownAs(reinterpret_cast<HWND>(lParam));
      if (shown == nullptr || shown->control->Kind() != ControlKind::Label) return std::nullopt;
      SetBkMode(reinterpret_cast<HDC>(wParam), TRANSPARENT);
      SetTextColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_BTNTEXT));
      return reinterpret_cast<LRESULT>(GetStockObject(NULL_BRUSH));
    }
    case WM_SIZE:
    case kScaleChanged:
      if (window == window_) owner_.RunForUser([this] { LayOut(); });
      return 0;
    case WM_SETFOCUS:
      if (window == window_) FocusFirst();
      return 0;
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
      for (const Shown& shown : shown_)
        SendMessageW(shown.window, message, wParam, lParam);
      return 0;
    case kSyncSheets:
      owner_.RunForUser([this] { SyncSheets(); });
      return 0;
    case WM_NCDESTROY:
      if (window == window_) Forget();
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void FormWindow::Run(const std::function<void()>& step) {
  owner_.RunForUser(step);
  // Sheets are shown after a failure, too, unless the step closed the form.
  if (window_ != nullptr) owner_.RunForUser([&] { SyncSheets(); });
}

void FormWindow::SyncSheets() {
  for (const Shown& shown : shown_) {
    if (shown.sheet != nullptr) shown.sheet->Sync();
  }
}

void FormWindow::Commanded(HWND window, WORD code) {
  const Shown* const shown = ShownAs(window);
  if (shown == nullptr) return;
  Control& control = *shown->control;
  switch (control.Kind()) {
    case ControlKind::OptionButton:
      if (code == BN_SETFOCUS) owner_.FocusEntered();
      if (code == BN_CLICKED) Run([&] { dynamic_cast<OptionButton&>(control).UserPicks(); });
      break;
    case ControlKind::CheckBox:
      if (code == BN_SETFOCUS) owner_.FocusEntered();
      if (code == BN_CLICKED) Run([&] { dynamic_cast<CheckBox&>(control).UserToggles(); });
      break;
    case ControlKind::Button:
      if (code == BN_SETFOCUS) owner_.FocusEntered();
      if (code == BN_CLICKED) Run([&] { dynamic_cast<Button&>(control).UserPresses(); });
      break;
    case ControlKind::TextBox:
      if (code == EN_SETFOCUS) owner_.FocusEntered();
      if (code == EN_CHANGE) Run([&] { dynamic_cast<TextBox&>(control).UserTypes(TextOf(TextIn(window))); });
      break;
    case ControlKind::DropDown: {
      if (code == CBN_SETFOCUS) owner_.FocusEntered();
      const auto at = static_cast<std::int32_t>(SendMessageW(window, CB_GETCURSEL, 0, 0));
      if (code == CBN_SELCHANGE) Run([&] { dynamic_cast<DropDown&>(control).UserSelects(at + 1); });
      break;
    }
    default:
      break;
  }
}

LRESULT FormWindow::Notified(const NMHDR& told) {
  const Shown* const shown = ShownAs(told.hwndFrom);
  if (shown == nullptr || shown->sheet == nullptr) return 0;
  const std::shared_ptr<SheetWindow> held = shown->sheet;
  if (told.code == NM_SETFOCUS) owner_.FocusEntered();
  return held->Notified(told);
}

// --- Controls -------------------------------------------------------------------------------------------

void FormWindow::AddAll() {
  HWND page = nullptr;
  for (const auto& control : wizard_->Form().Controls()) {
    // Table and controls stand in the same order.
    const bool isFixed = !WizardControlTable()[shown_.size()].caption.empty();
    Shown shown = {control.get(), nullptr, {}, isFixed, nullptr};
    if (isFixed) shown.caption = WithoutMarks(WideOf(control->Caption()));
    if (control->Kind() == ControlKind::Sheet) {
      const HWND window = window_;
      shown.sheet = std::make_shared<SheetWindow>(
          dynamic_cast<Sheet&>(*control), page, [this](const std::function<void()>& step) { Run(step); },
          [window] { PostMessageW(window, kSyncSheets, 0, 0); });
      shown.window = shown.sheet->Window();
    } else {
      shown.window = Make(*control, control->Kind() == ControlKind::Page ? window_ : page);
    }
    if (control->Kind() == ControlKind::Page) page = shown.window;
    shown_.push_back(std::move(shown));
  }
}

HWND FormWindow::Make(const Control& control, HWND page) {
  const Look look = LookOf(control);
  const HWND made =
      CreateWindowExW(look.extended, look.windowClass, L"", look.style | WS_CHILD | WS_CLIPSIBLINGS, 0, 0, 0,
                      0, page, nullptr, OwnInstance(), control.Kind() == ControlKind::Page ? this : nullptr);
  if (made == nullptr) throw FailureOf(HRESULT_FROM_WIN32(GetLastError()), {});
  return made;
}

void FormWindow::ConnectControls() {
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    shown_[i].control->OnChange = [this, i] { Update(shown_[i]); };
    if (shown_[i].isCaptionFixed) SetWindowTextW(shown_[i].window, shown_[i].caption.c_str());
  }
}

const FormWindow::Shown* FormWindow::ShownAs(HWND window) const {
  const auto found =
      std::find_if(shown_.begin(), shown_.end(), [&](const Shown& shown) { return shown.window == window; });
  return found == shown_.end() ? nullptr : &*found;
}

// A label leads to the control after it; it takes a letter that the controls themselves leave.
void FormWindow::SetMnemonics() {
  for (Shown& shown : shown_) {
    const ControlKind kind = shown.control->Kind();
    if (kind == ControlKind::OptionButton || kind == ControlKind::CheckBox || kind == ControlKind::Button)
      shown.caption = WithMnemonic(*shown.control);
  }
  for (std::size_t i = 0; i + 1 < shown_.size(); ++i) {
    const ControlKind next = shown_[i + 1].control->Kind();
    const bool leads = shown_[i].control->Kind() == ControlKind::Label && shown_[i].isCaptionFixed;
    if (leads && next != ControlKind::Label && next != ControlKind::Page)
      shown_[i].caption = WithMnemonic(*shown_[i].control);
  }
}

std::wstring FormWindow::WithMnemonic(const Control& control) {
  const std::wstring caption = WideOf(control.Caption());
  std::wstring& taken = taken_[control.Page()];
  for (const bool anywhere : {false, true}) {
    for (std::size_t i = 0; i < caption.size(); ++i) {
      const auto letter = static_cast<wchar_t>(std::towlower(caption[i]));
      const bool isStart = i == 0 || std::iswalpha(caption[i - 1]) == 0;
      if (std::iswalpha(letter) == 0 || taken.find(letter) != std::wstring::npos || !(anywhere || isStart))
        continue;
      taken += letter;
      return WithoutMarks(caption.substr(0, i)) + L'&' + WithoutMarks(caption.substr(i));
    }
  }
  return WithoutMarks(caption);
}

// --- What is shown --------------------------------------------------------------------------------------

void FormWindow::SetFont(const LOGFONTW& font) {
  const HFONT made = CreateFontIndirectW(&font);
  for (const Shown& shown : shown_)
    SendMessageW(shown.window, WM_SETFONT, reinterpret_cast<WPARAM>(made), TRUE);
  if (const HFONT old = std::exchange(font_, made)) DeleteObject(old);
  LayOut();
}

void FormWindow::LayOut() {
  RECT inner = {};
  GetClientRect(window_, &inner);
  const int dpi = DpiOf(window_);
  wizard_->Layout(ToTwips(inner.right, dpi), ToTwips(inner.bottom, dpi));
  for (const Shown& shown : shown_)
    Update(shown);
}

void FormWindow::Update(const Shown& shown) {
  const Control& control = *shown.control;
  switch (control.Kind()) {
    case ControlKind::OptionButton: {
      // Of a group the set one takes the tab key.
      const bool isSet = dynamic_cast<const OptionButton&>(control).IsSet();
      SendMessageW(shown.window, BM_SETCHECK, isSet ? BST_CHECKED : BST_UNCHECKED, 0);
      SetStyle(shown.window, WS_TABSTOP, isSet);
      break;
    }
    case ControlKind::CheckBox: {
      const bool isTicked = dynamic_cast<const CheckBox&>(control).IsTicked();
      SendMessageW(shown.window, BM_SETCHECK, isTicked ? BST_CHECKED : BST_UNCHECKED, 0);
      break;
    }
    case ControlKind::TextBox: {
      const std::string& text = dynamic_cast<const TextBox&>(control).Text();
      if (TextOf(TextIn(shown.window)) != text) SetWindowTextW(shown.window, WideOf(text).c_str());
      break;
    }
    case ControlKind::DropDown:
      UpdateList(shown);
      break;
    case ControlKind::Label:
      UpdateLabel(shown);
      break;
    case ControlKind::Sheet:
      SendMessageW(shown.window, TVM_SETITEMHEIGHT,
                   static_cast<WPARAM>(RowHeight(dynamic_cast<const Sheet&>(control))), 0);
      break;
    default:
      break;
  }
  EnableWindow(shown.window, control.Enabled());
  Place(shown);
  const bool wasVisible = (GetWindowLongPtrW(shown.window, GWL_STYLE) & WS_VISIBLE) != 0;
  if (wasVisible != control.Visible()) ShowWindow(shown.window, control.Visible() ? SW_SHOWNA : SW_HIDE);
}

// As the sheet asks for, but never lower than the text.
int FormWindow::RowHeight(const Sheet& sheet) const {
  TEXTMETRICW metrics = {};
  const HDC screen = GetDC(window_);
  const HGDIOBJ before = SelectObject(screen, font_);
  GetTextMetricsW(screen, &metrics);
  SelectObject(screen, before);
  ReleaseDC(window_, screen);
  return std::max(ToPixels(sheet.RowLayout(), DpiOf(window_)), static_cast<int>(metrics.tmHeight) + 2);
}

// A label has no background of its own to draw over the text before.
void FormWindow::UpdateLabel(const Shown& shown) {
  if (shown.isCaptionFixed) return;
  const std::wstring caption = WithoutMarks(WideOf(shown.control->Caption()));
  if (caption == TextIn(shown.window)) return;
  SetWindowTextW(shown.window, caption.c_str());
  RedrawWindow(GetParent(shown.window), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormWindow::UpdateList(const Shown& shown) const {
  const auto& list = dynamic_cast<const DropDown&>(*shown.control);
  for (auto i = static_cast<std::size_t>(SendMessageW(shown.window, CB_GETCOUNT, 0, 0));
       i < list.Entries().size(); ++i)
    SendMessageW(shown.window, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(WideOf(list.Entries()[i]).c_str()));
  SendMessageW(shown.window, CB_SETCURSEL, static_cast<WPARAM>(list.Selected() - 1), 0);
}

// Captions stretch to the right so that they are seen whole in any font.
void FormWindow::Place(const Shown& shown) {
  const Box& box = shown.control->Bounds();
  const int dpi = DpiOf(window_);
  RECT place = {ToPixels(box.left, dpi), ToPixels(box.top, dpi), ToPixels(box.left + box.width, dpi),
                ToPixels(box.top + box.height, dpi)};
  const ControlKind kind = shown.control->Kind();
  if (kind == ControlKind::Label || kind == ControlKind::OptionButton || kind == ControlKind::CheckBox) {
    RECT page = {};
    GetClientRect(GetParent(shown.window), &page);
    const SIZE whole = CaptionSize(shown);
    place.right = std::max(place.right, std::min(place.left + whole.cx, page.right));
    place.bottom = std::max(place.bottom, place.top + whole.cy);
  }
  if (kind == ControlKind::DropDown) return PlaceList(shown.window, place);
  SetWindowPos(shown.window, nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

// The window of a drop-down list has the height of the open list; closed it is as high as its one line.
void FormWindow::PlaceList(HWND window, const RECT& place) const {
  constexpr int kLines = 8;
  const int height = place.bottom - place.top;
  SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left, height * kLines,
               SWP_NOZORDER | SWP_NOACTIVATE);
  // What is set isn't what comes of it on every system, so that a second try may be needed.
  LRESULT line = SendMessageW(window, CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0);
  for (int tries = 0; tries < 2; ++tries) {
    RECT closed = {};
    GetWindowRect(window, &closed);
    const LONG excess = closed.bottom - closed.top - height;
    if (excess == 0 || line <= excess) return;
    line -= excess;
    SendMessageW(window, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), line);
  }
}

SIZE FormWindow::CaptionSize(const Shown& shown) const {
  RECT text = {};
  const std::wstring caption = TextIn(shown.window);
  const HDC screen = GetDC(window_);
  const HGDIOBJ before = SelectObject(screen, font_);
  DrawTextW(screen, caption.c_str(), -1, &text, DT_CALCRECT | DT_LEFT);
  SelectObject(screen, before);
  ReleaseDC(window_, screen);
  // Letters may reach a little beyond what is measured.
  constexpr int kOverhang = 2;
  if (shown.control->Kind() == ControlKind::Label) return {text.right + kOverhang, text.bottom};
  // The mark, and a gap of half a mark before the text.
  const int mark = GetSystemMetrics(SM_CXMENUCHECK);
  return {text.right + mark + mark / 2, text.bottom};
}

}  // namespace vorlent::com
