// Items as text: for people in columns, raw, and for programs.
#pragma once

#include <string>
#include <vector>

#include "Standalone/ShownPaths.h"
#include "Standalone/StandaloneItem.h"
#include "Standalone/StandaloneLocation.h"

namespace vorlent::app {

// The items of a Location, in order.
std::vector<StandaloneItemPtr> ItemsOf(Location& location);

// The item of that ID, or with that number in the list; null if there is none. `wanted` is UTF-8.
StandaloneItemPtr FindItem(Location& location, const std::string& wanted);

// What helps where no mail has the ID that is wanted: that of a later one of several, if there is one; else
// "".
std::string CopyHint(Location& location, const std::string& wanted);

// What FindItem finds for each of those, every item once.
struct FoundItems {
  std::vector<StandaloneItemPtr> items;
  std::vector<std::string> missing;
};
FoundItems FindItems(Location& location, const std::vector<std::string>& wanted);

// Aligned columns that fit the kind of the items; the first is the number, by which other commands find an
// item: its position in `items` unless `numbers` gives others. Items of several kinds come in one table for
// each, in the order in which the kinds first appear. `width` is the width to fit, 0 for none.
std::string ItemTables(const std::vector<StandaloneItemPtr>& items, std::size_t width,
                       const std::vector<std::int32_t>& numbers = {});

// One UTF-8 object on one line, without its line feed.
std::string ItemJson(const StandaloneItem& item);
// The same of one of many items, whose paths are mostly of one folder.
std::string ItemJson(const StandaloneItem& item, NativePaths& paths);

// The nodes as an indented tree with their numbers of items and the items' texts below them.
std::string TreeText(const Tree& root);

}  // namespace vorlent::app
