// A copy of the test's process, which may die in its place.
#pragma once

#include <functional>
#include <optional>

namespace vorlent {

// Does work in a copy of this process and waits for its end. Whether the copy was killed before that; nothing
// on a system where a process can't be copied, and the work isn't done then.
std::optional<bool> WasKilledInCopy(const std::function<void()>& work);

}  // namespace vorlent
