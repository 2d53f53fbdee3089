#include <filesystem>
#include <set>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailSum.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Host/Connector.h"
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

// The tally of a stream, which knows the mail at hand.
class StreamTally : public RunTally {
 public:
  void MailDelivered(const MailPlace& mail, bool hidesPlace) override {
    RunTally::MailDelivered(mail, hidesPlace);
    atHand_ = {mail, true, hidesPlace};
  }
  void MailFailed(const MailPlace& mail, std::string_view reason) override {
    RunTally::MailFailed(mail, reason);
    atHand_ = {mail, false, false};
  }

  // Whether the mail at hand is there with all of its files.
  bool IsWhole() const { return atHand_.isWhole; }
  bool HidesPlace() const { return atHand_.hidesPlace; }
  const MailPlace& Place() const { return atHand_.place; }

  // The mail at hand could not be kept. One that isn't whole is known as such already.
  void NoteLoss(std::string_view reason) {
    if (atHand_.isWhole) TakeBack(atHand_.place, reason);
    atHand_.isWhole = false;
  }

 private:
  struct AtHand {
    MailPlace place;
    bool isWhole = false;
    bool hidesPlace = false;
  };
  AtHand atHand_;
};

// Keeps the mail at hand, and notes why it isn't there whole. What lets no mail be kept rises.
void KeepOrNote(const StandaloneItem& item, const std::string& record, const fs::path& parent,
                StreamTally& tally) {
  try {
    if (!Keep(item, record, parent)) tally.NoteLoss("a file of the mail is gone");
  } catch (const Failure& failure) {
    tally.NoteLoss(failure.what());
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

// Marks the mail at hand as one to be deleted, unless it could not be kept whole: then it stays where it is
// complete.
void Remove(MailConnector& connector, StreamTally& tally) {
  if (!tally.IsWhole()) return;
  // What was printed of it must have arrived.
  FlushResults();
  if (tally.HidesPlace()) {
    tally.MailNotMarked(tally.Place(), Marking::HiddenPlace);
  } else {
    connector.SourceDelete();
  }
}

ExitCode Stream(Session& session, const StreamOptions& options) {
  const StandaloneLocationPtr location = session.OpenMailboxes(session.Address(options.address));
  const auto connector = RequireAs<MailConnector>(location->Connector());
  if (options.remove && !session.Confirm("Every mail of " + options.address +
                                         " will be marked as deleted in its mailbox. Go on?")) {
    return ExitCode::Cancelled;
  }
  const bool keep = !options.output.empty();
  if (keep) fs::create_directories(options.output);
  StreamTally tally;
  connector->SetRunObserver(&tally);
  connector->SourceInit(nullptr, keep);
  std::string failure;
  try {
    for (std::string record; connector->SourceGetNext(record);) {
      StandaloneItem item;
      item.ImportRecord(record);
      if (keep) KeepOrNote(item, record, options.output, tally);
      Print(item, options);
      if (options.remove) Remove(*connector, tally);
      session.Output().CountMail();
    }
  } catch (const Failure& raised) {
    failure = raised.what();
  }
  connector->SetRunObserver(nullptr);
  return ShowSum(session, tally, "delivered", failure);
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
