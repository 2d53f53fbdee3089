// What a user, or a test in a user's place, must be able to stand in for.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Public.h"
#include "Platform/Time.h"

namespace vorlent {

enum class MessageIcon { Information, Question, Exclamation, Critical };
enum class MessageButtons { Ok, YesNoCancel };  // of Yes, No and Cancel the first is the default
enum class MessageAnswer { Ok, Yes, No, Cancel };

// The order matches the structure of the platform's file dialog.
struct FileDialogRequest {
  std::int32_t structureSize = 76;
  std::int32_t owner = 0;
  std::string filter;  // labels and patterns in turn, each closed by a zero character, two at the end
  std::int32_t filterIndex = 1;
  std::string nameBuffer;  // the proposed name, padded with zero characters to the longest path that fits
  std::int32_t nameBufferSize = 0;
  std::string initialFolder;
  std::string title;
  std::int32_t flags = 0;
  std::string defaultExtension;
  bool save = false;
};

struct FileDialogAnswer {
  bool chosen = false;
  std::string nameBuffer;           // the chosen path, closed by a zero character
  std::int16_t fileNameOffset = 0;  // 0-based position of the bare name in it
};

struct ProcessEntry {
  std::uint32_t id = 0;
  std::string name;  // executable file name, perhaps with further characters after a zero character
};

struct RegistryValue {
  std::uint32_t type = 1;            // 1 text, 3 binary, 4 32-bit number, 7 several strings
  std::uint32_t size = 0;            // bytes, a closing zero counted
  std::optional<std::string> bytes;  // nothing if the second read, that of the data, failed
};

// The kind of a drive that isn't there.
inline constexpr int kNoRootDirectory = 1;

// One instance is current. Paths are Windows paths, texts code page.
class VORLENT_PUBLIC Platform {
 public:
  virtual ~Platform() = default;

  // The instance in use; never null. The first is the operating system's own.
  static Platform& Current();

  // Makes another instance current, the operating system's own for null, and returns the one before it.
  static std::shared_ptr<Platform> Install(std::shared_ptr<Platform> platform);

  // The present local time.
  virtual DateTime Now() = 0;

  // Shows a modal message box and waits for the answer.
  virtual MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                                    MessageButtons buttons) = 0;

  virtual FileDialogAnswer ShowFileDialog(const FileDialogRequest& request) = 0;

  // The mouse pointer: the hourglass if busy, else the default.
  virtual void SetPointer(bool busy) = 0;

  // Lets the message loop handle what waits, once.
  virtual void YieldOnce() = 0;

  // Blocks for that many milliseconds.
  virtual void Wait(std::uint32_t milliseconds) = 0;

  // A snapshot of the running processes, nothing if it can't be had.
  virtual std::optional<std::vector<ProcessEntry>> Processes() = 0;

  // Asks every window of a process to close, and waits until each has handled that.
  virtual void CloseWindows(std::uint32_t processId) = 0;

  // Ends a process. One that doesn't exist or may not be ended is passed over.
  virtual void Terminate(std::uint32_t processId) = 0;

  // The kind of a drive given as "C:\": kNoRootDirectory, or one of the system's other numbers.
  virtual int DriveType(std::string_view root) = 0;

  // A value of the registry; nothing if the key or the value is missing. `hive` is the system's handle
  // (hexadecimal 80000000 plus the number of the hive); an empty value name means the key's own value.
  virtual std::optional<RegistryValue> QueryRegistry(std::uint32_t hive, std::string_view key,
                                                     std::string_view value) = 0;

  virtual std::string CurrentFolder() = 0;

  // Raises PathNotFound for a folder that isn't there.
  virtual void SetCurrentFolder(std::string_view folder) = 0;
};

namespace os {

// A new instance of the operating system's own platform.
VORLENT_PUBLIC std::shared_ptr<Platform> NewPlatform();

}  // namespace os

}  // namespace vorlent
