// The content of a mail's part on its way to a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/StdHttpStandards.h"
#include "Common/TextWriter.h"
#include "Platform/Rules.h"

namespace vorlent {

enum class PartEncoding { None, Base64, QuotedPrintable };

// Takes over the encoding that a line of a part's header tells, if it is the one that does.
void ReadPartEncoding(std::string_view line, PartEncoding& encoding);

// The encoding that a part's whole header tells, where its lines have told `ofLines`.
PartEncoding EncodingOfPart(const std::string& partHeader, PartEncoding ofLines);

// Writes lines of a part's content, decoded, one part after the other.
class PartContent {
 public:
  // Nothing is left then of the part before. Gives the encoding that holds until one is told, where `before`
  // held till then.
  PartEncoding Begin(PartEncoding before);

  // `lineEnd` is that of the line in the mailbox. Raises for a line that can't be decoded, and then
  // writes nothing of it.
  void WriteLine(TextWriter& file, std::string_view line, std::string_view lineEnd, PartEncoding encoding);

  // The part ended with its mail and not at a boundary, to which the end of the last line would belong.
  void EndWithMail(TextWriter& file);

 private:
  void Clear();
  std::string_view Unquoted(std::string_view line) const;
  void WriteText(TextWriter& file, std::string_view line, std::string_view lineEnd);
  std::string_view DecodeQuotedPrintable(std::string_view line);
  void DecodeBase64(TextWriter& file, std::string_view text);

  const TransferEncodings encodings_ = CurrentRules().transferEncodings;
  const Separators separators_ = CurrentRules().separators;
  const PartLineEnds lineEnds_ = CurrentRules().partLineEnds;
  std::string decoded_;              // kept from line to line for its memory
  std::string_view pendingLineEnd_;  // of the line written last, until another one follows
  bool isAfterEmptyLine_ = false;
  bool goesOn_ = false;  // more comes of the line written last
  Base64Reader base64_;
};

}  // namespace vorlent
