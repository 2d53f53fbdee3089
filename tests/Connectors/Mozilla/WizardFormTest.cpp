#include "Connectors/Mozilla/WizardForm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"

namespace vorlent {
namespace {

// What a control starts with, as one line.
std::string Show(const Control& control) {
  static constexpr std::string_view kKinds[] = {"page",     "label",  "option",    "check",
                                                "text box", "button", "drop-down", "sheet"};
  const Box& box = control.Bounds();
  std::string line = std::to_string(control.Page()) + " " + control.Name() + " " +
                     std::string(kKinds[static_cast<int>(control.Kind())]) + " " + std::to_string(box.left) +
                     "," + std::to_string(box.top) + "," + std::to_string(box.width) + "," +
                     std::to_string(box.height);
  if (!control.Caption().empty()) line += " '" + TextToUtf8(control.Caption()) + "'";
  if (const auto* option = dynamic_cast<const OptionButton*>(&control); option && option->IsSet())
    line += " set";
  if (const auto* check = dynamic_cast<const CheckBox*>(&control); check && check->IsTicked())
    line += " ticked";
  if (const auto* text = dynamic_cast<const TextBox*>(&control); text && text->MultiLine)
    line += " several lines";
  if (!control.Enabled()) line += " disabled";
  return line;
}

TEST(WizardFormTest, EveryControlStandsInItsPlace) {
  std::vector<std::string> lines;
  const WizardForm form;
  for (const auto& control : form.Controls()) {
    if (control->Kind() != ControlKind::Page) lines.push_back(Show(*control));
  }
  EXPECT_THAT(
      lines,
      testing::ElementsAre(
          "1 Label2 label 0,0,900,195 'Datenquelle:'",
          "1 Option1 option 0,360,1815,255 'Thunderbird-Folder' set", "1 qzelSheet1 sheet 285,600,2775,1815",
          "1 Option2 option 0,2640,3135,255 'eine Thunderbird-Datei (MBOX-Datei)'",
          "1 Text1 text box 285,2880,2175,285", "1 qzelButton1 button 2640,2880,375,285 '...'",
          "1 Check1 check 0,3240,3135,255 'inkl. Unterverzeichnisse' ticked",
          "2 Label3 label 0,0,2040,195 'Zu importierende Mail-Folder:'", "2 qzelSheet2 sheet 0,240,3135,3015",
          "3 Label1 label 0,0,300,195 'Ziel:'", "3 Combo1 drop-down 0,240,5415,315",
          "3 qzelButton2 button 5520,240,495,315 'Neu'", "3 LabelInfo label 0,840,2175,1335",
          "3 Option3 option 0,2040,3735,255 'die Mails in diese Ziel-Location verschieben'",
          "3 Option4 option 0,2400,3735,255 'die Mails in diese Ziel-Location kopieren' set",
          "3 Check3 check 0,3240,4695,255 'Struktur-Information zu \"Meine Struktur\" hinzufügen' ticked",
          "4 Label5 label 0,0,1155,195 'Schlüsselwörter:'",
          "4 Check2 check 0,240,3375,255 'Unterverzeichnisse als Schlüsselwörter' ticked",
          "4 Label6 label 0,720,2565,195 'zusätzliche Themen für alle Dateien:'",
          "4 T_Keywords text box 0,960,5895,1845 several lines"));
}

TEST(WizardFormTest, PagesHoldAllTheirControlsAndStartHidden) {
  const WizardForm form;
  std::vector<std::string> pages;
  for (const auto& control : form.Controls()) {
    if (control->Kind() == ControlKind::Page) {
      pages.push_back(control->Name());
      EXPECT_FALSE(control->Visible());
      EXPECT_EQ(control->Left(), 0);
      EXPECT_EQ(control->Top(), 840);
      continue;
    }
    const auto& page = form.Get<Control>("Picture" + std::to_string(control->Page()));
    EXPECT_TRUE(control->Visible());
    EXPECT_LE(control->Left() + control->Width(), page.Width()) << control->Name();
    EXPECT_LE(control->Top() + control->Height(), page.Height()) << control->Name();
  }
  EXPECT_THAT(pages, testing::ElementsAre("Picture1", "Picture2", "Picture3", "Picture4"));
}

TEST(WizardFormTest, OptionButtonsAreGroupedByPage) {
  const WizardForm form;
  form.Get<OptionButton>("Option2").Set();
  EXPECT_FALSE(form.Get<OptionButton>("Option1").IsSet());
  EXPECT_TRUE(form.Get<OptionButton>("Option4").IsSet());
  form.Get<OptionButton>("Option3").Set();
  EXPECT_FALSE(form.Get<OptionButton>("Option4").IsSet());
  EXPECT_TRUE(form.Get<OptionButton>("Option2").IsSet());
}

TEST(WizardFormTest, AskingForAWrongControlFails) {
  const WizardForm form;
  EXPECT_EQ(SwallowedNumber([&] { form.Get<Control>("Option5"); }), 5);
  EXPECT_EQ(SwallowedNumber([&] { form.Get<Sheet>("Option1"); }), 13);
}

}  // namespace
}  // namespace vorlent
