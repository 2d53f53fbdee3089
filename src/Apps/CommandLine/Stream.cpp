#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <utility>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/MailSum.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Host/Connector.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Platform/StandardPaths.h"
#include "Standalone/FileDescription.h"
#include "Standalone/FittingName.h"
#include "Standalone/Phrases.h"

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
  return FittingName(DisplayUtf8(EncodeFileName(id)), kLongest);
}

// The path of a folder, as the user gave it, in the component's form.
std::string PathOf(const fs::path& folder) {
  return os::ToWindowsName(os::NativeText(folder));
}

std::string WindowsPathOf(const fs::path& path) {
  return os::ToWindowsPath(os::NativeText(path));
}

// A new folder for a mail; mails of one ID get numbers after it.
fs::path NewMailFolder(const fs::path& parent, const std::string& id) {
  const std::string name = FolderName(id);
  fs::path folder = parent / os::StandardPath(name);
  std::error_code error;
  for (int number = 2; !fs::create_directory(folder, error); ++number) {
    if (error)
      throw Failure(ErrorNumber::PathAccess, PathOf(folder), error.default_error_condition().message(),
                    HintFor(error));
    folder = parent / os::StandardPath(name + "-" + std::to_string(number));
  }
  return folder;
}

// The names of a mail's files by the data fields that describe them.
using NamesByField = std::map<std::string, std::string>;

// The record with its files at other places: in `folder`, or beside the record if that is "".
std::string WithFilesIn(std::string_view folder, const NamesByField& names, std::string_view record) {
  std::string moved;
  while (!record.empty()) {
    const auto separator = static_cast<std::size_t>(FindUnescaped(record, "|"));
    std::string_view field = record.substr(0, separator == 0 ? record.size() : separator - 1);
    record.remove_prefix(separator == 0 ? record.size() : separator);
    if (!moved.empty()) moved += '|';
    const std::string_view whole = field;
    const std::string key(CutToken(field, "="));
    const auto name = names.find(key);
    if (name == names.end()) {
      moved += whole;
      continue;
    }
    std::string description = UnescapeValue(field);
    CutLine(description);
    moved += key + "=" + EscapeValue(std::string(folder) + name->second + "\n" + description);
  }
  return moved;
}

// Where attachments lie whose own names no file can have, by their data fields.
using UnmovedFiles = std::map<std::string, std::string, std::less<>>;

// The folder in which a mail is kept.
struct KeptFolder {
  std::string name;
  std::int64_t files = 0;  // the record's own among them
};

std::int64_t CountFiles(const fs::path& folder) {
  std::error_code error;
  const fs::directory_iterator entries(folder, error);
  return std::count_if(begin(entries), end(entries),
                       [&](const auto& entry) { return entry.is_regular_file(error); });
}

// A mail that is kept in a folder of its own.
struct KeptMail {
  KeptFolder folder;
  std::string record;  // with the files where they are now
  bool isWhole = true;
};

// Moves the files of a mail into its folder, each under its own name as far as that can stand, and writes the
// record beside them.
KeptMail Keep(const StandaloneItem& item, const std::string& record, const fs::path& parent,
              const UnmovedFiles& unmoved) {
  constexpr std::size_t kLongest = 255;
  constexpr std::string_view kRecord = "record.txt";
  const fs::path folder = NewMailFolder(parent, item.ID());
  DistinctNames distinct(kLongest);
  distinct.Reserve(kRecord);
  std::map<std::string, std::string> namesOfSources;
  NamesByField names;
  KeptMail kept;
  kept.folder.name = os::NativeText(folder.filename());
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    if (!DescribesFile(key)) continue;
    std::string description = item.DataText(key);
    const std::string ownName = DisplayUtf8(DecodeFileName(FileNameIn(description)));
    const std::string told = CutLine(description);
    const auto stayed = unmoved.find(key);
    const std::string& source = stayed == unmoved.end() ? told : stayed->second;
    // Two attachments of one name are one file, which has moved with the first.
    const auto [name, isNew] = namesOfSources.try_emplace(source);
    if (isNew) name->second = distinct.Take(ownName);
    names[std::string(record_key::kDataPrefix).append(key)] = os::ToWindowsName(name->second);
    if (!isNew) continue;
    if (FileExists(source)) {
      os::Rename(source, WindowsPathOf(folder / os::StandardPath(name->second)));
      ++kept.folder.files;
    } else {
      kept.isWhole = false;
    }
  }
  TextWriter writer(WindowsPathOf(folder / kRecord), os::File::Mode::Create);
  writer.Write(WithFilesIn("", names, record));
  writer.Close();
  ++kept.folder.files;
  kept.record = WithFilesIn(AddPathSep(WindowsPathOf(folder)), names, record);
  return kept;
}

// The tally of a stream, which knows the mail at hand.
class StreamTally : public RunTally {
 public:
  // With the folder in which mails are kept.
  explicit StreamTally(fs::path output) : output_(std::move(output)) {}

  void MailDelivered(const MailPlace& mail, bool hidesPlace) override {
    RunTally::MailDelivered(mail, hidesPlace);
    atHand_ = {.place = mail, .isWhole = true, .hidesPlace = hidesPlace};
  }
  void MailFailed(const MailPlace& mail, const Cause& why) override {
    RunTally::MailFailed(mail, why);
    atHand_ = {.place = mail};
  }

  void AttachmentUnmoved(std::string_view key, std::string_view path) override {
    unmoved_.emplace(key, path);
  }

  // What was kept of the mails to be marked must be there still.
  void MarkingBegins(const std::string&) override {
    for (const auto& [name, files] : std::exchange(toBeMarked_, {})) {
      const fs::path folder = output_ / os::StandardPath(name);
      if (CountFiles(folder) < files)
        throw Failure(ErrorNumber::FileNotFound, PathOf(folder), "files of it are gone");
    }
  }
  // The mail at hand is kept, if it is; and it is to be marked at the end of its mailbox.
  void NoteKept(KeptFolder folder) {
    atHand_.folder = std::move(folder);
    failures_.Delivered();
  }
  void NoteToBeMarked() {
    if (!atHand_.folder.name.empty()) toBeMarked_.push_back(std::move(atHand_.folder));
  }

  // Those of the mail at hand.
  UnmovedFiles TakeUnmoved() { return std::exchange(unmoved_, {}); }
  // Whether the mail at hand is there with all of its files.
  bool IsWhole() const { return atHand_.isWhole; }
  bool HidesPlace() const { return atHand_.hidesPlace; }
  const MailPlace& Place() const { return atHand_.place; }

  // Whether the next mail is to be tried after one that could not be kept at all.
  bool GoesOn() { return failures_.GoesOn(); }

  // The mail at hand could not be kept. One that isn't whole is known as such already.
  void NoteLoss(const Cause& why) {
    if (atHand_.isWhole) TakeBack(atHand_.place, why);
    atHand_.isWhole = false;
  }

 private:
  struct AtHand {
    MailPlace place;
    bool isWhole = false;
    bool hidesPlace = false;
    KeptFolder folder = {};
  };
  fs::path output_;
  AtHand atHand_;
  UnmovedFiles unmoved_;
  std::vector<KeptFolder> toBeMarked_;
  DeliveryFailures failures_;
};

// Keeps the mail at hand, and notes why it isn't there whole. Gives the item its files where they are now;
// false if it isn't kept at all. What lets no mail be kept rises.
bool KeepOrNote(StandaloneItem& item, const std::string& record, const fs::path& parent, StreamTally& tally) {
  try {
    KeptMail kept = Keep(item, record, parent, tally.TakeUnmoved());
    if (!kept.isWhole) tally.NoteLoss({.reason = "a file of the mail is gone"});
    tally.NoteKept(std::move(kept.folder));
    item.ImportRecord(kept.record);
    return true;
  } catch (const Failure& failure) {
    tally.NoteLoss(failure.Why());
    if (!tally.GoesOn()) throw;
    return false;
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
    tally.NoteToBeMarked();
  }
}

ExitCode Stream(Session& session, const StreamOptions& options) {
  const StandaloneLocationPtr location = session.OpenMailboxes(session.Address(options.address));
  const auto connector = RequireAs<MailConnector>(location->Connector());
  if (options.remove && !session.Confirm(InWords(Phrase::DeleteAllOf, {options.address}))) {
    return ExitCode::Cancelled;
  }
  const bool keep = !options.output.empty();
  const fs::path output = os::StandardPath(options.output);
  if (keep) fs::create_directories(output);
  StreamTally tally(output);
  const RunObservation observation(*connector, tally);
  connector->SourceInit(nullptr, keep);
  Cause failure;
  try {
    for (std::string record; connector->SourceGetNext(record);) {
      StandaloneItem item;
      item.ImportRecord(record);
      if (keep && !KeepOrNote(item, record, output, tally)) continue;
      Print(item, options);
      if (options.remove) Remove(*connector, tally);
      session.Output().CountMail();
    }
  } catch (const Failure& raised) {
    failure = raised.Why();
  }
  return ShowSum(session, tally, Phrase::Delivered, failure);
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
