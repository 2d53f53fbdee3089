// The import on the screen while it runs.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "Apps/Wizard/LogView.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/HostObserver.h"

namespace vorlent::wizard {

// Title, mailbox at hand, percentage, mails by second, time left, the log, and a button to stop the run. That
// asks first, and the run goes on meanwhile. The window stays open after the run with what became of it,
// until the user closes it. All on the thread of Qt, which is the one that runs the import: it yields between
// mails.
class ImportProgress : public QDialog, public HostObserver {
 public:
  // The flag by which a run is told to stop; asked for only while there is one.
  using CancelFlag = std::function<std::atomic<bool>&()>;

  ImportProgress(CancelFlag cancelFlag, QWidget* parent);

  void ProgressOpened(std::string_view title) override;
  void ProgressMoved(double percent) override;
  void ProgressClosed() override;
  void StatusChanged(std::string_view text) override;
  void LogLine(std::string_view line) override;
  void LocationUnreadable(const Cause& why) override;
  void ErrorRaised(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override;

  // The tally of the run to come, of which the mails by second are shown; null for none.
  void Watch(const RunTally* tally) { tally_ = tally; }
  // Whether a run was begun since the last result.
  bool WasOpened() const { return opened_; }
  // The run ended, by itself or with a failure (else empty): shows what became of every
  // mail. Waits until the window is closed; true if the user wants to go back to the wizard, which a failure
  // offers.
  bool ShowResult(const ArchiveImport& import, const Cause& failure);

  // Asks whether to stop while the run is on, and closes the window after it.
  void reject() override;

 private:
  // What the host has to say against a Location: into the log of a run, before it in a message box.
  void Tell(const QString& error);
  void End();
  void ShowRate();
  void ShowHowFar();
  void Stop();

  CancelFlag cancelFlag_;
  const RunTally* tally_ = nullptr;
  QLabel* status_;
  QProgressBar* bar_;
  QLabel* rate_;
  LogView* log_;
  QPushButton* back_;
  QPushButton* button_;
  QMessageBox* question_;
  QElapsedTimer running_;
  QElapsedTimer lastShown_;
  double percent_ = 0;
  bool opened_ = false;
  bool isRunning_ = false;
};

}  // namespace vorlent::wizard
