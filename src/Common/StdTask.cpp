#include "Common/StdTask.h"

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

// A snapshot may hold bytes after the zero that ends a name.
std::string FileNameOf(const ProcessEntry& process) {
  return PeekToken(process.name, std::string_view("\0", 1));
}

}  // namespace

std::shared_ptr<KeyedList<std::string>> GetProcessList() {
  const auto processes = Platform::Current().Processes();
  if (!processes) return nullptr;
  auto list = std::make_shared<KeyedList<std::string>>();
  for (const ProcessEntry& process : *processes)
    list->Add(std::to_string(process.id) + "|" + FileNameOf(process));
  return list;
}

// Asked for every mail that is deleted, so it goes without the list's texts.
std::uint32_t FindProcessId(std::string_view name) {
  const auto processes = Platform::Current().Processes();
  if (!processes || name.empty()) return 0;
  for (const ProcessEntry& process : *processes) {
    if (EqualNoCase(FileNameOf(process), name)) return process.id;
  }
  return 0;
}

void CloseProcessWindows(std::uint32_t id) {
  Platform::Current().CloseWindows(id);
}

void KillProcess(std::uint32_t id) {
  Platform::Current().Terminate(id);
}

}  // namespace vorlent
