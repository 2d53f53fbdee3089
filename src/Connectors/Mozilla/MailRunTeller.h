// What the two runs over mails, the stream and the import, have to tell of each.
#pragma once

#include <cstdint>
#include <string>

#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/MailboxFiles.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Host/MailRunObserver.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"

namespace vorlent {

// Tells an observer, if there is one, what becomes of the mails of a reader.
class MailRunTeller {
 public:
  // The observer must outlive its use here; null for nobody.
  void SetObserver(MailRunObserver* observer) { observer_ = observer; }

  void ImportBegins(const LocationPtr& target, bool moves) const { Observer().ImportBegins(target, moves); }

  // Opens the reader's mailbox for a run. By the rules of today one that can't be opened counts as a mail
  // that failed, and reads as empty.
  void Open(StdMail& mail) const {
    isOfMails_ = false;
    try {
      mail.InitStream(0);
    } catch (const Failure& failure) {
      if (!BrokenItemsAreNamed()) throw;
      isOfMails_ = true;
      Observer().MailFailed({mail.MailboxFile(), 0}, failure.Why());
    }
  }

  // The size of a mailbox of a run. By the rules of today one that isn't there has none, and is told when it
  // is opened.
  static double SizeOf(const std::string& mailbox) {
    double size = 0;
    const auto measure = [&] { size = static_cast<double>(os::FileLength(mailbox)); };
    BrokenItemsAreNamed() ? static_cast<void>(Swallow(measure)) : measure();
    return size;
  }

  // Reads the next mail and runs what delivers it; false at the end of the mailbox, or if it can't be read
  // on. Any other failure rises; by the rules of today a mail that can't be delivered is passed over, unless
  // too many are in a row.
  template <class Deliver>
  bool DeliverNext(StdMail& mail, bool saveattachments, Deliver&& deliver) const {
    while (FindNext(mail, saveattachments)) {
      try {
        deliver();
      } catch (const Failure& failure) {
        Observer().MailFailed(PlaceOf(mail), failure.Why());
        if (!failures_.GoesOn()) throw;
        continue;
      }
      failures_.Delivered();
      TellDelivered(mail);
      return true;
    }
    return false;
  }

  // Before the first mail of a mailbox is marked as deleted.
  void MarkingBegins(const StdMail& mail) const { Observer().MarkingBegins(mail.MailboxFile()); }
  // Marks a mail of the reader's mailbox as deleted, in the way of DeleteMail.
  template <class... IsWanted>
  void Mark(StdMail& mail, std::int64_t offset, const IsWanted&... isWanted) const {
    const Marking result = mail.DeleteMail(offset, isWanted...);
    if (result != Marking::Marked) Observer().MailNotMarked({mail.MailboxFile(), offset}, result);
  }
  // The mail at hand should be marked and can't, as it hides its place.
  void TellHidden(const StdMail& mail) const {
    Observer().MailNotMarked(PlaceOf(mail), Marking::HiddenPlace);
  }

 private:
  static MailPlace PlaceOf(const StdMail& mail) { return {mail.MailboxFile(), mail.Ledger().offset}; }

  MailRunObserver& Observer() const {
    static MailRunObserver nobody;
    return observer_ == nullptr ? nobody : *observer_;
  }

  bool FindNext(StdMail& mail, bool saveattachments) const {
    const std::int32_t& expunged = mail.Ledger().expungedCount;
    const std::int32_t expungedBefore = expunged;
    const auto tellPassedOver = [&] {
      if (expunged > expungedBefore) Observer().MailsExpunged(expunged - expungedBefore);
      TellBroken(mail);
    };
    bool found = false;
    try {
      found = mail.ReadHeader(saveattachments, true);
    } catch (const Failure& failure) {
      tellPassedOver();
      Observer().MailFailed(PlaceOf(mail), failure.Why());
      throw;
    }
    tellPassedOver();
    if (!found) TellLoss(mail);
    isOfMails_ = isOfMails_ || found;
    if (!isOfMails_ && mail.Ledger().IsWhole() && BrokenItemsAreNamed() &&
        HoldsSomethingElse(mail.MailboxFile()))
      Observer().MailFailed({mail.MailboxFile(), 0}, {.reason = std::string(kNoMailInIt)});
    return found;
  }

  // One that isn't there whole counts as failed.
  void TellDelivered(const StdMail& mail) const {
    for (const auto& [key, path] : mail.Ledger().unmoved)
      Observer().AttachmentUnmoved(key, path);
    if (mail.Ledger().IsWhole()) Observer().MailDelivered(PlaceOf(mail), mail.Ledger().hidesOffset);
    TellLoss(mail);
  }
  void TellBroken(const StdMail& mail) const {
    for (const auto& [offset, why] : mail.Ledger().broken)
      Observer().MailFailed({mail.MailboxFile(), offset}, why);
  }
  void TellLoss(const StdMail& mail) const {
    if (!mail.Ledger().IsWhole()) Observer().MailFailed(PlaceOf(mail), mail.Ledger().loss);
  }

  MailRunObserver* observer_ = nullptr;
  mutable DeliveryFailures failures_;
  mutable bool isOfMails_ = false;  // the mailbox that was opened last
};

}  // namespace vorlent
