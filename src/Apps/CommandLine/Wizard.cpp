#include "Apps/CommandLine/EndingSignals.h"
#include "Apps/CommandLine/Verbs.h"
#include "Apps/Wizard/WizardApp.h"

namespace vorlent::app {

void DeclareWizard(CLI::App& command, Action& action) {
  const auto options = std::make_shared<WizardAppOptions>();
  command
      .add_option("--target", options->archives,
                  "Folder of an archive to offer as target; made if it isn't there")
      ->type_name("DIR")
      ->allow_extra_args(false);
  options->isToEnd = [] { return EndingSignal() != 0; };
  command.callback([options, &action] {
    action = [options](Session&) { return static_cast<ExitCode>(RunWizardApp(*options)); };
  });
}

}  // namespace vorlent::app
