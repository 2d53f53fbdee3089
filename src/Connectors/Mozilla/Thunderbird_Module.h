// Where the Mozilla applications keep their data: profiles by profiles.ini, accounts by prefs.js, folders by
// the files beside each other on the disk.
//
// Each procedure works on one level. With the filter "*" it gives a discovery entry (LocationRecord.h) for
// all that it finds, `prefix` in front of each address; with any other filter, the bare path of the one thing
// of that name, compared exactly, or nothing. What isn't there gives an empty list and no word about it; a
// file that can't be read and a preference that occurs twice raise, but for GetMailFolders and GetPref.
#pragma once

#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Connectors/Mozilla/MailAccounts.h"

namespace vorlent {

// The pseudo-profile that stands for the local disks.
inline constexpr std::string_view kDisks = ".";

// The profiles of an application: "Thunderbird" or "Mozilla\Sunbird" below the application-data folder. The
// disks close the list of all. A profile's entry tells the folders of its accounts as its path, joined by
// "|".
KeyedList<std::string> GetMozillaProfiles(std::string_view prefix, std::string_view filter,
                                          std::string_view appFolder);

// The accounts of a profile folder, whose preferences are read anew; the drives for the profile path ".". The
// path of an account ends in a separator. A drive is named by its letter, whether it exists or not.
KeyedList<std::string> GetAccounts(std::string_view prefix, std::string_view filter,
                                   std::string_view profilePath);

// As GetAccounts with the segment of one account, but the preferences are read only if those of another
// profile were read last, or were forgotten: so each of many accounts is found without reading all again.
KeyedList<std::string> GetListedAccount(std::string_view segment, std::string_view profilePath);
void ForgetAccounts();

// The mail folders in a folder given with its closing separator. Mailboxes are listed (MailboxFiles.h), yet
// any file is found by name. It may be shown by another name than that of its address, and is
// found by either. The path found is that of its ".sbd" folder, whether it exists or not. A prefix that holds
// "://./" is on the disks: there the subfolders come first, and only they are found by name.
KeyedList<std::string> GetMailFolders(std::string_view prefix, std::string_view filter,
                                      std::string_view folder);

// The name to show for a mailbox of the profile read last, and the mailbox that is called or shown so there;
// `folder` ends in a separator. By the rules of old both are the name as it is given.
std::string ShownFolderName(std::string_view folder, const std::string& name);
std::string FolderNameOnDisk(std::string_view folder, const std::string& name);

// Whether the walk below a path, given without an ending, finds subfolders only. By the rules of old there is
// a mailbox wherever there are subfolders.
bool HasSubfoldersOnly(const std::string& path);

// The names in a folder that have subfolders beside no mailbox, as where only a server holds the mails.
KeyedList<std::string> NamesOfSubfoldersOnly(std::string_view folder);

// The account of the profile read last that a segment of an address names; null if there is none.
const MailAccount* FindMailAccount(std::string_view segment);

// Whether it is to be told of an account that it keeps each mail in a file of its own, which no mailbox
// reader finds. By the rules of old this isn't asked.
bool IsToldAsMaildir(const MailAccount& account);

// A preference of the profile read last, "" if it has none of that name; letter case doesn't count.
std::string GetPref(std::string_view key);

// Whether a folder holds anything.
bool FolderHasEntries(std::string_view folder);

// The keyword path of a mailbox file: "Account=<account>,<folder>,..." if an account of a Thunderbird profile
// holds it, else the parts of its path after the drive.
std::string GetKeywordsOfFile(std::string_view file);

// The preferences of the profile read last: the names in order, and the values by name.
const KeyedList<std::string>& PrefNames();
const KeyedList<std::string>& PrefValues();

}  // namespace vorlent
