#include "Standalone/MailText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(MailTextTest, OnlyTheBodyOfAMailIsText) {
  EXPECT_EQ(TextOfMail("From - \r\nSubject: x\r\n\r\nHallo\r\nWelt"), "Hallo\r\nWelt\n");
  EXPECT_EQ(TextOfMail("Subject: x\n\nHallo\n"), "Hallo\n");
  EXPECT_EQ(TextOfMail("Subject: x\n\r\nHallo\n"), "Hallo\n");
  EXPECT_EQ(TextOfMail("Subject: x\r\n\r\nHallo\n\nWelt\n\r\nEnde\n"), "Hallo\n\nWelt\n\r\nEnde\n");
  EXPECT_EQ(TextOfMail("Subject: x\n\nHallo\r\n\r\nWelt"), "Hallo\r\n\r\nWelt\n");
  EXPECT_EQ(TextOfMail("Subject: only a header\r\n"), "");
  EXPECT_EQ(TextOfMail(""), "");
}

TEST(MailTextTest, CodePageAndUtf8BecomeUtf8) {
  EXPECT_EQ(TextOfMail("\r\n\r\nGr\xFC\xDF"
                       "e"),
            "Grüße\n");
  EXPECT_EQ(TextOfMail("\r\n\r\nGrüße"), "Grüße\n");
}

TEST(MailTextTest, QuotedPrintableIsUndone) {
  const std::string head = "Content-Transfer-Encoding: Quoted-Printable\r\n\r\n";
  EXPECT_EQ(TextOfMail(head + "Gr=FC=df=\r\ne a=3Db = c=4"), "Grüße a=b = c=4\n");
  EXPECT_EQ(TextOfMail(head + "lang=\nzeile="), "langzeile");
  EXPECT_EQ(TextOfMail("X: y\r\n\r\na=FCb"), "a=FCb\n");
}

TEST(MailTextTest, LinesOfEncodedDataAreNoText) {
  const std::string data(76, 'A');
  EXPECT_EQ(TextOfMail("X: y\r\n\r\nvorher\n" + data + "\nnachher\n"), "vorher\nnachher\n");
}

TEST(MailTextTest, TagsStylesAndScriptsAreNoText) {
  const std::string text = TextOfHtml(
      "<html><STYLE>p { color: rot }</STYLE><p class=\"k\">Sch&ouml;ne<br>Gr\xFC\xDF"
      "e &amp; mehr</p><script>var geheim;</script>Ende<!-- offen");
  EXPECT_THAT(text, HasSubstr("Schöne"));
  EXPECT_THAT(text, HasSubstr("Grüße & mehr"));
  EXPECT_THAT(text, HasSubstr("Ende"));
  EXPECT_THAT(text, Not(HasSubstr("rot")));
  EXPECT_THAT(text, Not(HasSubstr("geheim")));
  EXPECT_THAT(text, Not(HasSubstr("class")));
  EXPECT_THAT(text, Not(HasSubstr("offen")));
}

TEST(MailTextTest, AStyleWithoutAnEndHidesTheRest) {
  EXPECT_EQ(TextOfHtml("a<style>b"), "a ");
}

TEST(MailTextTest, FilesAreReadToACertainLength) {
  const TemporaryFolder folder;
  std::string lines;
  while (lines.size() < 100000)
    lines += "wort\n";
  EXPECT_LT(TextOfMailFile(folder.Write("mail.eml", "X: y\n\n" + lines)).size(), 40000u);
  EXPECT_EQ(TextOfMailFile(folder.Write("short.eml", "X: y\n\nkurz\n")), "kurz\n");
  EXPECT_EQ(TextOfHtmlFile(folder.Write("mail.html", "<b>kurz</b>")), " kurz ");
  EXPECT_EQ(TextOfMailFile(folder.Path("none.eml")), "");
}

}  // namespace
}  // namespace vorlent
