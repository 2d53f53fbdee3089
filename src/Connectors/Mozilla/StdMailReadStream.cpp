// The extraction reader: brings back one mail, or one part of it, from a place in the mailbox.
#include <string>
#include <string_view>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/MailBoundaries.h"
#include "Connectors/Mozilla/PartContent.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// What to write, where it is no part number.
constexpr PartNumber kCollectBody = {-1};
constexpr PartNumber kWholeMail = {-2};  // but for the contents of attachments

}  // namespace

// Reads one mail, and guards nothing but the reading of lines. By the rules of old it knows the mail's own
// boundary only.
class StdMail::StreamReader {
 public:
  StreamReader(StdMail& mail, std::string_view bodyfile) : mail_(mail) {
    boundaries_.Begin("");
    if (!bodyfile.empty()) file_ = TextWriter(bodyfile, os::File::Mode::Create);
  }

  bool Read();

 private:
  void TakeHeaderLine(std::string_view line);
  void FinishHeader();
  void BeginSoleFile();
  bool TellsContentType(std::string_view header);
  void TakeBodyLine(std::string_view line);
  void HandleBodyLine(std::string_view line);
  void TakeOpeningBoundary(std::string_view line);
  void TakeClosingBoundary(std::string_view line);
  void TakePartHeaderLine(std::string_view line);
  void EndPartHeader();
  void EndOpenPartHeader();

  TextList& Headers() { return mail_.HeaderStore(); }
  TextList& Parts() { return *mail_.attachments_; }
  std::string& LastPart() { return Parts().Item(Parts().Count()); }
  bool WritesWholeMail() const { return file_.IsOpen() && mail_.saved_ == kWholeMail; }

  StdMail& mail_;
  TextWriter file_;
  bool inHeader_ = true;
  bool headerOpen_ = false;  // the last header isn't known to be complete
  bool hasContentType_ = false;
  bool hasParts_ = false;
  MailBoundaries boundaries_;
  std::string openingLine_;
  bool inPartHeader_ = false;
  PartNumber lastPart_;
  PartNumber part_;  // at hand, 0 outside of all
  PartEncoding encoding_ = PartEncoding::None;
  PartContent content_;
  bool partIsInline_ = true;
};

bool StdMail::ReadStream(std::string_view bodyfile) {
  HeaderStore().Clear();
  bodyLines_->Clear();
  attachments_->Clear();
  bodySize_ = 0;
  if (IsStreamDone()) {
    CloseStream();
    return false;
  }
  StreamReader reader(*this, bodyfile);
  ResetMailScan();
  return reader.Read();
}

bool StdMail::StreamReader::Read() {
  while (!mail_.IsStreamDone()) {
    std::string_view line = mail_.ReadStreamLine();
    if (mail_.AtMailEnd(line)) break;
    if (inHeader_) {
      TakeHeaderLine(line);
    } else {
      TakeBodyLine(line);
    }
  }
  FinishHeader();
  EndOpenPartHeader();
  if (file_.IsOpen()) content_.EndWithMail(file_);
  file_.Close();
  return !Headers().IsEmpty();
}

void StdMail::StreamReader::TakeHeaderLine(std::string_view line) {
  const bool continues = IsContinuation(line) && !Headers().IsEmpty();
  if (!continues) FinishHeader();
  if (WritesWholeMail()) mail_.WriteStreamLine(file_, line);
  if (line.empty()) {
    inHeader_ = false;
    BeginSoleFile();
    return;
  }
  std::string text;
  if (continues) text = TakeLastHeader(Headers());
  Headers().Add(std::move(text.append(line)));
  headerOpen_ = true;
}

// Looks for the boundary in the last header once that is complete, which shows with the line after it: with
// each of its lines would take a time that grows with the square of their number. A boundary that can't be
// decoded raises here; the line after it is taken from the stream then, but nowhere written.
void StdMail::StreamReader::FinishHeader() {
  if (!std::exchange(headerOpen_, false)) return;
  const std::string& header = Headers().Item(Headers().Count());
  if (!TellsContentType(header)) return;
  const std::string boundary = BoundaryIn(header);
  hasParts_ = !boundary.empty();
  boundaries_.Begin(boundary);
}

// A mail that is one file has it for its only part.
void StdMail::StreamReader::BeginSoleFile() {
  if (hasParts_) return;
  const std::string header = HeaderOfSoleFile(Headers());
  if (header.empty()) return;
  encoding_ = EncodingOfPart(header, PartEncoding::None);
  Parts().Add(header);
  part_ = lastPart_ = lastPart_.Next(false);
  partIsInline_ = false;
}

bool StdMail::StreamReader::TellsContentType(std::string_view header) {
  if (CurrentRules().headerValues == HeaderValues::Simple) return BeginsNoCase(header, "content-type:");
  return EqualNoCase(SplitHeaderLine(header).name, "content-type") && !std::exchange(hasContentType_, true);
}

void StdMail::StreamReader::TakeBodyLine(std::string_view line) {
  if (!file_.IsOpen() && mail_.saved_ == kCollectBody) {
    mail_.bodyLines_->Add(std::string(line));
    mail_.bodySize_ = Within32(mail_.bodySize_ + static_cast<std::int64_t>(line.size() + kLineEnd.size()));
  }
  HandleBodyLine(line);
  if (WritesWholeMail() && partIsInline_) mail_.WriteStreamLine(file_, line);
}

void StdMail::StreamReader::HandleBodyLine(std::string_view line) {
  if (boundaries_.TakeOpening(line)) {
    TakeOpeningBoundary(line);
  } else if (boundaries_.TakeClosing(line)) {
    TakeClosingBoundary(line);
  } else if (inPartHeader_) {
    TakePartHeaderLine(line);
  } else if (file_.IsOpen() && mail_.saved_ == part_) {
    content_.WriteLine(file_, line, mail_.lines_.LineEnd(), encoding_);
  }
}

void StdMail::StreamReader::TakeOpeningBoundary(std::string_view line) {
  EndOpenPartHeader();
  openingLine_ = line;
  inPartHeader_ = true;
  partIsInline_ = false;
  encoding_ = content_.Begin(encoding_);
  Parts().Add({});
  part_ = lastPart_ = lastPart_.Next(boundaries_.Depth() > 0);
  Within16(part_.own);
}

// After that of the mail nothing is a boundary any more where text may follow.
void StdMail::StreamReader::TakeClosingBoundary(std::string_view line) {
  EndOpenPartHeader();
  if (CurrentRules().epilogues == Epilogues::Kept && boundaries_.ClosesMail(line)) boundaries_.Clear();
  partIsInline_ = true;
  encoding_ = content_.Begin(encoding_);
  inPartHeader_ = false;
  part_ = {};
  // By the rules of old they are counted anew.
  if (CurrentRules().boundaries == Boundaries::Exact) lastPart_ = {};
}

void StdMail::StreamReader::TakePartHeaderLine(std::string_view line) {
  if (line.empty()) {
    EndPartHeader();
  } else {
    LastPart().append(line).append(kLineEnd);
    ReadPartEncoding(line, encoding_);
  }
}

void StdMail::StreamReader::EndPartHeader() {
  inPartHeader_ = false;
  encoding_ = EncodingOfPart(LastPart(), encoding_);
  AwaitPartsIn(LastPart(), Parts().Count(), boundaries_);
  partIsInline_ = AttachmentName(LastPart(), Parts().Count()).empty();
  if (!WritesWholeMail()) return;
  file_.WriteLine(openingLine_);
  file_.Write(LastPart());
  // An inline part's empty line is written like its content.
  if (!partIsInline_) file_.WriteLine("");
}

// A part without content may have no empty line after its header. By the rules of old it is lost.
void StdMail::StreamReader::EndOpenPartHeader() {
  if (!inPartHeader_ || CurrentRules().boundaries == Boundaries::Exact) return;
  const std::size_t depth = boundaries_.Depth();
  EndPartHeader();
  // Nor has it parts.
  boundaries_.ReturnTo(depth);
}

// --- Operations on top

void StdMail::SaveMail(std::string_view file, std::string_view bodyfile) const {
  if (!bodyfile.empty()) {
    MoveFile(file, bodyfile);
    return;
  }
  MakePath(GetPath(file));
  TextWriter writer(file, os::File::Mode::Create);
  for (const std::string& header : HeaderStore())
    writer.WriteLine(header);
  writer.WriteLine("");
  for (const std::string& line : *bodyLines_)
    writer.WriteLine(line);
  writer.Close();
}

void StdMail::SavePart(std::string_view file, std::int64_t offset, PartNumber part, std::string_view dat) {
  RemoveExactFile(file);
  lines_.Open(mailboxFile_, ReadingMode());
  lines_.Seek(MailPosition(offset));
  saved_ = part;
  ReadStream(file);
  lines_.Close();
  SetFileDate(file, dat);
}

}  // namespace vorlent
