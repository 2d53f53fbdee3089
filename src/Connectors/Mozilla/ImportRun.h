// The import run: mailboxes into a Location of the host.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/MailRunTeller.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Host/HostGlobal.h"

namespace vorlent {

// Reads every mail of the command's mailboxes, makes an item of the target Location of each and moves its
// files into it; with "action move" the imported mails of a mailbox are deleted after its last one. Reports
// progress and speed, and after each mail yields to the platform and asks the host whether it was cancelled.
//
// Runs on the host's thread; what the host does in the yields must not begin another run on the same objects.
//
// A target that isn't there is told to the user. Any other failure ends the run where it stands and rises:
// the progress display stays open, and the mails of the mailbox at hand stay in it.
class ImportRun {
 public:
  // The observer must outlive the run; null for nobody.
  explicit ImportRun(std::string_view cmd, MailRunObserver* observer = nullptr);

  // Carries the command out, once.
  void Run();

 private:
  bool FindTarget();
  void Open();
  void ImportMailbox(std::int32_t position);
  void ImportMails();
  void ImportMail();
  void NoteForDeletion();
  void TakeFiles(Item& item);
  void DeleteImportedMails();
  void ReportMailbox();
  void Close();
  void RebuildTopics();

  void OpenTree();
  void CloseTree();

  std::string KeywordsOf(const std::string& mailbox) const;

  HostGlobal& host_;
  MailRunTeller teller_;
  StdMail mail_;
  ImportCommand command_;
  std::string keywords_;
  LocationPtr location_;
  TreePtr tree_;  // with "option tree" only
  std::int32_t itemsDone_ = 0;
  double totalBytes_ = 0;
  double bytesDone_ = 0;  // of the mailboxes finished so far

  // Of the mailbox at hand.
  double fileBytes_ = 0;
  std::string fileKeywords_;
  std::deque<std::int64_t> deleteList_;  // offsets of the imported mails, with "action move" only
  double startTime_ = 0;
  std::int32_t itemsBefore_ = 0;
};

}  // namespace vorlent
