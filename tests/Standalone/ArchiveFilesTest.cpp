#include "Standalone/ArchiveFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Standalone/MemoryFolder.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;

class ArchiveFilesTest : public ::testing::Test {
 protected:
  MemoryFolder folder_;
  ArchiveFiles files_{folder_.Path("files\\")};
};

TEST_F(ArchiveFilesTest, FoldersOfAtLeastSixDigitsAreItsOwn) {
  for (const std::string name : {"000000", "000012", "123456", "1234567"})
    folder_.MakeFolder("files\\" + name);
  for (const std::string name : {"12", "00012", "0000012", "-00001", "+00001", "000012x", "x00012", "0x0012",
                                 "92233720368547758", "99999999999999999999", "notes"})
    folder_.MakeFolder("files\\" + name);
  folder_.Write("files\\000013", "a file");
  EXPECT_THAT(files_.FolderNumbers(), ElementsAre(0, 12, 123456, 1234567));
}

TEST_F(ArchiveFilesTest, ItsNamesStandInEveryFileSystem) {
  struct Row {
    std::string name;
    std::string own;
  };
  for (const Row& row :
       {Row{"mail.eml", "mail.eml"}, Row{"..", "unnamed"}, Row{"", "unnamed"}, Row{" ", "unnamed"},
        Row{"CON", "_CON"}, Row{"abc. ", "abc"}, Row{"a%252Fb?.txt", "a_b_.txt"},
        Row{"%25D0%25B6.pdf", "_.pdf"}, Row{std::string("Gr\xFC\xDF") + "e.txt", "Gr_e.txt"},
        Row{"Grüße.txt", "Gr_e.txt"}, Row{std::string(300, 'x') + ".pdf", std::string(96, 'x') + ".pdf"}})
    EXPECT_EQ(ArchiveFiles::OwnName(row.name), row.own);
}

TEST_F(ArchiveFilesTest, ACopyOnItsWayTakesNoOthersPlace) {
  const std::string first = folder_.Write("temp\\1", "first");
  const std::string second = folder_.Write("temp\\2", "second");
  for (const std::string suffix : {".part", " part", "part"}) {
    const std::string name = ArchiveFiles::OwnName("a" + suffix);
    files_.Take(first, 7, name, false);
    files_.Take(second, 7, "a", false);
    EXPECT_EQ(folder_.Read("files\\000000\\7 " + name), "first");
    EXPECT_EQ(folder_.Read("files\\000000\\7 a"), "second");
    files_.Remove(7, "a");
    files_.Remove(7, name);
  }
  EXPECT_NE(ArchiveFiles::OwnName(" part"), " part");
}

TEST_F(ArchiveFilesTest, AFolderIsNoFile) {
  folder_.Write("temp\\inner\\a.txt", "abc");
  for (const ArchiveFiles::Safe safe : {ArchiveFiles::Safe::AtOnce, ArchiveFiles::Safe::AfterSync}) {
    for (const std::string path : {"temp", "temp\\", "temp\\inner\\..", "temp\\."}) {
      for (const bool move : {false, true}) {
        try {
          files_.Take(folder_.Path(path), 1, "a", move, safe);
          FAIL() << path << " was taken";
        } catch (const Failure& failure) {
          EXPECT_TRUE(failure.Is(ErrorNumber::PathAccess)) << failure.what();
        }
      }
    }
  }
  EXPECT_EQ(folder_.Read("temp\\inner\\a.txt"), "abc");
  EXPECT_FALSE(files_.Exists(1, "a"));
}

// --- What becomes safe when

TEST_F(ArchiveFilesTest, MovedFilesAreSafeAtOnceOrAllTogether) {
  const auto move = [&](std::int64_t item, ArchiveFiles::Safe safe) {
    files_.Take(folder_.Write("temp\\a", "abc"), item, "a", true, safe);
  };
  move(1, ArchiveFiles::Safe::AtOnce);  // and makes the folder
  const DiskCallCount syncs(DiskCall::Sync);
  move(2, ArchiveFiles::Safe::AtOnce);
  EXPECT_EQ(syncs.Count(), 2) << "the file and its folder";
  for (std::int64_t item = 3; item < 10; ++item)
    move(item, ArchiveFiles::Safe::AfterSync);
  EXPECT_EQ(syncs.Count(), 2);
  files_.Remove(9, "a");
  files_.SyncAll();
  // A system with drives syncs files one by one, each by a second handle that may write, and folders never.
  const bool hasDrives = folder_.Native().has_root_name();
  EXPECT_EQ(syncs.Count(), 2 + (hasDrives ? 6 * 2 : 1));
  move(11, ArchiveFiles::Safe::AfterSync);
  files_.SyncAll();
  EXPECT_EQ(syncs.Count(), 2 + (hasDrives ? 7 * 2 : 2)) << "none is synced again";
}

TEST_F(ArchiveFilesTest, CopiedFileIsSafeBeforeItHasItsName) {
  const DiskCallCount syncs(DiskCall::Sync, " part");
  files_.Take(folder_.Write("temp\\a", "abc"), 1, "a", false);
  EXPECT_GE(syncs.Count(), 1);
}

TEST_F(ArchiveFilesTest, AFileThatCanNotBeMadeSafeStaysAtItsSource) {
  const std::string source = folder_.Write("temp\\a", "abc");
  {
    const DiskFault fault({.calls = DiskCall::Sync, .pathEnd = "temp/a"});
    EXPECT_THROW(files_.Take(source, 1, "a", true), Failure);
    EXPECT_TRUE(fault.WasReached());
  }
  EXPECT_EQ(folder_.Read("temp\\a"), "abc");
  EXPECT_FALSE(files_.Exists(1, "a"));
  files_.Take(source, 1, "a", true);
  EXPECT_EQ(folder_.Read("files\\000000\\1 a"), "abc");
}

TEST_F(ArchiveFilesTest, AFullDiskLeavesTheSourceAndAWholeFileOrNone) {
  const std::string bytes(100'000, 'x');
  const std::string source = folder_.Write("temp\\a", bytes);
  bool reached = true;
  std::int64_t item = 0;
  for (long number = 0; reached; ++number) {
    ++item;
    {
      const DiskFault fault(
          {.calls = kTakingSpace, .number = number, .trouble = DiskTrouble::FromHere, .error = ENOSPC});
      const bool worked = Swallow([&] { files_.Take(source, item, "a", false); });
      reached = fault.WasReached();
      EXPECT_EQ(worked, !reached);
    }
    EXPECT_EQ(folder_.Read("temp\\a"), bytes);
    if (files_.Exists(item, "a")) {
      EXPECT_EQ(ReadBytes(files_.PathOf(item, "a")), bytes);
    }
  }
  EXPECT_GT(item, 3) << "a folder, writes, a sync and a new name";
  EXPECT_TRUE(files_.Exists(item, "a"));
}

TEST_F(ArchiveFilesTest, APlaceThatIsTakenStaysAsItIs) {
  files_.Take(folder_.Write("temp\\old", "old"), 1, "a", true);
  for (const bool move : {false, true}) {
    const std::string source = folder_.Write("temp\\new", "new");
    try {
      files_.Take(source, 1, "a", move);
      FAIL() << "was taken";
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.Is(ErrorNumber::FileExists)) << failure.what();
    }
    EXPECT_EQ(folder_.Read("temp\\new"), "new");
    EXPECT_EQ(folder_.Read("files\\000000\\1 a"), "old");
  }
}

TEST_F(ArchiveFilesTest, AReadOnlyFileGoesToo) {
  const std::string source = folder_.Write("temp\\a", "abc");
  std::filesystem::permissions(folder_.Native("temp\\a"), std::filesystem::perms::owner_read);
  files_.Take(source, 1, "a", false);
  ArchiveFiles::RemoveSource(source);
  EXPECT_FALSE(folder_.Exists("temp\\a"));
  files_.Remove(1, "a");
  EXPECT_FALSE(files_.Exists(1, "a"));
}

}  // namespace
}  // namespace vorlent
