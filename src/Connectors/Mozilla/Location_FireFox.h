// The bookmarks of a Firefox profile as a Location: a tree of folders and a store of items of type "url".
//
// Addresses:
//   firefox://                        the profile listed first
//   firefox://<profile>/              all bookmarks of a profile
//   firefox://<profile>/<folder>/.../ what lies below a folder; each folder is a title
//   firefox://*, .../*                the profiles, or the folders of a folder, as items of type "location"
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Common/KeyedList.h"
#include "Common/TextWriter.h"
#include "Common/qzelSQLite.h"
#include "Connectors/Mozilla/AddressedLocation.h"
#include "Connectors/Mozilla/BookmarkOutline.h"
#include "Connectors/Mozilla/Schemes.h"

namespace vorlent {

// Reads the profile's places.sqlite whenever the Location is opened or reloaded; nothing stays connected
// between. The database is never written. The only output is the profile's bookmarks.html.
//
// A database that can't be read shows a message box, and the Location keeps what was read before. Folders
// that form a cycle and widths that overflow raise.
class Location_FireFox final : public AddressedLocation<BookmarkConnector> {
 public:
  static constexpr std::string_view kScheme = kFireFoxScheme.prefix;

  // A failed read doesn't keep the file from being written.
  void Reload() override;
  std::string GetFile(const ItemPtr&, std::string_view) override { return {}; }

  // Writes tree and items into the folder of the profile read last, or into the current folder before the
  // first read, replacing what is there. A file that can't be written raises, and may be left written in
  // part.
  void Save() override;
  void SaveInto(std::string_view path) override;

  // Failures are swallowed; nothing if the host gives no list.
  std::shared_ptr<KeyedList<std::string>> GetSubKeywords(ExpressionPtr& expr) override;

  std::string ProfileFolder() const override { return profileFolder_; }
  std::string DatabaseFile() const override { return databaseFile_; }

 private:
  ParameterSettings Parameters() const override { return {"$type=url", "KeywordTree,Log"}; }
  void Pasted(const ItemPtr& item, std::string_view import) override;
  bool Withdraw(const ItemPtr& item) override;

  // --- Addresses and profiles (Location_FireFox.cpp)

  // The interface of the bookmarks has no such member.
  using AddressedLocation::Einlesen;
  std::string CutScheme(std::string& address) override;
  bool ReadAddress(std::string path) override;
  KeyedList<std::string> Discover(const BrowsePoint& point, std::string_view segment) override;
  void PasteLocations(const KeyedList<std::string>& entries, std::int32_t level) override;

  // The folder of the profile of that name, an empty list if there is none; for "*" an entry of two lines,
  // text and address, for each profile.
  static KeyedList<std::string> GetProfiles(std::string_view name);
  // What CollectSubFolders finds in a profile.
  KeyedList<std::string> GetSubFolders(std::string_view address, std::string_view token,
                                       std::string_view profileFolder);
  // Reads what lies below `path` into store and tree. False if there is no such profile, which the user is
  // told; a database that can't be read isn't a failed read.
  bool ReadBookmarks(std::string_view profile, std::string_view path, const TreePtr& tree);
  // Runs a walk over the database of a profile, if it has one, and tells the user if that fails.
  void Connect(std::string_view profileFolder, const std::function<bool()>& walk);

  // --- Walks (Location_FireFox_Reading.cpp)
  //
  // The depth of the tree is no matter to them. False if a statement failed.

  // Adds to `list` the address of each folder called `token` in the folder of address `target`, or text and
  // address of all folders there for "*". `current` is the address of the folder `id`; the folders of the
  // `first` level, the root row, have no part in addresses.
  bool CollectSubFolders(std::int32_t id, KeyedList<std::string>& list, std::string_view target,
                         std::string_view token, std::string_view current, bool first);
  // Makes nodes of the folders below `id` and items of the bookmarks in them. With a `path` only the folders
  // that it names are followed, until it is used up; on the `first` level it isn't touched.
  bool ReadFolder(std::int32_t id, std::string_view keywords, std::int16_t level, const TreePtr& node,
                  std::string_view path, bool first);

  // --- Export (Location_FireFox_Export.cpp)

  // Writes the tree below a node: of each its children, then its items.
  void SaveFolder(TextWriter& file, const TreePtr& node, std::int64_t level);
  // Writes everything in the order of the browser, and what has come into the tree since then behind that.
  void SaveOutline(TextWriter& file);

  std::string profileFolder_;  // with a trailing separator; "" before the first profile was found
  std::string databaseFile_;
  std::unique_ptr<qzelSQLite> database_;  // of the latest connection
  BookmarkOutline outline_;               // of the last read, if the rules ask for one
};

}  // namespace vorlent
