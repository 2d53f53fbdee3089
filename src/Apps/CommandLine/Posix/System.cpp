#include "Apps/CommandLine/System.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace vorlent::app {

namespace {

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};
static_assert(SIGINT == kInterrupt && SIGTERM == kTerminate && SIGHUP == kHangUp && SIGPIPE == kNoReader);

void (*noteSignal)(int) = nullptr;

void SetAction(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  // Without SA_RESTART: a write that nobody reads and a question that nobody answers end.
  sigaction(signal, &action, nullptr);
}

// The session's end may send SIGHUP and SIGTERM more than once; only a person at the keys means it by that.
extern "C" void HandleEndingSignal(int signal) {
  noteSignal(signal);
  if (signal == SIGINT) SetAction(SIGINT, SIG_DFL);
}

// As `nohup` asks for it. Ctrl-C is always heard, also where a script has started the program beside itself.
bool IsHangUpIgnored() {
  struct sigaction present;
  return sigaction(SIGHUP, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + 1, argv + argc};
}

void PrepareStreams() {}

bool IsTerminal(std::FILE* stream) {
  return isatty(fileno(stream)) == 1;
}

std::optional<std::size_t> ColumnsOfTerminal(std::FILE* stream) {
  winsize size{};
  if (!IsTerminal(stream) || ioctl(fileno(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
    return std::nullopt;
  return size.ws_col;
}

bool TakesOutput() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0;
}

void WatchEndingSignals(void (*note)(int number)) {
  noteSignal = note;
  for (const int signal : kEndingSignals) {
    if (signal != SIGHUP || !IsHangUpIgnored()) SetAction(signal, HandleEndingSignal);
  }
}

bool IsOfNoReader(int) {
  return false;
}

}  // namespace vorlent::app
