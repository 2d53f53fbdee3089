#include "Standalone/ArchivePortion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Platform/Failure.h"
#include "Standalone/ArchiveContent.h"
#include "Standalone/MemoryFolder.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ArchivePortionTest : public ::testing::Test {
 protected:
  // An item with a file, which is moved in.
  static std::int64_t Add(ArchiveStore& store, ArchiveFiles& files, const std::string& source) {
    ItemRecord record;
    record.Import("ID=1");
    const std::int64_t number = store.Insert(record, 7, {{"File", "mail.eml", false}});
    files.Take(source, number, "mail.eml", true, ArchiveFiles::Safe::AfterSync);
    return number;
  }
  std::string Source() { return folder_.Write("temp\\mail.eml", "abc"); }
  // The end of the path that is synced for the files: a system with drives syncs each of them.
  std::string SyncOfFiles() const { return folder_.Native().has_root_name() ? "mail.eml" : "files"; }

  MemoryFolder folder_;
  std::string path_ = folder_.Path("archive.sqlite");
  ArchiveFiles files_{folder_.Path("files\\")};
};

TEST_F(ArchivePortionTest, WhatIsDurableIsThereAfterwards) {
  {
    ArchiveStore store(path_);
    ArchivePortion portion(store.Database(), files_);
    Add(store, files_, Source());
    EXPECT_THAT(store.AllNumbers(), SizeIs(1));
    portion.MakeDurable();
  }
  EXPECT_THAT(ArchiveStore(path_).AllNumbers(), SizeIs(1));
  EXPECT_TRUE(files_.Exists(1, "mail.eml"));
}

TEST_F(ArchivePortionTest, WhatIsDroppedHasNoRows) {
  ArchiveStore store(path_);
  {
    ArchivePortion portion(store.Database(), files_);
    Add(store, files_, Source());
    portion.Note();
  }
  EXPECT_THAT(store.AllNumbers(), IsEmpty());
  EXPECT_THAT(store.FilesOf(0, 1000), IsEmpty());
  EXPECT_FALSE(store.Database().InTransaction());
}

TEST_F(ArchivePortionTest, FilesAreSafeBeforeTheRowsThatTellOfThem) {
  ArchiveStore store(path_);
  ArchivePortion portion(store.Database(), files_);
  Add(store, files_, Source());
  std::vector<std::string> synced;
  const DiskWatch watch(DiskCall::Sync, [&](DiskCall, const std::string& path) { synced.push_back(path); });
  portion.MakeDurable();
  ASSERT_GE(synced.size(), 2u);
  EXPECT_THAT(synced.front(), EndsWith(SyncOfFiles()));
  EXPECT_THAT(synced.back(), EndsWith("archive.sqlite-wal"));
}

TEST_F(ArchivePortionTest, WhatCanNotBeMadeDurableIsDroppedForGood) {
  for (const std::string& failing : {SyncOfFiles(), std::string("archive.sqlite-wal")}) {
    ArchiveStore store(path_);
    ArchivePortion portion(store.Database(), files_);
    const std::int64_t number = Add(store, files_, Source());
    const DiskFault fault({.calls = DiskCall::Sync, .pathEnd = failing});
    std::vector<std::string> reasons;
    for (int attempt = 0; attempt < 2; ++attempt) {
      try {
        portion.MakeDurable();
      } catch (const Failure& failure) {
        reasons.emplace_back(failure.what());
      }
      EXPECT_THAT(store.AllNumbers(), IsEmpty()) << failing;
    }
    EXPECT_TRUE(fault.WasReached());
    ASSERT_THAT(reasons, SizeIs(2));
    EXPECT_EQ(reasons.back(), reasons.front());
    files_.Remove(number, "mail.eml");
  }
}

TEST_F(ArchivePortionTest, ManyItemsFillIt) {
  ArchiveStore store(path_);
  ArchivePortion portion(store.Database(), files_);
  int items = 0;
  for (; !portion.IsFull() && items < 100'000; ++items)
    portion.Note();
  EXPECT_GT(items, 100);
  EXPECT_LT(items, 100'000);
}

TEST_F(ArchivePortionTest, ADroppedOneIsPutInOrderAtTheNextOpening) {
  const std::string folder = folder_.Path() + "\\";
  for (const bool dropped : {true, false}) {
    {
      ArchiveContent content(folder);
      content.BeginPortion();
      Add(content.Store(), content.Files(), Source());
      if (!dropped) content.Finish();
    }
    ArchiveContent content(folder);
    EXPECT_EQ(content.Count(), dropped ? 0 : 1);
    EXPECT_THAT(content.Files().NamesIn(0), SizeIs(dropped ? 0 : 1));
  }
}

TEST_F(ArchivePortionTest, ItemsOfAFailedOneAreNoLongerCounted) {
  ArchiveContent content(folder_.Path() + "\\");
  content.BeginPortion();
  EXPECT_EQ(content.Count(), 0);
  ItemRecord record;
  record.Import("ID=1");
  content.Insert(record, 7, {});
  EXPECT_EQ(content.Count(), 1);
  {
    const DiskFault fault({.calls = DiskCall::Sync});
    EXPECT_THROW(content.EndPortion(), Failure);
  }
  EXPECT_EQ(content.Count(), 0);
  EXPECT_THROW(content.Finish(), Failure);
}

TEST_F(ArchivePortionTest, APortionThatBeginsEndsTheOneBefore) {
  const std::string folder = folder_.Path() + "\\";
  {
    ArchiveContent content(folder);
    content.BeginPortion();
    Add(content.Store(), content.Files(), Source());
    content.BeginPortion();
    Add(content.Store(), content.Files(), Source());
  }
  ArchiveContent content(folder);
  EXPECT_EQ(content.Count(), 1);
  EXPECT_THAT(content.Files().NamesIn(0), SizeIs(1));
}

}  // namespace
}  // namespace vorlent
