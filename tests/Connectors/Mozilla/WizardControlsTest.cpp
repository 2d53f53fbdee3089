#include "Connectors/Mozilla/WizardControls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Failure.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

int NumberOf(const std::function<void()>& step) {
  return SwallowedNumber(step);
}

TEST(WizardControlsTest, ControlStartsVisibleAndEnabled) {
  Control control;
  control.Identify("Label2", ControlKind::Label, 1);
  EXPECT_EQ(control.Name(), "Label2");
  EXPECT_EQ(control.Kind(), ControlKind::Label);
  EXPECT_EQ(control.Page(), 1);
  EXPECT_TRUE(control.Visible());
  EXPECT_TRUE(control.Enabled());
  EXPECT_EQ(control.Caption(), "");
}

TEST(WizardControlsTest, EveryVisibleChangeIsToldOnce) {
  Control control;
  int changes = 0;
  control.OnChange = [&] { ++changes; };
  control.SetCaption("a");
  EXPECT_EQ(changes, 1);
  control.SetCaption("a");
  EXPECT_EQ(changes, 1);
  control.Move({1, 2, 3, 4});
  EXPECT_EQ(changes, 2);
  control.Move({1, 2, 3, 4});
  EXPECT_EQ(changes, 2);
  control.SetVisible(false);
  control.SetEnabled(false);
  EXPECT_EQ(changes, 4);
}

TEST(WizardControlsTest, NegativeSizeIsRefusedAndMovesNothing) {
  Control control;
  control.Move({1, 2, 3, 4});
  EXPECT_EQ(NumberOf([&] { control.Move({10, 20, -1, 40}); }), 5);
  EXPECT_EQ(NumberOf([&] { control.Move({10, 20, 30, -1}); }), 5);
  EXPECT_EQ(control.Bounds(), (Box{1, 2, 3, 4}));
  control.Move({-10, -20, 0, 0});
  EXPECT_EQ(control.Bounds(), (Box{-10, -20, 0, 0}));
}

TEST(WizardControlsTest, OptionButtonsOfAGroupExcludeEachOther) {
  OptionButton first;
  OptionButton second;
  OptionButton stranger;
  first.JoinGroup(second);
  stranger.Set();
  first.Set();
  EXPECT_TRUE(first.IsSet());
  second.UserPicks();
  EXPECT_FALSE(first.IsSet());
  EXPECT_TRUE(second.IsSet());
  EXPECT_TRUE(stranger.IsSet());
}

TEST(WizardControlsTest, PickingASetOptionButtonChangesNothing) {
  OptionButton first;
  OptionButton second;
  first.JoinGroup(second);
  first.Set();
  int changes = 0;
  first.OnChange = second.OnChange = [&] { ++changes; };
  first.UserPicks();
  EXPECT_TRUE(first.IsSet());
  EXPECT_EQ(changes, 0);
}

TEST(WizardControlsTest, CheckBoxTogglesUnderTheUsersHand) {
  CheckBox box;
  EXPECT_FALSE(box.IsTicked());
  box.UserToggles();
  EXPECT_TRUE(box.IsTicked());
  box.UserToggles();
  EXPECT_FALSE(box.IsTicked());
}

TEST(WizardControlsTest, AnyChangeOfATextIsTold) {
  TextBox box;
  std::vector<std::string> texts;
  box.OnTextChanged = [&] { texts.push_back(box.Text()); };
  box.UserTypes("a");
  box.SetText("ab");
  box.SetText("ab");
  box.UserTypes("");
  EXPECT_THAT(texts, ElementsAre("a", "ab", ""));
}

TEST(WizardControlsTest, ViewHearsOfATextBeforeTheEventRuns) {
  TextBox box;
  std::vector<std::string> order;
  box.OnChange = [&] { order.push_back("view"); };
  box.OnTextChanged = [&] { order.push_back("event"); };
  box.UserTypes("a");
  EXPECT_THAT(order, ElementsAre("view", "event"));
}

TEST(WizardControlsTest, DisabledControlTakesNothingFromTheUser) {
  OptionButton option;
  CheckBox check;
  TextBox text;
  Button button;
  DropDown list;
  list.Add("a");
  int events = 0;
  text.OnTextChanged = button.OnPressed = list.OnSelected = [&] { ++events; };
  for (Control* control : std::initializer_list<Control*>{&option, &check, &text, &button, &list}) {
    control->SetEnabled(false);
  }
  option.UserPicks();
  check.UserToggles();
  text.UserTypes("x");
  button.UserPresses();
  list.UserSelects(1);
  EXPECT_FALSE(option.IsSet());
  EXPECT_FALSE(check.IsTicked());
  EXPECT_EQ(text.Text(), "");
  EXPECT_EQ(list.Selected(), 0);
  EXPECT_EQ(events, 0);
}

TEST(WizardControlsTest, ButtonWithoutListenerMayBePressed) {
  Button button;
  button.UserPresses();
  int presses = 0;
  button.OnPressed = [&] { ++presses; };
  button.UserPresses();
  EXPECT_EQ(presses, 1);
}

TEST(WizardControlsTest, DropDownShowsNothingUntilAnEntryIsSelected) {
  DropDown list;
  EXPECT_EQ(list.Text(), "");
  list.Add("a");
  list.Add("b");
  EXPECT_EQ(list.Selected(), 0);
  EXPECT_EQ(list.Text(), "");
  list.Select(2);
  EXPECT_EQ(list.Text(), "b");
  EXPECT_THAT(list.Entries(), ElementsAre("a", "b"));
}

TEST(WizardControlsTest, EverySelectionIsToldEvenOfTheSameEntry) {
  DropDown list;
  list.Add("a");
  list.Add("a");
  std::vector<std::int32_t> selections;
  list.OnSelected = [&] { selections.push_back(list.Selected()); };
  list.Select(1);
  list.UserSelects(1);
  list.UserSelects(2);
  EXPECT_THAT(selections, ElementsAre(1, 1, 2));
}

TEST(WizardControlsTest, SelectingWhereNoEntryIsFailsAndKeepsTheSelection) {
  DropDown list;
  EXPECT_EQ(NumberOf([&] { list.Select(1); }), 9);
  list.Add("a");
  list.Select(1);
  EXPECT_EQ(NumberOf([&] { list.Select(0); }), 9);
  EXPECT_EQ(NumberOf([&] { list.Select(2); }), 9);
  EXPECT_EQ(NumberOf([&] { list.Select(-1); }), 9);
  EXPECT_EQ(list.Selected(), 1);
}

}  // namespace
}  // namespace vorlent
