#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Apps/CommandLine/Commands.h"
#include "Apps/CommandLine/System.h"
#include "Platform/StandardPaths.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

constexpr const char* kAddresses = R"(
Addresses:
  thunderbird://                            all mails of all profiles
  thunderbird://PROFILE/ACCOUNT/FOLDER      a mail folder and what lies below it
  thunderbird://PROFILE/ACCOUNT/FOLDER/-    that folder alone
  thunderbird://./C/DIR/FILE                a mailbox anywhere on a drive
  firefox://PROFILE/FOLDER/                 bookmarks below a folder
  sunbird://PROFILE/CALENDAR                events and tasks of a calendar, lightning:// alike
  ADDRESS/*                                 what can be chosen there, for `browse`
)";

constexpr const char* kSignalCodes = R"(
A signal that asks the program to end gives 128 and its number: Ctrl-C 130, SIGTERM 143, SIGHUP 129,
SIGPIPE 141 where nobody reads on.)";

std::string Footer() {
  std::string text = std::string(kAddresses) + "\nExit codes:\n";
  for (const auto& [code, meaning] : kExitCodes)
    text += fmt::format("  {:<3}  {}\n", static_cast<int>(code), meaning);
  return text + kSignalCodes;
}

void DeclareGlobalOptions(CLI::App& app, GlobalOptions& options) {
  app.add_option("--appdata", options.appData,
                 "Application-data folder with the Windows layout (Thunderbird\\profiles.ini ...); the "
                 "user's own without it")
      ->type_name("DIR");
  app.add_option("--drive", options.drives,
                 "What a drive letter in a copied profile stands for, such as C=/mnt/old")
      ->type_name("LETTER=DIR")
      ->allow_extra_args(false);
  app.add_option(
         "--rules", options.rules,
         "How files are read and written: `today` as the applications of today do, `windows` exactly as "
         "the component does on the machine that it was drawn for")
      ->check(CLI::IsMember({"today", "windows"}))
      ->default_str("today");
  app.add_option("--language", options.language,
                 "Language of what is shown: `en`, or `de` for German; the user's without it")
      ->check(CLI::IsMember({"en", "de"}))
      ->each([](const std::string& language) { ChooseLanguage(LanguageOf(language)); })
      ->trigger_on_parse();
  app.add_flag("--com", options.com,
               "Use the component that is registered with Windows, by the rules of Windows, in place of "
               "this program's own; on Windows only");
  app.add_flag("--verbose", options.verbose, "Show the component's log");
  app.add_flag("--log", options.databaseLog, "Show the calendar connector's database log");
  app.add_flag("--yes", options.yes, "Change mailboxes without asking");
}

void PrintError(const AppError& error) {
  std::fprintf(stderr, "vorlent-mozilla: %s\n", error.what());
  if (!error.Hint().empty()) std::fprintf(stderr, "%s\n", error.Hint().c_str());
}

// The command that was asked for and isn't there, "" if that isn't what is wrong.
std::string UnknownCommand(const CLI::App& app) {
  const auto all = [](const CLI::App*) { return true; };
  std::string path;
  const CLI::App* command = &app;
  for (; !command->get_subcommands().empty(); command = command->get_subcommands().front())
    path += command->get_subcommands().front()->get_name() + " ";
  if (command->get_subcommands(all).empty()) return "";
  const std::vector<std::string> rest = app.remaining(true);
  return rest.empty() || rest.front().starts_with('-') ? "" : path + rest.front();
}

ExitCode RunAction(const GlobalOptions& options, const Action& action) {
  try {
    Session session(options);
    const ExitCode code = action(session);
    FlushResults();
    return code == ExitCode::Done && session.HasComplained() ? ExitCode::Partly : code;
  } catch (const Interrupted&) {
    return ExitCode::Cancelled;
  } catch (const AppError& error) {
    PrintError(error);
    return error.Code();
  } catch (const Failure& failure) {
    PrintError(ErrorOf(failure));
    return ExitCode::Unreadable;
  } catch (const std::filesystem::filesystem_error& error) {
    PrintError({ExitCode::Unreadable, "'" + os::NativeText(error.path1()) + "': " + ReasonShown(error.code()),
                std::string(InWords(HintFor(error.code())))});
    return ExitCode::Unreadable;
  }
}

int Main(std::vector<std::string> arguments) {
  PrepareStreams();
  std::setlocale(LC_ALL, "");
  CLI::App app("Mails, bookmarks and calendars out of Mozilla profiles, and back.", "vorlent-mozilla");
  app.set_version_flag("--version", "vorlent-mozilla " VORLENT_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  // A slash begins a path on every system.
  app.allow_windows_style_options(false);
  GlobalOptions options;
  DeclareGlobalOptions(app, options);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return TranslatedUsage(error.what()) + "\n" + InWords(Phrase::HelpTellsMore) + "\n";
  });
  Action action;
  for (const Verb& verb : Verbs()) {
    CLI::App* command = app.add_subcommand(std::string(verb.name), std::string(verb.summary));
    command->group(std::string(verb.group));
    verb.declare(*command, action);
  }
  // After the subcommands, which would take it over.
  app.footer(Footer());
  try {
    // It takes them from the end.
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    if (const std::string unknown = UnknownCommand(app); error.get_exit_code() != 0 && !unknown.empty()) {
      PrintError(
          {ExitCode::Usage, InWords(Phrase::UnknownCommand, {unknown}), InWords(Phrase::HelpNamesCommands)});
      return static_cast<int>(ExitCode::Usage);
    }
    return app.exit(error) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
  }
  const ExitCode code = RunAction(options, action);
  if (EndingSignal() != 0) EndBySignal();
  return static_cast<int>(code);
}

}  // namespace

}  // namespace vorlent::app

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  return vorlent::app::Main(vorlent::app::ProgramArguments(argc, argv));
}
