// The data fields that describe an item's files, told by their keys. The value of such a field is lines: the
// path, then key=value lines such as "file=<name>".
#pragma once

#include <string_view>

namespace vorlent {

inline constexpr std::string_view kMailFileKey = "File";
inline constexpr std::string_view kHtmlFileKey = "FileHTML";
// A number from 1 follows.
inline constexpr std::string_view kAttachmentKey = "FileAttach";

// Whether a data field describes a file. Letter case counts.
constexpr bool DescribesFile(std::string_view key) {
  return key.starts_with(kMailFileKey);
}

// Whether that file is an attachment.
constexpr bool DescribesAttachment(std::string_view key) {
  return key.starts_with(kAttachmentKey);
}

}  // namespace vorlent
