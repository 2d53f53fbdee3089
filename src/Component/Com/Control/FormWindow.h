// The four pages of the wizard in a window of the system's controls.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Component/Com/Control/SheetWindow.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// To whom a form's window belongs.
class FormOwner {
 public:
  // Runs something the user did, and tells the user of its failure. Nothing is raised.
  virtual void RunForUser(const std::function<void()>& step) = 0;
  // One of the form's controls has the focus now.
  virtual void FocusEntered() = 0;

 protected:
  ~FormOwner() = default;
};

// Shows every control of the form as one of the system's, and passes on what the user does. The window's
// size is the form's: a change runs its layout. Colours are the system's alone: high
// contrast is kept.
class FormWindow : public std::enable_shared_from_this<FormWindow> {
 public:
  // A child of that window; raises a Failure if the system makes none.
  static std::shared_ptr<FormWindow> Open(FormOwner& owner, std::shared_ptr<WizardImport> wizard, HWND parent,
                                          const RECT& place, const LOGFONTW& font);

  FormWindow(FormOwner& owner, std::shared_ptr<WizardImport> wizard);
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;
  ~FormWindow();

  // Takes the window away. Its container may have done so before.
  void Close();
  // Null once it is closed.
  HWND Window() const { return window_; }
  void SetFont(const LOGFONTW& font);

  bool HasFocus() const;
  // Puts the focus on the first or the last control of the page that is shown.
  void FocusFirst();
  void FocusLast();

  // Takes a key that moves inside the form; false for one that it has no use for, which a tab key is where it
  // leads out of the form.
  bool TakeKey(MSG& message);
  // The letters that lead to a control of the page that is shown, in lower case.
  std::wstring Mnemonics() const;
  // As the user's press of that letter with Alt.
  void PressMnemonic(wchar_t letter);

 private:
  struct Shown {
    Control* control;
    HWND window;
    std::wstring caption;  // with its mnemonic
    bool isCaptionFixed;   // it is the form's, not told by the wizard as it goes
    std::shared_ptr<SheetWindow> sheet;
  };

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void Commanded(HWND window, WORD code);
  LRESULT Notified(const NMHDR& told);
  void Run(const std::function<void()>& step);
  void SyncSheets();
  void Forget();

  void AddAll();
  HWND Make(const Control& control, HWND page);
  void ConnectControls();
  void SetMnemonics();
  std::wstring WithMnemonic(const Control& control);
  const Shown* ShownAs(HWND window) const;

  void LayOut();
  void Update(const Shown& shown);
  void UpdateList(const Shown& shown) const;
  static void UpdateLabel(const Shown& shown);
  int RowHeight(const Sheet& sheet) const;
  void Place(const Shown& shown);
  void PlaceList(HWND window, const RECT& place) const;
  SIZE CaptionSize(const Shown& shown) const;

  std::vector<HWND> TabStops() const;
  bool MoveByTab(bool backwards);
  bool MoveByArrow(WPARAM key);
  static void Focus(HWND window);

  FormOwner& owner_;
  std::shared_ptr<WizardImport> wizard_;
  HWND window_ = nullptr;
  HFONT font_ = nullptr;
  std::map<std::int16_t, std::wstring> taken_;  // mnemonics by page
  std::vector<Shown> shown_;
};

}  // namespace vorlent::com
