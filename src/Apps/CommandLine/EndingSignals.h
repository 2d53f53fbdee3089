// What asks the program to end before its time: Ctrl-C, a closed terminal, a reader that has gone.
#pragma once

#include <atomic>

namespace vorlent::app {

// While it stands, SIGINT, SIGTERM, SIGHUP and SIGPIPE are noted and don't end the process, so that it can do
// so in order. The first Ctrl-C leaves the second one to the system, which ends the process at once. Made,
// asked and ended on the main thread; the signals may come on any thread, and set atomic flags there.
class EndingSignals {
 public:
  // `cancelled` becomes true with the first of the signals.
  explicit EndingSignals(std::atomic<bool>& cancelled);
  ~EndingSignals();
  EndingSignals(const EndingSignals&) = delete;
  EndingSignals& operator=(const EndingSignals&) = delete;
};

// Notes that a signal has come, as the system's handlers do.
void NoteEndingSignal(int signal);

// The first of the signals that came, 0 before that.
int EndingSignal();

// Raised, instead of a failure, where the program stops because of an ending signal.
struct Interrupted {};

// Raises Interrupted once an ending signal has come.
void StopIfAsked();

// Ends the process as a shell expects it after the signal that came. What was printed and not yet written
// goes to standard output, unless nobody takes it.
[[noreturn]] void EndBySignal();

}  // namespace vorlent::app
