// Files where there are permissions, links, pipes and devices.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/FilesTest.h"
#include "Platform/NativePaths.h"
#include "Platform/Posix/System.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/ErrorNumbers.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedSizeLimit.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {

// The dot alone does it.
void MarkHidden(const std::filesystem::path&) {}

namespace {

namespace fs = std::filesystem;
using os::File;
using testing::ElementsAre;

class PermissionsTest : public FilesTest {
 protected:
  mode_t PermissionsOf(std::string_view name) {
    struct stat status;
    EXPECT_EQ(stat(folder_.Native(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

// --- Opening --------------------------------------------------------------------------------------------

TEST_F(PermissionsTest, PipeIsRefusedWithoutWaitingForItsOtherEnd) {
  ASSERT_EQ(mkfifo(folder_.Native("pipe").c_str(), 0600), 0);
  for (const auto mode : kAllModes) {
    EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("pipe"), mode); }), kPathAccess);
  }
}

TEST_F(PermissionsTest, DeviceOfBytesIsAFileThatIsNeverEmptied) {
  for (const auto mode : kAllModes)
    EXPECT_NO_THROW(File::Open("C:\\dev\\null", mode));
  File full = File::Open("C:\\dev\\full", File::Mode::Create);
  EXPECT_EQ(NumberOf([&] { full.Write("x", 1); }), kDiskFull);
  EXPECT_EQ(NumberOf([&] { os::Copy("C:\\dev\\zero", folder_.Path("x")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Write("f", "abc"), "C:\\dev\\null"); }), kPathAccess);
  EXPECT_FALSE(folder_.Exists("x"));
}

TEST_F(PermissionsTest, OpenFileIsNotPassedOnToOtherPrograms) {
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

TEST_F(PermissionsTest, WhatTheUserMayNotTouchIsPathAccess) {
  folder_.Write("closed/f", "x");
  Permit("", fs::perms(0755));
  Permit("closed", fs::perms::none);
  const AsOrdinaryUser user;
  const std::string path = folder_.Path("closed\\f");
  EXPECT_EQ(NumberOf([&] { File::Open(path, File::Mode::Read); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::FileLength(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::ReadAttributes(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(path); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::ListNames(folder_.Path("closed"), "*", 0); }), kPathAccess);
  EXPECT_FALSE(os::MayList(folder_.Path("closed")));
}

TEST_F(PermissionsTest, FullDiskRaisesAndKeepsWhatFits) {
  const ScopedSizeLimit limit(4);
  File file = File::Open(folder_.Path("f"), File::Mode::Create);
  EXPECT_EQ(NumberOf([&] { file.Write("abcdef", 6); }), kDiskFull);
  file.Close();
  EXPECT_EQ(folder_.Read("f"), "abcd");
}

// --- Length, attributes, times --------------------------------------------------------------------------

TEST_F(PermissionsTest, ReadOnlyBitIsSetAndTakenAway) {
  folder_.Write("f", "");
  Permit("f", fs::perms(0664));
  os::WriteAttributes(folder_.Path("f"), os::kReadOnly | os::kArchive);
  EXPECT_EQ(PermissionsOf("f"), 0444u);
  os::WriteAttributes(folder_.Path("f"), os::kArchive);
  EXPECT_EQ(PermissionsOf("f"), 0644u);
}

TEST_F(PermissionsTest, AttributesThatStayChangeNoPermission) {
  folder_.Write("f", "");
  Permit("f", fs::perms(0666));
  os::WriteAttributes(folder_.Path("f"), 0);
  EXPECT_EQ(PermissionsOf("f"), 0666u);
  Permit("f", fs::perms(0466));
  os::WriteAttributes(folder_.Path("f"), os::kReadOnly);
  EXPECT_EQ(PermissionsOf("f"), 0466u);
}

// --- Links ----------------------------------------------------------------------------------------------

TEST_F(PermissionsTest, LinkShowsWhatItLeadsTo) {
  folder_.Write("file", "");
  folder_.MakeFolder("folder");
  Permit("file", fs::perms(0444));
  fs::create_symlink("file", folder_.Native("tofile"));
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("none", folder_.Native("tonone"));
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofile")), os::kLink | os::kArchive | os::kReadOnly);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofolder")), os::kLink | os::kDirectory);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tofolder\\")), os::kLink | os::kDirectory);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("tonone")), os::kLink | os::kArchive);
}

TEST_F(PermissionsTest, AttributesOfALinkLeaveItsTargetAlone) {
  folder_.Write("file", "");
  Permit("file", fs::perms(0444));
  fs::create_symlink("file", folder_.Native("link"));
  os::WriteAttributes(folder_.Path("link"), 0);
  EXPECT_EQ(PermissionsOf("file"), 0444u);
}

TEST_F(PermissionsTest, LinksAreListedAsWhatTheyLeadTo) {
  folder_.MakeFolder("folder");
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("127.0.1.1:+4711", folder_.Native("lock"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), ElementsAre("lock"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory), ElementsAre("folder", "lock", "tofolder"));
}

TEST_F(PermissionsTest, OfALinkOnlyTheLinkGoes) {
  folder_.Write("folder/f", "");
  folder_.Write("locked", "");
  Permit("locked", fs::perms(0444));
  fs::create_symlink("folder", folder_.Native("tofolder"));
  fs::create_symlink("locked", folder_.Native("tolocked"));
  os::RemoveFolder(folder_.Path("tofolder"));
  os::RemoveFile(folder_.Path("tolocked"));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 63), ElementsAre("folder", "locked"));
  EXPECT_TRUE(folder_.Exists("folder/f"));
}

// --- Making and removing --------------------------------------------------------------------------------

TEST_F(PermissionsTest, FolderMustBeWritableToGo) {
  folder_.MakeFolder("locked");
  Permit("locked", fs::perms(0555));
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("locked")); }), kPathAccess);
  EXPECT_TRUE(folder_.Exists("locked"));
}

TEST_F(PermissionsTest, FolderBelowASharedOneIsPrivate) {
  folder_.MakeFolder("shared");
  Permit("shared", fs::perms(01777));
  os::CreateFolder(folder_.Path("shared\\mine"));
  EXPECT_EQ(PermissionsOf("shared/mine"), 0700u);
}

// --- Renaming and copying -------------------------------------------------------------------------------

TEST_F(PermissionsTest, RenameToNewNameLeavesWhatWouldHaveToBeCopied) {
  // The process table is a file system of its own on every machine.
  folder_.Write("f", "abc");
  EXPECT_FALSE(os::RenameToNewName(folder_.Path("f"), os::ToWindowsPath("/proc/vorlent-test")));
  EXPECT_EQ(folder_.Read("f"), "abc");
}

TEST_F(PermissionsTest, RenameReachesAnotherFileSystem) {
  // The memory disk is one where the system has it; elsewhere the same must hold without.
  const std::string name = "vorlent-test-" + std::to_string(getpid());
  const fs::path other = (fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : folder_.Native()) / name;
  folder_.Write("f", "abc");
  Permit("f", fs::perms(0640));
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  os::Rename(folder_.Path("f"), os::ToWindowsPath(other.string()));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(os::ReadChangeTime(os::ToWindowsPath(other.string())), (DateTime{2005, 2, 3, 4, 5, 6, 0}));
  os::Rename(os::ToWindowsPath(other.string()), folder_.Path("back"));
  EXPECT_EQ(folder_.Read("back"), "abc");
  EXPECT_EQ(PermissionsOf("back"), 0640u);
  EXPECT_FALSE(fs::exists(other));
}

TEST_F(PermissionsTest, MoveByCopyTakesOverBytesAttributesAndTime) {
  const std::string bytes(700'000, 'x');
  folder_.Write("f", bytes);
  os::WriteTimes(folder_.Path("f"), {2005, 2, 3, 4, 5, 6, 0});
  Permit("f", fs::perms(0440));
  os::MoveByCopy(folder_.Path("f"), folder_.Path("g"));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(folder_.Read("g"), bytes);
  EXPECT_EQ(PermissionsOf("g"), 0440u);
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("g")), (DateTime{2005, 2, 3, 4, 5, 6, 0}));
}

TEST_F(PermissionsTest, MoveByCopyKeepsTheSourceUntilTheTargetIsWhole) {
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

TEST_F(PermissionsTest, MoveByCopyRefusesFolders) {
  folder_.Write("folder/f", "");
  EXPECT_EQ(NumberOf([&] { os::MoveByCopy(folder_.Path("folder"), folder_.Path("x")); }), kPathAccess);
  EXPECT_TRUE(folder_.Exists("folder/f"));
  EXPECT_FALSE(folder_.Exists("x"));
}

TEST_F(PermissionsTest, CopyOfAPrivateFileIsPrivate) {
  folder_.Write("f", "abc");
  Permit("f", fs::perms(0600));
  folder_.Write("g", "");
  Permit("g", fs::perms(0666));
  os::Copy(folder_.Path("f"), folder_.Path("g"));
  os::Copy(folder_.Path("f"), folder_.Path("h"));
  EXPECT_EQ(PermissionsOf("g"), 0600u);
  EXPECT_EQ(PermissionsOf("h"), 0600u);
}

TEST_F(PermissionsTest, TargetThatCannotBeWrittenWholeIsRemoved) {
  folder_.Write("f", "abcdef");
  folder_.Write("g", "old");
  const ScopedSizeLimit limit(4);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("g")); }), kDiskFull);
  EXPECT_FALSE(folder_.Exists("g"));
  EXPECT_EQ(folder_.Read("f"), "abcdef");
}

// --- Links as what they lead to -------------------------------------------------------------------------

TEST_F(PermissionsTest, LinkIsTheEntryThatItLeadsTo) {
  folder_.Write("folder/file", "x");
  fs::create_symlink("folder", folder_.Native("link"));
  const auto folder = os::TryIdentify(folder_.Path("folder"));
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(os::TryIdentify(folder_.Path("link")), folder);
  EXPECT_EQ(os::TryIdentify(folder_.Path("link\\file")), os::TryIdentify(folder_.Path("folder\\file")));
}

TEST_F(PermissionsTest, EntryOfALinkTellsWhetherItLeadsToAFolder) {
  folder_.Write("file", "");
  folder_.MakeFolder("folder");
  fs::create_symlink("folder", folder_.Native("linkToFolder"));
  fs::create_symlink("file", folder_.Native("linkToFile"));
  fs::create_symlink("nowhere", folder_.Native("linkToNothing"));
  std::vector<std::string> shown;
  for (const os::FolderEntry& entry : os::ListEntries(folder_.Path(), "*", os::kDirectory))
    shown.push_back(entry.name + (entry.isFolder ? "/" : ""));
  EXPECT_THAT(shown, ElementsAre("file", "folder/", "linkToFile", "linkToFolder/", "linkToNothing"));
}

TEST_F(PermissionsTest, LinkAndFileOfAnotherCaseAreNotTriedToBeRemoved) {
  folder_.Write("other", "abc");
  fs::create_symlink("other", folder_.Native("link"));
  for (const char* name : {"link", "OTHER"})
    EXPECT_FALSE(os::TryRemovePlainFile(folder_.Path(name))) << name;
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", 0), ElementsAre("link", "other"));
}

TEST_F(PermissionsTest, AllTimesAreThoseOfTheLocalTimeGiven) {
  folder_.Write("f", "");
  const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  os::WriteTimes(folder_.Path("f"), {2010, 7, 1, 12, 0, 0, 250});
  struct stat status;
  ASSERT_EQ(stat(folder_.Native("f").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1277978400);  // 10:00:00 UTC
  EXPECT_EQ(status.st_atim.tv_sec, 1277978400);
  EXPECT_EQ(status.st_mtim.tv_nsec, 250'000'000);
}

}  // namespace
}  // namespace vorlent
