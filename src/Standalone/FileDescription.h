// The descriptions of an item's files.
#pragma once

#include <string>

namespace vorlent {

// The bare name of the file that a description tells of: its "file=" line, else the last component of the
// path.
std::string FileNameIn(std::string description);

}  // namespace vorlent
