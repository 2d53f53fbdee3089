// Finding, closing and ending other programs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/KeyedList.h"

namespace vorlent {

// Entries of the form <process id>|<file name>; null if there is no snapshot.
std::shared_ptr<KeyedList<std::string>> GetProcessList();

// The id of the first process of that file name, without regard to case; 0 if none.
std::uint32_t FindProcessId(std::string_view name);

// Asks each window of a process to close; blocks as long as one of them asks its user.
void CloseProcessWindows(std::uint32_t id);

// Ends a process at once; one that can't be ended stays.
void KillProcess(std::uint32_t id);

}  // namespace vorlent
