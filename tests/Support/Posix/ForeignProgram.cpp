#include "Support/ForeignProgram.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <stdexcept>
#include <string>

#include "Support/ForeignRequests.h"
#include "Support/SqliteFile.h"

namespace vorlent {

namespace {

constexpr char kDone = '+';
constexpr char kRefused = '-';

// The alarm ends a process that doesn't expect it.
void EndThisAfter(int milliseconds) {
  itimerval timer = {};
  timer.it_value.tv_sec = milliseconds / 1000;
  timer.it_value.tv_usec = milliseconds % 1000 * 1000;
  setitimer(ITIMER_REAL, &timer, nullptr);
}

// What the other process does: nothing else of the test program may run in it.
[[noreturn]] void Serve(const std::filesystem::path& native, int channel) {
  try {
    SqliteFile file(native);
    std::array<char, 4096> request;
    for (ssize_t size; (size = recv(channel, request.data(), request.size(), 0)) > 0;) {
      const std::string text(request.data(), static_cast<std::size_t>(size));
      const char answer = CarryOut(file, text, EndThisAfter) ? kDone : kRefused;
      if (send(channel, &answer, 1, 0) != 1) break;
    }
  } catch (const std::exception&) {
    // The channel closes, which tells the test.
  }
  _exit(0);
}

}  // namespace

struct ForeignProgram::Process {
  pid_t id = -1;
  int channel = -1;
};

ForeignProgram::ForeignProgram(const std::filesystem::path& native) : process_(std::make_unique<Process>()) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0) throw std::runtime_error("no channel");
  process_->id = fork();
  if (process_->id == 0) {
    close(ends[0]);
    Serve(native, ends[1]);
  }
  close(ends[1]);
  process_->channel = ends[0];
  if (process_->id < 0) throw std::runtime_error("no process");
}

ForeignProgram::~ForeignProgram() {
  close(process_->channel);
  kill(process_->id, SIGKILL);
  waitpid(process_->id, nullptr, 0);
}

void ForeignProgram::Run(std::string_view sql) const {
  char answer = kRefused;
  const int channel = process_->channel;
  const bool sent = send(channel, sql.data(), sql.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(sql.size());
  if (!sent || recv(channel, &answer, 1, 0) != 1 || answer != kDone)
    throw std::runtime_error("the other program can't run: " + std::string(sql));
}

void ForeignProgram::EndAfter(int milliseconds) const {
  Run(std::string(kEndAfter) + std::to_string(milliseconds));
}

}  // namespace vorlent
