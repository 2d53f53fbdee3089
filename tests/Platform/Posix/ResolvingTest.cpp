#include "Platform/Posix/Resolving.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/PathsTest.h"
#include "Platform/Settings.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class ResolvingTest : public PathsTest {};

// --- Paths as written -----------------------------------------------------------------------------------

TEST_F(ResolvingTest, PathsStandForTheirNativeForm) {
  os::SetDrive('D', "/mnt/data/");
  struct Row {
    std::string_view path, native;
  };
  const Row rows[] = {
      {"C:\\", "/"},
      {"C:", "/"},
      {"c:\\no such\\b.txt", "/no such/b.txt"},
      {"C:/no such/b.txt", "/no such/b.txt"},
      {"C:no such", "/no such"},
      {"D:\\", "/mnt/data/"},
      {"d:\\x", "/mnt/data/x"},
      {"D:\\x\\", "/mnt/data/x/"},
      {"C:\\no such\\\\b", "/no such/b"},
      {"C:\\\\no such", "/no such"},
      {"\\no such\\b", "/no such/b"},
      {"/no such/b", "/no such/b"},
      {"\\\\server\\share", "/server/share"},
      {"no such\\b", "no such/b"},
      {"no such", "no such"},
      {"Q:\\x", ""},
      {"1:\\x", ""},
      {"", ""},
      {std::string_view("C:\\a\0b", 6), ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(os::ToNativePath(row.path), row.native) << row.path;
}

TEST_F(ResolvingTest, MissingDriveIsAMissingPath) {
  try {
    os::FileLength("Q:\\x");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PathNotFound)) << failure.Number();
    EXPECT_STREQ(failure.what(), "Q:\\x: No such file or directory");
  }
}

TEST_F(ResolvingTest, RelativePathIsOneOfTheCurrentFolder) {
  folder_.Write("here", "abc");
  fs::current_path(folder_.Native());
  EXPECT_EQ(os::FileLength("here"), 3u);
  EXPECT_EQ(os::FileLength(".\\HERE"), 3u);
}

TEST_F(ResolvingTest, EachNameOfAPathIsTextOfItsOwn) {
  EXPECT_EQ(os::ToNativePath("\\Ärger\\" + std::string("Übung"_cp) + "\\Ж"), "/Ärger/Übung/Ж");
}

TEST_F(ResolvingTest, EveryListedFileCanBeOpened) {
  for (const char* name :
       {"plain", "Entwürfe", "Черновики", "Ã¼", "€uro", "日本", "a\374b", "\201", "tab\there"}) {
    folder_.Write("x", "");
    fs::rename(folder_.Native("x"), folder_.Native() / name);
  }
  const auto names = os::ListNames(folder_.Path(), "*.*", 0);
  ASSERT_EQ(names.size(), 9u);
  for (const std::string& name : names)
    EXPECT_NO_THROW(os::FileLength(folder_.Path(name))) << name;
}

TEST_F(ResolvingTest, NameThatHoldsABackslashIsNotListed) {
  fs::create_directory(folder_.Native() / "a\\b");
  folder_.Write("a", "");
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory), ElementsAre("a"));
}

TEST_F(ResolvingTest, NameThatHoldsABackslashIsSaidWhereTextIsUnicode) {
  const ScopedRules today({.text = TextEncoding::Utf8});
  const std::string native = (folder_.Native() / "a\\b").string();
  fs::create_directory(native);
  std::ofstream(native + "/c\\d") << "x";
  const auto names = os::ListNames(folder_.Path(), "*", os::kDirectory);
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(os::ToNativePath(folder_.Path(names[0])), native);
  EXPECT_EQ(os::ToWindowsPath(native), folder_.Path(names[0]));
  const auto within = os::ListNames(folder_.Path(names[0]) + "\\", "*", 0);
  ASSERT_EQ(within.size(), 1U);
  EXPECT_EQ(os::FileLength(folder_.Path(names[0]) + "\\" + within[0]), 1U);
}

TEST_F(ResolvingTest, NameThatHoldsALineBreakIsSaidWhereTextIsUnicode) {
  const std::string native = (folder_.Native() / "a\nb\rc").string();
  std::ofstream(native) << "x";
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), testing::ElementsAre("a\nb\rc"));
  const ScopedRules today({.text = TextEncoding::Utf8});
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), testing::ElementsAre("a\xEF\x80\x8A"
                                                                          "b\xEF\x80\x8D"
                                                                          "c"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("a\xEF\x80\x8A"
                                          "b\xEF\x80\x8D"
                                          "c")),
            native);
  EXPECT_EQ(os::ToWindowsPath(native), folder_.Path("a\xEF\x80\x8A"
                                                    "b\xEF\x80\x8D"
                                                    "c"));
  EXPECT_EQ(os::FileLength(folder_.Path("a\nb\rc")), 1U) << "it may still be said as it is";
}

// --- Letter case -----------------------------------------------------------------------------------------

TEST_F(ResolvingTest, EveryNameOfAPathIsFoundWithoutRegardToCase) {
  folder_.Write("Mail/Local Folders/Inbox.sbd/Alt", "x");
  EXPECT_EQ(os::ToNativePath(folder_.Path("mail\\LOCAL folders\\inbox.SBD\\aLT")),
            In("Mail/Local Folders/Inbox.sbd/Alt"));
}

TEST_F(ResolvingTest, NameAsWrittenGoesFirst) {
  folder_.Write("inbox", "lower");
  folder_.Write("INBOX", "upper");
  EXPECT_EQ(os::ToNativePath(folder_.Path("inbox")), In("inbox"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
}

TEST_F(ResolvingTest, OfSeveralFormsTheFirstInOrderIsTaken) {
  folder_.Write("inboX", "");
  folder_.Write("inBox", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("inBox"));
}

TEST_F(ResolvingTest, NamesBehindAMissingOneStayAsWritten) {
  folder_.MakeFolder("Mail");
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\New\\Inbox")), In("Mail/New/Inbox"));
}

TEST_F(ResolvingTest, UmlautsAreFoundWithoutRegardToCase) {
  folder_.Write("Entwürfe", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("ENTWÜRFE"_cp)), In("Entwürfe"));
}

// Long enough for the folder's times to be behind the clock's next step.
void LetFoldersSettle() {
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

TEST_F(ResolvingTest, NamesAreFoundHoweverOftenTheirFolderWasAskedInVain) {
  folder_.Write("Inbox", "");
  folder_.Write("Entwürfe", "");
  LetFoldersSettle();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(os::ToNativePath(folder_.Path("missing")), In("missing"));
    EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("Inbox"));
    EXPECT_EQ(os::ToNativePath(folder_.Path("ENTWÜRFE"_cp)), In("Entwürfe"));
    EXPECT_EQ(os::ToNativePath(folder_.Path("ENTW\xDCRF")), In("ENTWÜRF"));
  }
}

TEST_F(ResolvingTest, NewNameIsFoundThoughItsFolderWasAskedBefore) {
  folder_.Write("a", "");
  LetFoldersSettle();
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
  folder_.Write("Inbox", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("Inbox"));
  LetFoldersSettle();
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("SENT")), In("SENT"));
  fs::rename(In("Inbox"), In("Sent"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("SENT")), In("Sent"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
}

TEST_F(ResolvingTest, ChangesInQuickSuccessionAreAllSeen) {
  for (int i = 0; i < 300; ++i) {
    const std::string name = "file" + std::to_string(i);
    const std::string shouted = "FILE" + std::to_string(i);
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(shouted));
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(shouted));
    folder_.Write(name, "");
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(name));
  }
}

TEST_F(ResolvingTest, FolderThatTookAnothersPlaceIsAskedAnew) {
  folder_.Write("first/a", "");
  folder_.Write("second/Inbox", "");
  LetFoldersSettle();
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("first\\INBOX")), In("first/INBOX"));
  fs::rename(In("first"), In("third"));
  fs::rename(In("second"), In("first"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("first\\INBOX")), In("first/Inbox"));
}

TEST_F(ResolvingTest, ManyFoldersInTurnAreToldApart) {
  for (int i = 0; i < 20; ++i)
    folder_.Write("folder" + std::to_string(i) + "/only" + std::to_string(i), "");
  LetFoldersSettle();
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 20; ++i) {
      const std::string folder = "folder" + std::to_string(i);
      for (const int asked : {i, i, (i + 1) % 20}) {
        const std::string found = (asked == i ? "only" : "ONLY") + std::to_string(asked);
        ASSERT_EQ(os::ToNativePath(folder_.Path(folder + "\\ONLY" + std::to_string(asked))),
                  In(folder + "/" + found));
      }
    }
  }
}

TEST_F(ResolvingTest, ThousandsOfMissingNamesInALargeFolderTakeNoTime) {
  for (int i = 0; i < 3000; ++i)
    folder_.Write("Folder " + std::to_string(i), "");
  LetFoldersSettle();
  const std::clock_t start = std::clock();
  for (int i = 0; i < 3000; ++i)
    ASSERT_FALSE(fs::exists(os::ToNativePath(folder_.Path("Folder " + std::to_string(i) + ".sbd"))));
  // Each looked for in the whole folder would take a second or more.
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 3);
}

// How often folders were read while a mail's worth of attachments got names that nobody had.
long ListingsForNewNames(const TemporaryFolder& folder, int count) {
  folder.MakeFolder(std::to_string(count));
  const DiskCallCount listings(DiskCall::List);
  for (int i = 0; i < count; ++i) {
    const std::string path = folder.Path(std::to_string(count) + "\\Name " + std::to_string(i));
    for (int asked = 0; asked < 3; ++asked)
      EXPECT_FALSE(FileExists(path));
    os::File::Open(path, os::File::Mode::Create);
  }
  return listings.Count();
}

TEST_F(ResolvingTest, FolderIsNotListedForEveryNewName) {
  EXPECT_LE(ListingsForNewNames(folder_, 1000), ListingsForNewNames(folder_, 500) + 10);
}

TEST_F(ResolvingTest, ChangesByOthersAreSeenAmongOwnOnes) {
  for (int i = 0; i < 300; ++i) {
    const std::string number = std::to_string(i);
    os::File::Open(folder_.Path("own" + number), os::File::Mode::Create);
    ASSERT_EQ(os::ToNativePath(folder_.Path("FILE" + number)), In("FILE" + number));
    folder_.Write("file" + number, "");
    ASSERT_EQ(os::ToNativePath(folder_.Path("FILE" + number)), In("file" + number));
    fs::rename(In("file" + number), In("File" + number));
    os::RemoveFile(folder_.Path("own" + number));
    ASSERT_EQ(os::ToNativePath(folder_.Path("FILE" + number)), In("File" + number));
    ASSERT_EQ(os::ToNativePath(folder_.Path("OWN" + number)), In("OWN" + number));
    fs::remove(In("File" + number));
    ASSERT_EQ(os::ToNativePath(folder_.Path("FILE" + number)), In("FILE" + number));
  }
}

TEST_F(ResolvingTest, MoreChangesThanTheSystemKeepsForUsAreSeen) {
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
  // Each round makes four; the system keeps 16,384.
  for (int i = 0; i < 6'000; ++i) {
    folder_.Write("passing", "");
    fs::rename(In("passing"), In("other"));
    fs::remove(In("other"));
  }
  folder_.Write("Inbox", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("Inbox"));
}

TEST_F(ResolvingTest, ForkedProcessesBothSeeChanges) {
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
  folder_.Write("Inbox", "");
  const pid_t child = fork();
  if (child == 0) _exit(os::ToNativePath(folder_.Path("INBOX")) == In("Inbox") ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("Inbox"));
}

TEST_F(ResolvingTest, FolderThatIsRemovedAndMadeAgainIsAskedAnew) {
  for (int round = 0; round < 20; ++round) {
    folder_.Write("box/Inbox" + std::to_string(round), "");
    for (int i = 0; i < 3; ++i) {
      const std::string number = std::to_string(round);
      ASSERT_EQ(os::ToNativePath(folder_.Path("box\\INBOX" + number)), In("box/Inbox" + number));
      ASSERT_EQ(os::ToNativePath(folder_.Path("box\\SENT" + number)), In("box/SENT" + number));
    }
    fs::remove_all(In("box"));
  }
}

TEST_F(ResolvingTest, NameAsWrittenGoesFirstInAFolderOfAnotherCaseToo) {
  folder_.Write("Mail/inbox", "lower");
  folder_.Write("Mail/INBOX", "upper");
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\inbox")), In("Mail/inbox"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\INBOX")), In("Mail/INBOX"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\Inbox")), In("Mail/INBOX"));
}

// Each of its names looked at from the front again would take minutes, and a call for each the whole stack.
TEST_F(ResolvingTest, MissingPathOfVeryManyNamesStaysAsWritten) {
  std::string path = folder_.Path("MISSING");
  std::string native = In("MISSING");
  for (int i = 0; i < 100'000; ++i) {
    path += "\\a";
    native += "/a";
  }
  const DiskCallCount looks(DiskCall::Status | DiskCall::Open);
  EXPECT_EQ(os::ToNativePath(path), native);
  EXPECT_LT(looks.Count(), 100);
}

TEST_F(ResolvingTest, NewNameStaysAsWrittenBelowTheFoundFolder) {
  folder_.Write("Mail/inbox", "");
  EXPECT_EQ(os::ToNewNativePath(folder_.Path("MAIL\\Inbox")), In("Mail/Inbox"));
  EXPECT_EQ(os::ToNewNativePath(folder_.Path("MAIL\\Inbox\\")), In("Mail/Inbox"));
  EXPECT_EQ(os::ToNewNativePath("Inbox"), "Inbox");
}

// --- Back to Windows -------------------------------------------------------------------------------------

TEST_F(ResolvingTest, NativePathsGetTheirWindowsForm) {
  struct Row {
    std::string_view native, path;
  };
  const Row rows[] = {
      {"/", "C:\\"},
      {"/home/u", "C:\\home\\u"},
      {"/home/u/", "C:\\home\\u\\"},
      {"", ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(os::ToWindowsPath(row.native), row.path) << row.native;
  EXPECT_EQ(os::ToWindowsPath("/Entwürfe/Ж"), "C:\\" + std::string("Entwürfe"_cp) + "\\Ж");
}

TEST_F(ResolvingTest, DriveThatHoldsAPathMostCloselyNamesIt) {
  os::SetDrive('M', "/home/u/Mail");
  os::SetDrive('N', "/home/u/Mail");
  os::SetDrive('U', "/home/u");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mail/Inbox"), "M:\\Inbox");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mail"), "M:\\");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mailbox"), "U:\\Mailbox");
  EXPECT_EQ(os::ToWindowsPath("/home/user"), "C:\\home\\user");
}

TEST_F(ResolvingTest, PathOutsideEveryDriveBeginsAtTheRoot) {
  os::SetDrive('C', "/mnt/windows");
  EXPECT_EQ(os::ToWindowsPath("/home/u"), "\\home\\u");
  EXPECT_EQ(os::ToWindowsPath("/"), "\\");
  EXPECT_EQ(os::ToWindowsPath("/mnt/windows/x"), "C:\\x");
}

TEST_F(ResolvingTest, RelativeNativePathBecomesAbsolute) {
  fs::current_path(folder_.Native());
  EXPECT_EQ(os::ToWindowsPath("x/y"), folder_.Path("x\\y"));
}

TEST_F(ResolvingTest, WindowsFormLeadsBackToTheSameFile) {
  folder_.Write("Mail/Entwürfe", "");
  for (const char* drive : {"", "/", "Mail"}) {
    os::ResetSettings();
    if (*drive != '\0') os::SetDrive('X', In(drive));
    EXPECT_EQ(os::ToNativePath(os::ToWindowsPath(In("Mail/Entwürfe"))), In("Mail/Entwürfe")) << drive;
  }
}

}  // namespace
}  // namespace vorlent
