#include "Connectors/Mozilla/ImportRun.h"

#include <cmath>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/Actions.h"
#include "Connectors/Mozilla/AttachmentHeaders.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Host/FileKeys.h"
#include "Host/HostObjects.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

// The host's pane of structures, if the user has it open, else the one that shows them instead.
std::int32_t TreePane(HostMainWindow& window) {
  return window.IsPaneShown(3) ? 3 : 2;
}

}  // namespace

ImportRun::ImportRun(std::string_view cmd, MailRunObserver* observer)
    : host_(HostObjects::Current().Global()) {
  teller_.SetObserver(observer);
  mail_.Setmailtmppfad(host_.TempPath());
  command_ = ImportCommand::Parse(cmd);
  keywords_ = command_.KeywordText();
}

void ImportRun::Run() {
  if (!FindTarget()) return;
  teller_.ImportBegins(location_, command_.move);
  Open();
  for (std::int32_t position = 1; position <= ToInt32(command_.mailboxes.size()); ++position) {
    ImportMailbox(position);
    if (host_.Cancelled()) break;
    bytesDone_ += fileBytes_;
  }
  Close();
}

bool ImportRun::FindTarget() {
  location_ = std::dynamic_pointer_cast<Location>(host_.GetObject(command_.target));
  if (location_ != nullptr) return true;
  Platform::Current().ShowMessage(command_.target, "kann Location nicht öffnen!"_cp, MessageIcon::Exclamation,
                                  MessageButtons::Ok);
  return false;
}

void ImportRun::Open() {
  const std::string title = "Import Thunderbird " + command_.target;
  host_.Report(report::kStatus, "", nullptr);
  host_.Report(report::kProgress, "0/100:" + title, nullptr);
  host_.Report(report::kLog, title, nullptr);
  host_.SetProgressVisible(true);
  if (command_.tree) OpenTree();
  // A file that isn't there ends the run here, by the rules of old, before any mail was touched.
  for (const std::string& file : command_.mailboxes)
    totalBytes_ += MailRunTeller::SizeOf(file);
}

void ImportRun::ImportMailbox(std::int32_t position) {
  const std::string& file = command_.mailboxes[position - 1];
  fileBytes_ = MailRunTeller::SizeOf(file);
  host_.Report(report::kLog, " " + NowTimeText() + ": " + file, nullptr);
  itemsBefore_ = itemsDone_;
  startTime_ = SecondsSinceMidnight();
  host_.Report(report::kStatus, file, nullptr);
  mail_.SetMailboxFile(file);
  teller_.Open(mail_);
  fileKeywords_ = KeywordsOf(file);
  if (command_.tree) RequireAs<Tree>(tree_)->AddKeywordPath(fileKeywords_);
  deleteList_.clear();

  host_.SetLogEnabled(false);
  ImportMails();
  mail_.CloseStream();
  DeleteImportedMails();
  host_.SetLogEnabled(true);

  host_.Report(report::kProgress,
               NumberText(position * 100.0 / static_cast<double>(command_.mailboxes.size())), nullptr);
  ReportMailbox();
}

std::string ImportRun::KeywordsOf(const std::string& mailbox) const {
  const std::string own = GetKeywordsOfFile(mailbox);
  if (own.empty() || keywords_.empty()) return own + keywords_;
  return own + "," + keywords_;
}

void ImportRun::ImportMails() {
  while (teller_.DeliverNext(mail_, true, [&] { ImportMail(); })) {
    for (int i = 0; i < 100; ++i)
      Platform::Current().YieldOnce();
    if (host_.Cancelled()) return;
  }
}

void ImportRun::ImportMail() {
  const ItemPtr item = RequireAs<Item>(location_->PasteRecord(mail_.GetData(fileKeywords_, true)));
  item->SetConnected(false);
  Actions::ApplyAutoTopics(*item);
  ++itemsDone_;
  TakeFiles(*item);
  item->SetConnected(true);
  if (command_.move) NoteForDeletion();

  host_.SetLogEnabled(true);
  host_.Report(report::kProgress, NumberText((mail_.Percent() * fileBytes_ + bytesDone_) * 100 / totalBytes_),
               nullptr);
  host_.SetLogEnabled(false);
}

// A mail that isn't there whole isn't imported: it stays where it is complete. And no mail shall go in the
// place of one that hides its own.
void ImportRun::NoteForDeletion() {
  if (!mail_.Ledger().IsWhole()) return;
  if (mail_.Ledger().hidesOffset) {
    teller_.TellHidden(mail_);
  } else {
    deleteList_.push_back(mail_.Ledger().offset);
  }
}

void ImportRun::TakeFiles(Item& item) {
  const std::vector<std::string> kept = KeptHeaderLines(*mail_.Attachments(), mail_.Ledger().boundaries);
  std::size_t attachment = 0;
  const std::int32_t count = item.DataCount();
  for (std::int32_t position = 1; position <= count; ++position) {
    const std::string key = item.DataKey(position);
    if (!DescribesFile(key)) continue;
    std::string metaData = item.DataText(key);
    const std::string path = mail_.Ledger().FileAt(key, CutLine(metaData));
    if (DescribesAttachment(key) && attachment < kept.size()) metaData += kept[attachment++];
    const auto take = [&] { item.TakeFile(key, path, "move|nofileattribute", metaData); };
    // A mail that has lost a file already counts as failed and ends no run.
    if (mail_.Ledger().IsWhole()) {
      take();
    } else {
      Swallow(take);
    }
  }
}

// Only once the stream is closed: the deletion opens the mailbox for itself.
void ImportRun::DeleteImportedMails() {
  if (!deleteList_.empty()) teller_.MarkingBegins(mail_);
  for (const std::int64_t offset : deleteList_)
    teller_.Mark(mail_, offset);
}

void ImportRun::ReportMailbox() {
  // Negative for a mailbox read across midnight, which then has no rate.
  const double seconds = std::floor(SecondsSinceMidnight() - startTime_ + 0.5);
  const std::int32_t items = itemsDone_ - itemsBefore_;
  const std::string rate = seconds > 0 ? " = " + NumberText(items / seconds) + " Items/Sekunde" : "";
  host_.Report(report::kLog,
               "  " + NumberText(items) + " Items in " + NumberText(seconds) + " Sekunden" + rate, nullptr);
}

void ImportRun::Close() {
  if (command_.tree) CloseTree();
  host_.SetProgressVisible(false);
  host_.Report(report::kProgress, "", nullptr);
  host_.Report(report::kLog, " " + NowTimeText() + " finished (" + NumberText(itemsDone_) + " Items)",
               nullptr);
  RebuildTopics();
  host_.Report(report::kImportFinished, "", nullptr);
  if (command_.tree) host_.Report(report::kTreeImported, "", nullptr);
}

void ImportRun::RebuildTopics() {
  const LocationPtr topics = RequireAs<Location>(host_.GetObject("topics"));
  RequireAs<TopicsConnector>(topics->Connector())->ClearLocation(location_);
  RequireAs<TopicsConnector>(topics->Connector())->AddLocation(location_);
}

void ImportRun::OpenTree() {
  const auto window = RequireAs<HostMainWindow>(host_.MainWindow());
  tree_ = window->GetPaneTree(TreePane(*window));
}

void ImportRun::CloseTree() {
  const auto window = RequireAs<HostMainWindow>(host_.MainWindow());
  window->SetPaneTree(TreePane(*window), tree_);
}

}  // namespace vorlent
