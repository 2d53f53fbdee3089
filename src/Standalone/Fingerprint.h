// What tells mails of one ID apart.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Standalone/ItemRecord.h"

namespace vorlent {

// A hash of what makes two mails the same, in whatever order a record has it: every field but the time of
// import, and of a description of a file its name and size. What a mail gets only in its mailbox or by its
// reader doesn't count: marks, the time of day as the reader's clock has it, the length, which goes with the
// separator of the next mail.
std::int64_t FingerprintOf(const ItemRecord& record);

// As archives have it of the mails that came in when nearly all of that counted: without and with the
// lengths.
std::array<std::int64_t, 2> FingerprintsOfOld(const ItemRecord& record);

// How the parts of a mail's attachments were headed, as far as their descriptions tell: by type, ID and
// disposition. Nothing if none of them does, as in archives of before.
std::vector<std::string> HeadingsOf(const ItemRecord& record);
// Whether two records tell of headings that differ.
bool HaveOtherHeadings(const ItemRecord& one, const ItemRecord& other);

// The IDs that a mail may have in an archive that it came into by other rules or by a program of before,
// which read other dates or none: IDs begin with a stamp of it.
std::vector<std::string> IdsOfOld(std::string_view id);

}  // namespace vorlent
