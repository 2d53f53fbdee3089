#include "Standalone/LightningNames.h"

#include <algorithm>
#include <utility>

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
  auto unused = given_;
  for (LightningItem& item : items) {
    const auto known = unused.find(KeyOf(item));
    if (known == unused.end()) continue;
    if (auto own = known->second.extract(item.row)) item.name = std::move(own.mapped());
  }
  for (LightningItem& item : items) {
    const auto known = item.name.empty() ? unused.find(KeyOf(item)) : unused.end();
    if (known == unused.end() || known->second.empty()) continue;
    auto inherited = known->second.extract(known->second.begin());
    item.name = inherited.mapped();
    NamesByRow& names = given_[known->first];
    names.erase(inherited.key());
    names.emplace(item.row, item.name);
  }
}

bool LightningNames::Take(LightningItem& item, const std::string& name) {
  if (!taken_.insert(LowerCase(name)).second) return false;
  item.name = name;
  given_[KeyOf(item)].emplace(item.row, name);
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
