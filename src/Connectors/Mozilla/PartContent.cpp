#include "Connectors/Mozilla/PartContent.h"

#include <algorithm>
#include <utility>

#include "Common/StdHttp.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/Base64Blocks.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

PartEncoding EncodingOfName(std::string_view name) {
  return EqualNoCase(name, "base64")             ? PartEncoding::Base64
         : EqualNoCase(name, "quoted-printable") ? PartEncoding::QuotedPrintable
                                                 : PartEncoding::None;
}

}  // namespace

void ReadPartEncoding(std::string_view line, PartEncoding& encoding) {
  const HeaderLine header = SplitHeaderLine(line);
  if (EqualNoCase(header.name, "content-transfer-encoding")) encoding = EncodingOfName(header.value);
}

// Such a header may be folded, or hold comments, so that its lines alone don't tell.
PartEncoding EncodingOfPart(const std::string& partHeader, PartEncoding ofLines) {
  if (CurrentRules().transferEncodings == TransferEncodings::LineByLine) return ofLines;
  return EncodingOfName(GetPartEncoding(partHeader));
}

PartEncoding PartContent::Begin(PartEncoding before) {
  Clear();
  return encodings_ == TransferEncodings::LineByLine ? before : PartEncoding::None;
}

void PartContent::Clear() {
  pendingLineEnd_ = {};
  isAfterEmptyLine_ = false;
  goesOn_ = false;
  base64_ = {};
}

void PartContent::WriteLine(TextWriter& file, std::string_view line, std::string_view lineEnd,
                            PartEncoding encoding) {
  if (!std::exchange(goesOn_, lineEnd.empty())) line = Unquoted(line);
  if (lineEnds_ == PartLineEnds::CrLf) lineEnd = kLineEnd;
  switch (encoding) {
    case PartEncoding::Base64:
      if (encodings_ == TransferEncodings::LineByLine) {
        Base64DecodeToFile(file, line);
      } else {
        DecodeBase64(file, line);
      }
      break;
    case PartEncoding::QuotedPrintable: {
      if (encodings_ == TransferEncodings::Rfc2045) line = WithoutTrailingBlanks(line);
      // RFC 2045: a "=" at the end is a soft line break, which is no part of the content.
      const bool isSoft = line.ends_with('=');
      if (isSoft) line.remove_suffix(1);
      WriteText(file, DecodeQuotedPrintable(line), isSoft ? "" : lineEnd);
      break;
    }
    case PartEncoding::None:
      WriteText(file, line, lineEnd);
      break;
  }
}

// A line that would separate mails is quoted by one more ">" in a mailbox than its sender wrote.
std::string_view PartContent::Unquoted(std::string_view line) const {
  if (separators_ == Separators::Envelopes && IsQuotedFrom(line)) line.remove_prefix(1);
  return line;
}

// RFC 2046: the line end before a boundary belongs to that.
void PartContent::WriteText(TextWriter& file, std::string_view line, std::string_view lineEnd) {
  if (lineEnds_ == PartLineEnds::CrLf) {
    lineEnd.empty() ? file.Write(line) : file.WriteLine(line);
    return;
  }
  file.Write(pendingLineEnd_);
  file.Write(line);
  isAfterEmptyLine_ = line.empty();
  pendingLineEnd_ = lineEnd;
}

// What is missing is the end of the text's last line, unless that is the empty line which closes the mail.
void PartContent::EndWithMail(TextWriter& file) {
  if (!isAfterEmptyLine_) file.Write(pendingLineEnd_);
  Clear();
}

std::string_view PartContent::DecodeQuotedPrintable(std::string_view line) {
  if (encodings_ == TransferEncodings::LineByLine) {
    QuotedPrintableDecodeInto(line, decoded_);
  } else {
    DecodeQuotedBytes(line, decoded_);
  }
  return decoded_;
}

// RFC 2045: lines divide the text anywhere, and what isn't of the alphabet is passed over.
void PartContent::DecodeBase64(TextWriter& file, std::string_view text) {
  constexpr std::size_t kMost = std::size_t{16} * 1024;
  constexpr std::size_t kBlock = 32;
  while (!text.empty()) {
    const bool isWhole = base64_.IsAtGroup();
    if (isWhole) {
      std::size_t done = 0;
      file.WriteMade([&](char* out) {
        done = os::DecodeBase64Blocks(text.substr(0, kMost), out);
        return out + done / 4 * 3;
      });
      text.remove_prefix(done);
    }
    // One by one to where blocks may go on: behind the one that has something else in it, or at a group.
    decoded_.clear();
    for (std::size_t least = isWhole ? kBlock : 0; !text.empty() && (least > 0 || !base64_.IsAtGroup());
         text.remove_prefix(1)) {
      base64_.Take(text.front(), decoded_);
      if (least > 0) --least;
    }
    file.Write(decoded_);
  }
}

}  // namespace vorlent
