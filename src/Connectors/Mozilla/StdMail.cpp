#include "Connectors/Mozilla/StdMail.h"

#include <algorithm>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdHttpStandards.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/CodePage.h"

namespace vorlent {

os::File::Mode ReadingMode() {
  return CurrentRules().mailboxOpening == MailboxOpening::ForWriting ? os::File::Mode::ReadWrite
                                                                     : os::File::Mode::Read;
}

// --- Stream

void StdMail::SetMailboxFile(std::string_view path) {
  if (path == mailboxFile_) return;
  mailboxFile_ = path;
  readMails_ = ReadMails();
}

void StdMail::InitStream(std::int16_t saveflag) {
  saved_ = {saveflag};
  OpenStream(ReadingMode());
}

void StdMail::OpenStream(os::File::Mode mode) {
  lines_.Open(mailboxFile_, mode);
  ledger_.expungedCount = 0;
  ResetMailScan();
}

void StdMail::CloseStream() {
  lines_.Close();
}

// A read error counts as the end of the text.
bool StdMail::IsStreamDone() {
  bool done = true;
  ReadStep([&] { done = lines_.AtEnd(); });
  return done;
}

std::string_view StdMail::ReadStreamLine() {
  std::string_view line;
  // After a place that can't be read there is no end to be found, so the text ends here.
  if (!IsStreamDone() && !Swallow([&] { line = lines_.Read(); })) Swallow([&] { lines_.Close(); });
  return line;
}

void StdMail::WriteStreamLine(TextWriter& file, std::string_view line) {
  if (lines_.LineGoesOn()) {
    file.Write(line);
  } else {
    file.WriteLine(line);
  }
}

void StdMail::ResetMailScan() {
  lastLineEmpty_ = true;
  atStreamStart_ = true;
}

// Whether the line read last goes with the end of the stream.
bool StdMail::IsLastLineLost() {
  return CurrentRules().readAhead == ReadAhead::Loses && IsStreamDone();
}

// A next line that can't be read ends the mailbox here; whoever reads on meets the failure.
bool StdMail::Separates(std::string_view& line) {
  line = lines_.Hold();
  return IsSeparator(line, [&] {
    std::optional<std::string_view> next;
    Swallow([&] { next = lines_.Peek(); });
    return next;
  });
}

// Whether the present mail ended before this line, which must be judged before it is processed. At the
// stream's start expunged mails are passed over, and `line` becomes the separator of the first one that
// isn't.
bool StdMail::AtMailEnd(std::string_view& line) {
  if (IsLastLineLost()) return true;
  if (IsFromLine(line)) {
    if (!atStreamStart_) {
      lines_.PutBackAsText();
      return true;
    }
    if (!FindLivingMail(line)) return true;
  }
  atStreamStart_ = false;
  lastLineEmpty_ = line.empty();
  return false;
}

// Reads ahead for the state of the mail that begins with the separator `line`, the line read last; the lines
// read for that come again. False if the stream ended meanwhile.
bool StdMail::FindLivingMail(std::string_view& line) {
  while (true) {
    line = lines_.Hold();
    const std::int32_t status = LookForStatus();
    if (IsLastLineLost()) return false;
    if ((status & kExpunged) == 0) {
      lines_.PutBackKept();
      return true;
    }
    lines_.DropKept();
    if (!FindNextSeparator(line)) return false;
  }
}

bool StdMail::FindNextSeparator(std::string_view& line) {
  while (!IsStreamDone()) {
    line = ReadStreamLine();
    if (IsLastLineLost()) return false;
    if (IsFromLine(line)) return true;
    lastLineEmpty_ = line.empty();
  }
  return false;
}

namespace {

// The status in a line that is looked at ahead. By the rules of old a blank after the colon is taken for
// granted.
std::int32_t StatusAhead(std::string_view line) {
  if (FirstStatusCounts()) return ReadStatus(line);
  constexpr std::string_view kBeforeDigits = "x-mozilla-status: ";
  return ReadHexNumber(line.substr(std::min(line.size(), kBeforeDigits.size())));
}

}  // namespace

// Reads header lines up to the status line, which are kept, and returns the status; or up to an empty line,
// and returns 0.
std::int32_t StdMail::LookForStatus() {
  const bool keepsEnd = CurrentRules().readAhead == ReadAhead::Keeps;
  while (!IsStreamDone()) {
    const std::string_view line = ReadStreamLine();
    const bool isEnd = line.empty();
    if (isEnd && !keepsEnd) return 0;
    if (IsLastLineLost()) return 0;
    lines_.Keep();
    if (isEnd) return 0;
    if (IsStatusLine(line)) return StatusAhead(line);
  }
  return 0;
}

// --- Headers

StdMail::TextList& StdMail::HeaderStore() const {
  if (headers_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no header store");
  return *headers_;
}

std::string StdMail::GetHeader(std::string_view key, bool all) const {
  const std::string* const line = headers_ == nullptr ? nullptr : headers_->Find(key);
  if (line == nullptr) return {};
  return all ? *line : std::string(SplitHeaderLine(*line).value);
}

std::string StdMail::GetAllHeaders() const {
  std::size_t size = 0;
  for (const std::string& line : HeaderStore())
    size += line.size() + kLineEnd.size();
  std::string text;
  text.reserve(size);
  for (const std::string& line : HeaderStore())
    text.append(line).append(kLineEnd);
  return text;
}

std::string StdMail::Body() const {
  std::string text(static_cast<std::size_t>(bodySize_), ' ');
  std::size_t at = 0;
  const auto put = [&](std::string_view piece) {
    if (at < text.size()) piece.copy(text.data() + at, text.size() - at);
    at += piece.size();
  };
  for (const std::string& line : *bodyLines_) {
    put(line);
    put(kLineEnd);
  }
  return text;
}

void StdMail::AddHeader(std::string_view a) {
  if (headers_ == nullptr) return;
  std::string line;
  if (IsContinuation(a)) {
    if (lastHeaderLeftOut_) return;
    if (!headers_->IsEmpty()) line = TakeLastHeader(*headers_).append(kLineEnd);
  } else {
    lastHeaderKey_ = LowerCase(SplitHeaderLine(a).name);
  }
  line += a;
  lastHeaderLeftOut_ = !StoreHeader(*headers_, std::move(line), lastHeaderKey_);
}

namespace {

// The first date that `read` finds in the traces of a mail's way, the last of which stands first; "" if there
// is none. RFC 5322: the date stands after the last ";".
template <class Read>
std::string DateInTraces(const KeyedList<std::string>& headers, Read&& read) {
  for (const std::string& header : headers) {
    if (!EqualNoCase(SplitHeaderLine(header).name, "received")) continue;
    const std::string trace = WithoutComments(header);
    const std::size_t mark = trace.rfind(';');
    if (mark == std::string::npos) continue;
    if (std::string date = read(trace.substr(mark + 1)); !date.empty()) return date;
  }
  return {};
}

// What stands in the separator after the sender.
std::string DateInSeparator(const KeyedList<std::string>& headers) {
  constexpr std::string_view kBeforeSender = "From ";
  if (headers.IsEmpty() || !headers.Item(1).starts_with(kBeforeSender)) return {};
  std::string_view rest = std::string_view(headers.Item(1)).substr(kBeforeSender.size());
  CutToken(rest, " ");
  return ShownMailDate(std::string(rest));
}

}  // namespace

std::string StdMail::SentDate() const {
  const std::string date = MailDateToDisplay(GetHeader("Date"));
  return date.empty() && headers_ != nullptr ? DateInTraces(*headers_, MailDateToDisplay) : date;
}

std::string StdMail::GetDate() const {
  // It is asked for with every file of the mail.
  std::string header = GetHeader("Date");
  if (!lastDate_ || lastDate_->header != header) {
    std::string display = ShownMailDate(header);
    lastDate_ = {std::move(header), std::move(display)};
  }
  if (!lastDate_->display.empty() || headers_ == nullptr) return lastDate_->display;
  const std::string date = DateInTraces(*headers_, ShownMailDate);
  return date.empty() ? DateInSeparator(*headers_) : date;
}

// --- Files

void StdMail::Delete(std::string_view file) const {
  TextWriter(file, os::File::Mode::Create).Close();
}

void StdMail::AddTempfile(std::string_view file) {
  tempfiles_.emplace_back(file);
}

void StdMail::DeleteLastTempfiles() {
  for (const std::string& file : tempfiles_)
    RemoveExactFile(file);
  tempfiles_.clear();
}

}  // namespace vorlent
