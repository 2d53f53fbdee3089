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

#include "Connectors/Mozilla/MailAccount.h"
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
  // The run ended, by itself or with a failure (a text for the user, else empty): shows what became of every
  // mail. Waits until the window is closed.
  void ShowResult(const MailAccount& account, const QString& failure);

  // Asks to stop while the run is on, and closes the window behind it.
  void reject() override;

 private:
  // What the host has to say against a Location: into the log of a run, before it in a message box.
  void Tell(std::string_view error);
  void ShowRate(double percent);

  std::function<void()> cancel_;
  QLabel* status_;
  QProgressBar* bar_;
  QLabel* rate_;
  QPlainTextEdit* log_;
  QPushButton* button_;
  QElapsedTimer running_;
  QElapsedTimer lastShown_;
  bool opened_ = false;
  bool isRunning_ = false;
};

}  // namespace vorlent::wizard
