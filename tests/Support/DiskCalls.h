// What takes over a system's calls asks here whether one of them is watched, and whether it shall fail.
//
// Calls come before the first constructor of the program has run; all of this works then.
#pragma once

#include <string>
#include <string_view>

#include "Support/DiskOperations.h"

namespace vorlent {

// Whether somebody wants to hear of such calls.
bool IsWatched(DiskCall call);
// Tells him of one on a file. What he does meanwhile isn't watched.
void TellWatcher(DiskCall call, const std::string& path);

// Whether there is a plan about such calls, and the end of the paths that it is about.
bool IsPlanned(DiskCall call);
std::string_view PlannedPathEnd();
// Counts a call that the plan is about; true if it shall fail with the planned error.
bool FailsNow();
int PlannedError();

// Each system's own: the process is gone at once.
[[noreturn]] void Die();

}  // namespace vorlent
