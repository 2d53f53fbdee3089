// What the readers of mails share: header lines, the header store's rules, the content of parts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"
#include "Common/TextWriter.h"

namespace vorlent {

// A header line cut at its first colon, both halves trimmed of blanks. Without a colon all of it is the name.
struct HeaderLine {
  std::string_view name;
  std::string_view value;
};
HeaderLine SplitHeaderLine(std::string_view line);

// Whether a mail begins on a line, if that is the first one or comes after an empty one.
inline bool IsSeparator(std::string_view line) {
  return line.starts_with("From - ") || line.starts_with(">From - ");
}

inline bool IsContinuation(std::string_view line) {
  return line.starts_with(' ') || line.starts_with('\t');
}

// Whether a line begins with `prefix`, which is in lower case, without regard to case.
bool BeginsNoCase(std::string_view line, std::string_view prefix);

// Takes the last item out of a header store that isn't empty, for a continuation line to be joined to.
std::string TakeLastHeader(KeyedList<std::string>& headers);

// Stores a header under its key, but "received" and "return-path" without one. A key that is there already
// keeps its first header.
void StoreHeader(KeyedList<std::string>& headers, std::string text, std::string_view key);

// The number of a status header's digits has the bit of value 8: the mail counts as deleted.
inline constexpr std::int32_t kExpunged = 8;

// The number that hexadecimal digits stand for, 0 if there are none.
std::int32_t ReadHexNumber(std::string_view digits);

// The status that a header line X-Mozilla-Status tells, as the reader of mailboxes takes it.
std::int32_t ReadStatus(std::string_view headerLine);

// The position from 1 of a mail's zero-based offset. Raises Overflow at the end of 32 bits, InvalidCall
// before the beginning of a file.
std::uint64_t MailPosition(std::int32_t offset);

enum class PartEncoding { None, Base64, QuotedPrintable };

// Takes over the encoding that a line of a part's header tells, if it is the one that does.
void ReadPartEncoding(std::string_view line, PartEncoding& encoding);

// Writes lines of a part's content, decoded. A base64 line is decoded by itself.
class PartContent {
 public:
  // Raises for a line that can't be decoded, and then writes nothing of it.
  void WriteLine(TextWriter& file, std::string_view line, PartEncoding encoding);

 private:
  std::string decoded_;  // kept from line to line for its memory
};

// The two lines that separate the parts of a multipart. Those of a pair that was never set match no line.
class BoundaryPair {
 public:
  BoundaryPair() = default;
  explicit BoundaryPair(std::string_view boundary);

  // Every boundary line begins so; a test for it spares nearly all lines the comparisons.
  static bool MayMatch(std::string_view line) { return line.starts_with("--"); }

  bool IsOpening(std::string_view line) const { return line == opening_; }
  bool IsClosing(std::string_view line) const { return line == closing_; }
  const std::string& Opening() const { return opening_; }

 private:
  std::string opening_;
  std::string closing_;
};

}  // namespace vorlent
