// The import reader: finds the next mail, stores its headers, walks its parts and splits it into files.
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/MailBoundaries.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/PartContent.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kStatus = "x-mozilla-status";

}  // namespace

// Reads one mail. Failures are treated by phase: finding a mail guards its reads, the header block guards
// nothing but the storing of headers, and from the body on every step is guarded by itself.
class StdMail::HeaderReader {
 public:
  HeaderReader(StdMail& mail, bool saveattachments, bool waitforfrom, Expunged expunged = Expunged::PassOver)
      : mail_(mail),
        lines_(mail.lines_),
        ledger_(mail.ledger_),
        save_(saveattachments),
        waitForFrom_(waitforfrom),
        passesOverExpunged_(expunged == Expunged::PassOver) {}

  bool Read();

 private:
  bool FindMail();
  bool TakeSearchLine();
  bool ReadHeaderBlock();
  void BeginHeaderBlock();
  // The position, from 1. Raises Overflow where the mailbox is too large for the rules in force.
  std::int64_t Place() const;
  void RequirePlaceInRange() const { static_cast<void>(Place()); }
  // An expunged mail's header ends with its status, unless its ID is wanted.
  bool IsHeaderWanted() const { return !expunged_ || mail_.notesExpunged_; }
  void TakeHeaderLine(std::string_view line);
  void BeginHeader(std::string_view line);
  bool StatusCounts() const;
  void DropExpungedMail();

  void ReadBody();
  bool NextBodyLine(std::string_view& line);
  bool TakeBodyLine(std::string_view line);
  void BeginSoleFile();
  void TakeOpeningBoundary(std::string_view line);
  bool BeginEpilogue();
  bool HasEpilogue();
  void NumberPart();
  void TakeClosingBoundary(std::string_view line);
  void TakePartHeaderLine(std::string_view line);
  void EndPartHeader();
  void EndOpenPartHeader();
  void BeginAttachment();
  void BeginInlinePart(const std::string& header);
  void TakeContentLine(std::string_view line);

  void FinishMail();
  bool EndWithoutMail();
  void CloseStreamAfterMail();

  TextList& Parts() { return *mail_.attachments_; }
  std::string& LastPart() { return Parts().Item(Parts().Count()); }
  std::string TempPath(std::string_view name) const { return mail_.mailtmppfad_ + std::string(name); }
  double CountedLength(std::string_view line) const;
  void Count(std::string_view line);
  template <class Step>
  void WriteStep(Step&& step);
  void WriteToMailFile(std::string_view line);
  void FlushPartHeader();
  void CloseFile(TextWriter& file);
  void EndPartWithMail();
  void ClosePartFiles();

  StdMail& mail_;
  MailLines& lines_;
  MailLedger& ledger_;
  const bool save_;
  const bool waitForFrom_;
  const bool passesOverExpunged_;

  TextWriter mailFile_;        // mail.eml
  TextWriter htmlFile_;        // mail.html
  TextWriter attachmentFile_;  // att<n>
  std::string_view line_;      // the line at hand while a mail is searched
  std::int64_t start_ = 0;     // its position, from 1
  bool expunged_ = false;
  std::string key_;          // of the header at hand
  bool isRepeated_ = false;  // it is a further status
  bool isLeftOut_ = false;   // it goes with all of its lines
  std::string boundary_;
  MailBoundaries boundaries_;
  bool inPartHeader_ = false;
  PartEncoding encoding_ = PartEncoding::None;
  PartContent content_;
  std::string partHeader_;  // boundary and header lines that reach mail.eml unless they are an attachment's
};

bool StdMail::ReadHeader(bool saveattachments, bool waitforfrom) {
  ledger_.broken.clear();
  ledger_.expungedIds.clear();
  while (true) {
    const std::uint64_t start = lines_.Position();
    try {
      return HeaderReader(*this, saveattachments, waitforfrom).Read();
    } catch (const Failure& failure) {
      const bool isStuck = lines_.Position() == start;
      if (isStuck || !BrokenItemsAreNamed()) throw;
      ledger_.broken.push_back({ledger_.offset, failure.Why()});
    }
  }
}

bool ReadHeaderAt(StdMail& mail, std::int64_t offset) {
  mail.OpenStream(os::File::Mode::Read);
  mail.lines_.Seek(MailPosition(offset));
  const bool found = mail.ReadMailHere(StdMail::Expunged::PassOver) && mail.Ledger().offset == offset;
  mail.CloseStream();
  return found;
}

// Reads the next mail, without its files.
bool StdMail::ReadMailHere(Expunged expunged) {
  return HeaderReader(*this, false, true, expunged).Read();
}

bool StdMail::HeaderReader::Read() {
  Parts().Clear();
  mail_.partNumbers_.clear();
  mail_.hasHTML_ = false;
  mail_.lineCount_ = 0;
  mail_.readCount_ = 0;
  mail_.lastLineEmpty_ = true;
  ledger_.nextSeparatorCount = 0;
  ledger_.boundaries.clear();
  ledger_.loss = {};
  do {
    if (!FindMail()) return EndWithoutMail();
  } while (!ReadHeaderBlock());
  ReadBody();
  FinishMail();
  return true;
}

// --- Finding a mail

// Goes to the line on which the next mail begins.
bool StdMail::HeaderReader::FindMail() {
  while (TakeSearchLine()) {
    if (mail_.lastLineEmpty_ && (!waitForFrom_ || mail_.IsFromLine(line_))) return true;
    mail_.lastLineEmpty_ = line_.empty();
  }
  return false;
}

std::int64_t StdMail::HeaderReader::Place() const {
  try {
    return Within32(lines_.Position());
  } catch (const Failure& failure) {
    throw Failure(failure.Number(), Cause{.reason = failure.Reason(), .hint = Hint::CompactMailbox});
  }
}

// The next line and its position; false at the end of the stream or if it can't be read.
bool StdMail::HeaderReader::TakeSearchLine() {
  if (mail_.IsStreamDone()) return false;
  start_ = Place();
  if (!mail_.ReadStep([&] { line_ = lines_.Read(); })) return false;
  ++mail_.lineCount_;
  if (start_ != 1 || !BeginsWithPassedMark(line_)) return true;
  start_ += static_cast<std::int64_t>(kMarkOfUtf8.size());
  return mail_.ReadStep([&] {
    lines_.Seek(static_cast<std::uint64_t>(start_));
    line_ = lines_.Read();
  });
}

// --- Header block

// Reads the header block after the line at hand. False for an expunged mail.
bool StdMail::HeaderReader::ReadHeaderBlock() {
  BeginHeaderBlock();
  HeaderBlockHash hash;
  hash.Add(line_);
  bool lastLineEmpty = line_.empty();
  // A mailbox may end with a separator line; the stream is closed then, and the mail has no more than that.
  bool goesOn = false;
  while (IsHeaderWanted() && !lines_.AtEnd()) {
    RequirePlaceInRange();
    const std::string_view line = lines_.Read();
    Count(line);
    if (save_) mail_.WriteStreamLine(mailFile_, line);
    lastLineEmpty = line.empty();
    if (lastLineEmpty) break;
    hash.Add(line);
    // Of a line without end the first piece is enough.
    if (!std::exchange(goesOn, lines_.LineGoesOn())) TakeHeaderLine(line);
  }
  mail_.lastLineEmpty_ = lastLineEmpty;
  partHeader_.clear();
  if (expunged_) {
    DropExpungedMail();
  } else {
    mail_.readMails_.Add(ledger_.offset, hash.End(lastLineEmpty));
  }
  return !expunged_;
}

// Takes the line at hand, with which the mail begins.
void StdMail::HeaderReader::BeginHeaderBlock() {
  ledger_.offset = start_ - 1;
  mail_.readCount_ = CountedLength(line_);
  if (save_) {
    mail_.AddTempfile(TempPath("mail.eml"));
    mailFile_ = TextWriter(TempPath("mail.eml"), os::File::Mode::Create);
    mailFile_.WriteLine(line_);
  }
  mail_.headers_ = std::make_shared<TextList>();
  mail_.headers_->Add(std::string(line_));
  expunged_ = false;
  key_.clear();
  isRepeated_ = isLeftOut_ = false;
}

void StdMail::HeaderReader::TakeHeaderLine(std::string_view line) {
  TextList& headers = *mail_.headers_;
  std::string text;
  if (IsContinuation(line)) {
    if (isLeftOut_) return;
    if (!headers.IsEmpty()) text = TakeLastHeader(headers);
  } else {
    BeginHeader(line);
  }
  text += line;
  if (key_ == kStatus && passesOverExpunged_ && StatusCounts()) {
    expunged_ = (ReadStatus(text) & kExpunged) != 0;
    if (!IsHeaderWanted()) return;
  }
  isLeftOut_ = !StoreHeader(headers, std::move(text), key_);
}

void StdMail::HeaderReader::BeginHeader(std::string_view line) {
  key_ = LowerCase(SplitHeaderLine(line).name);
  isRepeated_ = key_ == kStatus && mail_.headers_->HasKey(key_);
}

// Whether the status at hand tells about the mail.
bool StdMail::HeaderReader::StatusCounts() const {
  return !isRepeated_ || !FirstStatusCounts();
}

void StdMail::HeaderReader::DropExpungedMail() {
  ++ledger_.expungedCount;
  if (mail_.notesExpunged_)
    ledger_.expungedIds.push_back(GetParam(mail_.GetData("", false), record_key::kId));
  if (!save_) return;
  const std::string path = mailFile_.Path();
  mailFile_.Close();
  SetFileDate(path, mail_.GetDate());
}

// --- Body

void StdMail::HeaderReader::ReadBody() {
  boundary_ = BoundaryIn(mail_.GetHeader("content-type"));
  boundaries_.Begin(boundary_);
  inPartHeader_ = false;
  if (boundary_.empty()) BeginSoleFile();
  const std::uint64_t start = lines_.Position();
  std::string_view line;
  while (NextBodyLine(line)) {
    Count(line);
    if (waitForFrom_ && mail_.IsFromLine(line)) {
      ledger_.nextSeparatorCount = CountedLength(line);
      lines_.PutBack();
      return;
    }
    if (!TakeBodyLine(line)) return;
    mail_.lastLineEmpty_ = line.empty();
  }
  mail_.readMails_.NoteLast({ledger_.offset, lines_.Position() - start, mail_.lastLineEmpty_});
}

// The next line; false at the end of the file or if it can't be read.
bool StdMail::HeaderReader::NextBodyLine(std::string_view& line) {
  bool found = false;
  mail_.ReadStep([&] {
    if (lines_.AtEnd()) return;
    line = lines_.Read();
    found = true;
  });
  return found;
}

// Handles a line of the body by its class. False if the mail ends with it.
bool StdMail::HeaderReader::TakeBodyLine(std::string_view line) {
  const bool hasParts = !boundary_.empty();
  if (hasParts && boundaries_.TakeOpening(line)) {
    TakeOpeningBoundary(line);
  } else if (hasParts && boundaries_.TakeClosing(line)) {
    TakeClosingBoundary(line);
    return !boundaries_.ClosesMail(line) || BeginEpilogue();
  } else if (hasParts && inPartHeader_) {
    TakePartHeaderLine(line);
  } else {
    TakeContentLine(line);
  }
  return true;
}

void StdMail::HeaderReader::TakeOpeningBoundary(std::string_view line) {
  EndOpenPartHeader();
  ClosePartFiles();
  content_.Begin(encoding_);
  if (save_) {
    FlushPartHeader();
    partHeader_.append(line).append(kLineEnd);
  }
  inPartHeader_ = true;
  encoding_ = PartEncoding::None;
  Parts().Add({});
  constexpr std::size_t kDashes = 2;
  ledger_.boundaries.emplace_back(WithoutTrailingBlanks(line).substr(kDashes));
  if (!save_) NumberPart();
}

// A mail that is one file has it for its only part.
void StdMail::HeaderReader::BeginSoleFile() {
  const std::string header = HeaderOfSoleFile(*mail_.headers_);
  if (header.empty()) return;
  content_.Begin(encoding_);
  encoding_ = EncodingOfPart(header, PartEncoding::None);
  Parts().Add(header);
  ledger_.boundaries.emplace_back();
  save_ ? BeginAttachment() : NumberPart();
}

// As ReadStream counts them.
void StdMail::HeaderReader::NumberPart() {
  std::vector<PartNumber>& numbers = mail_.partNumbers_;
  const PartNumber last = numbers.empty() ? PartNumber() : numbers.back();
  numbers.push_back(last.Next(boundaries_.Depth() > 0));
}

void StdMail::HeaderReader::TakeClosingBoundary(std::string_view line) {
  EndOpenPartHeader();
  ClosePartFiles();
  if (save_) {
    FlushPartHeader();
    WriteToMailFile(line);
  }
  if (CurrentRules().boundaries == Boundaries::Rfc2046) inPartHeader_ = false;
}

// Whether the mail goes on after its closing boundary, as text in which nothing is a boundary any more.
bool StdMail::HeaderReader::BeginEpilogue() {
  if (CurrentRules().epilogues == Epilogues::Dropped || !waitForFrom_ || !HasEpilogue()) return false;
  boundary_.clear();
  return true;
}

// Whether text comes before the next mail. All lines that are looked at come again.
bool StdMail::HeaderReader::HasEpilogue() {
  // So many empty lines are text themselves: what is looked at is held in memory.
  constexpr int kMostEmptyLines = 1000;
  int emptyLines = 0;
  bool hasText = false;
  mail_.ReadStep([&] {
    mail_.lastLineEmpty_ = true;
    while (!hasText && !lines_.AtEnd()) {
      std::string_view line = lines_.Read();
      const bool begins = mail_.IsFromLine(line);
      lines_.Keep();
      if (begins) break;
      hasText = !line.empty() || ++emptyLines > kMostEmptyLines;
    }
  });
  lines_.PutBackKept();
  return hasText;
}

void StdMail::HeaderReader::TakePartHeaderLine(std::string_view line) {
  if (save_ && !partHeader_.empty()) partHeader_.append(line).append(kLineEnd);
  if (line.empty()) {
    EndPartHeader();
  } else {
    LastPart().append(line).append(kLineEnd);
    ReadPartEncoding(line, encoding_);
  }
}

// Decides what the part is. Without saving, by the rules of old, it isn't looked at, so only the mail's own
// parts are found.
void StdMail::HeaderReader::EndPartHeader() {
  inPartHeader_ = false;
  encoding_ = EncodingOfPart(LastPart(), encoding_);
  if (!save_) {
    AwaitPartsIn(LastPart(), Parts().Count(), boundaries_);
    return;
  }
  std::string name;
  Swallow([&] { name = AttachmentName(LastPart(), Parts().Count()); });
  if (name.empty()) {
    BeginInlinePart(LastPart());
  } else {
    BeginAttachment();
  }
}

// A part without content may have no empty line after its header. By the rules of old it is lost.
void StdMail::HeaderReader::EndOpenPartHeader() {
  if (!inPartHeader_ || CurrentRules().boundaries == Boundaries::Exact) return;
  const std::size_t depth = boundaries_.Depth();
  EndPartHeader();
  // Nor has it parts.
  boundaries_.ReturnTo(depth);
}

void StdMail::HeaderReader::BeginAttachment() {
  const std::string path = TempPath("att" + std::to_string(Parts().Count()));
  RemoveExactFile(path);
  mail_.AddTempfile(path);
  WriteStep([&] { attachmentFile_ = TextWriter(path, os::File::Mode::Create); });
  partHeader_.clear();
}

void StdMail::HeaderReader::BeginInlinePart(const std::string& header) {
  std::string boundary;
  Swallow([&] { boundary = GetPartBoundary(header); });
  if (!boundary.empty()) boundaries_.Await(boundary);
  FlushPartHeader();
  if (GetPartContentType(header) != "text/html") return;
  WriteStep([&] { htmlFile_ = TextWriter(TempPath("mail.html"), os::File::Mode::Create); });
  mail_.hasHTML_ = true;
}

// HTML stays in raw form in mail.eml and is decoded in mail.html.
void StdMail::HeaderReader::TakeContentLine(std::string_view line) {
  if (!save_) return;
  if (attachmentFile_.IsOpen()) {
    WriteStep([&] { content_.WriteLine(attachmentFile_, line, lines_.LineEnd(), encoding_); });
  } else {
    WriteToMailFile(line);
  }
  if (htmlFile_.IsOpen())
    WriteStep([&] { content_.WriteLine(htmlFile_, line, lines_.LineEnd(), encoding_); });
}

// --- End

void StdMail::HeaderReader::FinishMail() {
  const std::string offset = std::to_string(ledger_.offset);
  Swallow([&] { mail_.HeaderStore().Add(":" + offset, "address"); });
  ledger_.hidesOffset = mail_.GetHeader("address") != offset;
  Swallow([&] {
    const std::uint64_t length = lines_.Length();
    if (length > 0) mail_.percent_ = static_cast<double>(start_) / static_cast<double>(length);
  });
  EndPartWithMail();
  CloseFile(mailFile_);
  Swallow([&] { CloseStreamAfterMail(); });
}

bool StdMail::HeaderReader::EndWithoutMail() {
  if (!ledger_.IsWhole()) ledger_.offset = Within32(lines_.Position() - 1);
  CloseStreamAfterMail();
  mail_.percent_ = 1;
  return false;
}

// Where the end can't be looked for, the search for the next mail will tell of it.
void StdMail::HeaderReader::CloseStreamAfterMail() {
  bool isDone = !waitForFrom_;
  Swallow([&] { isDone = isDone || lines_.AtFileEnd(); });
  if (isDone) mail_.CloseStream();
}

// --- Steps

// Length of the line read last together with its end.
double StdMail::HeaderReader::CountedLength(std::string_view line) const {
  return static_cast<double>(line.size() + lines_.LineEnd().size());
}

void StdMail::HeaderReader::Count(std::string_view line) {
  ++mail_.lineCount_;
  mail_.readCount_ += CountedLength(line);
}

// A step that writes to one of the mail's files, its failure swallowed but noted. A bad quoted-printable code
// is the sender's failure, not one of writing.
template <class Step>
void StdMail::HeaderReader::WriteStep(Step&& step) {
  try {
    step();
  } catch (const Failure& failure) {
    if (!failure.Is(ErrorNumber::TypeMismatch)) ledger_.NoteLoss(failure.Why());
  }
}

void StdMail::HeaderReader::WriteToMailFile(std::string_view line) {
  if (save_) WriteStep([&] { mail_.WriteStreamLine(mailFile_, line); });
}

void StdMail::HeaderReader::FlushPartHeader() {
  if (!partHeader_.empty()) WriteStep([&] { mailFile_.Write(partHeader_); });
  partHeader_.clear();
}

void StdMail::HeaderReader::EndPartWithMail() {
  EndOpenPartHeader();
  for (TextWriter* const file : {&htmlFile_, &attachmentFile_}) {
    if (file->IsOpen()) WriteStep([&] { content_.EndWithMail(*file); });
  }
  ClosePartFiles();
}

void StdMail::HeaderReader::ClosePartFiles() {
  CloseFile(htmlFile_);
  CloseFile(attachmentFile_);
}

// Closes a file if it is open and gives it the mail's date.
void StdMail::HeaderReader::CloseFile(TextWriter& file) {
  if (!file.IsOpen()) return;
  const std::string path = file.Path();
  WriteStep([&] { file.Close(); });
  SetFileDate(path, mail_.GetDate());
}

}  // namespace vorlent
