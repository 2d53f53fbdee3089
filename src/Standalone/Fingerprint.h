// What tells mails of one ID apart.
#pragma once

#include <cstdint>

#include "Standalone/ItemRecord.h"

namespace vorlent {

// A hash of all that makes two mails the same: every field but the time of import, and of a description of a
// file all but its path. The sizes of the mail and of its file don't count: they go with the separator of the
// next mail, if there is one, and with the empty lines before it.
std::int64_t FingerprintOf(const ItemRecord& record);

// As archives have it of the mails that came in when the sizes still counted.
std::int64_t FingerprintWithSizesOf(const ItemRecord& record);

}  // namespace vorlent
