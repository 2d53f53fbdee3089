// What the component's class objects do for a host of this project (Host/Com/Inside.h).
#pragma once

#include <string>

#include "Host/Com/Inside.h"
#include "Host/Com/Text.h"
#include "Host/Object.h"

namespace vorlent::com {

// As the members of IInside of these names. A member that the object doesn't have raises NoSuchMember.
void ShowMessagesBy(IMessages* messages);
void Observe(Object& object, IRunObserver* observer);
Value Ask(Object& object, const std::string& question, const std::string& given);

}  // namespace vorlent::com
