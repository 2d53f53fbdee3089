// Page 2 of the wizard: the mailbox files that the user's choice stands for.
#include <string>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/LocationFrame.h"
#include "Connectors/Mozilla/MailboxFiles.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Host/HostObjects.h"
#include "Host/RecordKeys.h"

namespace vorlent {

void WizardImport::ListMailboxes() {
  mailboxes_.ClearRows();
  if (!option1_.IsSet()) {
    AddMailbox(text1_.Text());
    return;
  }
  for (std::int32_t position = 1; position <= folders_.RowCount(); ++position) {
    const SheetRow& row = folders_.Row(position);
    if (!row.IsTicked()) continue;
    std::string paths = position == 1 ? "\n" + GetAllMailFolders() : row.Tag();
    CutLine(paths);
    while (!paths.empty())
      AddMailbox(CutToken(paths, "|"));
  }
}

std::string WizardImport::GetAllMailFolders() {
  const LocationPtr location = HostObjects::Current().NewLocation();
  location->Open(std::string(kThunderbirdScheme.prefix) + "*");
  location->Load();
  std::string paths;
  const std::int32_t count = location->ItemCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    if (i > 1) paths += '|';
    paths += RequireAs<Item>(location->ItemAt(i))->DataText(data_key::kPath);
  }
  location->Close();
  return paths;
}

void WizardImport::AddMailbox(const std::string& path) {
  const bool isFolder = path.ends_with('\\');
  if (!isFolder) AddMailboxRow(path);
  if (check1_.IsTicked()) AddFolderMailboxes(isFolder ? path : path + std::string(kSubfolderStep));
}

void WizardImport::AddMailboxRow(const std::string& path) {
  mailboxes_.AddRow(path, "file", 0, false, Sheet::kAppend, "", CheckState::Ticked);
}

// A mail file shows itself as a mailbox does, or by its name.
void WizardImport::AddFolderMailboxes(const std::string& folder) {
  const FolderTrail::Step step(trail_, folder);
  if (step.LeadsBack()) return;
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder, &files, &folders, "*.*");

  const SiblingNames summaries(files, kSummary);
  for (const std::string& name : files) {
    if (HasEnding(name, kSummary)) continue;
    const bool isMailFile =
        HasEnding(name, ".mbox") || IsMailbox(folder, name, summaries.StandBeside(name), MailboxPlace::Disks);
    if (isMailFile && !frame::PassesOver(folder + name)) AddMailboxRow(folder + name);
  }
  for (const std::string& name : folders) {
    if (HasEnding(name, kSubfolders)) AddFolderMailboxes(folder + name + "\\");
  }
}

}  // namespace vorlent
