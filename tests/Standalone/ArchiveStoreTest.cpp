#include "Standalone/ArchiveStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "Platform/Failure.h"
#include "Standalone/Fingerprint.h"
#include "Standalone/MemoryFolder.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

ItemRecord RecordOf(std::string_view text) {
  ItemRecord record;
  record.Import(text);
  return record;
}

class ArchiveStoreTest : public ::testing::Test {
 protected:
  // Lets each write of the step's fail in turn, looks after each, and at last lets the step do its work.
  static void FailAtEachWrite(const std::function<void()>& step, const std::function<void()>& look) {
    long failed = 0;
    for (bool reached = true; reached; ++failed) {
      const DiskFault fault({.calls = kTakingSpace,
                             .number = failed,
                             .trouble = DiskTrouble::Once,
                             .error = ENOSPC,
                             .pathEnd = "archive.sqlite-wal"});
      const bool worked = Swallow(step);
      reached = fault.WasReached();
      EXPECT_EQ(worked, !reached);
      if (reached) look();
    }
    EXPECT_GT(failed, 1);
  }

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

TEST_F(ArchiveStoreTest, AnItemThatCanNotBeAddedLeavesNothing) {
  ArchiveStore store(path_);
  FailAtEachWrite(
      [&] {
        store.Insert(RecordOf("ID=1|Text=a"), 7, {{"File", "mail.eml", true}});
      },
      [&] {
        EXPECT_THAT(store.AllNumbers(), IsEmpty());
        EXPECT_THAT(store.FilesOf(0, 1000), IsEmpty());
        EXPECT_THAT(store.IncompleteNumbers(), IsEmpty());
      });
  EXPECT_EQ(store.AllNumbers().size(), 1u);
  EXPECT_EQ(store.FilesOf(0, 1000).size(), 1u);
}

TEST_F(ArchiveStoreTest, AnItemThatCanNotBeChangedOrRemovedStaysAsItIs) {
  ArchiveStore store(path_);
  const std::int64_t number = store.Insert(RecordOf("ID=1|Text=a"), 7, {{"File", "mail.eml", false}});
  const auto expectAsItWas = [&] {
    StoredItem item;
    ASSERT_TRUE(store.Read(number, item));
    EXPECT_EQ(item.record.Text(), "ID=1|Text=a");
    ASSERT_EQ(item.files.size(), 1u);
    EXPECT_EQ(item.files.front().name, "mail.eml");
  };
  FailAtEachWrite(
      [&] {
        store.Update(number, RecordOf("ID=1|Text=b"), {{"File", "b", false}, {"FileHTML", "c", false}});
      },
      expectAsItWas);
  StoredItem changed;
  ASSERT_TRUE(store.Read(number, changed));
  EXPECT_EQ(changed.record.Text(), "ID=1|Text=b");
  EXPECT_EQ(changed.files.size(), 2u);
  FailAtEachWrite([&] { store.Remove(number); },
                  [&] { EXPECT_EQ(store.FilesOf(number, number).size(), 2u); });
  EXPECT_FALSE(store.Read(number, changed));
  EXPECT_THAT(store.FilesOf(number, number), IsEmpty());
}

TEST_F(ArchiveStoreTest, AnItemThatIsGoneGetsNoFiles) {
  ArchiveStore store(path_);
  const std::int64_t number = store.Insert(RecordOf("ID=1"), 7, {});
  store.Remove(number);
  try {
    store.Update(number, RecordOf("ID=1"), {{"File", "mail.eml", false}});
    FAIL() << "was changed";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::ObjectNotSet));
  }
  EXPECT_THAT(store.FilesOf(number, number), IsEmpty());
}

TEST_F(ArchiveStoreTest, NumbersAreNeverUsedAgain) {
  ArchiveStore store(path_);
  EXPECT_EQ(store.HighestNumber(), 0);
  const std::int64_t first = store.Insert(RecordOf("ID=1"), 7, {});
  const std::int64_t second = store.Insert(RecordOf("ID=2"), 7, {});
  store.Remove(second);
  EXPECT_EQ(store.HighestNumber(), first);
  EXPECT_GT(store.Insert(RecordOf("ID=3"), 7, {}), second);
}

TEST_F(ArchiveStoreTest, WhatIsMissingIsKnownUntilItComes) {
  ArchiveStore store(path_);
  const std::int64_t number =
      store.Insert(RecordOf("ID=1"), 7, {{"File", "mail.eml", false}, {"FileHTML", "mail.html", true}});
  EXPECT_THAT(store.IncompleteNumbers(), ElementsAre(number));
  store.MarkMissing(number, "File", true);
  EXPECT_THAT(store.IncompleteNumbers(), ElementsAre(number));
  for (const std::string key : {"File", "FileHTML"})
    store.MarkMissing(number, key, false);
  EXPECT_THAT(store.IncompleteNumbers(), IsEmpty());
}

TEST_F(ArchiveStoreTest, SettingsAndStatesComeBackAndAreEmptyBefore) {
  {
    ArchiveStore store(path_);
    EXPECT_EQ(store.Setting("K\xE4se"), "");
    EXPECT_EQ(store.State("open"), 0);
    for (const std::string value : {"a", "Br\xF6t\n\\"})
      store.SetSetting("K\xE4se", value);
    store.SetState("open", 1);
    store.SetState("open", 1'000'000'000'000);
  }
  ArchiveStore store(path_);
  EXPECT_EQ(store.Setting("K\xE4se"), "Br\xF6t\n\\");
  EXPECT_EQ(store.State("open"), 1'000'000'000'000);
}

// The values of an item's fields after it was written by one set of rules and read by another.
std::vector<std::string> TakenAcross(const std::string& path, const Rules& writing, const Rules& reading,
                                     std::string_view record) {
  std::int64_t number = 0;
  {
    const ScopedRules rules(writing);
    number = ArchiveStore(path).Insert(RecordOf(record), 7, {{"File", "mail.eml", false}});
  }
  const ScopedRules rules(reading);
  StoredItem item;
  ArchiveStore(path).Read(number, item);
  std::vector<std::string> values;
  for (std::size_t i = 0; i < item.record.FieldCount(); ++i)
    values.push_back(std::string(item.record.FieldKey(i)) + "=" + item.record.FieldValue(i));
  return values;
}

TEST_F(ArchiveStoreTest, TextOfEveryScriptComesBackAsItWas) {
  const std::vector<std::string> fields = {"ID=Ж-1",
                                           "Text=😀 你好 مرحبا",
                                           "Keywords=Größe,e\u0301,é",
                                           "DataFrom=Ελένη 5 €",
                                           "DataTo=Ã¼ as it is",
                                           "DataЯ=Grüße"};
  std::string record;
  for (const std::string& field : fields)
    record += (record.empty() ? "" : "|") + field;
  EXPECT_THAT(TakenAcross(path_, Rules::Today(), Rules::Today(), record), UnorderedElementsAreArray(fields));
}

TEST_F(ArchiveStoreTest, ArchivesOfOneSetOfRulesAreReadByTheOther) {
  EXPECT_THAT(TakenAcross(path_, Rules::Windows(), Rules::Today(),
                          "ID=1|Text=Gr\xFC\xDF\x65 5 \x80|Keywords=\xD0\x96|DataFrom=\xFC|DataTo=\xD0\x96"),
              ElementsAre("ID=1", "Text=Grüße 5 €", "Keywords=Ж", "DataFrom=ü", "DataTo=Ж"));
  EXPECT_THAT(TakenAcross(path_, Rules::Today(), Rules::Windows(), "ID=2|Text=Grüße 5 €|Keywords=Ж 😀"),
              ElementsAre("ID=2", "Text=Gr\xFC\xDF\x65 5 \x80", "Keywords=Ж 😀"));
}

TEST_F(ArchiveStoreTest, AMailIsKnownAgainWhicheverRulesItIsReadBy) {
  const std::int64_t windows = FingerprintOf(RecordOf("ID=1|Text=Gr\xFC\xDF\x65 5 \x80|DataTo=a"));
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(FingerprintOf(RecordOf("ID=1|Text=Grüße 5 €|DataTo=a")), windows);
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
