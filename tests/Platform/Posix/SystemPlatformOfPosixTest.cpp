#include "Platform/SystemPlatform.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>

#include "Common/StdTask.h"
#include "Platform/CodePage.h"
#include "Platform/Settings.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// Puts other files in the place of descriptors and brings the old ones back.
class ScopedDescriptor {
 public:
  ScopedDescriptor(int descriptor, int replacement) : descriptor_(descriptor), saved_(dup(descriptor)) {
    dup2(replacement, descriptor);
  }
  ~ScopedDescriptor() {
    dup2(saved_, descriptor_);
    close(saved_);
  }
  ScopedDescriptor(const ScopedDescriptor&) = delete;
  ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;

 private:
  int descriptor_;
  int saved_;
};

// --- Messages --------------------------------------------------------------------------------------------

class MessageTest : public testing::Test {
 protected:
  struct Shown {
    MessageAnswer answer;
    std::string text;  // what came on standard error
  };

  // Shows a box in front of a user at a terminal who types `input`.
  static Shown ShowOnTerminal(std::string_view input, MessageButtons buttons) {
    int terminal = -1;
    int user = -1;
    EXPECT_EQ(openpty(&user, &terminal, nullptr, nullptr, nullptr), 0);
    termios quiet;
    tcgetattr(terminal, &quiet);
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    quiet.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    tcsetattr(terminal, TCSANOW, &quiet);
    EXPECT_EQ(write(user, input.data(), input.size()), static_cast<ssize_t>(input.size()));
    Shown shown;
    {
      const ScopedDescriptor in(STDIN_FILENO, terminal);
      const ScopedDescriptor error(STDERR_FILENO, terminal);
      shown.answer = SystemPlatform().ShowMessage("Weiter?", "Titel", MessageIcon::Question, buttons);
    }
    // Once nobody holds the terminal's side any more, what it still has comes to an end.
    close(terminal);
    char buffer[4096];
    for (ssize_t count = 0; (count = read(user, buffer, sizeof buffer)) > 0;) {
      shown.text.append(buffer, static_cast<std::size_t>(count));
    }
    close(user);
    return shown;
  }

  // Shows a box with standard input and standard error as files.
  Shown ShowInBatch(std::string_view text, std::string_view title, MessageButtons buttons) {
    folder_.Write("in", "y\n");
    folder_.Write("out", "");
    const int in = open(folder_.Native("in").c_str(), O_RDONLY);
    const int out = open(folder_.Native("out").c_str(), O_WRONLY);
    Shown shown;
    {
      const ScopedDescriptor input(STDIN_FILENO, in);
      const ScopedDescriptor error(STDERR_FILENO, out);
      shown.answer = SystemPlatform().ShowMessage(text, title, MessageIcon::Question, buttons);
    }
    close(in);
    close(out);
    shown.text = folder_.Read("out");
    return shown;
  }

  TemporaryFolder folder_;
};

TEST_F(MessageTest, TerminalAsksAndReadsTheAnswer) {
  struct Row {
    const char* input;
    MessageAnswer answer;
  };
  const Row rows[] = {
      {"y\n", MessageAnswer::Yes},     {"Yes\n", MessageAnswer::Yes},       {"j\n", MessageAnswer::Yes},
      {"n\n", MessageAnswer::No},      {"NO\n", MessageAnswer::No},         {"nein\n", MessageAnswer::No},
      {"c\n", MessageAnswer::Cancel},  {"cancel\n", MessageAnswer::Cancel}, {"\n", MessageAnswer::Yes},
      {"\x04", MessageAnswer::Cancel},  // the end of the input
  };
  for (const Row& row : rows) {
    const Shown shown = ShowOnTerminal(row.input, MessageButtons::YesNoCancel);
    EXPECT_EQ(shown.answer, row.answer) << row.input;
    EXPECT_EQ(shown.text, "Titel: Weiter?\n[Y]es, [N]o or [C]ancel? ");
  }
}

TEST_F(MessageTest, TerminalAsksAgainUponAnUnclearAnswer) {
  const Shown shown = ShowOnTerminal("perhaps\nn\n", MessageButtons::YesNoCancel);
  EXPECT_EQ(shown.answer, MessageAnswer::No);
  EXPECT_EQ(shown.text, "Titel: Weiter?\n[Y]es, [N]o or [C]ancel? [Y]es, [N]o or [C]ancel? ");
}

TEST_F(MessageTest, BoxWithOneButtonWaitsForNobody) {
  const Shown shown = ShowOnTerminal("", MessageButtons::Ok);
  EXPECT_EQ(shown.answer, MessageAnswer::Ok);
  EXPECT_EQ(shown.text, "Titel: Weiter?\n");
}

TEST_F(MessageTest, WithoutATerminalNothingIsChanged) {
  const Shown question = ShowInBatch("Weiter?", "Titel", MessageButtons::YesNoCancel);
  EXPECT_EQ(question.answer, MessageAnswer::Cancel);
  EXPECT_EQ(question.text, "Titel: Weiter?\n");
  EXPECT_EQ(ShowInBatch("Fertig", "Titel", MessageButtons::Ok).answer, MessageAnswer::Ok);
}

TEST_F(MessageTest, TextsAreShownAsUtf8) {
  EXPECT_EQ(ShowInBatch("Mails gelöscht"_cp, "schließen"_cp, MessageButtons::Ok).text,
            "schließen: Mails gelöscht\n");
}

// --- Processes -------------------------------------------------------------------------------------------

// A child process; killed and buried by the destructor if it still runs.
class Child {
 public:
  explicit Child(const std::function<void()>& work) : id_(fork()) {
    if (id_ == 0) {
      work();
      _exit(0);
    }
  }
  ~Child() {
    if (buried_) return;
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  std::uint32_t Id() const { return static_cast<std::uint32_t>(id_); }

  // The status of a child that has ended, -1 if it still runs.
  int Bury() {
    int status = 0;
    if (waitpid(id_, &status, WNOHANG) != id_) return -1;
    buried_ = true;
    return status;
  }
  // The status of the child, which is waited for.
  int Await() {
    int status = 0;
    waitpid(id_, &status, 0);
    buried_ = true;
    return status;
  }

 private:
  pid_t id_;
  bool buried_ = false;
};

std::vector<std::string> NamesOf(std::uint32_t id) {
  std::vector<std::string> names;
  const auto processes = SystemPlatform().Processes();
  if (!processes) return names;
  for (const ProcessEntry& process : *processes) {
    if (process.id == id) names.push_back(process.name);
  }
  return names;
}

// Waits until a process that is just starting goes by a name.
bool AppearsAs(std::uint32_t id, const std::string& name) {
  for (int i = 0; i < 500; ++i) {
    const auto names = NamesOf(id);
    if (std::find(names.begin(), names.end(), name) != names.end()) return true;
    usleep(10'000);
  }
  return false;
}

void SleepAs(const char* name) {
  prctl(PR_SET_NAME, name);
  pause();
}

TEST(ProcessesTest, RunningThunderbirdIsFoundByItsNameOnWindows) {
  for (const char* name : {"thunderbird", "thunderbird-bin", "thunderbird.exe"}) {
    const Child child([&] { SleepAs(name); });
    EXPECT_TRUE(AppearsAs(child.Id(), "thunderbird.exe")) << name;
  }
}

TEST(ProcessesTest, ProgramThatNamesItselfOtherwiseIsFoundByItsFile) {
  const TemporaryFolder folder;
  fs::copy_file("/bin/sleep", folder.Native("thunderbird-bin"));
  const Child child([&] {
    const std::string file = folder.Native("thunderbird-bin").string();
    execl(file.c_str(), "sleep", "60", nullptr);
  });
  EXPECT_TRUE(AppearsAs(child.Id(), "thunderbird.exe"));
  EXPECT_EQ(NamesOf(child.Id()).size(), 1u);
}

TEST(ProcessesTest, FileNameStandsInForANameThatIsCutOff) {
  const TemporaryFolder folder;
  fs::copy_file("/bin/sleep", folder.Native("a-very-long-program-name"));
  const Child child([&] {
    const std::string file = folder.Native("a-very-long-program-name").string();
    execl(file.c_str(), "sleep", "60", nullptr);
  });
  EXPECT_TRUE(AppearsAs(child.Id(), "a-very-long-program-name.exe"));
  EXPECT_EQ(NamesOf(child.Id()).size(), 1u);
}

TEST(ProcessesTest, NameWithBracketsAndBlanksIsReadWhole) {
  const Child child([] { SleepAs("a) R (b"); });
  EXPECT_TRUE(AppearsAs(child.Id(), "a) R (b.exe"));
}

TEST(ProcessesTest, ProcessThatHasEndedIsNotListed) {
  Child child([] {});
  siginfo_t ended;
  ASSERT_EQ(waitid(P_PID, child.Id(), &ended, WEXITED | WNOWAIT), 0);
  EXPECT_TRUE(NamesOf(child.Id()).empty());
  child.Await();
}

TEST(ProcessesTest, ProcessesComeInTheOrderOfTheirIds) {
  const auto processes = SystemPlatform().Processes();
  ASSERT_TRUE(processes.has_value());
  EXPECT_FALSE(NamesOf(static_cast<std::uint32_t>(getpid())).empty());
  EXPECT_TRUE(std::is_sorted(processes->begin(), processes->end(),
                             [](const ProcessEntry& a, const ProcessEntry& b) { return a.id < b.id; }));
}

// Asked for before each of many mails is deleted, when looking anew each time would be most of the work.
TEST(ProcessesTest, SnapshotIsKeptForAMomentOnly) {
  SystemPlatform platform;
  const auto isListed = [&](std::uint32_t id) {
    const auto processes = platform.Processes();
    return std::any_of(processes->begin(), processes->end(),
                       [&](const auto& entry) { return entry.id == id; });
  };
  platform.Processes();
  Child child([] { pause(); });
  std::this_thread::sleep_for(SystemPlatform::kSnapshotTime);
  EXPECT_TRUE(isListed(child.Id()));
  platform.Terminate(child.Id());
  child.Await();
  EXPECT_FALSE(isListed(child.Id())) << "what was ended is looked for anew";
}

TEST(ProcessesTest, ClosingWaitsUntilTheProcessHasEnded) {
  Child child([] {
    signal(SIGTERM, [](int) {
      usleep(200'000);
      _exit(7);
    });
    SleepAs("closing");
  });
  ASSERT_TRUE(AppearsAs(child.Id(), "closing.exe"));
  SystemPlatform().CloseWindows(child.Id());
  const int status = child.Bury();
  ASSERT_TRUE(status >= 0 && WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(ProcessesTest, TerminatedProcessEndsEvenIfItWouldNot) {
  Child child([] {
    signal(SIGTERM, SIG_IGN);
    SleepAs("stubborn");
  });
  ASSERT_TRUE(AppearsAs(child.Id(), "stubborn.exe"));
  SystemPlatform().Terminate(child.Id());
  const int status = child.Await();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST(ProcessesTest, IdsOfNoProcessAreHarmless) {
  // 0 and -1 stand for groups and for all processes in the system's own call. Who calls here has a group of
  // its own, and as nobody reaches no further.
  Child caller([] {
    constexpr uid_t nobody = 65534;
    if (setsid() < 0 || (geteuid() == 0 && setuid(nobody) != 0)) _exit(2);
    bool stays = false;
    {
      Child neighbour([] { pause(); });
      for (const std::uint32_t id : {0u, 0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu}) {
        SystemPlatform().CloseWindows(id);
        SystemPlatform().Terminate(id);
      }
      stays = neighbour.Bury() == -1;
    }
    _exit(stays ? 0 : 1);
  });
  const int status = caller.Await();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

// --- Drives, registry, dialog ----------------------------------------------------------------------------

class DesktopOfPosixTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetSettings(); }
  void TearDown() override { os::ResetSettings(); }

  TemporaryFolder folder_;
  SystemPlatform platform_;
};

TEST_F(DesktopOfPosixTest, DriveTypeTellsWhetherADriveHasARoot) {
  os::SetDrive('D', folder_.Native().string());
  os::SetDrive('E', folder_.Native("none").string());
  folder_.Write("file", "");
  os::SetDrive('F', folder_.Native("file").string());
  struct Row {
    const char* root;
    int type;
  };
  const Row rows[] = {{"C:\\", 3}, {"c:\\", 3}, {"D:\\", 3}, {"E:\\", 1}, {"F:\\", 1},
                      {"Q:\\", 1}, {"1:\\", 1}, {"", 1},     {"C", 1},    {"C:\\tmp", 1}};
  for (const Row& row : rows)
    EXPECT_EQ(platform_.DriveType(row.root), row.type) << row.root;
}

TEST_F(DesktopOfPosixTest, RegistryHoldsTheApplicationDataFolderAlone) {
  os::SetHomeFolder("/home/u");
  constexpr std::uint32_t kUser = 0x80000001;
  const std::string key = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
  const auto found = platform_.QueryRegistry(kUser, key, "AppData");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->type, 1u);
  EXPECT_EQ(found->bytes, std::string("C:\\home\\u\\AppData") + '\0');
  EXPECT_EQ(found->size, found->bytes->size());
  EXPECT_TRUE(platform_.QueryRegistry(kUser, LowerCase(key), "APPDATA").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(kUser, key, "Desktop").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(kUser, key, "").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(kUser, "Software", "AppData").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(0x80000002, key, "AppData").has_value());
  EXPECT_FALSE(platform_.QueryRegistry(1, key, "AppData").has_value());
}

TEST_F(DesktopOfPosixTest, FileDialogIsCancelled) {
  EXPECT_FALSE(platform_.ShowFileDialog({}).chosen);
}

}  // namespace
}  // namespace vorlent
