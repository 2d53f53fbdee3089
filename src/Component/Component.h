// The library's entry: a class by its ProgID.
#pragma once

#include <string_view>

#include "Host/Connector.h"

namespace vorlent {

// A new object of the class of that ProgID ("VorlentMozilla.Location_Thunderbird", "VorlentMozilla.Actions",
// ...), found without regard to case; nothing if the component has no such class. A host must be installed
// before any member of the object is called.
ObjectPtr CreateObject(std::string_view progId);

}  // namespace vorlent
