// The verbs of the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string_view>
#include <vector>

#include "Apps/CommandLine/AppError.h"
#include "Apps/CommandLine/Session.h"

namespace vorlent::app {

// What a parsed command line asks for.
using Action = std::function<ExitCode(Session&)>;

// A verb declares its options and, as the callback of its command, sets the action.
struct Verb {
  std::string_view name;
  std::string_view summary;
  std::string_view group;
  void (*declare)(CLI::App& command, Action& action);
};

// All verbs, in the order of the help text.
const std::vector<Verb>& Verbs();

}  // namespace vorlent::app
