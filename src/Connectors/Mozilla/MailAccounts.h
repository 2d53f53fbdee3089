// The mail accounts of a profile.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

struct MailAccount {
  std::string name = {};     // to be shown
  std::string segment = {};  // by which addresses name it
  std::string folder = {};   // with its closing separator
  bool isMaildir = false;    // keeps each mail in a file of its own
  bool isImap = false;
};

// Asks for a preference of a profile, "" for one that it hasn't.
using AskPreference = std::function<std::string(std::string_view key)>;

// Whether accounts are those that Thunderbird shows, and preferences read as it reads them: with escapes and
// numbers, the last one of a name.
bool AccountsAreAsShown();

// The accounts in the order of the preferences. By the rules of old these tell name and folder of each. Today
// two of a name get names of their own, one without a name is called as Thunderbird does, and folders are
// found in a profile that was moved.
std::vector<MailAccount> MailAccountsOf(std::string_view profileFolder, const AskPreference& preference);

}  // namespace vorlent
