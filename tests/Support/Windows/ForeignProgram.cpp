#include "Support/ForeignProgram.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "Support/ForeignRequests.h"

namespace vorlent {

namespace {

// The program that lies beside this one.
std::wstring PathOfProgram() {
  wchar_t own[4096];
  const DWORD size = GetModuleFileNameW(nullptr, own, 4096);
  const std::wstring path(own, size);
  return path.substr(0, path.find_last_of(L'\\') + 1) + L"foreign_program.exe";
}

struct Pipe {
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
};

Pipe MakePipe() {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  Pipe pipe;
  if (CreatePipe(&pipe.reading, &pipe.writing, &inherited, 0) == 0) throw std::runtime_error("no pipe");
  return pipe;
}

// The other process keeps the ends that it is given only: it would never hear of the end of a pipe of which
// it holds both.
void KeepHere(HANDLE end) {
  SetHandleInformation(end, HANDLE_FLAG_INHERIT, 0);
}

}  // namespace

struct ForeignProgram::Process {
  HANDLE handle = nullptr;
  HANDLE requests = nullptr;
  HANDLE answers = nullptr;
};

ForeignProgram::ForeignProgram(const std::filesystem::path& native) : process_(std::make_unique<Process>()) {
  const Pipe requests = MakePipe(), answers = MakePipe();
  KeepHere(requests.writing);
  KeepHere(answers.reading);
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = requests.reading;
  start.hStdOutput = answers.writing;
  start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  std::wstring command = L"\"" + PathOfProgram() + L"\" \"" + native.wstring() + L"\"";
  PROCESS_INFORMATION made = {};
  const bool isMade = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                     &start, &made) != 0;
  CloseHandle(requests.reading);
  CloseHandle(answers.writing);
  process_->requests = requests.writing;
  process_->answers = answers.reading;
  if (!isMade) throw std::runtime_error("no process");
  CloseHandle(made.hThread);
  process_->handle = made.hProcess;
}

ForeignProgram::~ForeignProgram() {
  TerminateProcess(process_->handle, 1);
  WaitForSingleObject(process_->handle, INFINITE);
  CloseHandle(process_->handle);
  CloseHandle(process_->requests);
  CloseHandle(process_->answers);
}

void ForeignProgram::Run(std::string_view sql) const {
  const auto size = static_cast<std::uint32_t>(sql.size());
  DWORD count = 0;
  char answer = 0;
  const bool isDone = WriteFile(process_->requests, &size, sizeof size, &count, nullptr) != 0 &&
                      WriteFile(process_->requests, sql.data(), size, &count, nullptr) != 0 &&
                      ReadFile(process_->answers, &answer, 1, &count, nullptr) != 0 && answer == '+';
  if (!isDone) throw std::runtime_error("the other program can't run: " + std::string(sql));
}

void ForeignProgram::EndAfter(int milliseconds) const {
  Run(std::string(kEndAfter) + std::to_string(milliseconds));
}

}  // namespace vorlent
