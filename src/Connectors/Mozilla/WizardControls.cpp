#include "Connectors/Mozilla/WizardControls.h"

#include "Common/Width.h"
#include "Platform/Failure.h"

namespace vorlent {

// --- Control --------------------------------------------------------------------------------------------

void Control::Identify(std::string_view name, ControlKind kind, std::int16_t page) {
  name_ = name;
  kind_ = kind;
  page_ = page;
}

void Control::Move(const Box& bounds) {
  if (bounds.width < 0 || bounds.height < 0) {
    throw Failure(ErrorNumber::InvalidCall, "a control can't have a negative size: " + name_);
  }
  Assign(bounds_, bounds);
}

void Control::SetCaption(std::string_view caption) {
  Assign(caption_, std::string(caption));
}

void Control::SetVisible(bool visible) {
  Assign(visible_, visible);
}

void Control::SetEnabled(bool enabled) {
  Assign(enabled_, enabled);
}

void Control::Changed() const {
  if (OnChange) OnChange();
}

// --- OptionButton ---------------------------------------------------------------------------------------

void OptionButton::Set() {
  for (OptionButton* other : others_)
    other->Assign(other->set_, false);
  Assign(set_, true);
}

void OptionButton::UserPicks() {
  if (Enabled()) Set();
}

void OptionButton::JoinGroup(OptionButton& other) {
  others_.push_back(&other);
  other.others_.push_back(this);
}

// --- CheckBox -------------------------------------------------------------------------------------------

void CheckBox::UserToggles() {
  if (Enabled()) SetTicked(!ticked_);
}

// --- TextBox --------------------------------------------------------------------------------------------

void TextBox::SetText(std::string_view text) {
  if (Assign(text_, std::string(text)) && OnTextChanged) OnTextChanged();
}

void TextBox::UserTypes(std::string_view text) {
  if (Enabled()) SetText(text);
}

// --- Button ---------------------------------------------------------------------------------------------

void Button::UserPresses() {
  if (Enabled() && OnPressed) OnPressed();
}

// --- DropDown -------------------------------------------------------------------------------------------

void DropDown::Add(std::string_view entry) {
  entries_.emplace_back(entry);
  Changed();
}

void DropDown::Select(std::int32_t position) {
  if (position < 1 || position > ToInt32(entries_.size())) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no entry at position " + std::to_string(position));
  }
  Assign(selected_, position);
  if (OnSelected) OnSelected();
}

std::string DropDown::Text() const {
  return selected_ == 0 ? std::string() : entries_[selected_ - 1];
}

void DropDown::UserSelects(std::int32_t position) {
  if (Enabled()) Select(position);
}

}  // namespace vorlent
