#include "Connectors/Mozilla/PartNumber.h"

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Rules.h"

namespace vorlent {

std::string PartNumber::Text() const {
  const std::string text = std::to_string(own);
  return nested == 0 ? text : text + "." + std::to_string(nested);
}

PartNumber PartNumber::Of(std::string_view text) {
  if (CurrentRules().boundaries == Boundaries::Exact) return {ToInt16(ReadNumber(text)), 0};
  const std::string_view own = CutToken(text, ".");
  return {ToInt16(ReadNumber(own)), ToInt32(ReadNumber(text))};
}

PartNumber PartNumber::Next(bool isNested) const {
  return isNested ? PartNumber{own, nested + 1} : PartNumber{own + 1, 0};
}

}  // namespace vorlent
