// The component that is registered with the system, in place of the one that this program holds.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Standalone/StandaloneHost.h"

namespace vorlent::app {

// In use for as long as this lives, between the host's making and its end.
class RegisteredComponent {
 public:
  RegisteredComponent() = default;
  RegisteredComponent(const RegisteredComponent&) = delete;
  RegisteredComponent& operator=(const RegisteredComponent&) = delete;
  virtual ~RegisteredComponent() = default;
};

// The settings of this program that the component needs as well.
struct ComponentSettings {
  std::string appData;
  std::vector<std::string> drives;  // "C=DIR"
};

// Raises AppError with ExitCode::Usage where the system registers no components, or has none of this name.
// Message boxes of the component are those of the platform in use.
std::unique_ptr<RegisteredComponent> UseRegisteredComponent(const std::shared_ptr<StandaloneHost>& host,
                                                            const ComponentSettings& settings);

}  // namespace vorlent::app
