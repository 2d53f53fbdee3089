#include "Platform/SystemPlatform.h"

#include <windows.h>

#include <commdlg.h>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Windows/Settings.h"
#include "Platform/Windows/System.h"

namespace vorlent {

namespace {

constexpr std::uint32_t kCurrentUserHive = 0x80000001;
constexpr std::string_view kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr int kFixedDisk = 3;

// Text for the system's calls that take bytes of its code page, and back.
std::string ToPage(std::string_view text) {
  return HoldsUtf8() ? codepage::FromUtf8(text) : std::string(text);
}

std::string FromPage(std::string_view page) {
  return HoldsUtf8() ? codepage::ToUtf8(page) : std::string(page);
}

UINT IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return MB_ICONINFORMATION;
    case MessageIcon::Question:
      return MB_ICONQUESTION;
    case MessageIcon::Exclamation:
      return MB_ICONEXCLAMATION;
    case MessageIcon::Critical:
      return MB_ICONERROR;
  }
  return 0;
}

MessageAnswer AnswerOf(int button) {
  switch (button) {
    case IDOK:
      return MessageAnswer::Ok;
    case IDYES:
      return MessageAnswer::Yes;
    case IDNO:
      return MessageAnswer::No;
    default:
      return MessageAnswer::Cancel;
  }
}

// A drive of the settings as the system's own are told.
int TypeOfFolder(const std::string& folder) {
  const DWORD attributes = GetFileAttributesW(os::ToCallPath(folder + '\\').c_str());
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return isThere ? kFixedDisk : kNoRootDirectory;
}

RegistryValue TextValue(const std::string& text) {
  RegistryValue value;
  value.size = static_cast<std::uint32_t>(text.size() + 1);
  value.bytes = text + '\0';
  return value;
}

// An open key that closes itself.
class RegistryKey {
 public:
  RegistryKey(std::uint32_t hive, const std::string& path) {
    // The predefined handles are 32-bit numbers with their sign.
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type
    const auto root = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(hive)));
    isOpen_ = RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, &key_) == ERROR_SUCCESS;
  }
  ~RegistryKey() {
    if (isOpen_) RegCloseKey(key_);
  }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  std::optional<RegistryValue> Query(const std::string& name) const {
    DWORD type = 0;
    DWORD size = 0;
    if (!isOpen_ || RegQueryValueExA(key_, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
      return std::nullopt;
    RegistryValue value{type, size, std::nullopt};
    std::string bytes(std::size_t{size} + 1, '\0');
    auto* const room = reinterpret_cast<BYTE*>(bytes.data());
    if (RegQueryValueExA(key_, name.c_str(), nullptr, &type, room, &size) == ERROR_SUCCESS) {
      bytes.resize(value.size);
      value.bytes = std::move(bytes);
    }
    return value;
  }

 private:
  HKEY key_ = nullptr;
  bool isOpen_ = false;
};

}  // namespace

std::shared_ptr<Platform> os::NewPlatform() {
  return std::make_shared<SystemPlatform>();
}

DateTime SystemPlatform::Now() {
  return os::LocalNow();
}

MessageAnswer SystemPlatform::ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                                          MessageButtons buttons) {
  const UINT choice = buttons == MessageButtons::Ok ? MB_OK : MB_YESNOCANCEL;
  const int button =
      MessageBoxW(GetActiveWindow(), os::ToWide(DisplayUtf8(text)).c_str(),
                  os::ToWide(DisplayUtf8(title)).c_str(), choice | IconOf(icon) | MB_TASKMODAL);
  return AnswerOf(button);
}

// The box has buttons for them.
std::string SystemPlatform::ChoiceOfAnswers() const {
  return "";
}

FileDialogAnswer SystemPlatform::ShowFileDialog(const FileDialogRequest& request) {
  std::string filter = ToPage(request.filter);
  std::string buffer = ToPage(request.nameBuffer);
  buffer.resize(static_cast<std::size_t>(request.nameBufferSize));
  const std::string folder = ToPage(request.initialFolder);
  const std::string title = ToPage(request.title);
  const std::string extension = ToPage(request.defaultExtension);
  OPENFILENAMEA dialog = {};
  // The request's size is that of a 32-bit process. This is the same structure, in the size that it has here.
  dialog.lStructSize = OPENFILENAME_SIZE_VERSION_400A;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type
  dialog.hwndOwner = reinterpret_cast<HWND>(static_cast<std::intptr_t>(request.owner));
  dialog.lpstrFilter = filter.c_str();
  dialog.nFilterIndex = static_cast<DWORD>(request.filterIndex);
  dialog.lpstrFile = buffer.data();
  dialog.nMaxFile = static_cast<DWORD>(buffer.size());
  dialog.lpstrInitialDir = folder.c_str();
  dialog.lpstrTitle = title.c_str();
  dialog.Flags = static_cast<DWORD>(request.flags);
  dialog.lpstrDefExt = extension.c_str();
  const BOOL chosen = request.save ? GetSaveFileNameA(&dialog) : GetOpenFileNameA(&dialog);
  if (chosen == 0) return {};
  const std::string before = FromPage(std::string_view(buffer).substr(0, dialog.nFileOffset));
  return {true, FromPage(buffer), static_cast<std::int16_t>(before.size())};
}

void SystemPlatform::SetPointer(bool busy) {
  SetCursor(LoadCursor(nullptr, busy ? IDC_WAIT : IDC_ARROW));
}

void SystemPlatform::YieldOnce() {
  MSG message;
  while (PeekMessage(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
    if (message.message == WM_QUIT) {
      // It is meant for the program's own loop.
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    TranslateMessage(&message);
    DispatchMessage(&message);
  }
}

void SystemPlatform::Wait(std::uint32_t milliseconds) {
  Sleep(milliseconds);
}

int SystemPlatform::DriveType(std::string_view root) {
  const bool isRoot =
      root.size() >= 2 && root[1] == ':' && (root.substr(2) == "\\" || root.substr(2).empty());
  if (!isRoot) return kNoRootDirectory;
  const std::string* folder = os::FindDrive(root[0]);
  if (folder != nullptr) return TypeOfFolder(*folder);
  return static_cast<int>(GetDriveTypeA(std::string(root).c_str()));
}

std::optional<RegistryValue> SystemPlatform::QueryRegistry(std::uint32_t hive, std::string_view key,
                                                           std::string_view value) {
  const auto& appData = os::CurrentSettings().appData;
  const bool isAppData =
      hive == kCurrentUserHive && EqualNoCase(key, kShellFolders) && EqualNoCase(value, "AppData");
  if (appData && isAppData) return TextValue(os::ToWindowsPath(*appData));
  return RegistryKey(hive, std::string(key)).Query(std::string(value));
}

std::string SystemPlatform::CurrentFolder() {
  return os::ToWindowsPath(".");
}

void SystemPlatform::SetCurrentFolder(std::string_view folder) {
  if (SetCurrentDirectoryW(os::CallPathOf(folder).c_str()) != 0) return;
  const DWORD error = GetLastError();
  const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
                         error == ERROR_DIRECTORY || error == ERROR_INVALID_NAME;
  if (isMissing) throw Failure(ErrorNumber::PathNotFound, folder, "no such folder", Hint::MakeFolder);
  os::RaiseSystemFailure(error, folder);
}

}  // namespace vorlent
