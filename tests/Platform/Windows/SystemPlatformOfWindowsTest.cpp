#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <thread>

#include "Platform/Locale.h"
#include "Platform/NativePaths.h"
#include "Platform/Settings.h"
#include "Platform/SystemPlatform.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

// --- Processes -------------------------------------------------------------------------------------------

// A program that waits; ended by the destructor if it still runs.
class Program {
 public:
  Program() {
    char command[] = "cmd.exe /c pause";
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    isStarted_ = CreateProcessA(nullptr, command, nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                                &start, &process_) != 0;
  }
  ~Program() {
    if (!isStarted_) return;
    TerminateProcess(process_.hProcess, 0);
    CloseHandle(process_.hProcess);
    CloseHandle(process_.hThread);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool IsStarted() const { return isStarted_; }
  std::uint32_t Id() const { return process_.dwProcessId; }
  // Its exit code, once it has ended within some seconds.
  DWORD Await() const {
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process_.hProcess, 5000);
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION process_ = {};
  bool isStarted_ = false;
};

std::string NameOf(SystemPlatform& platform, std::uint32_t id) {
  const auto processes = platform.Processes();
  if (!processes) return "";
  const auto found = std::ranges::find(*processes, id, &ProcessEntry::id);
  return found == processes->end() ? "" : found->name.substr(0, found->name.find('\0'));
}

TEST(ProcessesOfWindowsTest, RunningProgramIsFoundByTheNameOfItsFileUntilItIsTerminated) {
  SystemPlatform platform;
  const Program program;
  ASSERT_TRUE(program.IsStarted());
  EXPECT_EQ(NameOf(platform, program.Id()), "cmd.exe");
  EXPECT_EQ(NameOf(platform, GetCurrentProcessId()), "test_platform.exe");
  platform.Terminate(program.Id());
  EXPECT_EQ(program.Await(), 1u);
  EXPECT_EQ(NameOf(platform, program.Id()), "");
}

TEST(ProcessesOfWindowsTest, SnapshotIsKeptForAMomentOnly) {
  SystemPlatform platform;
  platform.Processes();
  const Program program;
  std::this_thread::sleep_for(SystemPlatform::kSnapshotTime);
  EXPECT_EQ(NameOf(platform, program.Id()), "cmd.exe");
}

TEST(ProcessesOfWindowsTest, IdsOfNoProcessAreHarmless) {
  SystemPlatform platform;
  for (const std::uint32_t id : {0u, 0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu}) {
    platform.CloseWindows(id);
    platform.Terminate(id);
  }
  EXPECT_EQ(NameOf(platform, GetCurrentProcessId()), "test_platform.exe");
}

// --- Drives, registry ------------------------------------------------------------------------------------

constexpr std::uint32_t kUserHive = 0x80000001;
const char* const kShellFoldersKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class DesktopOfWindowsTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetSettings(); }
  void TearDown() override { os::ResetSettings(); }

  TemporaryFolder folder_;
  SystemPlatform platform_;
};

TEST_F(DesktopOfWindowsTest, DriveTypeIsTheSystemsButForDrivesThatWereSet) {
  folder_.Write("file", "");
  os::SetDrive('X', folder_.Native().string());
  os::SetDrive('Y', folder_.Native("none").string());
  os::SetDrive('V', folder_.Native("file").string());
  struct Row {
    const char* root;
    int type;
  };
  const Row rows[] = {{"C:\\", 3}, {"c:\\", 3}, {"X:\\", 3}, {"Y:\\", 1}, {"V:\\", 1},
                      {"Q:\\", 1}, {"1:\\", 1}, {"", 1},     {"C", 1},    {"C:\\tmp", 1}};
  for (const Row& row : rows)
    EXPECT_EQ(platform_.DriveType(row.root), row.type) << row.root;
}

TEST_F(DesktopOfWindowsTest, ApplicationDataFolderIsTheUsersUnlessItWasSet) {
  const auto own = platform_.QueryRegistry(kUserHive, kShellFoldersKey, "AppData");
  ASSERT_TRUE(own && own->bytes);
  EXPECT_EQ(own->type, 1u);
  EXPECT_EQ(own->size, own->bytes->size());
  EXPECT_THAT(*own->bytes, testing::StartsWith("C:\\users\\"));
  os::SetAppDataFolder(folder_.Native().string());
  const auto set = platform_.QueryRegistry(kUserHive, kShellFoldersKey, "appdata");
  ASSERT_TRUE(set.has_value());
  EXPECT_EQ(set->bytes, folder_.Path() + '\0');
}

TEST_F(DesktopOfWindowsTest, RegistryIsAskedForEveryOtherValue) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, "Software\\VorlentTest", &key), ERROR_SUCCESS);
  const DWORD number = 4711;
  RegSetValueExA(key, "number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
  RegSetValueExA(key, "", 0, REG_SZ, reinterpret_cast<const BYTE*>("own"), 4);
  const auto found = platform_.QueryRegistry(kUserHive, "Software\\VorlentTest", "number");
  const auto own = platform_.QueryRegistry(kUserHive, "Software\\VorlentTest", "");
  const auto none = platform_.QueryRegistry(kUserHive, "Software\\VorlentTest", "none");
  RegCloseKey(key);
  RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\VorlentTest");
  ASSERT_TRUE(found && own);
  EXPECT_EQ(found->type, 4u);
  EXPECT_EQ(found->bytes, std::string("\x67\x12\0\0", 4));
  EXPECT_EQ(own->bytes, std::string("own\0", 4));
  EXPECT_FALSE(none.has_value());
  EXPECT_FALSE(platform_.QueryRegistry(kUserHive, "Software\\VorlentTest", "number").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(1, "Software", "").has_value());
}

// --- The user's way to write numbers ---------------------------------------------------------------------

TEST(LocaleOfWindowsTest, DecimalSignIsThatOfTheUser) {
  wchar_t before[8];
  ASSERT_GT(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, before, 8), 0);
  for (const wchar_t* sign : {L",", L"."}) {
    ASSERT_NE(SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, sign), 0);
    EXPECT_EQ(os::DecimalSign(), static_cast<char>(sign[0]));
  }
  SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, before);
}

TEST(LocaleOfWindowsTest, MessagesHaveTheLocaleOfTheUsersLanguage) {
  const std::string locale = os::MessageLocale();
  wchar_t language[8];
  ASSERT_GT(
      GetLocaleInfoW(MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT), LOCALE_SISO639LANGNAME, language, 8),
      0);
  EXPECT_EQ(locale.substr(0, 2),
            std::string({static_cast<char>(language[0]), static_cast<char>(language[1])}));
  EXPECT_EQ(locale.find('-'), std::string::npos);
}

}  // namespace
}  // namespace vorlent
