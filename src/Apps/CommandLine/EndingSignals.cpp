#include "Apps/CommandLine/EndingSignals.h"

#include <cstdio>
#include <cstdlib>

#include "Apps/CommandLine/System.h"

namespace vorlent::app {

namespace {

std::atomic<std::atomic<bool>*> cancelFlag = nullptr;
std::atomic<int> endingSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");

}  // namespace

EndingSignals::EndingSignals(std::atomic<bool>& cancelled) {
  cancelFlag = &cancelled;
  WatchEndingSignals(NoteEndingSignal);
}

// The signals stay noted: the process is about to end.
EndingSignals::~EndingSignals() {
  cancelFlag = nullptr;
}

void NoteEndingSignal(int signal) {
  int none = 0;
  endingSignal.compare_exchange_strong(none, signal);
  if (std::atomic<bool>* const flag = cancelFlag) flag->store(true);
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
