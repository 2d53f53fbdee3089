// Calls, files and the like as lists of lines that are put together.
#pragma once

#include <string>
#include <vector>

namespace vorlent {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace vorlent
