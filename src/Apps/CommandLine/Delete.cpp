#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Apps/CommandLine/WatchedStatus.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Host/Connector.h"
#include "Host/RecordKeys.h"
#include "Standalone/Phrases.h"
#include "Standalone/RunTally.h"

namespace vorlent::app {

namespace {

struct DeleteOptions {
  std::string address;
  std::vector<std::string> items;
};

// Hears why the mail at hand isn't marked.
class MarkingResult : public MailRunObserver {
 public:
  void MailNotMarked(const MailPlace&, Marking why) override { value = why; }

  Marking value = Marking::Marked;
};

Marking MarkMail(MailConnector& connector, const StandaloneItemPtr& item) {
  // The connector would only tell that another mail stands there. What can't be read, it tells.
  bool hidesPlace = false;
  Swallow([&] { hidesPlace = StandingOf(*item) == Standing::HidesItsPlace; });
  if (hidesPlace) return Marking::HiddenPlace;
  MarkingResult result;
  const RunObservation observation(connector, result);
  connector.DeleteItem(item);
  return result.value;
}

// Marks one mail. False, with a complaint, if it isn't marked then.
bool DeleteMail(Session& session, MailConnector& connector, const StandaloneItemPtr& item,
                const std::string& what) {
  const WatchedStatus status(*item);
  const Marking result = MarkMail(connector, item);
  const std::string change = status.ChangeOfNoNumber();
  if (result != Marking::Marked) {
    const bool isToldOfChange = result == Marking::BadStatus && !change.empty();
    const std::string why =
        isToldOfChange ? InWords(Phrase::NoNumberEither, {change}) : std::string(InWords(result));
    session.Output().Complain(InWords(Phrase::NotMarked, {what, why}));
    return false;
  }
  std::puts(InWords(Phrase::Deleted, {what, change.empty() ? "" : ": " + change}).c_str());
  return true;
}

ExitCode Delete(Session& session, const DeleteOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location->Connector());
  // Numbers mean places in the list before anything is deleted.
  const FoundItems found = FindItems(*location, options.items);
  for (const std::string& missing : found.missing) {
    session.Output().Complain(InWords(Phrase::NoItem, {missing, options.address}));
    if (const std::string hint = CopyHint(*location, missing); !hint.empty()) session.Output().Say(hint);
  }
  bool isWhole = found.missing.empty();
  for (const StandaloneItemPtr& item : found.items) {
    const std::string file = item->DataText(data_key::kSourceFile);
    if (connector == nullptr || file.empty())
      throw AppError(ExitCode::Usage, InWords(Phrase::CannotBeDeleted, {options.address}));
    const std::string what = InWords(Phrase::MailIn, {Shown(item->Text()), NativeShown(file)});
    if (!session.Confirm(InWords(Phrase::MarkAsDeleted, {what}))) return ExitCode::Cancelled;
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
