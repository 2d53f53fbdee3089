// The user who runs the program, and the place for temporary files.
#pragma once

#include <string>

namespace vorlent::os {

// The user's login name in the code page, "" if it can't be told.
std::string LoginName();

// The Windows path of the folder for temporary files, with a trailing separator.
std::string TemporaryFolder();

}  // namespace vorlent::os
