// A platform that plays the user and the desktop by a script, and notes what was asked of it.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Platform.h"

namespace vorlent {

// Every call becomes one line of `calls`, such as
//   ShowMessage("text","title",Question,YesNoCancel) -> Yes
// with line ends inside texts written as \r and \n.
class RecordingPlatform : public Platform {
 public:
  std::vector<std::string> calls;

  // The lines of one member, such as CallsOf("ShowMessage").
  std::vector<std::string> CallsOf(std::string_view member) const;
  // How often a member was called.
  int CountOf(std::string_view member) const { return static_cast<int>(CallsOf(member).size()); }

  // --- The script ----------------------------------------------------------------------------------------

  // Taken from the front. Once used up, a box is answered with Ok, or Cancel if it has that button.
  std::deque<MessageAnswer> messageAnswers;
  // Taken from the front. Once used up, the dialog is cancelled.
  std::deque<FileDialogAnswer> fileDialogAnswers;
  // Every request as it came.
  std::vector<FileDialogRequest> fileDialogRequests;
  // An answer that chooses `path`, with the offset of its bare name.
  static FileDialogAnswer Chosen(std::string_view path);

  // The running processes. Terminate takes one off.
  std::optional<std::vector<ProcessEntry>> processes = std::vector<ProcessEntry>();

  // Kinds of drives by their upper-case letter; a drive that isn't there is of kind 1.
  std::map<char, int> drives = {{'C', 3}};

  // Registry values by the system's handle, key and value name.
  std::map<std::pair<std::uint32_t, std::pair<std::string, std::string>>, RegistryValue> registry;
  void SetRegistryText(std::uint32_t hive, std::string_view key, std::string_view value,
                       std::string_view text);
  // The application-data folder that the shell folders of the current user tell.
  void SetAppData(std::string_view folder);

  // The clock: each call of Now gives `now` and moves it on by the step.
  DateTime now = {2010, 5, 9, 14, 30, 5, 0};
  int millisecondsPerCall = 0;
  void AdvanceClock(std::int64_t milliseconds);

  std::string currentFolder = "C:\\";
  // Answers which folders may become the current one; without it all may.
  std::function<bool(std::string_view)> folderExists;

  // What happens meanwhile, run after the note of the call.
  std::function<void()> onYield;
  std::function<void(std::uint32_t)> onWait;
  std::function<void(const FileDialogRequest&)> onFileDialog;
  std::function<void(std::uint32_t)> onCloseWindows;

  // --- Platform ------------------------------------------------------------------------------------------

  DateTime Now() override;
  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override;
  FileDialogAnswer ShowFileDialog(const FileDialogRequest& request) override;
  void SetPointer(bool busy) override;
  void YieldOnce() override;
  void Wait(std::uint32_t milliseconds) override;
  std::optional<std::vector<ProcessEntry>> Processes() override;
  void CloseWindows(std::uint32_t processId) override;
  void Terminate(std::uint32_t processId) override;
  int DriveType(std::string_view root) override;
  std::optional<RegistryValue> QueryRegistry(std::uint32_t hive, std::string_view key,
                                             std::string_view value) override;
  std::string CurrentFolder() override;
  void SetCurrentFolder(std::string_view folder) override;
};

// Makes a platform current and brings back the one before it.
class ScopedPlatform {
 public:
  explicit ScopedPlatform(std::shared_ptr<Platform> platform)
      : previous_(Platform::Install(std::move(platform))) {}
  ~ScopedPlatform() { Platform::Install(previous_); }
  ScopedPlatform(const ScopedPlatform&) = delete;
  ScopedPlatform& operator=(const ScopedPlatform&) = delete;

 private:
  std::shared_ptr<Platform> previous_;
};

// A recording platform that is current as long as this object lives.
class ScopedRecordingPlatform {
 public:
  RecordingPlatform& operator*() const { return *recording_; }
  RecordingPlatform* operator->() const { return recording_.get(); }

 private:
  std::shared_ptr<RecordingPlatform> recording_ = std::make_shared<RecordingPlatform>();
  ScopedPlatform installed_{recording_};
};

}  // namespace vorlent
