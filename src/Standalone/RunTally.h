// The tally of a run over mails: what became of each.
#pragma once

#include <cstdint>
#include <vector>

#include "Host/MailRunObserver.h"

namespace vorlent {

// Every mail found is delivered whole, passed over as expunged, or failed.
class RunTally : public MailRunObserver {
 public:
  struct FailedMail {
    MailPlace place;
    Cause why;
  };
  // One that was delivered and should be marked as deleted.
  struct UnmarkedMail {
    MailPlace place;
    Marking why;
  };

  std::int64_t Delivered() const { return delivered_; }
  std::int64_t Expunged() const { return expunged_; }
  const std::vector<FailedMail>& Failed() const { return failed_; }
  const std::vector<UnmarkedMail>& Unmarked() const { return unmarked_; }
  // What a person can do about the mails that failed, and about what ended the run; each once.
  std::vector<Hint> HintsWith(const Cause& failure) const;
  std::int64_t Found() const { return delivered_ + expunged_ + static_cast<std::int64_t>(failed_.size()); }

  void MailsExpunged(std::int32_t count) override { expunged_ += count; }
  void MailDelivered(const MailPlace&, bool) override { ++delivered_; }
  void MailFailed(const MailPlace& mail, const Cause& why) override { failed_.push_back({mail, why}); }
  void MailNotMarked(const MailPlace& mail, Marking why) override { unmarked_.push_back({mail, why}); }

 protected:
  // A mail that was delivered has failed all the same.
  void TakeBack(const MailPlace& mail, const Cause& why) {
    --delivered_;
    failed_.push_back({mail, why});
  }

 private:
  std::int64_t delivered_ = 0;
  std::int64_t expunged_ = 0;
  std::vector<FailedMail> failed_;
  std::vector<UnmarkedMail> unmarked_;
};

}  // namespace vorlent
