#include "Connectors/Mozilla/AddressSegments.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Connectors/Mozilla/RecordedMail.h"

namespace vorlent {

namespace {

bool IsHexDigitOfCode(std::string_view text, std::size_t at) {
  return at < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0;
}

// Whether a "%" would be taken for the beginning of a code.
bool BeginsCode(std::string_view name, std::size_t at) {
  return name[at] == '%' && IsHexDigitOfCode(name, at + 1) && IsHexDigitOfCode(name, at + 2);
}

std::string CodeOf(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'%', kDigits[byte / 16], kDigits[byte % 16]};
}

}  // namespace

std::string AddressSegment(const std::string& name) {
  const bool isMark = name == "." || name == "-";
  std::string segment;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const bool isStarAtTheEnd = name[at] == '*' && at + 1 == name.size();
    const bool misleads = isMark || name[at] == '/' || isStarAtTheEnd || BeginsCode(name, at);
    segment += misleads ? CodeOf(name[at]) : std::string(1, name[at]);
  }
  return segment;
}

std::string OwnNames::Take(const std::string& name) {
  for (std::int32_t number = 1;; ++number) {
    std::string own = NumberedId(name, number);
    if (taken_.insert(own).second) return own;
  }
}

}  // namespace vorlent
