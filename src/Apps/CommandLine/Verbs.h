// The declaring functions of all verbs; each stands in the file of its name.
#pragma once

#include "Apps/CommandLine/Commands.h"

namespace vorlent::app {

#define VERB(name, summary, group, declare) void declare(CLI::App& command, Action& action);
#include "Apps/CommandLine/Verbs.def"
#undef VERB

}  // namespace vorlent::app
