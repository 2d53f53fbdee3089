// The stream: one mail at a time, without ever holding a mailbox in memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "Common/KeyedList.h"
#include "Connectors/Mozilla/MailRunTeller.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Host/Tree.h"

namespace vorlent {

// What a pump needs of its connector. All of it must outlive the pump.
struct PumpSource {
  std::function<std::string()> address;     // the Location's, as it stands in the reports
  const KeyedList<std::string>& files;      // the mailboxes
  const KeyedList<std::string>& addresses;  // the address of each
  std::function<std::unique_ptr<StdMail>()> makeReader;
  const MailRunTeller& teller;
};

// One run over mailboxes: gives the record of each mail, yields to the host after it, and marks those that
// the host wants deleted at the end of their mailbox. Swallows nothing: after a failure the run stands where
// it stood.
//
// Runs on the host's thread. The host may do things of its own in the yields, but not call the pump.
class MailPump {
 public:
  // `keywords`, which may be nothing, gets the keyword path of each mailbox. With `saveattachments` the mails
  // are split into files, which stay until the next call of GetNext.
  MailPump(PumpSource source, TreePtr keywords, bool saveattachments);

  // Opens the host's progress display. Comes first.
  void Begin();
  // The record of the next mail; false at the end of the run, which needs a new pump after it.
  bool GetNext(std::string& record);
  // Notes the mail delivered last for deletion, unless it isn't there whole.
  void Delete();

 private:
  void Start();
  void OpenMailbox();
  void FinishMailbox();
  void MarkNoted();
  void Deliver(std::string& record);
  std::string WithIdOfItsOwn(std::string record);
  void ReportProgress(double bytes) const;
  void End();
  // Raises ObjectNotSet where the run hasn't started, or has ended.
  StdMail& Reader() const;
  // The title of the run, as it stands in each of its reports.
  std::string Title() const;

  // Sizes and times are floats, as they go into texts and quotients.
  PumpSource source_;
  TreePtr tree_;
  bool saveAttachments_;
  std::unique_ptr<StdMail> mail_;  // nothing before the start and after the end
  std::int32_t delivered_ = 0;
  double totalBytes_ = 0;
  double doneBytes_ = 0;  // of the mailboxes finished so far

  // Of the mailbox at hand.
  std::int32_t index_ = 0;    // its position in the list, 0 before the first
  bool needsMailbox_ = true;  // the next call must open one
  double fileBytes_ = 0;
  // At its start the mails delivered before and the seconds since midnight; at its end how many mails it had
  // and how long it took.
  std::int32_t count_ = 0;
  double seconds_ = 0;
  std::string keywords_;
  // Where mails that shall go stand, in the order in which they were noted: the numbers of their headers
  // Address. Only when it is marked is one found to be no offset at all.
  std::vector<double> noted_;
  double place_ = 0;  // of the mail delivered last
  MailIds ids_;
  std::unordered_set<std::string> givenIds_;  // in lower case, where IDs are numbered
};

}  // namespace vorlent
