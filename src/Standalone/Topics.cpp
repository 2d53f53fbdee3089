#include "Standalone/Topics.h"

#include <algorithm>
#include <functional>

#include "Host/Connector.h"
#include "Standalone/StandaloneItem.h"
#include "Standalone/StandaloneTree.h"

namespace vorlent {

namespace {

// Calls `visit` with each item of a connector or a Location.
void ForEachItem(const ObjectPtr& source, const std::function<void(const ItemPtr&)>& visit) {
  if (const auto connector = std::dynamic_pointer_cast<Connector>(source)) {
    for (std::int32_t pos = 1; pos <= connector->Count(); ++pos)
      visit(connector->Item(pos));
  } else if (const auto location = std::dynamic_pointer_cast<Location>(source)) {
    for (std::int32_t pos = 1; pos <= location->ItemCount(); ++pos)
      visit(location->ItemAt(pos));
  }
}

}  // namespace

void Topics::ClearLocation(const ObjectPtr& source) {
  std::erase_if(sources_, [&](const std::weak_ptr<Object>& held) {
    const ObjectPtr object = held.lock();
    return object == nullptr || (source != nullptr && object->IsSame(*source));
  });
}

void Topics::AddLocation(const ObjectPtr& source) {
  if (source == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no source for the topics");
  ClearLocation(source);
  sources_.push_back(source);
}

std::vector<ObjectPtr> Topics::Sources() const {
  std::vector<ObjectPtr> sources;
  for (const std::weak_ptr<Object>& held : sources_) {
    if (ObjectPtr object = held.lock()) sources.push_back(std::move(object));
  }
  return sources;
}

TreePtr Topics::BuildTree() const {
  auto tree = std::make_shared<StandaloneTree>();
  for (const ObjectPtr& source : Sources()) {
    ForEachItem(source, [&](const ItemPtr& item) {
      if (item == nullptr) return;
      tree->AddKeywordPath(KeywordsOf(*item));
      tree->AddItem(item);
    });
  }
  return tree;
}

TopicsLocation::TopicsLocation(std::weak_ptr<StandaloneGlobal> global)
    : LocationBase(std::move(global), "topics") {
  SetOption("type", "topics");
}

ItemPtr TopicsLocation::PasteRecord(std::string_view) {
  throw Failure(ErrorNumber::PathAccess, "the topics take no items of their own");
}

}  // namespace vorlent
