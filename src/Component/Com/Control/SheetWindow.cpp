#include "Component/Com/Control/SheetWindow.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Component/Com/Control/Scale.h"
#include "Host/Com/Text.h"
#include "Platform/AtEnd.h"

namespace vorlent::com {

namespace {

constexpr DWORD kTreeStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | TVS_HASBUTTONS | TVS_HASLINES |
                             TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP | TVS_NONEVENHEIGHT;

// The tree view's own images of the check box stand in the order of the states.
UINT StateImage(const SheetRow& row) {
  return INDEXTOSTATEIMAGEMASK(static_cast<UINT>(row.State()));
}

UINT StateOf(HWND tree, HTREEITEM item) {
  TVITEMW shown = {};
  shown.mask = TVIF_STATE | TVIF_HANDLE;
  shown.hItem = item;
  shown.stateMask = static_cast<UINT>(-1);
  SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&shown));
  return shown.state;
}

}  // namespace

SheetWindow::SheetWindow(Sheet& sheet, HWND parent, UserStep user, std::function<void()> syncLater)
    : sheet_(sheet),
      user_(std::move(user)),
      syncLater_(std::move(syncLater)),
      window_(CreateWindowExW(WS_EX_CLIENTEDGE, WC_TREEVIEWW, L"", kTreeStyle, 0, 0, 0, 0, parent, nullptr,
                              nullptr, nullptr)) {
  // Given at the making, the style would come too late for the first rows.
  SetWindowLongPtrW(window_, GWL_STYLE, GetWindowLongPtrW(window_, GWL_STYLE) | TVS_CHECKBOXES);
  LoadIcons();
  sheet_.OnRowsChange = [this] {
    if (!std::exchange(isDue_, true)) syncLater_();
  };
}

SheetWindow::~SheetWindow() {
  sheet_.OnRowsChange = nullptr;
  if (icons_ != nullptr) ImageList_Destroy(icons_);
}

// The icon of a file, as the system shows it.
void SheetWindow::LoadIcons() {
  SHFILEINFOW file = {};
  const int side = GetSystemMetrics(SM_CXSMICON);
  if (SHGetFileInfoW(L"file", FILE_ATTRIBUTE_NORMAL, &file, sizeof(file),
                     SHGFI_ICON | SHGFI_SMALLICON | SHGFI_USEFILEATTRIBUTES) == 0)
    return;
  icons_ = ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, 1, 0);
  ImageList_ReplaceIcon(icons_, -1, file.hIcon);
  DestroyIcon(file.hIcon);
  SendMessageW(window_, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(icons_));
}

// --- What is shown --------------------------------------------------------------------------------------

void SheetWindow::Sync() {
  if (!std::exchange(isDue_, false)) return;
  const AtEnd isSynced([&] { isSyncing_ = false; });
  isSyncing_ = true;
  if (std::exchange(shownShape_, sheet_.Shape()) != sheet_.Shape()) {
    SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
    const AtEnd isDrawn([&] {
      SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
      InvalidateRect(window_, nullptr, TRUE);
    });
    RemoveGone();
    AddNew();
  }
  ShowStates();
}

// What stands below a row goes with it in the tree view.
void SheetWindow::RemoveGone() {
  std::unordered_set<std::uint64_t> living;
  for (std::int32_t position = 1; position <= sheet_.RowCount(); ++position)
    living.insert(sheet_.Row(position).Serial());
  std::unordered_set<HTREEITEM> gone;
  for (const auto& [serial, item] : items_) {
    if (!living.contains(serial)) gone.insert(item);
  }
  std::erase_if(items_, [&](const auto& entry) { return gone.contains(entry.second); });
  std::vector<HTREEITEM> topmost;
  for (const HTREEITEM item : gone) {
    const auto parent = reinterpret_cast<HTREEITEM>(
        SendMessageW(window_, TVM_GETNEXTITEM, TVGN_PARENT, reinterpret_cast<LPARAM>(item)));
    if (!gone.contains(parent)) topmost.push_back(item);
  }
  for (const HTREEITEM item : topmost)
    SendMessageW(window_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item));
}

// Rows that stay keep their order, so that each new one has its place after its neighbour.
void SheetWindow::AddNew() {
  struct Level {
    int indent;
    HTREEITEM item;
  };
  std::vector<Level> path;
  for (std::int32_t position = 1; position <= sheet_.RowCount(); ++position) {
    SheetRow& row = sheet_.Row(position);
    HTREEITEM after = TVI_FIRST;
    while (!path.empty() && path.back().indent >= row.Indent()) {
      after = path.back().item;
      path.pop_back();
    }
    HTREEITEM& item = items_[row.Serial()];
    if (item == nullptr) item = Insert(row, path.empty() ? TVI_ROOT : path.back().item, after);
    path.push_back({row.Indent(), item});
  }
}

HTREEITEM SheetWindow::Insert(SheetRow& row, HTREEITEM parent, HTREEITEM after) {
  std::wstring text = WideOf(row.Text());
  TVINSERTSTRUCTW added = {};
  added.hParent = parent;
  added.hInsertAfter = after;
  added.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
  added.item.pszText = text.data();
  added.item.lParam = reinterpret_cast<LPARAM>(&row);
  added.item.state = StateImage(row);
  added.item.stateMask = TVIS_STATEIMAGEMASK;
  return reinterpret_cast<HTREEITEM>(
      SendMessageW(window_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&added)));
}

void SheetWindow::ShowStates() {
  for (std::int32_t position = 1; position <= sheet_.RowCount(); ++position) {
    const SheetRow& row = sheet_.Row(position);
    const HTREEITEM item = items_[row.Serial()];
    const UINT state = StateOf(window_, item);
    if ((state & TVIS_STATEIMAGEMASK) != StateImage(row)) {
      TVITEMW shown = {};
      shown.mask = TVIF_STATE | TVIF_HANDLE;
      shown.hItem = item;
      shown.state = StateImage(row);
      shown.stateMask = TVIS_STATEIMAGEMASK;
      SendMessageW(window_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&shown));
    }
    // The tree view itself opens the row that the user opens.
    const bool isOpen = (state & TVIS_EXPANDED) != 0;
    if (item != opening_ && row.FirstChild() != nullptr && isOpen != row.Expanded())
      SendMessageW(window_, TVM_EXPAND, row.Expanded() ? TVE_EXPAND : TVE_COLLAPSE,
                   reinterpret_cast<LPARAM>(item));
  }
}

// --- What the user does ---------------------------------------------------------------------------------

SheetRow* SheetWindow::RowOf(HTREEITEM item) const {
  TVITEMW shown = {};
  shown.mask = TVIF_PARAM | TVIF_HANDLE;
  shown.hItem = item;
  SendMessageW(window_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&shown));
  return reinterpret_cast<SheetRow*>(shown.lParam);
}

LRESULT SheetWindow::Notified(const NMHDR& told) {
  if (isSyncing_) return 0;
  switch (told.code) {
    case NM_CLICK:
    case NM_DBLCLK:
      return Clicked();
    case TVN_KEYDOWN:
      return KeyPressed(reinterpret_cast<const NMTVKEYDOWN&>(told).wVKey);
    case TVN_ITEMEXPANDINGW:
      return Expanding(reinterpret_cast<const NMTREEVIEWW&>(told));
    default:
      return 0;
  }
}

LRESULT SheetWindow::Clicked() {
  const DWORD at = GetMessagePos();
  TVHITTESTINFO hit = {};
  hit.pt = {static_cast<short>(LOWORD(at)), static_cast<short>(HIWORD(at))};
  ScreenToClient(window_, &hit.pt);
  const auto item =
      reinterpret_cast<HTREEITEM>(SendMessageW(window_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
  if (item == nullptr || (hit.flags & TVHT_ONITEMSTATEICON) == 0) return 0;
  SendMessageW(window_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
  Toggle(item);
  return 1;
}

LRESULT SheetWindow::KeyPressed(WORD key) {
  if (key != VK_SPACE) return 0;
  const auto item = reinterpret_cast<HTREEITEM>(SendMessageW(window_, TVM_GETNEXTITEM, TVGN_CARET, 0));
  if (item != nullptr) Toggle(item);
  return 1;
}

void SheetWindow::Toggle(HTREEITEM item) {
  user_([&] {
    Sync();
    SheetRow* const row = RowOf(item);
    if (row != nullptr) sheet_.UserTicks(*row, row->IsTicked() ? CheckState::Clear : CheckState::Ticked);
  });
  // A tree view that changes its mark all the same is put right afterwards.
  isDue_ = true;
  syncLater_();
}

// The rows below are there before the tree view opens the row.
LRESULT SheetWindow::Expanding(const NMTREEVIEWW& told) {
  const AtEnd isOpened([&] { opening_ = nullptr; });
  opening_ = told.itemNew.hItem;
  const bool opens =
      (told.action & TVE_TOGGLE) == TVE_EXPAND ||
      ((told.action & TVE_TOGGLE) == TVE_TOGGLE && (StateOf(window_, opening_) & TVIS_EXPANDED) == 0);
  user_([&] {
    Sync();
    SheetRow* const row = RowOf(opening_);
    if (row == nullptr) return;
    if (opens) {
      sheet_.UserOpens(*row);
    } else {
      sheet_.UserCloses(*row);
    }
  });
  return 0;
}

}  // namespace vorlent::com
