// What the two runs over mails, the stream and the import, have to tell of each.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "Connectors/Mozilla/StdMail.h"
#include "Host/MailRunObserver.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

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
    try {
      mail.InitStream(0);
    } catch (const Failure& failure) {
      if (CurrentRules().brokenMails == BrokenMails::EndTheRun) throw;
      Observer().MailFailed({mail.MailboxFile(), 0}, failure.Why());
    }
  }

  // Reads the next mail and runs what delivers it; false at the end of the mailbox, or if it can't be read
  // on. Any other failure rises.
  template <class Deliver>
  bool DeliverNext(StdMail& mail, bool saveattachments, Deliver&& deliver) const {
    const std::int32_t& expunged = mail.Ledger().expungedCount;
    std::int32_t expungedTold = expunged;
    const auto tellExpunged = [&] {
      const std::int32_t count = expunged - std::exchange(expungedTold, expunged);
      if (count > 0) Observer().MailsExpunged(count);
    };
    bool found = false;
    try {
      found = mail.ReadHeader(saveattachments, true);
      tellExpunged();
      TellBroken(mail);
      if (found) std::forward<Deliver>(deliver)();
    } catch (const Failure& failure) {
      tellExpunged();
      if (!found) TellBroken(mail);
      Observer().MailFailed(PlaceOf(mail), failure.Why());
      throw;
    }
    if (found) {
      TellDelivered(mail);
    } else {
      TellLoss(mail);
    }
    return found;
  }

  // Before the first mail of a mailbox is marked as deleted.
  void MarkingBegins(const StdMail& mail) const { Observer().MarkingBegins(mail.MailboxFile()); }
  // Marks a mail of the reader's mailbox as deleted, in the way of DeleteMail.
  template <class... IsWanted>
  void Mark(StdMail& mail, std::int32_t offset, const IsWanted&... isWanted) const {
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
};

}  // namespace vorlent
