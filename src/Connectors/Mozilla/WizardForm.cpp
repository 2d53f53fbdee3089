#include "Connectors/Mozilla/WizardForm.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"

namespace vorlent {

namespace {

using Kind = ControlKind;

// Wide and high enough for all that stands on the pages at design size.
constexpr Box kPageBounds = {0, kPageTop, 6015, 3495};

std::unique_ptr<Control> Make(const ControlSpec& spec) {
  switch (spec.kind) {
    case Kind::OptionButton: {
      auto button = std::make_unique<OptionButton>();
      if (spec.set) button->Set();
      return button;
    }
    case Kind::CheckBox: {
      auto box = std::make_unique<CheckBox>();
      box->SetTicked(spec.set);
      return box;
    }
    case Kind::TextBox: {
      auto box = std::make_unique<TextBox>();
      box->MultiLine = spec.set;
      return box;
    }
    case Kind::Button:
      return std::make_unique<Button>();
    case Kind::DropDown:
      return std::make_unique<DropDown>();
    case Kind::Sheet:
      return std::make_unique<Sheet>();
    case Kind::Page:
    case Kind::Label:
      break;
  }
  return std::make_unique<Control>();
}

}  // namespace

const std::vector<ControlSpec>& WizardControlTable() {
  // clang-format off
  static const ControlSpec rows[] = {
      {"Picture1",    Kind::Page,         1, kPageBounds, ""},
      {"Label2",      Kind::Label,        1, {0, 0, 900, 195}, "Datenquelle:"},
      {"Option1",     Kind::OptionButton, 1, {0, 360, 1815, 255}, "Thunderbird-Folder", true},
      {"qzelSheet1",  Kind::Sheet,        1, {285, 600, 2775, 1815}, ""},
      {"Option2",     Kind::OptionButton, 1, {0, 2640, 3135, 255}, "eine Thunderbird-Datei (MBOX-Datei)"},
      {"Text1",       Kind::TextBox,      1, {285, 2880, 2175, 285}, ""},
      {"qzelButton1", Kind::Button,       1, {2640, 2880, 375, 285}, "..."},
      {"Check1",      Kind::CheckBox,     1, {0, 3240, 3135, 255}, "inkl. Unterverzeichnisse", true},

      {"Picture2",    Kind::Page,         2, kPageBounds, ""},
      {"Label3",      Kind::Label,        2, {0, 0, 2040, 195}, "Zu importierende Mail-Folder:"},
      {"qzelSheet2",  Kind::Sheet,        2, {0, 240, 3135, 3015}, ""},

      {"Picture3",    Kind::Page,         3, kPageBounds, ""},
      {"Label1",      Kind::Label,        3, {0, 0, 300, 195}, "Ziel:"},
      {"Combo1",      Kind::DropDown,     3, {0, 240, 5415, 315}, ""},
      {"qzelButton2", Kind::Button,       3, {5520, 240, 495, 315}, "Neu"},
      {"LabelInfo",   Kind::Label,        3, {0, 840, 2175, 1335}, ""},
      {"Option3",     Kind::OptionButton, 3, {0, 2040, 3735, 255},
       "die Mails in diese Ziel-Location verschieben"},
      {"Option4",     Kind::OptionButton, 3, {0, 2400, 3735, 255},
       "die Mails in diese Ziel-Location kopieren", true},
      {"Check3",      Kind::CheckBox,     3, {0, 3240, 4695, 255},
       "Struktur-Information zu \"Meine Struktur\" hinzufügen", true},

      {"Picture4",    Kind::Page,         4, kPageBounds, ""},
      {"Label5",      Kind::Label,        4, {0, 0, 1155, 195}, "Schlüsselwörter:"},
      {"Check2",      Kind::CheckBox,     4, {0, 240, 3375, 255},
       "Unterverzeichnisse als Schlüsselwörter", true},
      {"Label6",      Kind::Label,        4, {0, 720, 2565, 195}, "zusätzliche Themen für alle Dateien:"},
      {"T_Keywords",  Kind::TextBox,      4, {0, 960, 5895, 1845}, "", true},
  };
  // clang-format on
  static const std::vector<ControlSpec> table(std::begin(rows), std::end(rows));
  return table;
}

WizardForm::WizardForm() {
  for (const ControlSpec& spec : WizardControlTable()) {
    auto control = Make(spec);
    control->Identify(spec.name, spec.kind, spec.page);
    control->Move(spec.bounds);
    control->SetCaption(TextFromUtf8(spec.caption));
    control->SetVisible(spec.kind != Kind::Page);
    controls_.push_back(std::move(control));
  }
  Get<OptionButton>("Option1").JoinGroup(Get<OptionButton>("Option2"));
  Get<OptionButton>("Option3").JoinGroup(Get<OptionButton>("Option4"));
}

Control& WizardForm::Find(std::string_view name) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(),
                                  [&](const auto& control) { return control->Name() == name; });
  if (found == controls_.end()) throw Failure(ErrorNumber::InvalidCall, "no control " + std::string(name));
  return **found;
}

}  // namespace vorlent
