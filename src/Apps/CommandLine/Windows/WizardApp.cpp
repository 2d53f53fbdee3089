// The wizard's windows are Qt's, which this program is built without: on Windows the wizard is a control of
// the component's, and its host has the windows.
#include "Apps/Wizard/WizardApp.h"

#include "Apps/CommandLine/AppError.h"
#include "Standalone/Phrases.h"

namespace vorlent {

int RunWizardApp(const WizardAppOptions&) {
  throw app::AppError(app::ExitCode::Usage, InWords(Phrase::NoWindows));
}

}  // namespace vorlent
