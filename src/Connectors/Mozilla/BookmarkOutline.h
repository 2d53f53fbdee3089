// What a browser's bookmarks were, beyond what a tree of keywords and a list of items tell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Common/StdModul.h"
#include "Host/Tree.h"

namespace vorlent {

// The folders of the last read with all that lies in them, in the order of the browser. Titles are as the
// database has them: UTF-8, empty ones included.
struct BookmarkOutline {
  // Stands for no folder.
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  // What a bookmark's title was, and the text that its item had then, which the host may change.
  struct AsRead {
    std::string title;
    std::string text;
  };

  struct Entry {
    enum class Kind { Folder, Bookmark, Separator };

    Kind kind;
    // Of a folder among the folders; of a bookmark's item in the store, when it was read.
    std::size_t position = kNone;
    ItemPtr item = {};                          // of a bookmark
    std::unique_ptr<const AsRead> asRead = {};  // of a bookmark whose text isn't its title
    std::int64_t moment = 0;                    // at which a bookmark was made, in seconds since 1970
  };

  struct Folder {
    std::string title;
    TreePtr node;
    std::vector<Entry> entries = {};
  };

  std::vector<Folder> folders;  // the top one first; none if no outline is kept

  bool IsKept() const { return !folders.empty(); }

  // Begins anew: with the top folder, empty, or without an outline to be kept.
  void Reset(const TreePtr& top, bool keep) {
    folders.clear();
    if (keep) folders.push_back({"", top});
  }

  // Adds to the folder at a position, and gives the position of the new one.
  std::size_t AddFolder(std::size_t within, std::string_view title, const TreePtr& node) {
    if (!IsKept()) return kNone;
    folders.push_back({std::string(title), node});
    folders[within].entries.push_back({Entry::Kind::Folder, folders.size() - 1});
    return folders.size() - 1;
  }

  void AddBookmark(std::size_t within, std::string_view title, const ItemPtr& item, std::size_t position,
                   std::int64_t moment) {
    if (!IsKept() || !HasObject(item)) return;
    Entry& entry = folders[within].entries.emplace_back(Entry{Entry::Kind::Bookmark, position, item});
    entry.moment = moment;
    std::string text = item->Text();
    if (text != title)
      entry.asRead = std::make_unique<const AsRead>(AsRead{std::string(title), std::move(text)});
  }

  void AddSeparator(std::size_t within) {
    if (IsKept()) folders[within].entries.push_back({Entry::Kind::Separator});
  }

  // Of all bookmarks.
  std::unordered_set<std::string> IDs() const {
    std::unordered_set<std::string> ids;
    for (const Folder& folder : folders) {
      for (const Entry& entry : folder.entries) {
        if (entry.kind == Entry::Kind::Bookmark) ids.insert(entry.item->ID());
      }
    }
    return ids;
  }
};

}  // namespace vorlent
