#include "Component/Com/HostedTest.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "Support/SourceTree.h"

namespace vorlent::com {

namespace {

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr wchar_t kAppData[] = L"AppData";

LRESULT CALLBACK RefuseDialogs(int code, WPARAM window, LPARAM detail) {
  constexpr LRESULT kRefused = 1;
  constexpr ULONG_PTR kDialogs = 32770;  // the atom of their class
  if (code == HCBT_CREATEWND) {
    const CREATESTRUCTW* const made = reinterpret_cast<CBT_CREATEWNDW*>(detail)->lpcs;
    if (reinterpret_cast<ULONG_PTR>(made->lpszClass) == kDialogs) return kRefused;
  }
  return CallNextHookEx(nullptr, code, window, detail);
}

std::wstring AppData() {
  wchar_t path[MAX_PATH] = {};
  DWORD size = sizeof(path);
  RegGetValueW(HKEY_CURRENT_USER, kShellFolders, kAppData, RRF_RT_REG_SZ, nullptr, path, &size);
  return path;
}

void SetAppData(const std::wstring& path) {
  RegSetKeyValueW(HKEY_CURRENT_USER, kShellFolders, kAppData, REG_SZ, path.c_str(),
                  static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
}

void ReplaceAll(std::string& text, std::string_view old, std::string_view by) {
  for (std::size_t at = text.find(old); at != std::string::npos; at = text.find(old, at + by.size()))
    text.replace(at, old.size(), by);
}

std::string WithDoubledBackslashes(std::string path) {
  ReplaceAll(path, "\\", "\\\\");
  return path;
}

}  // namespace

NoMessageBoxes::NoMessageBoxes()
    : hook_(SetWindowsHookExW(WH_CBT, RefuseDialogs, nullptr, GetCurrentThreadId())) {}

NoMessageBoxes::~NoMessageBoxes() {
  UnhookWindowsHookEx(hook_);
}

CurrentFolder::CurrentFolder(const std::string& path) {
  GetCurrentDirectoryW(MAX_PATH, before_);
  SetCurrentDirectoryW(WideOf(path).c_str());
}

CurrentFolder::~CurrentFolder() {
  SetCurrentDirectoryW(before_);
}

HostedTest::HostedTest() {
  host_ = std::make_unique<ScriptedHost>(folder_.MakeFolder("temp") + "\\");
}

void HostedTest::TearDown() {
  host_->Forget();
  EXPECT_EQ(server_.CanUnloadNow(), S_OK) << "something is still held";
  EXPECT_EQ(ScriptedObject::Living(), 0) << "objects of the host are still held";
}

ComPtr<IClassFactory> HostedTest::ClassObject(REFCLSID id) const {
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(server_.GetClassObject(id, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  return factory;
}

ComPtr<IDispatch> HostedTest::New(REFCLSID id) const {
  ComPtr<IDispatch> made;
  ClassObject(id)->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(made.GetAddressOf()));
  return made;
}

SampleTest::SampleTest() : appDataBefore_(AppData()) {
  // Before the current folder changes, on whose drive a path without one lies.
  std::filesystem::copy(std::filesystem::absolute(SourcePath("samples/AppData")), folder_.Native("AppData"),
                        std::filesystem::copy_options::recursive);
  for (const char* profile : {"k3j9x2ab.default", "w2x8q7cd.buero"}) {
    const std::string name = std::string("AppData/Thunderbird/Profiles/") + profile + "/prefs.js";
    std::string settings = folder_.Read(name);
    ReplaceAll(settings, "S:\\\\AppData", WithDoubledBackslashes(folder_.Path("AppData")));
    folder_.Write(name, settings);
  }
  SetAppData(WideOf(folder_.Path("AppData")));
  current_ = std::make_unique<CurrentFolder>(folder_.MakeFolder("current"));
}

SampleTest::~SampleTest() {
  SetAppData(appDataBefore_);
}

}  // namespace vorlent::com
