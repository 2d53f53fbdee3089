// The import on the screen while it runs.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <functional>
#include <string>
#include <string_view>

#include "Standalone/HostObserver.h"

namespace vorlent::wizard {

// Title, mailbox at hand, percentage, mails by second, time left, the log, and a button that asks the run to
// stop. It stays open behind the run with what became of it, until the user closes it.
class ImportProgress : public QDialog, public HostObserver {
 public:
  // `cancel` is called when the user wants to stop.
  ImportProgress(std::function<void()> cancel, QWidget* parent);

  void ProgressOpened(std::string_view title) override;
  void ProgressMoved(double percent) override;
  void ProgressClosed() override;
  void StatusChanged(std::string_view text) override;
  void LogLine(std::string_view line) override;
  void LocationUnreadable(std::string_view reason) override;
  void ErrorRaised(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override;

  // Whether a run was ever begun.
  bool WasOpened() const { return opened_; }
  // Errors that were told while nothing was open to show them, each with a line feed.
  const QString& Errors() const { return errors_; }
  // The run ended, by itself or with a failure (a text for the user, else empty). Waits until the window is
  // closed.
  void ShowResult(const QString& failure);

  // Asks to stop while the run is on, and closes the window behind it.
  void reject() override;

 private:
  void ShowRate(double percent);

  std::function<void()> cancel_;
  QLabel* status_;
  QProgressBar* bar_;
  QLabel* rate_;
  QPlainTextEdit* log_;
  QPushButton* button_;
  QString errors_;
  QElapsedTimer running_;
  QElapsedTimer lastShown_;
  bool opened_ = false;
  bool isRunning_ = false;
  int mails_ = 0;
  int mailsBefore_ = 0;  // of the mailboxes that are finished
};

}  // namespace vorlent::wizard
