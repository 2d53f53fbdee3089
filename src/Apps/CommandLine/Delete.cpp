#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailPlace.h"
#include "Apps/CommandLine/Verbs.h"

namespace vorlent::app {

namespace {

struct DeleteOptions {
  std::string address;
  std::vector<std::string> items;
};

// Marks one mail and looks whether it is marked now. False, with a complaint, if it isn't.
bool DeleteMail(Session& session, Connector& connector, const StandaloneItemPtr& item,
                const std::string& what) {
  if (!LiesAtItsPlace(*item)) {
    session.Output().Complain(what + " stays: its own header Address hides its place in the mailbox");
    return false;
  }
  const WatchedStatus status(*item);
  connector.DeleteItem(item);
  const std::string change = status.ChangeOfNoNumber();
  if (LiesAtItsPlace(*item)) {
    const std::string reason = change.empty() ? "it has no header X-Mozilla-Status, or Thunderbird is running"
                                              : change + ", which is no number either";
    session.Output().Complain(what + " is not marked: " + reason);
    return false;
  }
  std::printf("deleted: %s%s\n", what.c_str(), change.empty() ? "" : (": " + change).c_str());
  return true;
}

ExitCode Delete(Session& session, const DeleteOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const auto connector = RequireAs<Connector>(location->Connector());
  // Numbers mean places in the list before anything is deleted.
  const FoundItems found = FindItems(*location, options.items);
  for (const std::string& missing : found.missing)
    session.Output().Complain("no item " + missing + " at " + options.address);
  bool isWhole = found.missing.empty();
  for (const StandaloneItemPtr& item : found.items) {
    const std::string file = item->DataText("_SourceFile");
    if (file.empty())
      throw AppError(ExitCode::Usage, "items of " + options.address + " can't be deleted this way");
    const std::string what = "'" + Shown(item->Text()) + "' in " + NativeShown(file);
    if (!session.Confirm("Mark " + what + " as deleted?")) return ExitCode::Cancelled;
    isWhole = DeleteMail(session, *connector, item, what) && isWhole;
  }
  return isWhole ? ExitCode::Done : ExitCode::Partly;
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
