// What a database connection text says.
#pragma once

#include <optional>
#include <string>

namespace vorlent {

struct ConnectionText {
  std::string database;               // the path, "" if none is given
  std::optional<int> timeout = 2000;  // milliseconds; nothing if it is no number
};

// Reads "key=value;key=value" in any order, letter case of the keys and blanks around both of no matter. A
// value that holds ";" stands in braces, where a doubled closing one stands for one. Other keys are passed
// over.
ConnectionText ParseConnectionText(std::string text);

}  // namespace vorlent
