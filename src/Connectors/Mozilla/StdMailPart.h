// What the readers of mails share: header lines, the header store's rules, the content of parts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Platform/Files.h"

namespace vorlent {

// A header line cut at its first colon, both halves trimmed of blanks. Without a colon all of it is the name.
struct HeaderLine {
  std::string_view name;
  std::string_view value;
};
HeaderLine SplitHeaderLine(std::string_view line);

// Without the blanks and tabs at its end.
std::string_view WithoutTrailingBlanks(std::string_view line);

inline bool IsContinuation(std::string_view line) {
  return line.starts_with(' ') || line.starts_with('\t');
}

// Whether a line begins with `prefix`, which is in lower case, without regard to case.
bool BeginsNoCase(std::string_view line, std::string_view prefix);

// Takes the last item out of a header store that isn't empty, for a continuation line to be joined to.
std::string TakeLastHeader(KeyedList<std::string>& headers);

// Stores a header under its key, but "received" and "return-path" without one; and "address", where that is
// to be the mail's place. A key that is there already keeps its first header. False if the header goes with
// all of its lines then.
bool StoreHeader(KeyedList<std::string>& headers, std::string text, std::string_view key);

// The number of a status header's digits has the bit of value 8: the mail counts as deleted.
inline constexpr std::int32_t kExpunged = 8;

// The number that hexadecimal digits stand for, 0 if there are none.
std::int32_t ReadHexNumber(std::string_view digits);

// Whether of several headers X-Mozilla-Status only the first counts, which is the mail client's.
bool FirstStatusCounts();

// Whether a line is such a header; where only the first counts, blanks may stand before its colon.
bool IsStatusLine(std::string_view line);

// The status that a header line X-Mozilla-Status tells, as the reader of mailboxes takes it.
std::int32_t ReadStatus(std::string_view headerLine);

// How a mailbox is opened to be read.
os::File::Mode ReadingMode();

// The position from 1 of a mail's zero-based offset. Raises InvalidCall before the beginning of a file and,
// by the rules of old, Overflow at the end of 32 bits.
std::uint64_t MailPosition(std::int64_t offset);

// The boundary that a header of a content type tells, "" if there is none. Raises, by the rules of old, for
// one that can't be decoded.
std::string BoundaryIn(std::string_view contentType);

// The file name of a part that is an attachment, "" for others; by the rules of today it may be made from the
// part's position.
std::string AttachmentName(const std::string& partHeader, std::int32_t position);

// Whether a mail that is one file is an attachment.
bool SoleFilesAreAttached();

// The lines that tell what a mail without parts is, if it is one file and that an attachment; "" for others,
// such as text that is meant to be read. Each line ends in CR LF, as in the header of a part.
std::string HeaderOfSoleFile(const KeyedList<std::string>& headers);

// The two lines that separate the parts of a multipart. Those of a pair that was never set match no line.
class BoundaryPair {
 public:
  BoundaryPair() = default;
  // By the rules of today that of no boundary matches no line either.
  explicit BoundaryPair(std::string_view boundary);

  // Every boundary line begins so; a test for it spares nearly all lines the comparisons.
  static bool MayMatch(std::string_view line) { return line.starts_with("--"); }

  bool IsOpening(std::string_view line) const { return Comparable(line) == opening_; }
  bool IsClosing(std::string_view line) const { return Comparable(line) == closing_; }

 private:
  std::string_view Comparable(std::string_view line) const;

  std::string opening_;
  std::string closing_;
  bool endsInBlanks_ = false;  // blanks may follow a boundary
};

}  // namespace vorlent
