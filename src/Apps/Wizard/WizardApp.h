// The import wizard as a program of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vorlent {

struct WizardAppOptions {
  // Folders of archives that are offered as targets, native paths; made where they aren't there yet.
  std::vector<std::string> archives;
  // Whether the process was asked to end, by a signal for example; none if it never is. The windows close
  // then as if the user did it, and an import that runs ends after the mail at hand.
  std::function<bool()> isToEnd = {};
};

// Runs the wizard and the import that it asks for, with a host of its own, which stands in for the one
// installed until this returns; so does its platform. Settings of the process, such as where profiles lie,
// hold here too.
//
// Returns an exit code of Apps/ExitCodes.h: 0 when done, 1 if the import or a mail of it failed, 2 if there
// is no display (standard error says so and how to import without one), 3 if an archive can't be opened, 130
// if the user cancelled.
int RunWizardApp(const WizardAppOptions& options);

}  // namespace vorlent
