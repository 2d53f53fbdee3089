// Page 2 of the wizard: the mailbox files behind the user's choice.
#include <string>
#include <unordered_set>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Host/HostObjects.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

constexpr std::string_view kIndexEnd = ".msf";

bool EndsWith(std::string_view name, std::string_view end) {
  return name.size() >= end.size() && EqualNoCase(name.substr(name.size() - end.size()), end);
}

// Names as the files of a folder go by them: letter case doesn't count.
struct NameHash {
  std::size_t operator()(std::string_view name) const {
    std::size_t hash = 0;
    for (const char c : name)
      hash = hash * 31 + codepage::ToLower(static_cast<unsigned char>(c));
    return hash;
  }
};
struct NameEqual {
  bool operator()(std::string_view a, std::string_view b) const { return EqualNoCase(a, b); }
};
using NameSet = std::unordered_set<std::string_view, NameHash, NameEqual>;

}  // namespace

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
  location->Open("thunderbird://*");
  location->Load();
  std::string paths;
  const std::int32_t count = location->ItemCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    if (i > 1) paths += '|';
    paths += RequireAs<Item>(location->ItemAt(i))->DataText("Path");
  }
  location->Close();
  return paths;
}

void WizardImport::AddMailbox(const std::string& path) {
  const bool isFolder = path.ends_with('\\');
  if (!isFolder) AddMailboxRow(path);
  if (check1_.IsTicked()) AddFolderMailboxes(isFolder ? path : path + ".sbd\\");
}

void WizardImport::AddMailboxRow(const std::string& path) {
  mailboxes_.AddRow(path, "file", 0, false, Sheet::kAppend, "", CheckState::Ticked);
}

// A mail file shows itself by its index file or its name. The index files are looked for in the listing,
// which holds them all, and not on the disk once for each file.
void WizardImport::AddFolderMailboxes(const std::string& folder) {
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder, &files, &folders, "*.*");

  NameSet indexed;
  indexed.reserve(static_cast<std::size_t>(files.Count()));
  for (const std::string& name : files) {
    if (EndsWith(name, kIndexEnd)) {
      indexed.insert(std::string_view(name).substr(0, name.size() - kIndexEnd.size()));
    }
  }
  for (const std::string& name : files) {
    if (EndsWith(name, kIndexEnd)) continue;
    if (EndsWith(name, ".mbox") || indexed.contains(name)) AddMailboxRow(folder + name);
  }
  for (const std::string& name : folders) {
    if (EndsWith(name, ".sbd")) AddFolderMailboxes(folder + name + "\\");
  }
}

}  // namespace vorlent
