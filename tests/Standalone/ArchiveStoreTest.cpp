#include "Standalone/ArchiveStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Failure.h"
#include "Standalone/MemoryFolder.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ItemRecord RecordOf(std::string_view text) {
  ItemRecord record;
  record.Import(text);
  return record;
}

class ArchiveStoreTest : public ::testing::Test {
 protected:
  MemoryFolder folder_;
  std::string path_ = folder_.Path("archive.sqlite");
};

TEST_F(ArchiveStoreTest, AnItemThatIsReadHasNothingOfTheOneReadBefore) {
  ArchiveStore store(path_);
  const std::int64_t full =
      store.Insert(RecordOf("ID=1|Text=a|DataTo=b|DataFile=lines"), 7, {{"File", "mail.eml", true}});
  const std::int64_t plain = store.Insert(RecordOf("ID=2"), 8, {});
  StoredItem item;
  ASSERT_TRUE(store.Read(full, item));
  EXPECT_EQ(item.record.Value("Text"), "a");
  ASSERT_EQ(item.files.size(), 1u);
  EXPECT_TRUE(item.files.front().missing);
  ASSERT_TRUE(store.Read(plain, item));
  EXPECT_EQ(item.number, plain);
  EXPECT_EQ(item.record.Text(), "ID=2");
  EXPECT_THAT(item.files, IsEmpty());
  ASSERT_TRUE(store.Read(full, item));
  EXPECT_FALSE(store.Read(plain + 1, item));
  EXPECT_EQ(item.number, 0);
  EXPECT_EQ(item.record.Text(), "");
  EXPECT_THAT(item.files, IsEmpty());
}

TEST_F(ArchiveStoreTest, ADamagedNameOfAFileLeadsToNoOtherFolder) {
  ArchiveStore store(path_);
  const std::int64_t number =
      store.Insert(RecordOf("ID=1"), 7, {{"File", "..\\..\\a", false}, {"FileHTML", "b/../c", false}});
  StoredItem item;
  ASSERT_TRUE(store.Read(number, item));
  ASSERT_EQ(item.files.size(), 2u);
  EXPECT_EQ(item.files[0].name, ".._.._a");
  EXPECT_EQ(item.files[1].name, "b_.._c");
  ASSERT_EQ(store.FilesOf(number, number).size(), 2u);
  EXPECT_EQ(store.FilesOf(number, number)[0].file.name, ".._.._a");
}

TEST_F(ArchiveStoreTest, AStoreThatIsLookedAtStaysAsItIs) {
  {
    ArchiveStore store(path_);
    store.Insert(RecordOf("ID=1|Text=a"), 7, {{"File", "mail.eml", false}});
  }
  const std::string before = folder_.Read("archive.sqlite");
  ArchiveStore store(path_, ArchiveStore::Access::Look);
  EXPECT_THAT(store.NumbersOf("1", 7), ElementsAre(1));
  EXPECT_THAT(store.NumbersOf("1", 8), IsEmpty());
  EXPECT_THROW(store.Insert(RecordOf("ID=2"), 7, {}), Failure);
  EXPECT_FALSE(folder_.Exists("archive.sqlite-wal"));
  EXPECT_FALSE(folder_.Exists("archive.sqlite-shm"));
  EXPECT_EQ(folder_.Read("archive.sqlite"), before);
}

TEST_F(ArchiveStoreTest, APathWithCharactersThatMeanSomethingInAnAddressIsFound) {
  folder_.MakeFolder("100% #1");
  const std::string path = folder_.Path("100% #1\\archive.sqlite");
  { ArchiveStore(path).SetSetting("key", "value"); }
  EXPECT_EQ(ArchiveStore(path, ArchiveStore::Access::Look).Setting("key"), "value");
}

TEST_F(ArchiveStoreTest, WhatIsNotThereIsNotMadeByLooking) {
  EXPECT_THROW(ArchiveStore(path_, ArchiveStore::Access::Look), Failure);
  EXPECT_FALSE(folder_.Exists("archive.sqlite"));
}

}  // namespace
}  // namespace vorlent
