#include "Standalone/FieldLines.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vorlent {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string LinesOf(const Fields& fields) {
  std::string lines;
  for (const auto& [key, value] : fields)
    AppendFieldLine(lines, key, value);
  return lines;
}

Fields FieldsOf(const std::string& lines) {
  ItemRecord record;
  AddFieldLines(record, lines);
  Fields fields;
  for (std::size_t i = 0; i < record.FieldCount(); ++i)
    fields.push_back({std::string(record.FieldKey(i)), record.FieldValue(i)});
  return fields;
}

TEST(FieldLinesTest, EachFieldIsALine) {
  EXPECT_EQ(LinesOf({{"DataFrom", "Anna <anna@example.org>"}, {"DataSize", "12"}}),
            "DataFrom=Anna <anna@example.org>\nDataSize=12\n");
}

TEST(FieldLinesTest, WhatWouldEndAKeyOrALineIsEscaped) {
  EXPECT_EQ(LinesOf({{"a=b\nc", "d=e\nf\\g"}}), "a\\=b\\nc=d=e\\nf\\\\g\n");
}

TEST(FieldLinesTest, EveryByteComesBack) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte)
    every += static_cast<char>(byte);
  const Fields fields = {{every, every}, {"k", every + every}, {"empty", ""},
                         {"", "no key"}, {"n", "\\n"},         {"\\", "\\"},
                         {"=", "="},     {"end", "\n"},        {"x\\", "\\=\n\\=n"}};
  EXPECT_EQ(FieldsOf(LinesOf(fields)), fields);
}

TEST(FieldLinesTest, LinesCutShortGiveWhatIsThere) {
  EXPECT_EQ(FieldsOf(""), Fields());
  EXPECT_EQ(FieldsOf("a=b"), (Fields{{"a", "b"}}));
  EXPECT_EQ(FieldsOf("a=b\\"), (Fields{{"a", "b"}}));
  EXPECT_EQ(FieldsOf("a"), (Fields{{"a", ""}}));
  EXPECT_EQ(FieldsOf("a\\"), (Fields{{"a", ""}}));
}

}  // namespace
}  // namespace vorlent
