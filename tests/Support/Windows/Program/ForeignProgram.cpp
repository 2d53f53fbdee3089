// The process behind ForeignProgram: opens the database that it is called with, and takes requests from
// standard input, each after its size in four bytes.
#include <windows.h>

#include <cstdint>
#include <exception>
#include <string>

#include "Support/ForeignRequests.h"

namespace {

DWORD WINAPI EndThisProcess(void* milliseconds) {
  Sleep(static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(milliseconds)));
  TerminateProcess(GetCurrentProcess(), 1);
  return 0;
}

void EndThisAfter(int milliseconds) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): what threads are given
  void* const time = reinterpret_cast<void*>(static_cast<std::uintptr_t>(milliseconds));
  CloseHandle(CreateThread(nullptr, 0, EndThisProcess, time, 0, nullptr));
}

bool ReadAll(char* bytes, DWORD size) {
  for (DWORD count = 0; size > 0; bytes += count, size -= count) {
    if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), bytes, size, &count, nullptr) == 0 || count == 0)
      return false;
  }
  return true;
}

void Serve(const std::filesystem::path& native) {
  vorlent::SqliteFile file(native);
  for (std::uint32_t size = 0; ReadAll(reinterpret_cast<char*>(&size), sizeof size);) {
    std::string request(size, '\0');
    if (!ReadAll(request.data(), size)) return;
    const char answer = vorlent::CarryOut(file, request, EndThisAfter) ? '+' : '-';
    DWORD count = 0;
    if (WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), &answer, 1, &count, nullptr) == 0) return;
  }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return 2;
  try {
    Serve(arguments[1]);
    return 0;
  } catch (const std::exception&) {
    return 1;  // the pipe closes, which tells the test
  }
}
