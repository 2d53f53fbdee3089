// The data fields that describe an item's files.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// Whether a data field describes a file. Its value is lines: the path, then key=value lines such as
// "file=<name>".
constexpr bool DescribesFile(std::string_view key) {
  return key.starts_with("File");
}

// The bare name of the file that a description tells of: its "file=" line, else the last component of the
// path.
std::string FileNameIn(std::string description);

}  // namespace vorlent
