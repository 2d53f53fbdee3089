// A container of the wizard for real keys and clicks: its pages one by one, and then the command in a file.
//
//   container COMMAND-FILE
//
// The server lies beside it. The host has two Locations and one folder to browse.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "Component/Com/ControlContainer.h"
#include "Component/Com/ScriptedHost.h"
#include "Component/Com/ServerFile.h"
#include "VorlentMozilla.h"

namespace vorlent::com {
namespace {

constexpr wchar_t kWindowClass[] = L"Container";
constexpr int kButtonHeight = 26;
constexpr int kButtonWidth = 100;
constexpr int kMargin = 10;
constexpr LONG kBand = kButtonHeight + 2 * kMargin;

class Window {
 public:
  explicit Window(std::string commandFile) : commandFile_(std::move(commandFile)), container_(MakeWindow()) {
    container_.Reserve(kBand);
    back_ = MakeButton(L"< &Zur\u00FCck");
    next_ = MakeButton(L"&Weiter >");
    LayOut();
  }

  int Run() {
    Open();
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
      if (message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST && container_.Translate(message))
        continue;
      if (IsDialogMessageW(window_, &message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    container_.Leave();
    wizard_.Reset();
    return server_.CanUnloadNow() == S_OK ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  HWND MakeWindow() {
    WNDCLASSEXW known = {};
    known.cbSize = sizeof(known);
    known.lpfnWndProc = Procedure;
    known.hInstance = GetModuleHandleW(nullptr);
    known.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    known.lpszClassName = kWindowClass;
    RegisterClassExW(&known);
    window_ = CreateWindowExW(WS_EX_CONTROLPARENT, kWindowClass, L"Import Thunderbird Mails",
                              WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 20, 20, 700, 460, nullptr, nullptr,
                              known.hInstance, this);
    return window_;
  }
  HWND MakeButton(const wchar_t* text) const {
    const HWND made = CreateWindowExW(0, L"BUTTON", text, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0,
                                      kButtonWidth, kButtonHeight, window_, nullptr, nullptr, nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), TRUE);
    return made;
  }

  void Open() {
    ComPtr<IClassFactory> factory;
    Check(server_.GetClassObject(__uuidof(::WizardImport), IID_IClassFactory,
                                 reinterpret_cast<void**>(factory.GetAddressOf())));
    Check(factory->CreateInstance(nullptr, __uuidof(_WizardImport),
                                  reinterpret_cast<void**>(wizard_.GetAddressOf())));
    container_.Embed(wizard_.Get());
    ShowWindow(window_, SW_SHOW);
    GoTo(1);
  }
  void GoTo(SHORT page) {
    page_ = page;
    Check(wizard_->ShowPage(&page));
    Check(container_.Do(OLEIVERB_UIACTIVATE));
    EnableWindow(back_, page > 1);
    SetWindowTextW(next_, page < 4 ? L"&Weiter >" : L"&Fertig stellen");
  }
  void GoOn() {
    if (page_ < 4) return GoTo(static_cast<SHORT>(page_ + 1));
    VARIANT_BOOL mayEnd = VARIANT_FALSE;
    Check(wizard_->Finish(&mayEnd));
    if (mayEnd == VARIANT_FALSE) return;
    BSTR command = nullptr;
    Check(wizard_->get_Parameter(&command));
    std::ofstream(commandFile_, std::ios::binary) << TextOf(command);
    SysFreeString(command);
    PostQuitMessage(0);
  }

  void LayOut() {
    RECT inner = {};
    GetClientRect(window_, &inner);
    const int top = inner.bottom - kButtonHeight - kMargin;
    MoveWindow(back_, inner.right - 2 * (kButtonWidth + kMargin), top, kButtonWidth, kButtonHeight, TRUE);
    MoveWindow(next_, inner.right - kButtonWidth - kMargin, top, kButtonWidth, kButtonHeight, TRUE);
    container_.Fit();
  }

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE)
      SetWindowLongPtrW(window, GWLP_USERDATA,
                        reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
    auto* const own = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (own != nullptr && own->next_ != nullptr) {
      const auto sender = reinterpret_cast<HWND>(lParam);
      if (message == WM_COMMAND && sender == own->back_) own->GoTo(static_cast<SHORT>(own->page_ - 1));
      // Enter in the control is the next page.
      const bool isEnter = LOWORD(wParam) == IDOK && sender == nullptr;
      if (message == WM_COMMAND && (sender == own->next_ || isEnter)) own->GoOn();
      if (message == WM_SIZE) own->LayOut();
      if (message == WM_CLOSE) PostQuitMessage(0);
    }
    return DefWindowProcW(window, message, wParam, lParam);
  }

  std::string commandFile_;
  SHORT page_ = 0;
  LoadedServer server_;
  ScriptedHost host_{"C:\\temp\\"};
  HWND window_ = nullptr;
  ControlContainer container_;
  HWND back_ = nullptr;
  HWND next_ = nullptr;
  ComPtr<_WizardImport> wizard_;
};

}  // namespace
}  // namespace vorlent::com

int main(int count, char** arguments) {
  if (count != 2) return EXIT_FAILURE;
  const vorlent::com::Apartment apartment;
  vorlent::com::Window window(arguments[1]);
  return window.Run();
}
