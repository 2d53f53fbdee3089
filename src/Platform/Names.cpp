#include "Platform/Names.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"

namespace vorlent::os {

namespace {

// In upper case; of a name that is UTF-8 where text is code page only the ASCII letters, as a byte of it is
// no character.
std::string UpperCaseName(std::string_view name) {
  if (HoldsUtf8()) return UpperCase(TextToUtf8(name));
  if (IsAscii(name) || !IsMultiByteUtf8(name)) return UpperCase(name);
  std::string upper(name);
  for (char& c : upper) {
    if (static_cast<unsigned char>(c) < 0x80) c = UpperCase(std::string_view(&c, 1)).front();
  }
  return upper;
}

}  // namespace

std::string ToNativeName(std::string_view name) {
  return DisplayUtf8(name);
}

std::string ToWindowsName(std::string_view nativeName) {
  if (IsAscii(nativeName)) return std::string(nativeName);
  auto name = ExactTextFromUtf8(nativeName);
  // "Ã¼" in the code page has the bytes of "ü" in UTF-8, and would be taken for that on the way back.
  if (!name || IsMultiByteUtf8(*name)) return std::string(nativeName);
  return *std::move(name);
}

std::string ToWindowsNames(std::string_view native) {
  std::string path;
  for (std::size_t at = 0; at < native.size();) {
    if (native[at] == '/') {
      path += '\\';
      ++at;
      continue;
    }
    const std::size_t end = std::min(native.find('/', at), native.size());
    path += ToWindowsName(native.substr(at, end - at));
    at = end;
  }
  return path;
}

std::string NameKey(std::string_view name) {
  return IsAscii(name) || IsMultiByteUtf8(name) ? UpperCaseName(name) : TextToUtf8(UpperCaseName(name));
}

bool NameMatches(std::string_view name, std::string_view pattern) {
  if (pattern == "*.*") return true;
  const std::string text = UpperCaseName(name);
  const std::string wanted = UpperCaseName(pattern);
  // Upon a mismatch the last star takes one character more; earlier ones never need to.
  std::size_t at = 0;
  std::size_t next = 0;
  std::size_t star = std::string::npos;
  std::size_t starAt = 0;
  while (at < text.size()) {
    if (next < wanted.size() && wanted[next] == '*') {
      star = next++;
      starAt = at;
    } else if (next < wanted.size() && wanted[next] == '?') {
      ++next;
      at += CharacterLength(std::string_view(text).substr(at));
    } else if (next < wanted.size() && wanted[next] == text[at]) {
      ++next;
      ++at;
    } else if (star != std::string::npos) {
      next = star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  return wanted.find_first_not_of('*', next) == std::string::npos;
}

std::vector<FolderEntry> InOrderOfNames(std::vector<FolderEntry> entries) {
  struct Keyed {
    std::string key;
    FolderEntry* entry;
  };
  std::vector<Keyed> keyed;
  keyed.reserve(entries.size());
  for (FolderEntry& entry : entries)
    keyed.push_back({NameKey(entry.name), &entry});
  // Pointers are sorted: the texts of a large folder take longer to move than to compare.
  std::vector<const Keyed*> sorted;
  sorted.reserve(keyed.size());
  for (const Keyed& each : keyed)
    sorted.push_back(&each);
  std::sort(sorted.begin(), sorted.end(), [](const Keyed* a, const Keyed* b) {
    return std::tie(a->key, a->entry->name) < std::tie(b->key, b->entry->name);
  });
  std::vector<FolderEntry> inOrder;
  inOrder.reserve(keyed.size());
  for (const Keyed* each : sorted)
    inOrder.push_back(std::move(*each->entry));
  return inOrder;
}

std::vector<std::string> ListNames(std::string_view folder, std::string_view pattern, int attributes) {
  std::vector<std::string> names;
  for (FolderEntry& entry : ListEntries(folder, pattern, attributes))
    names.push_back(std::move(entry.name));
  return names;
}

}  // namespace vorlent::os
