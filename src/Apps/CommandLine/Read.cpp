#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct ReadOptions {
  std::string address;
  bool json = false;
  bool records = false;
  bool tree = false;
};

void Print(StandaloneLocation& location, const std::vector<StandaloneItemPtr>& items,
           const ReadOptions& options) {
  if (options.tree) {
    PrintLines(TreeText(*location.FiledTree()));
    return;
  }
  if (!options.json && !options.records) {
    PrintLines(ItemTables(items, TerminalWidth(0)));
    return;
  }
  NativePaths paths;
  for (const StandaloneItemPtr& item : items)
    PrintLine(options.json ? ItemJson(*item, paths) : item->Record());
}

ExitCode Read(Session& session, const ReadOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const std::vector<StandaloneItemPtr> items = ItemsOf(*location);
  Print(*location, items, options);
  const bool failed = session.ComplainOfErrors();
  if (const std::string place = PlaceOf(*location); failed && !place.empty()) session.Output().Say(place);
  if (const std::string sum = session.UnreadSum(); !sum.empty()) session.Output().Say(sum);
  if (!items.empty()) return failed ? ExitCode::Partly : ExitCode::Done;
  session.Output().Complain(InWords(Phrase::NoItems, {options.address}));
  return ExitCode::Partly;
}

}  // namespace

void DeclareRead(CLI::App& command, Action& action) {
  const auto options = std::make_shared<ReadOptions>();
  command
      .add_option("ADDRESS", options->address, "What to read, such as thunderbird://PROFILE/ACCOUNT/FOLDER")
      ->required();
  auto* json = command.add_flag("--json", options->json, "One JSON object per line");
  auto* records =
      command.add_flag("--records", options->records, "The raw item records, one per line")->excludes(json);
  command.add_flag("--tree", options->tree, "The keyword tree with its items")
      ->excludes(json)
      ->excludes(records);
  command.callback(
      [options, &action] { action = [options](Session& session) { return Read(session, *options); }; });
}

}  // namespace vorlent::app
