#include "Connectors/Mozilla/WizardSheet.h"

#include <algorithm>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

// --- SheetRow -------------------------------------------------------------------------------------------

void SheetRow::SetExpanded(bool expanded) {
  if (std::exchange(expanded_, expanded) != expanded) sheet_->RowsChanged();
}

std::int32_t SheetRow::Index() const {
  const std::size_t inFront = slot_ < sheet_->gapStart_ ? slot_ : slot_ - sheet_->gapLength_;
  return static_cast<std::int32_t>(inFront) + 1;
}

SheetRow* SheetRow::FirstChild() const {
  const std::int32_t next = Index() + 1;
  if (next > sheet_->RowCount()) return nullptr;
  SheetRow& row = sheet_->Row(next);
  return row.indent_ > indent_ ? &row : nullptr;
}

// --- Rows -----------------------------------------------------------------------------------------------

SheetRow& Sheet::Row(std::int32_t position) const {
  CheckPosition(position, RowCount());
  return *slots_[SlotAt(position)];
}

SheetRow& Sheet::AddRow(std::string_view text, std::string_view icon, std::int16_t indent, bool,
                        std::int32_t position, std::string_view tag, CheckState state) {
  if (position == kAppend) position = RowCount() + 1;
  CheckPosition(position, RowCount() + 1);
  auto row = std::make_unique<SheetRow>();
  row->sheet_ = this;
  row->serial_ = nextSerial_++;
  row->text_ = text;
  row->tag_ = tag;
  row->icon_ = icon;
  row->indent_ = indent;
  row->state_ = state;

  MoveGap(static_cast<std::size_t>(position) - 1);
  if (gapLength_ == 0) GrowGap();
  row->slot_ = gapStart_;
  SheetRow& added = *(slots_[gapStart_] = std::move(row));
  ++gapStart_;
  --gapLength_;
  ShapeChanged();
  return added;
}

void Sheet::RemoveRow(std::int32_t position) {
  CheckPosition(position, RowCount());
  MoveGap(static_cast<std::size_t>(position) - 1);
  slots_[GapEnd()].reset();
  ++gapLength_;
  ShapeChanged();
}

void Sheet::ClearRows() {
  slots_.clear();
  gapStart_ = gapLength_ = 0;
  ShapeChanged();
}

std::size_t Sheet::SlotAt(std::int32_t position) const {
  const std::size_t inFront = static_cast<std::size_t>(position) - 1;
  return inFront < gapStart_ ? inFront : inFront + gapLength_;
}

void Sheet::CheckPosition(std::int32_t position, std::int32_t last) const {
  if (position < 1 || position > last) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no row at position " + std::to_string(position));
  }
}

void Sheet::RowsChanged() const {
  if (OnRowsChange) OnRowsChange();
}

void Sheet::ShapeChanged() {
  ++shape_;
  RowsChanged();
}

// --- The gap --------------------------------------------------------------------------------------------

void Sheet::MoveGap(std::size_t start) {
  if (gapLength_ == 0) gapStart_ = start;
  while (gapStart_ > start) {
    --gapStart_;
    PutRow(gapStart_, GapEnd());
  }
  while (gapStart_ < start) {
    PutRow(GapEnd(), gapStart_);
    ++gapStart_;
  }
}

void Sheet::PutRow(std::size_t from, std::size_t to) {
  slots_[to] = std::move(slots_[from]);
  slots_[to]->slot_ = to;
}

void Sheet::GrowGap() {
  const std::size_t filled = slots_.size();
  gapLength_ = std::max<std::size_t>(filled, 16);
  slots_.resize(filled + gapLength_);
  for (std::size_t slot = filled; slot-- > gapStart_;)
    PutRow(slot, slot + gapLength_);
}

// --- The user -------------------------------------------------------------------------------------------

void Sheet::UserTicks(SheetRow& row, CheckState state) {
  if (!Enabled() || row.state_ == state) return;
  row.state_ = state;
  RowsChanged();
  if (OnCheckChanged) OnCheckChanged(row, nullptr, state);
}

void Sheet::UserOpens(SheetRow& row) {
  if (!Enabled() || row.expanded_) return;
  row.SetExpanded(true);
  if (OnRowExpanded) OnRowExpanded(row);
}

void Sheet::UserCloses(SheetRow& row) {
  if (Enabled()) row.SetExpanded(false);
}

}  // namespace vorlent
