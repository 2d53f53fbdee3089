// Which part of a mail is meant.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// A part of the mail's own multipart counts from 1. One that is nested in such a part has the number of that,
// and counts from 1 among all that are nested there, however deep.
struct PartNumber {
  std::int64_t own = 0;
  std::int64_t nested = 0;  // 0 for an own one

  // "2", or "2.3" for a nested one.
  std::string Text() const;
  // By the rules of old there are no nested ones. Raises Overflow where the own number has more than 16 bits.
  static PartNumber Of(std::string_view text);

  // The next part after this one, of the mail's own multipart or of one nested in that.
  PartNumber Next(bool isNested) const;

  bool operator==(const PartNumber&) const = default;
};

}  // namespace vorlent
