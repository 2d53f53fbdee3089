#include "Platform/WorkFolder.h"

#include <windows.h>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Guid.h"
#include "Platform/User.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

constexpr std::string_view kPrefix = "vorlent-";
constexpr std::size_t kRandomLength = 6;
constexpr std::string_view kMarkerName = ".in-use";
constexpr int kAll = kReadOnly | kHidden | kSystem | kDirectory | kArchive;

std::string NewName() {
  constexpr std::string_view kLetters = "0123456789abcdefghijklmnopqrstuv";
  const auto bytes = NewGuidBytes();
  std::string name(kPrefix);
  for (std::size_t i = 0; i < kRandomLength; ++i)
    name += kLetters[bytes[i] % kLetters.size()];
  return name;
}

bool HasWorkFolderName(std::string_view name) {
  return name.size() == kPrefix.size() + kRandomLength && name.starts_with(kPrefix);
}

// Held by one handle only: as long as that is open, nobody else can open or remove the marker.
Handle HoldMarker(const std::string& folder, DWORD creation) {
  return Handle(CreateFileW(CallPathOf(folder + std::string(kMarkerName)).c_str(),
                            GENERIC_READ | GENERIC_WRITE, 0, nullptr, creation,
                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

// Removes what a folder holds but for the entry `last`. Of a link only the link goes.
void Empty(const std::string& folder, std::string_view last = {}) {
  for (const std::string& name : ListNames(folder, "*", kAll)) {
    const std::string path = folder + name;
    const int attributes = TryReadAttributes(path).value_or(0);
    if (name == last) continue;
    Swallow([&] { WriteAttributes(path, 0); });
    const bool isFolder = (attributes & kDirectory) != 0;
    if (isFolder && (attributes & kLink) == 0) Empty(path + "\\");
    Swallow([&] { isFolder ? RemoveFolder(path) : RemoveFile(path); });
  }
}

// The marker goes last: a removal that is cut short leaves a folder that can still be told.
void Remove(const std::string& folder, Handle marker) {
  Swallow([&] { Empty(folder, kMarkerName); });
  { const Handle letGo = std::move(marker); }
  Swallow([&] { RemoveFile(folder + std::string(kMarkerName)); });
  Swallow([&] { RemoveFolder(folder); });
}

void RemoveIfAbandoned(const std::string& folder) {
  const auto attributes = TryReadAttributes(folder);
  if (!attributes || (*attributes & kLink) != 0) return;
  Handle marker = HoldMarker(folder, OPEN_EXISTING);
  if (marker.IsOpen()) Remove(folder, std::move(marker));
}

}  // namespace

WorkFolder::WorkFolder() {
  while (!TryMake()) {
  }
}

bool WorkFolder::TryMake() {
  const std::string name = TemporaryFolder() + NewName();
  if (CreateDirectoryW(CallPathOf(name).c_str(), nullptr) == 0) {
    const DWORD error = LastError();
    if (error == ERROR_ALREADY_EXISTS) return false;
    RaiseSystemFailure(error, name);
  }
  path_ = name + '\\';
  marker_ = HoldMarker(path_, CREATE_NEW).Release();
  Require(marker_ != kNone, path_);
  return true;
}

WorkFolder::~WorkFolder() {
  Remove(path_, Handle(AsHandle(marker_)));
}

void RemoveAbandonedWorkFolders() {
  const std::string place = TemporaryFolder();
  std::vector<std::string> names;
  Swallow([&] { names = ListNames(place, "*", kAll); });
  for (const std::string& name : names) {
    if (HasWorkFolderName(name)) RemoveIfAbandoned(place + name + "\\");
  }
}

}  // namespace vorlent::os
