#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Host/Connector.h"
#include "Platform/NativePaths.h"
#include "Platform/StandardPaths.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct BookmarksOptions {
  std::string address;
  std::string output;
};

// Nothing shall be written at all if the copy can't be.
void CheckPlace(const std::string& native) {
  const std::filesystem::path file = os::StandardPath(native);
  const bool isThere = std::filesystem::exists(file);
  if (std::ofstream(file, std::ios::app)) {
    if (!isThere) std::filesystem::remove(file);
    return;
  }
  throw AppError(ExitCode::Unreadable, InWords(Phrase::Unwritten, {native, ToldShown(std::strerror(errno))}));
}

void CopyExport(const std::string& from, const std::string& to) {
  std::error_code error;
  std::filesystem::copy_file(os::StandardPath(from), os::StandardPath(to),
                             std::filesystem::copy_options::overwrite_existing, error);
  if (error) throw AppError(ExitCode::Unreadable, InWords(Phrase::Unwritten, {to, ReasonShown(error)}));
}

// Tells what couldn't be read, each with its row, and how many that were; whether there was any.
bool ComplainOfLeftOut(Session& session) {
  if (!session.ComplainOfErrors()) return false;
  session.Output().Say(InWords(Phrase::LeftOut, {std::to_string(session.Output().Errors().size())}));
  return true;
}

// Writes the profile's own file, and tells why it can't be. False if it can't be where it needn't be, since
// there is to be a copy.
bool WriteIntoProfile(Session& session, BookmarkConnector& connector, bool isCopied) {
  try {
    connector.Save();
    return true;
  } catch (const Failure& failure) {
    if (!isCopied) throw;
    session.Output().Say(CauseShown(failure.Why()));
    return false;
  }
}

// The profile's own file, and a copy if there is to be one.
void WriteExports(Session& session, BookmarkConnector& connector, const std::string& file,
                  const std::string& output) {
  const bool isCopied = !output.empty();
  const bool isInProfile = WriteIntoProfile(session, connector, isCopied);
  if (!isCopied) return;
  if (isInProfile) {
    CopyExport(os::ToNativePath(file), output);
    session.Output().Say(InWords(Phrase::WrittenIntoProfile, {NativeShown(file)}));
  } else {
    connector.SaveInto(ComponentPath(AbsolutePath(output)));
  }
}

ExitCode Bookmarks(Session& session, const BookmarksOptions& options) {
  const std::string address = session.Address(options.address);
  if (!address.starts_with(kFireFoxScheme.prefix) || address.ends_with("/*")) {
    throw AppError(ExitCode::Usage, InWords(Phrase::NoPlaceOfBookmarks, {options.address}),
                   InWords(Phrase::ExportBookmarks));
  }
  const StandaloneLocationPtr location = session.Read(address);
  // Where broken ones aren't left out by name, a part of the bookmarks must not take the place of an earlier
  // export.
  if (session.Output().HasErrors() && !BrokenItemsAreNamed()) {
    throw AppError(ExitCode::Unreadable, session.Output().Errors().front().text,
                   PlaceOf(*location) + "\n" + InWords(Phrase::NothingWritten));
  }
  if (location->ItemCount() == 0) {
    throw AppError(ExitCode::Partly, InWords(Phrase::NoBookmarks, {options.address}),
                   InWords(Phrase::NothingWritten));
  }
  if (!options.output.empty()) CheckPlace(options.output);
  const auto connector = std::dynamic_pointer_cast<BookmarkConnector>(location->Connector());
  const std::string file = connector->ProfileFolder() + "bookmarks.html";
  const std::string shown = NativeShown(file);
  const bool isWhole = !ComplainOfLeftOut(session);
  if (FileExists(file) && !session.Confirm(InWords(Phrase::ReplaceFile, {shown}))) return ExitCode::Cancelled;
  WriteExports(session, *connector, file, options.output);
  std::puts(options.output.empty() ? shown.c_str() : options.output.c_str());
  return isWhole ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace

void DeclareBookmarks(CLI::App& command, Action& action) {
  const auto options = std::make_shared<BookmarksOptions>();
  command
      .add_option("ADDRESS", options->address,
                  "Whose bookmarks, such as firefox://PROFILE/ or firefox://PROFILE/FOLDER/")
      ->required();
  command
      .add_option(
          "--output", options->output,
          "A copy for yourself. The bookmarks.html in the profile folder is written, too, if it may be")
      ->type_name("FILE");
  command.callback(
      [options, &action] { action = [options](Session& session) { return Bookmarks(session, *options); }; });
}

}  // namespace vorlent::app
