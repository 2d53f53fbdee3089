#include "Connectors/Mozilla/MailRestore.h"

#include <algorithm>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/AttachmentHeaders.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/FileKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kSeparator = "From - ";

// Written when it is known whether the mail gets parts.
constexpr std::string_view kHeldBack = "content-type";
// Written anew where the mail's content is.
constexpr std::string_view kEncoding = "content-transfer-encoding";

// Base64 lines of 72 characters.
constexpr std::size_t kBase64Chunk = std::size_t{72} / 4 * 3;
constexpr std::size_t kQuotedPrintableChunk = 70;

void WriteBase64(TextWriter& out, std::string_view file) {
  os::File in = os::File::Open(file, os::File::Mode::Read);
  if (ComesBackEmpty(in.Length())) {
    out.WriteLine("");
    return;
  }
  constexpr std::size_t kChunksPerRead = 1024;
  std::string block(kBase64Chunk * kChunksPerRead, '\0');
  std::size_t count = 0;
  do {
    count = in.Read(block.data(), block.size());
    const std::string_view bytes(block.data(), count);
    for (std::size_t i = 0; i < count; i += kBase64Chunk) {
      Swallow([&] { out.WriteLine(Base64Encode(bytes.substr(i, kBase64Chunk))); });
    }
  } while (count == block.size());
}

void WriteQuotedPrintable(TextWriter& out, std::string_view line) {
  for (; line.size() > kQuotedPrintableChunk; line.remove_prefix(kQuotedPrintableChunk)) {
    out.WriteLine(QuotedPrintableEncode(line.substr(0, kQuotedPrintableChunk)) + "=");
  }
  out.WriteLine(QuotedPrintableEncode(line));
}

void WriteLines(TextWriter& out, std::string_view file, std::int16_t mode) {
  LineFile in(file, os::File::Mode::Read);
  while (!in.AtEnd()) {
    const std::string_view line = in.ReadLine();
    Swallow([&] { mode == kQuotedPrintableFile ? WriteQuotedPrintable(out, line) : out.WriteLine(line); });
  }
}

// Whether a file may stand in a part as it is: none of its lines ends the part.
bool StandsAsItIs(std::string_view file, std::string_view boundaryLine) {
  bool stands = true;
  Swallow([&] {
    LineFile in(file, os::File::Mode::Read);
    while (stands && !in.AtEnd()) {
      stands = !in.ReadLine().starts_with(boundaryLine);
    }
  });
  return stands;
}

// Quoted as in every mailbox. The line end after it belongs to the boundary that follows.
void WriteAsItIs(TextWriter& out, std::string_view file) {
  LineFile in(file, os::File::Mode::Read);
  bool goesOn = false;
  while (!in.AtEnd()) {
    const std::string_view line = in.ReadLine();
    if (!goesOn && (line.starts_with("From ") || IsQuotedFrom(line))) out.Write(">");
    out.Write(line);
    out.Write(in.LineEnd());
    goesOn = in.LineGoesOn();
  }
  out.WriteLine("");
}

// The value of a whole header up to its first ";".
std::string MainValue(std::string header) {
  CutToken(header, ":");
  return TrimBlank(PeekToken(header, ";"));
}

std::string NewBoundary() {
  const std::string guid = NewGuidText();
  return guid.substr(1, guid.size() - 2);
}

}  // namespace

// Such a file never gets a buffer to be read into. The mails written so far are like that.
bool ComesBackEmpty(std::uint64_t length) {
  return length == kBase64Chunk && CurrentRules().filesOfOneLine == FilesOfOneLine::ComeBackEmpty;
}

void WriteFileEncoded(TextWriter& out, std::string_view file, std::int16_t mode) {
  if (!FileExists(file)) return;
  Swallow([&] { mode == kBase64File ? WriteBase64(out, file) : WriteLines(out, file, mode); });
}

void EnsureMailboxPath(std::string_view mailbox) {
  MakePath(GetPath(mailbox));
  for (std::size_t at = mailbox.find(kSubfolderStep); at != std::string_view::npos;
       at = mailbox.find(kSubfolderStep, at + kSubfolderStep.size())) {
    const std::string_view parent = mailbox.substr(0, at);
    if (!FileExists(parent)) os::File::Open(parent, os::File::Mode::Create).Close();
  }
}

MailRestorer::MailRestorer(TextWriter& out, const Item& itm, StdMail* mail, bool shortcut)
    : out_(out), itm_(itm), mail_(mail), shortcut_(shortcut) {
  if (!shortcut) Try([&] { CollectAttachments(); });
}

template <class Step>
void MailRestorer::Try(Step&& step) {
  isWhole_ = Swallow(std::forward<Step>(step)) && isWhole_;
}

bool MailRestorer::Restore(LineFile& source) {
  Try([&] { isSoleFile_ = !shortcut_ && IsSoleFile(source); });
  Try([&] { WriteMissingSeparator(source); });
  Try([&] {
    while (stage_ != Stage::Done && !source.AtEnd()) {
      TakeLine(source);
    }
  });
  goesOn_ = false;
  EndMail();
  return isWhole_;
}

void MailRestorer::CollectAttachments() {
  const std::int32_t count = itm_.DataCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    const std::string key = itm_.DataKey(i);
    if (!DescribesAttachment(key)) continue;
    std::string home;
    if (HomesAreKept()) Try([&] { home = HomeOf(itm_.DataText(key)); });
    if (!home.empty()) homes_.insert(home);
    attachments_.push_back({key, home});
  }
}

// Whether the mail was one file, which is its only attachment now, so that nothing is left of it but its
// header.
bool MailRestorer::IsSoleFile(LineFile& source) const {
  if (!SoleFilesAreAttached() || attachments_.size() != 1) return false;
  StdMail mail;
  bool inHeader = true, isEmpty = true;
  while (isEmpty && !source.AtEnd()) {
    const std::string_view line = source.ReadLine();
    isEmpty = inHeader || line.empty();
    inHeader = inHeader && !line.empty();
    if (inHeader) mail.AddHeader(line);
  }
  source.Seek(1);
  return isEmpty && !HeaderOfSoleFile(*mail.Headers()).empty();
}

void MailRestorer::WriteSoleFile() {
  Write("Content-Transfer-Encoding: base64");
  Write("");
  endsInEmptyLine_ = false;
  Try([&] { WriteFileEncoded(out_, itm_.DataFile(attachments_.front().key, 0), kBase64File); });
  attachments_.clear();
  stage_ = Stage::Done;
}

// Begins the mail, unless it brings a separator of its own. A quoted one is none for a mail that is written.
void MailRestorer::WriteMissingSeparator(LineFile& source) {
  if (source.AtEnd()) return;
  const std::string first(source.ReadLine());
  const bool isSeparator = !first.starts_with('>') && IsSeparator(first, [&] { return source.NextLine(); });
  source.Seek(1);
  if (!isSeparator) Write(kSeparator);
}

void MailRestorer::TakeLine(LineFile& source) {
  const std::string_view line = source.ReadLine();
  if (std::exchange(goesOn_, source.LineGoesOn())) {
    if (stage_ == Stage::Body || !IsHeldBack()) Write(line);
    endsInEmptyLine_ = false;
  } else if (stage_ == Stage::Body) {
    TakeBodyLine(line);
  } else if (line.empty()) {
    EndHeader();
  } else {
    TakeHeaderLine(line);
  }
}

// Whether the header at hand isn't written in its place.
bool MailRestorer::IsHeldBack() const {
  return header_ == kHeldBack || (isSoleFile_ && header_ == kEncoding);
}

// What is held back stays so with its folded lines.
void MailRestorer::TakeHeaderLine(std::string_view line) {
  if (!line.starts_with(' ') && !line.starts_with('\t')) header_ = LowerCase(Trim(PeekToken(line, ":")));
  if (!IsHeldBack()) Write(line);
  if (mail_ != nullptr) mail_->AddHeader(line);
}

namespace {

// What a content type says of the text that is written with it. That of the code page is left to the reader.
std::string CharsetOfText() {
  return HoldsUtf8() ? "; charset=UTF-8" : "";
}

}  // namespace

void MailRestorer::EndHeader() {
  if (shortcut_) {
    Write("Content-Type: text/html" + CharsetOfText());
    Write("");
    Try([&] {
      Write("<A HREF=\"sendarium:" + UrlEncode(itm_.Address()) + "\">" +
            std::string("Mail aus Archiv öffnen</A>"_cp));
    });
    stage_ = Stage::Done;
    return;
  }
  const std::string contentType = mail_ == nullptr ? "" : mail_->GetHeader("content-type", true);
  if (!attachments_.empty() && !isSoleFile_) BeginParts(contentType);
  if (!contentType.empty()) Write(contentType);
  if (isSoleFile_) {
    WriteSoleFile();
    return;
  }
  Write("");
  stage_ = Stage::Body;
}

// Whether attachments go into the mail's own multipart: a mixed one takes any, another one only such as stood
// in it or in those nested there.
bool MailRestorer::TakesAttachments(const std::string& contentType) const {
  const std::string type = MainValue(contentType);
  if (type == "multipart/mixed") return true;
  return LowerCase(type).starts_with("multipart/") &&
         std::ranges::all_of(attachments_, [](const Attachment& each) { return !each.home.empty(); });
}

// Attachments go into the mail's own parts where it has such, else the whole mail becomes the first part.
void MailRestorer::BeginParts(const std::string& contentType) {
  if (TakesAttachments(contentType)) Swallow([&] { boundary_ = GetHeaderParam(contentType, "boundary"); });
  const bool isNew = boundary_.empty();
  if (isNew) boundary_ = NewBoundary();
  ownLines_ = BoundaryPair(boundary_);
  if (isNew) {
    Write("Content-Type: multipart/mixed; boundary=\"" + boundary_ + "\"");
    Write("");
    Write("--" + boundary_);
  }
}

void MailRestorer::TakeBodyLine(std::string_view line) {
  if (BoundaryPair::MayMatch(line)) PutAttachmentsBefore(line);
  Write(line);
}

// Of a line that goes on the end comes with its last piece.
void MailRestorer::Write(std::string_view line) {
  Try([&] { goesOn_ ? out_.Write(line) : out_.WriteLine(line); });
  endsInEmptyLine_ = line.empty();
}

namespace {

// What stands between the dashes of a line that may close a multipart.
std::string_view BoundaryClosedBy(std::string_view line) {
  constexpr std::string_view kDashes = "--";
  line = WithoutTrailingBlanks(line);
  if (line.size() < 2 * kDashes.size() || !line.starts_with(kDashes) || !line.ends_with(kDashes)) return {};
  return line.substr(kDashes.size(), line.size() - 2 * kDashes.size());
}

}  // namespace

// Puts those in their place for which the line closes it.
void MailRestorer::PutAttachmentsBefore(std::string_view line) {
  if (!boundary_.empty() && !isClosed_ && ownLines_.IsClosing(line)) {
    PutAttachments(boundary_, [](const Attachment&) { return true; });
    isClosed_ = true;
    return;
  }
  const auto closed = homes_.find(BoundaryClosedBy(line));
  if (closed == homes_.end() || !BoundaryPair(*closed).IsClosing(line)) return;
  const std::string home = std::move(homes_.extract(closed).value());
  PutAttachments(home, [&](const Attachment& attachment) { return attachment.home == home; });
}

template <class IsTheirs>
void MailRestorer::PutAttachments(const std::string& boundary, IsTheirs&& isTheirs) {
  Try([&] {
    for (const Attachment& attachment : attachments_) {
      if (isTheirs(attachment)) WriteAttachment(attachment.key, "--" + boundary);
    }
  });
  std::erase_if(attachments_, std::forward<IsTheirs>(isTheirs));
}

// A failed call of the item rises.
void MailRestorer::WriteAttachment(const std::string& key, const std::string& boundaryLine) {
  PartNaming naming = NamingOf(itm_.DataText(key));
  if (naming.isMail && !StandsAsItIs(itm_.DataFile(key, 0), boundaryLine))
    naming = NamingOf(itm_.DataText(key), MailForm::AsBytes);
  out_.WriteLine(boundaryLine);
  out_.WriteLine("Content-Type: " + naming.contentType);
  out_.WriteLine(std::string("Content-Transfer-Encoding: ") + (naming.isMail ? "8bit" : "base64"));
  if (!naming.contentId.empty()) out_.WriteLine("Content-ID: " + naming.contentId);
  out_.WriteLine("Content-Disposition: " + naming.disposition);
  out_.WriteLine("");
  const std::string file = itm_.DataFile(key, 0);
  if (naming.isMail) {
    Swallow([&] { WriteAsItIs(out_, file); });
  } else {
    WriteFileEncoded(out_, file, kBase64File);
  }
}

void MailRestorer::EndMail() {
  // A mail that got a new boundary, or whose closing line was not found.
  if (!boundary_.empty() && !isClosed_) {
    PutAttachments(boundary_, [](const Attachment&) { return true; });
    Write("--" + boundary_ + "--");
  }
  if (!endsInEmptyLine_ || CurrentRules().mailEnds == MailEnds::GetALine) Write("");
}

}  // namespace vorlent
