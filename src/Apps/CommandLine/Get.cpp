#include <algorithm>
#include <filesystem>
#include <memory>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Rules.h"
#include "Platform/StandardPaths.h"
#include "Standalone/FittingName.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct GetOptions {
  std::string address;
  std::string item;
  std::string key;
  std::string output = ".";
  bool force = false;
};

// The longest that file systems take.
constexpr std::size_t kLongestName = 255;

// The data fields of an item that name a file, or the one asked for.
std::vector<std::string> FileKeys(const StandaloneItem& item, const std::string& wanted) {
  std::vector<std::string> keys;
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    if (wanted.empty() ? DescribesFile(key) : key == wanted) keys.push_back(key);
  }
  return keys;
}

// A file of the mail and the place that it goes to.
struct WantedFile {
  std::string key;
  std::filesystem::path target;
};

// The name that the field gives, up to the "_" after an attachment's number, and what stands after that.
struct GivenName {
  explicit GivenName(const StandaloneItem& item, const std::string& key) {
    std::string description = item.DataText(key);
    front = CutLine(description);
    const std::size_t number = front.find('#');
    if (number == std::string::npos) return;
    const std::size_t behind = std::min(front.find('_', number), front.size() - 1) + 1;
    mark = front.substr(number, behind - number);
    own = front.substr(behind);
    front.resize(behind);
  }

  // By the rules of old an attachment's own name was encoded twice.
  std::string Text() const {
    const bool isTwice = CurrentRules().attachmentHeaders == AttachmentHeaders::Plain;
    const std::string name = DecodeFileName(own);
    return DisplayUtf8(DecodeFileName(front)) + DisplayUtf8(isTwice ? DecodeFileName(name) : name);
  }

  std::string front, mark, own;
};

// What is there already stays, unless the user says otherwise.
std::vector<WantedFile> PlacesFor(const StandaloneItem& item, const std::vector<std::string>& keys,
                                  const GetOptions& options) {
  DistinctNames names(kLongestName);
  std::vector<WantedFile> files;
  for (const std::string& key : keys) {
    const std::string name = names.Take(GivenName(item, key).Text());
    files.push_back({key, os::StandardPath(options.output) / os::StandardPath(name)});
    if (!options.force && std::filesystem::exists(std::filesystem::symlink_status(files.back().target))) {
      throw AppError(ExitCode::Unreadable,
                     InWords(Phrase::IsThereAlready, {os::NativeText(files.back().target)}),
                     InWords(Phrase::ForceReplaces));
    }
  }
  return files;
}

// Brings one file out of the mailbox and puts it into its place. On its way it has a short name.
void BringOut(MailConnector& connector, const StandaloneItem& item, const WantedFile& wanted) {
  const auto brief = std::make_shared<StandaloneItem>();
  brief->SetData(wanted.key, "file" + GivenName(item, wanted.key).mark, false);
  for (const std::string_view source : {data_key::kSourceFile, data_key::kSourceOffset})
    brief->SetData(source, item.DataText(source), false);
  brief->SetDate(item.Date());
  const std::string file = connector.GetFile(brief, wanted.key);
  if (!FileExists(file)) {
    throw AppError(ExitCode::Unreadable,
                   InWords(Phrase::NotBroughtOut, {Shown(wanted.key), Shown(item.ID()),
                                                   NativeShown(item.DataText(data_key::kSourceFile))}));
  }
  const std::string target = os::NativeText(wanted.target);
  os::Copy(file, os::ToWindowsPath(target));
  RemoveExactFile(file);
  std::puts(target.c_str());
}

// What stands elsewhere can't be brought out by its place.
void RequireAtItsPlace(const StandaloneItem& item) {
  const Standing standing = StandingOf(item);
  if (standing == Standing::AtItsPlace) return;
  const std::string mailbox = NativeShown(item.DataText(data_key::kSourceFile));
  const Phrase what = standing == Standing::HidesItsPlace ? Phrase::HidesItsPlace : Phrase::StandsElsewhere;
  throw AppError(ExitCode::Partly, InWords(what, {Shown(item.ID()), mailbox}),
                 InWords(Phrase::StreamBringsAll));
}

ExitCode Get(Session& session, const GetOptions& options) {
  const StandaloneLocationPtr location = session.Read(session.Address(options.address));
  const StandaloneItemPtr item = FindItem(*location, options.item);
  if (item == nullptr) {
    const std::string hint = CopyHint(*location, options.item);
    throw AppError(ExitCode::Partly, InWords(Phrase::NoItem, {options.item, options.address}),
                   hint.empty() ? InWords(Phrase::ListItems, {options.address}) : hint);
  }
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location->Connector());
  const std::vector<std::string> keys =
      connector == nullptr ? std::vector<std::string>() : FileKeys(*item, options.key);
  if (keys.empty()) {
    throw AppError(ExitCode::Partly,
                   InWords(Phrase::ItemHasNoFile, {options.key.empty() ? "" : " " + options.key}));
  }
  RequireAtItsPlace(*item);
  const std::vector<WantedFile> files = PlacesFor(*item, keys, options);
  std::filesystem::create_directories(os::StandardPath(options.output));
  for (const WantedFile& file : files)
    BringOut(*connector, *item, file);
  return ExitCode::Done;
}

}  // namespace

void DeclareGet(CLI::App& command, Action& action) {
  const auto options = std::make_shared<GetOptions>();
  command.add_option("ADDRESS", options->address, "Where the mail lies")->required();
  command.add_option("ID", options->item, "The mail's ID, or its number in the list of `read`")->required();
  command.add_option("KEY", options->key, "One of its files, such as File or FileAttach1; all without it");
  command.add_option("--output", options->output, "Folder for the files")->capture_default_str();
  command.add_flag("--force", options->force, "Replace files that are there already");
  command.callback(
      [options, &action] { action = [options](Session& session) { return Get(session, *options); }; });
}

}  // namespace vorlent::app
