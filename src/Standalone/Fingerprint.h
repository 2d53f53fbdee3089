// What tells mails of one ID apart.
#pragma once

#include <cstdint>

#include "Standalone/ItemRecord.h"

namespace vorlent {

// A hash of all that makes two mails the same: every field but the time of import, and of a description of a
// file all but its path.
std::int64_t FingerprintOf(const ItemRecord& record);

}  // namespace vorlent
