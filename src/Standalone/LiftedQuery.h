// The form that queries which differ in a value alone have in common.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// A query in which string literals have become parameters, so that it has to be prepared once for all values.
struct LiftedQuery {
  std::string sql;
  std::vector<std::string> values;  // of the parameters in order; none if the query is as it was
};

// Lifts the literals of comparisons ("= 'text'") out of the WHERE clause of a plain SELECT. Wherever a
// literal might stand for something else than a value, or be part of a column's name, the query stays as it
// is; text that isn't valid stays as it is too.
LiftedQuery LiftLiterals(std::string_view sql);

}  // namespace vorlent
