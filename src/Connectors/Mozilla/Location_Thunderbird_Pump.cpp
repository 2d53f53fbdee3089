// The stream: one mail at a time, without ever holding a mailbox in memory.

#include <cmath>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Platform/Files.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

// Yields behind each mail: enough for the host to paint, and to take a press on its cancel button.
constexpr int kYields = 100;

HostGlobal& Host() {
  return HostObjects::Current().Global();
}

// Runs reports that must reach the log even while it is off.
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

double FileSize(const std::string& file) {
  return static_cast<double>(os::FileLength(file));
}

}  // namespace

std::string Location_Thunderbird::RunTitle() const {
  return "Import Thunderbird " + HostLocation().Name();
}

void Location_Thunderbird::SourceInit(const TreePtr& tr, bool saveattachments) {
  WithLog([&] {
    Report(report::kStatus, "");
    Report(report::kProgress, "0/100:" + RunTitle());
    Report(report::kLog, " " + RunTitle());
  });
  Host().SetProgressVisible(true);
  sourceTree_ = tr;
  saveAttachments_ = saveattachments;
  sourceIndex_ = 0;
  sourceNewFile_ = true;
}

bool Location_Thunderbird::SourceGetNext(std::string& srcitm) {
  do {
    if (sourceNewFile_) {
      if (sourceIndex_ == 0) StartRun();
      ++sourceIndex_;
      if (sourceIndex_ > mailFiles_.Count()) break;
      OpenSource();
    }
    SourceReader().DeleteLastTempfiles();
    if (teller_.DeliverNext(*source_.mail, saveAttachments_, [&] { Deliver(srcitm); })) return true;
    FinishSource();
  } while (!Host().Cancelled());
  EndRun();
  return false;
}

StdMail& Location_Thunderbird::SourceReader() const {
  if (source_.mail == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no run of the stream has begun");
  return *source_.mail;
}

// A mail that isn't there whole stays where it is complete.
void Location_Thunderbird::SourceDelete() {
  if (source_.mail != nullptr && !source_.mail->Loss().empty()) return;
  deleteOffsets_.Add(currentOffset_);
}

void Location_Thunderbird::StartRun() {
  source_.deliveredCount = 0;
  source_.doneBytes = 0;
  source_.mail = GetMailObject();
  source_.totalBytes = 0;
  for (const std::string& file : mailFiles_) {
    source_.totalBytes += FileSize(file);
  }
}

void Location_Thunderbird::OpenSource() {
  sourceNewFile_ = false;
  const std::string& file = mailFiles_.Item(sourceIndex_);
  source_.fileBytes = FileSize(file);
  source_.fileCount = source_.deliveredCount;
  source_.seconds = SecondsSinceMidnight();
  WithLog([&] {
    Report(report::kLog, "  " + file);
    Report(report::kStatus, RunTitle() + ": " + file);
  });
  SourceReader().SetMailboxFile(file);
  source_.mail->InitStream(0);
  source_.keywords = GetKeywordsOfFile(file);
  if (HasObject(sourceTree_)) sourceTree_->AddKeywordPath(source_.keywords);
  ClearCollection(deleteOffsets_);
}

// Marked mails go only here, with the reader closed.
void Location_Thunderbird::FinishSource() {
  source_.doneBytes += source_.fileBytes;
  source_.mail->CloseStream();
  if (!deleteOffsets_.IsEmpty()) teller_.MarkingBegins(*source_.mail);
  for (const std::string& offset : deleteOffsets_) {
    teller_.Mark(*source_.mail, ToInt32(ReadNumber(offset)));
  }
  source_.seconds = std::floor(SecondsSinceMidnight() - source_.seconds + 0.5);
  source_.fileCount = source_.deliveredCount - source_.fileCount;
  std::string rate;
  if (source_.seconds > 0) rate = " = " + NumberText(source_.fileCount / source_.seconds) + " Items/Sekunde";
  WithLog([&] {
    if (source_.totalBytes > 0) {
      Report(report::kProgress, NumberText(source_.doneBytes * 100 / source_.totalBytes));
    }
    Report(report::kLog, "   " + NumberText(source_.fileCount) + " Items in " + NumberText(source_.seconds) +
                             " Sekunden" + rate);
  });
  sourceNewFile_ = true;
}

void Location_Thunderbird::Deliver(std::string& srcitm) {
  const std::string& address = mailAddresses_.Item(sourceIndex_);
  srcitm = source_.mail->GetData(source_.keywords, saveAttachments_);
  srcitm += "|Source=" + EscapeValue(address);
  currentOffset_ = source_.mail->GetHeader("Address", false);
  ++source_.deliveredCount;
  WithLog([&] {
    if (source_.totalBytes <= 0) return;
    const double bytes = source_.mail->Percent() * source_.fileBytes + source_.doneBytes;
    Report(report::kProgress, NumberText(bytes * 100 / source_.totalBytes));
  });
  for (int i = 0; i < kYields; ++i) {
    Platform::Current().YieldOnce();
  }
  if (Host().Cancelled()) {
    sourceNewFile_ = true;
    sourceIndex_ = mailFiles_.Count();
  }
}

void Location_Thunderbird::EndRun() {
  Host().SetProgressVisible(false);
  WithLog([&] {
    Report(report::kProgress, "");
    Report(report::kLog, "  finished (" + NumberText(source_.deliveredCount) + " Items)");
  });
  source_.mail = nullptr;
}

}  // namespace vorlent
