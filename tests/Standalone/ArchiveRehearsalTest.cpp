#include "Standalone/ArchiveRehearsal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Standalone/Archive.h"
#include "Standalone/MemoryFolder.h"

namespace vorlent {
namespace {

class ArchiveRehearsalTest : public ::testing::Test {
 protected:
  // What an import does with a mail, in the archive or in what stands in for it. Whether it was there.
  bool Import(Location& location, const std::string& id, const std::string& bytes) {
    const std::string path = folder_.Write("temp/mail.eml", bytes);
    const auto item = AsStandalone(
        location.PasteRecord("ID=" + id + "|DataFile=" + EscapeValue(path + "\nfile=mail.eml") + "|Log=1"));
    item->SetConnected(false);
    item->TakeFile("File", path, "move|nofileattribute", "file=mail.eml");
    item->SetConnected(true);
    EXPECT_FALSE(folder_.Exists("temp/mail.eml"));
    return item->WasThere();
  }

  ArchivePtr Open() {
    auto archive = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    archive->Open(folder_.Path("archive"));
    return archive;
  }

  std::shared_ptr<ArchiveRehearsal> Rehearse() {
    return std::make_shared<ArchiveRehearsal>(std::weak_ptr<StandaloneGlobal>(), folder_.Path("archive"));
  }

  // The bytes of all files of the archive.
  std::map<std::string, std::string> Bytes() {
    std::map<std::string, std::string> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Native("archive"))) {
      const std::string name = std::filesystem::relative(entry.path(), folder_.Native()).string();
      all[name] = entry.is_regular_file() ? folder_.Read(name) : "";
    }
    return all;
  }

  MemoryFolder folder_;
};

TEST_F(ArchiveRehearsalTest, WithoutAnArchiveNothingIsThereAndNothingIsMade) {
  const auto rehearsal = Rehearse();
  EXPECT_TRUE(rehearsal->KnowsArchive());
  EXPECT_FALSE(Import(*rehearsal, "1", "a"));
  EXPECT_FALSE(Import(*rehearsal, "1", "b"));
  EXPECT_FALSE(Import(*rehearsal, "2", "a"));
  EXPECT_TRUE(Import(*rehearsal, "1", "a")) << "a second copy of one mail";
  EXPECT_FALSE(folder_.Exists("archive"));
}

TEST_F(ArchiveRehearsalTest, TellsWhatTheArchiveWouldTell) {
  const ArchivePtr archive = Open();
  for (const std::string bytes : {"a", "b"})
    EXPECT_FALSE(Import(*archive, "1", bytes));
  Import(*archive, "lost", "x");
  archive->Close();
  std::filesystem::remove(folder_.Native("archive/files/000000/3 mail.eml"));
  const auto before = Bytes();
  {
    const auto rehearsal = Rehearse();
    EXPECT_TRUE(rehearsal->KnowsArchive());
    EXPECT_TRUE(Import(*rehearsal, "1", "b"));
    EXPECT_TRUE(Import(*rehearsal, "1", "a"));
    EXPECT_FALSE(Import(*rehearsal, "1", "c"));
    EXPECT_FALSE(Import(*rehearsal, "2", "a"));
    EXPECT_FALSE(Import(*rehearsal, "lost", "x"));
  }
  EXPECT_EQ(Bytes(), before);
}

TEST_F(ArchiveRehearsalTest, AnArchiveThatIsOpenIsNotKnown) {
  const ArchivePtr archive = Open();
  Import(*archive, "1", "a");
  const auto rehearsal = Rehearse();
  EXPECT_FALSE(rehearsal->KnowsArchive());
  EXPECT_FALSE(Import(*rehearsal, "1", "a"));
  EXPECT_EQ(archive->ItemCount(), 1);
}

TEST_F(ArchiveRehearsalTest, AFileThatIsMissingRaisesAsInTheArchive) {
  const auto item = Rehearse()->PasteRecord("ID=1");
  EXPECT_THROW(item->TakeFile("File", folder_.Path("none"), "move", ""), Failure);
  EXPECT_THROW(item->TakeFile("File", folder_.Path(), "move", ""), Failure);
}

}  // namespace
}  // namespace vorlent
