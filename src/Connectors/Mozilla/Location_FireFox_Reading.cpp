#include <algorithm>
#include <unordered_set>
#include <vector>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/Location_FireFox.h"

namespace vorlent {

namespace {

// The values of moz_bookmarks.type that matter.
constexpr std::int16_t kBookmark = 1;
constexpr std::int16_t kFolder = 2;

// The runtime's number for a recursion without end.
constexpr int kOutOfStackSpace = 28;

constexpr std::int16_t kMicrosecondDigits = 6;

std::string FoldersIn(std::int32_t id) {
  return "SELECT id, title FROM moz_bookmarks WHERE parent=" + std::to_string(id) +
         " AND type=2 ORDER BY position";
}

std::string EverythingIn(std::int32_t id) {
  return "SELECT moz_bookmarks.id, moz_bookmarks.type, moz_bookmarks.title, moz_places.url, "
         "moz_bookmarks.dateAdded, moz_bookmarks.lastModified FROM moz_bookmarks OUTER LEFT JOIN moz_places "
         "ON moz_bookmarks.fk=moz_places.id WHERE moz_bookmarks.parent=" +
         std::to_string(id) + " ORDER BY moz_bookmarks.position";
}

std::int32_t IdOf(const SqliteRow& row) {
  return ToInt32(ReadNumber(row.Item(1)));
}

// The folders that a walk stands in, the innermost last. Each holds its rows while those below it are read.
template <class Folder>
class FolderStack {
 public:
  bool IsEmpty() const { return folders_.empty(); }
  Folder& Innermost() { return folders_.back(); }

  // A folder that the walk stands in already raises: a damaged table would lead round in a circle for ever.
  void Enter(Folder folder) {
    if (!ids_.insert(folder.id).second) {
      throw Failure(kOutOfStackSpace,
                    "moz_bookmarks: folder " + std::to_string(folder.id) + " lies within itself");
    }
    folders_.push_back(std::move(folder));
  }

  void Leave() {
    ids_.erase(folders_.back().id);
    folders_.pop_back();
  }

 private:
  std::vector<Folder> folders_;
  std::unordered_set<std::int32_t> ids_;
};

struct OpenFolder {
  std::int32_t id;
  std::shared_ptr<const KeyedList<SqliteRow>> rows;
  std::int32_t passed = 0;

  // The next row, null behind the last.
  const SqliteRow* NextRow() { return passed < rows->Count() ? &rows->Item(++passed) : nullptr; }
};

// What a row tells. It is kept as a text of four lines, so a line feed inside a title ends it, and moves each
// field behind it by a line.
class BookmarkRow {
 public:
  void Read(const SqliteRow& row) {
    const std::string_view changed = row.Item(6);
    text_ = row.Item(2);
    text_ += '\n';
    text_ += Utf8Decode(row.Item(3));
    text_ += '\n';
    text_ += row.Item(4);
    text_ += '\n';
    text_ += changed.size() > 1 ? changed : row.Item(5);

    std::string_view rest = text_;
    type = ToInt16(ReadNumber(CutLine(rest)));
    title = CutLine(rest);
    url = CutLine(rest);
    date = CutLine(rest);
  }

  std::int16_t type = 0;
  std::string_view title, url, date;  // into text_

 private:
  std::string text_;
};

// Display text of microseconds since 1970 as decimal text.
std::string DisplayDate(std::string_view microseconds) {
  std::string seconds(microseconds);
  DropRight(seconds, kMicrosecondDigits);
  std::string stamp = EpochToStamp(ToInt32(ReadNumber(seconds)));
  return StampToDisplay(stamp);
}

// The record of a bookmark in place of what `record` held.
void WriteUrlRecord(std::string& record, const BookmarkRow& row, std::string_view keywords) {
  record = "ID=";
  record += NewGuidText();
  record += "|Type=url|Text=";
  record += EscapeValue(row.title.empty() ? row.url : row.title);
  record += "|Date=";
  record += DisplayDate(row.date);
  record += "|DataUrl=";
  record += EscapeValue(row.url);
  record += "|Keywords=";
  record += EscapeValue(keywords);
  record += "|Owner=";
  record += HostObjects::Current().Global().UserName();
}

// A title on its way from the database to an address.
void AppendStep(std::string& address, std::string_view title) {
  address += title;
  address += '/';
}

}  // namespace

bool Location_FireFox::CollectSubFolders(std::int32_t id, KeyedList<std::string>& list,
                                         std::string_view target, std::string_view token,
                                         std::string_view current, bool first) {
  struct Folder : OpenFolder {
    std::size_t addressLength;
    bool first;
  };
  FolderStack<Folder> folders;
  std::string address(current);  // of the innermost folder
  const auto enter = [&](std::int32_t folder, bool isFirst) {
    if (!database_->execute(FoldersIn(folder))) return false;
    folders.Enter({{folder, database_->Rows()}, address.size(), isFirst});
    return true;
  };

  if (!enter(id, first)) return false;
  while (!folders.IsEmpty()) {
    Folder& folder = folders.Innermost();
    address.resize(folder.addressLength);
    const SqliteRow* row = folder.NextRow();
    if (row == nullptr) {
      folders.Leave();
      continue;
    }
    const std::string title = Utf8Decode(row->Item(2));
    if (folder.first || address != target) {
      if (!folder.first) AppendStep(address, title);
      if (!enter(IdOf(*row), false)) return false;
    } else if (token == "*" || token == title) {
      std::string entry = token == "*" ? (title.empty() ? "-" : title) + "\n" : std::string();
      entry += target;
      AppendStep(entry, title);
      list.Add(std::move(entry));
    }
  }
  return true;
}

bool Location_FireFox::ReadFolder(std::int32_t id, std::string_view keywords, std::int16_t level,
                                  const TreePtr& node, std::string_view path, bool first) {
  struct Folder : OpenFolder {
    std::int16_t level;
    TreePtr node;
    std::size_t keywordsLength;
    std::string_view token;  // the only title that is followed, "" for all
    std::string_view path;   // behind it
  };
  FolderStack<Folder> folders;
  BookmarkRow row;
  std::string record;
  std::string joined(keywords);  // of the innermost folder
  const auto enter = [&](std::int32_t folder, std::int16_t itsLevel, const TreePtr& itsNode,
                         std::string_view token, std::string_view rest) {
    if (!database_->execute(EverythingIn(folder))) return false;
    folders.Enter({{folder, database_->Rows()}, itsLevel, itsNode, joined.size(), token, rest});
    return true;
  };
  const auto enterBelow = [&](std::int32_t folder, std::int16_t itsLevel, const TreePtr& itsNode,
                              std::string_view rest) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    return enter(folder, itsLevel, itsNode, rest.substr(0, end), rest.substr(std::min(end + 1, rest.size())));
  };

  if (!(first ? enter(id, level, node, "", path) : enterBelow(id, level, node, path))) return false;
  while (!folders.IsEmpty()) {
    Folder& folder = folders.Innermost();
    joined.resize(folder.keywordsLength);
    const SqliteRow* next = folder.NextRow();
    if (next == nullptr) {
      folders.Leave();
      continue;
    }
    row.Read(*next);
    if (row.type == kBookmark && folder.level >= 1 && folder.token.empty() &&
        !(row.title.empty() && row.url.empty())) {
      WriteUrlRecord(record, row, joined);
      PasteItem(record, false);
    } else if (row.type == kFolder && (folder.token.empty() || folder.token == row.title)) {
      const TreePtr child = folder.node->AddChild(row.title, row.title);
      if (!joined.empty()) joined += ',';
      joined += row.title;
      if (!enterBelow(IdOf(*next), ToInt16(folder.level + 1), child, folder.path)) return false;
    }
  }
  return true;
}

}  // namespace vorlent
