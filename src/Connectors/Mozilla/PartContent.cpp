#include "Connectors/Mozilla/PartContent.h"

#include <algorithm>

#include "Common/StdHttp.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/Base64Blocks.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// 0 to 15, -1 for what is no hexadecimal digit.
int ValueOfHexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::string_view LineEndOfLength(std::uint32_t length) {
  return length == 2 ? kLineEnd : length == 1 ? "\n" : "";
}

// RFC 2045: "=XX" is a byte. Robust readers leave any other "=" as it stands.
void DecodeBytes(std::string_view text, std::string& out) {
  out.resize(text.size());
  char* end = out.data();
  while (!text.empty()) {
    const std::size_t stretch = std::min(text.find('='), text.size());
    end = std::copy_n(text.begin(), stretch, end);
    text.remove_prefix(stretch);
    if (text.empty()) break;
    const int high = text.size() < 3 ? -1 : ValueOfHexDigit(text[1]);
    const int low = text.size() < 3 ? -1 : ValueOfHexDigit(text[2]);
    const bool isByte = high >= 0 && low >= 0;
    *end++ = isByte ? static_cast<char>(high * 16 + low) : '=';
    text.remove_prefix(isByte ? 3 : 1);
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
}

}  // namespace

void ReadPartEncoding(std::string_view line, PartEncoding& encoding) {
  const HeaderLine header = SplitHeaderLine(line);
  if (!EqualNoCase(header.name, "content-transfer-encoding")) return;
  encoding = EqualNoCase(header.value, "base64")             ? PartEncoding::Base64
             : EqualNoCase(header.value, "quoted-printable") ? PartEncoding::QuotedPrintable
                                                             : PartEncoding::None;
}

PartEncoding PartContent::Begin(PartEncoding before) {
  Clear();
  return encodings_ == TransferEncodings::LineByLine ? before : PartEncoding::None;
}

void PartContent::Clear() {
  pendingLineEnd_ = {};
  isAfterEmptyLine_ = false;
  base64Bits_ = 0;
  base64BitCount_ = 0;
}

void PartContent::WriteLine(TextWriter& file, std::string_view line, std::uint32_t lineEndLength,
                            PartEncoding encoding) {
  const std::string_view lineEnd =
      lineEnds_ == PartLineEnds::CrLf ? kLineEnd : LineEndOfLength(lineEndLength);
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
    DecodeBytes(line, decoded_);
  }
  return decoded_;
}

// RFC 2045: lines divide the text anywhere, and what isn't of the alphabet is passed over.
void PartContent::DecodeBase64(TextWriter& file, std::string_view text) {
  constexpr std::size_t kMost = std::size_t{16} * 1024;
  constexpr std::size_t kBlock = 32;
  while (!text.empty()) {
    const bool isWhole = base64BitCount_ == 0;
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
    for (std::size_t least = isWhole ? kBlock : 0; !text.empty() && (least > 0 || base64BitCount_ != 0);
         text.remove_prefix(1)) {
      TakeBase64(text.front());
      if (least > 0) --least;
    }
    file.Write(decoded_);
  }
}

void PartContent::TakeBase64(char c) {
  const int value = Base64Value({&c, 1});
  if (c == '=') base64BitCount_ = 0;  // the padding of a group, which ends here
  if (value < 0) return;
  base64Bits_ = base64Bits_ << 6 | static_cast<std::uint32_t>(value);
  base64BitCount_ += 6;
  if (base64BitCount_ < 8) return;
  base64BitCount_ -= 8;
  decoded_ += static_cast<char>(base64Bits_ >> base64BitCount_ & 0xFF);
}

}  // namespace vorlent
