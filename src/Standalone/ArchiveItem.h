// The items of an archive.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Standalone/ArchiveContent.h"
#include "Standalone/FittingName.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent {

// Every change of a field is in the archive, durable, when the member returns. Once the archive is closed,
// changes and files raise ObjectNotSet.
class ArchiveItem : public StandaloneItem {
 public:
  // An item that is in the archive.
  ArchiveItem(std::weak_ptr<ArchiveContent> content, StoredItem stored);

  // Adds an item to the archive. The record's file descriptions name the files that TakeFile is going to
  // bring in, unless the record says that its files lie in a mailbox.
  static std::shared_ptr<ArchiveItem> Paste(const std::shared_ptr<ArchiveContent>& content,
                                            std::string_view record);

  void SetID(std::string_view id) override;
  void SetType(std::string_view type) override;
  void ImportRecord(std::string_view record) override;

  // True ends what began with PasteRecord: an item that the archive has already, to the last byte of its
  // files but for what the mail client rewrites in a mailbox, is not kept twice. The older one stays, with
  // all that was done to it since and the keywords that were added to this one, and this object is that item
  // from then on. Where files are lacking, the item goes that has none which the other lacks.
  void SetConnected(bool connected) override;

  std::string DataFile(std::string_view key, std::int32_t index) const override;

  // Once this returns the file is in the archive, safe from a crash of the machine. `options` are words
  // joined by "|": "move" lets the source go, after that; "nofileattribute" takes the read-only attribute
  // from the file. A file that the item took already under another key is shared. A source that isn't there
  // raises FileNotFound, and the item is marked as one that lacks a file.
  void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                std::string_view metaData) override;

  std::int64_t Number() const { return number_; }
  // Whether a file that belongs to the item didn't make it into the archive.
  bool IsIncomplete() const;
  bool WasThere() const override { return wasThere_; }

 protected:
  void Changed(std::int32_t action, std::string_view value) override;

 private:
  struct File {
    enum class State { Expected, In, Missing };

    std::string name;    // among the item's files
    std::string source;  // where an expected one is to come from
    State state = State::Expected;
  };

  // The item's data in the archive as it is held here.
  void Become(StoredItem stored);
  std::shared_ptr<ArchiveContent> Content() const;
  std::vector<StoredFile> StoredFiles() const;
  void Save();
  void SetDescription(std::string_view key, std::string_view path, std::string_view metaData);

  void Expect(std::string_view key, std::string_view path);
  std::string NameFor(std::string_view key, std::string_view path);
  void BringIn(std::string_view key, std::string_view options);
  void Replace(File& file, std::string_view key, std::string_view path, std::string_view options,
               std::string_view metaData);
  void Describe(std::string_view key, std::string_view metaData);

  void MergeWithTwins();
  // Which of two items that are the same as far as their files are there can stand for both.
  enum class Fuller { Neither, This, Twin };
  Fuller Compare(const StoredItem& twin) const;
  std::map<std::string, std::string> DescriptionsFor(const StoredItem& twin) const;

  std::weak_ptr<ArchiveContent> content_;
  std::int64_t number_ = 0;
  std::map<std::string, File, std::less<>> files_;               // by key
  std::unordered_map<std::string, std::string> namesOfSources_;  // names by the path that they come from
  DistinctNames names_{ArchiveFiles::kLongestName};
  std::unordered_set<std::string> arrivedNames_;  // those whose files are in
  std::vector<std::int64_t> twins_;  // items of the same fingerprint, found when this one was pasted
  bool isUnsaved_ = false;           // the lines after a file's name differ from those that are stored
  bool wasThere_ = false;
};

}  // namespace vorlent
