// The operating system's own platform, to be used as it is or to be improved on.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Platform.h"

namespace vorlent {

// An app overrides what it can do better. Where the system has no windows of its own, messages go to standard
// error, the pointer and the message loop are nobody's, and the file dialog counts as cancelled.
class SystemPlatform : public Platform {
 public:
  DateTime Now() override;

  // Without windows a question is asked where standard input and standard error are a terminal, and answered
  // with Cancel, which changes nothing, where they aren't.
  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override;
  FileDialogAnswer ShowFileDialog(const FileDialogRequest& request) override;
  void SetPointer(bool busy) override;
  void YieldOnce() override;
  void Wait(std::uint32_t milliseconds) override;

  // Names are those that the programs have on Windows; elsewhere with ".exe" where there is no extension, and
  // without the "-bin" that Mozilla's applications carry after their start scripts. A process that goes by
  // another name than that of its file comes with each of them. A change is seen within kSnapshotTime:
  // looking at all processes each time would cost more than what is done after it.
  std::optional<std::vector<ProcessEntry>> Processes() override;

  // Without windows the process is asked to end, and gets up to kCloseTime to do so by itself.
  void CloseWindows(std::uint32_t processId) override;
  void Terminate(std::uint32_t processId) override;

  // 3, a fixed disk, for a drive of the settings whose folder is there. All others are the system's matter;
  // where it has no drives there are none.
  int DriveType(std::string_view root) override;

  // The application-data folder among the current user's shell folders is that of the settings. A system
  // without a registry has no other value.
  std::optional<RegistryValue> QueryRegistry(std::uint32_t hive, std::string_view key,
                                             std::string_view value) override;
  std::string CurrentFolder() override;
  void SetCurrentFolder(std::string_view folder) override;

  static constexpr int kCloseTime = 10'000;  // milliseconds

  // Far shorter than a program needs from its start to its first file.
  static constexpr std::chrono::milliseconds kSnapshotTime{20};

 protected:
  // What stands after a question; the answers are taken in English and in German, in words and first letters.
  virtual std::string ChoiceOfAnswers() const;

 private:
  std::optional<std::vector<ProcessEntry>> snapshot_;
  std::chrono::steady_clock::time_point snapshotEnd_;
};

}  // namespace vorlent
