// The keyboard of the form.
#include <algorithm>
#include <cwctype>

#include "Component/Com/Control/FormWindow.h"

namespace vorlent::com {

namespace {

bool IsPressed(int key) {
  return (GetKeyState(key) & 0x8000) != 0;
}

bool IsMultiLine(HWND window) {
  wchar_t name[8] = {};
  GetClassNameW(window, name, 8);
  return lstrcmpiW(name, L"EDIT") == 0 && (GetWindowLongPtrW(window, GWL_STYLE) & ES_MULTILINE) != 0;
}

}  // namespace

bool FormWindow::HasFocus() const {
  const HWND focus = GetFocus();
  return focus != nullptr && window_ != nullptr && (focus == window_ || IsChild(window_, focus));
}

// A text is selected whole where the keyboard leads to it.
void FormWindow::Focus(HWND window) {
  SetFocus(window);
  if ((SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0 && !IsMultiLine(window))
    SendMessageW(window, EM_SETSEL, 0, -1);
}

std::vector<HWND> FormWindow::TabStops() const {
  std::vector<HWND> stops;
  for (const Shown& shown : shown_) {
    const bool isStop = (GetWindowLongPtrW(shown.window, GWL_STYLE) & WS_TABSTOP) != 0;
    if (isStop && IsWindowVisible(shown.window) && IsWindowEnabled(shown.window))
      stops.push_back(shown.window);
  }
  return stops;
}

void FormWindow::FocusFirst() {
  const std::vector<HWND> stops = TabStops();
  if (!stops.empty()) Focus(stops.front());
}

void FormWindow::FocusLast() {
  const std::vector<HWND> stops = TabStops();
  if (!stops.empty()) Focus(stops.back());
}

bool FormWindow::MoveByTab(bool backwards) {
  const std::vector<HWND> stops = TabStops();
  const auto at = std::find(stops.begin(), stops.end(), GetFocus());
  if (at == stops.end() || (backwards ? at == stops.begin() : at + 1 == stops.end())) return false;
  Focus(backwards ? *(at - 1) : *(at + 1));
  return true;
}

// Between option buttons, which picks the other one; of each group there are two.
bool FormWindow::MoveByArrow(WPARAM key) {
  const Shown* const focused = ShownAs(GetFocus());
  if (focused == nullptr || focused->control->Kind() != ControlKind::OptionButton) return false;
  if (key != VK_UP && key != VK_DOWN && key != VK_LEFT && key != VK_RIGHT) return false;
  for (const Shown& shown : shown_) {
    if (&shown == focused || shown.control->Kind() != ControlKind::OptionButton ||
        shown.control->Page() != focused->control->Page())
      continue;
    const HWND next = shown.window;
    Run([&] { dynamic_cast<OptionButton&>(*shown.control).UserPicks(); });
    SetFocus(next);
    return true;
  }
  return false;
}

bool FormWindow::TakeKey(MSG& message) {
  if (!HasFocus()) return false;
  if (message.message == WM_SYSCHAR) {
    const auto letter = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(message.wParam)));
    if (Mnemonics().find(letter) == std::wstring::npos) return false;
    PressMnemonic(letter);
    return true;
  }
  if (message.message != WM_KEYDOWN) return false;
  const HWND focus = GetFocus();
  if (message.wParam == VK_TAB) return !IsPressed(VK_CONTROL) && MoveByTab(IsPressed(VK_SHIFT));
  if (message.wParam != VK_RETURN) return MoveByArrow(message.wParam);
  // Enter is the container's, but where it is a line's end, a press or a choice.
  const Shown* const focused = ShownAs(focus);
  const bool isButton = focused != nullptr && focused->control->Kind() == ControlKind::Button;
  if (isButton) SendMessageW(focus, BM_CLICK, 0, 0);
  const bool isOpenList = focused != nullptr && focused->control->Kind() == ControlKind::DropDown &&
                          SendMessageW(focus, CB_GETDROPPEDSTATE, 0, 0) != 0;
  if (!IsMultiLine(focus) && !isOpenList) return isButton;
  TranslateMessage(&message);
  DispatchMessageW(&message);
  return true;
}

std::wstring FormWindow::Mnemonics() const {
  for (const Shown& shown : shown_) {
    if (shown.control->Kind() != ControlKind::Page || !shown.control->Visible()) continue;
    const auto found = taken_.find(shown.control->Page());
    return found == taken_.end() ? std::wstring() : found->second;
  }
  return {};
}

// A button is pressed, an option or a box set; a label leads on.
void FormWindow::PressMnemonic(wchar_t letter) {
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const std::size_t mark = shown_[i].caption.find(L'&');
    if (mark == std::wstring::npos || !IsWindowVisible(shown_[i].window)) continue;
    if (static_cast<wchar_t>(std::towlower(shown_[i].caption[mark + 1])) != letter) continue;
    if (shown_[i].control->Kind() != ControlKind::Label) {
      SetFocus(shown_[i].window);
      SendMessageW(shown_[i].window, BM_CLICK, 0, 0);
    } else if (i + 1 < shown_.size()) {
      const auto* const option = dynamic_cast<const OptionButton*>(shown_[i + 1].control);
      if (option == nullptr || option->IsSet()) {
        Focus(shown_[i + 1].window);
      } else {
        FocusFirst();
      }
    }
    return;
  }
}

}  // namespace vorlent::com
