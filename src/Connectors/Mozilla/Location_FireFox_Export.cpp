#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/BookmarkTimes.h"
#include "Connectors/Mozilla/Location_FireFox.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"
#include "Platform/Utf8.h"

namespace vorlent {

namespace {

// An attribute of a folder that a browser shows as its toolbar.
constexpr std::string_view kToolbarMark = "PERSONAL_TOOLBAR_FOLDER";

// IDs of this kind carry base64 text after the three characters.
constexpr std::string_view kEncodedID = "rdf";

std::string Indent(std::int64_t level) {
  return std::string(static_cast<std::size_t>(level) * 4, ' ');
}

// What stands in the file for a character that would end or change the text it stands in, "" for any other.
// A line feed is one as well: some browsers take the file line by line, and know few references. To those
// that take it as a whole, a lone carriage return is a line feed.
constexpr std::string_view Markup(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\n':
      return "\r";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

// Most characters need none, so that is looked up.
constexpr std::array<bool, 256> kNeedsMarkup = [] {
  std::array<bool, 256> needs{};
  for (std::size_t c = 0; c < needs.size(); ++c)
    needs[c] = !Markup(static_cast<char>(c)).empty();
  return needs;
}();

// Writes a text so that a browser reads the very same by today's rules: in UTF-8 all through.
void WriteMarkup(TextWriter& file, std::string_view text) {
  if (CurrentRules().bookmarkMarkup == BookmarkMarkup::AsIs) {
    file.Write(text);
    return;
  }
  std::string shown;
  if (!utf8::IsWellFormed(text)) text = shown = DisplayUtf8(text);
  std::size_t plain = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!kNeedsMarkup[static_cast<unsigned char>(text[at])]) continue;
    file.Write(text.substr(plain, at - plain));
    file.Write(Markup(text[at]));
    plain = at + 1;
  }
  file.Write(text.substr(plain));
}

void WriteAttribute(TextWriter& file, std::string_view name, std::string_view value) {
  if (value.empty()) return;
  file.Write(" ");
  file.Write(name);
  file.Write("=\"");
  WriteMarkup(file, value);
  file.Write("\"");
}

// The dates of an item. Most are the same, so the one converted last is kept.
class DateAttributes {
 public:
  explicit DateAttributes(TextWriter& file) : file_(file) {}
  // Of an item that shows when it was made. Of which of two equal local times that is, its text doesn't tell.
  DateAttributes(TextWriter& file, std::int64_t moment)
      : file_(file),
        date_(ShownBookmarkTime(moment)),
        epoch_(NumberText(StampToEpoch(EpochToStamp(moment)))) {}

  void Write(std::string_view name, std::string date) {
    if (date.empty()) return;
    if (date != date_) {
      epoch_ = NumberText(SecondsOfShownTime(date));
      date_ = std::move(date);
    }
    WriteAttribute(file_, name, epoch_);
  }

 private:
  TextWriter& file_;
  std::string date_, epoch_;
};

void WriteDescription(TextWriter& file, std::string_view text) {
  file.Write("<DD>");
  WriteMarkup(file, Utf8Encode(text));
  file.WriteLine("");
}

void WriteID(TextWriter& file, std::string_view id) {
  file.Write(" ID=\"rdf:");
  if (id.starts_with(kEncodedID)) {
    file.Write("#$");
    WriteMarkup(file, Base64Decode(id.substr(kEncodedID.size())));
  } else {
    WriteMarkup(file, id);
  }
  file.Write("\"");
}

// `title` is UTF-8.
void WriteBookmark(TextWriter& file, const Item& item, const std::string& title, std::string_view indent,
                   DateAttributes dates) {
  file.Write(indent);
  file.Write("<DT><A HREF=\"");
  WriteMarkup(file, item.DataText(data_key::kUrl));
  file.Write("\"");
  dates.Write("ADD_DATE", item.DateCreated());
  dates.Write("LAST_VISIT", item.DateVisited());
  dates.Write("LAST_MODIFIED", item.DateModified());
  WriteAttribute(file, "ICON", item.DataText(data_key::kIcon));
  WriteAttribute(file, "LAST_CHARSET", item.DataText(data_key::kLastCharset));
  WriteAttribute(file, "SHORTCUTURL", item.DataText(data_key::kShortcutUrl));
  WriteID(file, item.ID());
  file.Write(">");
  WriteMarkup(file, title);
  file.WriteLine("</A>");

  std::string text = item.DataText(data_key::kDescription);
  if (text.empty()) return;
  std::erase(text, '\r');
  WriteDescription(file, text);
}

void WriteHeader(TextWriter& file) {
  file.WriteLine("<!DOCTYPE NETSCAPE-Bookmark-file-1>");
  file.WriteLine("<!-- This is an automatically generated file.");
  file.WriteLine("     It will be read and overwritten.");
  file.WriteLine("     DO NOT EDIT! -->");
  file.WriteLine("<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; charset=UTF-8\">");
  file.WriteLine("<TITLE>Bookmarks</TITLE>");
  std::string now = NowStamp();
  const std::string seconds = NumberText(SecondsOfShownTime(StampToDisplay(now)));
  file.WriteLine("<H1 LAST_MODIFIED=\"" + seconds + "\">Bookmarks</H1>");
  file.WriteLine("");
}

// A folder whose list is open in the file.
struct OpenList {
  TreePtr node;
  std::int64_t level;
  std::string attributes;
  KeyedList<TreePtr> children;
  std::int32_t passed = 0;
};

// The heading of a folder; gives its attributes. `title` is UTF-8.
std::string WriteHeading(TextWriter& file, const vorlent::Tree& node, const std::string& title,
                         std::string_view indent) {
  std::string description = node.Description();
  std::string attributes = CutLine(description);
  file.Write(indent);
  file.Write(attributes.empty() ? "<DT><H3" : "<DT><H3 ");
  file.Write(attributes);
  file.Write(">");
  WriteMarkup(file, title);
  file.WriteLine("</H3>");
  if (!description.empty()) WriteDescription(file, description);
  return attributes;
}

// The folder's heading, unless it has no name, and the start of its list.
OpenList BeginList(TextWriter& file, const TreePtr& node, std::int64_t level) {
  const std::string indent = Indent(level);
  std::string attributes;
  const std::string text = node->Text();
  if (!text.empty()) attributes = WriteHeading(file, *node, Utf8Encode(text), indent);
  file.Write(indent);
  file.WriteLine("<DL><p>");
  return {node, level, attributes, node->Children()};
}

// The folder's own bookmarks, which come after its children, and the end of its list.
void EndList(TextWriter& file, const OpenList& list) {
  const std::string indent = Indent(list.level);
  const std::string itemIndent = Indent(list.level + 1);
  for (const ItemPtr& item : list.node->Items())
    WriteBookmark(file, *item, Utf8Encode(item->Text()), itemIndent, DateAttributes(file));
  file.Write(indent);
  file.WriteLine("</DL><p>");
  if (list.attributes.find(kToolbarMark) == std::string::npos) return;
  file.Write(indent);
  file.WriteLine("<HR>");
}

// --- In the order of the browser

// The folders above this level are the tree itself and the database's own root, which are no folders to a
// browser.
constexpr std::int64_t kFirstShownLevel = 2;

// What is to be written into a folder: one of these.
struct Part {
  TreePtr folder = {};  // with its place in the outline, if it has one
  std::size_t outlined = BookmarkOutline::kNone;
  ItemPtr bookmark = {};
  std::string title = {};                   // of both
  std::optional<std::int64_t> moment = {};  // at which an outlined bookmark was made
  // Neither: a separator.
};

struct OpenFolder {
  std::vector<Part> parts;
  std::size_t passed = 0;
};

// What has come into the tree since it was read stands behind what was read.
class OutlineParts {
 public:
  OutlineParts(const BookmarkOutline& outline, const KeyedList<ItemPtr>& store)
      : outline_(outline), store_(store) {}

  std::vector<Part> Of(const Part& folder) const {
    std::vector<Part> parts;
    if (folder.outlined != BookmarkOutline::kNone) AddOutlined(parts, outline_.folders[folder.outlined]);
    AddOthers(parts, *folder.folder);
    return parts;
  }

 private:
  void AddOutlined(std::vector<Part>& parts, const BookmarkOutline::Folder& folder) const {
    for (const BookmarkOutline::Entry& entry : folder.entries) {
      if (entry.kind == BookmarkOutline::Entry::Kind::Separator) {
        parts.emplace_back();
      } else if (entry.kind == BookmarkOutline::Entry::Kind::Folder) {
        const BookmarkOutline::Folder& child = outline_.folders[entry.position];
        parts.push_back({.folder = child.node, .outlined = entry.position, .title = child.title});
      } else if (const ItemPtr* item = Stored(entry)) {
        parts.push_back({.bookmark = *item, .title = TitleOf(entry, **item), .moment = entry.moment});
      }
    }
  }

  // The bookmark's item, null if it has gone. Mostly it is where it was, which takes less time to see than to
  // look for its ID.
  const ItemPtr* Stored(const BookmarkOutline::Entry& entry) const {
    if (entry.position < static_cast<std::size_t>(store_.Count())) {
      const ItemPtr& there = store_.Item(static_cast<std::int32_t>(entry.position) + 1);
      if (there == entry.item) return &there;
    }
    return store_.Find(entry.item->ID());
  }

  static std::string TitleOf(const BookmarkOutline::Entry& entry, const Item& item) {
    const std::string text = item.Text();
    return entry.asRead && entry.asRead->text == text ? entry.asRead->title : Utf8Encode(text);
  }

  // Nodes and items of the outline come in the same order.
  void AddOthers(std::vector<Part>& parts, const vorlent::Tree& node) const {
    const std::size_t outlined = parts.size();
    std::size_t next = 0;
    // Whether an object is the next one of its kind among the outlined parts, which it passes then.
    const auto isNext = [&](const auto& object, auto Part::*kind) {
      while (next < outlined && parts[next].*kind == nullptr)
        ++next;
      if (next == outlined || !object->IsSame(*(parts[next].*kind))) return false;
      ++next;
      return true;
    };
    for (const TreePtr& child : node.Children()) {
      if (!isNext(child, &Part::folder) && HoldsMore(child))
        parts.push_back({.folder = child, .title = Utf8Encode(child->Text())});
    }
    next = 0;
    for (const ItemPtr& item : node.Items()) {
      if (!isNext(item, &Part::bookmark) && IsMore(*item))
        parts.push_back({.bookmark = item, .title = Utf8Encode(item->Text())});
    }
  }

  bool IsMore(const Item& item) const {
    if (ids_.empty()) ids_ = outline_.IDs();
    return !ids_.contains(item.ID());
  }

  // A host makes nodes of keywords for what was read, too, where a title holds what parts them.
  bool HoldsMore(const TreePtr& node) const {
    std::vector<TreePtr> open = {node};
    while (!open.empty()) {
      const TreePtr next = open.back();
      open.pop_back();
      for (const ItemPtr& item : next->Items()) {
        if (IsMore(*item)) return true;
      }
      for (const TreePtr& child : next->Children())
        open.push_back(child);
    }
    return false;
  }

  const BookmarkOutline& outline_;
  const KeyedList<ItemPtr>& store_;
  // Made when it is asked for: mostly nothing has come in.
  mutable std::unordered_set<std::string> ids_;
};

void BeginFolder(TextWriter& file, const Part& folder, std::int64_t level) {
  const std::string indent = Indent(level);
  if (level >= kFirstShownLevel || !folder.title.empty())
    WriteHeading(file, *folder.folder, folder.title, indent);
  file.Write(indent);
  file.WriteLine("<DL><p>");
}

void EndFolder(TextWriter& file, std::int64_t level) {
  file.Write(Indent(level));
  file.WriteLine("</DL><p>");
}

void WriteSeparator(TextWriter& file, std::string_view indent) {
  file.Write(indent);
  file.WriteLine("<HR>");
}

}  // namespace

void Location_FireFox::Save() {
  SaveInto(profileFolder_ + "bookmarks.html");
}

void Location_FireFox::SaveInto(std::string_view path) {
  Tree()->ClearItems();
  for (const ItemPtr& item : ItemStore())
    Tree()->AddItem(item);
  TextWriter file(path, os::File::Mode::Create);
  WriteHeader(file);
  if (outline_.IsKept()) {
    SaveOutline(file);
  } else {
    SaveFolder(file, Tree(), 0);
  }
  file.Close();
}

void Location_FireFox::SaveOutline(TextWriter& file) {
  const OutlineParts parts(outline_, ItemStore());
  std::vector<OpenFolder> folders;
  const auto enter = [&](const Part& folder) {
    BeginFolder(file, folder, Within16(folders.size()));
    folders.push_back({parts.Of(folder)});
  };
  enter({.folder = Tree(), .outlined = 0});
  while (!folders.empty()) {
    OpenFolder& folder = folders.back();
    if (folder.passed == folder.parts.size()) {
      folders.pop_back();
      EndFolder(file, Within16(folders.size()));
      continue;
    }
    const Part part = std::move(folder.parts[folder.passed++]);
    const std::string indent = Indent(static_cast<std::int64_t>(folders.size()));
    if (part.folder != nullptr) {
      enter(part);
    } else if (part.bookmark != nullptr) {
      WriteBookmark(file, *part.bookmark, part.title, indent,
                    part.moment ? DateAttributes(file, *part.moment) : DateAttributes(file));
    } else {
      WriteSeparator(file, indent);
    }
  }
}

void Location_FireFox::SaveFolder(TextWriter& file, const TreePtr& node, std::int64_t level) {
  std::vector<OpenList> lists;
  lists.push_back(BeginList(file, node, level));
  while (!lists.empty()) {
    OpenList& list = lists.back();
    if (list.passed < list.children.Count()) {
      const TreePtr child = list.children.Item(++list.passed);
      lists.push_back(BeginList(file, child, Within16(list.level + 1)));
    } else {
      EndList(file, list);
      lists.pop_back();
    }
  }
}

}  // namespace vorlent
