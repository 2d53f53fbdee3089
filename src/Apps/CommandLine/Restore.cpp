#include <filesystem>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"

namespace vorlent::app {

namespace {

struct RestoreOptions {
  std::string address;
  std::vector<std::string> items;
  std::string archive;
};

std::uint64_t LengthOf(const std::string& file) {
  return FileExists(file) ? os::FileLength(file) : 0;
}

// Runs an action of the mail connector for archived mails, whose results are the bytes that it appends: it
// reports nothing of what goes wrong on the way.
ExitCode PutBack(Session& session, const RestoreOptions& options, const std::string& verb) {
  const ArchivePtr archive = session.OpenArchive(options.archive);
  const StandaloneLocationPtr location = session.Open(session.Address(options.address));
  const auto connector = std::dynamic_pointer_cast<Location_Thunderbird>(location->Connector());
  if (connector == nullptr) throw AppError(ExitCode::Usage, options.address + " is no address of mail");
  if (connector->MailFiles().IsEmpty()) {
    session.ComplainOfErrors();
    throw AppError(ExitCode::Unreadable, "there is no mailbox at " + options.address);
  }
  const std::string mailbox = connector->MailFiles().Item(1);
  bool failed = false;
  for (const std::string& wanted : options.items) {
    const StandaloneItemPtr item = FindItem(*archive, wanted);
    if (item == nullptr) {
      session.Output().Complain("no item " + wanted + " in " + options.archive);
      failed = true;
      continue;
    }
    const std::string what = "'" + Shown(item->Text()) + "'";
    if (!session.Confirm("Append " + what + " to " + NativeShown(mailbox) + "?")) return ExitCode::Cancelled;
    const std::uint64_t before = LengthOf(mailbox);
    connector->ExecuteAction(verb + ":" + item->ID());
    const bool appended = LengthOf(mailbox) > before;
    failed = session.ComplainOfErrors() || !appended || failed;
    if (appended) {
      std::printf("appended: %s to %s\n", what.c_str(), NativeShown(mailbox).c_str());
    } else {
      session.Output().Complain(NativeShown(mailbox) + ": " + what + " could not be appended");
    }
  }
  return failed ? ExitCode::Partly : ExitCode::Done;
}

void Declare(CLI::App& command, Action& action, const std::string& verb) {
  const auto options = std::make_shared<RestoreOptions>();
  command.add_option("ADDRESS", options->address, "The mailbox to append to; of several the first")
      ->required();
  command.add_option("ID", options->items, "IDs of archived mails, or their numbers in the list of `search`")
      ->required();
  command.add_option("--archive", options->archive, "Folder of the archive")->type_name("DIR")->required();
  command.callback([options, &action, verb] {
    action = [options, verb](Session& session) { return PutBack(session, *options, verb); };
  });
}

}  // namespace

void DeclareRestore(CLI::App& command, Action& action) {
  Declare(command, action, "Restore");
}

void DeclareShortcut(CLI::App& command, Action& action) {
  Declare(command, action, "Shortcut");
}

}  // namespace vorlent::app
