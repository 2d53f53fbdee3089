// Entries of folders that not every system has.
#pragma once

#include <filesystem>

namespace vorlent {

// Each makes an entry at a native place. False on a system that can't, where a test of it is to be skipped;
// raises std::runtime_error if it only fails.

// A pipe with a name.
bool MakePipe(const std::filesystem::path& place);
// A link, to a path from the place's own folder on or from the root on.
bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& place);
// A link to a device that is full.
bool MakeFullDevice(const std::filesystem::path& place);

}  // namespace vorlent

// In a test: skips it where the entry can't be made.
#define MAKE_OR_SKIP(made) \
  if (!(made)) GTEST_SKIP() << "the system has no such entries of folders"
