// The keys of the fields of an item's record "key=value|key=value", which connectors write and hosts read.
// Letter case counts.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// The fields of every item.
namespace record_key {

inline constexpr std::string_view kId = "ID";
inline constexpr std::string_view kType = "Type";
inline constexpr std::string_view kText = "Text";
inline constexpr std::string_view kKeywords = "Keywords";
inline constexpr std::string_view kDate = "Date";
inline constexpr std::string_view kOwner = "Owner";
inline constexpr std::string_view kLog = "Log";
inline constexpr std::string_view kSource =
    "Source";  // address of the mailbox that a streamed mail came from

// Stands in front of the names of data fields, of which each type of item has its own.
inline constexpr std::string_view kDataPrefix = "Data";

}  // namespace record_key

// The names of data fields. Those that describe files are in FileKeys.h.
namespace data_key {

// Of mails. A mail whose files lie in its mailbox tells which, and where it begins there.
inline constexpr std::string_view kFrom = "From";
inline constexpr std::string_view kTo = "To";
inline constexpr std::string_view kCc = "CC";
inline constexpr std::string_view kBcc = "BCC";
inline constexpr std::string_view kEnvelopeTo = "EnvelopeTo";
inline constexpr std::string_view kAttribute = "Attribute";
inline constexpr std::string_view kSize = "Size";
inline constexpr std::string_view kSourceFile = "_SourceFile";
inline constexpr std::string_view kSourceOffset = "_SourceOffset";

// Of bookmarks.
inline constexpr std::string_view kUrl = "Url";
inline constexpr std::string_view kIcon = "Icon";
inline constexpr std::string_view kLastCharset = "LastCharset";
inline constexpr std::string_view kShortcutUrl = "ShortcutUrl";
inline constexpr std::string_view kDescription = "Text";

// Of events and tasks; of places to browse, of which the first is an address.
inline constexpr std::string_view kLocation = "Location";
inline constexpr std::string_view kCalendar = "Calendar";
inline constexpr std::string_view kDateEnd = "DateEnd";
inline constexpr std::string_view kCheck = "Check";
inline constexpr std::string_view kPath = "Path";

}  // namespace data_key

// Puts a field at the end of a record. A value that may hold "|" must be escaped before.
inline void AppendField(std::string& record, std::string_view key, std::string_view value) {
  if (!record.empty()) record += '|';
  record.append(key).append("=").append(value);
}
inline void AppendDataField(std::string& record, std::string_view name, std::string_view value) {
  if (!record.empty()) record += '|';
  record.append(record_key::kDataPrefix).append(name).append("=").append(value);
}

}  // namespace vorlent
