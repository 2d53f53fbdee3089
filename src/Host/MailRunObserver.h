// What becomes of the mails of a run, told to whoever accounts for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Host/Location.h"
#include "Platform/Failure.h"
#include "Platform/Public.h"

namespace vorlent {

// What marking a mail as deleted came to.
enum class Marking {
  Marked,
  NoStatus,     // it has no header X-Mozilla-Status, and stays as it was
  BadStatus,    // the last character of its status was changed, and still it doesn't count as deleted
  NoNumber,     // its status is no number, and stays as it was
  OtherMail,    // what was read there doesn't stand there any more, and what does stays as it is
  HiddenPlace,  // its own header Address hides its place in the mailbox
  KeptByUser,   // Thunderbird is running, and the user wants it to stay so
  Unreadable,   // the mailbox could be opened, but not be read or written there
  ReadOnly,     // the mailbox may not be written, or is none
};

// A mail by its mailbox and its zero-based offset there.
struct MailPlace {
  std::string mailbox;
  std::int64_t offset = 0;
};

// Every member does nothing unless it is overridden, and is called on the thread of the run. Texts are code
// page. A failure raised by a member ends the run where it stands.
class VORLENT_PUBLIC MailRunObserver {
 public:
  virtual ~MailRunObserver() = default;

  // An import has found its target. `moves` says whether the mails that it imports will be marked.
  virtual void ImportBegins(const LocationPtr& /*target*/, bool /*moves*/) {}

  // Every mail that is found is passed over as expunged, delivered whole, or failed; a failed one may have
  // been delivered in part. What of a mailbox can't be read in the search for a mail counts as one that
  // failed.
  virtual void MailsExpunged(std::int32_t /*count*/) {}
  // One that hides its place has a header Address of its own, by which another place in the mailbox would be
  // taken for its own.
  virtual void MailDelivered(const MailPlace& /*mail*/, bool /*hidesPlace*/) {}
  // Comes before either: the attachment of a data field lies at `path` and not where the mail's record says,
  // as no file can have its name.
  virtual void AttachmentUnmoved(std::string_view /*key*/, std::string_view /*path*/) {}
  virtual void MailFailed(const MailPlace& /*mail*/, const Cause& /*why*/) {}

  // The mails of a mailbox are about to be marked as deleted. Comes once, before the first of them, and with
  // the mailbox closed.
  virtual void MarkingBegins(const std::string& /*mailbox*/) {}
  // A mail that should be marked as deleted isn't.
  virtual void MailNotMarked(const MailPlace& /*mail*/, Marking /*why*/) {}
};

}  // namespace vorlent
