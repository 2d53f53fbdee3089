#include "Standalone/LightningNames.h"

#include <algorithm>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// What two rows have in common that are one item, the later one written in place of the other.
std::string KeyOf(const LightningItem& item) {
  return item.calendar + (item.isTask ? "\ntask\n" : "\nevent\n") + item.id;
}

// Records hold no zero characters, and line ends not as they are.
std::string NameableId(std::string id) {
  constexpr unsigned char kFirstPrintable = 32;
  std::ranges::replace_if(
      id, [](char c) { return static_cast<unsigned char>(c) < kFirstPrintable; }, '_');
  return id;
}

}  // namespace

void LightningNames::GiveNames(std::vector<LightningItem>& items) {
  KeepNames(items);
  std::vector<LightningItem*> others;
  for (LightningItem& item : items) {
    if (item.id.empty() || !item.name.empty()) continue;
    if (NameableId(item.id) != item.id || !Take(item, item.id)) others.push_back(&item);
  }
  for (LightningItem* item : others)
    MakeName(*item);
}

// A row's name is its own; one that stands for a row that is gone goes to a row that came in its place.
void LightningNames::KeepNames(std::vector<LightningItem>& items) {
  std::unordered_map<Given*, bool> isInUse;
  const auto keep = [&](auto mayHave) {
    for (LightningItem& item : items) {
      const auto known = given_.find(KeyOf(item));
      if (known == given_.end() || !item.name.empty()) continue;
      const auto fitting = std::ranges::find_if(
          known->second, [&](Given& given) { return !isInUse[&given] && mayHave(given, item); });
      if (fitting == known->second.end()) continue;
      isInUse[&*fitting] = true;
      fitting->row = item.row;
      item.name = fitting->name;
    }
  };
  keep([](const Given& given, const LightningItem& item) { return given.row == item.row; });
  keep([](const Given&, const LightningItem&) { return true; });
}

bool LightningNames::Take(LightningItem& item, const std::string& name) {
  if (!taken_.insert(LowerCase(name)).second) return false;
  item.name = name;
  given_[KeyOf(item)].push_back({item.row, name});
  return true;
}

void LightningNames::MakeName(LightningItem& item) {
  const std::string stem = NameableId(item.id);
  if (stem != item.id && Take(item, stem)) return;
  int& number = lastOfStem_.try_emplace(LowerCase(stem), 1).first->second;
  do {
    ++number;
  } while (!Take(item, stem + '~' + std::to_string(number)));
}

}  // namespace vorlent
