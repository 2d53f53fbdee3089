#include "Platform/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/FilesTest.h"
#include "Support/ErrorNumbers.h"
#include "Support/PrintDateTime.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using os::File;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
  Permit("f", fs::perms(0444));
  for (const auto mode : {File::Mode::ReadWrite, File::Mode::Create, File::Mode::Append}) {
    EXPECT_EQ(NumberOf([&] { File::Open(folder_.Path("f"), mode); }), kPathAccess);
  }
  EXPECT_EQ(folder_.Read("f"), "keep");
  File file = File::Open(folder_.Path("f"), File::Mode::Read);
  EXPECT_EQ(ReadAll(file), "keep");
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
  EXPECT_EQ(TextOf([&] { File::Open(folder_.Path("folder"), File::Mode::Create); }),
            folder_.Path("folder") + ": Is a directory");
  folder_.Write("file", "");
  for (const std::string below : {"file\\x", "file\\x\\y"}) {
    EXPECT_EQ(TextOf([&] { File::Open(folder_.Path(below), File::Mode::Create); }),
              folder_.Path(below) + ": Not a directory");
  }
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

TEST_F(FilesTest, SyncSucceedsOnAFileThatIsOpenForReadingOnly) {
  folder_.Write("f", "abc");
  EXPECT_NO_THROW(File::Open(folder_.Path("f"), File::Mode::Read).Sync());
  fs::permissions(folder_.Native("f"), fs::perms::owner_read);
  EXPECT_NO_THROW(File::Open(folder_.Path("f"), File::Mode::Read).Sync());
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
  MarkHidden(folder_.Native(".hidden"));
  MarkHidden(folder_.Native(".mozilla"));
  Permit("locked", fs::perms(0466));
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

TEST_F(FilesTest, ReadOnlyBitIsWritten) {
  folder_.Write("f", "");
  os::WriteAttributes(folder_.Path("f"), os::kReadOnly | os::kArchive);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("f")), os::kReadOnly | os::kArchive);
  EXPECT_FALSE(os::TryRemovePlainFile(folder_.Path("f")));
  os::WriteAttributes(folder_.Path("f"), os::kArchive);
  EXPECT_EQ(os::ReadAttributes(folder_.Path("f")), os::kArchive);
}

TEST_F(FilesTest, EntryIsTheSameWhateverPathLeadsToIt) {
  folder_.Write("folder/file", "x");
  const auto folder = os::TryIdentify(folder_.Path("folder"));
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(os::TryIdentify(folder_.Path("FOLDER\\")), folder);
  EXPECT_NE(os::TryIdentify(folder_.Path("folder\\file")), folder);
  EXPECT_EQ(os::TryIdentify(folder_.Path("none")), std::nullopt);
}

TEST_F(FilesTest, TimesAreLocal) {
  folder_.Write("f", "");
  const DateTime summer = {2010, 7, 1, 12, 0, 0, 250};
  {
    const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    os::WriteTimes(folder_.Path("f"), summer);
    EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), summer);
  }
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(os::ReadChangeTime(folder_.Path("f")), (DateTime{2010, 7, 1, 10, 0, 0, 250}));
}

TEST_F(FilesTest, TimeBefore1970IsKept) {
  folder_.Write("f", "");
  const ScopedTimeZone zone("UTC");
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
  Permit("f", fs::perms(0444));
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
  std::vector<std::string> shown;
  for (const os::FolderEntry& entry : os::ListEntries(folder_.Path(), "*", os::kDirectory))
    shown.push_back(entry.name + (entry.isFolder ? "/" : ""));
  EXPECT_THAT(shown, ElementsAre("file", "folder/"));
}

TEST_F(FilesTest, AttributesChooseWhatIsListed) {
  folder_.Write("file", "");
  folder_.Write("locked", "");
  folder_.Write(".dot", "");
  folder_.MakeFolder("folder");
  folder_.MakeFolder(".dotfolder");
  MarkHidden(folder_.Native(".dot"));
  MarkHidden(folder_.Native(".dotfolder"));
  Permit("locked", fs::perms(0444));
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

TEST_F(FilesTest, RemovingAFileRefusesReadOnlyOnesAndFolders) {
  folder_.Write("f", "");
  folder_.Write("locked", "");
  folder_.MakeFolder("folder");
  Permit("locked", fs::perms(0444));
  os::RemoveFile(folder_.Path("F"));
  EXPECT_FALSE(folder_.Exists("f"));
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("locked")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("folder")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFile(folder_.Path("f")); }), kFileNotFound);
  EXPECT_TRUE(folder_.Exists("locked"));
}

TEST_F(FilesTest, FolderMustBeEmptyToGo) {
  folder_.Write("full/f", "");
  folder_.MakeFolder("empty");
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("full")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::RemoveFolder(folder_.Path("none")); }), kFileNotFound);
  EXPECT_NE(NumberOf([&] { os::RemoveFolder(folder_.Path("full\\f")); }), 0);
  os::RemoveFolder(folder_.Path("empty\\"));
  EXPECT_FALSE(folder_.Exists("empty"));
  EXPECT_TRUE(folder_.Exists("full/f"));
}

// --- Renaming and copying --------------------------------------------------------------------------------

TEST_F(FilesTest, OnlyAPlainFileThatMayBeWrittenIsTriedToBeRemoved) {
  folder_.Write("plain", "abc");
  folder_.Write("readonly", "abc");
  Permit("readonly", fs::perms(0444));
  folder_.MakeFolder("folder");
  EXPECT_TRUE(os::TryRemovePlainFile(folder_.Path("plain")));
  for (const char* name : {"plain", "readonly", "folder", "none\\none"})
    EXPECT_FALSE(os::TryRemovePlainFile(folder_.Path(name))) << name;
  EXPECT_FALSE(os::TryRemovePlainFile(""));
  EXPECT_THAT(os::ListNames(folder_.Path(), "*", os::kDirectory), ElementsAre("folder", "readonly"));
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

TEST_F(FilesTest, CopyRefusesReadOnlyTargetsAndItself) {
  folder_.Write("f", "abc");
  folder_.Write("locked", "old");
  Permit("locked", fs::perms(0444));
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("locked")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path("F")); }), kPathAccess);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("none"), folder_.Path("g")); }), kFileNotFound);
  EXPECT_EQ(NumberOf([&] { os::Copy(folder_.Path("f"), folder_.Path()); }), kPathAccess);
  EXPECT_EQ(folder_.Read("locked"), "old");
  EXPECT_EQ(folder_.Read("f"), "abc");
  EXPECT_FALSE(folder_.Exists("g"));
}

}  // namespace
}  // namespace vorlent
