#include "Connectors/Mozilla/MailPump.h"

#include <cmath>
#include <utility>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Host/HostObjects.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

// Yields after each mail: enough for the host to paint, and to take a press on its cancel button.
constexpr int kYields = 100;

HostGlobal& Host() {
  return HostObjects::Current().Global();
}

// Runs reports that must reach the log even while it is off. One that fails leaves it on.
template <class Reports>
void WithLog(Reports&& reports) {
  const bool enabled = Host().LogEnabled();
  Host().SetLogEnabled(true);
  reports();
  Host().SetLogEnabled(enabled);
}

void Report(std::int32_t code, std::string_view text) {
  Host().Report(code, text, nullptr);
}

}  // namespace

MailPump::MailPump(PumpSource source, TreePtr keywords, bool saveattachments)
    : source_(std::move(source)), tree_(std::move(keywords)), saveAttachments_(saveattachments) {}

std::string MailPump::Title() const {
  return "Import Thunderbird " + source_.address();
}

StdMail& MailPump::Reader() const {
  if (mail_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no run of the stream has begun");
  return *mail_;
}

// --- The run

void MailPump::Begin() {
  WithLog([&] {
    Report(report::kStatus, "");
    Report(report::kProgress, "0/100:" + Title());
    Report(report::kLog, " " + Title());
  });
  Host().SetProgressVisible(true);
}

bool MailPump::GetNext(std::string& record) {
  do {
    if (needsMailbox_) {
      if (index_ == 0) Start();
      ++index_;
      if (index_ > source_.files.Count()) break;
      OpenMailbox();
    }
    Reader().DeleteLastTempfiles();
    if (source_.teller.DeliverNext(*mail_, saveAttachments_, [&] { Deliver(record); })) return true;
    FinishMailbox();
  } while (!Host().Cancelled());
  End();
  return false;
}

void MailPump::Start() {
  delivered_ = 0;
  doneBytes_ = 0;
  mail_ = source_.makeReader();
  totalBytes_ = 0;
  for (const std::string& file : source_.files)
    totalBytes_ += MailRunTeller::SizeOf(file);
}

void MailPump::End() {
  Host().SetProgressVisible(false);
  WithLog([&] {
    Report(report::kProgress, "");
    Report(report::kLog, "  finished (" + NumberText(delivered_) + " Items)");
  });
  mail_ = nullptr;
}

// --- A mailbox

void MailPump::OpenMailbox() {
  needsMailbox_ = false;
  const std::string& file = source_.files.Item(index_);
  fileBytes_ = MailRunTeller::SizeOf(file);
  count_ = delivered_;
  seconds_ = SecondsSinceMidnight();
  WithLog([&] {
    Report(report::kLog, "  " + file);
    Report(report::kStatus, Title() + ": " + file);
  });
  Reader().SetMailboxFile(file);
  Reader().NoteExpunged(IdsAreNumbered());
  ids_.BeginMailbox();
  source_.teller.Open(*mail_);
  keywords_ = GetKeywordsOfFile(file);
  if (HasObject(tree_)) tree_->AddKeywordPath(keywords_);
  noted_.clear();
}

void MailPump::FinishMailbox() {
  doneBytes_ += fileBytes_;
  mail_->CloseStream();
  MarkNoted();
  seconds_ = std::floor(SecondsSinceMidnight() - seconds_ + 0.5);
  count_ = delivered_ - count_;
  const std::string rate = seconds_ > 0 ? " = " + NumberText(count_ / seconds_) + " Items/Sekunde" : "";
  WithLog([&] {
    ReportProgress(doneBytes_);
    Report(report::kLog,
           "   " + NumberText(count_) + " Items in " + NumberText(seconds_) + " Sekunden" + rate);
  });
  needsMailbox_ = true;
}

// Only here, with the reader closed.
void MailPump::MarkNoted() {
  if (!noted_.empty()) source_.teller.MarkingBegins(*mail_);
  for (const double place : noted_)
    source_.teller.Mark(*mail_, Within32(place));
}

void MailPump::ReportProgress(double bytes) const {
  if (totalBytes_ > 0) Report(report::kProgress, NumberText(bytes * 100 / totalBytes_));
}

// --- A mail

void MailPump::Deliver(std::string& record) {
  const std::string& address = source_.addresses.Item(index_);
  ids_.NoteExpunged(mail_->Ledger().expungedIds);
  record = WithIdOfItsOwn(mail_->GetData(keywords_, saveAttachments_));
  record += "|Source=" + EscapeValue(address);
  place_ = ReadNumber(mail_->GetHeader("Address", false));
  ++delivered_;
  WithLog([&] { ReportProgress(mail_->Percent() * fileBytes_ + doneBytes_); });
  for (int i = 0; i < kYields; ++i)
    Platform::Current().YieldOnce();
  if (Host().Cancelled()) {
    needsMailbox_ = true;
    index_ = source_.files.Count();
  }
}

// The record with an ID that no mail of the run was given.
std::string MailPump::WithIdOfItsOwn(std::string record) {
  if (!IdsAreNumbered()) return record;
  record = ids_.WithIdOfItsOwn(std::move(record),
                               [this](std::string_view id) { return givenIds_.contains(LowerCase(id)); });
  givenIds_.insert(LowerCase(GetParam(record, record_key::kId)));
  return record;
}

// A mail that isn't there whole stays where it is complete.
void MailPump::Delete() {
  if (mail_ != nullptr && !mail_->Ledger().IsWhole()) return;
  noted_.push_back(place_);
}

}  // namespace vorlent
