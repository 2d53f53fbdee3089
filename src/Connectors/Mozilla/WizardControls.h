// The controls of the wizard without a screen: what they hold, what the user can do with them, what they
// tell.
//
// A control tells two sides. The wizard hears the events told here; a view hears of every change through
// OnChange. What the user does enters through the members that begin with User, which run the events as a
// press on a drawn control would; a control that is disabled takes none of them. Texts are code page,
// positions and sizes twips (1440 to the inch).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// Place and size inside the container.
struct Box {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  bool operator==(const Box&) const = default;
};

enum class ControlKind { Page, Label, OptionButton, CheckBox, TextBox, Button, DropDown, Sheet };

class Control {
 public:
  Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;

  const std::string& Name() const { return name_; }
  ControlKind Kind() const { return kind_; }
  // Page on which the control stands, from 1; for a page its own number.
  std::int16_t Page() const { return page_; }
  // Gives the control its place in the form; done once.
  void Identify(std::string_view name, ControlKind kind, std::int16_t page);

  const Box& Bounds() const { return bounds_; }
  int Left() const { return bounds_.left; }
  int Top() const { return bounds_.top; }
  int Width() const { return bounds_.width; }
  int Height() const { return bounds_.height; }
  // A negative width or height raises InvalidCall and moves nothing.
  void Move(const Box& bounds);

  const std::string& Caption() const { return caption_; }
  void SetCaption(std::string_view caption);
  bool Visible() const { return visible_; }
  void SetVisible(bool visible);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);

  // Called after every change of anything that can be seen.
  std::function<void()> OnChange;

 protected:
  void Changed() const;
  // Sets a field and tells the view, unless the field has the value already.
  template <class Value>
  bool Assign(Value& field, const Value& value) {
    if (field == value) return false;
    field = value;
    Changed();
    return true;
  }

 private:
  std::string name_;
  ControlKind kind_ = ControlKind::Label;
  std::int16_t page_ = 0;
  Box bounds_;
  std::string caption_;
  bool visible_ = true;
  bool enabled_ = true;
};

// One of a group of buttons, of which at most one is set.
class OptionButton : public Control {
 public:
  bool IsSet() const { return set_; }
  // Sets the button and clears the others of its group.
  void Set();
  void UserPicks();

  // Makes the two one group.
  void JoinGroup(OptionButton& other);

 private:
  bool set_ = false;
  std::vector<OptionButton*> others_;
};

class CheckBox : public Control {
 public:
  bool IsTicked() const { return ticked_; }
  void SetTicked(bool ticked) { Assign(ticked_, ticked); }
  void UserToggles();

 private:
  bool ticked_ = false;
};

class TextBox : public Control {
 public:
  const std::string& Text() const { return text_; }
  // A text that differs from the one before runs the event, whoever sets it.
  void SetText(std::string_view text);
  void UserTypes(std::string_view text);

  bool MultiLine = false;
  std::function<void()> OnTextChanged;

 private:
  std::string text_;
};

class Button : public Control {
 public:
  void UserPresses();

  std::function<void()> OnPressed;
};

// A drop-down list: one of its entries is shown, or none.
class DropDown : public Control {
 public:
  const std::vector<std::string>& Entries() const { return entries_; }
  void Add(std::string_view entry);
  // Position of the selected entry from 1, 0 for none.
  std::int32_t Selected() const { return selected_; }
  // Runs the event, also for the entry that is selected already. A position without an entry raises
  // SubscriptOutOfRange.
  void Select(std::int32_t position);
  // Text of the selected entry, "" for none.
  std::string Text() const;
  void UserSelects(std::int32_t position);

  std::function<void()> OnSelected;

 private:
  std::vector<std::string> entries_;
  std::int32_t selected_ = 0;
};

}  // namespace vorlent
