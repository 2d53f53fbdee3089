#include <algorithm>
#include <optional>

#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/MailRestore.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Host/Connector.h"
#include "Host/FileKeys.h"
#include "Platform/AtEnd.h"
#include "Platform/Files.h"
#include "Standalone/Phrases.h"

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

// Whether a mail that is appended begins after an empty line, without which nobody takes it for a new one.
bool EndsInEmptyLine(const std::string& mailbox) {
  constexpr std::uint64_t kTwoLineEnds = 4;
  const std::uint64_t length = LengthOf(mailbox);
  if (length == 0) return true;
  LineFile file(mailbox, os::File::Mode::Read);
  file.Seek(length - std::min(length, kTwoLineEnds) + 1);
  bool isEmpty = false;
  while (!file.AtEnd())
    isEmpty = file.ReadLine().empty();
  return isEmpty;
}

// The archived mail that a numbered ID names, counted from the oldest; null if there is none.
StandaloneItemPtr FindCopy(Archive& archive, const std::string& wanted) {
  const std::optional<NumberedMail> copy = MailOfNumberedId(wanted);
  if (!copy) return nullptr;
  const auto items = archive.ItemsOf(copy->id);
  const auto number = static_cast<std::size_t>(copy->number);
  return number <= items.size() ? items[number - 1] : nullptr;
}

// The archived mail of that ID, or with that number in the list of `search`.
StandaloneItemPtr FindArchived(Archive& archive, const std::string& wanted, const std::string& name) {
  auto items = archive.ItemsOf(ComponentText(wanted));
  if (items.empty()) items = archive.ItemsOf(wanted);
  if (items.size() > 1) {
    throw AppError(ExitCode::Partly,
                   InWords(Phrase::SeveralOfId, {std::to_string(items.size()), name, wanted}),
                   InWords(Phrase::ChooseByNumber, {name}));
  }
  if (!items.empty()) return items.front();
  for (const std::string& id : {ComponentText(wanted), wanted}) {
    if (auto item = FindCopy(archive, id)) return item;
  }
  std::int32_t number = 0;
  if (Swallow([&] { number = ParseInt32(wanted); })) {
    if (auto item = AsStandalone(archive.ItemAt(number))) return item;
  }
  throw AppError(ExitCode::Partly, InWords(Phrase::NoItemIn, {wanted, name}));
}

// Raises AppError unless every attachment can be read in the archive. Says which one will come back empty.
void CheckAttachments(Session& session, const StandaloneItem& item) {
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    if (!DescribesAttachment(key)) continue;
    const std::string path = item.DataFile(key, 0);
    const std::string name = Shown(GetLineValue(item.DataText(key), "file"));
    if (!Swallow([&] { os::File::Open(path, os::File::Mode::Read); })) {
      throw AppError(ExitCode::Partly, InWords(Phrase::AttachmentMissing, {name, NativeShown(path)}));
    }
    if (ComesBackEmpty(LengthOf(path))) {
      session.Output().Complain(InWords(Phrase::AttachmentEmpty, {name}));
    }
  }
}

// The mailbox that mails are put back into, and how.
struct Target {
  MailConnector& connector;
  std::string mailbox;
  std::string verb;
};

// Why nothing was appended, as far as opening the mailbox tells it.
AppError NotAppended(const Target& target, const std::string& text) {
  const std::string mailbox = NativeShown(target.mailbox);
  try {
    os::File::Open(target.mailbox, os::File::Mode::Append);
  } catch (const Failure& failure) {
    const std::string reason = ToldShown(failure.Reason());
    return {ExitCode::Partly, InWords(Phrase::NotAppendedFor, {mailbox, text, reason}),
            std::string(InWords(failure.Why().hint))};
  }
  return {ExitCode::Partly, InWords(Phrase::NotAppended, {mailbox, text})};
}

// Runs an action of the mail connector for an archived mail. It reports nothing of what goes wrong on the
// way, so what can be checked is checked before a byte is written, and the rest afterwards. Raises AppError.
void PutBack(Session& session, const Target& target, const StandaloneItemPtr& item) {
  const std::string mailbox = NativeShown(target.mailbox), text = Shown(item->Text());
  if (!EndsInEmptyLine(target.mailbox)) {
    throw AppError(ExitCode::Partly, InWords(Phrase::NoEmptyLine, {mailbox, text}),
                   InWords(Phrase::AddEmptyLine));
  }
  if (target.verb == "Restore") CheckAttachments(session, *item);
  const std::uint64_t before = LengthOf(target.mailbox);
  {
    const AtEnd chooseNone([&] { session.Host().Global().ChooseItem(nullptr); });
    session.Host().Global().ChooseItem(item);
    target.connector.ExecuteAction(target.verb + ":" + item->ID());
  }
  if (LengthOf(target.mailbox) == before) throw NotAppended(target, text);
  StdMail mail;
  mail.SetMailboxFile(target.mailbox);
  bool isFound = false;
  Swallow([&] { isFound = ReadHeaderAt(mail, Within32(before)); });
  if (!isFound || !target.connector.HasRestored()) {
    throw AppError(ExitCode::Partly,
                   InWords(Phrase::AppendedInPart, {mailbox, text, std::to_string(before)}));
  }
}

ExitCode PutBack(Session& session, const RestoreOptions& options, const std::string& verb) {
  const ArchivePtr archive = session.OpenArchive(options.archive);
  const StandaloneLocationPtr location = session.Open(session.Address(options.address));
  const auto connector = std::dynamic_pointer_cast<MailConnector>(location->Connector());
  if (connector == nullptr)
    throw AppError(ExitCode::Usage, InWords(Phrase::NoAddressOfMail, {options.address}));
  if (connector->MailFiles().IsEmpty()) {
    session.ComplainOfErrors();
    throw AppError(ExitCode::Unreadable, InWords(Phrase::NoMailboxAt, {options.address}));
  }
  const Target target = {*connector, connector->MailFiles().Item(1), verb};
  bool failed = false;
  for (const std::string& wanted : options.items) {
    try {
      const StandaloneItemPtr item = FindArchived(*archive, wanted, options.archive);
      const std::string text = Shown(item->Text());
      const std::string mailbox = NativeShown(target.mailbox);
      if (!session.Confirm(InWords(Phrase::AppendTo, {text, mailbox}))) return ExitCode::Cancelled;
      PutBack(session, target, item);
      std::puts(InWords(Phrase::Appended, {text, mailbox}).c_str());
    } catch (const AppError& error) {
      session.ComplainOfErrors();
      session.Output().Forget();
      session.Output().Complain(error.what());
      if (!error.Hint().empty()) session.Output().Say(error.Hint());
      failed = true;
    }
  }
  return session.ComplainOfErrors() || failed ? ExitCode::Partly : ExitCode::Done;
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
