// The names of folders on IMAP servers, by which the files of their copies are called.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlent {

// The UTF-8 of a name in the modified UTF-7 of RFC 3501; nothing for one that isn't in it.
std::optional<std::string> FromImapName(std::string_view name);

}  // namespace vorlent
