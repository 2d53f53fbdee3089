#include "Standalone/FittingName.h"

#include <gtest/gtest.h>

#include <string>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"

namespace vorlent {
namespace {

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

TEST(FittingNameTest, WhatEveryFileSystemTakesStaysAsItIs) {
  for (const std::string name : {"a", "Rechnung Januar.pdf", ".profile", "Grüße aus Köln.txt", "жизнь.doc",
                                 "100%.txt", "a..b", "console.txt", "COM10", "COM", "lpt.txt", "nul_", "-rf"})
    EXPECT_EQ(FittingName(name, 255), name);
}

TEST(FittingNameTest, WhatHasAMeaningToASystemIsReplaced) {
  EXPECT_EQ(FittingName("a/b\\c:d*e?f\"g<h>i|j", 255), "a_b_c_d_e_f_g_h_i_j");
  EXPECT_EQ(FittingName(std::string("a\0b\nc\x7F", 6), 255), "a_b_c_");
}

TEST(FittingNameTest, BlanksAroundANameAndDotsAtItsEndGo) {
  EXPECT_EQ(FittingName("  a .txt . ", 255), "a .txt");
  EXPECT_EQ(FittingName("a.", 255), "a");
}

TEST(FittingNameTest, ANameOfWhichNothingIsLeftIsReplaced) {
  for (const std::string name : {"", " ", ".", "..", ". . ."})
    EXPECT_EQ(FittingName(name, 255), "unnamed") << "'" << name << "'";
}

TEST(FittingNameTest, ADevicesNameGetsAMark) {
  for (const std::string name : {"CON", "con.txt", "Prn", "AUX.a.b", "nul", "COM1", "com9.x", "LPT0",
                                 "CON .txt", "CONIN$", "conout$", "COM¹", "lpt³.txt"})
    EXPECT_EQ(FittingName(name, 255), "_" + name);
  EXPECT_EQ(FittingName("CON ", 255), "_CON");
}

TEST(FittingNameTest, ALongNameKeepsItsExtension) {
  EXPECT_EQ(FittingName(Repeated("L", 296) + ".txt", 255), Repeated("L", 251) + ".txt");
  EXPECT_EQ(FittingName(Repeated("L", 251) + ".txt", 255), Repeated("L", 251) + ".txt");
  EXPECT_EQ(FittingName(Repeated("L", 10) + "." + Repeated("e", 16), 12), Repeated("L", 10) + ".e");
  EXPECT_EQ(FittingName("." + Repeated("e", 15), 10), "." + Repeated("e", 9));
  EXPECT_EQ(FittingName("abc   .txt", 8), "abc.txt");
}

TEST(FittingNameTest, NoCharacterIsCutInTwo) {
  EXPECT_EQ(FittingName(Repeated("ж", 51), 255), Repeated("ж", 51));
  EXPECT_EQ(FittingName(Repeated("ж", 51), 101), Repeated("ж", 50));
  EXPECT_EQ(FittingName(Repeated("😀", 70) + ".jpeg", 255), Repeated("😀", 62) + ".jpeg");
}

TEST(FittingNameTest, AnAsciiNameHasAMarkForWhatIsNoAscii) {
  EXPECT_EQ(FittingAsciiName("Grüße.txt", 100), "Gr_e.txt");
  EXPECT_EQ(FittingAsciiName(Repeated("ж", 51) + ".pdf", 100), "_.pdf");
  EXPECT_EQ(FittingAsciiName("..", 100), "unnamed");
}

TEST(FittingNameTest, DecodingIsTheInverseOfEncoding) {
  std::string all;
  for (int c = 0; c < 256; ++c)
    all += static_cast<char>(c);
  EXPECT_EQ(DecodeFileName(EncodeFileName(all)), all);
  EXPECT_EQ(DecodeFileName("100%, %4 %zz %41%"), "100%, %4 %zz A%");
}

TEST(DistinctNamesTest, NamesDifferInMoreThanTheCaseOfTheirLetters) {
  DistinctNames names(255);
  EXPECT_TRUE(names.Reserve("record.txt"));
  EXPECT_FALSE(names.Reserve("RECORD.txt"));
  EXPECT_EQ(names.Take("Record.TXT"), "(2) Record.TXT");
  EXPECT_EQ(names.Take("a.txt"), "a.txt");
  EXPECT_EQ(names.Take("A.TXT"), "(2) A.TXT");
  EXPECT_EQ(names.Take("a.txt"), "(3) a.txt");
  EXPECT_EQ(names.Take("Ä"), "Ä");
  EXPECT_EQ(names.Take("ä"), "(2) ä");
  EXPECT_EQ(names.Take("а"), "а");
}

TEST(DistinctNamesTest, ACountedNameIsNoLongerThanOthers) {
  DistinctNames names(20);
  const std::string longName = Repeated("n", 40) + ".txt";
  EXPECT_EQ(names.Take(longName), Repeated("n", 16) + ".txt");
  EXPECT_EQ(names.Take(longName), "(2) " + Repeated("n", 12) + ".txt");
}

}  // namespace
}  // namespace vorlent
