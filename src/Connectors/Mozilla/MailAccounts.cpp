#include "Connectors/Mozilla/MailAccounts.h"

#include <algorithm>
#include <unordered_set>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/AddressSegments.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// A folder told by its place in the profile's.
constexpr std::string_view kInProfile = "[ProfD]";

// What the preferences tell of a server.
class ServerPreferences {
 public:
  ServerPreferences(const AskPreference& preference, std::string_view server)
      : preference_(preference), lead_("mail.server." + std::string(server) + ".") {}

  std::string Of(std::string_view name) const { return preference_(lead_ + std::string(name)); }

  bool IsMaildir() const { return Of("storeContractID").find("maildir") != std::string::npos; }
  bool IsImap() const { return Of("type") == "imap"; }

 private:
  const AskPreference& preference_;
  std::string lead_;
};

// A name of one line. One that was never given is made of the user and the server.
std::string ShownNameOf(const ServerPreferences& server, const std::string& serverKey) {
  std::string name = server.Of("name");
  if (name.empty()) {
    const std::string host = server.Of("hostname");
    const std::string user = server.Of("userName");
    name = host.empty() ? serverKey : user.empty() ? host : user + "@" + host;
  }
  std::ranges::replace_if(
      name, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return name;
}

std::string InProfile(std::string_view profileFolder, std::string below) {
  ReplaceText(below, "/", "\\");
  return AddPathSep(AddPathSep(profileFolder) + below);
}

// The folder that Thunderbird would make for an account whose preferences tell none.
std::string UsualFolder(std::string_view profileFolder, const ServerPreferences& server) {
  const std::string type = server.Of("type");
  const std::string_view kind = type == "imap" ? "ImapMail/" : type == "nntp" ? "News/" : "Mail/";
  return InProfile(profileFolder, std::string(kind) + server.Of("hostname"));
}

// The place in the profile counts before the whole path, which stays behind when the profile is moved. It is
// told as the whole path has it where both are the same.
std::string FolderOf(std::string_view profileFolder, const ServerPreferences& server) {
  const std::string told = AddPathSep(server.Of("directory"));
  const std::string relative = server.Of("directory-rel");
  if (relative.starts_with(kInProfile)) {
    const std::string within = InProfile(profileFolder, relative.substr(kInProfile.size()));
    const auto found = os::TryIdentify(within);
    if (told.empty() || (found && found != os::TryIdentify(told))) return within;
  }
  return told.empty() ? UsualFolder(profileFolder, server) : told;
}

std::string FolderAsTold(const ServerPreferences& server) {
  std::string folder = server.Of("directory");
  if (!AccountsAreAsShown()) ReplaceText(folder, "\\\\", "\\");
  return AddPathSep(folder);
}

}  // namespace

bool AccountsAreAsShown() {
  return CurrentRules().accounts == MailAccounts::AsShown;
}

std::vector<MailAccount> MailAccountsOf(std::string_view profileFolder, const AskPreference& preference) {
  std::vector<MailAccount> accounts;
  OwnNames names;
  std::unordered_set<std::string> servers;
  std::string list = preference("mail.accountmanager.accounts");
  while (!list.empty()) {
    const std::string key = CutToken(list, ",");
    const std::string serverKey =
        preference("mail.account." + (AccountsAreAsShown() ? Trim(key) : key) + ".server");
    if (serverKey.empty()) continue;
    const ServerPreferences server(preference, serverKey);
    MailAccount account = {.isMaildir = server.IsMaildir(), .isImap = server.IsImap()};
    if (AccountsAreAsShown()) {
      if (!servers.insert(serverKey).second) continue;
      account.name = names.Take(ShownNameOf(server, serverKey));
      account.segment = AddressSegment(account.name);
      account.folder = FolderOf(profileFolder, server);
    } else {
      account.name = account.segment = server.Of("name");
      account.folder = FolderAsTold(server);
    }
    accounts.push_back(std::move(account));
  }
  return accounts;
}

}  // namespace vorlent
