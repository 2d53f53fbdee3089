// A text of every character there is.
#pragma once

#include <string>

namespace vorlent {

inline std::string AllBytes() {
  std::string all;
  for (int code = 0; code < 256; ++code)
    all += static_cast<char>(code);
  return all;
}

}  // namespace vorlent
