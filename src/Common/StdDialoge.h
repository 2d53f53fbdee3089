// The file dialog.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// Shows a file dialog and returns the choice, "" if cancelled. With a `folder`, that is set to the chosen
// folder and the result is the bare name; without, the result is the whole path. The filter is
// "label|pattern|..." or a short form such as "#doc#*". Mode 0 opens, 1 saves and asks before overwriting, 2
// saves. The current folder stays.
std::string ShowFileDialog(std::int32_t owner, std::string_view title, std::string& folder,
                           std::string_view file, std::string_view filter, std::string_view extension,
                           std::int16_t mode);

// ShowFileDialog with mode 0.
std::string ShowOpenDialog(std::int32_t owner, std::string_view title, std::string& folder,
                           std::string_view file, std::string_view filter, std::string_view extension);

// The short form "#doc#foo#*" as labels and patterns; other text as it stands.
std::string ExpandFilter(std::string_view filter);

}  // namespace vorlent
