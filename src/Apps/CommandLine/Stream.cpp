#include <filesystem>
#include <set>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailSum.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Platform/Posix/PathMapping.h"

namespace vorlent::app {

namespace {

namespace fs = std::filesystem;

struct StreamOptions {
  std::string address;
  std::string output;
  bool json = false;
  bool records = false;
  bool remove = false;
};

// The folder's name for a mail. An ID may be longer than a name can be.
std::string FolderName(const std::string& id) {
  constexpr std::size_t kLongest = 240;
  std::string name = EncodeFileName(id);
  while (os::ToNativeName(name).size() > kLongest)
    name.pop_back();
  return os::ToNativeName(name);
}

// A new folder for a mail; mails of one ID get numbers behind it.
fs::path NewMailFolder(const fs::path& parent, const std::string& id) {
  const std::string name = FolderName(id);
  fs::path folder = parent / name;
  std::error_code error;
  for (int number = 2; !fs::create_directory(folder, error); ++number) {
    if (error) throw Failure(ErrorNumber::PathAccess, folder.string() + ": " + error.message());
    folder = parent / (name + "-" + std::to_string(number));
  }
  return folder;
}

// Moves the files that the record names into the mail's folder and writes the record beside them. False if a
// file isn't there.
bool Keep(const StandaloneItem& item, const std::string& record, const fs::path& parent) {
  const fs::path folder = NewMailFolder(parent, item.ID());
  std::set<std::string> moved;
  bool isWhole = true;
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    if (!item.DataKey(i).starts_with("File")) continue;
    std::string description = item.DataText(item.DataKey(i));
    const std::string source = CutLine(description);
    // Two attachments of one name are one file, which has moved with the first.
    if (!moved.insert(source).second) continue;
    if (!FileExists(source)) {
      isWhole = false;
      continue;
    }
    const fs::path target = folder / os::ToNativeName(GetFileName(source));
    os::Rename(source, os::ToWindowsPath(target.string()));
  }
  TextWriter writer(os::ToWindowsPath((folder / "record.txt").string()), os::File::Mode::Create);
  writer.Write(record);
  writer.Close();
  return isWhole;
}

// Keeps a mail, and notes why it isn't there whole. What lets no mail be kept rises.
bool KeepOrNote(const StdMail& mail, const StandaloneItem& item, const std::string& record,
                const fs::path& parent, MailAccount& doubts) {
  const auto note = [&](const std::string& reason) {
    // One that could not be written whole is known as such already.
    if (mail.WriteFailure().empty()) doubts.failed.push_back({mail.MailboxFile(), mail.Offset(), reason});
  };
  try {
    const bool isWhole = Keep(item, record, parent);
    if (!isWhole) note("a file of the mail is gone");
    return isWhole;
  } catch (const Failure& failure) {
    note(failure.what());
    throw;
  }
}

void Print(const StandaloneItem& item, const StreamOptions& options) {
  const std::string line = options.json      ? ItemJson(item)
                           : options.records ? item.Record()
                                             : Shown(item.Date()) + "  " + Shown(item.Text());
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

// Marks the mail delivered last as one to be deleted.
void Remove(Location_Thunderbird& connector, MailAccount& doubts) {
  // What was printed of it must have arrived.
  FlushResults();
  if (connector.SourceMail()->HidesOffset()) {
    doubts.NoteHidden(*connector.SourceMail());
  } else {
    connector.SourceDelete();
  }
}

ExitCode Stream(Session& session, const StreamOptions& options) {
  const StandaloneLocationPtr location = session.OpenMailboxes(session.Address(options.address));
  const auto connector = RequireAs<Location_Thunderbird>(location->Connector());
  if (options.remove && !session.Confirm("Every mail of " + options.address +
                                         " will be marked as deleted in its mailbox. Go on?")) {
    return ExitCode::Cancelled;
  }
  const bool keep = !options.output.empty();
  if (keep) fs::create_directories(options.output);
  connector->SourceInit(nullptr, keep);
  MailAccount doubts;  // what the connector can't know
  std::string failure;
  try {
    for (std::string record; connector->SourceGetNext(record);) {
      StandaloneItem item;
      item.ImportRecord(record);
      const StdMail& mail = *connector->SourceMail();
      const bool isKept = !keep || KeepOrNote(mail, item, record, options.output, doubts);
      Print(item, options);
      // A mail that could not be written whole stays where it is complete.
      if (options.remove && isKept && mail.WriteFailure().empty()) Remove(*connector, doubts);
      session.Output().CountMail();
    }
  } catch (const Failure& raised) {
    failure = raised.what();
  }
  return ShowSum(session, connector->Account().With(doubts), "delivered", failure);
}

}  // namespace

void DeclareStream(CLI::App& command, Action& action) {
  const auto options = std::make_shared<StreamOptions>();
  command.add_option("ADDRESS", options->address, "The mailboxes to stream")->required();
  command.add_option("--output", options->output, "Keep each mail in DIR/ID/, with its files and its record")
      ->type_name("DIR");
  auto* json = command.add_flag("--json", options->json, "One JSON object per mail");
  command.add_flag("--records", options->records, "The raw item records, one per line")->excludes(json);
  command.add_flag("--delete", options->remove, "Mark each mail as deleted once its mailbox is done");
  command.callback(
      [options, &action] { action = [options](Session& session) { return Stream(session, *options); }; });
}

}  // namespace vorlent::app
