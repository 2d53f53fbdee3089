#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct BrowseOptions {
  std::string address;
  bool json = false;
};

ExitCode Browse(Session& session, const BrowseOptions& options) {
  std::string address = session.Address(options.address);
  // An address that names a place stands for what lies below it.
  if (!address.ends_with('*')) address += address.ends_with('/') ? "*" : "/*";
  const StandaloneLocationPtr location = session.Read(address);
  const std::vector<StandaloneItemPtr> items = ItemsOf(*location);
  if (items.empty()) {
    session.Output().Complain(InWords(Phrase::NothingBelow, {options.address}));
    return ExitCode::Partly;
  }
  if (options.json) {
    for (const StandaloneItemPtr& item : items)
      PrintLine(ItemJson(*item));
  } else {
    PrintLines(ItemTables(items, TerminalWidth(0)));
  }
  return ExitCode::Done;
}

}  // namespace

void DeclareBrowse(CLI::App& command, Action& action) {
  const auto options = std::make_shared<BrowseOptions>();
  command
      .add_option("ADDRESS", options->address,
                  "Where to look, such as 'thunderbird://*' or thunderbird://default")
      ->required();
  command.add_flag("--json", options->json, "One JSON object per line");
  command.callback(
      [options, &action] { action = [options](Session& session) { return Browse(session, *options); }; });
}

}  // namespace vorlent::app
