#include "Apps/CommandLine/Console.h"

#include <cstdio>

#include "Apps/CommandLine/Session.h"
#include "Apps/CommandLine/System.h"
#include "Standalone/Phrases.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::app {

void Console::ProgressOpened(std::string_view title) {
  if (!muted_) bar_.Open(ToldShown(title));
}

void Console::ProgressMoved(double percent) {
  if (!muted_) bar_.Percent(percent);
}

void Console::ProgressClosed() {
  bar_.Close();
}

void Console::StatusChanged(std::string_view text) {
  if (!muted_ && !text.empty()) bar_.Title(ToldShown(text));
}

void Console::LogLine(std::string_view line) {
  if (verbose_ && !muted_) Say(ToldShown(line));
}

void Console::DatabaseLogLine(std::string_view line) {
  if (databaseLog_ && !muted_) Say(ToldShown(line));
}

void Console::Remarked(const Cause& what) {
  // What is read in several steps has the same about it in each.
  if (!muted_ && remarks_.insert(CauseShown(what)).second) Say(CauseShown(what));
}

void Console::LocationUnreadable(const Cause& why) {
  // All that lies in a file is told with that.
  if (!why.path.empty()) ++unreadCount_;
  NoteError({CauseShown(why)});
}

void Console::ErrorRaised(std::int32_t kind, std::string_view, bool flag, std::string_view text) {
  if (kind == HostError::kMissing) {
    NoteError({ToldShown(text)});
  } else if (!flag) {
    // All other kinds tell of calls of the calendar database, whose log has those that went well.
    NoteError({InWords(Phrase::Refused, {ToldShown(text)})});
  }
}

void Console::ErrorRaisedForDrive(std::string_view, std::string_view text) {
  NoteError({ToldShown(text), true});
}

void Console::ItemPasted(std::string_view, const ItemPtr&) {
  CountMail();
}

void Console::Say(std::string_view utf8) {
  bar_.Hide();
  std::fwrite(utf8.data(), 1, utf8.size(), stderr);
  std::fputc('\n', stderr);
}

void Console::Complain(std::string_view utf8) {
  Say("vorlent-mozilla: " + std::string(utf8));
}

void Console::BoxShown(std::string_view text, std::string_view title, bool isError) {
  if (isError) {
    NoteError({ToldShown(text)});
  } else if (!muted_) {
    Complain(ToldShown(title) + ": " + ToldShown(text));
  }
}

void Console::NoteError(ToldError error) {
  // One cause may be told by a box and by a report.
  if (!errors_.empty() && errors_.back().text == error.text) return;
  errors_.push_back(std::move(error));
}

MessageAnswer ConsolePlatform::ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                                           MessageButtons buttons) {
  if (buttons == MessageButtons::Ok) {
    console_.BoxShown(text, title, icon != MessageIcon::Question);
    return MessageAnswer::Ok;
  }
  const std::string question = Translated(WithShownPaths(text));
  console_.Say("");
  // A box of the system's would wait for an answer that nobody gives.
  if (!IsTerminal(stdin) || !IsTerminal(stderr)) {
    console_.Say(ToldShown(title) + ": " + question);
    return MessageAnswer::Cancel;
  }
  return SystemPlatform::ShowMessage(question, ToldShown(title), icon, buttons);
}

std::string ConsolePlatform::ChoiceOfAnswers() const {
  return InWords(Phrase::YesNoCancel);
}

}  // namespace vorlent::app
