// Building a mail in a mailbox out of a stored mail and the files beside it.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Common/LineFile.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/Item.h"

namespace vorlent {

// How WriteFileEncoded writes a file; any other number is the file line by line as it stands.
inline constexpr std::int16_t kBase64File = 1;
inline constexpr std::int16_t kQuotedPrintableFile = 2;

// Whether a file of this length loses its content when it goes back in base64, as one of exactly 54 bytes
// does by the rules of old.
bool ComesBackEmpty(std::uint64_t length);

// Writes a file into a mail. Swallows every failure; a file that isn't there writes nothing. In base64, by
// the rules of old, a file of exactly 54 bytes comes out as one empty line.
void WriteFileEncoded(TextWriter& out, std::string_view file, std::int16_t mode);

// Makes the folders of a mailbox, and an empty mailbox for each of its parent folders that has none; the
// mailbox itself isn't made. Raises what the file system refuses.
void EnsureMailboxPath(std::string_view mailbox);

// Copies one stored mail line by line to a mailbox, with the item's attachments put back in, or its header
// and a link to the item alone. Attachments go to the end of the multipart that they stood in, where that is
// known, else of the whole mail, named by the rules in force (AttachmentHeaders.h). Swallows every failure
// step by step: what can't be done is left out.
class MailRestorer {
 public:
  // `mail` keeps the header, and may be nothing: the mail's own content type is lost then. All are used as
  // long as this object lives.
  MailRestorer(TextWriter& out, const Item& itm, StdMail* mail, bool shortcut);

  // Writes the whole mail but closes nothing. False if a step was left out; what is missing of an
  // attachment's file, or in the writer, isn't seen here.
  bool Restore(LineFile& source);

 private:
  enum class Stage { Header, Body, Done };

  template <class Step>
  void Try(Step&& step);
  bool IsHeldBack() const;
  bool IsSoleFile(LineFile& source) const;
  void WriteSoleFile();
  void WriteMissingSeparator(LineFile& source);
  void TakeLine(LineFile& source);
  void TakeHeaderLine(std::string_view line);
  void EndHeader();
  void BeginParts(const std::string& contentType);
  void TakeBodyLine(std::string_view line);
  void Write(std::string_view line);
  void CollectAttachments();
  bool TakesAttachments(const std::string& contentType) const;
  void PutAttachmentsBefore(std::string_view line);
  template <class IsTheirs>
  void PutAttachments(const std::string& boundary, IsTheirs&& isTheirs);
  void WriteAttachment(const std::string& key, const std::string& boundaryLine);
  void EndMail();

  TextWriter& out_;
  const Item& itm_;
  StdMail* const mail_;
  const bool shortcut_;
  bool isWhole_ = true;
  bool endsInEmptyLine_ = false;
  bool isSoleFile_ = false;  // the mail is nothing but its only attachment
  Stage stage_ = Stage::Header;
  bool goesOn_ = false;  // more of the line at hand comes
  std::string header_;   // name of the header at hand, in lower case
  // An attachment that isn't written yet: its data field, and the boundary of the multipart that it stood in,
  // "" if that isn't known.
  struct Attachment {
    std::string key;
    std::string home;
  };
  std::vector<Attachment> attachments_;
  std::set<std::string, std::less<>> homes_;  // those that are still open
  // Of the mail's own multipart, which takes those without a known home; "" unless there are attachments.
  std::string boundary_;
  BoundaryPair ownLines_;
  bool isClosed_ = false;  // its closing line is written
};

}  // namespace vorlent
