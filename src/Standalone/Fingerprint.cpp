#include "Standalone/Fingerprint.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"

namespace vorlent {

namespace {

// The name of a data field, "" for others.
std::string_view DataName(std::string_view key) {
  return key.starts_with(record_key::kDataPrefix) ? key.substr(record_key::kDataPrefix.size()) : "";
}

// Whether a field of a mail tells what the mail client or the reader's clock made of it.
bool IsOfTheReader(std::string_view key) {
  const std::string_view name = DataName(key);
  return key == record_key::kDate || name == data_key::kAttribute || name == data_key::kSize;
}

// What counts of a description. One of a mail's file has the length of that.
std::string CountedLines(std::string_view name, std::string_view description) {
  std::string lines = "file=" + GetLineValue(description, "file");
  if (name != kMailFileKey) lines += "\nsize=" + GetLineValue(description, "size");
  return lines;
}

enum class Sizes { Count, AreLeftOut };

// The lines of a description without that of the size.
std::string WithoutSize(std::string lines) {
  std::string kept;
  while (!lines.empty()) {
    const std::string line = CutLine(lines);
    if (!line.starts_with("size=")) kept.append(line) += '\n';
  }
  return kept;
}

std::int64_t HashOf(const ItemRecord& record, Sizes sizes) {
  TextHash fingerprint;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == record_key::kLog) continue;
    const std::string_view name = DataName(key);
    if (name == data_key::kSize && sizes == Sizes::AreLeftOut) continue;
    std::string value = record.FieldValue(i);
    if (DescribesFile(name)) CutLine(value);
    if (name == kMailFileKey && sizes == Sizes::AreLeftOut) value = WithoutSize(std::move(value));
    fingerprint.Add(key);
    // A mail is known again whichever rules it is read by.
    fingerprint.Add(ToPageText(value));
  }
  return static_cast<std::int64_t>(fingerprint.Value());
}

}  // namespace

std::int64_t FingerprintOf(const ItemRecord& record) {
  const bool isMail = record.Value(record_key::kType) == "mail";
  std::vector<std::pair<std::string, std::string>> fields;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == record_key::kLog || (isMail && IsOfTheReader(key))) continue;
    std::string value = record.FieldValue(i);
    const std::string_view name = DataName(key);
    if (DescribesFile(name)) value = CountedLines(name, value);
    if (!value.empty()) fields.emplace_back(key, ToPageText(value));
  }
  std::ranges::sort(fields);
  TextHash fingerprint;
  for (const auto& [key, value] : fields) {
    fingerprint.Add(key);
    fingerprint.Add(value);
  }
  return static_cast<std::int64_t>(fingerprint.Value());
}

std::array<std::int64_t, 2> FingerprintsOfOld(const ItemRecord& record) {
  return {HashOf(record, Sizes::AreLeftOut), HashOf(record, Sizes::Count)};
}

std::vector<std::string> HeadingsOf(const ItemRecord& record) {
  std::vector<std::string> headings;
  bool tellsAny = false;
  for (std::int32_t position = 1; position <= record.DataCount(); ++position) {
    if (!DescribesAttachment(record.DataKey(position))) continue;
    const std::string description = record.DataValue(position);
    std::string& heading = headings.emplace_back();
    for (const std::string_view key : {"type", "contentid", "disposition"}) {
      const std::string value = GetLineValue(description, key);
      tellsAny = tellsAny || !value.empty();
      heading.append(value) += '\n';
    }
  }
  if (!tellsAny) headings.clear();
  return headings;
}

bool HaveOtherHeadings(const ItemRecord& one, const ItemRecord& other) {
  const std::vector<std::string> first = HeadingsOf(one);
  const std::vector<std::string> second = HeadingsOf(other);
  return !first.empty() && !second.empty() && first != second;
}

std::vector<std::string> IdsOfOld(std::string_view id) {
  constexpr std::size_t kYear = 4, kMonth = 6, kDay = 8, kStamp = 14;
  const bool hasStamp =
      id.size() > kStamp && id[kStamp] == '-' && id.find_first_not_of("0123456789") == kStamp;
  if (!hasStamp) return {};
  const std::string stamp(id.substr(0, kStamp));
  std::vector<std::string> stamps = {
      "00000000000000",
      "20000100000000",                                      // no date
      stamp.substr(0, kYear) + "00" + stamp.substr(kMonth),  // a month in full or in small letters
      stamp.substr(0, kYear) + "0000" + stamp.substr(kDay),  // such a month before the day
      stamp.substr(0, kMonth) + "01" + stamp.substr(kDay),   // a day with a dot
      stamp.substr(0, kDay) + "000000"};                     // a time without colons, or after a "T"
  if (stamp < "1980") stamps.push_back("1980" + stamp.substr(kYear));
  std::ranges::sort(stamps);
  stamps.erase(std::unique(stamps.begin(), stamps.end()), stamps.end());
  std::erase(stamps, stamp);
  for (std::string& each : stamps)
    each += id.substr(kStamp);
  return stamps;
}

}  // namespace vorlent
