#include <vector>

#include "Common/NumberText.h"
#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/Location_FireFox.h"
#include "Host/RecordKeys.h"

namespace vorlent {

namespace {

// An attribute of a folder that a browser shows as its toolbar.
constexpr std::string_view kToolbarMark = "PERSONAL_TOOLBAR_FOLDER";

// IDs of this kind carry base64 text after the three characters.
constexpr std::string_view kEncodedID = "rdf";

std::string Indent(std::int32_t level) {
  return std::string(static_cast<std::size_t>(level) * 4, ' ');
}

std::string EpochText(std::string_view stamp) {
  return NumberText(StampToEpoch(stamp));
}

void WriteAttribute(TextWriter& file, std::string_view name, std::string_view value) {
  if (value.empty()) return;
  file.Write(" ");
  file.Write(name);
  file.Write("=\"");
  file.Write(value);
  file.Write("\"");
}

// The dates of an item. Most are the same, so the one converted last is kept.
class DateAttributes {
 public:
  explicit DateAttributes(TextWriter& file) : file_(file) {}

  void Write(std::string_view name, std::string date) {
    if (date.empty()) return;
    if (date != date_) {
      epoch_ = EpochText(DisplayToStamp(date));
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
  file.WriteLine(Utf8Encode(text));
}

void WriteID(TextWriter& file, std::string_view id) {
  file.Write(" ID=\"rdf:");
  if (id.starts_with(kEncodedID)) {
    file.Write("#$");
    file.Write(Base64Decode(id.substr(kEncodedID.size())));
  } else {
    file.Write(id);
  }
  file.Write("\"");
}

void WriteBookmark(TextWriter& file, const Item& item, std::string_view indent) {
  file.Write(indent);
  file.Write("<DT><A HREF=\"");
  file.Write(item.DataText(data_key::kUrl));
  file.Write("\"");
  DateAttributes dates(file);
  dates.Write("ADD_DATE", item.DateCreated());
  dates.Write("LAST_VISIT", item.DateVisited());
  dates.Write("LAST_MODIFIED", item.DateModified());
  WriteAttribute(file, "ICON", item.DataText(data_key::kIcon));
  WriteAttribute(file, "LAST_CHARSET", item.DataText(data_key::kLastCharset));
  WriteAttribute(file, "SHORTCUTURL", item.DataText(data_key::kShortcutUrl));
  WriteID(file, item.ID());
  file.Write(">");
  file.Write(Utf8Encode(item.Text()));
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
  file.WriteLine("<H1 LAST_MODIFIED=\"" + EpochText(NowStamp()) + "\">Bookmarks</H1>");
  file.WriteLine("");
}

// A folder whose list is open in the file.
struct OpenList {
  TreePtr node;
  std::int16_t level;
  std::string attributes;
  KeyedList<TreePtr> children;
  std::int32_t passed = 0;
};

// The folder's heading, unless it has no name, and the start of its list.
OpenList BeginList(TextWriter& file, const TreePtr& node, std::int16_t level) {
  const std::string indent = Indent(level);
  std::string attributes;
  const std::string text = node->Text();
  if (!text.empty()) {
    std::string description = node->Description();
    attributes = CutLine(description);
    file.Write(indent);
    file.Write(attributes.empty() ? "<DT><H3" : "<DT><H3 ");
    file.Write(attributes);
    file.Write(">");
    file.Write(Utf8Encode(text));
    file.WriteLine("</H3>");
    if (!description.empty()) WriteDescription(file, description);
  }
  file.Write(indent);
  file.WriteLine("<DL><p>");
  return {node, level, attributes, node->Children()};
}

// The folder's own bookmarks, which come after its children, and the end of its list.
void EndList(TextWriter& file, const OpenList& list) {
  const std::string indent = Indent(list.level);
  const std::string itemIndent = Indent(list.level + 1);
  for (const ItemPtr& item : list.node->Items())
    WriteBookmark(file, *item, itemIndent);
  file.Write(indent);
  file.WriteLine("</DL><p>");
  if (list.attributes.find(kToolbarMark) == std::string::npos) return;
  file.Write(indent);
  file.WriteLine("<HR>");
}

}  // namespace

void Location_FireFox::Save() {
  Tree()->ClearItems();
  for (const ItemPtr& item : ItemStore())
    Tree()->AddItem(item);
  TextWriter file(profileFolder_ + "bookmarks.html", os::File::Mode::Create);
  WriteHeader(file);
  SaveFolder(file, Tree(), 0);
  file.Close();
}

void Location_FireFox::SaveFolder(TextWriter& file, const TreePtr& node, std::int16_t level) {
  std::vector<OpenList> lists;
  lists.push_back(BeginList(file, node, level));
  while (!lists.empty()) {
    OpenList& list = lists.back();
    if (list.passed < list.children.Count()) {
      const TreePtr child = list.children.Item(++list.passed);
      lists.push_back(BeginList(file, child, ToInt16(list.level + 1)));
    } else {
      EndList(file, list);
      lists.pop_back();
    }
  }
}

}  // namespace vorlent
