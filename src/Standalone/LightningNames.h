// The IDs under which the items of Thunderbird's calendars are shown.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vorlent {

// A row of an event or a task, changed occurrences left out.
struct LightningItem {
  std::int64_t calendarNumber = 0;
  bool isTask = false;
  std::int64_t row = 0;
  std::string calendar;  // its ID
  std::string id;
  std::string name = {};
};

// Gives each item of a file a name that no other has, letter case aside: its ID, or, if another item has that
// or a record can't hold it, one made of it, such as "ID~2". Whoever has read an item finds it by that name
// as long as this lives, whatever comes, goes or changes its place meanwhile, and finds no other by it.
class LightningNames {
 public:
  // Sets the names of all items of the file, "" for what has no ID. Of several the first gets the ID itself.
  void GiveNames(std::vector<LightningItem>& items);

 private:
  using NamesByRow = std::map<std::int64_t, std::string>;

  void KeepNames(std::vector<LightningItem>& items);
  bool Take(LightningItem& item, const std::string& name);
  void MakeName(LightningItem& item);

  std::unordered_map<std::string, NamesByRow> given_;  // by what the items are
  std::unordered_set<std::string> taken_;              // in lower case
  std::unordered_map<std::string, int> lastOfStem_;    // the last number made for a text
};

}  // namespace vorlent
