// What the program takes from the system that runs it: its arguments, its streams, and what asks it to end.
// Each system meets this in a folder of its own.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace vorlent::app {

// The arguments that main was called with, UTF-8, without the program's own name.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// Has the standard streams hand on each byte as it is, UTF-8 where it is shown. To be called before they are
// used.
void PrepareStreams();

bool IsTerminal(std::FILE* stream);

// Columns of the terminal that a stream leads to, nothing if that is none.
std::optional<std::size_t> ColumnsOfTerminal(std::FILE* stream);

// Whether a write to standard output returns at once, for what the buffer of a pipe holds at most.
bool TakesOutput();

// Numbers of what asks a process to end, as shells count them.
inline constexpr int kHangUp = 1;
inline constexpr int kInterrupt = 2;
inline constexpr int kNoReader = 13;
inline constexpr int kTerminate = 15;

// From now on `note` is called with the number of each request to end, on any thread and possibly in a
// signal's handler, and the process goes on. The first Ctrl-C leaves the second one to the system, which ends
// the process at once. A hang-up that was to be passed over when the program began stays so.
void WatchEndingSignals(void (*note)(int number));

// Whether a write failed because nobody reads on, where that comes as an error and not as a signal.
bool IsOfNoReader(int error);

}  // namespace vorlent::app
