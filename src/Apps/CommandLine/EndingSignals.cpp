#include "Apps/CommandLine/EndingSignals.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace vorlent::app {

namespace {

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

std::atomic<bool>* cancelFlag = nullptr;
std::atomic<int> endingSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");

void SetAction(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  // Without SA_RESTART: a write that nobody reads and a question that nobody answers end.
  sigaction(signal, &action, nullptr);
}

// The session's end may send SIGHUP and SIGTERM more than once; only a person at the keys means it by that.
extern "C" void NoteEndingSignal(int signal) {
  int none = 0;
  endingSignal.compare_exchange_strong(none, signal);
  if (cancelFlag != nullptr) cancelFlag->store(true);
  if (signal == SIGINT) SetAction(SIGINT, SIG_DFL);
}

// As `nohup` asks for it. Ctrl-C is always heard, also where a script has started the program beside itself.
bool IsHangUpIgnored() {
  struct sigaction present;
  return sigaction(SIGHUP, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

// Whether a write to standard output returns at once, for what the buffer of a pipe holds at most.
bool TakesOutput() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0;
}

}  // namespace

EndingSignals::EndingSignals(std::atomic<bool>& cancelled) {
  cancelFlag = &cancelled;
  for (const int signal : kEndingSignals) {
    if (signal != SIGHUP || !IsHangUpIgnored()) SetAction(signal, NoteEndingSignal);
  }
}

// The signals stay noted: the process is about to end.
EndingSignals::~EndingSignals() {
  cancelFlag = nullptr;
}

int EndingSignal() {
  return endingSignal;
}

void StopIfAsked() {
  if (EndingSignal() != 0) throw Interrupted();
}

void EndBySignal() {
  constexpr int kBehindASignal = 128;
  // What is lost at an error is lost in the middle of a line, to which nothing may be joined.
  if (std::ferror(stdout) == 0 && TakesOutput()) std::fflush(stdout);
  std::_Exit(kBehindASignal + EndingSignal());
}

}  // namespace vorlent::app
