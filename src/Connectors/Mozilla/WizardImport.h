// The wizard that asks for an import command.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/FolderTrail.h"
#include "Connectors/Mozilla/WizardForm.h"
#include "Host/Connector.h"

namespace vorlent {

// Four pages: what to import, the mailboxes that this gives, the target and the mode, keywords. The host's
// frame calls ShowPage from 1 on as the user steps forward and back, then Finish, then reads Parameter. One
// object serves one run of the wizard. A failure in an event rises to whom the event came from.
class WizardImport : public WizardControl {
 public:
  // Offers the Locations of the host that have no type of their own.
  WizardImport();

  std::int16_t Pages() const override { return pages_; }
  void SetPages(std::int16_t pages) override { pages_ = pages; }
  // Fills the tree of folders on the first visit of page 1, the list of mailboxes on each step from page 1
  // to 2.
  void ShowPage(std::int16_t page) override;
  // The import command.
  std::string Parameter() override;
  // Has no effect.
  void SetParameter(std::string_view) override {}
  // Always true: whatever the user chose is a command.
  bool Finish() override { return true; }
  // Puts the direct children of an address into the tree, at a position or after all rows (-1). Always
  // false.
  bool AddSubQueries(std::string_view qry, std::int32_t pos, std::int16_t ind, std::int16_t cb) override;

  // The controls for a view to show, and for the user's hand.
  WizardForm& Form() { return form_; }

  // Tells the control's inner size in twips: the pages and what stretches with them follow.
  void Layout(std::int32_t width, std::int32_t height);
  // The window over which the file dialog opens; 0 for none.
  void SetWindow(std::int32_t window) { window_ = window; }

 private:
  void ConnectEvents();
  void FillTree();
  void OnRowExpanded(SheetRow& row);
  void OnCheckChanged(SheetRow& row, CheckState state);
  void ChooseFile();
  void ChooseNewTarget();
  void ShowTargetInfo();

  void ListMailboxes();
  std::string GetAllMailFolders();
  void AddMailbox(const std::string& path);
  void AddMailboxRow(const std::string& path);
  void AddFolderMailboxes(const std::string& folder);

  std::int16_t pages_ = 4;
  std::int16_t currentPage_ = 0;
  std::string startFolder_;
  std::int32_t window_ = 0;
  FolderTrail trail_;  // of AddFolderMailboxes

  WizardForm form_;
  std::array<Control*, 4> pictures_;
  OptionButton& option1_ = form_.Get<OptionButton>("Option1");
  Sheet& folders_ = form_.Get<Sheet>("qzelSheet1");
  OptionButton& option2_ = form_.Get<OptionButton>("Option2");
  TextBox& text1_ = form_.Get<TextBox>("Text1");
  Button& button1_ = form_.Get<Button>("qzelButton1");
  CheckBox& check1_ = form_.Get<CheckBox>("Check1");
  Sheet& mailboxes_ = form_.Get<Sheet>("qzelSheet2");
  DropDown& combo1_ = form_.Get<DropDown>("Combo1");
  Button& button2_ = form_.Get<Button>("qzelButton2");
  Control& labelInfo_ = form_.Get<Control>("LabelInfo");
  OptionButton& option3_ = form_.Get<OptionButton>("Option3");
  CheckBox& check3_ = form_.Get<CheckBox>("Check3");
  CheckBox& check2_ = form_.Get<CheckBox>("Check2");
  TextBox& keywords_ = form_.Get<TextBox>("T_Keywords");
};

}  // namespace vorlent
