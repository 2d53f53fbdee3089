// The platform of a POSIX system, without windows: messages go to standard error, the process list comes from
// /proc.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Platform.h"

namespace vorlent {

// An app with windows overrides what it can do better, above all the file dialog, which counts as cancelled
// here.
class PosixPlatform : public Platform {
 public:
  DateTime Now() override;

  // Writes title and text to standard error. A question is asked where standard input and standard error are
  // a terminal, and answered with Cancel, which changes nothing, where they aren't.
  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override;
  FileDialogAnswer ShowFileDialog(const FileDialogRequest& request) override;
  void SetPointer(bool busy) override;
  void Yield() override;
  void Wait(std::uint32_t milliseconds) override;

  // Names are those that the programs have on Windows: with ".exe" where there is no extension, and without
  // the "-bin" that Mozilla's applications carry behind their start scripts. A process that goes by another
  // name than that of its file comes with each of them. A change is seen within kSnapshotTime: looking at all
  // processes each time would cost more than what is done behind it.
  std::optional<std::vector<ProcessEntry>> Processes() override;

  // Asks by the terminating signal, and waits up to kCloseTime for the process to end by itself.
  void CloseWindows(std::uint32_t processId) override;
  void Terminate(std::uint32_t processId) override;

  // 3, a fixed disk, for a drive letter whose folder is there, else 1.
  int DriveType(std::string_view root) override;

  // There is one value: the application-data folder among the current user's shell folders.
  std::optional<RegistryValue> QueryRegistry(std::uint32_t hive, std::string_view key,
                                             std::string_view value) override;
  std::string CurrentFolder() override;
  void SetCurrentFolder(std::string_view folder) override;

  static constexpr int kCloseTime = 10'000;  // milliseconds

  // Far shorter than a program needs from its start to its first file.
  static constexpr std::chrono::milliseconds kSnapshotTime{20};

 private:
  std::optional<std::vector<ProcessEntry>> snapshot_;
  std::chrono::steady_clock::time_point snapshotEnd_;
};

}  // namespace vorlent
