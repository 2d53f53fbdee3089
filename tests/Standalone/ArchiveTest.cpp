#include "Standalone/Archive.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/NativePaths.h"
#include "Standalone/ArchiveRehearsal.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/Sqlite.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ArchiveTest : public ::testing::Test {
 protected:
  ArchiveTest() { Reopen(); }

  void Reopen() {
    if (archive_ != nullptr) archive_->Close();
    archive_ = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    archive_->Open(folder_.Path("archive"));
  }

  // A record field that describes a file, which is written for it.
  std::string FileField(const std::string& key, const std::string& name, std::string_view bytes) {
    const std::string path = folder_.Write("temp/" + name, bytes);
    return "|Data" + key + "=" +
           EscapeValue(path + "\nfile=" + name + "\nsize=" + std::to_string(bytes.size()));
  }

  // What the import does with a record.
  std::shared_ptr<ArchiveItem> Import(const std::string& record) {
    const auto item = std::dynamic_pointer_cast<ArchiveItem>(archive_->PasteRecord(record));
    item->SetConnected(false);
    for (std::int32_t pos = 1; pos <= item->DataCount(); ++pos) {
      const std::string key = item->DataKey(pos);
      if (!key.starts_with("File")) continue;
      std::string description = item->DataText(key);
      const std::string path = CutLine(description);
      item->TakeFile(key, path, "move|nofileattribute", description);
    }
    item->SetConnected(true);
    return item;
  }

  std::string BytesOf(const ItemPtr& item, const std::string& key) {
    return ReadBytes(item->DataFile(key, 0));
  }

  // The names of all files of the archive, relative to its folder of files.
  std::vector<std::string> StoredNames() {
    std::vector<std::string> names;
    const auto root = folder_.Native("archive/files");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (entry.is_regular_file())
        names.push_back(std::filesystem::relative(entry.path(), root).generic_string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::vector<std::string> Found(std::string_view words) {
    std::vector<std::string> ids;
    for (const auto& item : archive_->Search(words))
      ids.push_back(item->ID());
    return ids;
  }

  MemoryFolder folder_;
  ArchivePtr archive_;
};

TEST_F(ArchiveTest, ANewArchiveIsEmptyAndNamedByItsFolder) {
  EXPECT_EQ(archive_->Name(), folder_.Path("archive"));
  EXPECT_EQ(archive_->ItemCount(), 0);
  EXPECT_EQ(archive_->ItemAt(1), nullptr);
  EXPECT_EQ(archive_->FindItem("x"), nullptr);
  EXPECT_EQ(archive_->FileLocation(), folder_.Path("archive") + "\\files\\");
  EXPECT_TRUE(Archive::IsArchive(folder_.Path("archive")));
  EXPECT_FALSE(Archive::IsArchive(folder_.Path("elsewhere")));
  EXPECT_FALSE(Archive::IsArchive(""));
}

TEST_F(ArchiveTest, ClosingLeavesADatabaseAloneThatTookThePlaceOfItsOwn) {
  auto other = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
  other->Open(folder_.Path("other"));
  other->PasteRecord("ID=other|Type=mail|Log=20100510080000");
  other->Close();
  archive_->PasteRecord("ID=own|Type=mail|Log=20100510080000");
  std::filesystem::rename(folder_.Native("other/archive.sqlite"), folder_.Native("archive/archive.sqlite"));
  Reopen();
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_EQ(archive_->ItemAt(1)->ID(), "other");
}

TEST_F(ArchiveTest, AnItemComesBackWithAllItsFieldsInOrder) {
  archive_->PasteRecord(
      "ID=1-a@b|Type=mail|Text=a\\|b\\nc|Keywords=Account=x,In\\\\box|DataFrom=Gr\xFC\xDF"
      "e|DataTo=\xC3\xA4 utf8|DataZero=a" +
      std::string(1, '\0') + "b|Date=09.05.2010 14:30:05|Owner=user|Log=20100510080000|Source=s");
  Reopen();
  ASSERT_EQ(archive_->ItemCount(), 1);
  const auto item = AsStandalone(archive_->ItemAt(1));
  EXPECT_EQ(item->ID(), "1-a@b");
  EXPECT_EQ(item->Type(), "mail");
  EXPECT_EQ(item->Text(), "a|b\r\nc");
  EXPECT_EQ(item->Keywords(), "Account=x,In\\box");
  EXPECT_EQ(item->DataCount(), 3);
  EXPECT_EQ(item->DataKey(1), "From");
  EXPECT_EQ(item->DataText("From"),
            "Gr\xFC\xDF"
            "e");
  EXPECT_EQ(item->DataText("To"), "\xC3\xA4 utf8");
  EXPECT_EQ(item->DataText("Zero"), std::string("a\0b", 3));
  EXPECT_EQ(item->Date(), "09.05.2010 14:30:05");
  EXPECT_EQ(item->Owner(), "user");
  EXPECT_EQ(item->Log(), "20100510080000");
  EXPECT_EQ(item->Source(), "s");
  EXPECT_TRUE(item->IsConnected());
  EXPECT_EQ(item->Address(), folder_.Path("archive") + "#1-a@b");
}

TEST_F(ArchiveTest, EveryByteOfTheCodePageComesBack) {
  std::string all;
  for (int c = 1; c < 256; ++c)
    all += static_cast<char>(c);
  archive_->PasteRecord("ID=1|DataAll=" + EscapeValue(all));
  Reopen();
  std::string expected = all;
  expected.erase(expected.find('\r'), 1);
  ReplaceText(expected, "\n", "\r\n");
  EXPECT_EQ(archive_->ItemAt(1)->DataText("All"), expected);
}

TEST_F(ArchiveTest, ARecordWithoutAnIDGetsOne) {
  const std::string id = archive_->PasteRecord("Type=url|Text=x")->ID();
  EXPECT_EQ(id.size(), 38u);
  EXPECT_NE(archive_->FindItem(id), nullptr);
}

TEST_F(ArchiveTest, FilesMoveInAndAreFoundAgain) {
  const auto item = Import("ID=1|Type=mail" + FileField("File", "mail.eml", "From - \r\n\r\nHallo\r\n") +
                           FileField("FileAttach1", "Beleg.pdf", "%PDF"));
  EXPECT_FALSE(folder_.Exists("temp/mail.eml"));
  EXPECT_FALSE(folder_.Exists("temp/Beleg.pdf"));
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 Beleg.pdf", "000000/1 mail.eml"));
  for (int round = 0; round < 2; ++round) {
    const ItemPtr found = archive_->FindItem("1");
    EXPECT_EQ(BytesOf(found, "File"), "From - \r\n\r\nHallo\r\n");
    EXPECT_EQ(BytesOf(found, "FileAttach1"), "%PDF");
    EXPECT_EQ(found->DataText("FileAttach1"),
              found->DataFile("FileAttach1", 0) + "\r\nfile=Beleg.pdf\r\nsize=4");
    EXPECT_EQ(found->DataFile("FileAttach1", 1), "");
    EXPECT_EQ(found->DataFile("FileAttach2", 0), "");
    EXPECT_EQ(found->FullText(), "\r\nmail.eml\r\nBeleg.pdf");
    Reopen();
  }
}

TEST_F(ArchiveTest, WithoutMoveTheSourceStays) {
  const std::string path = folder_.Write("temp/a.txt", "abc");
  const ItemPtr item = archive_->PasteRecord("ID=1");
  item->TakeFile("FileAttach1", path, "copy", "file=a.txt");
  EXPECT_TRUE(folder_.Exists("temp/a.txt"));
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "abc");
  Reopen();
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "FileAttach1"), "abc");
  EXPECT_EQ(archive_->ItemAt(1)->DataText("FileAttach1"),
            archive_->ItemAt(1)->DataFile("FileAttach1", 0) + "\r\nfile=a.txt");
}

TEST_F(ArchiveTest, LinesThatComeWithTheFilesAreKept) {
  const std::string files =
      FileField("FileAttach1", "a.txt", "abc") + FileField("FileAttach2", "b.txt", "de");
  const ItemPtr item = archive_->PasteRecord("ID=1" + files);
  item->SetConnected(false);
  item->TakeFile("FileAttach1", folder_.Path("temp\\a.txt"), "move",
                 "file=a.txt\r\nsize=3\r\ntype=text/plain");
  item->TakeFile("FileAttach2", folder_.Path("temp\\b.txt"), "move", "file=b.txt\r\nsize=2");
  item->SetConnected(true);
  item->TakeFile("FileAttach2", folder_.Write("temp/c.txt", "f"), "move", "file=c.txt");
  Reopen();
  const ItemPtr stored = archive_->ItemAt(1);
  EXPECT_EQ(stored->DataText("FileAttach1"),
            stored->DataFile("FileAttach1", 0) + "\r\nfile=a.txt\r\nsize=3\r\ntype=text/plain");
  EXPECT_EQ(stored->DataText("FileAttach2"), stored->DataFile("FileAttach2", 0) + "\r\nfile=c.txt");
  EXPECT_EQ(BytesOf(stored, "FileAttach2"), "f");
}

TEST_F(ArchiveTest, AFileFromAnotherFileSystemIsTakenToo) {
  const std::filesystem::path place = std::filesystem::current_path() / "archive-test-source.txt";
  std::filesystem::remove(place);
  const std::string path = os::ToWindowsPath(place.string());
  WriteBytes(path, "abc");
  std::filesystem::permissions(place, std::filesystem::perms::owner_read);
  const ItemPtr item = archive_->PasteRecord("ID=1");
  item->TakeFile("FileAttach1", path, "move", "file=a.txt");
  EXPECT_FALSE(std::filesystem::exists(place));
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "abc");
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 archive-test-source.txt"));
}

TEST_F(ArchiveTest, TwoDescriptionsOfOneFileShareIt) {
  const std::string field = FileField("FileAttach1", "a.txt", "abc");
  std::string second = field;
  ReplaceText(second, "FileAttach1", "FileAttach2");
  const auto item = Import("ID=1" + field + second);
  EXPECT_EQ(item->DataFile("FileAttach1", 0), item->DataFile("FileAttach2", 0));
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 a.txt"));
  Reopen();
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "FileAttach2"), "abc");
}

TEST_F(ArchiveTest, FilesOfOneNameFromTwoPlacesAreKeptApart) {
  const auto item =
      Import("ID=1" + FileField("FileAttach1", "a.txt", "1") + FileField("FileAttach2", "sub/A.TXT", "2"));
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "1");
  EXPECT_EQ(BytesOf(item, "FileAttach2"), "2");
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 (2) A.TXT", "000000/1 a.txt"));
}

TEST_F(ArchiveTest, AFileTakenAnewReplacesTheOld) {
  const auto item = Import("ID=1" + FileField("File", "mail.eml", "old"));
  item->TakeFile("File", folder_.Write("temp/mail.eml", "new"), "move", "file=mail.eml");
  EXPECT_EQ(BytesOf(item, "File"), "new");
  EXPECT_EQ(StoredNames().size(), 1u);
  Reopen();
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "new");
}

TEST_F(ArchiveTest, AReplacedFileThatIsSharedStays) {
  const std::string field = FileField("FileAttach1", "a.txt", "abc");
  std::string second = field;
  ReplaceText(second, "FileAttach1", "FileAttach2");
  const auto item = Import("ID=1" + field + second);
  item->TakeFile("FileAttach1", folder_.Write("temp/b.txt", "new"), "move", "file=b.txt");
  EXPECT_FALSE(folder_.Exists("temp/b.txt"));
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "new");
  EXPECT_EQ(BytesOf(item, "FileAttach2"), "abc");
}

TEST_F(ArchiveTest, AFileThatCantBeReplacedStays) {
  const auto item = Import("ID=1" + FileField("File", "mail.eml", "old"));
  EXPECT_THROW(item->TakeFile("File", folder_.Path("temp\\none"), "move", ""), Failure);
  EXPECT_EQ(BytesOf(item, "File"), "old");
  Reopen();
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "old");
  EXPECT_THAT(archive_->IncompleteItems(), IsEmpty());
}

TEST_F(ArchiveTest, OddAndLongNamesFindAPlace) {
  const std::string longName = std::string(230, 'x') + ".pdf";
  const auto item = Import("ID=1" + FileField("FileAttach1", longName, "long") +
                           FileField("FileAttach2", "a%2520b \xE4.txt", "odd"));
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "long");
  EXPECT_EQ(BytesOf(item, "FileAttach2"), "odd");
  EXPECT_TRUE(item->DataFile("FileAttach1", 0).ends_with(".pdf"));
}

TEST_F(ArchiveTest, AFileThatLiesElsewhereThanToldIsCalledAsItWasTold) {
  const std::string longName(300, 'n');
  std::string record = "ID=1";
  for (const std::string& told :
       {std::string("temp\\.."), std::string("temp\\.."), "temp\\" + longName + ".txt"}) {
    const std::string key =
        "DataFileAttach" + std::to_string(std::count(record.begin(), record.end(), '|') + 1);
    record += "|" + key + "=" + EscapeValue(folder_.Path(told) + "\nfile=true name");
  }
  const ItemPtr item = archive_->PasteRecord(record);
  for (const std::string number : {"1", "2", "3"}) {
    item->TakeFile("FileAttach" + number, folder_.Write("temp\\att" + number, number), "move",
                   "file=true name");
  }
  item->SetConnected(true);
  for (int round = 0; round < 2; ++round) {
    for (const std::string number : {"1", "2", "3"}) {
      EXPECT_EQ(BytesOf(archive_->ItemAt(1), "FileAttach" + number), number);
      EXPECT_EQ(GetLineValue(archive_->ItemAt(1)->DataText("FileAttach" + number), "file"), "true name");
    }
    EXPECT_THAT(StoredNames(), ElementsAre("000000/1 (2) unnamed",
                                           "000000/1 " + std::string(96, 'n') + ".txt", "000000/1 unnamed"));
    Reopen();
  }
  EXPECT_THAT(archive_->IncompleteItems(), IsEmpty());
}

TEST_F(ArchiveTest, AFileAtThePlaceThatAnotherWasToldOfIsNotTakenForThatOne) {
  const ItemPtr item =
      archive_->PasteRecord("ID=1|DataFileAttach1=" + EscapeValue(folder_.Path("temp\\a.txt")));
  item->TakeFile("FileAttach1", folder_.Write("temp\\b.txt", "b"), "move", "");
  item->TakeFile("FileAttach2", folder_.Write("temp\\a.txt", "a"), "move", "");
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "b");
  EXPECT_EQ(BytesOf(item, "FileAttach2"), "a");
}

TEST_F(ArchiveTest, AFolderIsNeverTakenForAFile) {
  folder_.Write("temp\\a.txt", "abc");
  for (const std::string place : {"temp", "temp\\", "temp\\.", "temp\\.."}) {
    const auto item = std::dynamic_pointer_cast<ArchiveItem>(
        archive_->PasteRecord("DataFileAttach1=" + EscapeValue(folder_.Path(place))));
    EXPECT_THROW(item->TakeFile("FileAttach1", folder_.Path(place), "move", ""), Failure);
    EXPECT_TRUE(item->IsIncomplete());
  }
  EXPECT_EQ(folder_.Read("temp\\a.txt"), "abc");
  EXPECT_THAT(StoredNames(), IsEmpty());
}

TEST_F(ArchiveTest, NamesThatAnOlderProgramGaveStayAndItsMailsAreKnownAgain) {
  const std::string record = "ID=1|Text=a" + FileField("FileAttach1", "a%252Fb\xE4.txt", "abc");
  Import(record);
  archive_->Close();
  std::filesystem::rename(folder_.Native("archive/files/000000/1 a_b_.txt"),
                          folder_.Native("archive/files/000000/1 a%252Fb\u00E4.txt"));
  SqliteDatabase(folder_.Path("archive\\archive.sqlite"), 0)
      .Execute("UPDATE files SET name = 'a%252Fb\u00E4.txt'");
  archive_->Open(folder_.Path("archive"));
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "FileAttach1"), "abc");
  FileField("FileAttach1", "a%252Fb\xE4.txt", "abc");
  EXPECT_TRUE(Import(record)->WasThere());
  EXPECT_EQ(archive_->ItemCount(), 1);
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 a%252Fb\u00E4.txt"));
}

TEST_F(ArchiveTest, AMissingSourceRaisesAndMarksTheItem) {
  const auto pasted = std::dynamic_pointer_cast<ArchiveItem>(archive_->PasteRecord(
      "ID=1|DataFile=" + EscapeValue(folder_.Path("temp\\gone.eml") + "\nfile=mail.eml")));
  EXPECT_FALSE(pasted->IsIncomplete());
  try {
    pasted->TakeFile("File", folder_.Path("temp\\gone.eml"), "move", "file=mail.eml");
    FAIL() << "was taken";
  } catch (const Failure& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("gone.eml"));
  }
  EXPECT_TRUE(pasted->IsIncomplete());
  pasted->AddKeyword("Halb");
  Reopen();
  EXPECT_EQ(archive_->IncompleteItems().size(), 1u);
  EXPECT_TRUE(archive_->ItemsOf("1").front()->IsIncomplete());
}

TEST_F(ArchiveTest, AnItemThatLackedAFileCanTakeItLater) {
  const std::string record = "ID=1" + FileField("File", "mail.eml", "text");
  archive_->PasteRecord(record);
  archive_.reset();
  Reopen();
  ASSERT_EQ(archive_->IncompleteItems().size(), 1u);
  const auto item = archive_->ItemsOf("1").front();
  item->TakeFile("File", folder_.Path("temp\\mail.eml"), "move", "file=mail.eml");
  EXPECT_FALSE(item->IsIncomplete());
  EXPECT_EQ(BytesOf(item, "File"), "text");
  Reopen();
  EXPECT_THAT(archive_->IncompleteItems(), IsEmpty());
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "text");
}

TEST_F(ArchiveTest, TheReadOnlyAttributeStaysOutsideIfAsked) {
  const std::string path = folder_.Write("temp/ro.txt", "abc");
  std::filesystem::permissions(folder_.Native("temp/ro.txt"), std::filesystem::perms::owner_read);
  const ItemPtr item = archive_->PasteRecord("ID=1");
  item->TakeFile("FileAttach1", path, "move|nofileattribute", "file=ro.txt");
  EXPECT_EQ(GetFileAttr(item->DataFile("FileAttach1", 0)) & 1, 0);
  EXPECT_FALSE(folder_.Exists("temp/ro.txt"));
}

TEST_F(ArchiveTest, ARecordWhoseFilesLieInAMailboxHasNone) {
  const auto item = std::dynamic_pointer_cast<ArchiveItem>(archive_->PasteRecord(
      "ID=1|DataFile=1.eml|DataFileHTML=C:\\\\x\\\\1.html|Data_SourceFile=C:\\\\Inbox|Data_SourceOffset=0"));
  EXPECT_FALSE(item->IsIncomplete());
  Reopen();
  EXPECT_THAT(archive_->IncompleteItems(), IsEmpty());
  EXPECT_EQ(archive_->ItemAt(1)->DataText("FileHTML"), "C:\\x\\1.html");
}

// --- Repeated IDs

TEST_F(ArchiveTest, AMailOfTheSameIDButOtherContentIsAnItemOfItsOwn) {
  Import("ID=20100509143005-|Type=mail|Text=a" + FileField("File", "mail.eml", "first"));
  Import("ID=20100509143005-|Type=mail|Text=b" + FileField("File", "mail.eml", "second"));
  ASSERT_EQ(archive_->ItemCount(), 2);
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "first");
  EXPECT_EQ(BytesOf(archive_->ItemAt(2), "File"), "second");
  EXPECT_EQ(archive_->ItemsOf("20100509143005-").size(), 2u);
  EXPECT_EQ(archive_->FindItem("20100509143005-")->Text(), "a");
}

TEST_F(ArchiveTest, MailsThatDifferInAByteOfTheirTextAloneAreBothKept) {
  const std::string head = "ID=20100509143005-|Type=mail|Text=a";
  Import(head + FileField("File", "mail.eml", "1111"));
  Import(head + FileField("File", "mail.eml", "1112"));
  EXPECT_EQ(archive_->ItemCount(), 2);
  EXPECT_EQ(StoredNames().size(), 2u);
}

TEST_F(ArchiveTest, AMailImportedAgainIsKeptOnceWithWhatWasDoneToIt) {
  const std::string head = "ID=1|Type=mail|Text=a|Keywords=Account=x,Inbox";
  Import(head + FileField("File", "mail.eml", "From - \r\n\r\ntext") + "|Log=20100101000000")
      ->AddKeyword("Wichtig");
  const auto again =
      Import(head + FileField("File", "mail.eml", "From - \r\n\r\ntext") + "|Log=20110101000000");
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_EQ(again->Keywords(), "Account=x,Inbox,Wichtig");
  EXPECT_EQ(BytesOf(again, "File"), "From - \r\n\r\ntext");
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 mail.eml"));
  again->AddKeyword("Post");
  Reopen();
  EXPECT_EQ(AsStandalone(archive_->ItemAt(1))->Keywords(), "Account=x,Inbox,Wichtig,Post");
  EXPECT_THAT(Found("text"), ElementsAre("1"));
}

TEST_F(ArchiveTest, AMailImportedAgainBringsItsNewKeywordsToTheOneThatStays) {
  const auto import = [this](const std::string& topic) {
    const auto item =
        std::dynamic_pointer_cast<ArchiveItem>(archive_->PasteRecord("ID=1|Type=mail|Keywords=a"));
    item->SetConnected(false);
    if (!topic.empty()) item->AddKeyword(topic);
    item->SetConnected(true);
    return item;
  };
  const auto first = import("");
  first->AddKeyword("b");
  EXPECT_EQ(import("c")->Number(), first->Number());
  EXPECT_EQ(import("b")->Number(), first->Number());
  Reopen();
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_EQ(AsStandalone(archive_->ItemAt(1))->Keywords(), "a,b,c");
}

TEST_F(ArchiveTest, AnItemIsFoundAgainByItsPosition) {
  for (const std::string id : {"1", "2", "3"})
    Import("ID=" + id + "|Type=mail|Text=word" + id);
  Reopen();
  for (const std::string id : {"3", "1"}) {
    const auto found = archive_->Search("word" + id);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(archive_->PositionOf(*found[0]), std::stoi(id));
    EXPECT_EQ(archive_->ItemAt(archive_->PositionOf(*found[0])), found[0]);
  }
}

TEST_F(ArchiveTest, TheSameMailInTwoFoldersIsKeptInBoth) {
  Import("ID=1|Keywords=Account=x,Inbox" + FileField("File", "mail.eml", "text"));
  Import("ID=1|Keywords=Account=x,Sent" + FileField("File", "mail.eml", "text"));
  EXPECT_EQ(archive_->ItemCount(), 2);
}

TEST_F(ArchiveTest, WhatTheMailClientRewritesMakesNoOtherMail) {
  const std::string own = "From: a\r\nX-Mozilla-Keys-Of-Mine: 1\r\n\r\nFrom - x\r\nX-Mozilla-Keys: y";
  const auto record = [&](const std::string& attribute, const std::string& date, const std::string& marks) {
    return "ID=1|Type=mail|Text=a|Keywords=Inbox|DataAttribute=" + attribute +
           "|DataSize=" + std::to_string(marks.size()) + FileField("File", "mail.eml", marks + own + "\r\n") +
           "\\ndate=" + date + FileField("FileAttach1", "a.txt", "abc") + "\\ndate=" + date + "|Date=" + date;
  };
  const auto first = Import(record("", "05.01.2026 11:00:00", "From - Sat\r\nX-Mozilla-Status: 0000\r\n"));
  for (const std::string marks :
       {"From - Sat\r\nX-Mozilla-Status: 0005\r\nX-Mozilla-Status2: 10000000\r\n",
        "From - Sun\r\nX-Mozilla-Status : 0001\r\nX-Mozilla-Keys: $label1\r\n  work\r\n",
        "From a@b.c Mon Jan  5 10:00:00 2026\r\n", ""}) {
    EXPECT_EQ(Import(record("RP", "05.01.2026 05:00:00", marks))->Number(), first->Number()) << marks;
  }
  EXPECT_EQ(archive_->ItemCount(), 1);
}

TEST_F(ArchiveTest, WhatTheSenderWroteMakesAnother) {
  const std::string head = "ID=1|Type=mail|Text=a";
  Import(head + FileField("File", "mail.eml", "From - \r\nX-A: 1\r\n\r\nX-Mozilla-Status: 1\r\n"));
  Import(head + FileField("File", "mail.eml", "From - \r\nX-A: 2\r\n\r\nX-Mozilla-Status: 1\r\n"));
  Import(head + FileField("File", "mail.eml", "From - \r\nX-A: 1\r\n\r\nX-Mozilla-Status: 2\r\n"));
  Import(head + FileField("File", "mail.eml", "From - \r\nX-A: 1\r\n X-Mozilla-Status: 1\r\n"));
  EXPECT_EQ(archive_->ItemCount(), 4);
}

TEST_F(ArchiveTest, MailsOfAnArchiveOfBeforeAreKnownAgain) {
  const auto record = [&](const std::string& date) {
    return "ID=1|Type=mail|Text=a|Keywords=Inbox" + FileField("File", "mail.eml", "text") +
           "\\ndate=" + date + "|Date=" + date;
  };
  Import(record("05.01.2026 11:00:00"));
  archive_->Close();
  const auto makeOld = [&] {
    SqliteDatabase(folder_.Path("archive\\archive.sqlite"), 0)
        .Execute(
            "DROP TABLE renewed; DELETE FROM state WHERE key = 'renewed'; UPDATE items SET fingerprint = 7");
  };
  makeOld();
  {
    const auto rehearsal =
        std::make_shared<ArchiveRehearsal>(std::weak_ptr<StandaloneGlobal>(), folder_.Path("archive"));
    const auto item = AsStandalone(rehearsal->PasteRecord(record("05.01.2026 05:00:00")));
    item->TakeFile("File", folder_.Path("temp\\mail.eml"), "move", "file=mail.eml\r\nsize=4");
    item->SetConnected(true);
    EXPECT_TRUE(item->WasThere());
  }
  archive_->Open(folder_.Path("archive"));
  EXPECT_TRUE(Import(record("05.01.2026 05:00:00"))->WasThere());
  Reopen();
  EXPECT_TRUE(Import(record("05.01.2026 17:00:00"))->WasThere());
  EXPECT_EQ(archive_->ItemCount(), 1);
}

TEST_F(ArchiveTest, MailWhoseDateWasReadOtherwiseIsKnownAgain) {
  struct Row {
    const char *before, *today;
  };
  constexpr Row rows[] = {
      {"20000100000000-1@x", "00000000000000-1@x"}, {"20000100000000-2@x", "20260203100000-2@x"},
      {"00000000000000-3@x", "20260203100000-3@x"}, {"19800101000000-4@x", "19700101000000-4@x"},
      {"20260001100000-5@x", "20260601100000-5@x"}, {"20260000100000-0@x", "20260905100000-0@x"},
      {"20260101103000-6@x", "20260105103000-6@x"}, {"20260105000000-7@x", "20260105103000-7@x"}};
  const auto record = [&](const char* id, const std::string& text) {
    return std::string("Type=mail|Text=a|ID=") + id + FileField("File", "mail.eml", text);
  };
  for (const Row& row : rows) {
    const auto first = Import(record(row.before, "text"));
    const auto again = Import(record(row.today, "text"));
    EXPECT_TRUE(again->WasThere()) << row.today;
    EXPECT_EQ(again->ID(), row.before);
    EXPECT_FALSE(Import(record(row.today, "other"))->WasThere()) << row.today;
  }
  EXPECT_FALSE(Import(record("20260105103000-8@x", "text"))->WasThere());
  EXPECT_FALSE(Import(record("20260106103000-8@x", "text"))->WasThere());
  EXPECT_FALSE(Import(record("-", "text"))->WasThere());
}

TEST_F(ArchiveTest, MailsThatDifferInHowAnAttachmentIsHeadedAreBothKept) {
  const auto record = [&](const std::string& heading) {
    return "ID=1|Type=mail|Text=a" + FileField("File", "mail.eml", "text") +
           FileField("FileAttach1", "a.txt", "abc") + (heading.empty() ? "" : "\\n" + heading);
  };
  const std::vector<std::string> headings = {"type=a/b", "type=a/c", "type=a/b\\ncontentid=<1>",
                                             "type=a/b\\ndisposition=inline"};
  for (const std::string& heading : headings)
    EXPECT_FALSE(Import(record(heading))->WasThere()) << heading;
  for (const std::string& heading : headings)
    EXPECT_TRUE(Import(record(heading))->WasThere()) << heading;
  EXPECT_TRUE(Import(record(""))->WasThere());
  EXPECT_EQ(archive_->ItemCount(), 4);
}

TEST_F(ArchiveTest, MailOfAnArchiveOfBeforeLearnsHowItsAttachmentsAreHeaded) {
  const auto record = [&](const std::string& heading) {
    return "ID=1|Type=mail|Text=a" + FileField("File", "mail.eml", "text") +
           FileField("FileAttach1", "a.txt", "abc") + heading;
  };
  const auto first = Import(record(""));
  EXPECT_TRUE(Import(record("\\ntype=a/b"))->WasThere());
  Reopen();
  ASSERT_EQ(archive_->ItemCount(), 1);
  const auto item = archive_->ItemAt(1);
  EXPECT_EQ(GetLineValue(item->DataText("FileAttach1"), "type"), "a/b");
  EXPECT_EQ(BytesOf(item, "FileAttach1"), "abc");
}

TEST_F(ArchiveTest, RehearsalTellsMailsByHowTheirAttachmentsAreHeaded) {
  const auto wasThere = [&](ArchiveRehearsal& rehearsal, const std::string& heading) {
    const auto item = AsStandalone(
        rehearsal.PasteRecord("ID=1|Type=mail|Text=a" + FileField("FileAttach1", "a.txt", "abc")));
    item->TakeFile("FileAttach1", folder_.Path("temp\\a.txt"), "move", "file=a.txt\r\nsize=3\r\n" + heading);
    item->SetConnected(true);
    return item->WasThere();
  };
  Import("ID=1|Type=mail|Text=a" + FileField("FileAttach1", "a.txt", "abc") + "\\ntype=a/b");
  archive_->Close();
  const auto rehearsal =
      std::make_shared<ArchiveRehearsal>(std::weak_ptr<StandaloneGlobal>(), folder_.Path("archive"));
  EXPECT_TRUE(wasThere(*rehearsal, "type=a/b"));
  EXPECT_FALSE(wasThere(*rehearsal, "type=a/c"));
  EXPECT_TRUE(wasThere(*rehearsal, "type=a/c"));
}

TEST_F(ArchiveTest, OnlyAMailThatIsThereAlreadyWasThere) {
  const std::string head = "ID=1|Type=mail|Text=a";
  EXPECT_FALSE(Import(head + FileField("File", "mail.eml", "text"))->WasThere());
  EXPECT_TRUE(Import(head + FileField("File", "mail.eml", "text"))->WasThere());
  EXPECT_FALSE(Import(head + FileField("File", "mail.eml", "TEXT"))->WasThere());
}

TEST_F(ArchiveTest, AMailThatLacksAFileEachTimeIsKeptOnce) {
  for (int round = 0; round < 3; ++round) {
    const ItemPtr item = archive_->PasteRecord("ID=1|Text=a" + FileField("File", "mail.eml", "text") +
                                               "|DataFileAttach1=" + EscapeValue(folder_.Path("temp\\gone")));
    item->TakeFile("File", folder_.Path("temp\\mail.eml"), "move", "");
    EXPECT_THROW(item->TakeFile("FileAttach1", folder_.Path("temp\\gone"), "move", ""), Failure);
    item->SetConnected(true);
  }
  EXPECT_EQ(archive_->ItemCount(), 1);
  EXPECT_EQ(archive_->IncompleteItems().size(), 1u);
  EXPECT_EQ(StoredNames().size(), 1u);
}

TEST_F(ArchiveTest, AMailWhoseFileSomeoneTookOutOfTheArchiveComesInAnew) {
  const std::string head = "ID=1|Text=a";
  Import(head + FileField("File", "mail.eml", "text"));
  std::filesystem::remove(folder_.Native("archive/files/000000/1 mail.eml"));
  EXPECT_FALSE(Import(head + FileField("File", "mail.eml", "text"))->WasThere());
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "text");
}

TEST_F(ArchiveTest, AMailImportedAgainTakesThePlaceOfOneThatLacksAFile) {
  const std::string record =
      "ID=1|Text=a" + FileField("File", "mail.eml", "text") + FileField("FileAttach1", "a.pdf", "pdf");
  const ItemPtr half = archive_->PasteRecord(record);
  half->TakeFile("File", folder_.Path("temp\\mail.eml"), "move", "file=mail.eml\r\nsize=4");
  std::filesystem::remove(folder_.Native("temp/a.pdf"));
  EXPECT_THROW(half->TakeFile("FileAttach1", folder_.Path("temp\\a.pdf"), "move", "file=a.pdf\r\nsize=3"),
               Failure);
  folder_.Write("temp/a.pdf", "pdf");
  folder_.Write("temp/mail.eml", "text");
  const auto whole = Import(record);
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_FALSE(whole->IsIncomplete());
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "FileAttach1"), "pdf");
  EXPECT_THAT(StoredNames(), ElementsAre("000000/2 a.pdf", "000000/2 mail.eml"));
}

// --- Changes

TEST_F(ArchiveTest, ChangesOfAnItemAreKept) {
  const ItemPtr item = archive_->PasteRecord("ID=1|Type=mail|Text=old|Date=01.01.2010 00:00:00");
  item->SetText("new");
  item->AddKeyword("Post");
  item->SetData("X", "a\nb", false);
  item->SetData("A=B", "c=\\d\r", false);
  item->SetType("url");
  AsStandalone(item)->SetDate("02.01.2010 00:00:00");
  item->SetID("2");
  Reopen();
  const auto found = AsStandalone(archive_->FindItem("2"));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->Text(), "new");
  EXPECT_EQ(found->Keywords(), "Post");
  EXPECT_EQ(found->DataText("X"), "a\nb");
  EXPECT_EQ(found->DataText("A=B"), "c=\\d\r");
  EXPECT_EQ(found->Type(), "url");
  EXPECT_EQ(found->Date(), "02.01.2010 00:00:00");
}

TEST_F(ArchiveTest, OneObjectStandsForAnItemWhileItIsHeld) {
  const ItemPtr pasted = archive_->PasteRecord("ID=1");
  EXPECT_EQ(archive_->FindItem("1"), pasted);
  EXPECT_EQ(archive_->ItemAt(1), pasted);
}

TEST_F(ArchiveTest, AnItemThatWasReplacedRefusesChanges) {
  const std::string record = "ID=1|Text=a" + FileField("File", "mail.eml", "text");
  const ItemPtr half = archive_->PasteRecord(record);
  std::filesystem::remove(folder_.Native("temp/mail.eml"));
  EXPECT_THROW(half->TakeFile("File", folder_.Path("temp\\mail.eml"), "move", ""), Failure);
  folder_.Write("temp/mail.eml", "text");
  Import(record);
  ASSERT_EQ(archive_->ItemCount(), 1);
  EXPECT_THROW(half->SetText("b"), Failure);
  EXPECT_EQ(archive_->ItemAt(1)->DataCount(), 1);
}

TEST_F(ArchiveTest, ItemsOfAClosedArchiveRefuseChanges) {
  const ItemPtr item = archive_->PasteRecord("ID=1|Text=a");
  archive_->Close();
  EXPECT_EQ(item->Text(), "a");
  EXPECT_THROW(item->SetText("b"), Failure);
  EXPECT_THROW(archive_->PasteRecord("ID=2"), Failure);
  EXPECT_THROW(archive_->ItemAt(1), Failure);
  EXPECT_EQ(archive_->ItemCount(), 0);
}

TEST_F(ArchiveTest, SettingsAreKept) {
  EXPECT_EQ(archive_->GetSetting("Keywords"), "");
  archive_->SetSetting("Keywords", "Größe"_cp);
  Reopen();
  EXPECT_EQ(archive_->GetSetting("Keywords"), "Größe"_cp);
}

// --- Search

TEST_F(ArchiveTest, WordsAreFoundInSubjectPeopleKeywordsAttachmentNamesAndText) {
  Import(
      "ID=1|Type=mail|Text=Rechnung f\xFCr M\xE4rz|Keywords=Account=x,Finanzen|DataFrom=Anna "
      "<anna@firma.de>" +
      FileField("File", "mail.eml", "From - \r\nSubject: nurimkopf\r\n\r\nLieber Bernd,\r\n") +
      FileField("FileAttach1", "Lieferschein_2024.pdf", "%PDF"));
  Import("ID=2|Type=mail|Text=Hallo" + FileField("File", "mail.eml", "From - \r\n\r\nNichts\r\n"));
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(Found("Rechnung"), ElementsAre("1"));
    EXPECT_THAT(Found("m\xE4rz"), ElementsAre("1"));
    EXPECT_THAT(Found("finanzen"), ElementsAre("1"));
    EXPECT_THAT(Found("anna@firma.de"), ElementsAre("1"));
    EXPECT_THAT(Found("Lieferschein"), ElementsAre("1"));
    EXPECT_THAT(Found("2024"), ElementsAre("1"));
    EXPECT_THAT(Found("bernd"), ElementsAre("1"));
    EXPECT_THAT(Found("Liefer*"), ElementsAre("1"));
    EXPECT_THAT(Found("Liefer"), IsEmpty());
    EXPECT_THAT(Found("Rechnung Bernd"), ElementsAre("1"));
    EXPECT_THAT(Found("Rechnung Nichts"), IsEmpty());
    EXPECT_THAT(Found("nurimkopf"), IsEmpty());
    EXPECT_THAT(Found(""), IsEmpty());
    EXPECT_THAT(Found("\"Rech\" OR -x NEAR("), IsEmpty());
    EXPECT_THAT(Found("eml"), ElementsAre("1", "2"));
    Reopen();
  }
}

TEST_F(ArchiveTest, TheIndexFollowsChanges) {
  const ItemPtr item = archive_->PasteRecord("ID=1|Text=vorher");
  EXPECT_THAT(Found("vorher"), ElementsAre("1"));
  item->SetText("nachher");
  EXPECT_THAT(Found("vorher"), IsEmpty());
  EXPECT_THAT(Found("nachher"), ElementsAre("1"));
  item->AddKeyword("Topf");
  EXPECT_THAT(Found("topf"), ElementsAre("1"));
}

TEST_F(ArchiveTest, ManyItemsAreFoundByPositionAndWord) {
  Archive::Portions portions(*archive_);
  for (int i = 1; i <= 2100; ++i) {
    archive_->PasteRecord("ID=n" + std::to_string(i) + "|Text=wort" + std::to_string(i));
  }
  EXPECT_EQ(archive_->ItemCount(), 2100);
  EXPECT_EQ(archive_->ItemAt(333)->ID(), "n333");
  EXPECT_THAT(Found("wort1"), ElementsAre("n1"));
  EXPECT_THAT(Found("wort2100"), ElementsAre("n2100"));
  EXPECT_EQ(Found("wort*").size(), 2100u);
}

// --- What goes wrong on the way

class ArchiveTroubleTest : public ArchiveTest {
 protected:
  // The database can't be written from here on.
  static DiskPlan FullDatabase() {
    return {.calls = DiskCall::Write | DiskCall::Sync,
            .trouble = DiskTrouble::FromHere,
            .error = ENOSPC,
            .pathEnd = "archive.sqlite-wal"};
  }
};

TEST_F(ArchiveTroubleTest, AMissingSourceIsWhatIsToldAlsoIfItCanNotBeMarked) {
  const std::string description = folder_.Path("temp\\gone.eml") + "\nfile=mail.eml";
  const ItemPtr item = archive_->PasteRecord("ID=1|DataFile=" + EscapeValue(description));
  const DiskFault fault(FullDatabase());
  try {
    item->TakeFile("File", folder_.Path("temp\\gone.eml"), "move", "file=mail.eml");
    FAIL() << "was taken";
  } catch (const Failure& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("gone.eml"));
  }
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(ArchiveTroubleTest, AnArchiveThatIsLetGoSaysNothingOfItsTroubles) {
  archive_->PasteRecord("ID=1");
  const DiskFault fault(FullDatabase());
  EXPECT_NO_THROW(archive_.reset());
  EXPECT_TRUE(fault.WasReached());
}

TEST_F(ArchiveTroubleTest, NorDoPortionsThatAreLetGo) {
  auto portions = std::make_unique<Archive::Portions>(*archive_);
  archive_->PasteRecord("ID=1");
  const DiskFault fault(FullDatabase());
  EXPECT_NO_THROW(portions.reset());
  EXPECT_TRUE(fault.WasReached());
}

// --- Opening

TEST_F(ArchiveTest, AnArchiveThatIsOpenElsewhereIsRefused) {
  Archive other{std::weak_ptr<StandaloneGlobal>()};
  try {
    other.Open(folder_.Path("archive"));
    FAIL() << "was opened twice";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PermissionDenied)) << failure.what();
    EXPECT_THAT(failure.what(), HasSubstr("archive.sqlite"));
  }
  EXPECT_FALSE(other.IsOpen());
}

TEST_F(ArchiveTest, AnArchiveThatIsOpenAgainIsAsMuchThisProgramsAlone) {
  Reopen();
  EXPECT_FALSE(folder_.Exists("archive/archive.sqlite-shm")) << "memory shared with other programs";
  Archive other{std::weak_ptr<StandaloneGlobal>()};
  EXPECT_THROW(other.Open(folder_.Path("archive")), Failure);
}

TEST_F(ArchiveTest, ADamagedDatabaseIsRefusedByName) {
  folder_.Write("broken/archive.sqlite", std::string(8192, 'x'));
  Archive other{std::weak_ptr<StandaloneGlobal>()};
  EXPECT_THROW(other.Open(folder_.Path("broken")), Failure);
  EXPECT_EQ(folder_.Read("broken/archive.sqlite"), std::string(8192, 'x'));
}

TEST_F(ArchiveTest, AnArchiveOfAnotherFormatIsRefusedAsItIs) {
  archive_->Close();
  const auto execute = [&](const std::string& sql) {
    SqliteDatabase(folder_.Path("archive\\archive.sqlite"), 0).Execute(sql);
  };
  for (const std::string format : {"0", "1", "3"}) {
    execute("PRAGMA journal_mode = DELETE; PRAGMA user_version = " + format);
    const std::string before = folder_.Read("archive/archive.sqlite");
    try {
      archive_->Open(folder_.Path("archive"));
      FAIL() << "was opened";
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.Is(ErrorNumber::PathAccess));
      EXPECT_THAT(failure.what(), HasSubstr("archive.sqlite: is no archive, or one of another version"));
    }
    EXPECT_EQ(folder_.Read("archive/archive.sqlite"), before);
  }
}

TEST_F(ArchiveTest, AFolderThatCantBeMadeIsRefusedByName) {
  folder_.Write("file", "x");
  Archive other{std::weak_ptr<StandaloneGlobal>()};
  try {
    other.Open(folder_.Path("file\\archive"));
    FAIL() << "was opened";
  } catch (const Failure& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("archive"));
  }
}

TEST_F(ArchiveTest, ClosingMakesDurableWhatIsStillDeferred) {
  {
    Archive::Portions portions(*archive_);
    Import("ID=1" + FileField("File", "mail.eml", "From - \r\n\r\ntext"));
    Reopen();
    EXPECT_EQ(archive_->ItemCount(), 1);
    portions.Finish();  // there is nothing more to do
  }
  EXPECT_EQ(BytesOf(archive_->ItemAt(1), "File"), "From - \r\n\r\ntext");
}

TEST_F(ArchiveTroubleTest, WhatCanNotBeMadeDurableAtTheCloseIsAsIfItHadNotCome) {
  Import("ID=1" + FileField("File", "first.eml", "From - \r\n\r\nfirst"));
  {
    Archive::Portions portions(*archive_);
    Import("ID=2" + FileField("File", "mail.eml", "From - \r\n\r\ntext"));
    const DiskFault fault(FullDatabase());
    EXPECT_THROW(archive_->Close(), Failure);
    EXPECT_FALSE(archive_->IsOpen());
  }
  Reopen();
  EXPECT_EQ(archive_->ItemCount(), 1);
  EXPECT_THAT(StoredNames(), ElementsAre("000000/1 first.eml"));
}

TEST_F(ArchiveTest, PortionsBecomeDurableInTheEnd) {
  {
    Archive::Portions portions(*archive_);
    for (int i = 0; i < 3; ++i) {
      Import("ID=" + std::to_string(i) +
             FileField("File", "mail.eml", "From - \r\n\r\ntext" + std::to_string(i)));
    }
    EXPECT_EQ(archive_->ItemCount(), 3);
    EXPECT_THAT(Found("text1"), ElementsAre("1"));
    portions.Finish();
  }
  Reopen();
  EXPECT_EQ(archive_->ItemCount(), 3);
  EXPECT_EQ(BytesOf(archive_->ItemAt(3), "File"), "From - \r\n\r\ntext2");
}

}  // namespace
}  // namespace vorlent
