#include "Standalone/LiftedQuery.h"

#include <cstddef>
#include <optional>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// More parameters than any query of this kind has, fewer than SQLite allows.
constexpr std::size_t kMostValues = 16;

// Quoted names, parentheses, parameters, blobs' and comments' beginnings, and the end of a statement: with
// one of them a query isn't plain. "-" and "/" also stand in numbers and quotients, where they do no harm.
constexpr std::string_view kNotPlain = "\"`[(?:@$;#";

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsPlain(std::string_view part) {
  return part.find_first_of(kNotPlain) == std::string_view::npos &&
         part.find("--") == std::string_view::npos && part.find("/*") == std::string_view::npos;
}

// The part in front of a literal, if the literal is what something is compared with.
bool EndsInComparison(std::string_view part) {
  while (!part.empty() && IsBlank(part.back()))
    part.remove_suffix(1);
  return part.ends_with('=');
}

// The value of the literal that `rest` begins with; cuts it off. Inside, a doubled quote stands for one.
std::optional<std::string> CutLiteral(std::string_view& rest) {
  std::string value;
  for (std::size_t at = 1; at < rest.size(); ++at) {
    if (rest[at] == '\'' && rest.substr(at + 1, 1) != "'") {
      rest.remove_prefix(at + 1);
      return value;
    }
    if (rest[at] == '\'') ++at;
    value += rest[at];
  }
  return std::nullopt;
}

bool BehindWhere(std::string_view part) {
  return LowerCase(part).find(" where ") != std::string::npos;
}

}  // namespace

LiftedQuery LiftLiterals(std::string_view sql) {
  const LiftedQuery plain{std::string(sql), {}};
  const bool readable = sql.find('\0') == std::string_view::npos;
  if (!readable || !EqualNoCase(sql.substr(0, 7), "SELECT ")) return plain;
  LiftedQuery lifted;
  std::string_view rest = sql;
  for (std::size_t quote = rest.find('\''); quote != std::string_view::npos; quote = rest.find('\'')) {
    const std::string_view part = rest.substr(0, quote);
    if (lifted.values.empty() && !BehindWhere(part)) return plain;
    if (!IsPlain(part) || !EndsInComparison(part) || lifted.values.size() == kMostValues) return plain;
    rest.remove_prefix(quote);
    std::optional<std::string> value = CutLiteral(rest);
    if (!value.has_value() || (!rest.empty() && !IsBlank(rest.front()))) return plain;
    lifted.sql.append(part).append("?");
    lifted.values.push_back(std::move(*value));
  }
  if (!IsPlain(rest)) return plain;
  lifted.sql.append(rest);
  return lifted;
}

}  // namespace vorlent
