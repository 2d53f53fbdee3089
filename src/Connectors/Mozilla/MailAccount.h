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

  std::int64_t Found() const { return delivered + expunged + static_cast<std::int64_t>(failed.size()); }

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
