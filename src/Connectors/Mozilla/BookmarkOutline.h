// What a browser's bookmarks were, beyond what a tree of keywords and a list of items tell.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Common/StdModul.h"
#include "Host/Tree.h"

namespace vorlent {

// The folders of the last read with all that lies in them, in the order of the browser. Titles are as the
// database has them: UTF-8, empty ones included.
struct BookmarkOutline {
  // Stands for no folder.
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  struct Entry {
    enum class Kind { Folder, Bookmark, Separator };

    Kind kind;
    std::string title;            // of a bookmark
    std::size_t folder = kNone;   // of a folder: its position
    std::string id = {};          // of a bookmark's item
    std::string textAsRead = {};  // of that item, which the host may change
  };

  struct Folder {
    std::string title;
    TreePtr node;
    std::vector<Entry> entries = {};
  };

  std::vector<Folder> folders;          // the top one first; none if no outline is kept
  std::unordered_set<std::string> ids;  // of all bookmarks

  bool IsKept() const { return !folders.empty(); }

  // Begins anew: with the top folder, empty, or without an outline to be kept.
  void Reset(const TreePtr& top, bool keep) {
    folders.clear();
    ids.clear();
    if (keep) folders.push_back({"", top});
  }

  // Adds to the folder at a position, and gives the position of the new one.
  std::size_t AddFolder(std::size_t within, std::string_view title, const TreePtr& node) {
    if (!IsKept()) return kNone;
    folders.push_back({std::string(title), node});
    folders[within].entries.push_back({Entry::Kind::Folder, "", folders.size() - 1});
    return folders.size() - 1;
  }

  void AddBookmark(std::size_t within, std::string_view title, const ItemPtr& item) {
    if (!IsKept() || !HasObject(item)) return;
    folders[within].entries.push_back(
        {Entry::Kind::Bookmark, std::string(title), kNone, item->ID(), item->Text()});
    ids.insert(item->ID());
  }

  void AddSeparator(std::size_t within) {
    if (IsKept()) folders[within].entries.push_back({Entry::Kind::Separator, ""});
  }
};

}  // namespace vorlent
