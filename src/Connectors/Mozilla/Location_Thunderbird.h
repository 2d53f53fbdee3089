// The mail connector: Thunderbird's mailboxes as items of the host.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Connectors/Mozilla/AddressedLocation.h"
#include "Connectors/Mozilla/FolderTrail.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/MailPump.h"
#include "Connectors/Mozilla/MailRunTeller.h"
#include "Connectors/Mozilla/Profiles.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Host/Connector.h"

namespace vorlent {

// Reads the mailboxes below an address "thunderbird://<profile>/<account>/<folder>/..." into items or into a
// stream. An address that ends in "/*" is browsed: its items are places. One that ends in "/-" leaves
// subfolders out.
//
// InitLocation collects the mailboxes and reads no mail; Einlesen reads. A failed call of the host or of the
// mail reader rises from every member but ExecuteAction and those that swallow in the frame.
class Location_Thunderbird final : public AddressedLocation<MailConnector> {
 public:
  static constexpr std::string_view kProgId = kThunderbirdScheme.progId;
  static constexpr std::string_view kScheme = kThunderbirdScheme.prefix;

  // Removes the temporary folder with all that it holds.
  ~Location_Thunderbird() override;

  // The path below the host's temporary folder; with option 0 the file is brought out of the mailbox to it.
  std::string GetFile(const ItemPtr& itm, std::string_view key, GetFileOption getfileoption = 0) override;

  void SourceInit(const TreePtr& tr, bool saveattachments) override;
  // Needs a SourceInit before it and, once it has returned false, another one. After a failure the run stands
  // where it stood.
  bool SourceGetNext(std::string& srcitm) override;
  void SourceDelete() override;

  std::string GetActions() override;
  // "Restore" appends the item's stored mail to the first mailbox of the address, "Shortcut" a mail that
  // links to it.
  std::string ExecuteAction(std::string_view cmd) override;
  bool HasRestored() const override { return hasRestored_; }

  const KeyedList<std::string>& MailFiles() const override { return mailFiles_; }
  void SetRunObserver(MailRunObserver* observer) override { teller_.SetObserver(observer); }

 protected:
  ParameterSettings Parameters() const override;
  bool PrepareAddress(std::string_view file) override;
  bool Withdraw(const ItemPtr& item) override;

 private:
  // Whether the walk reads the mails of a mailbox or only notes the mailbox for the stream.
  enum class Visit { Note, Read };

  // Where the walk stands.
  struct Place {
    std::string dir;       // a folder with its closing separator, or a mailbox file
    std::string location;  // the address; it ends in "/" where names may follow
    std::string keywords;  // comma-separated; on the disks it begins with a comma
  };

  // The walk (Location_Thunderbird_Walk.cpp).
  std::string CutScheme(std::string& address) override;
  bool ReadAddress(std::string path) override;
  KeyedList<std::string> Discover(const BrowsePoint& point, std::string_view segment) override;
  static KeyedList<std::string> DiscoverAccounts(const BrowsePoint& point, std::string_view segment);
  bool ReadAllProfiles(Visit visit);
  bool ReadProfile(const std::string& name, std::string rest, bool subfolders, Visit visit);
  bool IsReadAlready(const DiscoveryEntry& account);
  void ReadAccount(const MozillaProfile& profile, const std::string& account, std::string rest,
                   bool subfolders, const TreePtr& tree, Visit visit);
  void ReadMailPlace(Place place, std::string rest, bool subfolders, const TreePtr& tree, Visit visit);
  void ReadDrivePlace(Place place, std::string rest, bool subfolders, const TreePtr& tree, Visit visit);
  void ReadMailFolder(const Place& folder, const TreePtr& tree, Visit visit);
  void ReadDriveFolder(const Place& folder, const TreePtr& tree, Visit visit);
  void ReadMailbox(const Place& mailbox, Visit visit);
  std::string WithIdOfItsOwn(std::string record);

  // A new reader; all of one connector share its temporary folder.
  std::unique_ptr<StdMail> GetMailObject();
  // Tells the host that a named thing doesn't exist.
  void TellMissing(std::string_view text) override;
  void TellMissingAccount(const std::string& profile, const std::string& account);

  // The way back (Location_Thunderbird_Restore.cpp).
  void RestoreMail(const ItemPtr& itm, std::string_view mailbox, bool shortcut);

  std::string tempFolder_;       // "" until first needed
  FolderTrail trail_;            // of the present walk
  KnownFolders accountFolders_;  // those that all accounts of a profile led to
  MailIds mailIds_;
  // The mailboxes found by InitLocation, and the address of each.
  KeyedList<std::string> mailFiles_;
  KeyedList<std::string> mailAddresses_;

  MailRunTeller teller_;
  std::unique_ptr<MailPump> pump_;  // of the run of the stream begun last
  bool hasRestored_ = false;
};

}  // namespace vorlent
