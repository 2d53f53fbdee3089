// The component as a server of the system's gives it: its objects made by ProgID and called over COM.
#pragma once

#include <string_view>

#include "Host/Com/Inside.h"
#include "Host/Object.h"

namespace vorlent::com {

class ServedComponent {
 public:
  // Raises a Failure with what the system says where no component is registered.
  ServedComponent();

  // A new object of a connector's class or of the actions, which meets the contract by calls by name. Each
  // object of the component's is one here, too. Nothing for any other class.
  ObjectPtr Create(std::string_view progId) const;

  // What it gives beyond the contract.
  IInside& Inside() const { return *inside_.Get(); }

 private:
  ComPtr<IInside> inside_;
};

}  // namespace vorlent::com
