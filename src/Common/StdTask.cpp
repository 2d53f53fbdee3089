#include "Common/StdTask.h"

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"

namespace vorlent {

std::shared_ptr<KeyedList<std::string>> GetProcessList() {
  const auto processes = Platform::Current().Processes();
  if (!processes) return nullptr;
  auto list = std::make_shared<KeyedList<std::string>>();
  for (const ProcessEntry& process : *processes) {
    list->Add(std::to_string(process.id) + "|" + PeekToken(process.name, std::string_view("\0", 1)));
  }
  return list;
}

std::uint32_t FindProcessId(std::string_view name) {
  const auto list = GetProcessList();
  if (IsNothing(list) || name.empty()) return 0;
  for (const std::string& entry : *list) {
    std::string_view file = entry;
    const std::string_view id = CutToken(file, "|");
    if (EqualNoCase(file, name)) return static_cast<std::uint32_t>(ReadNumber(id));
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
