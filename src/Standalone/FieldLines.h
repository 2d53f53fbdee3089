// Fields of a record as lines of text.
#pragma once

#include <string>
#include <string_view>

#include "Standalone/ItemRecord.h"

namespace vorlent {

// Adds the line "key=value" to `lines`. Every key and value comes back byte for byte: a backslash, and a "="
// in the key, get a backslash in front, and a line feed becomes "\n".
void AppendFieldLine(std::string& lines, std::string_view key, std::string_view value);

// Adds the fields of the lines to a record that has none of them.
void AddFieldLines(ItemRecord& record, std::string_view lines);

}  // namespace vorlent
