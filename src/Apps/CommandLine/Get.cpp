#include <filesystem>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailPlace.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Platform/Files.h"
#include "Platform/Posix/PathMapping.h"

namespace vorlent::app {

namespace {

struct GetOptions {
  std::string address;
  std::string item;
  std::string key;
  std::string output = ".";
};

// The data fields of an item that name a file, or the one asked for.
std::vector<std::string> FileKeys(const StandaloneItem& item, const std::string& wanted) {
  std::vector<std::string> keys;
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    if (wanted.empty() ? key.starts_with("File") : key == wanted) keys.push_back(key);
  }
  return keys;
}

// Brings one file out and puts it into the folder under the name that its field gives.
void BringOut(MailConnector& connector, const StandaloneItemPtr& item, const std::string& key,
              const std::filesystem::path& folder) {
  const std::string file = connector.GetFile(item, key);
  if (!FileExists(file)) {
    throw AppError(ExitCode::Unreadable, Shown(key) + " of " + Shown(item->ID()) +
                                             " could not be brought out of " +
                                             NativeShown(item->DataText("_SourceFile")));
  }
  const std::filesystem::path target = folder / os::ToNativeName(GetFileName(file));
  os::Copy(file, os::ToWindowsPath(target.string()));
  RemoveExactFile(file);
  std::puts(target.c_str());
}

ExitCode Get(Session& session, const GetOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const StandaloneItemPtr item = FindItem(*location, options.item);
  if (item == nullptr) {
    throw AppError(ExitCode::Partly, "no item " + options.item + " at " + options.address,
                   "List the items with: vorlent-mozilla read '" + options.address + "'");
  }
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location->Connector());
  const std::vector<std::string> keys =
      connector == nullptr ? std::vector<std::string>() : FileKeys(*item, options.key);
  if (keys.empty()) {
    throw AppError(ExitCode::Partly, "the item has no file" + (options.key.empty() ? "" : " " + options.key));
  }
  if (!LiesAtItsPlace(*item)) {
    throw AppError(ExitCode::Partly,
                   "the header Address of " + Shown(item->ID()) + " hides its place in " +
                       NativeShown(item->DataText("_SourceFile")),
                   "Use `stream --output`, which brings out every mail of a mailbox.");
  }
  std::filesystem::create_directories(options.output);
  for (const std::string& key : keys)
    BringOut(*connector, item, key, options.output);
  return ExitCode::Done;
}

}  // namespace

void DeclareGet(CLI::App& command, Action& action) {
  const auto options = std::make_shared<GetOptions>();
  command.add_option("ADDRESS", options->address, "Where the mail lies")->required();
  command.add_option("ID", options->item, "The mail's ID, or its number in the list of `read`")->required();
  command.add_option("KEY", options->key, "One of its files, such as File or FileAttach1; all without it");
  command.add_option("--output", options->output, "Folder for the files")->capture_default_str();
  command.callback(
      [options, &action] { action = [options](Session& session) { return Get(session, *options); }; });
}

}  // namespace vorlent::app
