// From an address to mailboxes, and from mailboxes to items.

#include <utility>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/MailboxFiles.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

constexpr std::string_view kNoSubfoldersMark = "/-";

// Cuts the mark that keeps subfolders out, and tells whether they are wanted.
bool CutSubfolderMark(std::string& path) {
  if (!path.ends_with(kNoSubfoldersMark)) return true;
  path.resize(path.size() - kNoSubfoldersMark.size());
  return false;
}

bool HasSummary(const std::string& path) {
  return FileExists(path + std::string(kSummary));
}

// One that may not be listed counts by the rules of today: it is told when it is entered.
bool IsFolderToEnter(const std::string& path) {
  if (!BrokenItemsAreNamed()) return FolderExists(path);
  const std::int32_t attributes = GetFileAttr(path);
  return attributes >= 0 && (attributes & os::kDirectory) != 0;
}

// Whether the walk can go into a folder. By the rules of today one that may not be listed is told.
bool MayBeEntered(const std::string& folder) {
  if (!BrokenItemsAreNamed() || os::MayList(folder)) return true;
  try {
    os::ListNames(folder, "*.*", 0);
  } catch (const Failure& failure) {
    frame::ReportUnreadable(failure.Why());
  }
  return false;
}

// Whether a link that leads to nothing stands for a mailbox. It is told then, by the rules of today.
bool LeadsNowhere(const std::string& path) {
  if (!BrokenItemsAreNamed()) return false;
  const std::int32_t attributes = GetFileAttr(path);
  if (attributes < 0 || (attributes & os::kLink) == 0 || (attributes & os::kDirectory) != 0) return false;
  try {
    os::FileLength(path);
    return false;
  } catch (const Failure& failure) {
    frame::ReportUnreadable(failure.Why());
    return true;
  }
}

// Told, not skipped in silence: its mails are there, and none of them is read.
bool PassesOverMaildir(std::string_view segment) {
  const MailAccount* const account = FindMailAccount(segment);
  if (account == nullptr || !IsToldAsMaildir(*account)) return false;
  frame::ReportUnreadable({.reason = "Account '" + account->name +
                                     "': Maildir, jede Mail in eigener Datei; wird nicht gelesen!"});
  return true;
}

// The segment that an entry found below `prefix` is addressed by.
std::string SegmentOf(const DiscoveryEntry& entry, std::string_view prefix) {
  std::string rest = entry.location.substr(prefix.size());
  return CutToken(rest, "/");
}

// The name that an account of the profile read last is shown by.
std::string NameOfAccount(const std::string& segment) {
  const MailAccount* const account = FindMailAccount(segment);
  return account == nullptr ? segment : account->name;
}

std::string WithoutSubfolderSuffix(std::string_view name) {
  if (name.ends_with(kSubfolders)) name.remove_suffix(kSubfolders.size());
  return std::string(name);
}

void ReportUnread(const StdMail& mail, std::int64_t offset, const Cause& why) {
  frame::ReportUnreadable(
      {mail.MailboxFile(), "Mail an Stelle " + NumberText(offset) + ": " + why.reason, why.hint});
}

void TellBroken(const StdMail& mail) {
  for (const auto& [offset, why] : mail.Ledger().broken)
    ReportUnread(mail, offset, why);
}

// A mail that is no item, or not a whole one, by the rules of today.
void TellLost(const StdMail& mail, const Cause& why) {
  if (BrokenItemsAreNamed() && !why.IsEmpty()) ReportUnread(mail, mail.Ledger().offset, why);
}

// Of a mailbox that can't be read to its end, by the rules of today.
void TellUnreadRest(const StdMail& mail) {
  if (!BrokenItemsAreNamed() || mail.Ledger().IsWhole()) return;
  ReportUnread(mail, mail.Ledger().offset, mail.Ledger().loss);
}

// Of a mailbox in which no mail was found.
void TellSomethingElse(const std::string& mailbox) {
  if (BrokenItemsAreNamed() && HoldsSomethingElse(mailbox))
    frame::ReportUnreadable({mailbox, std::string(kNoMailInIt)});
}

// Whether the reading of all profiles leaves the disks out, of which no mailbox is read without a path.
bool DisksAreNoMail() {
  return CurrentRules().disksProfile == DisksProfile::OfMail;
}

// What `find` gives. By the rules of today a profile whose preferences can't be read is told.
template <class Find>
KeyedList<std::string> AccountsToRead(Find&& find) {
  try {
    return std::forward<Find>(find)();
  } catch (const Failure& failure) {
    if (!BrokenItemsAreNamed()) throw;
    frame::ReportUnreadable(failure.Why());
    return {};
  }
}

// Whether an address on the disks names no mailbox, but a folder in which there may be some.
bool IsFolderOfMailboxes(const std::string& path) {
  return CurrentRules().folderAddresses == FolderAddresses::OfFolders && FolderExists(path);
}

// False for a mailbox that can't be opened, which is told then.
bool OpenToRead(StdMail& mail) {
  try {
    mail.InitStream(0);
    return true;
  } catch (const Failure& failure) {
    if (!BrokenItemsAreNamed()) throw;
    frame::ReportUnreadable(failure.Why());
    return false;
  }
}

}  // namespace

bool Location_Thunderbird::PrepareAddress(std::string_view file) {
  ClearCollection(mailFiles_);
  ClearCollection(mailAddresses_);
  accountFolders_.Clear();
  Tree()->Clear();
  if (!file.starts_with(kScheme) || file.ends_with('*')) return true;
  std::string rest(file.substr(kScheme.size()));
  const bool subfolders = CutSubfolderMark(rest);
  std::string profile;
  if (!lastAddress_.ends_with(kBrowseMark)) profile = CutToken(rest, "/");
  if (profile.empty()) {
    ReadAllProfiles(Visit::Note);
  } else {
    ReadProfile(profile, rest, subfolders, Visit::Note);
  }
  return true;
}

std::string Location_Thunderbird::CutScheme(std::string& address) {
  return frame::CutScheme(address, kScheme);
}

bool Location_Thunderbird::ReadAddress(std::string path) {
  mailIds_.Clear();
  accountFolders_.Clear();
  const bool subfolders = CutSubfolderMark(path);
  const std::string profile = CutToken(path, "/");
  return profile.empty() ? ReadAllProfiles(Visit::Read) : ReadProfile(profile, path, subfolders, Visit::Read);
}

KeyedList<std::string> Location_Thunderbird::Discover(const BrowsePoint& point, std::string_view segment) {
  if (point.level == 1) return GetMozillaProfiles(point.prefix, segment, kThunderbirdScheme.appFolder);
  if (point.level == 2) return DiscoverAccounts(point, segment);
  return GetMailFolders(point.prefix, segment, point.folderPath);
}

// An account that can't be read is listed as what it is.
KeyedList<std::string> Location_Thunderbird::DiscoverAccounts(const BrowsePoint& point,
                                                              std::string_view segment) {
  const KeyedList<std::string> found = GetAccounts(point.prefix, segment, point.profilePath);
  if (segment != "*") {
    PassesOverMaildir(segment);
    return found;
  }
  KeyedList<std::string> named;
  for (const std::string& entry : found) {
    DiscoveryEntry account = SplitDiscoveryEntry(entry);
    const MailAccount* const told = FindMailAccount(SegmentOf(account, point.prefix));
    if (told != nullptr && IsToldAsMaildir(*told)) account.text += " (Maildir)";
    named.Add(JoinDiscoveryEntry(account));
  }
  return named;
}

bool Location_Thunderbird::ReadAllProfiles(Visit visit) {
  bool isAny = false;
  for (const std::string& entry : GetMozillaProfiles("", "*", kThunderbirdScheme.appFolder)) {
    const std::string name = NameOfDiscoveryEntry(entry);
    if (name == kDisks && DisksAreNoMail()) continue;
    isAny = true;
    if (!ReadProfile(name, "", true, visit) && !BrokenItemsAreNamed()) return false;
  }
  if (!isAny) TellNoProfile(kThunderbirdScheme);
  return isAny;
}

bool Location_Thunderbird::ReadProfile(const std::string& name, std::string rest, bool subfolders,
                                       Visit visit) {
  const KeyedList<std::string> paths = GetMozillaProfiles("", name, kThunderbirdScheme.appFolder);
  if (paths.IsEmpty()) {
    TellMissingProfile(name);
    return false;
  }
  const MozillaProfile profile = {name, paths.Item(1), name};
  const auto listed = [&](std::string_view filter) {
    return AccountsToRead([&] { return GetAccounts("", filter, profile.path); });
  };
  const auto readAccount = [&](const std::string& account, bool withSubfolders) {
    const std::string shown = NameOfAccount(account);
    const TreePtr child = Tree()->AddChild("Account '" + shown + "'", "Account=" + shown);
    ReadAccount(profile, account, rest, withSubfolders, child, visit);
  };
  const std::string token = CutToken(rest, "/");
  if (token == "*" || token.empty()) {
    for (const std::string& entry : listed("*")) {
      const DiscoveryEntry account = SplitDiscoveryEntry(entry);
      if (name == kDisks || !IsReadAlready(account))
        readAccount(name == kDisks ? account.text : SegmentOf(account, ""), true);
    }
  } else {
    if (AccountsAreAsShown()) {
      listed(token);
    } else {
      ForgetAccounts();
    }
    readAccount(token, subfolders);
  }
  return true;
}

// Two accounts may keep their mails in one folder. By the rules of today these are read once.
bool Location_Thunderbird::IsReadAlready(const DiscoveryEntry& account) {
  return AccountsAreAsShown() && !accountFolders_.IsNew(account.path);
}

void Location_Thunderbird::ReadAccount(const MozillaProfile& profile, const std::string& account,
                                       std::string rest, bool subfolders, const TreePtr& tree, Visit visit) {
  const KeyedList<std::string> paths =
      AccountsToRead([&] { return GetListedAccount(account, profile.path); });
  if (paths.IsEmpty()) {
    TellMissingAccount(profile.name, account);
    return;
  }
  if (PassesOverMaildir(account)) return;
  Place place = {paths.Item(1), std::string(kScheme) + profile.name + "/" + account + "/", ""};
  if (profile.name == kDisks) {
    ReadDrivePlace(std::move(place), std::move(rest), subfolders, tree, visit);
  } else {
    place.keywords = "Account=" + NameOfAccount(account);
    ReadMailPlace(std::move(place), std::move(rest), subfolders, tree, visit);
  }
}

void Location_Thunderbird::ReadMailPlace(Place place, std::string rest, bool subfolders, const TreePtr& tree,
                                         Visit visit) {
  while (!rest.empty()) {
    const std::string segment = FolderNameOnDisk(place.dir, CutToken(rest, "/"));
    place.keywords += "," + ShownFolderName(place.dir, segment);
    place.dir += segment;
    if (!rest.empty()) place.dir.append(kSubfolders) += '\\';
    place.location += segment + "/";
  }
  if (place.dir.ends_with('\\')) {
    ReadMailFolder(place, tree, visit);
    return;
  }
  if (!HasSubfoldersOnly(place.dir)) ReadMailbox(place, visit);
  if (!subfolders) return;
  const std::string mailbox = GetFileName(place.dir);
  const std::string name = ShownFolderName(place.dir.substr(0, place.dir.size() - mailbox.size()), mailbox);
  const TreePtr child = tree->AddChild(name, name);
  place.dir.append(kSubfolders) += '\\';
  ReadMailFolder(place, child, visit);
}

void Location_Thunderbird::ReadDrivePlace(Place place, std::string rest, bool subfolders, const TreePtr& tree,
                                          Visit visit) {
  while (!rest.empty()) {
    const std::string segment = CutToken(rest, "/");
    place.dir += segment;
    if (!rest.empty()) place.dir += '\\';
    place.location += segment + "/";
  }
  if (place.dir.ends_with('\\')) {
    ReadMailFolder(place, tree, visit);
    return;
  }
  if (!IsFolderOfMailboxes(place.dir)) ReadMailbox(place, visit);
  if (!subfolders) return;
  const std::string name = WithoutSubfolderSuffix(GetFileName(place.dir));
  const TreePtr child = tree->AddChild(name, name);
  place.dir += '\\';
  ReadDriveFolder(place, child, visit);
}

// The plain files tell what is there: those that are mailboxes, and with subfolders those that have a ".sbd"
// beside them. The address handed down keeps the folder's name alone.
void Location_Thunderbird::ReadMailFolder(const Place& folder, const TreePtr& tree, Visit visit) {
  const FolderTrail::Step step(trail_, folder.dir);
  if (step.LeadsBack() || !MayBeEntered(folder.dir)) return;
  const auto readSubfolders = [&](const std::string& name, const std::string& shown) {
    const TreePtr child = tree->AddChild(shown, shown);
    ReadMailFolder(
        {folder.dir + name + std::string(kSubfolderStep), name + "/", folder.keywords + "," + shown}, child,
        visit);
  };
  for (const std::string& name : os::ListNames(folder.dir, "*.*", 0)) {
    const std::string path = folder.dir + name;
    const std::string shown = ShownFolderName(folder.dir, name);
    if (IsMailbox(folder.dir, name, HasSummary(path), MailboxPlace::Account))
      ReadMailbox({path, folder.location + name, folder.keywords + "," + shown}, visit);
    if (IsFolderToEnter(path + std::string(kSubfolders))) readSubfolders(name, shown);
  }
  for (const std::string& name : NamesOfSubfoldersOnly(folder.dir))
    readSubfolders(name, ShownFolderName(folder.dir, name));
}

// Every subfolder gets a node, whether it holds mail or not, and the address keeps the whole path.
void Location_Thunderbird::ReadDriveFolder(const Place& folder, const TreePtr& tree, Visit visit) {
  const FolderTrail::Step step(trail_, folder.dir);
  if (step.LeadsBack() || !MayBeEntered(folder.dir)) return;
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder.dir, &files, &folders, "*.*");
  for (const std::string& name : files) {
    const std::string path = folder.dir + name;
    if (!IsMailbox(folder.dir, name, HasSummary(path), MailboxPlace::Disks)) continue;
    ReadMailbox({path, folder.location + name, folder.keywords + "," + name}, visit);
  }
  for (const std::string& name : folders) {
    const std::string keyword = WithoutSubfolderSuffix(name);
    const TreePtr child = tree->AddChild(keyword, keyword);
    ReadDriveFolder({folder.dir + name + "\\", folder.location + name + "/", folder.keywords + "," + keyword},
                    child, visit);
  }
}

void Location_Thunderbird::ReadMailbox(const Place& mailbox, Visit visit) {
  const auto mail = GetMailObject();
  if (frame::PassesOver(mailbox.dir) || LeadsNowhere(mailbox.dir)) return;
  if (visit == Visit::Note) {
    mailFiles_.Add(mailbox.dir);
    mailAddresses_.Add(mailbox.location);
    return;
  }
  if (!FileExists(mailbox.dir) || FolderExists(mailbox.dir)) return;
  HostGlobal& host = HostObjects::Current().Global();
  mail->SetMailboxFile(mailbox.dir);
  mail->NoteExpunged(IdsAreNumbered());
  mailIds_.BeginMailbox();
  if (!OpenToRead(*mail)) return;
  host.Report(report::kProgress, "0/100:Thunderbird " + mailbox.dir, nullptr);
  bool isOfMails = false;
  while (mail->ReadHeader(false, true)) {
    isOfMails = true;
    TellBroken(*mail);
    mailIds_.NoteExpunged(mail->Ledger().expungedIds);
    PasteItem(WithIdOfItsOwn(mail->GetData(mailbox.keywords, false)), false);
    TellLost(*mail, PasteLoss());
    host.Report(report::kProgress, NumberText(mail->Percent() * 100), nullptr);
  }
  TellBroken(*mail);
  TellUnreadRest(*mail);
  if (!isOfMails) TellSomethingElse(mailbox.dir);
  host.Report(report::kProgress, "", nullptr);
}

// The record with an ID that no item of the Location has.
std::string Location_Thunderbird::WithIdOfItsOwn(std::string record) {
  return mailIds_.WithIdOfItsOwn(std::move(record), [this](std::string_view id) { return HasID(id); });
}

}  // namespace vorlent
