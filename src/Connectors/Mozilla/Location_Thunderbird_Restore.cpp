// The way back: an archived mail into the first mailbox of the address.

#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/MailRestore.h"
#include "Host/FileKeys.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::string_view kRestore = "Restore";
constexpr std::string_view kShortcut = "Shortcut";

// A flag of the host's error object. One that can't be read isn't set.
bool ReadFlag(HostGlobal& host, bool (HostError::*flag)() const) {
  bool isSet = false;
  Swallow([&] { isSet = ((*host.ErrorFactory()->Error()).*flag)(); });
  return isSet;
}

}  // namespace

std::string Location_Thunderbird::GetActions() {
  return "Restore,Shortcut";
}

std::string Location_Thunderbird::ExecuteAction(std::string_view cmd) {
  std::string id(cmd);
  const std::string verb = CutToken(id, ":");
  if (verb != kRestore && verb != kShortcut) return "";
  hasRestored_ = false;
  HostGlobal& host = HostObjects::Current().Global();
  ItemPtr itm;
  Swallow([&] { itm = host.FindItem(id); });
  if (IsNothing(itm)) {
    Swallow([&] { TellMissing("ID '" + id + "' nicht gefunden!"); });
  } else if (mailFiles_.IsEmpty()) {
    const bool isSilent = ReadFlag(host, &HostError::Silent);
    const bool isSuppressed = ReadFlag(host, &HostError::Suppressed);
    if (!isSilent && !isSuppressed) Swallow([&] { TellMissing(verb + ": Folder not found"); });
  } else {
    RestoreMail(itm, mailFiles_.Item(1), verb == kShortcut);
  }
  return "";
}

void Location_Thunderbird::RestoreMail(const ItemPtr& itm, std::string_view mailbox, bool shortcut) {
  std::string source;
  Swallow([&] { source = itm->DataFile(kMailFileKey, 0); });
  if (!FileExists(source)) {
    Swallow([&] {
      Platform::Current().ShowMessage(source, "Quell-Datei existiert nicht", MessageIcon::Information,
                                      MessageButtons::Ok);
    });
    return;
  }
  TextWriter out;
  LineFile in;
  std::unique_ptr<StdMail> mail;
  Swallow([&] { EnsureMailboxPath(mailbox); });
  Swallow([&] { out = TextWriter(mailbox, os::File::Mode::Append); });
  Swallow([&] { in = LineFile(source, os::File::Mode::Read); });
  Swallow([&] { mail = GetMailObject(); });
  const bool isWhole = MailRestorer(out, *itm, mail.get(), shortcut).Restore(in);
  Swallow([&] { out.Close(); });
  hasRestored_ = isWhole && mail != nullptr && !out.HasFailed();
}

}  // namespace vorlent
