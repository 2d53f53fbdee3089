#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Common/StdModul.h"
#include "Platform/AtEnd.h"
#include "Platform/CodePage.h"
#include "Platform/Files.h"
#include "Platform/Settings.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/DiskOperations.h"
#include "Support/OddEntries.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedEnvironment.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Values(const KeyedList<std::string>& list) {
  std::vector<std::string> values;
  for (const std::string& value : list)
    values.push_back(value);
  return values;
}

class StdModulFilesTest : public testing::Test {
 protected:
  void Permit(std::string_view name, unsigned permissions) {
    fs::permissions(folder_.Native(name), static_cast<fs::perms>(permissions));
  }
  unsigned PermissionsOf(std::string_view name) {
    return static_cast<unsigned>(fs::status(folder_.Native(name)).permissions());
  }
  // All that the folder holds, as paths with "/" that folders end in too.
  std::vector<std::string> Tree() {
    std::vector<std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.Native())) {
      const bool isFolder = entry.is_directory() && !entry.is_symlink();
      tree.push_back(fs::relative(entry.path(), folder_.Native()).generic_string() + (isFolder ? "/" : ""));
    }
    std::sort(tree.begin(), tree.end());
    return tree;
  }

  TemporaryFolder folder_;
};

// --- Asking ----------------------------------------------------------------------------------------------

TEST_F(StdModulFilesTest, FolderExistsForFoldersOnly) {
  folder_.Write("file", "");
  folder_.MakeFolder("empty");
  EXPECT_TRUE(FolderExists(folder_.Path()));
  EXPECT_TRUE(FolderExists(folder_.Path("empty")));
  EXPECT_TRUE(FolderExists(folder_.Path("empty\\")));
  EXPECT_TRUE(FolderExists(folder_.Path("EMPTY")));
  EXPECT_FALSE(FolderExists(folder_.Path("file")));
  EXPECT_FALSE(FolderExists(folder_.Path("none")));
  EXPECT_FALSE(FolderExists(folder_.Path("empty\\.")));
  EXPECT_FALSE(FolderExists(folder_.Path("empty\\..")));
  EXPECT_FALSE(FolderExists(""));
}

TEST_F(StdModulFilesTest, AskingForFilesAsFoldersReadsNoFolder) {
  for (int i = 0; i < 20; ++i)
    folder_.Write("file" + std::to_string(i), "");
  const DiskCallCount listings(DiskCall::List);
  for (int i = 0; i < 20; ++i)
    EXPECT_FALSE(FolderExists(folder_.Path("file" + std::to_string(i))));
  EXPECT_EQ(listings.Count(), 0);
}

TEST_F(StdModulFilesTest, RootOfADriveIsAskedOfTheSystem) {
  const ScopedRecordingPlatform platform;
  platform->drives = {{'D', 3}, {'E', 0}, {'F', 1}};
  EXPECT_TRUE(FolderExists("D:\\"));
  EXPECT_TRUE(FolderExists("E:\\"));  // unknown, but not without a root
  EXPECT_FALSE(FolderExists("F:\\"));
  EXPECT_FALSE(FolderExists("X:\\"));
  EXPECT_THAT(platform->calls, ElementsAre("DriveType(\"D:\\\") -> 3", "DriveType(\"E:\\\") -> 0",
                                           "DriveType(\"F:\\\") -> 1", "DriveType(\"X:\\\") -> 1"));
}

TEST_F(StdModulFilesTest, FolderThatMayNotBeListedDoesNotExist) {
  folder_.MakeFolder("closed");
  Permit("", 0755);
  Permit("closed", 0711);
  const AsOrdinaryUser user;
  EXPECT_EQ(GetFileAttr(folder_.Path("closed")), 16);
  EXPECT_FALSE(FolderExists(folder_.Path("closed")));
  EXPECT_EQ(FirstFolderEntry(folder_.Path("closed")), "");
  KeyedList<std::string> files;
  files.Add("old");
  EXPECT_NO_THROW(ListFolder(folder_.Path("closed"), &files, nullptr, "*.*"));
  EXPECT_TRUE(files.IsEmpty());
}

TEST_F(StdModulFilesTest, FileExistsIfItsLengthCanBeRead) {
  EXPECT_TRUE(FileExists(folder_.Write("file", "")));
  EXPECT_TRUE(FileExists(folder_.Path("FILE")));
  EXPECT_FALSE(FileExists(folder_.Path("none")));
  EXPECT_FALSE(FileExists(folder_.Path()));
  EXPECT_FALSE(FileExists(""));
  EXPECT_FALSE(FileExists(std::string("C:\\tmp\0x", 8)));
}

TEST_F(StdModulFilesTest, AttributesAreMinusOneWhereThereAreNone) {
  folder_.Write("file", "");
  folder_.MakeFolder("x");
  EXPECT_EQ(GetFileAttr(folder_.Path("file")), 32);
  EXPECT_EQ(GetFileAttr(folder_.Path("x")), 16);
  EXPECT_EQ(GetFileAttr(folder_.Path("none")), -1);
  EXPECT_EQ(GetFileAttr(""), -1);
  EXPECT_EQ(GetFileAttr(folder_.Path("x\\..")), -1);
  EXPECT_EQ(GetFileAttr(folder_.Path("x\\.")), -1);
  Permit("file", 0444);
  EXPECT_EQ(GetFileAttr(folder_.Path("file")), 33);
}

TEST_F(StdModulFilesTest, AttributeLettersComeInAFixedOrder) {
  folder_.Write("file", "");
  folder_.Write(".locked", "");
  folder_.MakeFolder("folder");
  Permit(".locked", 0444);
  EXPECT_EQ(GetFileAttrText(folder_.Path("file")), "A");
  EXPECT_EQ(GetFileAttrText(folder_.Path(".locked")), "ARH");
  EXPECT_EQ(GetFileAttrText(folder_.Path("folder")), "D");
  EXPECT_EQ(GetFileAttrText(folder_.Path("none")), "ARHSD");
}

// --- Making ----------------------------------------------------------------------------------------------

TEST_F(StdModulFilesTest, MakePathMakesEveryFolder) {
  MakePath(folder_.Path("a\\b\\c"));
  MakePath(folder_.Path("a\\b\\d\\"));
  MakePath(folder_.Path("A\\e"));
  EXPECT_THAT(Tree(), ElementsAre("a/", "a/b/", "a/b/c/", "a/b/d/", "a/e/"));
}

TEST_F(StdModulFilesTest, MakePathStopsWhereNoFolderCanBe) {
  std::string path = folder_.Path("top\\x\\.\\..\\y\\") + std::string(300, 'n');
  for (int i = 0; i < 25'000; ++i)
    path += "\\a";
  const DiskCallCount calls(DiskCall::MakeFolder);
  MakePath(path);
  EXPECT_LT(calls.Count(), 30);
  EXPECT_THAT(Tree(), ElementsAre("top/", "top/x/", "top/y/"));
}

TEST_F(StdModulFilesTest, MakePathBelowAFileFailsInSilence) {
  folder_.Write("file", "x");
  MakePath(folder_.Path("file\\a"));
  MakePath("");
  MakePath("Q:\\a");
  EXPECT_THAT(Tree(), ElementsAre("file"));
}

// --- Deleting --------------------------------------------------------------------------------------------

TEST_F(StdModulFilesTest, KillFileTakesReadOnlyFilesToo) {
  folder_.Write("file", "");
  folder_.Write("locked", "");
  Permit("locked", 0444);
  KillFile(folder_.Path("file"));
  KillFile(folder_.Path("LOCKED"));
  KillFile(folder_.Path("none"));
  KillFile("");
  EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(StdModulFilesTest, KillFileLeavesFolders) {
  folder_.Write("folder/file", "");
  KillFile(folder_.Path("folder"));
  KillFile(folder_.Path());
  EXPECT_THAT(Tree(), ElementsAre("folder/", "folder/file"));
}

TEST_F(StdModulFilesTest, KillFileOfAPatternTakesAllMatches) {
  for (const char* name : {"a.msf", "B.MSF", ".c.msf", "a.txt"})
    folder_.Write(name, "");
  folder_.MakeFolder("folder.msf");
  Permit("a.msf", 0444);
  KillFile(folder_.Path("*.msf"));
  EXPECT_THAT(Tree(), ElementsAre("a.txt", "folder.msf/"));
}

TEST_F(StdModulFilesTest, KillFileOfABarePatternMeansTheCurrentFolder) {
  folder_.Write("att1", "");
  folder_.Write("att12", "");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Native());
  KillFile("att?");
  fs::current_path(before);
  EXPECT_THAT(Tree(), ElementsAre("att12"));
}

TEST_F(StdModulFilesTest, NameThatHoldsAPatternIsItself) {
  folder_.Write("Was?", "");
  folder_.Write("Wass", "");
  KillFile(folder_.Path("Was?"));
  EXPECT_THAT(Tree(), ElementsAre("Wass"));
}

TEST_F(StdModulFilesTest, ExactRemovalKnowsNoPatterns) {
  for (const char* name : {"Wass.msf", "Wasn.msf", "Was*.msf", "locked"})
    folder_.Write(name, "");
  Permit("locked", 0444);
  folder_.MakeFolder("folder");
  RemoveExactFile(folder_.Path("Was?.msf"));
  RemoveExactFile(folder_.Path("*"));
  RemoveExactFile(folder_.Path("folder"));
  RemoveExactFile("");
  EXPECT_THAT(Tree(), ElementsAre("Was*.msf", "Wasn.msf", "Wass.msf", "folder/", "locked"));
  RemoveExactFile(folder_.Path("Was*.msf"));
  RemoveExactFile(folder_.Path("LOCKED"));
  EXPECT_THAT(Tree(), ElementsAre("Wasn.msf", "Wass.msf", "folder/"));
}

TEST_F(StdModulFilesTest, FileThatCannotBeMadeWritableStays) {
  folder_.Write("locked", "");
  Permit("locked", 0444);
  {
    const DiskFault fault({.calls = DiskCall::SetMode, .error = EPERM});
    RemoveExactFile(folder_.Path("locked"));
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_THAT(Tree(), ElementsAre("locked"));
}

TEST_F(StdModulFilesTest, LinkThatCannotGoKeepsNothingElse) {
  folder_.MakeFolder("elsewhere");
  folder_.Write("top/file", "");
  folder_.MakeFolder("top/sub");
  MAKE_OR_SKIP(MakeLink(folder_.Native("elsewhere"), folder_.Native("top/link")));
  {
    const DiskFault fault({.calls = DiskCall::Remove, .error = EPERM, .pathEnd = "/link"});
    DeleteFolder(folder_.Path("top"), true, false);
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_TRUE(fs::is_symlink(folder_.Native("top/link")));
  EXPECT_FALSE(folder_.Exists("top/sub"));
  EXPECT_FALSE(folder_.Exists("top/file"));
}

TEST_F(StdModulFilesTest, DeleteFolderTakesSubfoldersWhateverTheFlags) {
  const auto build = [&] {
    for (const char* name : {"top/file", "top/.hidden", "top/sub/file", "top/sub/deep/file"})
      folder_.Write(name, "");
    folder_.MakeFolder("top/empty");
    Permit("top/sub/file", 0444);
  };
  build();
  DeleteFolder(folder_.Path("top"), false, false);
  EXPECT_THAT(Tree(), ElementsAre("top/", "top/.hidden", "top/file"));
  build();
  DeleteFolder(folder_.Path("top"), false, true);  // not empty, so it stays
  EXPECT_THAT(Tree(), ElementsAre("top/", "top/.hidden", "top/file"));
  build();
  DeleteFolder(folder_.Path("top\\"), true, false);
  EXPECT_THAT(Tree(), ElementsAre("top/"));
  build();
  DeleteFolder(folder_.Path("TOP\\"), true, true);
  EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(StdModulFilesTest, DeleteFolderTakesReadOnlyFolders) {
  folder_.MakeFolder("top");
  Permit("top", 0555);
  DeleteFolder(folder_.Path("top"), true, true);
  EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(StdModulFilesTest, DeleteFolderDoesNotFollowLinksOutOfIt) {
  folder_.Write("mail/Inbox", "keep");
  folder_.Write("locked", "keep");
  Permit("locked", 0444);
  folder_.Write("top/file", "");
  MAKE_OR_SKIP(MakeLink(folder_.Native("mail"), folder_.Native("top/link")));
  MAKE_OR_SKIP(MakeLink(folder_.Native("locked"), folder_.Native("top/tolocked")));
  MAKE_OR_SKIP(MakeLink("none", folder_.Native("top/broken")));
  DeleteFolder(folder_.Path("top"), true, true);
  EXPECT_THAT(Tree(), ElementsAre("locked", "mail/", "mail/Inbox"));
  EXPECT_EQ(PermissionsOf("locked"), 0444u);
}

TEST_F(StdModulFilesTest, FolderOfNoNameIsNotTheCurrentOne) {
  folder_.Write("file", "");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Native());
  DeleteFolder("", true, true);
  EXPECT_EQ(FirstFolderEntry(""), "");
  KeyedList<std::string> files;
  ListFolder("", &files, nullptr, "*.*");
  EXPECT_TRUE(files.IsEmpty());
  DeleteFolder("none", true, true);
  DeleteFolder("Q:\\", true, true);
  DeleteFolder("file", true, true);
  fs::current_path(before);
  EXPECT_THAT(Tree(), ElementsAre("file"));
}

// --- Listing ---------------------------------------------------------------------------------------------

TEST_F(StdModulFilesTest, FolderEntriesComeOneByOne) {
  for (const char* name : {"b", "A", ".hidden"})
    folder_.Write(name, "");
  folder_.MakeFolder("c");
  FolderEntries entries;
  EXPECT_EQ(entries.First(folder_.Path()), ".hidden");
  EXPECT_EQ(entries.Next(), "A");
  EXPECT_EQ(entries.Next(), "b");
  EXPECT_EQ(entries.Next(), "c");
  EXPECT_EQ(entries.Next(), "");
  EXPECT_EQ(entries.Next(), "");
  EXPECT_EQ(entries.First(folder_.Path("c")), "");
  EXPECT_EQ(entries.Next(), "");
  EXPECT_EQ(entries.First(folder_.Path() + "\\"), ".hidden");
}

TEST_F(StdModulFilesTest, FirstEntryIsEmptyWhereThereIsNone) {
  folder_.Write("file", "");
  EXPECT_EQ(FirstFolderEntry(folder_.Path()), "file");
  EXPECT_EQ(FirstFolderEntry(folder_.Path("none")), "");
  EXPECT_EQ(FirstFolderEntry(folder_.Path("file")), "");
  EXPECT_EQ(FirstFolderEntry(folder_.MakeFolder("empty")), "");
}

TEST_F(StdModulFilesTest, ListFolderSortsFilesFromFolders) {
  for (const char* name : {"Sent", "inbox", ".hidden", "inbox.msf"})
    folder_.Write(name, "");
  folder_.MakeFolder("Sent.sbd");
  folder_.MakeFolder("Archiv");
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  files.Add("old", "key");
  folders.Add("old", "key");
  ListFolder(folder_.Path(), &files, &folders, "*.*");
  EXPECT_THAT(Values(files), ElementsAre(".hidden", "inbox", "inbox.msf", "Sent"));
  EXPECT_THAT(Values(folders), ElementsAre("Archiv", "Sent.sbd"));
  ListFolder(folder_.Path(), &files, nullptr, "*.msf");
  EXPECT_THAT(Values(files), ElementsAre("inbox.msf"));
  ListFolder(folder_.Path() + "\\", nullptr, &folders, "s*");
  EXPECT_THAT(Values(folders), ElementsAre("Sent.sbd"));
  EXPECT_NO_THROW(ListFolder(folder_.Path(), nullptr, nullptr, "*.*"));
}

TEST_F(StdModulFilesTest, ListFolderOfNothingClearsTheLists) {
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  for (const std::string& path : {folder_.Path("none"), std::string("Q:\\"), std::string()}) {
    files.Add("old");
    folders.Add("old");
    ListFolder(path, &files, &folders, "*.*");
    EXPECT_TRUE(files.IsEmpty() && folders.IsEmpty()) << path;
  }
}

TEST_F(StdModulFilesTest, FolderThatCannotBeReadHasNoEntries) {
  folder_.Write("file", "");
  const DiskFault fault({.calls = DiskCall::List, .trouble = DiskTrouble::FromHere, .error = EACCES});
  EXPECT_EQ(FirstFolderEntry(folder_.Path()), "");
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(StdModulFilesTest, ListsOfAFolderThatCannotBeReadAreEmpty) {
  folder_.Write("file", "");
  KeyedList<std::string> files;
  files.Add("left over");
  const DiskFault fault({.calls = DiskCall::List, .trouble = DiskTrouble::FromHere, .error = EIO});
  ListFolder(folder_.Path(), &files, nullptr, "*.*");
  EXPECT_TRUE(fault.WasReached());
  EXPECT_TRUE(files.IsEmpty());
}

TEST_F(StdModulFilesTest, EntryWithoutAttributesCountsAsAFile) {
  MAKE_OR_SKIP(MakePipe(folder_.Native("pipe")));
  EXPECT_EQ(GetFileAttr(folder_.Path("pipe")), 0);
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder_.Path(), &files, &folders, "*.*");
  EXPECT_THAT(Values(files), ElementsAre("pipe"));
  EXPECT_TRUE(folders.IsEmpty());
}

// --- Moving ----------------------------------------------------------------------------------------------

class MoveFileTest : public StdModulFilesTest {
 protected:
  void SetUp() override {
    os::ResetSettings();
    folder_.Write("source", "abc");
    SetFileDate(folder_.Path("source"), "09.05.2010 14:30:05");
  }
  void TearDown() override { os::ResetSettings(); }

  // The same file by another drive, so that moving to it copies.
  std::string ByOtherDrive(std::string_view name) {
    os::SetDrive('T', folder_.Native().string());
    return "T:\\" + std::string(name);
  }

  // Which file the name stands for: a renamed one stays the same, a copy is another.
  std::uint64_t Number(std::string_view name) { return os::TryIdentify(folder_.Path(name)).value().number; }

  ScopedEnvironment zone_{"TZ", "UTC"};
};

TEST_F(MoveFileTest, RenamesOnOneDrive) {
  const std::uint64_t before = Number("source");
  MoveFile(LowerCase(folder_.Path("new\\deep\\target")).replace(0, 1, "C"), folder_.Path("source"));
  EXPECT_THAT(Tree(), ElementsAre("new/", "new/deep/", "new/deep/target"));
  EXPECT_EQ(folder_.Read("new/deep/target"), "abc");
  EXPECT_EQ(GetFileDate(folder_.Path("new\\deep\\target")), "09.05.2010 14:30:05");
  EXPECT_EQ(Number("new/deep/target"), before);
}

TEST_F(MoveFileTest, CopiesToAnotherDrive) {
  const std::uint64_t before = Number("source");
  MoveFile(ByOtherDrive("new\\target"), folder_.Path("source"));
  EXPECT_THAT(Tree(), ElementsAre("new/", "new/target"));
  EXPECT_EQ(folder_.Read("new/target"), "abc");
  EXPECT_EQ(GetFileDate(folder_.Path("new\\target")), "09.05.2010 14:30:05");
  EXPECT_NE(Number("new/target"), before);
}

TEST_F(MoveFileTest, CopiesWherePathsHaveNoDrive) {
  // A system with drives of its own takes the one of the current folder.
  const fs::path current = fs::current_path();
  fs::current_path(folder_.Native());
  const AtEnd goBack([&] { fs::current_path(current); });
  const std::uint64_t before = Number("source");
  const std::string source = folder_.Path("source").substr(2);
  const std::string target = folder_.Path("target").substr(2);
  MoveFile(target, source);
  EXPECT_THAT(Tree(), ElementsAre("target"));
  EXPECT_EQ(folder_.Read("target"), "abc");
  EXPECT_NE(Number("target"), before);
}

TEST_F(MoveFileTest, ReplacesTheTargetReadOnlyOrNot) {
  for (const bool byCopy : {false, true}) {
    folder_.Write("source", "abc");
    folder_.Write("target", "old");
    Permit("target", 0444);
    MoveFile(byCopy ? ByOtherDrive("target") : folder_.Path("target"), folder_.Path("source"));
    EXPECT_THAT(Tree(), ElementsAre("target"));
    EXPECT_EQ(folder_.Read("target"), "abc");
    EXPECT_EQ(GetFileAttr(folder_.Path("target")), 32);
    KillFile(folder_.Path("target"));
  }
}

TEST_F(MoveFileTest, ReadOnlySourceStaysReadOnlyWithItsDate) {
  for (const bool byCopy : {false, true}) {
    folder_.Write("source", "abc");
    SetFileDate(folder_.Path("source"), "09.05.2010 14:30:05");
    Permit("source", 0444);
    MoveFile(byCopy ? ByOtherDrive("target") : folder_.Path("target"), folder_.Path("source"));
    EXPECT_THAT(Tree(), ElementsAre("target"));
    EXPECT_EQ(GetFileAttr(folder_.Path("target")), 33) << byCopy;
    EXPECT_EQ(GetFileDate(folder_.Path("target")), "09.05.2010 14:30:05") << byCopy;
    KillFile(folder_.Path("target"));
  }
}

TEST_F(MoveFileTest, OntoItselfInAnotherCaseDoesNothing) {
  MoveFile(folder_.Path("SOURCE"), folder_.Path("source"));
  EXPECT_THAT(Tree(), ElementsAre("source"));
  EXPECT_EQ(folder_.Read("source"), "abc");
}

TEST_F(MoveFileTest, MissingSourceLeavesTheTarget) {
  folder_.Write("target", "old");
  MoveFile(folder_.Path("target"), folder_.Path("none"));
  MoveFile(folder_.Path("new\\target"), folder_.Path("none"));
  EXPECT_THAT(Tree(), ElementsAre("source", "target"));
  EXPECT_EQ(folder_.Read("target"), "old");
}

TEST_F(MoveFileTest, FolderIsNotMoved) {
  folder_.MakeFolder("folder");
  MoveFile(folder_.Path("target"), folder_.Path("folder"));
  EXPECT_THAT(Tree(), ElementsAre("folder/", "source"));
}

TEST_F(MoveFileTest, FailedMoveLeavesTheSource) {
  folder_.Write("taken/file", "");
  for (const bool byCopy : {false, true}) {
    MoveFile(byCopy ? ByOtherDrive("taken") : folder_.Path("taken"), folder_.Path("source"));
    EXPECT_THAT(Tree(), ElementsAre("source", "taken/", "taken/file"));
    EXPECT_EQ(folder_.Read("source"), "abc");
  }
}

TEST_F(MoveFileTest, TargetNamedLikeAPatternTakesNoOther) {
  folder_.Write("saved1", "");
  MoveFile(folder_.Path("saved?"), folder_.Path("source"));
  EXPECT_THAT(Tree(), ElementsAre("saved1", "saved?"));
}

TEST_F(MoveFileTest, SourceThatCannotBeLookedAtAnyMoreStays) {
  {
    // The first look finds it.
    const DiskFault fault(
        {.calls = DiskCall::Status, .number = 1, .trouble = DiskTrouble::FromHere, .pathEnd = "/source"});
    MoveFile(folder_.Path("target"), folder_.Path("source"));
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_THAT(Tree(), ElementsAre("source"));
}

TEST_F(MoveFileTest, CopyThatCannotBeMadeReadOnlyIsMovedNevertheless) {
  const std::string target = ByOtherDrive("target");
  Permit("source", 0444);
  {
    const DiskFault fault(
        {.calls = DiskCall::SetMode, .trouble = DiskTrouble::FromHere, .error = EPERM, .pathEnd = "/target"});
    MoveFile(target, folder_.Path("source"));
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_THAT(Tree(), ElementsAre("target"));
  EXPECT_EQ(folder_.Read("target"), "abc");
}

TEST_F(MoveFileTest, FailedCopyHasDeletedTheTargetAlready) {
  folder_.Write("target", "old");
  // A source that exists but can't be opened as a plain file.
  MAKE_OR_SKIP(MakePipe(folder_.Native("pipe")));
  MoveFile(ByOtherDrive("target"), folder_.Path("pipe"));
  EXPECT_THAT(Tree(), ElementsAre("pipe", "source"));
}

}  // namespace
}  // namespace vorlent
