// What the component and the host tell, on standard error.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Apps/CommandLine/Terminal.h"
#include "Platform/SystemPlatform.h"
#include "Standalone/HostObserver.h"

namespace vorlent::app {

class Console : public HostObserver {
 public:
  Console(bool verbose, bool databaseLog) : verbose_(verbose), databaseLog_(databaseLog) {}

  void ProgressOpened(std::string_view title) override;
  void ProgressMoved(double percent) override;
  void ProgressClosed() override;
  void StatusChanged(std::string_view text) override;
  void LogLine(std::string_view line) override;
  void DatabaseLogLine(std::string_view line) override;
  void Remarked(const Cause& what) override;
  void LocationUnreadable(const Cause& why) override;
  void ErrorRaised(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override;
  void ErrorRaisedForDrive(std::string_view source, std::string_view text) override;
  void ItemPasted(std::string_view record, const ItemPtr& item) override;

  // Counts a mail for the progress bar's rate.
  void CountMail() { bar_.CountMail(); }

  // A line of the program itself, which takes the progress bar away.
  void Say(std::string_view utf8);
  // As Say, with "vorlent-mozilla: " before it.
  void Complain(std::string_view utf8);

  // An error that the component told by a message box.
  void BoxShown(std::string_view text, std::string_view title, bool isError);

  struct ToldError {
    std::string text;        // UTF-8
    bool isOfDrive = false;  // as HostError::RaiseForDrive tells it
  };

  // The errors that the component told since the last call of Forget.
  bool HasErrors() const { return !errors_.empty(); }
  const std::vector<ToldError>& Errors() const { return errors_; }
  // How many mails, mailboxes, bookmarks and events of them could not be read, or not whole.
  int UnreadCount() const { return unreadCount_; }
  void Forget() {
    errors_.clear();
    unreadCount_ = 0;
  }

  // While muted nothing is shown, but errors are still noted.
  void Mute(bool muted) { muted_ = muted; }

 private:
  void NoteError(ToldError error);

  bool verbose_;
  bool databaseLog_;
  bool muted_ = false;
  ProgressBar bar_;
  std::vector<ToldError> errors_;
  int unreadCount_ = 0;
  std::set<std::string> remarks_;  // that were shown
};

// The platform with its messages on the console.
class ConsolePlatform : public SystemPlatform {
 public:
  explicit ConsolePlatform(Console& console) : console_(console) {}

  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override;

 protected:
  std::string ChoiceOfAnswers() const override;

 private:
  Console& console_;
};

}  // namespace vorlent::app
