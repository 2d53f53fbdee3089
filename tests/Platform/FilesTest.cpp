#include "Platform/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/System.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/ErrorNumbers.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedEnvironment.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedSizeLimit.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using os::File;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The number of the failure that a step raises, 0 if it succeeds.
int NumberOf(const std::function<void()>& step) {
  return SwallowedNumber(step);
}

std::string TextOf(const std::function<void()>& step) {
  try {
    step();
    return "";
  } catch (const Failure& failure) {
    return failure.what();
  }
}

constexpr File::Mode kAllModes[] = {File::Mode::Read, File::Mode::ReadWrite, File::Mode::Create,
                                    File::Mode::Append};

class FilesTest : public testing::Test {
 protected:
  std::string ReadAll(File& file) {
    std::string bytes(file.Length(), '?');
    file.Seek(0);
    bytes.resize(file.Read(bytes.data(), bytes.size()));
    return bytes;
  }
  void Permit(std::string_view name, mode_t permissions) {
    ASSERT_EQ(chmod(folder_.Native(name).c_str(), permissions), 0);
  }
  mode_t PermissionsOf(std::string_view name) {
    struct stat status;
    EXPECT_EQ(stat(folder_.Native(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  TemporaryFolder folder_;
};

// --- Opening ---------------------------------------------------------------------------------------------

TEST_F(FilesTest, ReadNeedsAnExistingFile) {
  EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("none"), File::Mode::Read); }), kFileNotFound);
  EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("none\\x"), File::Mode::Read); }), kPathNotFound);
  EXPECT_EQ(NumberOf([&] { File::Open("", File::Mode::Read); }), kPathNotFound);
  EXPECT_FALSE(folder_.Exists("none"));
}

TEST_F(FilesTest, OtherModesCreateTheFileButNotItsFolder) {
  for (const auto mode : {File::Mode::ReadWrite, File::Mode::Create, File::Mode::Append}) {
    const std::string name = "new" + std::to_string(static_cast<int>(mode));
    File::Open(folder_.Path(name), mode);
    EXPECT_EQ(folder_.Read(name), "");
    EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("none\\x"), mode); }), kPathNotFound);
  }
}

TEST_F(FilesTest, ReadWriteKeepsTheBytesAndCreateEmptiesThem) {
  folder_.Write("f", "abcdef");
  File file = File::Open(folder_.Path("f"), File::Mode::ReadWrite);
  file.Seek(2);
  file.Write("XY", 2);
  file.Close();
  EXPECT_EQ(folder_.Read("f"), "abXYef");
  File::Open(folder_.Path("f"), File::Mode::Create);
  EXPECT_EQ(folder_.Read("f"), "");
}

TEST_F(FilesTest, AppendAlwaysWritesToTheEnd) {
  folder_.Write("f", "abc");
  File file = File::Open(folder_.Path("f"), File::Mode::Append);
  file.Write("d", 1);
  File other = File::Open(folder_.Path("f"), File::Mode::Append);
  other.Write("e", 1);
  file.Seek(0);
  file.Write("f", 1);
  EXPECT_EQ(folder_.Read("f"), "abcdef");
}

TEST_F(FilesTest, FolderIsRefusedInEveryMode) {
  folder_.MakeFolder("folder");
  for (const auto mode : kAllModes) {
    for (const char* name : {"folder", "folder\\"}) {
      EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path(name), mode); }), kPathAccess) << name;
    }
  }
}

TEST_F(FilesTest, ReadOnlyFileIsRefusedForWritingWhoeverTheUserIs) {
  folder_.Write("f", "keep");
  Permit("f", 0444);
  for (const auto mode : {File::Mode::ReadWrite, File::Mode::Create, File::Mode::Append}) {
    EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("f"), mode); }), kPathAccess);
  }
  EXPECT_EQ(folder_.Read("f"), "keep");
  File file = File::Open(folder_.Path("f"), File::Mode::Read);
  EXPECT_EQ(ReadAll(file), "keep");
}

TEST_F(FilesTest, PipeIsRefusedWithoutWaitingForItsOtherEnd) {
  ASSERT_EQ(mkfifo(folder_.Native("pipe").c_str(), 0600), 0);
  for (const auto mode : kAllModes) {
    EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("pipe"), mode); }), kPathAccess);
  }
}

TEST_F(FilesTest, DeviceOfBytesIsAFileThatIsNeverEmptied) {
  for (const auto mode : kAllModes)
    EXPECT_NO_THROW(File::Open("C:\\dev\\null", mode));
  File full = File::Open("C:\\dev\\full", File::Mode::Create);
  EXPECT_EQ(NumberOf([&] { full.Write("x", 1); }), kDiskFull);
  EXPECT_EQ(NumberOf([&] { os::Copy("C:\\dev\\zero", folder_.Path("x")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Write("f", "abc"), "C:\\dev\\null"); }), kPathAccess);
  EXPECT_FALSE(folder_.Exists("x"));
}

TEST_F(FilesTest, OpenFileIsNotPassedOnToOtherPrograms) {
  folder_.Write("f", "");
  const File file = File::Open(folder_.Path("f"), File::Mode::Read);
  int found = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry.path(), gone) != folder_.Native("f")) continue;
    ++found;
    EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
  }
  EXPECT_EQ(found, 1);
}

TEST_F(FilesTest, NameInAnotherCaseOpensTheSameFile) {
  folder_.Write("Inbox", "abc");
  File::Open(folder_.Path("INBOX"), File::Mode::Create).Write("x", 1);
  EXPECT_EQ(folder_.Read("Inbox"), "x");
  EXPECT_FALSE(folder_.Exists("INBOX"));
}

TEST_F(FilesTest, FailureNamesPathAndReason) {
  const std::string path = folder_.Path("none");
  EXPECT_EQ(TextOf([&] { File::Open(path, File::Mode::Read); }), path + ": No such file or directory");
  folder_.MakeFolder("folder");
  EXPECT_EQ(TextOf([&] { os::FileLength(folder_.Path("folder")); }),
            folder_.Path("folder") + ": is a folder");
}

TEST_F(FilesTest, WhatTheUserMayNotTouchIsPathAccess) {
  folder_.Write("closed/f", "x");
  Permit("", 0755);
  Permit("closed", 0);
  const AsOrdinaryUser user;
  const std::string path = folder_.Path("closed\\f");
  EXPECT_EQ(NumberOf([&] { File::Open(path, File::Mode::Read); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::FileLength(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::ReadAttributes(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::ListNames(folder_.Path("closed"), "*", 0); }), kPathAccess);
  EXPECT_FALSE(os::MayList(folder_.Path("closed")));
}

// --- An open file ----------------------------------------------------------------------------------------

TEST_F(FilesTest, ReadsComeShortAtTheEndOnly) {
  folder_.Write("f", "abcdef");
  File file = File::Open(folder_.Path("f"), File::Mode::Read);
  char buffer[4];
  EXPECT_EQ(file.Read(buffer, 4), 4u);
  EXPECT_EQ(file.Read(buffer, 4), 2u);
  EXPECT_EQ(std::string(buffer, 2), "ef");
  EXPECT_EQ(file.Read(buffer, 4), 0u);
  file.Seek(5);
  EXPECT_EQ(file.Read(buffer, 4), 1u);
  file.Seek(100);
  EXPECT_EQ(file.Read(buffer, 4), 0u);
  EXPECT_EQ(file.Length(), 6u);
}

TEST_F(FilesTest, PositionsGoBeyondFourGigabytes) {
  File file = File::Open(folder_.Path("big"), File::Mode::ReadWrite);
  const std::uint64_t far = 5'000'000'000;
  file.Seek(far);
  file.Write("x", 1);
  EXPECT_EQ(file.Length(), far + 1);
  file.Close();
  EXPECT_EQ(os::FileLength(folder_.Path("big")), far + 1);
  File again = File::Open(folder_.Path("big"), File::Mode::Read);
  again.Seek(far);
  char c = 0;
  EXPECT_EQ(again.Read(&c, 1), 1u);
  EXPECT_EQ(c, 'x');
}

TEST_F(FilesTest, ImpossiblePositionRaises) {
  File file = File::Open(folder_.Path("f"), File::Mode::ReadWrite);
  EXPECT_EQ(NumberOf([&] { file.Seek(UINT64_MAX); }), kDeviceIo);
}

TEST_F(FilesTest, MovedFileIsClosedInItsOldPlace) {
  folder_.Write("f", "abc");
  File first = File::Open(folder_.Path("f"), File::Mode::Read);
  File second = std::move(first);
  EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_TRUE(second.IsOpen());
  EXPECT_EQ(second.Path(), folder_.Path("f"));
  EXPECT_EQ(ReadAll(second), "abc");
  second = File();
  EXPECT_FALSE(second.IsOpen());
}

TEST_F(FilesTest, ClosedFileRaisesWhenAskedForBytes) {
  File file = File::Open(folder_.Path("f"), File::Mode::ReadWrite);
  file.Close();
  file.Close();
  EXPECT_FALSE(file.IsOpen());
  char c = 0;
  EXPECT_EQ(NumberOf([&] { file.Read(&c, 1); }), static_cast<int>(ErrorNumber::BadFileNumber));
  EXPECT_EQ(NumberOf([&] { file.Write(&c, 1); }), static_cast<int>(ErrorNumber::BadFileNumber));
}

TEST_F(FilesTest, WriteToAFileOpenedForReadingRaises) {
  folder_.Write("f", "abc");
  File file = File::Open(folder_.Path("f"), File::Mode::Read);
  EXPECT_NE(NumberOf([&] { file.Write("x", 1); }), 0);
  EXPECT_EQ(folder_.Read("f"), "abc");
}

TEST_F(FilesTest, FullDiskRaisesAndKeepsWhatFits) {
  const ScopedSizeLimit limit(4);
  File file = File::Open(folder_.Path("f"), File::Mode::Create);
  EXPECT_EQ(NumberOf([&] { file.Write("abcdef", 6); }), kDiskFull);
  file.Close();
  EXPECT_EQ(folder_.Read("f"), "abcd");
}

TEST_F(FilesTest, SyncSucceedsOnAnOpenFileAndOnAFolder) {
  File file = File::Open(folder_.Path("f"), File::Mode::Create);
  file.Write("x", 1);
  EXPECT_NO_THROW(file.Sync());
  EXPECT_NO_THROW(os::SyncFolder(folder_.Path()));
  EXPECT_EQ(NumberOf([&] { os::SyncFolder(folder_.Path("none")); }), kFileNotFound);
  EXPECT_NE(NumberOf([&] { os::SyncFolder(folder_.Path("f")); }), 0);
}

// --- Length, attributes, times ---------------------------------------------------------------------------

TEST_F(FilesTest, LengthOfAFolderRaises) {
  EXPECT_EQ(os::FileLength(folder_.Write("f", "abc")), 3u);
  EXPECT_EQ(NumberOf([&] { os::FileLength(folder_.Path()); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::FileLength(folder_.Path("none")); }), kFileNotFound);
  EXPECT_EQ(NumberOf([&] { os::FileLength(folder_.Path("f\\")); }), kPathNotFound);
}

TEST_F(FilesTest, AttributesTellFolderReadOnlyAndHidden) {
  folder_.Write("plain", "");
  folder_.Write("locked", "");
  folder_.Write(".hidden", "");
  folder_.MakeFolder("folder");
  folder_.MakeFolder(".mozilla");
  Permit("locked", 0466);
  struct Row {
    const char* name;
    int attributes;
  };
  const Row rows[] = {
      {"plain", os::kArchive},
      {"locked", os::kArchive | os::kReadOnly},
      {".hidden", os::kArchive | os::kHidden},
      {"folder", os::kDirectory},
      {"folder\\", os::kDirectory},
      {".mozilla", os::kDirectory | os::kHidden},
      {".mozilla\\", os::kDirectory | os::kHidden},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::ReadAttributes(folder_.Path(row.name)), row.attributes) << row.name;
    EXPECT_EQ(os::TryReadAttributes(folder_.Path(row.name)), row.attributes) << row.name;
  }
  EXPECT_EQ(os::ReadAttributes("C:\\"), os::kDirectory);
  EXPECT_EQ(NumberOf([&] { os::ReadAttributes(folder_.Path("none")); }), kFileNotFound);
  EXPECT_EQ(os::TryReadAttributes(folder_.Path("none")), std::nullopt);
  EXPECT_EQ(os::TryReadAttributes(""), std::nullopt);
}

TEST_F(FilesTest, LinkShowsWhatItLeadsTo) {
  folder_.Write("file", "");
  folder_.MakeFolder("folder");
  Permit("file", 0444);
  fs::create_symlink("file", folder_.Native("tofile"));
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("none", folder_.Native("tonone"));
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofile")), os::kLink | os::kArchive | os::kReadOnly);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofolder")), os::kLink | os::kDirectory);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofolder\\")), os::kLink | os::kDirectory);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tonone")), os::kLink | os::kArchive);
}

TEST_F(FilesTest, ReadOnlyBitIsSetAndTakenAway) {
  folder_.Write("f", "");
  Permit("f", 0664);
  os::WriteAttributes(folder_.Path("f"), os::kReadOnly | os::kArchive);
  EXPECT_EQ(PermissionsOf("f"), 0444u);
  os::WriteAttributes(folder_.Path("f"), os::kArchive);
  EXPECT_EQ(PermissionsOf("f"), 0644u);
}

TEST_F(FilesTest, AttributesThatStayChangeNoPermission) {
  folder_.Write("f", "");
  Permit("f", 0666);
  os::WriteAttributes(folder_.Path("f"), 0);
  EXPECT_EQ(PermissionsOf("f"), 0666u);
  Permit("f", 0466);
  os::WriteAttributes(folder_.Path("f"), os::kReadOnly);
  EXPECT_EQ(PermissionsOf("f"), 0466u);
}

TEST_F(FilesTest, EntryIsTheSameWhateverPathLeadsToIt) {
  folder_.Write("folder/file", "x");
  fs::create_symlink("folder", folder_.Native("link"));
  const auto folder = os::TryIdentify(folder_.Path("folder"));
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(os::TryIdentify(folder_.Path("link")), folder);
  EXPECT_EQ(os::TryIdentify(folder_.Path("FOLDER\\")), folder);
  EXPECT_EQ(os::TryIdentify(folder_.Path("link\\file")), os::TryIdentify(folder_.Path("folder\\file")));
  EXPECT_NE(os::TryIdentify(folder_.Path("folder\\file")), folder);
  EXPECT_EQ(os::TryIdentify(folder_.Path("none")), std::nullopt);
}

TEST_F(FilesTest, AttributesOfALinkLeaveItsTargetAlone) {
  folder_.Write("file", "");
  Permit("file", 0444);
  fs::create_symlink("file", folder_.Native("link"));
  os::WriteAttributes(folder_.Path("link"), 0);
  EXPECT_EQ(PermissionsOf("file"), 0444u);
}

TEST_F(FilesTest, TimesAreLocal) {
  folder_.Write("f", "");
  const DateTime summer = {2010, 7, 1, 12, 0, 0, 250};
  {
    const ScopedEnvironment zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    os::WriteTimes(folder_.Path("f"), summer);
    EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), summer);
  }
  struct stat status;
  ASSERT_EQ(stat(folder_.Native("f").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1277978400);  // 10:00:00 UTC
  EXPECT_EQ(status.st_atim.tv_sec, 1277978400);
  EXPECT_EQ(status.st_mtim.tv_nsec, 250'000'000);
  const ScopedEnvironment zone("TZ", "UTC");
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), (DateTime{2010, 7, 1, 10, 0, 0, 250}));
}

TEST_F(FilesTest, TimeBefore1970IsKept) {
  folder_.Write("f", "");
  const ScopedEnvironment zone("TZ", "UTC");
  const DateTime old = {1969, 12, 31, 23, 59, 58, 500};
  os::WriteTimes(folder_.Path("f"), old);
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), old);
}

TEST_F(FilesTest, TimesOfFoldersCanBeWritten) {
  folder_.MakeFolder("folder");
  const DateTime time = {2005, 2, 3, 4, 5, 6, 0};
  os::WriteTimes(folder_.Path("folder"), time);
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("folder")), time);
}

TEST_F(FilesTest, TimesOfAReadOnlyFileStay) {
  folder_.Write("f", "");
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  Permit("f", 0444);
  EXPECT_EQ(NumberOf([&] { os::WriteTimes(folder_.Path("f"), {2010, 1, 1, 0, 0, 0, 0}); }), kPathAccess);
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), (DateTime{2005, 2, 3, 4, 5, 6, 0}));
}

TEST_F(FilesTest, TimesOfAMissingFileRaise) {
  EXPECT_EQ(NumberOf([&] { os::ReadChangeTime(folder_.Path("none")); }), kFileNotFound);
  EXPECT_EQ(NumberOf([&] { os::WriteTimes(folder_.Path("none"), {}); }), kFileNotFound);
  folder_.Write("f", "");
  EXPECT_EQ(NumberOf([&] {
              os::WriteTimes(folder_.Path("f"), {2010, 13, 1, 0, 0, 0, 0});
            }),
            static_cast<int>(ErrorNumber::InvalidCall));
}

// --- Listing ---------------------------------------------------------------------------------------------

TEST_F(FilesTest, ListingIsSortedWithoutRegardToCase) {
  for (const char* name : {"b", "A", "c.txt", "B2", "_x", "a1"})
    folder_.Write(name, "");
  EXPECT_THAT(os::ListNames(folder_.Path(), "*.*", 0), ElementsAre("A", "a1", "b", "B2", "c.txt", "_x"));
}

TEST_F(FilesTest, EntriesTellWhetherTheyAreFolders) {
  folder_.Write("file", "");
  folder_.MakeFolder("folder");
  std::filesystem::create_symlink("folder", folder_.Native("linkToFolder"));
  std::filesystem::create_symlink("file", folder_.Native("linkToFile"));
  std::filesystem::create_symlink("nowhere", folder_.Native("linkToNothing"));
  std::vector<std::string> shown;
  for (const os::FolderEntry& entry : os::ListEntries(folder_.Path(), "*", os::kDirectory))
    shown.push_back(entry.name + (entry.isFolder ? "/" : ""));
  EXPECT_THAT(shown, ElementsAre("file", "folder/", "linkToFile", "linkToFolder/", "linkToNothing"));
}

TEST_F(FilesTest, AttributesChooseWhatIsListed) {
  folder_.Write("file", "");
  folder_.Write("locked", "");
  folder_.Write(".dot", "");
  folder_.MakeFolder("folder");
  folder_.MakeFolder(".dotfolder");
  Permit("locked", 0444);
  const std::string path = folder_.Path();
  EXPECT_THAT(os::ListNames(path, "*", 0), ElementsAre("file", "locked"));
  EXPECT_THAT(os::ListNames(path, "*", os::kHidden), ElementsAre(".dot", "file", "locked"));
  EXPECT_THAT(os::ListNames(path, "*", os::kDirectory), ElementsAre("file", "folder", "locked"));
  EXPECT_THAT(os::ListNames(path, "*", os::kDirectory | os::kHidden),
              ElementsAre(".dot", ".dotfolder", "file", "folder", "locked"));
}

TEST_F(FilesTest, PatternChoosesNames) {
  for (const char* name : {"Inbox", "Inbox.msf", "Sent.MSF", "att1", "att12"})
    folder_.Write(name, "");
  EXPECT_THAT(os::ListNames(folder_.Path(), "*.msf", 0), ElementsAre("Inbox.msf", "Sent.MSF"));
  EXPECT_THAT(os::ListNames(folder_.Path() + "\\", "att?", 0), ElementsAre("att1"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "inbox", 0), ElementsAre("Inbox"));
}

TEST_F(FilesTest, LinksAreListedAsWhatTheyLeadTo) {
  folder_.MakeFolder("folder");
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("127.0.1.1:+4711", folder_.Native("lock"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), ElementsAre("lock"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory), ElementsAre("folder", "lock", "tofolder"));
}

TEST_F(FilesTest, WhatIsNoFolderListsNothing) {
  folder_.Write("file", "");
  for (const std::string& path :
       {folder_.Path("none"), folder_.Path("file"), std::string(), std::string("Q:\\")}) {
    EXPECT_THAT(os::ListNames(path, "*.*", 63), IsEmpty()) << path;
    EXPECT_FALSE(os::MayList(path)) << path;
  }
  EXPECT_TRUE(os::MayList(folder_.Path()));
}

TEST_F(FilesTest, NamesCrossAsCodePageOrAsUtf8) {
  folder_.Write("Entwürfe", "");
  folder_.Write("Черновики", "");
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), ElementsAre(std::string("Entwürfe"_cp), "Черновики"));
}

TEST_F(FilesTest, NamesOfEveryScriptStayAsTheyAreOnTheDisk) {
  const ScopedRules today(Rules::Today());
  const std::vector<std::string> names = {"Entwürfe", "Черновики",  "Πρόχειρα",        "مسودات",
                                          "草稿 😀",   "é composed", "e\u0301 composed"};
  for (const std::string& name : names)
    folder_.Write(name, name);
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), testing::UnorderedElementsAreArray(names));
  for (const std::string& name : names)
    EXPECT_EQ(os::FileLength(folder_.Path(name)), name.size()) << name;
  EXPECT_EQ(os::FileLength(folder_.Path("ЧЕРНОВИКИ")), std::string("Черновики").size());
  EXPECT_EQ(os::FileLength(folder_.Path("E\u0301 COMPOSED")), std::string("e\u0301 composed").size());
}

// --- Making and removing ---------------------------------------------------------------------------------

TEST_F(FilesTest, FolderNeedsItsParent) {
  os::CreateFolder(folder_.Path("a"));
  os::CreateFolder(folder_.Path("a\\b\\"));
  EXPECT_TRUE(fs::is_directory(folder_.Native("a/b")));
  EXPECT_EQ(NumberOf([&] { os::CreateFolder(folder_.Path("c\\d")); }), kPathNotFound);
  EXPECT_EQ(NumberOf([&] { os::CreateFolder(folder_.Path("a")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::CreateFolder(folder_.Path("A")); }), kPathAccess);
  EXPECT_FALSE(folder_.Exists("A"));
  EXPECT_NE(NumberOf([&] { os::CreateFolder(""); }), 0);
}

TEST_F(FilesTest, FolderBelowASharedOneIsPrivate) {
  folder_.MakeFolder("shared");
  Permit("shared", 01777);
  os::CreateFolder(folder_.Path("shared\\mine"));
  EXPECT_EQ(PermissionsOf("shared/mine"), 0700u);
}

TEST_F(FilesTest, RemovingAFileRefusesReadOnlyOnesAndFolders) {
  folder_.Write("f", "");
  folder_.Write("locked", "");
  folder_.MakeFolder("folder");
  Permit("locked", 0444);
  os::RemoveFile(folder_.Path("F"));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("locked")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("folder")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("f")); }), kFileNotFound);
  EXPECT_TRUE(folder_.Exists("locked"));
}

TEST_F(FilesTest, FolderMustBeEmptyAndWritableToGo) {
  folder_.Write("full/f", "");
  folder_.MakeFolder("locked");
  folder_.MakeFolder("empty");
  Permit("locked", 0555);
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("full")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("locked")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("none")); }), kFileNotFound);
  EXPECT_NE(NumberOf([&] { os::RemoveFolder(folder_.Path("full\\f")); }), 0);
  os::RemoveFolder(folder_.Path("empty\\"));
  EXPECT_FALSE(folder_.Exists("empty"));
  EXPECT_TRUE(folder_.Exists("full/f"));
}

TEST_F(FilesTest, OfALinkOnlyTheLinkGoes) {
  folder_.Write("folder/f", "");
  folder_.Write("locked", "");
  Permit("locked", 0444);
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("locked", folder_.Native("tolocked"));
  os::RemoveFolder(folder_.Path("tofolder"));
  os::RemoveFile(folder_.Path("tolocked"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 63), ElementsAre("folder", "locked"));
  EXPECT_TRUE(folder_.Exists("folder/f"));
}

// --- Renaming and copying --------------------------------------------------------------------------------

TEST_F(FilesTest, OnlyAPlainFileThatMayBeWrittenIsTriedToBeRemoved) {
  folder_.Write("plain", "abc");
  folder_.Write("readonly", "abc");
  folder_.Write("other", "abc");
  Permit("readonly", 0444);
  fs::create_symlink("other", folder_.Native("link"));
  folder_.MakeFolder("folder");
  EXPECT_TRUE(os::TryRemovePlainFile(folder_.Path("plain")));
  for (const char* name : {"plain", "readonly", "link", "folder", "none\\none", "OTHER"})
    EXPECT_FALSE(os::TryRemovePlainFile(folder_.Path(name))) << name;
  EXPECT_FALSE(os::TryRemovePlainFile(""));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory),
              ElementsAre("folder", "link", "other", "readonly"));
}

TEST_F(FilesTest, RenameMovesFilesAndFolders) {
  folder_.Write("f", "abc");
  folder_.Write("folder/g", "def");
  os::Rename(folder_.Path("f"), folder_.Path("folder\\f2"));
  os::Rename(folder_.Path("folder"), folder_.Path("other"));
  EXPECT_EQ(folder_.Read("other/f2"), "abc");
  EXPECT_EQ(folder_.Read("other/g"), "def");
  EXPECT_FALSE(folder_.Exists("f"));
}

TEST_F(FilesTest, RenameNeverReplaces) {
  folder_.Write("f", "abc");
  folder_.Write("Taken", "def");
  EXPECT_EQ(NumberOf([&] { os::Rename(folder_.Path("f"), folder_.Path("Taken")); }), kFileExists);
  EXPECT_EQ(NumberOf([&] { os::Rename(folder_.Path("f"), folder_.Path("TAKEN")); }), kFileExists);
  EXPECT_EQ(folder_.Read("f"), "abc");
  EXPECT_EQ(folder_.Read("Taken"), "def");
}

TEST_F(FilesTest, RenameChangesTheCaseOfAName) {
  folder_.Write("inbox", "abc");
  os::Rename(folder_.Path("INBOX"), folder_.Path("Inbox"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), ElementsAre("Inbox"));
  EXPECT_NO_THROW(os::Rename(folder_.Path("Inbox"), folder_.Path("Inbox")));
}

TEST_F(FilesTest, RenameOfWhatIsMissingTellsWhichPath) {
  EXPECT_EQ(NumberOf([&] { os::Rename(folder_.Path("none"), folder_.Path("x")); }), kFileNotFound);
  EXPECT_THAT(TextOf([&] { os::Rename(folder_.Path("none"), folder_.Path("x")); }), HasSubstr("\\none: "));
  folder_.Write("f", "");
  EXPECT_EQ(NumberOf([&] { os::Rename(folder_.Path("f"), folder_.Path("none\\x")); }), kPathNotFound);
  EXPECT_THAT(TextOf([&] { os::Rename(folder_.Path("f"), folder_.Path("none\\x")); }),
              HasSubstr("\\none\\x: "));
}

TEST_F(FilesTest, RenameToNewNameFindsTheSourceAndTheFolderInAnyCase) {
  folder_.Write("Temp/Mail.eml", "abc");
  folder_.Write("Files/1 other", "def");
  EXPECT_TRUE(os::RenameToNewName(folder_.Path("Temp\\Mail.eml"), folder_.Path("Files\\1 mail.eml")));
  EXPECT_EQ(folder_.Read("Files/1 mail.eml"), "abc");
  EXPECT_TRUE(os::RenameToNewName(folder_.Path("FILES\\1 OTHER"), folder_.Path("TEMP\\2 Other")));
  EXPECT_EQ(folder_.Read("Temp/2 Other"), "def");
}

TEST_F(FilesTest, RenameToNewNameNeverReplaces) {
  folder_.Write("f", "abc");
  folder_.Write("taken", "def");
  EXPECT_EQ(NumberOf([&] { os::RenameToNewName(folder_.Path("f"), folder_.Path("taken")); }), kFileExists);
  EXPECT_EQ(folder_.Read("f"), "abc");
  EXPECT_EQ(folder_.Read("taken"), "def");
}

TEST_F(FilesTest, RenameToNewNameOfWhatIsMissingTellsWhichPath) {
  EXPECT_THAT(TextOf([&] { os::RenameToNewName(folder_.Path("none"), folder_.Path("x")); }),
              HasSubstr("\\none: "));
  folder_.Write("f", "");
  EXPECT_EQ(NumberOf([&] { os::RenameToNewName(folder_.Path("f"), folder_.Path("none\\x")); }),
            kPathNotFound);
  EXPECT_THAT(TextOf([&] { os::RenameToNewName(folder_.Path("f"), folder_.Path("none\\x")); }),
              HasSubstr("\\none\\x: "));
}

TEST_F(FilesTest, RenameToNewNameLeavesWhatWouldHaveToBeCopied) {
  // The process table is a file system of its own on every machine.
  folder_.Write("f", "abc");
  EXPECT_FALSE(os::RenameToNewName(folder_.Path("f"), os::ToWindowsPath("/proc/vorlent-test")));
  EXPECT_EQ(folder_.Read("f"), "abc");
}

TEST_F(FilesTest, RenameReachesAnotherFileSystem) {
  // The memory disk is one where the system has it; elsewhere the same must hold without.
  const std::string name = "vorlent-test-" + std::to_string(getpid());
  const fs::path other = (fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : folder_.Native()) / name;
  folder_.Write("f", "abc");
  Permit("f", 0640);
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  os::Rename(folder_.Path("f"), os::ToWindowsPath(other.string()));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(os::ReadChangeTime(os::ToWindowsPath(other.string())), (DateTime{2005, 2, 3, 4, 5, 6, 0}));
  os::Rename(os::ToWindowsPath(other.string()), folder_.Path("back"));
  EXPECT_EQ(folder_.Read("back"), "abc");
  EXPECT_EQ(PermissionsOf("back"), 0640u);
  EXPECT_FALSE(fs::exists(other));
}

TEST_F(FilesTest, MoveByCopyTakesOverBytesAttributesAndTime) {
  const std::string bytes(700'000, 'x');
  folder_.Write("f", bytes);
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  Permit("f", 0440);
  os::MoveByCopy(folder_.Path("f"), folder_.Path("g"));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(folder_.Read("g"), bytes);
  EXPECT_EQ(PermissionsOf("g"), 0440u);
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("g")), (DateTime{2005, 2, 3, 4, 5, 6, 0}));
}

TEST_F(FilesTest, MoveByCopyKeepsTheSourceUntilTheTargetIsWhole) {
  folder_.Write("f", "abcdef");
  {
    const ScopedSizeLimit limit(3);
    EXPECT_EQ(NumberOf([&] { os::MoveByCopy(folder_.Path("f"), folder_.Path("g")); }), kDiskFull);
  }
  EXPECT_EQ(folder_.Read("f"), "abcdef");
  EXPECT_FALSE(folder_.Exists("g"));
  folder_.Write("taken", "old");
  EXPECT_EQ(NumberOf([&] { os::MoveByCopy(folder_.Path("f"), folder_.Path("taken")); }), kFileExists);
  EXPECT_EQ(folder_.Read("taken"), "old");
}

TEST_F(FilesTest, MoveByCopyRefusesFolders) {
  folder_.Write("folder/f", "");
  EXPECT_EQ(NumberOf([&] { os::MoveByCopy(folder_.Path("folder"), folder_.Path("x")); }), kPathAccess);
  EXPECT_TRUE(folder_.Exists("folder/f"));
  EXPECT_FALSE(folder_.Exists("x"));
}

TEST_F(FilesTest, CopyReplacesTheTarget) {
  for (const std::size_t size : {0, 1, 262'143, 262'144, 262'145, 600'000}) {
    std::string bytes(size, 'x');
    if (size > 0) bytes.back() = 'y';
    folder_.Write("f", bytes);
    os::Copy(folder_.Path("f"), folder_.Path("g"));
    EXPECT_EQ(folder_.Read("g"), bytes) << size;
    EXPECT_TRUE(folder_.Exists("f"));
  }
}

TEST_F(FilesTest, CopyOfAPrivateFileIsPrivate) {
  folder_.Write("f", "abc");
  Permit("f", 0600);
  folder_.Write("g", "");
  Permit("g", 0666);
  os::Copy(folder_.Path("f"), folder_.Path("g"));
  os::Copy(folder_.Path("f"), folder_.Path("h"));
  EXPECT_EQ(PermissionsOf("g"), 0600u);
  EXPECT_EQ(PermissionsOf("h"), 0600u);
}

TEST_F(FilesTest, CopyRefusesReadOnlyTargetsAndItself) {
  folder_.Write("f", "abc");
  folder_.Write("locked", "old");
  Permit("locked", 0444);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("locked")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("F")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("none"), folder_.Path("g")); }), kFileNotFound);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path()); }), kPathAccess);
  EXPECT_EQ(folder_.Read("locked"), "old");
  EXPECT_EQ(folder_.Read("f"), "abc");
  EXPECT_FALSE(folder_.Exists("g"));
}

TEST_F(FilesTest, TargetThatCannotBeWrittenWholeIsRemoved) {
  folder_.Write("f", "abcdef");
  folder_.Write("g", "old");
  const ScopedSizeLimit limit(4);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("g")); }), kDiskFull);
  EXPECT_FALSE(folder_.Exists("g"));
  EXPECT_EQ(folder_.Read("f"), "abcdef");
}

}  // namespace
}  // namespace vorlent
