#include "Platform/SystemPlatform.h"

#include <time.h>
#include <unistd.h>

#include <filesystem>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/ApplicationPlaces.h"
#include "Platform/Posix/Settings.h"
#include "Platform/Posix/System.h"

namespace vorlent {

namespace {

constexpr std::uint32_t kCurrentUserHive = 0x80000001;
constexpr std::string_view kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr int kFixedDisk = 3;

// A message is worth no failure: without standard error there is nobody to read it.
void Print(std::string_view text) {
  Swallow([&] { os::WriteTo(STDERR_FILENO, text.data(), text.size(), "standard error"); });
}

// The next line of standard input without its line end, nothing at its end. Read byte by byte: what stands
// after the line belongs to whoever reads next.
std::optional<std::string> ReadAnswer() {
  std::string line;
  char c = 0;
  while (os::Retry([&] { return read(STDIN_FILENO, &c, 1); }) == 1) {
    if (c == '\n') return line;
    line += c;
  }
  return std::nullopt;
}

// "" is the default, the first button.
std::optional<MessageAnswer> ParseAnswer(std::string_view line) {
  const std::string answer = LowerCase(line);
  for (const std::string_view yes : {"", "y", "yes", "j", "ja"}) {
    if (answer == yes) return MessageAnswer::Yes;
  }
  for (const std::string_view no : {"n", "no", "nein"}) {
    if (answer == no) return MessageAnswer::No;
  }
  for (const std::string_view cancel : {"c", "cancel", "a", "abbrechen"}) {
    if (answer == cancel) return MessageAnswer::Cancel;
  }
  return std::nullopt;
}

MessageAnswer Ask(std::string_view choice) {
  while (true) {
    Print(choice);
    const auto line = ReadAnswer();
    if (!line) return MessageAnswer::Cancel;
    if (const auto answer = ParseAnswer(*line)) return *answer;
  }
}

}  // namespace

std::shared_ptr<Platform> os::NewPlatform() {
  return std::make_shared<SystemPlatform>();
}

DateTime SystemPlatform::Now() {
  return os::LocalNow();
}

MessageAnswer SystemPlatform::ShowMessage(std::string_view text, std::string_view title, MessageIcon,
                                          MessageButtons buttons) {
  Print(DisplayUtf8(title) + ": " + DisplayUtf8(text) + "\n");
  if (buttons == MessageButtons::Ok) return MessageAnswer::Ok;
  const bool someoneIsThere = isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
  return someoneIsThere ? Ask(ChoiceOfAnswers()) : MessageAnswer::Cancel;
}

std::string SystemPlatform::ChoiceOfAnswers() const {
  return "[Y]es, [N]o or [C]ancel? ";
}

FileDialogAnswer SystemPlatform::ShowFileDialog(const FileDialogRequest&) {
  return {};
}

void SystemPlatform::SetPointer(bool) {}

void SystemPlatform::YieldOnce() {}

void SystemPlatform::Wait(std::uint32_t milliseconds) {
  timespec rest = {milliseconds / 1000, static_cast<long>(milliseconds % 1000) * 1'000'000};
  while (nanosleep(&rest, &rest) == -1 && errno == EINTR) {
  }
}

int SystemPlatform::DriveType(std::string_view root) {
  const bool isRoot =
      root.size() >= 2 && root[1] == ':' && (root.substr(2) == "\\" || root.substr(2).empty());
  const auto folder = isRoot ? os::DriveFolder(root[0]) : std::nullopt;
  std::error_code ignored;
  return folder && std::filesystem::is_directory(*folder, ignored) ? kFixedDisk : kNoRootDirectory;
}

std::optional<RegistryValue> SystemPlatform::QueryRegistry(std::uint32_t hive, std::string_view key,
                                                           std::string_view value) {
  const bool isAppData =
      hive == kCurrentUserHive && EqualNoCase(key, kShellFolders) && EqualNoCase(value, "AppData");
  const std::string path = isAppData ? os::AppDataPath() : "";
  if (path.empty()) return std::nullopt;
  RegistryValue found;
  found.size = static_cast<std::uint32_t>(path.size() + 1);
  found.bytes = path + '\0';
  return found;
}

std::string SystemPlatform::CurrentFolder() {
  std::error_code error;
  const auto folder = std::filesystem::current_path(error);
  return error ? "" : os::ToWindowsPath(folder.string());
}

void SystemPlatform::SetCurrentFolder(std::string_view folder) {
  if (chdir(os::ToNativePath(folder).c_str()) == 0) return;
  const int error = errno;
  if (error == ENOENT) throw Failure(ErrorNumber::PathNotFound, folder, "no such folder", Hint::MakeFolder);
  os::RaiseSystemFailure(error, folder);
}

}  // namespace vorlent
