// What became of every mail that a run saw.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Connectors/Mozilla/StdMail.h"
#include "Platform/Failure.h"

namespace vorlent {

// Every mail found is delivered whole, passed over as expunged, or failed.
struct MailAccount {
  // A mail that was not delivered, or not whole: its mailbox, its zero-based offset there, and why.
  struct Failed {
    std::string mailbox;
    std::int32_t offset;
    std::string reason;
  };

  std::int64_t delivered = 0;
  std::int64_t expunged = 0;
  std::vector<Failed> failed;
  std::vector<Failed> unmarked;  // those delivered that should be marked as deleted and aren't

  std::int64_t Found() const { return delivered + expunged + static_cast<std::int64_t>(failed.size()); }

  // This account together with what its host found wrong with mails that were delivered.
  MailAccount With(const MailAccount& doubts) const {
    MailAccount sum = *this;
    sum.delivered -= static_cast<std::int64_t>(doubts.failed.size());
    sum.failed.insert(sum.failed.end(), doubts.failed.begin(), doubts.failed.end());
    sum.unmarked.insert(sum.unmarked.end(), doubts.unmarked.begin(), doubts.unmarked.end());
    return sum;
  }

  // Runs what reads and delivers one mail; a failure is noted for the mail at hand and rises.
  template <class Step>
  auto Guard(const StdMail& mail, Step&& step) {
    try {
      return step();
    } catch (const Failure& failure) {
      failed.push_back({mail.MailboxFile(), mail.Offset(), failure.what()});
      throw;
    }
  }

  // Marks a delivered mail of the reader's mailbox as deleted, and notes one that can't be.
  void Delete(StdMail& mail, std::int32_t offset) {
    if (mail.DeleteMail(offset)) return;
    unmarked.push_back(
        {mail.MailboxFile(), offset, "it has no header X-Mozilla-Status, or Thunderbird is running"});
  }

  // Notes the mail at hand as one whose place in the mailbox can't be told.
  void NoteHidden(const StdMail& mail) {
    unmarked.push_back({mail.MailboxFile(), mail.Offset(), "its own header Address hides its place"});
  }

  // Counts a mail that was delivered, as failed if not all of its files could be written.
  void CountDelivered(const StdMail& mail) {
    if (mail.WriteFailure().empty()) {
      ++delivered;
    } else {
      failed.push_back({mail.MailboxFile(), mail.Offset(), mail.WriteFailure()});
    }
  }
};

}  // namespace vorlent
