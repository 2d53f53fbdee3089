#include "Apps/CommandLine/System.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <string_view>

namespace vorlent::app {

namespace {

std::atomic<void (*)(int)> noteRequest = nullptr;
std::atomic<bool> wasInterrupted = false;

std::string Utf8Of(std::wstring_view wide) {
  if (wide.empty()) return {};
  const int size = static_cast<int>(wide.size());
  std::string utf8(wide.size() * 3, '\0');
  const int count = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(),
                                        static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(count));
  return utf8;
}

HANDLE SystemHandle(std::FILE* stream) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

// The session's end waits for this to return, and ends the process then.
void WaitForTheEnd() {
  Sleep(INFINITE);
}

// Called on a thread of the system's.
BOOL WINAPI HandleRequest(DWORD request) {
  void (*const note)(int) = noteRequest;
  switch (request) {
    case CTRL_C_EVENT:
      if (wasInterrupted.exchange(true)) return FALSE;
      note(kInterrupt);
      return TRUE;
    case CTRL_BREAK_EVENT:
      note(kTerminate);
      return TRUE;
    default:  // the console closes, the user logs off, the machine stops
      note(request == CTRL_CLOSE_EVENT ? kHangUp : kTerminate);
      WaitForTheEnd();
      return TRUE;
  }
}

}  // namespace

std::vector<std::string> ProgramArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> texts(CommandLineToArgvW(GetCommandLineW(), &count),
                                                            LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i)
    arguments.push_back(Utf8Of(texts.get()[i]));
  return arguments;
}

void PrepareStreams() {
  for (std::FILE* const stream : {stdin, stdout, stderr}) {
    _setmode(_fileno(stream), _O_BINARY);
    DWORD mode = 0;
    // The progress bar moves the cursor by the codes of terminals.
    if (stream != stdin && GetConsoleMode(SystemHandle(stream), &mode) != 0)
      SetConsoleMode(SystemHandle(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
}

// The null device is a device of characters, too.
bool IsTerminal(std::FILE* stream) {
  DWORD mode = 0;
  return GetConsoleMode(SystemHandle(stream), &mode) != 0;
}

std::optional<std::size_t> ColumnsOfTerminal(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO screen = {};
  if (GetConsoleScreenBufferInfo(SystemHandle(stream), &screen) == 0) return std::nullopt;
  return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

// The system doesn't tell whether a pipe is full.
bool TakesOutput() {
  return GetFileType(SystemHandle(stdout)) != FILE_TYPE_PIPE;
}

void WatchEndingSignals(void (*note)(int number)) {
  noteRequest = note;
  SetConsoleCtrlHandler(HandleRequest, TRUE);
}

// The C library knows the one of the system's two errors by its name, the other not.
bool IsOfNoReader(int error) {
  return error == EPIPE || (error == EINVAL && GetFileType(SystemHandle(stdout)) == FILE_TYPE_PIPE);
}

}  // namespace vorlent::app
