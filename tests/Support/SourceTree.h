// Files of the source tree that tests read.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vorlent {

// The native path of a file or folder of the source tree, such as "samples/AppData".
std::filesystem::path SourcePath(std::string_view name);

// All bytes of such a file. Raises std::runtime_error if it isn't there.
std::string SourceBytes(std::string_view name);

}  // namespace vorlent
