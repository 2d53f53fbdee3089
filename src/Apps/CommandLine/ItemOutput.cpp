#include "Apps/CommandLine/ItemOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <unordered_set>

#include "Apps/CommandLine/EndingSignals.h"
#include "Apps/CommandLine/Terminal.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Standalone/ItemFinder.h"
#include "Standalone/Phrases.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::app {

namespace {

std::string AttachmentCount(const StandaloneItem& item) {
  int count = 0;
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    if (DescribesAttachment(item.DataKey(i))) ++count;
  }
  return count == 0 ? std::string() : std::to_string(count);
}

// The type of items that are places to browse.
constexpr std::string_view kPlaceType = "location";

// The text of an item, UTF-8. A drive is called by its path.
std::string ShownText(const StandaloneItem& item) {
  return item.Type() == kPlaceType ? WithShownPaths(item.Text()) : DisplayUtf8(item.Text());
}

// A data field, UTF-8, with the paths that the component put into it; what else stands in a mail is its own.
std::string ShownData(const StandaloneItem& item, const std::string_view key, NativePaths& paths) {
  std::string rest = item.DataText(key);
  if (key == data_key::kSourceFile || key == data_key::kPath) return WithShownPaths(rest, paths);
  if (!DescribesFile(key)) return DisplayUtf8(rest);
  const std::string path = rest.substr(0, rest.find_first_of("\r\n"));
  return WithShownPaths(path, paths) + DisplayUtf8(std::string_view(rest).substr(path.size()));
}

using Cell = std::function<std::string(const StandaloneItem&)>;

Cell Data(std::string_view key) {
  return [key](const StandaloneItem& item) { return Shown(item.DataText(key)); };
}

std::string TextCell(const StandaloneItem& item) {
  return Shown(item.Text());
}
std::string DateCell(const StandaloneItem& item) {
  return Shown(item.Date());
}
std::string KeywordsCell(const StandaloneItem& item) {
  return Shown(item.Keywords());
}
std::string IdCell(const StandaloneItem& item) {
  return Shown(item.ID());
}
std::string SizeCell(const StandaloneItem& item) {
  return ShownSize(static_cast<std::uint64_t>(std::max(0.0, ReadNumber(item.DataText(data_key::kSize)))));
}

struct ColumnKind {
  Phrase heading;
  Cell cell;
  bool right = false;
  bool cut = false;
};

struct TableKind {
  std::string_view type;  // of the items; "" for all others
  std::vector<ColumnKind> columns;
};

const std::vector<TableKind>& TableKinds() {
  static const std::vector<TableKind> kinds = {
      {"mail",
       {{Phrase::HeadDate, DateCell},
        {Phrase::HeadFrom, Data(data_key::kFrom), false, true},
        {Phrase::HeadSubject, TextCell, false, true},
        {Phrase::HeadSize, SizeCell, true},
        {Phrase::HeadFiles, AttachmentCount, true},
        {Phrase::HeadId, IdCell}}},
      {kPlaceType,
       {{Phrase::HeadName, [](const StandaloneItem& item) { return Shown(TranslatedName(ShownText(item))); }},
        {Phrase::HeadAddress, Data(data_key::kLocation)},
        {Phrase::HeadPath,
         [](const StandaloneItem& item) { return Shown(WithShownPaths(item.DataText(data_key::kPath))); },
         false, true}}},
      {"url",
       {{Phrase::HeadDate, DateCell},
        {Phrase::HeadTitle, TextCell, false, true},
        {Phrase::HeadFolder, KeywordsCell, false, true},
        {Phrase::HeadAddress, Data(data_key::kUrl), false, true}}},
      {"termin",
       {{Phrase::HeadStart, DateCell},
        {Phrase::HeadEnd, Data(data_key::kDateEnd)},
        {Phrase::HeadEvent, TextCell, false, true},
        {Phrase::HeadLocation, Data(data_key::kLocation), false, true},
        {Phrase::HeadCalendar, Data(data_key::kCalendar)},
        {Phrase::HeadId, IdCell}}},
      {"task",
       {{Phrase::HeadTask, TextCell, false, true},
        {Phrase::HeadCalendar, Data(data_key::kCalendar)},
        {Phrase::HeadId, IdCell}}},
      {"",
       {{Phrase::HeadType, [](const StandaloneItem& item) { return Shown(item.Type()); }},
        {Phrase::HeadText, TextCell, false, true},
        {Phrase::HeadId, IdCell}}},
  };
  return kinds;
}

const TableKind& KindOf(const StandaloneItem& item) {
  const std::string type = item.Type();
  const auto& kinds = TableKinds();
  const auto found =
      std::find_if(kinds.begin(), kinds.end(), [&](const auto& kind) { return kind.type == type; });
  return found == kinds.end() ? kinds.back() : *found;
}

Columns EmptyTable(const TableKind& kind) {
  std::vector<std::string> headings = {"#"};
  for (const ColumnKind& column : kind.columns)
    headings.push_back(InWords(column.heading));
  Columns table(headings);
  table.AlignRight(0);
  for (std::size_t i = 0; i < kind.columns.size(); ++i) {
    if (kind.columns[i].right) table.AlignRight(i + 1);
    if (kind.columns[i].cut) table.AllowCut(i + 1);
  }
  return table;
}

void AppendNode(std::string& out, const Tree& node, std::size_t depth) {
  const std::string indent(depth * 2, ' ');
  const std::string text = node.Text();
  const std::int32_t count = node.ItemCount();
  out += indent + (text.empty() ? InWords(Phrase::Unnamed) : Shown(text));
  if (count > 0) out += fmt::format(" ({})", count);
  out += '\n';
  for (const ItemPtr& item : node.Items())
    out += indent + "  - " + Shown(item->Text()) + '\n';
  for (const TreePtr& child : node.Children())
    AppendNode(out, *child, depth + 1);
}

}  // namespace

std::vector<StandaloneItemPtr> ItemsOf(Location& location) {
  std::vector<StandaloneItemPtr> items;
  const std::int32_t count = location.ItemCount();
  items.reserve(static_cast<std::size_t>(count));
  for (std::int32_t i = 1; i <= count; ++i) {
    StopIfAsked();
    items.push_back(AsStandalone(location.ItemAt(i)));
  }
  return items;
}

StandaloneItemPtr FindItem(Location& location, const std::string& wanted) {
  return ItemFinder(ItemsOf(location)).Find(wanted);
}

std::string CopyHint(Location& location, const std::string& wanted) {
  for (const StandaloneItemPtr& item : ItemsOf(location)) {
    const auto copy = MailOfNumberedId(item->ID());
    if (copy && DisplayUtf8(copy->id) == wanted) return InWords(Phrase::CopyIsThere, {Shown(item->ID())});
  }
  return {};
}

FoundItems FindItems(Location& location, const std::vector<std::string>& wanted) {
  const ItemFinder finder(ItemsOf(location));
  FoundItems found;
  std::unordered_set<StandaloneItemPtr> taken;
  for (const std::string& each : wanted) {
    const StandaloneItemPtr item = finder.Find(each);
    if (item == nullptr) {
      found.missing.push_back(each);
    } else if (taken.insert(item).second) {
      found.items.push_back(item);
    }
  }
  return found;
}

std::string ItemTables(const std::vector<StandaloneItemPtr>& items, std::size_t width,
                       const std::vector<std::int32_t>& numbers) {
  std::vector<std::pair<const TableKind*, Columns>> tables;
  for (std::size_t i = 0; i < items.size(); ++i) {
    StopIfAsked();
    const TableKind& kind = KindOf(*items[i]);
    auto table =
        std::find_if(tables.begin(), tables.end(), [&](const auto& entry) { return entry.first == &kind; });
    if (table == tables.end()) table = tables.insert(tables.end(), {&kind, EmptyTable(kind)});
    std::vector<std::string> row = {numbers.empty() ? std::to_string(i + 1) : std::to_string(numbers[i])};
    for (const ColumnKind& column : kind.columns)
      row.push_back(column.cell(*items[i]));
    table->second.Add(std::move(row));
  }
  std::string out;
  for (const auto& [kind, table] : tables) {
    if (!out.empty()) out += '\n';
    out += table.Text(width);
  }
  return out;
}

std::string ItemJson(const StandaloneItem& item) {
  NativePaths paths;
  return ItemJson(item, paths);
}

std::string ItemJson(const StandaloneItem& item, NativePaths& paths) {
  nlohmann::ordered_json data = nlohmann::ordered_json::object();
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    data[DisplayUtf8(key)] = ShownData(item, key, paths);
  }
  nlohmann::ordered_json object;
  const auto set = [&](std::string_view key, std::string_view value) {
    object[std::string(key)] = DisplayUtf8(value);
  };
  set(record_key::kId, item.ID());
  set(record_key::kType, item.Type());
  set(record_key::kText, ShownText(item));
  set(record_key::kDate, item.Date());
  set(record_key::kKeywords, item.Keywords());
  set(record_key::kOwner, item.Owner());
  set(record_key::kLog, item.Log());
  object[std::string(record_key::kDataPrefix)] = std::move(data);
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string TreeText(const Tree& root) {
  std::string out;
  for (const ItemPtr& item : root.Items())
    out += "- " + Shown(item->Text()) + '\n';
  for (const TreePtr& child : root.Children())
    AppendNode(out, *child, 0);
  return out;
}

}  // namespace vorlent::app
