// The numbers of what this host does to an item, and their names.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vorlent {

// The component itself passes two of them: 37 for a pasted item and 38 for a deleted one. A keyword added has
// a number but no name, since no connector knows how to repeat it.
namespace action {
inline constexpr std::int32_t kKeywordAdd = 33;
inline constexpr std::int32_t kChangeText = 34;
inline constexpr std::int32_t kDate = 35;
inline constexpr std::int32_t kDataSet = 36;
inline constexpr std::int32_t kItemInsert = 37;
inline constexpr std::int32_t kItemRemove = 38;
}  // namespace action

struct HostAction {
  std::int32_t number;
  std::string_view name;
};

inline constexpr std::array<HostAction, 5> kHostActions = {{{action::kChangeText, "ChangeText"},
                                                            {action::kDate, "Date"},
                                                            {action::kDataSet, "DataSet"},
                                                            {action::kItemInsert, "ItemInsert"},
                                                            {action::kItemRemove, "ItemRemove"}}};

// The name of an action, "" for a number without one.
constexpr std::string_view HostActionName(std::int32_t number) {
  for (const HostAction& action : kHostActions) {
    if (action.number == number) return action.name;
  }
  return {};
}

}  // namespace vorlent
