// Whether two files hold the same mail.
#pragma once

#include <string_view>

#include "Common/TextHash.h"

namespace vorlent {

// Compares a mail with what a mail client writes to its mailbox left out: the separator line, the marks that
// it rewrites in place (status and tags), and the empty lines before the next mail. A file that can't be read
// raises.
bool HoldSameMail(std::string_view path, std::string_view otherPath);

// Adds just that to a hash.
void AddMail(TextHash& hash, std::string_view path);

}  // namespace vorlent
