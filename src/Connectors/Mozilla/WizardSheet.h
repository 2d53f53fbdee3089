// The sheet control: rows drawn as a tree by their indentation, each with a check box and an icon.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/WizardControls.h"

namespace vorlent {

enum class CheckState : std::int16_t { Clear = 1, Ticked = 2 };

class Sheet;

// A row of a sheet. It lives until it is removed.
class SheetRow {
 public:
  const std::string& Text() const { return text_; }
  // Free text of the sheet's owner.
  const std::string& Tag() const { return tag_; }
  const std::string& Icon() const { return icon_; }
  // 0 at the left; a row stands below the nearest row before it that is indented less.
  std::int16_t Indent() const { return indent_; }
  CheckState State() const { return state_; }
  bool IsTicked() const { return state_ == CheckState::Ticked; }
  bool Expanded() const { return expanded_; }
  void SetExpanded(bool expanded);

  // Position from 1.
  std::int32_t Index() const;
  // The first row below it, null without one.
  SheetRow* FirstChild() const;
  // A number that no other row of the sheet has, or had before.
  std::uint64_t Serial() const { return serial_; }

 private:
  friend class Sheet;

  Sheet* sheet_ = nullptr;
  std::uint64_t serial_ = 0;
  std::size_t slot_ = 0;
  std::string text_;
  std::string tag_;
  std::string icon_;
  std::int16_t indent_ = 0;
  CheckState state_ = CheckState::Clear;
  bool expanded_ = false;
};

// Rows stand in a buffer with a gap: an insertion or a removal moves the gap to its place, and those that
// follow beside it cost nothing, be it appending, putting thousands of rows below one, or taking them away
// again. Each row knows its slot, so that its position is a subtraction.
class Sheet : public Control {
 public:
  static constexpr std::int32_t kAppend = -1;

  std::int32_t RowCount() const { return static_cast<std::int32_t>(slots_.size() - gapLength_); }
  // The row at a position from 1; SubscriptOutOfRange for a position without one.
  SheetRow& Row(std::int32_t position) const;

  // Adds a row at the end, or in front of that position; one after the last row is the end too, any other
  // position raises SubscriptOutOfRange. The meaning of the flag lies in the drawn control.
  SheetRow& AddRow(std::string_view text, std::string_view icon, std::int16_t indent, bool flag,
                   std::int32_t position, std::string_view tag, CheckState state = CheckState::Clear);
  void RemoveRow(std::int32_t position);
  void ClearRows();
  // Has the view draw all rows anew.
  void RefreshRows() { RowsChanged(); }

  // Another number whenever rows came or went.
  std::uint64_t Shape() const { return shape_; }

  // A value of the drawn control's layout, in twips: the height of a row.
  int RowLayout() const { return rowLayout_; }
  void SetRowLayout(int value) { Assign(rowLayout_, value); }

  // The user ticks or clears a row, opens or closes it. A row that has the state already takes none of them.
  void UserTicks(SheetRow& row, CheckState state);
  void UserOpens(SheetRow& row);
  void UserCloses(SheetRow& row);

  // For the view: called after every change of rows, be it what they are or what they show.
  std::function<void()> OnRowsChange;

  // The events. `other` is of no use to this wizard and always null.
  std::function<void(SheetRow& row, SheetRow* other, CheckState state)> OnCheckChanged;
  std::function<void(SheetRow& row)> OnRowExpanded;

 private:
  friend class SheetRow;

  std::size_t GapEnd() const { return gapStart_ + gapLength_; }
  std::size_t SlotAt(std::int32_t position) const;
  void CheckPosition(std::int32_t position, std::int32_t last) const;
  void MoveGap(std::size_t start);
  void PutRow(std::size_t from, std::size_t to);
  void GrowGap();
  void RowsChanged() const;
  void ShapeChanged();

  std::vector<std::unique_ptr<SheetRow>> slots_;
  std::size_t gapStart_ = 0;
  std::size_t gapLength_ = 0;
  std::uint64_t nextSerial_ = 1;
  std::uint64_t shape_ = 0;
  int rowLayout_ = 0;
};

}  // namespace vorlent
