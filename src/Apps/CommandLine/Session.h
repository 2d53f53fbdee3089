// One run of the program: the host, what is shown of it, and how the run ends.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Apps/CommandLine/AppError.h"
#include "Apps/CommandLine/Console.h"
#include "Apps/CommandLine/EndingSignals.h"
#include "Apps/CommandLine/RegisteredComponent.h"
#include "Standalone/Archive.h"
#include "Standalone/InstalledHost.h"
#include "Standalone/StandaloneHost.h"
#include "Standalone/StandaloneLocation.h"

namespace vorlent::app {

// The options that every command takes.
struct GlobalOptions {
  std::string appData;              // native folder with the Windows layout, "" for the user's own
  std::vector<std::string> drives;  // "C=DIR"
  std::string rules;                // "today" or "windows", "" for what the other options ask for
  std::string language;             // "en" or "de", "" for the user's own
  bool com = false;                 // the registered component, by the rules of Windows
  bool verbose = false;             // the component's log on standard error
  bool databaseLog = false;         // the database log on standard error
  bool yes = false;                 // no questions
};

class Session {
 public:
  // Applies the options and installs the host. Raises AppError for options that can't be applied.
  explicit Session(const GlobalOptions& options);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const GlobalOptions& Options() const { return options_; }
  Console& Output() { return *console_; }
  StandaloneHost& Host() { return *host_; }

  // The address as the component writes it: text becomes code page, and a name that profiles or accounts hold
  // in UTF-8 is found by how it reads. By today's rules a path of this system is the address of the
  // mail folder there. Raises AppError for an address without one of the schemes.
  std::string Address(const std::string& utf8);

  // Opens a Location on an address and lets the connector prepare it, without reading items.
  StandaloneLocationPtr Open(const std::string& address);

  // Opens and makes sure that there are mailboxes; errors that leave some are shown. Raises AppError with
  // ExitCode::Unreadable if a profile or an account doesn't exist or a mailbox of the address is missing,
  // with ExitCode::Usage if it isn't one of mail.
  StandaloneLocationPtr OpenMailboxes(const std::string& address);

  // Opens an archive that is there. Raises AppError with ExitCode::Unreadable if it isn't.
  ArchivePtr OpenArchive(const std::string& nativeFolder);

  // Opens and reads. Raises AppError with ExitCode::Unreadable if that fails, or if nothing was read and the
  // component said why, and with ExitCode::Partly if a profile has no bookmarks' database.
  StandaloneLocationPtr Read(const std::string& address);

  // The line that tells how much could not be read since the last Open; "" if all could, and by the rules of
  // old.
  std::string UnreadSum() const;

  // Shows the errors that the component told since the last Open, and returns whether there were any.
  bool ComplainOfErrors();
  // Whether any were shown in this run.
  bool HasComplained() const { return hasComplained_; }

  // Asks before a user's file is changed: what will happen to which file. True without a question if there is
  // no terminal or the user said --yes.
  bool Confirm(const std::string& question);

 private:
  // Raises AppError for an address that names a folder without a mailbox, which the component passes over.
  void CheckMailboxes(StandaloneLocation& location);
  void CheckBookmarks(StandaloneLocation& location);
  // Where nothing was read. Of several reasons, by today's rules, all but the last are shown before.
  AppError NothingRead(StandaloneLocation& location, const std::string& address);

  GlobalOptions options_;
  std::shared_ptr<Console> console_;
  std::shared_ptr<StandaloneHost> host_;
  std::optional<InstalledHost> installed_;
  std::optional<EndingSignals> signals_;
  std::unique_ptr<RegisteredComponent> registered_;  // null while this program's own component is in use
  bool hasComplained_ = false;
};

// The hint below an error: the database of a Location of bookmarks; "" for any other.
std::string PlaceOf(StandaloneLocation& location);

// The native path as the component writes it.
std::string ComponentPath(const std::string& native);

// The component's path as people write it here, UTF-8.
std::string NativeShown(std::string_view path);

// What the component or the system tells, in the user's language and with paths as they are shown, UTF-8.
std::string ToldShown(std::string_view text);

// Why the system refused something, in the user's language, UTF-8.
std::string ReasonShown(const std::error_code& error);

// Whether a native path leads to a folder.
bool IsFolder(const std::string& native);

// A native path from the root on, and the same without dots. Raise filesystem_error for "".
std::string AbsolutePath(const std::string& native);
std::string NormalPath(const std::string& native);

// Why something failed, with the path as people write it here, UTF-8.
std::string CauseShown(const Cause& why);

// A failure as the error that ends the program. `hint` stands before that of the failure itself.
AppError ErrorOf(const Failure& failure, std::string hint = {});

// UTF-8 text of the command line as the component's text.
std::string ComponentText(const std::string& utf8);

}  // namespace vorlent::app
