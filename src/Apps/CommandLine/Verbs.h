// The declaring functions of all verbs; each stands in the file of its name.
#pragma once

#include "Apps/CommandLine/Commands.h"

namespace vorlent::app {

void DeclareBrowse(CLI::App& command, Action& action);
void DeclareRead(CLI::App& command, Action& action);
void DeclareGet(CLI::App& command, Action& action);
void DeclareStream(CLI::App& command, Action& action);
void DeclareBookmarks(CLI::App& command, Action& action);
void DeclareDelete(CLI::App& command, Action& action);
void DeclareCalendar(CLI::App& command, Action& action);
void DeclareImport(CLI::App& command, Action& action);
void DeclareRestore(CLI::App& command, Action& action);
void DeclareShortcut(CLI::App& command, Action& action);
void DeclareSearch(CLI::App& command, Action& action);
void DeclareWizard(CLI::App& command, Action& action);

}  // namespace vorlent::app
