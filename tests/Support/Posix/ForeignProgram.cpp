#include "Support/ForeignProgram.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <stdexcept>
#include <string>

#include "Support/SqliteFile.h"

namespace vorlent {

namespace {

constexpr char kDone = '+';
constexpr char kRefused = '-';

// What the other process does: nothing else of the test program may run in it.
[[noreturn]] void Serve(const std::filesystem::path& native, int channel) {
  try {
    SqliteFile file(native);
    std::array<char, 4096> request;
    for (ssize_t size; (size = recv(channel, request.data(), request.size(), 0)) > 0;) {
      char answer = kDone;
      try {
        file.Run(std::string(request.data(), static_cast<std::size_t>(size)));
      } catch (const std::exception&) {
        answer = kRefused;
      }
      if (send(channel, &answer, 1, 0) != 1) break;
    }
  } catch (const std::exception&) {
    // The channel closes, which tells the test.
  }
  _exit(0);
}

}  // namespace

ForeignProgram::ForeignProgram(const std::filesystem::path& native) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0) throw std::runtime_error("no channel");
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    Serve(native, ends[1]);
  }
  close(ends[1]);
  channel_ = ends[0];
  if (process_ < 0) throw std::runtime_error("no process");
}

ForeignProgram::~ForeignProgram() {
  close(channel_);
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

void ForeignProgram::Run(std::string_view sql) const {
  char answer = kRefused;
  const bool sent = send(channel_, sql.data(), sql.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(sql.size());
  if (!sent || recv(channel_, &answer, 1, 0) != 1 || answer != kDone)
    throw std::runtime_error("the other program can't run: " + std::string(sql));
}

}  // namespace vorlent
