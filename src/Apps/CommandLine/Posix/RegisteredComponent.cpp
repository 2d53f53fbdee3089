#include "Apps/CommandLine/RegisteredComponent.h"

#include "Apps/CommandLine/AppError.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

std::unique_ptr<RegisteredComponent> UseRegisteredComponent(const std::shared_ptr<StandaloneHost>&,
                                                            const ComponentSettings&) {
  throw AppError(ExitCode::Usage, InWords(Phrase::ComIsOfWindows));
}

}  // namespace vorlent::app
