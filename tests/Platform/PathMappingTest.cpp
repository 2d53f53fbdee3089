#include "Platform/Posix/PathMapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <thread>
#include <vector>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedEnvironment.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::string CodePage(std::string_view text) {
  return std::string(text);
}

class PathMappingTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetPathMapping(); }
  void TearDown() override {
    os::ResetPathMapping();
    fs::current_path(startFolder_);
  }

  // The native path of an entry of the temporary folder.
  std::string In(std::string_view name) const { return folder_.Native(name).string(); }

  TemporaryFolder folder_;
  fs::path startFolder_ = fs::current_path();
};

// --- Drives ----------------------------------------------------------------------------------------------

TEST_F(PathMappingTest, DriveCIsTheRootAndNoOtherExists) {
  EXPECT_EQ(os::DriveFolder('C'), "/");
  EXPECT_EQ(os::DriveFolder('c'), "/");
  for (const char letter : std::string("ABDEFGHIJKLMNOPQRSTUVWXYZ")) {
    EXPECT_EQ(os::DriveFolder(letter), std::nullopt) << letter;
  }
}

TEST_F(PathMappingTest, PathsStandForTheirNativeForm) {
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

TEST_F(PathMappingTest, DriveStandsForTheFolderGiven) {
  folder_.Write("Mail/Inbox", "x");
  os::SetDrive('m', In("Mail"));
  EXPECT_EQ(os::FileLength("M:\\Inbox"), 1u);
  EXPECT_EQ(os::DriveFolder('M'), In("Mail"));
}

TEST_F(PathMappingTest, RelativeDriveFolderIsThatOfTheMoment) {
  folder_.MakeFolder("Mail");
  fs::current_path(folder_.Native());
  os::SetDrive('M', "Mail/../Mail/");
  fs::current_path(startFolder_);
  EXPECT_EQ(os::DriveFolder('M'), In("Mail"));
}

TEST_F(PathMappingTest, DriveCanBeTakenAway) {
  os::SetDrive('C', "");
  EXPECT_EQ(os::DriveFolder('C'), std::nullopt);
  EXPECT_EQ(os::ToNativePath("C:\\tmp"), "");
}

TEST_F(PathMappingTest, OnlyLettersAreDrives) {
  for (const char c : {'1', '@', '[', '`', '{', ' ', '\xC4'}) {
    EXPECT_THROW(os::SetDrive(c, "/"), Failure) << c;
    EXPECT_EQ(os::DriveFolder(c), std::nullopt) << c;
  }
}

TEST_F(PathMappingTest, MissingDriveIsAMissingPath) {
  try {
    os::FileLength("Q:\\x");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PathNotFound)) << failure.Number();
    EXPECT_STREQ(failure.what(), "Q:\\x: No such file or directory");
  }
}

TEST_F(PathMappingTest, RelativePathIsOneOfTheCurrentFolder) {
  folder_.Write("here", "abc");
  fs::current_path(folder_.Native());
  EXPECT_EQ(os::FileLength("here"), 3u);
  EXPECT_EQ(os::FileLength(".\\HERE"), 3u);
}

// --- Letter case -----------------------------------------------------------------------------------------

TEST_F(PathMappingTest, EveryNameOfAPathIsFoundWithoutRegardToCase) {
  folder_.Write("Mail/Local Folders/Inbox.sbd/Alt", "x");
  EXPECT_EQ(os::ToNativePath(folder_.Path("mail\\LOCAL folders\\inbox.SBD\\aLT")),
            In("Mail/Local Folders/Inbox.sbd/Alt"));
}

TEST_F(PathMappingTest, NameAsWrittenGoesFirst) {
  folder_.Write("inbox", "lower");
  folder_.Write("INBOX", "upper");
  EXPECT_EQ(os::ToNativePath(folder_.Path("inbox")), In("inbox"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("INBOX"));
}

TEST_F(PathMappingTest, OfSeveralFormsTheFirstInOrderIsTaken) {
  folder_.Write("inboX", "");
  folder_.Write("inBox", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("INBOX")), In("inBox"));
}

TEST_F(PathMappingTest, NamesBehindAMissingOneStayAsWritten) {
  folder_.MakeFolder("Mail");
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\New\\Inbox")), In("Mail/New/Inbox"));
}

TEST_F(PathMappingTest, UmlautsAreFoundWithoutRegardToCase) {
  folder_.Write("Entwürfe", "");
  EXPECT_EQ(os::ToNativePath(folder_.Path("ENTWÜRFE"_cp)), In("Entwürfe"));
}

// Long enough for the folder's times to be behind the clock's next step.
void LetFoldersSettle() {
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

TEST_F(PathMappingTest, NamesAreFoundHoweverOftenTheirFolderWasAskedInVain) {
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

TEST_F(PathMappingTest, NewNameIsFoundThoughItsFolderWasAskedBefore) {
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

TEST_F(PathMappingTest, ChangesInQuickSuccessionAreAllSeen) {
  for (int i = 0; i < 300; ++i) {
    const std::string name = "file" + std::to_string(i);
    const std::string shouted = "FILE" + std::to_string(i);
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(shouted));
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(shouted));
    folder_.Write(name, "");
    ASSERT_EQ(os::ToNativePath(folder_.Path(shouted)), In(name));
  }
}

TEST_F(PathMappingTest, FolderThatTookAnothersPlaceIsAskedAnew) {
  folder_.Write("first/a", "");
  folder_.Write("second/Inbox", "");
  LetFoldersSettle();
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(os::ToNativePath(folder_.Path("first\\INBOX")), In("first/INBOX"));
  fs::rename(In("first"), In("third"));
  fs::rename(In("second"), In("first"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("first\\INBOX")), In("first/Inbox"));
}

TEST_F(PathMappingTest, ManyFoldersInTurnAreToldApart) {
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

TEST_F(PathMappingTest, ThousandsOfMissingNamesInALargeFolderTakeNoTime) {
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

TEST_F(PathMappingTest, FolderIsNotListedForEveryNewName) {
  EXPECT_LE(ListingsForNewNames(folder_, 1000), ListingsForNewNames(folder_, 500) + 10);
}

TEST_F(PathMappingTest, ChangesByOthersAreSeenAmongOwnOnes) {
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

TEST_F(PathMappingTest, MoreChangesThanTheSystemKeepsForUsAreSeen) {
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

TEST_F(PathMappingTest, ForkedProcessesBothSeeChanges) {
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

TEST_F(PathMappingTest, FolderThatIsRemovedAndMadeAgainIsAskedAnew) {
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

TEST_F(PathMappingTest, NameAsWrittenGoesFirstInAFolderOfAnotherCaseToo) {
  folder_.Write("Mail/inbox", "lower");
  folder_.Write("Mail/INBOX", "upper");
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\inbox")), In("Mail/inbox"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\INBOX")), In("Mail/INBOX"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("MAIL\\Inbox")), In("Mail/INBOX"));
}

// Each of its names looked at from the front again would take minutes, and a call for each the whole stack.
TEST_F(PathMappingTest, MissingPathOfVeryManyNamesStaysAsWritten) {
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

TEST_F(PathMappingTest, NewNameStaysAsWrittenBelowTheFoundFolder) {
  folder_.Write("Mail/inbox", "");
  EXPECT_EQ(os::ToNewNativePath(folder_.Path("MAIL\\Inbox")), In("Mail/Inbox"));
  EXPECT_EQ(os::ToNewNativePath(folder_.Path("MAIL\\Inbox\\")), In("Mail/Inbox"));
  EXPECT_EQ(os::ToNewNativePath("Inbox"), "Inbox");
}

// --- Text of names ---------------------------------------------------------------------------------------

TEST_F(PathMappingTest, CodePageNamesBecomeUtf8AndBack) {
  struct Row {
    std::string windows, native;
  };
  const Row rows[] = {
      {"Inbox", "Inbox"},
      {CodePage("Entwürfe"_cp), "Entwürfe"},
      {CodePage("5 €"_cp), "5 €"},
      {CodePage("„Œuvre“ – Ÿ"_cp), "„Œuvre“ – Ÿ"},
      {"Черновики", "Черновики"},  // not in the page: its UTF-8 bytes
      {"Ärger mit Ж", "Ärger mit Ж"},
      {"Ã¼", "Ã¼"},  // its code-page bytes would read as "ü"
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::ToNativeName(row.windows), row.native);
    EXPECT_EQ(os::ToWindowsName(row.native), row.windows);
  }
}

TEST_F(PathMappingTest, Utf8NameGivenAsSuchPasses) {
  EXPECT_EQ(os::ToNativeName("Entwürfe"), "Entwürfe");
}

TEST_F(PathMappingTest, EachNameOfAPathIsTextOfItsOwn) {
  EXPECT_EQ(os::ToNativePath("\\Ärger\\" + CodePage("Übung"_cp) + "\\Ж"), "/Ärger/Übung/Ж");
}

TEST_F(PathMappingTest, EveryListedFileCanBeOpened) {
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

TEST_F(PathMappingTest, NameThatHoldsABackslashIsNotListed) {
  fs::create_directory(folder_.Native() / "a\\b");
  folder_.Write("a", "");
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory), ElementsAre("a"));
}

// --- Back to Windows -------------------------------------------------------------------------------------

TEST_F(PathMappingTest, NativePathsGetTheirWindowsForm) {
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
  EXPECT_EQ(os::ToWindowsPath("/Entwürfe/Ж"), "C:\\" + CodePage("Entwürfe"_cp) + "\\Ж");
}

TEST_F(PathMappingTest, DriveThatHoldsAPathMostCloselyNamesIt) {
  os::SetDrive('M', "/home/u/Mail");
  os::SetDrive('N', "/home/u/Mail");
  os::SetDrive('U', "/home/u");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mail/Inbox"), "M:\\Inbox");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mail"), "M:\\");
  EXPECT_EQ(os::ToWindowsPath("/home/u/Mailbox"), "U:\\Mailbox");
  EXPECT_EQ(os::ToWindowsPath("/home/user"), "C:\\home\\user");
}

TEST_F(PathMappingTest, PathOutsideEveryDriveBeginsAtTheRoot) {
  os::SetDrive('C', "/mnt/windows");
  EXPECT_EQ(os::ToWindowsPath("/home/u"), "\\home\\u");
  EXPECT_EQ(os::ToWindowsPath("/"), "\\");
  EXPECT_EQ(os::ToWindowsPath("/mnt/windows/x"), "C:\\x");
}

TEST_F(PathMappingTest, RelativeNativePathBecomesAbsolute) {
  fs::current_path(folder_.Native());
  EXPECT_EQ(os::ToWindowsPath("x/y"), folder_.Path("x\\y"));
}

TEST_F(PathMappingTest, WindowsFormLeadsBackToTheSameFile) {
  folder_.Write("Mail/Entwürfe", "");
  for (const char* drive : {"", "/", "Mail"}) {
    os::ResetPathMapping();
    if (*drive != '\0') os::SetDrive('X', In(drive));
    EXPECT_EQ(os::ToNativePath(os::ToWindowsPath(In("Mail/Entwürfe"))), In("Mail/Entwürfe")) << drive;
  }
}

// --- Application data ------------------------------------------------------------------------------------

class AppDataTest : public PathMappingTest {
 protected:
  void SetUp() override {
    PathMappingTest::SetUp();
    os::SetHomeFolder(folder_.Native().string());
  }
};

TEST_F(AppDataTest, ApplicationsAreFoundWhereTheyKeepTheirData) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.Write(".mozilla/firefox/profiles.ini", "f");
  folder_.Write(".mozilla/sunbird/profiles.ini", "s");
  const std::string base = os::AppDataPath();
  EXPECT_EQ(base, folder_.Path("AppData"));
  EXPECT_EQ(os::ToNativePath(base + "\\Thunderbird\\profiles.ini"), In(".thunderbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla\\FireFox\\profiles.ini"), In(".mozilla/firefox/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla\\Sunbird\\profiles.ini"), In(".mozilla/sunbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(base + "\\Thunderbird"), In(".thunderbird"));
  EXPECT_EQ(os::ToNativePath(base + "\\Mozilla"), In(".mozilla"));
}

TEST_F(AppDataTest, LetterCaseAndSeparatorsOfThePathDoNotMatter) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  const std::string path = LowerCase(os::AppDataPath()) + "/THUNDERBIRD/Profiles.INI";
  EXPECT_EQ(os::ToNativePath(path), In(".thunderbird/profiles.ini"));
}

TEST_F(AppDataTest, FolderItselfStandsForTheHome) {
  folder_.Write("notes.txt", "");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath()), In(""));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\notes.txt"), In("notes.txt"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbirds"), In("Thunderbirds"));
}

TEST_F(AppDataTest, FirstPlaceThatExistsIsTaken) {
  struct Row {
    std::string_view name;
    const char* place;
  };
  // From the last choice to the first: each goes before those made earlier.
  const Row rows[] = {
      {"Thunderbird", ".var/app/org.mozilla.thunderbird/.thunderbird"},
      {"Thunderbird", ".var/app/org.mozilla.Thunderbird/.thunderbird"},
      {"Thunderbird", "snap/thunderbird/common/.thunderbird"},
      {"Thunderbird", ".thunderbird"},
      {"Mozilla\\FireFox", ".var/app/org.mozilla.firefox/config/mozilla/firefox"},
      {"Mozilla\\FireFox", ".var/app/org.mozilla.firefox/.mozilla/firefox"},
      {"Mozilla\\FireFox", "snap/firefox/common/.mozilla/firefox"},
      {"Mozilla\\FireFox", ".config/mozilla/firefox"},
      {"Mozilla\\FireFox", ".mozilla/firefox"},
      {"Mozilla\\Sunbird", ".mozilla/sunbird"},
  };
  for (const Row& row : rows) {
    folder_.MakeFolder(row.place);
    EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\" + std::string(row.name)), In(row.place));
  }
}

TEST_F(AppDataTest, PlaceWithProfilesGoesBeforeOneWithout) {
  folder_.MakeFolder(".mozilla/firefox/native-messaging-hosts");
  folder_.Write(".config/mozilla/firefox/profiles.ini", "");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Mozilla\\FireFox"), In(".config/mozilla/firefox"));
}

TEST_F(AppDataTest, WithoutAnyPlaceTheFirstIsNamed) {
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird\\profiles.ini"),
            In(".thunderbird/profiles.ini"));
}

TEST_F(AppDataTest, ProgramFolderInTheHomeIsNotTakenForTheData) {
  folder_.Write("thunderbird/thunderbird-bin", "program");
  folder_.Write(".thunderbird/profiles.ini", "t");
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird"), In(".thunderbird"));
  EXPECT_EQ(os::ToNativePath(folder_.Path("Thunderbird")), In("thunderbird"));
}

TEST_F(AppDataTest, FolderWithTheWindowsLayoutIsTakenAsItIs) {
  folder_.Write("copy/thunderbird/profiles.ini", "t");
  folder_.Write("copy/Mozilla/Firefox/profiles.ini", "f");
  folder_.Write(".thunderbird/profiles.ini", "own");
  os::SetAppDataFolder(In("copy/"));
  EXPECT_EQ(os::AppDataPath(), folder_.Path("copy"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Thunderbird\\profiles.ini"),
            In("copy/thunderbird/profiles.ini"));
  EXPECT_EQ(os::ToNativePath(os::AppDataPath() + "\\Mozilla\\FireFox\\profiles.ini"),
            In("copy/Mozilla/Firefox/profiles.ini"));
  os::SetAppDataFolder("");
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData"));
}

TEST_F(AppDataTest, HomeBelowAnotherDriveIsNamedFromTheRoot) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.Write("elsewhere/prefs.js", "");
  os::SetDrive('H', folder_.Native().string());
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData"));
  os::SetDrive('R', "/");
  os::SetDrive('C', "");
  EXPECT_EQ(os::AppDataPath(), "R" + folder_.Path("AppData").substr(1));
  // A profile that profiles.ini names by an absolute path is found for that.
  const std::string profile = folder_.Path("elsewhere").substr(2);
  EXPECT_TRUE(FileExists(AddPath(os::AppDataPath() + "\\Thunderbird\\", profile) + "\\prefs.js"));
  EXPECT_EQ(os::FileLength("H:\\AppData\\Thunderbird\\profiles.ini"), 1u);
}

TEST_F(AppDataTest, HomeOutsideEveryDriveIsNamedFromTheRoot) {
  folder_.Write(".thunderbird/profiles.ini", "t");
  folder_.MakeFolder("windows");
  os::SetDrive('C', In("windows"));
  EXPECT_EQ(os::AppDataPath(), folder_.Path("AppData").substr(2));
  EXPECT_EQ(os::FileLength(os::AppDataPath() + "\\Thunderbird\\profiles.ini"), 1u);
}

TEST_F(AppDataTest, HomeIsThatOfTheEnvironmentUnlessTold) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", "/no/such/home/");
  EXPECT_EQ(os::AppDataPath(), "C:\\no\\such\\home\\AppData");
}

TEST_F(AppDataTest, HomeMayBeTheRoot) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", "/");
  EXPECT_EQ(os::AppDataPath(), "C:\\AppData");
  EXPECT_EQ(os::ToNativePath("C:\\AppData"), "/");
}

TEST_F(AppDataTest, WithoutEnvironmentTheUserTellsTheHome) {
  os::SetHomeFolder("");
  const ScopedEnvironment home("HOME", nullptr);
  EXPECT_TRUE(os::AppDataPath().empty() || os::AppDataPath().ends_with("\\AppData"));
}

TEST_F(AppDataTest, MakingTheFolderLeavesNothingBehind) {
  EXPECT_THROW(os::CreateFolder(os::AppDataPath()), Failure);
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 63), IsEmpty());
}

// --- Patterns and order ----------------------------------------------------------------------------------

TEST(NameMatchesTest, StarsAndQuestionMarks) {
  struct Row {
    std::string_view name, pattern;
    bool matches;
  };
  const Row rows[] = {
      {"Inbox", "*.*", true},
      {"Inbox.msf", "*.*", true},
      {"Inbox", "*", true},
      {"", "*", true},
      {"Inbox.msf", "*.msf", true},
      {"Inbox.MSF", "*.msf", true},
      {"Inbox", "*.msf", false},
      {"msf", "*.msf", false},
      {"a1b", "a?b", true},
      {"ab", "a?b", false},
      {"abb", "a?b", true},
      {"Inbox", "inbox", true},
      {"Inbox", "inbo", false},
      {"Inbox", "nbox", false},
      {"aXbXc", "a*x*c", true},
      {"abcabd", "*abd", true},
      {"abcabd", "*abc", false},
      {"x", "", false},
      {"", "", true},
      {"x", "**?**", true},
      {"", "?", false},
      {"att1", "att*", true},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::NameMatches(row.name, row.pattern), row.matches) << row.name << " " << row.pattern;
  }
  EXPECT_TRUE(os::NameMatches("Entwürfe"_cp, "ENTWÜRFE*"_cp));
}

TEST(NameMatchesTest, ManyStarsTakeNoTime) {
  const std::string name(2000, 'a');
  std::string pattern;
  for (int i = 0; i < 500; ++i)
    pattern += "a*";
  EXPECT_FALSE(os::NameMatches(name, pattern + "b"));
  EXPECT_TRUE(os::NameMatches(name, pattern));
}

TEST(NameKeyTest, OrderIsThatOfUpperCaseCharacters) {
  // "_" stands behind the capitals and in front of the small letters.
  std::vector<std::string> names = {"_x", "b", "A", "a1", "B2", CodePage("ä"_cp), CodePage("€"_cp),
                                    "z",  "Ж", "1"};
  std::sort(names.begin(), names.end(),
            [](const auto& a, const auto& b) { return os::NameKey(a) < os::NameKey(b); });
  EXPECT_THAT(names,
              ElementsAre("1", "A", "a1", "b", "B2", "z", "_x", CodePage("ä"_cp), "Ж", CodePage("€"_cp)));
}

TEST(NameKeyTest, NamesThatDifferInCaseHaveOneKey) {
  EXPECT_EQ(os::NameKey("ÄÖÜ šœžÿ"_cp), os::NameKey("äöü ŠŒŽŸ"_cp));
  EXPECT_EQ(os::NameKey("abcЖ"), os::NameKey("ABCЖ"));
  EXPECT_NE(os::NameKey("К"), os::NameKey("Њ"));  // bytes that differ as small and capital letters do
  EXPECT_NE(os::NameKey("ß"_cp), os::NameKey("ÿ"_cp));
}

}  // namespace
}  // namespace vorlent
