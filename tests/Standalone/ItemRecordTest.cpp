#include "Standalone/ItemRecord.h"

#include <gtest/gtest.h>

#include "Platform/Failure.h"

namespace vorlent {
namespace {

ItemRecord Imported(std::string_view text) {
  ItemRecord record;
  record.Import(text);
  return record;
}

std::string DataKeys(const ItemRecord& record) {
  std::string keys;
  for (std::int32_t pos = 1; pos <= record.DataCount(); ++pos)
    keys += record.DataKey(pos) + ";";
  return keys;
}

TEST(ItemRecordTest, FieldsAreFoundByTheirExactKey) {
  const ItemRecord record = Imported("ID=1|Type=mail|Text=Hallo");
  EXPECT_EQ(record.Value("Type"), "mail");
  EXPECT_EQ(record.Value("type"), "");
  EXPECT_EQ(record.Value("Typ"), "");
  EXPECT_TRUE(record.Has("Text"));
  EXPECT_FALSE(record.Has("Date"));
}

TEST(ItemRecordTest, ValuesComeBackUnescaped) {
  const ItemRecord record = Imported("Text=a\\|b\\nc\\\\|DataX=1=2");
  EXPECT_EQ(record.Value("Text"), "a|b\r\nc\\");
  EXPECT_EQ(record.DataValue("X"), "1=2");
}

TEST(ItemRecordTest, AnEvenNumberOfBackslashesEndsTheField) {
  const ItemRecord record = Imported("Text=a\\\\|DataX=b\\\\\\|c|DataY=d");
  EXPECT_EQ(record.Value("Text"), "a\\");
  EXPECT_EQ(record.DataValue("X"), "b\\|c");
  EXPECT_EQ(record.DataValue("Y"), "d");
}

TEST(ItemRecordTest, ALastFieldMayBeEmptyOrWithoutEqualsSign) {
  EXPECT_EQ(Imported("ID=1|DataX=").DataCount(), 1);
  EXPECT_EQ(Imported("ID=1|DataX=").DataValue("X"), "");
  EXPECT_TRUE(Imported("ID=1|Loose").Has("Loose"));
  EXPECT_EQ(Imported("ID=1|Loose").Value("Loose"), "");
  EXPECT_EQ(Imported("").DataCount(), 0);
}

TEST(ItemRecordTest, OfARepeatedKeyTheFirstCounts) {
  const ItemRecord record = Imported("DataA=1|DataB=2|DataA=3|DataC=4");
  EXPECT_EQ(record.DataValue("A"), "1");
  EXPECT_EQ(DataKeys(record), "A;B;C;");
}

TEST(ItemRecordTest, DataFieldsKeepTheirOrderAmongOtherFields) {
  const ItemRecord record = Imported("ID=1|DataFrom=a|DataTo=b|Date=01.01.2010|DataFile=c|Data_SourceFile=d");
  EXPECT_EQ(DataKeys(record), "From;To;File;_SourceFile;");
  EXPECT_EQ(record.DataValue(3), "c");
  EXPECT_THROW(record.DataKey(0), Failure);
  EXPECT_THROW(record.DataKey(5), Failure);
}

TEST(ItemRecordTest, TheRecordComesBackByteForByte) {
  const std::string text =
      "ID=20100509-x@y|Type=mail|Text=a\\|b\\nc|Keywords=Account=x,In\\box|DataFile=C:\\\\t\\nfile=m.eml|Log="
      "1";
  EXPECT_EQ(Imported(text).Text(), text);
}

TEST(ItemRecordTest, SetValuesAreEscapedInTheRecordAndPlainOutsideOfIt) {
  ItemRecord record = Imported("ID=1|Text=old");
  record.Set("Text", "a|b\nc");
  record.SetData("X", "1\\2");
  EXPECT_EQ(record.Value("Text"), "a|b\nc");
  EXPECT_EQ(record.DataValue("X"), "1\\2");
  EXPECT_EQ(record.Text(), "ID=1|Text=a\\|b\\nc|DataX=1\\\\2");
}

TEST(ItemRecordTest, AnImportReplacesWhatItNamesAndKeepsTheRestBehind) {
  ItemRecord record;
  record.Set("ID", "born");
  record.SetData("Kept", "a|b");
  record.Import("Type=url|DataUrl=u");
  EXPECT_EQ(record.Text(), "Type=url|DataUrl=u|ID=born|DataKept=a\\|b");
  record.Import("ID=2|DataUrl=v");
  EXPECT_EQ(record.Value("ID"), "2");
  EXPECT_EQ(record.DataValue("Url"), "v");
  EXPECT_EQ(record.Value("Type"), "url");
}

TEST(ItemRecordTest, ARecordOfTwentyThousandAttachmentsIsReadInOneGo) {
  std::string text = "ID=1";
  for (int i = 1; i <= 20000; ++i)
    text += "|DataFileAttach" + std::to_string(i) + "=v" + std::to_string(i);
  const ItemRecord record = Imported(text + "|DataFileAttach7=again");
  ASSERT_EQ(record.DataCount(), 20000);
  for (std::int32_t pos = 1; pos <= record.DataCount(); ++pos) {
    ASSERT_EQ(record.DataValue(record.DataKey(pos)), "v" + std::to_string(pos));
  }
}

TEST(ItemRecordTest, AValueTornBehindABackslashDoesNotTakeTheNextFieldWithIt) {
  ItemRecord record;
  record.Import("ID=1|Text=a\\");
  record.Set("Owner", "o");
  ItemRecord again;
  again.Import(record.Text());
  EXPECT_EQ(again.Value("Text"), record.Value("Text"));
  EXPECT_EQ(again.Value("Owner"), "o");
}

}  // namespace
}  // namespace vorlent
