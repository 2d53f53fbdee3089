#include "Standalone/Condition.h"

#include <algorithm>

#include "Common/StdModul.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent {

namespace {

constexpr std::string_view kTypeTest = "$type=";

bool HasDataOrKeyword(const Item& item, std::string_view pair) {
  const std::size_t equals = pair.find('=');
  if (item.DataText(pair.substr(0, equals)) == pair.substr(equals + 1)) return true;
  for (std::string rest = KeywordsOf(item); !rest.empty();) {
    if (CutToken(rest, ",") == pair) return true;
  }
  return false;
}

bool AlternativeHolds(const Item& item, std::string_view alternative) {
  if (alternative.starts_with(kTypeTest)) return item.Type() == alternative.substr(kTypeTest.size());
  if (alternative.find('=') != std::string_view::npos && HasDataOrKeyword(item, alternative)) return true;
  return LiesUnder(KeywordsOf(item), alternative);
}

}  // namespace

Condition::Condition(std::string_view text) {
  for (std::string rest(text); !rest.empty();) {
    if (std::string alternative = CutTrimmedToken(rest, "|"); !alternative.empty()) {
      alternatives_.push_back(std::move(alternative));
    }
  }
}

bool Condition::Holds(const Item& item) const {
  return alternatives_.empty() ||
         std::any_of(alternatives_.begin(), alternatives_.end(),
                     [&](const std::string& alternative) { return AlternativeHolds(item, alternative); });
}

bool LiesUnder(std::string_view keywords, std::string_view path) {
  return keywords.starts_with(path) &&
         (path.empty() || keywords.size() == path.size() || keywords[path.size()] == ',');
}

}  // namespace vorlent
