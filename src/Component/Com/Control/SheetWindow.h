// A sheet of the wizard as a tree view with check boxes.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>

#include "Connectors/Mozilla/WizardSheet.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// Shows the rows of a sheet, and passes on what the user does with them. The tree view never changes a tick
// by itself: the sheet does, and is shown.
class SheetWindow {
 public:
  // Runs something the user did, and shows what came of it.
  using UserStep = std::function<void(const std::function<void()>& step)>;

  // `syncLater` is called when rows have changed; Sync is to be called once that is over.
  SheetWindow(Sheet& sheet, HWND parent, UserStep user, std::function<void()> syncLater);
  SheetWindow(const SheetWindow&) = delete;
  SheetWindow& operator=(const SheetWindow&) = delete;
  ~SheetWindow();

  HWND Window() const { return window_; }
  // Shows the rows as they are now.
  void Sync();
  // What the tree view tells its parent. The answer is for the tree view.
  LRESULT Notified(const NMHDR& told);

 private:
  LRESULT Clicked();
  LRESULT KeyPressed(WORD key);
  LRESULT Expanding(const NMTREEVIEWW& told);
  void Toggle(HTREEITEM item);
  SheetRow* RowOf(HTREEITEM item) const;
  void RemoveGone();
  void AddNew();
  HTREEITEM Insert(SheetRow& row, HTREEITEM parent, HTREEITEM after);
  void ShowStates();
  void LoadIcons();

  Sheet& sheet_;
  UserStep user_;
  std::function<void()> syncLater_;
  HWND window_;
  HIMAGELIST icons_ = nullptr;
  std::unordered_map<std::uint64_t, HTREEITEM> items_;  // by the rows' serial numbers
  std::uint64_t shownShape_ = 0;
  HTREEITEM opening_ = nullptr;
  bool isDue_ = true;
  bool isSyncing_ = false;
};

}  // namespace vorlent::com
