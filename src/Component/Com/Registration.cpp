#include "Component/Com/Registration.h"

#include <string>
#include <string_view>
#include <vector>

#include "Component/Com/Control/ControlStatus.h"
#include "Component/Com/Module.h"
#include "Component/Component.h"
#include "Host/Com/Failures.h"
#include "Host/Com/Text.h"

namespace vorlent::com {

namespace {

constexpr std::wstring_view kLibraryId = L"{94BFF4C8-DD5C-4626-9004-C44E5E126A33}";
constexpr std::wstring_view kVersion = L"1.0";
// The class that a container may show in a window.
constexpr std::string_view kControl = "VorlentMozilla.WizardImport";

// A value of a key below HKEY_CLASSES_ROOT.
struct Entry {
  std::wstring key;
  std::wstring name;  // "" is the key's own value
  std::wstring value;
};

void CheckSystem(LSTATUS status) {
  if (status != ERROR_SUCCESS) throw FailureOf(HRESULT_FROM_WIN32(static_cast<DWORD>(status)), {});
}

std::wstring ClassKey(const ComponentClass& entry) {
  return L"CLSID\\" + WideOf(entry.classId);
}

std::vector<Entry> EntriesOf(const ComponentClass& entry) {
  const std::wstring progId = WideOf(entry.progId), classId = WideOf(entry.classId), key = ClassKey(entry);
  std::vector<Entry> entries = {
      {progId, L"", progId},
      {progId + L"\\CLSID", L"", classId},
      {key, L"", progId},
      {key + L"\\InprocServer32", L"", Module::Path()},
      {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {key + L"\\ProgID", L"", progId},
      {key + L"\\Programmable", L"", L""},
      {key + L"\\TypeLib", L"", std::wstring(kLibraryId)},
      {key + L"\\VERSION", L"", std::wstring(kVersion)},
  };
  if (entry.progId == kControl) {
    entries.push_back({key + L"\\Control", L"", L""});
    entries.push_back({key + L"\\MiscStatus", L"", L"0"});
    entries.push_back({key + L"\\MiscStatus\\1", L"", std::to_wstring(kControlStatus)});
  }
  return entries;
}

void Write(const Entry& entry) {
  const auto bytes = static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t));
  CheckSystem(RegSetKeyValueW(HKEY_CLASSES_ROOT, entry.key.c_str(),
                              entry.name.empty() ? nullptr : entry.name.c_str(), REG_SZ, entry.value.c_str(),
                              bytes));
}

void RemoveTree(const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
  if (status != ERROR_FILE_NOT_FOUND) CheckSystem(status);
}

// Those of the library are written by the system, which also finds what to remove.
void RemoveTypeLibrary(ITypeLib& library) {
  TLIBATTR* attributes = nullptr;
  Check(library.GetLibAttr(&attributes));
  const TLIBATTR copy = *attributes;
  library.ReleaseTLibAttr(attributes);
  BSTR known = nullptr;
  const bool isKnown =
      SUCCEEDED(QueryPathOfRegTypeLib(copy.guid, copy.wMajorVerNum, copy.wMinorVerNum, copy.lcid, &known));
  SysFreeString(known);
  if (isKnown)
    Check(UnRegisterTypeLib(copy.guid, copy.wMajorVerNum, copy.wMinorVerNum, copy.lcid, copy.syskind));
}

}  // namespace

void Register() {
  for (const ComponentClass& entry : ComponentClasses()) {
    for (const Entry& value : EntriesOf(entry))
      Write(value);
  }
  Check(RegisterTypeLib(&Module::Current().TypeLibrary(), Module::Path().data(), nullptr));
}

void Unregister() {
  for (const ComponentClass& entry : ComponentClasses()) {
    RemoveTree(WideOf(entry.progId));
    RemoveTree(ClassKey(entry));
  }
  RemoveTypeLibrary(Module::Current().TypeLibrary());
}

}  // namespace vorlent::com
