#include "Component/Com/Module.h"

#include <cstring>
#include <utility>

#include "Host/Com/Failures.h"
#include "Platform/CodePage.h"

extern "C" IMAGE_DOS_HEADER __ImageBase;  // the linker's name for where the library lies

namespace vorlent::com {

Module& Module::Current() {
  // Never destroyed: when the process ends, the system's libraries may be gone before this one.
  static auto* const module = new Module;
  return *module;
}

std::wstring Module::Path() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(reinterpret_cast<HMODULE>(&__ImageBase), path.data(),
                                            static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

ITypeLib& Module::TypeLibrary() {
  if (library_ == nullptr) Check(LoadTypeLibEx(Path().c_str(), REGKIND_NONE, &library_));
  return *library_.Get();
}

bool Module::ByBytes::operator()(const GUID& a, const GUID& b) const {
  return std::memcmp(&a, &b, sizeof(GUID)) < 0;
}

const DispatchTable& Module::TableOf(REFIID interfaceId) {
  const auto found = tables_.find(interfaceId);
  if (found != tables_.end()) return found->second;
  return tables_.try_emplace(interfaceId, TypeLibrary(), interfaceId).first->second;
}

void Module::InstallHost(Expose expose) {
  if (host_ != nullptr) return;
  host_ = std::make_shared<ComHost>(std::move(expose));
  HostObjects::Install(host_);
}

void Module::Bury(std::unique_ptr<Remains> remains) {
  std::swap(remains_[oldestRemains_], remains);
  oldestRemains_ = (oldestRemains_ + 1) % kKeptRemains;
}

bool Module::MayUnload() {
  if (held_ != 0) return false;
  for (std::unique_ptr<Remains>& remains : remains_)
    remains = nullptr;
  HostObjects::Install(nullptr);
  host_ = nullptr;
  tables_.clear();
  library_ = nullptr;
  return true;
}

}  // namespace vorlent::com
