#include "Component/Component.h"

#include <memory>

#include "Connectors/Mozilla/Location_FireFox.h"
#include "Connectors/Mozilla/Location_Sunbird.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

template <class Class>
ObjectPtr Make() {
  return std::make_shared<Class>();
}

constexpr ComponentClass kClasses[] = {
    {"VorlentMozilla.Location_FireFox", "{73648EA2-7614-47E8-B577-8C09A1123062}",
     "{AD509209-FC57-4CEF-AD9D-9D379B6DF351}", Make<Location_FireFox>},
    {"VorlentMozilla.Location_Sunbird", "{9BFEE0EE-F0C5-462B-B151-2C7901932CC5}",
     "{B83DA60F-7A4C-4F14-89B3-DD1C8F520314}", Make<Location_Sunbird>},
};

}  // namespace

std::span<const ComponentClass> ComponentClasses() {
  return kClasses;
}

ObjectPtr CreateObject(std::string_view progId) {
  for (const ComponentClass& entry : kClasses) {
    if (EqualNoCase(entry.progId, progId)) return entry.create();
  }
  return nullptr;
}

}  // namespace vorlent
