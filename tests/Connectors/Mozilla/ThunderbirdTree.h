// An application-data folder with Thunderbird profiles in it, for tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace vorlent {

// Profiles lie in Thunderbird\Profiles\<name>, their accounts in Mail\<account> of it. Names may hold "/" for
// a folder in another.
class ThunderbirdTree {
 public:
  // The application-data folder.
  std::string Path() const { return folder_.Path(); }
  const TemporaryFolder& Folder() const { return folder_; }

  void AddProfile(const std::string& name, const std::vector<std::string>& accounts) {
    const std::string number = std::to_string(profiles_++);
    ini_ +=
        "[Profile" + number + "]\r\nName=" + name + "\r\nIsRelative=1\r\nPath=Profiles/" + name + "\r\n\r\n";
    folder_.Write("Thunderbird/profiles.ini", ini_);
    std::string list;
    std::string prefs = "# Mozilla User Preferences\r\n\r\n";
    for (std::size_t i = 1; i <= accounts.size(); ++i) {
      const std::string n = std::to_string(i);
      const std::string& account = accounts[i - 1];
      list += (list.empty() ? "account" : ",account") + n;
      prefs += "user_pref(\"mail.account.account" + n + ".server\", \"server" + n + "\");\r\n";
      prefs += "user_pref(\"mail.server.server" + n + ".directory\", \"" +
               Doubled(folder_.MakeFolder(AccountIn(name, account))) + "\");\r\n";
      prefs += "user_pref(\"mail.server.server" + n + ".name\", \"" + account + "\");\r\n";
    }
    prefs += "user_pref(\"mail.accountmanager.accounts\", \"" + list + "\");\r\n";
    folder_.Write("Thunderbird/Profiles/" + name + "/prefs.js", prefs);
  }

  // The folder of an account, with its closing separator.
  std::string AccountFolder(const std::string& profile, const std::string& account) const {
    return folder_.Path(AccountIn(profile, account)) + "\\";
  }

  // Writes a mailbox with its summary beside it, such as "Inbox" or "Inbox.sbd/Sub", and returns its path.
  std::string AddMailbox(const std::string& profile, const std::string& account, const std::string& name,
                         const std::string& bytes = {}) const {
    folder_.Write(AccountIn(profile, account) + "/" + name + ".msf", "");
    return AddFile(profile, account, name, bytes);
  }

  // Adds a preference to those of a profile.
  void AddPref(const std::string& profile, const std::string& name, const std::string& value) const {
    const std::string file = "Thunderbird/Profiles/" + profile + "/prefs.js";
    folder_.Write(file, folder_.Read(file) + "user_pref(\"" + name + "\", \"" + value + "\");\r\n");
  }

  // Writes the names under which Thunderbird shows mailboxes of an account: pairs of both names.
  void WriteShownNames(const std::string& profile, const std::string& account,
                       const std::vector<std::pair<std::string, std::string>>& names) const {
    std::string json;
    for (const auto& [mailbox, shown] : names) {
      json += (json.empty() ? "{\"" : ",\"") + folder_.Native(AccountIn(profile, account)).string() + "/" +
              mailbox + ".msf\":{\"folderName\":\"" + shown + "\"}";
    }
    folder_.Write("Thunderbird/Profiles/" + profile + "/folderCache.json", json + "}");
  }

  // Writes a file without a summary.
  std::string AddFile(const std::string& profile, const std::string& account, const std::string& name,
                      const std::string& bytes = {}) const {
    return folder_.Write(AccountIn(profile, account) + "/" + name, bytes);
  }

  void AddFolder(const std::string& profile, const std::string& account, const std::string& name) const {
    folder_.MakeFolder(AccountIn(profile, account) + "/" + name);
  }

 private:
  static std::string AccountIn(const std::string& profile, const std::string& account) {
    return "Thunderbird/Profiles/" + profile + "/Mail/" + account;
  }

  static std::string Doubled(const std::string& path) {
    std::string text;
    for (const char c : path) {
      text += c;
      if (c == '\\') text += c;
    }
    return text;
  }

  TemporaryFolder folder_;
  std::string ini_ = "[General]\r\nStartWithLastProfile=1\r\n\r\n";
  int profiles_ = 0;
};

}  // namespace vorlent
