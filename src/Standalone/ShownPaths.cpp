#include "Standalone/ShownPaths.h"

#include <algorithm>

#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

bool IsLetter(char c) {
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'z';
}

bool BeginsWithDrive(std::string_view text) {
  return text.size() > 2 && IsLetter(text[0]) && text.substr(1, 2) == ":\\";
}

// What the profiles of this system give: a native folder, and behind it the component's own separators.
bool BeginsAtRoot(std::string_view text) {
  return text.starts_with('/') && text.find('\\') < std::min(text.find_first_of(kLineEnds), text.size());
}

// Most characters can't be the first of a path, which is asked for each.
bool MayBePathAt(std::string_view text, std::size_t at) {
  return text[at] == '/' || (at + 1 < text.size() && text[at + 1] == ':');
}

bool IsPathAt(std::string_view text, std::size_t at) {
  const char before = at == 0 ? ' ' : text[at - 1];
  if (BeginsWithDrive(text.substr(at))) return !IsLetter(before);
  return (before == ' ' || before == '\'' || before == '"') && BeginsAtRoot(text.substr(at));
}

// Where the next path of a text begins, its end if there is none.
std::size_t FindPath(std::string_view text, std::size_t from) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (MayBePathAt(text, at) && IsPathAt(text, at)) return at;
  }
  return text.size();
}

std::size_t PathLength(std::string_view text) {
  return std::min(text.find_first_of(kLineEnds), FindPath(text, 1));
}

bool AreShownNative() {
  return CurrentRules().shownPaths == ShownPaths::Native;
}

std::string WithPathsOf(NativePaths& paths, std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t start = FindPath(text, 0);
    shown += DisplayUtf8(text.substr(0, start));
    text.remove_prefix(start);
    const std::size_t length = PathLength(text);
    shown += paths.Of(text.substr(0, length));
    text.remove_prefix(std::min(length, text.size()));
  }
  return shown;
}

}  // namespace

std::string WithNativePaths(std::string_view text) {
  NativePaths paths;
  return WithPathsOf(paths, text);
}

std::string WithShownPaths(std::string_view text) {
  NativePaths paths;
  return WithShownPaths(text, paths);
}

std::string WithShownPaths(std::string_view text, NativePaths& paths) {
  return AreShownNative() ? WithPathsOf(paths, text) : DisplayUtf8(text);
}

bool TakesPathsAsAddresses() {
  return AreShownNative();
}

std::string NativePaths::Of(std::string_view path) {
  if (!IsPathAt(path, 0)) return DisplayUtf8(path);
  if (path.find(os::StandInFor('\\')) != std::string_view::npos) {
    if (const std::string native = os::ToNativePath(path); !native.empty()) return native;
  }
  const std::size_t name = path.rfind('\\') + 1;
  if (path.substr(0, name) != folder_) {
    folder_ = path.substr(0, name);
    native_ = os::ToNativePath(folder_);
  }
  return native_.empty() ? DisplayUtf8(path) : native_ + DisplayUtf8(path.substr(name));
}

}  // namespace vorlent
