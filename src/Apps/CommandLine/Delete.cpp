#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"

namespace vorlent::app {

namespace {

struct DeleteOptions {
  std::string address;
  std::vector<std::string> items;
};

ExitCode Delete(Session& session, const DeleteOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const auto connector = RequireAs<Connector>(location->Connector());
  bool failed = false;
  // Numbers mean places in the list before anything is deleted.
  std::vector<StandaloneItemPtr> items;
  for (const std::string& wanted : options.items) {
    items.push_back(FindItem(*location, wanted));
    if (items.back() != nullptr) continue;
    items.pop_back();
    session.Output().Complain("no item " + wanted + " at " + options.address);
    failed = true;
  }
  for (const StandaloneItemPtr& item : items) {
    const std::string file = item->DataText("_SourceFile");
    if (file.empty())
      throw AppError(ExitCode::Usage, "items of " + options.address + " can't be deleted this way");
    const std::string what = "'" + Shown(item->Text()) + "' in " + NativeShown(file);
    if (!session.Confirm("Mark " + what + " as deleted?")) return ExitCode::Cancelled;
    connector->DeleteItem(item);
    std::printf("deleted: %s\n", what.c_str());
  }
  return failed ? ExitCode::Partly : ExitCode::Done;
}

}  // namespace

void DeclareDelete(CLI::App& command, Action& action) {
  const auto options = std::make_shared<DeleteOptions>();
  command.add_option("ADDRESS", options->address, "Where the mails lie")->required();
  command.add_option("ID", options->items, "IDs of the mails, or their numbers in the list of `read`")
      ->required();
  command.callback(
      [options, &action] { action = [options](Session& session) { return Delete(session, *options); }; });
}

}  // namespace vorlent::app
