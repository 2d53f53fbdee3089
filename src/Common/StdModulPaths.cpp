#include "Common/StdModul.h"

namespace vorlent {

namespace {

bool IsAddress(std::string_view p) {
  return p.find("://") != std::string_view::npos;
}

bool HasDrive(std::string_view p) {
  return p.size() > 1 && p[1] == ':';
}

// Offset of what follows the last separator of either kind, 0 without one.
std::size_t NameStart(std::string_view p) {
  return p.find_last_of("\\/") + 1;
}

// `rel`, which isn't absolute, put after `base`, with the steps in it left as they are.
std::string JoinPath(std::string_view base, std::string_view rel) {
  const std::string step = Trim(rel);
  if (!rel.starts_with('\\')) return AddPathSep(base) + step;
  const std::string root = Trim(base);
  return HasDrive(root) ? root.substr(0, 2) + step : step;
}

void DropSelfSteps(std::string& path) {
  while (path.starts_with(".\\"))
    path.erase(0, 2);
  if (path.ends_with("\\.")) path.resize(path.size() - 2);
  for (std::size_t at = path.find("\\.\\"); at != std::string::npos; at = path.find("\\.\\", at)) {
    path.erase(at, 2);
  }
}

// Takes every ".." together with the name in front of it.
void DropParentSteps(std::string& path) {
  for (std::size_t at = path.find("\\..\\"); at != std::string::npos; at = path.find("\\..\\")) {
    if (at == 0) {
      path.erase(0, 1);
    } else {
      path = GetPath(std::string_view(path).substr(0, at)) + path.substr(at + 4);
    }
  }
}

}  // namespace

std::string AddPathSep(std::string_view p) {
  std::string path = Trim(p);
  const char separator = IsAddress(path) ? '/' : '\\';
  if (!path.empty() && path.back() != separator) path += separator;
  return path;
}

std::string RemovePathSep(std::string_view p) {
  const std::string_view behindFirst = p.empty() ? p : p.substr(1);
  if (p.ends_with('/') || (p.ends_with('\\') && behindFirst != ":\\"))
    return std::string(p.substr(0, p.size() - 1));
  return std::string(p) + (behindFirst == ":" ? "\\" : "");
}

std::string AddPath(std::string_view base, std::string_view rel) {
  if (IsAbsolutePath(rel)) return Trim(rel);
  if (IsAddress(base)) return std::string(base).append(rel);
  std::string path = JoinPath(base, rel);
  DropSelfSteps(path);
  if (!path.starts_with("..")) DropParentSteps(path);
  return path;
}

bool IsAbsolutePath(std::string_view p) {
  return HasDrive(p) || p.starts_with("\\\\") || IsAddress(p);
}

std::string GetPath(std::string_view p) {
  return Trim(p.substr(0, NameStart(p)));
}

std::string GetFileName(std::string_view p) {
  return Trim(p.substr(NameStart(p)));
}

}  // namespace vorlent
