// The archive: a Location that keeps what is imported.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Standalone/ArchiveItem.h"
#include "Standalone/LocationBase.h"

namespace vorlent {

// A folder with "archive.sqlite", which holds the items and the full-text index, and "files", which holds
// theirs. The Location's name is the path of the folder. One program at a time has an archive open, and uses
// it with its items from one thread.
//
// PasteRecord and an item's TakeFile are durable when they return. So whoever deletes a mail at its source
// after both loses nothing by a crash, whenever that comes: an archive that was not closed puts itself in
// order when it is opened again. A mail that lacked a file by then is still there, marked as incomplete, and
// goes once it is imported again.
//
// IDs may repeat, since mails without a Message-ID share one: a record of an ID that the archive has already
// makes an item of its own, unless it turns out to be the same mail, see ArchiveItem::SetConnected.
class Archive : public LocationBase, public std::enable_shared_from_this<Archive> {
 public:
  explicit Archive(std::weak_ptr<StandaloneGlobal> global) : LocationBase(std::move(global)) {}
  // Closes, its failures unsaid.
  ~Archive() override;

  // Whether there is an archive in that folder.
  static bool IsArchive(std::string_view folder);
  // The name of the archive in a folder: its path without a separator at the end.
  static std::string NameOf(std::string_view folder);

  ObjectPtr Connector() const override { return nullptr; }

  // Opens the archive of a folder and makes it if it isn't there. A folder that can't be made or opened, a
  // damaged database or one that another program has open raises and leaves the archive closed.
  LocationState Open(std::string_view folder) override;
  // An archive has all its items at hand.
  void Load() override {}
  // Closes. Items that are still held refuse changes from then on.
  void Close() override;

  // All further members but ItemCount and FileLocation raise ObjectNotSet on a closed archive.
  ItemPtr PasteRecord(std::string_view record) override;
  // The items in the order in which they were pasted.
  ItemPtr ItemAt(std::int32_t pos) override;
  // 0 on a closed archive.
  std::int32_t ItemCount() const override;
  std::string GetSetting(std::string_view key) override;
  std::string FileLocation() const override;

  // --- What the host itself knows and does beyond the contract

  bool IsOpen() const { return content_ != nullptr; }
  void SetSetting(std::string_view key, std::string_view value);
  // Where ItemAt finds an item, 0 for one that is no longer there.
  std::int32_t PositionOf(const ArchiveItem& item);
  // The item of that ID, the oldest if there are several, or nothing.
  ItemPtr FindItem(std::string_view id);
  // All of them, the oldest first.
  std::vector<std::shared_ptr<ArchiveItem>> ItemsOf(std::string_view id);
  // Which of those an item is, from 1.
  std::int32_t CopyNumberOf(const ArchiveItem& item);
  // The items that lack a file.
  std::vector<std::shared_ptr<ArchiveItem>> IncompleteItems();
  // The items that hold all the words, as ArchiveIndex::Find tells. The first search after an import
  // brings the index up to date, with the host's progress display if that takes long; cancelled there, it
  // finds nothing, and the next one continues.
  std::vector<std::shared_ptr<ArchiveItem>> Search(std::string_view words);

  // Proves that what was pasted and taken since the last time can be reached under the archive's path, as
  // someone else may have removed or replaced what it consists of. Raises what is wrong.
  void Prove();

  // While this lives, what is pasted and taken becomes durable by ArchivePortions, the last one in Finish.
  // Much faster, and only for sources that keep their mails: a crash loses what wasn't durable yet.
  class Portions {
   public:
    explicit Portions(Archive& archive);
    ~Portions();
    Portions(const Portions&) = delete;
    Portions& operator=(const Portions&) = delete;

    void Finish();

   private:
    std::weak_ptr<ArchiveContent> content_;
  };

 private:
  ArchiveContent& Opened() const;
  // Brings the index up to date; false if the user cancelled.
  bool UpdateIndex();
  std::shared_ptr<ArchiveItem> ItemOf(std::int64_t number);
  std::vector<std::shared_ptr<ArchiveItem>> ItemsOf(const std::vector<std::int64_t>& numbers);

  std::shared_ptr<ArchiveContent> content_;
};

using ArchivePtr = std::shared_ptr<Archive>;

}  // namespace vorlent
