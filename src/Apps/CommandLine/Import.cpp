#include <fmt/format.h>

#include <filesystem>
#include <fstream>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailSum.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/ImportCommand.h"
#include "Host/Connector.h"
#include "Platform/StandardPaths.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/ArchiveRehearsal.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct ImportOptions {
  std::vector<std::string> sources;
  std::string target;
  std::vector<std::string> keywords;
  std::vector<std::string> autoTopics;
  bool move = false;
  bool tree = false;
  bool dryRun = false;
};

// Stands in for the wizard: the command line has chosen already.
class ChosenCommand : public HostDialogs {
 public:
  explicit ChosenCommand(std::string command) : command_(std::move(command)) {}
  std::string ShowWizard(std::string_view, std::string_view, std::string_view) override { return command_; }
  std::string ChooseLocation(std::string_view, std::string_view, std::string_view) override { return {}; }

 private:
  std::string command_;
};

// The mailboxes of an address, or the one that a native path names.
std::vector<std::string> MailboxesOf(Session& session, const std::string& source) {
  if (source.find("://") == std::string::npos) {
    const std::filesystem::path path = os::StandardPath(source);
    if (!std::filesystem::is_regular_file(path)) {
      const bool isThere = std::filesystem::exists(path);
      throw AppError(ExitCode::Unreadable,
                     InWords(isThere ? Phrase::IsNoFile : Phrase::NoSuchMailbox, {source}));
    }
    return {ComponentPath(NormalPath(source))};
  }
  const StandaloneLocationPtr location = session.OpenMailboxes(session.Address(source));
  const auto connector = RequireAs<MailConnector>(location->Connector());
  std::vector<std::string> files;
  for (const std::string& file : connector->MailFiles())
    files.push_back(file);
  return files;
}

ImportCommand CommandOf(Session& session, const ImportOptions& options, const std::string& target) {
  ImportCommand command;
  command.target = target;
  command.move = options.move && !options.dryRun;
  command.tree = options.tree;
  for (const std::string& keyword : options.keywords)
    command.keywords.push_back(ComponentText(keyword));
  for (const std::string& source : options.sources) {
    for (std::string& mailbox : MailboxesOf(session, source))
      command.mailboxes.push_back(std::move(mailbox));
  }
  return command;
}

bool ConfirmMove(Session& session, const ImportCommand& command) {
  if (!command.move) return true;
  std::string question = InWords(Phrase::MoveFrom) + "\n";
  for (const std::string& mailbox : command.mailboxes)
    question += "  " + NativeShown(mailbox) + "\n";
  return session.Confirm(question + InWords(Phrase::GoOn));
}

void SetAutoTopics(Session& session, const std::vector<std::string>& rules) {
  std::string setting;
  for (const std::string& rule : rules)
    setting += ComponentText(rule) + "\n";
  session.Host().Global().SetOption("autotopic", setting);
}

void PrepareTarget(Session& session, const ImportOptions& options, const std::string& folder) {
  StandaloneGlobal& global = session.Host().Global();
  if (!options.dryRun) {
    global.OpenArchive(folder);
  } else if (!global.RehearseArchive(folder)->KnowsArchive()) {
    session.Output().Say(InWords(Phrase::ArchiveUnknown, {options.target}));
  }
}

ExitCode Import(Session& session, const ImportOptions& options) {
  // Mailboxes first: a wrong address makes no archive.
  const std::string folder = ComponentPath(AbsolutePath(options.target));
  const ImportCommand command = CommandOf(session, options, Archive::NameOf(folder));
  if (command.mailboxes.empty()) throw AppError(ExitCode::Partly, InWords(Phrase::NoMailboxes));
  if (!ConfirmMove(session, command)) return ExitCode::Cancelled;
  PrepareTarget(session, options, folder);
  SetAutoTopics(session, options.autoTopics);
  session.Host().SetDialogs(std::make_shared<ChosenCommand>(command.Text()));
  const auto create = [&](std::string_view progId) {
    return session.Host().Global().CreateConnector(progId);
  };
  ArchiveImport import;
  Cause failure;
  try {
    import.Run(create);
  } catch (const Failure& raised) {
    failure = raised.Why();
  }
  session.Output().ProgressClosed();
  return ShowSum(session, import, options.dryRun ? Phrase::ToImport : Phrase::Imported, failure,
                 import.AlreadyThere());
}

}  // namespace

void DeclareImport(CLI::App& command, Action& action) {
  const auto options = std::make_shared<ImportOptions>();
  command
      .add_option("SOURCE", options->sources,
                  "Mailbox files, or addresses such as thunderbird://PROFILE/ACCOUNT")
      ->required();
  command.add_option("--target", options->target, "Folder of the archive; made if it isn't there")
      ->type_name("DIR")
      ->required();
  command.add_flag("--move", options->move, "Mark the imported mails as deleted in their mailboxes");
  command.add_option("--keyword", options->keywords, "A keyword for all mails")->allow_extra_args(false);
  command
      .add_option("--autotopic", options->autoTopics,
                  "A rule WORD=KEYWORD,... : mails that hold the word get the keywords")
      ->allow_extra_args(false);
  command.add_flag("--dry-run", options->dryRun, "Only tell what would be imported; nothing changes");
  command.add_flag("--tree", options->tree,
                   "Add the mailboxes' keyword paths to the host's tree of structures");
  command.callback(
      [options, &action] { action = [options](Session& session) { return Import(session, *options); }; });
}

}  // namespace vorlent::app
