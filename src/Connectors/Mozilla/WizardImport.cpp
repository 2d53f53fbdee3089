#include "Connectors/Mozilla/WizardImport.h"

#include "Common/StdDialoge.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Host/HostObjects.h"
#include "Host/RecordKeys.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::string_view kAllFolders = kThunderbirdScheme.prefix;
constexpr std::string_view kPlaceholder = "...";
constexpr std::string_view kIcon = "file";

std::string FirstLine(std::string text) {
  return CutLine(text);
}

// A Location of the host's making, opened and read; closed again on the normal way out.
LocationPtr OpenLocation(std::string_view address) {
  LocationPtr location = HostObjects::Current().NewLocation();
  location->Open(address);
  location->Load();
  return location;
}

}  // namespace

// --- Life of the control --------------------------------------------------------------------------------

WizardImport::WizardImport() : startFolder_(Platform::Current().CurrentFolder()) {
  for (std::size_t page = 0; page < pictures_.size(); ++page) {
    pictures_[page] = &form_.Get<Control>("Picture" + std::to_string(page + 1));
  }
  ConnectEvents();
  text1_.SetEnabled(true);
  button1_.SetEnabled(true);
  for (const LocationPtr& location : HostObjects::Current().Global().Locations()) {
    if (location->GetOption("type").empty()) combo1_.Add(location->Name());
  }
  if (!combo1_.Entries().empty()) combo1_.Select(1);
}

void WizardImport::ConnectEvents() {
  folders_.OnCheckChanged = [this](SheetRow& row, SheetRow*, CheckState state) {
    OnCheckChanged(row, state);
  };
  folders_.OnRowExpanded = [this](SheetRow& row) { OnRowExpanded(row); };
  text1_.OnTextChanged = [this] { option2_.Set(); };
  button1_.OnPressed = [this] { ChooseFile(); };
  button2_.OnPressed = [this] { ChooseNewTarget(); };
  combo1_.OnSelected = [this] { ShowTargetInfo(); };
}

void WizardImport::ShowPage(std::int16_t page) {
  for (Control* picture : pictures_)
    picture->SetVisible(picture->Page() == page);
  if (page == 1 && currentPage_ == 0) FillTree();
  // Only a step forward from page 1 makes the list anew, so that ticks survive a look at page 3 and back.
  if (page == 2 && currentPage_ == 1) ListMailboxes();
  currentPage_ = page;
}

std::string WizardImport::Parameter() {
  ImportCommand command;
  command.target = combo1_.Text();
  command.move = option3_.IsSet();
  command.subfolderKeywords = check2_.IsTicked();
  command.tree = check3_.IsTicked();
  for (std::string lines = keywords_.Text(); !lines.empty();) {
    std::string keyword = TrimBlank(CutLine(lines));
    if (!keyword.empty()) command.keywords.push_back(std::move(keyword));
  }
  for (std::int32_t position = 1; position <= mailboxes_.RowCount(); ++position) {
    const SheetRow& row = mailboxes_.Row(position);
    if (row.IsTicked()) command.mailboxes.push_back(row.Text());
  }
  return command.Text();
}

// --- Page 1: the tree of folders ------------------------------------------------------------------------
//
// The tag of a row has the address it came from, without the "*" of a folder with subfolders, and on a second
// line its paths. A folder's children are fetched when it is first opened; until then a placeholder stands
// for them, whose tag is the address to ask.

void WizardImport::FillTree() {
  folders_.SetRowLayout(260);
  folders_.AddRow(kAllFolders, kIcon, 0, false, Sheet::kAppend, kAllFolders);
  folders_.AddRow(kPlaceholder, "", 1, false, Sheet::kAppend, std::string(kAllFolders) + "*");
}

bool WizardImport::AddSubQueries(std::string_view qry, std::int32_t pos, std::int16_t ind, std::int16_t cb) {
  const auto add = [&](std::string_view text, std::string_view icon, std::int16_t indent,
                       std::string_view tag, CheckState state) {
    folders_.AddRow(text, icon, indent, false, pos, tag, state);
    if (pos >= 0) ++pos;
  };
  const LocationPtr location = OpenLocation(qry);
  const std::int32_t count = location->ItemCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    const ItemPtr item = RequireAs<Item>(location->ItemAt(i));
    std::string address = item->DataText(data_key::kLocation);
    const std::string query = address;
    const bool hasChildren = address.ends_with("/*");
    if (hasChildren) address.pop_back();
    add(item->Text(), kIcon, ind, address + "\n" + item->DataText(data_key::kPath), CheckState{cb});
    if (hasChildren) add(kPlaceholder, "", ToInt16(ind + 1), query, CheckState::Clear);
  }
  location->Close();
  return false;
}

void WizardImport::OnRowExpanded(SheetRow& row) {
  const std::int16_t indent = row.Indent();
  std::int32_t position = row.Index() + 1;
  if (position > folders_.RowCount()) return;
  for (; position <= folders_.RowCount(); ++position) {
    const SheetRow& below = folders_.Row(position);
    if (below.Indent() <= indent) return;
    if (below.Indent() == indent + 1 && below.Text() == kPlaceholder) {
      const std::string query = below.Tag();
      folders_.RemoveRow(position);
      AddSubQueries(query, position, ToInt16(indent + 1), 1);
      break;
    }
  }
  option1_.Set();
}

// A ticked row stands for all that is under it, so nothing is shown there until it is cleared again.
void WizardImport::OnCheckChanged(SheetRow& row, CheckState state) {
  if (state == CheckState::Ticked) {
    while (SheetRow* child = row.FirstChild())
      folders_.RemoveRow(child->Index());
  } else {
    row.SetExpanded(false);
    folders_.AddRow(kPlaceholder, "", ToInt16(row.Indent() + 1), false, row.Index() + 1,
                    FirstLine(row.Tag()) + "*");
    folders_.RefreshRows();
  }
  option1_.Set();
}

void WizardImport::ChooseFile() {
  std::string folder = GetPath(text1_.Text());
  if (folder.empty()) folder = startFolder_;
  const std::string name = ShowOpenDialog(window_, "Thunderbird-Datei", folder, GetFileName(text1_.Text()),
                                          "Thunderbird-Datei|*|MBOX-Datei|*.mbox|Alle Dateien|*.*", "mbox");
  if (!name.empty()) text1_.SetText(folder + name);
}

// --- Page 3: the target ---------------------------------------------------------------------------------

void WizardImport::ChooseNewTarget() {
  const std::string name = HostObjects::Current().Dialogs().ChooseLocation("Ziel-Datenquelle", "", "");
  if (name.empty()) return;
  combo1_.Add(name);
  combo1_.Select(ToInt32(combo1_.Entries().size()));
}

void WizardImport::ShowTargetInfo() {
  std::string info;
  const auto addLine = [&info](std::string_view label, const std::string& value) {
    if (!value.empty()) info.append(label).append(value).append("\r\n");
  };
  if (const ObjectPtr object = HostObjects::Current().Global().GetObject(combo1_.Text())) {
    const auto location = RequireAs<Location>(object);
    addLine("FileLocation: ", location->FileLocation());
    addLine("FilePattern: ", location->GetSetting("#FilePattern"));
    addLine("Keywords: ", location->GetSetting("Keywords"));
    addLine("ArchiveCondition: ", location->GetSetting("ArchiveCondition"));
  }
  labelInfo_.SetCaption(info);
}

// --- Size -----------------------------------------------------------------------------------------------

// A step whose result would be impossible, such as a negative width in a small window, leaves its control as
// it is.
void WizardImport::Layout(std::int32_t width, std::int32_t height) {
  const auto pageWidth = [this](const Control& control) { return pictures_[control.Page() - 1]->Width(); };
  const auto pageHeight = [this](const Control& control) { return pictures_[control.Page() - 1]->Height(); };
  const auto move = [](Control& control, const Box& box) { Swallow([&] { control.Move(box); }); };

  for (Control* picture : pictures_)
    move(*picture, {0, kPageTop, width, height - kPageTop});
  move(check1_, {check1_.Left(), pageHeight(check1_) - check1_.Height(), check1_.Width(), check1_.Height()});
  move(text1_, {text1_.Left(), check1_.Top() - text1_.Height() - 120,
                pageWidth(text1_) - text1_.Left() - button1_.Width() - 60, text1_.Height()});
  move(button1_, {pageWidth(button1_) - button1_.Width(), text1_.Top(), button1_.Width(), button1_.Height()});
  move(option2_,
       {option2_.Left(), text1_.Top() - option2_.Height() + 15, option2_.Width(), option2_.Height()});
  move(folders_, {folders_.Left(), folders_.Top(), pageWidth(folders_) - folders_.Left(),
                  option2_.Top() - folders_.Top() - 120});
  move(mailboxes_, {mailboxes_.Left(), mailboxes_.Top(), pageWidth(mailboxes_),
                    pageHeight(mailboxes_) - mailboxes_.Top()});
  move(button2_,
       {pageWidth(button2_) - button2_.Width(), button2_.Top(), button2_.Width(), button2_.Height()});
  move(combo1_, {combo1_.Left(), combo1_.Top(), button2_.Left() - 60, combo1_.Height()});
  move(keywords_, {0, keywords_.Top(), pageWidth(keywords_), pageHeight(keywords_) - keywords_.Top()});
}

}  // namespace vorlent
