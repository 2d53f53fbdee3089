#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/BookmarkTimes.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/Location_FireFox.h"
#include "Host/RecordKeys.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// The values of moz_bookmarks.type that matter.
constexpr std::int16_t kBookmark = 1;
constexpr std::int16_t kFolder = 2;
constexpr std::int16_t kSeparatorRow = 3;

// The runtime's number for a recursion without end.
constexpr int kOutOfStackSpace = 28;

constexpr std::int16_t kMicrosecondDigits = 6;

std::string FoldersIn(std::int64_t id) {
  return "SELECT id, title FROM moz_bookmarks WHERE parent=" + std::to_string(id) +
         " AND type=2 ORDER BY position";
}

std::string EverythingIn(std::int64_t id) {
  return "SELECT moz_bookmarks.id, moz_bookmarks.type, moz_bookmarks.title, moz_places.url, "
         "moz_bookmarks.dateAdded, moz_bookmarks.lastModified FROM moz_bookmarks OUTER LEFT JOIN moz_places "
         "ON moz_bookmarks.fk=moz_places.id WHERE moz_bookmarks.parent=" +
         std::to_string(id) + " ORDER BY moz_bookmarks.position";
}

std::int64_t IdOf(const SqliteRow& row) {
  return Within32(ReadNumber(row.Item(1)));
}

// A walk over a folder and all folders below it that are to be entered, each read by a statement of its own.
// The visitor tells which they are:
//
//   Place              what there is to know of a folder that the walk stands in
//   Statement(id)      the statement by which a folder is read
//   Visit(place, row)  what becomes of a row of that folder; gives the row's own place if the walk is to
//                      enter it as a folder
template <class Visitor>
class FolderWalk {
 public:
  using Place = typename Visitor::Place;

  FolderWalk(qzelSQLite& database, Visitor& visitor) : database_(database), visitor_(visitor) {}

  // False if a statement failed; by the rules of today, only that of the top folder.
  bool Run(std::int64_t id, Place place) {
    if (!Enter(id, std::move(place))) return false;
    while (!folders_.empty()) {
      Folder& folder = folders_.back();
      const SqliteRow* row = folder.NextRow();
      if (row == nullptr) {
        Leave();
      } else if (!(BrokenItemsAreNamed() ? TakeOrTell(folder.place, *row) : Take(folder.place, *row))) {
        return false;
      }
    }
    return true;
  }

 private:
  bool Take(const Place& place, const SqliteRow& row) {
    std::optional<Place> below = visitor_.Visit(place, row);
    return !below || Enter(IdOf(row), *std::move(below));
  }

  // What can't be read is told, and the walk goes on.
  bool TakeOrTell(const Place& place, const SqliteRow& row) {
    const auto tell = [&](const std::string& reason) {
      const std::string title = Utf8Decode(row.Item("title"));
      frame::ReportUnreadable(
          {database_.file, "Lesezeichen " + std::string(row.Item(1)) + " '" + title + "': " + reason});
    };
    try {
      if (!Take(place, row)) tell(database_.LastError());
    } catch (const Failure& failure) {
      tell(failure.Reason());
    }
    return true;
  }

  // A folder that the walk stands in holds its rows while those below it are read.
  struct Folder {
    std::int64_t id;
    Place place;
    std::shared_ptr<const KeyedList<SqliteRow>> rows;
    std::int32_t passed = 0;

    // The next row, null after the last.
    const SqliteRow* NextRow() { return passed < rows->Count() ? &rows->Item(++passed) : nullptr; }
  };

  // A folder that the walk stands in already raises: a damaged table would lead round in a circle for ever.
  bool Enter(std::int64_t id, Place place) {
    if (!database_.execute(Visitor::Statement(id))) return false;
    if (!ids_.insert(id).second) {
      throw Failure(kOutOfStackSpace, "moz_bookmarks: folder " + std::to_string(id) + " lies within itself");
    }
    folders_.push_back({id, std::move(place), database_.Rows()});
    return true;
  }

  void Leave() {
    ids_.erase(folders_.back().id);
    folders_.pop_back();
  }

  qzelSQLite& database_;
  Visitor& visitor_;
  std::vector<Folder> folders_;  // the innermost last: a stack of its own, so that no depth is too great
  std::unordered_set<std::int64_t> ids_;
};

bool TitlesAreWhole() {
  return CurrentRules().bookmarkTitles == BookmarkTitles::Whole;
}

// What a row tells.
class BookmarkRow {
 public:
  void Read(const SqliteRow& row) {
    const std::string_view changed = row.Item(6);
    text_ = Utf8Decode(row.Item(3));
    type = ToInt16(ReadNumber(row.Item(2)));
    title = text_;
    url = row.Item(4);
    date = changed.size() > 1 ? changed : row.Item(5);
    if (!TitlesAreWhole()) CutLines(row.Item(2));
  }

  std::int16_t type = 0;
  std::string_view title, url, date;  // into text_ or the row

 private:
  // The row as a text of four lines: a line feed inside a title ends it, and moves each field behind it by a
  // line.
  void CutLines(std::string_view typeText) {
    std::string lines(typeText);
    for (const std::string_view field : {title, url, date})
      lines.append("\n").append(field);
    text_ = std::move(lines);
    std::string_view rest = text_;
    type = ToInt16(ReadNumber(CutLine(rest)));
    title = CutLine(rest);
    url = CutLine(rest);
    date = CutLine(rest);
  }

  std::string text_;
};

// A title as a value of a record. Line breaks would become those of Windows on their way.
std::string TitleValue(std::string_view title) {
  const bool hasBreaks = title.find('\n') != title.npos || title.find('\r') != title.npos;
  if (!TitlesAreWhole() || !hasBreaks) return EscapeValue(title);
  std::string value;
  while (!title.empty()) {
    const std::size_t end = std::min(title.find_first_of("\r\n"), title.size());
    value += EscapeValue(title.substr(0, end));
    if (end < title.size()) value += title[end] == '\n' ? "\\010" : "\\013";
    title.remove_prefix(std::min(end + 1, title.size()));
  }
  return value;
}

// Seconds of microseconds since 1970 as decimal text.
std::int64_t SecondsOfDate(std::string_view microseconds) {
  std::string seconds(microseconds);
  DropRight(seconds, kMicrosecondDigits);
  return Within32(ReadNumber(seconds));
}

// The record of a bookmark in place of what `record` held.
void WriteUrlRecord(std::string& record, const BookmarkRow& row, std::string_view keywords) {
  record.clear();
  AppendField(record, record_key::kId, NewGuidText());
  AppendField(record, record_key::kType, "url");
  AppendField(record, record_key::kText, TitleValue(row.title.empty() ? row.url : row.title));
  AppendField(record, record_key::kDate, ShownBookmarkTime(SecondsOfDate(row.date)));
  AppendDataField(record, data_key::kUrl, EscapeValue(row.url));
  AppendField(record, record_key::kKeywords, TitleValue(keywords));
  AppendField(record, record_key::kOwner, HostObjects::Current().Global().UserName());
}

// A title on its way from the database to an address.
void AppendStep(std::string& address, std::string_view title) {
  address += title;
  address += '/';
}

// Looks for the folders called `token` in the folder of address `target`, or for all there by the token "*".
class SubFolderSearch {
 public:
  struct Place {
    std::size_t addressLength;
    bool first;
  };

  SubFolderSearch(KeyedList<std::string>& list, std::string_view target, std::string_view token,
                  std::string_view current)
      : list_(list), target_(target), token_(token), address_(current) {}

  static std::string Statement(std::int64_t id) { return FoldersIn(id); }

  std::optional<Place> Visit(const Place& at, const SqliteRow& row) {
    address_.resize(at.addressLength);
    const std::string title = Utf8Decode(row.Item(2));
    if (at.first || address_ != target_) {
      if (!at.first) AppendStep(address_, title);
      return Place{address_.size(), false};
    }
    if (token_ == "*" || token_ == title) {
      std::string entry = token_ == "*" ? (title.empty() ? "-" : title) + "\n" : std::string();
      entry += target_;
      AppendStep(entry, title);
      list_.Add(std::move(entry));
    }
    return std::nullopt;
  }

 private:
  KeyedList<std::string>& list_;
  const std::string_view target_, token_;
  std::string address_;  // of the innermost folder
};

// Makes nodes of folders and items of bookmarks.
class BookmarkReading {
 public:
  struct Place {
    std::int64_t level;
    TreePtr node;
    std::size_t keywordsLength;
    std::string_view token;  // the only title that is followed, "" for all
    std::string_view path;   // what comes after it
    std::size_t outlined;    // the folder in the outline
  };

  BookmarkReading(Location_FireFox& connector, BookmarkOutline& outline, std::string_view keywords)
      : connector_(connector), outline_(outline), keywords_(keywords) {}

  static std::string Statement(std::int64_t id) { return EverythingIn(id); }

  // The place of a folder in which all titles are followed.
  Place Top(std::int64_t level, const TreePtr& node, std::string_view path) const {
    return {level, node, keywords_.size(), "", path, 0};
  }

  // The place of a folder in which the first step of the path is followed.
  Place OnPath(std::int64_t level, const TreePtr& node, std::string_view path, std::size_t outlined) const {
    const std::size_t end = std::min(path.find('/'), path.size());
    return {level,   node, keywords_.size(), path.substr(0, end), path.substr(std::min(end + 1, path.size())),
            outlined};
  }

  std::optional<Place> Visit(const Place& at, const SqliteRow& fields) {
    keywords_.resize(at.keywordsLength);
    row_.Read(fields);
    const bool isWanted = at.level >= 1 && at.token.empty();
    if (row_.type == kBookmark && isWanted && !(row_.title.empty() && row_.url.empty())) {
      WriteUrlRecord(record_, row_, keywords_);
      const ItemPtr item = connector_.PasteItem(record_, false);
      outline_.AddBookmark(at.outlined, fields.Item(3), item,
                           static_cast<std::size_t>(connector_.Count()) - 1, SecondsOfDate(row_.date));
      if (BrokenItemsAreNamed()) RequirePasted();
    } else if (row_.type == kSeparatorRow && isWanted) {
      outline_.AddSeparator(at.outlined);
    } else if (row_.type == kFolder && (at.token.empty() || at.token == row_.title)) {
      const TreePtr child = at.node->AddChild(row_.title, row_.title);
      if (!keywords_.empty()) keywords_ += ',';
      keywords_ += row_.title;
      const std::size_t outlined = outline_.AddFolder(at.outlined, fields.Item(3), child);
      return OnPath(Within16(at.level + 1), child, at.path, outlined);
    }
    return std::nullopt;
  }

 private:
  void RequirePasted() const {
    const Cause& loss = connector_.PasteLoss();
    if (!loss.IsEmpty()) throw Failure(static_cast<int>(ErrorNumber::Host), loss);
  }

  Location_FireFox& connector_;
  BookmarkOutline& outline_;
  std::string keywords_;  // of the innermost folder
  BookmarkRow row_;
  std::string record_;
};

}  // namespace

bool Location_FireFox::CollectSubFolders(std::int32_t id, KeyedList<std::string>& list,
                                         std::string_view target, std::string_view token,
                                         std::string_view current, bool first) {
  SubFolderSearch search(list, target, token, current);
  return FolderWalk(*database_, search).Run(id, {current.size(), first});
}

bool Location_FireFox::ReadFolder(std::int32_t id, std::string_view keywords, std::int16_t level,
                                  const TreePtr& node, std::string_view path, bool first) {
  BookmarkReading reading(*this, outline_, keywords);
  return FolderWalk(*database_, reading)
      .Run(id, first ? reading.Top(level, node, path) : reading.OnPath(level, node, path, 0));
}

}  // namespace vorlent
