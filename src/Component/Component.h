// The library's entry: a class by its ProgID.
//
// The component belongs to one thread, that of its host. All objects are made, called and released there, and
// from there call the host; nothing in the component waits for another thread or starts one.
#pragma once

#include <span>
#include <string_view>

#include "Host/Connector.h"
#include "Platform/Public.h"

namespace vorlent {

// A public class of the component, with the identifiers by which a component server registers it.
struct ComponentClass {
  std::string_view progId;
  std::string_view classId;
  std::string_view interfaceId;  // of its default interface
  ObjectPtr (*create)();
};

// All public classes.
VORLENT_PUBLIC std::span<const ComponentClass> ComponentClasses();

// A new object of the class of that ProgID ("VorlentMozilla.Location_Thunderbird", "VorlentMozilla.Actions",
// ...), found without regard to case; nothing if the component has no such class. A host must be installed
// before: some classes ask for it when they are made, which raises ObjectNotSet without one.
VORLENT_PUBLIC ObjectPtr CreateObject(std::string_view progId);

}  // namespace vorlent
