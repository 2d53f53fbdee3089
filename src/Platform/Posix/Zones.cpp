// The files of the time-zone database (RFC 8536).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Platform/EpochTime.h"

namespace vorlent::os {

namespace {

constexpr std::string_view kZoneFolder = "/usr/share/zoneinfo/";
constexpr std::string_view kZoneMark = "TZif";
constexpr std::size_t kZoneHeaderLength = 44;
constexpr std::size_t kFirstCount = 20;
constexpr std::size_t kNumberLength = 4;
constexpr std::size_t kMomentLength = 8;
constexpr std::size_t kKindLength = 6;  // an offset, whether it is summer time, and the place of its name

struct OffsetChange {
  std::chrono::sys_seconds moment;
  std::chrono::seconds offset;
};

// From the first offset on, which has no beginning.
using ZoneOffsets = std::vector<OffsetChange>;

std::uint64_t BigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes)
    number = number << 8U | static_cast<unsigned char>(byte);
  return number;
}

std::int32_t NumberAt(std::string_view bytes, std::size_t place) {
  return static_cast<std::int32_t>(BigEndian(bytes.substr(place, kNumberLength)));
}

std::size_t CountAt(std::string_view block, std::size_t index) {
  return static_cast<std::size_t>(
      BigEndian(block.substr(kFirstCount + index * kNumberLength, kNumberLength)));
}

bool IsZoneBlock(std::string_view block) {
  return block.size() >= kZoneHeaderLength && block.starts_with(kZoneMark);
}

// How many bytes there are of each thing that the header counts: marks of UTC and of standard time, leap
// seconds, changes, kinds of offsets, and characters of names.
std::size_t LengthOfOldBlock(std::string_view block) {
  return kZoneHeaderLength + CountAt(block, 0) + CountAt(block, 1) + 8 * CountAt(block, 2) +
         5 * CountAt(block, 3) + kKindLength * CountAt(block, 4) + CountAt(block, 5);
}

// A block of times of 32 bits for programs of old is followed by one of 64 bits. No offsets for what is no
// such file.
ZoneOffsets ParseZone(std::string_view block) {
  if (!IsZoneBlock(block)) return {};
  block.remove_prefix(std::min(block.size(), LengthOfOldBlock(block)));
  if (!IsZoneBlock(block)) return {};
  const std::size_t changes = CountAt(block, 3);
  const std::size_t kinds = CountAt(block, 4);
  const std::size_t kindOfChange = kZoneHeaderLength + changes * kMomentLength;
  const std::size_t firstKind = kindOfChange + changes;
  if (kinds == 0 || block.size() < firstKind + kinds * kKindLength) return {};
  const auto offset = [&](std::size_t kind) {
    return std::chrono::seconds(NumberAt(block, firstKind + std::min(kind, kinds - 1) * kKindLength));
  };
  ZoneOffsets offsets = {{std::chrono::sys_seconds::min(), offset(0)}};
  for (std::size_t i = 0; i < changes; ++i) {
    const std::string_view moment = block.substr(kZoneHeaderLength + i * kMomentLength, kMomentLength);
    offsets.push_back(
        {std::chrono::sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(BigEndian(moment)))),
         offset(static_cast<unsigned char>(block[kindOfChange + i]))});
  }
  return offsets;
}

// A name that leads out of the folder is none.
bool IsZoneName(std::string_view name) {
  constexpr std::string_view kCharacters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_+-/";
  constexpr std::size_t kLongest = 100;
  return !name.empty() && name.size() <= kLongest && name.front() != '/' &&
         name.find_first_not_of(kCharacters) == std::string_view::npos;
}

ZoneOffsets ReadZone(std::string_view name) {
  std::ifstream file(std::string(kZoneFolder).append(name), std::ios::binary);
  // What can't be read, such as a folder, leaves nothing here.
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return ParseZone(bytes.view());
}

}  // namespace

std::optional<std::chrono::seconds> TryZoneOffsetAt(std::string_view zone, std::chrono::sys_seconds moment) {
  static thread_local std::map<std::string, ZoneOffsets, std::less<>> known;
  if (!IsZoneName(zone)) return std::nullopt;
  auto found = known.find(zone);
  if (found == known.end()) found = known.emplace(zone, ReadZone(zone)).first;
  const ZoneOffsets& offsets = found->second;
  if (offsets.empty()) return std::nullopt;
  const auto next = std::ranges::upper_bound(offsets, moment, {}, &OffsetChange::moment);
  return next == offsets.begin() ? next->offset : std::prev(next)->offset;
}

}  // namespace vorlent::os
