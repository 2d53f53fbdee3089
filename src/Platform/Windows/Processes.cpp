#include <windows.h>

#include <tlhelp32.h>

#include "Platform/SystemPlatform.h"
#include "Platform/Windows/System.h"

namespace vorlent {

namespace {

std::optional<std::vector<ProcessEntry>> TakeSnapshot() {
  const os::Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot.IsOpen()) return std::nullopt;
  std::vector<ProcessEntry> processes;
  PROCESSENTRY32 process = {};
  process.dwSize = sizeof process;
  for (BOOL found = Process32First(snapshot.Get(), &process); found != 0;
       found = Process32Next(snapshot.Get(), &process)) {
    processes.push_back({static_cast<std::uint32_t>(process.th32ProcessID),
                         std::string(process.szExeFile, sizeof process.szExeFile)});
  }
  return processes;
}

BOOL CALLBACK CloseIfOfProcess(HWND window, LPARAM target) {
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner == static_cast<DWORD>(target)) SendMessageA(window, WM_CLOSE, 0, 0);
  return TRUE;
}

}  // namespace

std::optional<std::vector<ProcessEntry>> SystemPlatform::Processes() {
  const auto now = std::chrono::steady_clock::now();
  if (!snapshot_ || now >= snapshotEnd_) {
    snapshot_ = TakeSnapshot();
    snapshotEnd_ = now + kSnapshotTime;
  }
  return snapshot_;
}

void SystemPlatform::CloseWindows(std::uint32_t processId) {
  snapshot_.reset();
  EnumWindows(CloseIfOfProcess, static_cast<LPARAM>(processId));
}

void SystemPlatform::Terminate(std::uint32_t processId) {
  snapshot_.reset();
  const os::Handle process(OpenProcess(PROCESS_TERMINATE, FALSE, processId));
  if (process.IsOpen()) TerminateProcess(process.Get(), 1);
}

}  // namespace vorlent
