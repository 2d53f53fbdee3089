// The mail engine: reads an mbox mail by mail, splits mails into files, makes item records of them and marks
// mails as deleted.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/KeyedList.h"
#include "Common/TextWriter.h"
#include "Connectors/Mozilla/MailLedger.h"
#include "Connectors/Mozilla/MailLines.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/PartNumber.h"
#include "Connectors/Mozilla/ReadMails.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/MailRunObserver.h"
#include "Host/Object.h"
#include "Platform/Failure.h"

namespace vorlent {

// Set by the user's answer that mails may be deleted while Thunderbird runs; from then on no mail asks again,
// for as long as the component is loaded.
bool& NoThunderbirdCheck();

// Bound to one mailbox file, which it reads as a forward stream of mails. A mail begins with a separator
// (MailSeparator.h) at the beginning of the stream or after an empty line. Mails whose X-Mozilla-Status has
// the bit of value 8 are skipped.
//
// Lines end by the rule in force when the mailbox is opened (Platform/Rules.h). By the rules of old a
// position above 2 GB raises Overflow.
class StdMail : public Object {
 public:
  using TextList = KeyedList<std::string>;
  using TextListPtr = std::shared_ptr<TextList>;

  // Path of the mbox file; set before InitStream. Another one makes forget the mails that were read.
  const std::string& MailboxFile() const { return mailboxFile_; }
  void SetMailboxFile(std::string_view path);

  // Header store of the current mail: whole unfolded header lines by their lower-case name. The separator
  // line, "Received" and "Return-Path" headers stand there without a key; of all others only the first of a
  // name. ReadHeader puts a new list in its place for each mail.
  const TextListPtr& Headers() const { return headers_; }
  void SetHeaders(TextListPtr headers) { headers_ = std::move(headers); }

  // Body lines collected by ReadStream.
  const TextListPtr& BodyLines() const { return bodyLines_; }
  void SetBodyLines(TextListPtr lines) { bodyLines_ = std::move(lines); }

  // The raw header block of each MIME part of the mail, text parts included.
  const TextListPtr& Attachments() const { return attachments_; }
  void SetAttachments(TextListPtr attachments) { attachments_ = std::move(attachments); }

  // Progress as a fraction from 0 to 1.
  double Percent() const { return percent_; }
  void SetPercent(double percent) { percent_ = percent; }

  // Lines read for the current mail by ReadHeader, those of expunged mails before it included.
  std::int64_t LineCount() const { return lineCount_; }
  void SetLineCount(std::int64_t count) { lineCount_ = count; }

  // Size of the current mail in bytes as ReadHeader counted it.
  double ReadCount() const { return readCount_; }
  void SetReadCount(double count) { readCount_ = count; }

  // The current mail produced mail.html.
  bool hasHTML() const { return hasHTML_; }
  void SethasHTML(bool has) { hasHTML_ = has; }

  // Prefix of the names of temporary files: a folder with its closing separator.
  const std::string& mailtmppfad() const { return mailtmppfad_; }
  void Setmailtmppfad(std::string_view prefix) { mailtmppfad_ = prefix; }

  // The value of a header, "" if there is none; with `all` the whole line, name included. Never raises.
  std::string GetHeader(std::string_view key, bool all = false) const;

  // All stored headers, each followed by CR LF.
  std::string GetAllHeaders() const;

  // All body lines, each followed by CR LF. As long as the lines were when ReadStream collected them.
  std::string Body() const;

  // Opens the mailbox. By the rules of old it is created empty if it is missing, and raises if it is locked
  // or read-only; by those of today it is only read.
  // `saveflag` tells ReadStream what to write: -1 collects body lines, -2 the mail without the contents of
  // its attachments, 0 the text outside all parts, n the decoded content of part n.
  void InitStream(std::int16_t saveflag = 0);

  // Reads the next mail's headers and walks its parts. With `saveattachments` the mail is split into files:
  // mail.eml without attachments, the decoded mail.html, and the decoded attachments as att1, att2, ...; the
  // numbers are positions in Attachments. With `waitforfrom` false the mail begins on the next line, whatever
  // that is, and the stream is closed after it. False at the end of the mailbox.
  //
  // Up to the end of the header block a failure to write or read rises, or, by the rules of today, the mail
  // is passed over; in the body the failing step is skipped.
  bool ReadHeader(bool saveattachments, bool waitforfrom = true);

  // Reads the next mail and writes to `bodyfile`, or collects, what `saveflag` says. False if there was none.
  // Every failure but that of reading rises.
  bool ReadStream(std::string_view bodyfile = {});

  // Moves `bodyfile` to `file`; without one writes headers, an empty line and body lines to it.
  void SaveMail(std::string_view file, std::string_view bodyfile) const;

  // Whether ReadHeader is to note the IDs of the mails that it passes over as expunged.
  void NoteExpunged(bool note) { notesExpunged_ = note; }

  // Display text of the mail's date, by the sender's clock or the reader's (MailTimes in Platform/Rules.h).
  // By the rules of today, where its own header tells none, that of the topmost trace which does, else of
  // the separator; "" if there is none either.
  std::string GetDate() const;
  // The same by the sender's clock and without the separator's, which mail clients write anew.
  std::string SentDate() const;

  // Makes an empty file of `file`.
  void Delete(std::string_view file) const;

  // Does nothing on a closed stream.
  void CloseStream();

  // Brings the mail at a zero-based offset out of the mailbox as `file`; `attach` as in InitStream. `dat` is
  // the display text of the file's time. An offset beyond the end leaves no file.
  void SaveAttachmentFile(std::string_view file, std::int64_t offset, std::int16_t attach,
                          std::string_view dat) {
    SavePart(file, offset, {attach}, dat);
  }
  // The same for a part that may be nested in another one, by the rules of today.
  void SavePart(std::string_view file, std::int64_t offset, PartNumber part, std::string_view dat);

  // Marks the mail at a zero-based offset as expunged by changing one digit in place, and deletes the
  // mailbox's summary file. Asks first to close a running Thunderbird; on the answer Cancel nothing happens.
  //
  // A mail that ReadHeader read at this offset is marked only if it still stands there, and a mailbox that is
  // gone isn't made again; at an offset where nothing was read, whatever stands there is marked. `isWanted`,
  // if given, is asked after the user, with the mail at the offset read without its files, be it marked
  // already; where there is none, or on false, none is marked.
  //
  // A mailbox that can't be opened raises, or, by the rules of today, tells that it is read-only; later
  // failures to read and write are swallowed.
  Marking DeleteMail(std::int64_t offset, const std::function<bool()>& isWanted = nullptr);

  // The item record of the mail read last. `kw` is the text of its keywords, in record form;
  // `saveattachments` as given to ReadHeader. Moves attachments to their own names. Never raises.
  std::string GetData(std::string_view kw, bool saveattachments);

  // CR LF, "size=" and the length, and CR LF, "attr=" and the attributes if there are any; "" for a missing
  // file.
  std::string GetFileInfo(std::string_view file) const;

  void DeleteLastTempfiles();
  // Registers a file for DeleteLastTempfiles.
  void AddTempfile(std::string_view file);

  // Adds one line to the header store; a continuation line is joined to the last header with its line break
  // kept. Never raises.
  void AddHeader(std::string_view a);

  // What runs that import mails must know of them, beside all this.
  const MailLedger& Ledger() const { return ledger_; }

 private:
  friend bool ReadHeaderAt(StdMail& mail, std::int64_t offset);
  class HeaderReader;
  class StreamReader;
  class RecordWriter;

  TextList& HeaderStore() const;
  // What to do with mails that are marked as expunged.
  enum class Expunged { PassOver, Read };

  void OpenStream(os::File::Mode mode);
  bool ReadMailHere(Expunged expunged);
  Marking LookForWanted(std::int64_t offset, const std::function<bool()>& isWanted);
  Marking MarkAt(std::int64_t offset);
  bool IsStreamDone();
  std::string_view ReadStreamLine();
  // Writes the line read last, without an end of its own if more of it comes.
  void WriteStreamLine(TextWriter& file, std::string_view line);
  void ResetMailScan();
  // Whether a mail begins on the line read last, which may lie elsewhere then. Asked for every line of a
  // mailbox.
  bool IsFromLine(std::string_view& line) {
    return lastLineEmpty_ && MayBeSeparator(line) && Separates(line);
  }
  bool Separates(std::string_view& line);
  bool AtMailEnd(std::string_view& line);
  bool FindLivingMail(std::string_view& line);
  bool FindNextSeparator(std::string_view& line);
  bool IsLastLineLost();
  // A step that reads. If it fails, the text ends there, and what would have come is noted as lost.
  template <class Step>
  bool ReadStep(Step&& step) {
    try {
      std::forward<Step>(step)();
      return true;
    } catch (const Failure& failure) {
      ledger_.NoteLoss(failure.Why());
      return false;
    }
  }
  std::int32_t LookForStatus();

  std::string mailboxFile_;
  TextListPtr headers_ = std::make_shared<TextList>();
  TextListPtr bodyLines_ = std::make_shared<TextList>();
  TextListPtr attachments_ = std::make_shared<TextList>();
  double percent_ = 0;
  std::int64_t lineCount_ = 0;
  double readCount_ = 0;
  bool hasHTML_ = false;
  bool notesExpunged_ = false;
  std::string mailtmppfad_;

  MailLedger ledger_;
  ReadMails readMails_;
  MailLines lines_;
  bool lastLineEmpty_ = true;
  bool atStreamStart_ = true;
  std::int64_t bodySize_ = 0;
  PartNumber saved_;                     // what InitStream calls `saveflag`
  std::vector<PartNumber> partNumbers_;  // of Attachments, where the mail wasn't split into files
  std::vector<std::string> tempfiles_;
  // A date header with what it says.
  struct Date {
    std::string header;
    std::string display;
  };
  mutable std::optional<Date> lastDate_;
  std::string lastHeaderKey_;
  bool lastHeaderLeftOut_ = false;
};

// Opens the reader's mailbox, which must exist, reads the mail at a zero-based offset without its files, and
// closes. False if no mail begins there, or one that is marked as expunged.
bool ReadHeaderAt(StdMail& mail, std::int64_t offset);

}  // namespace vorlent
