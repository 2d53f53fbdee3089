#include "Standalone/MailText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/StdHttp.h"
#include "Support/ScopedRules.h"
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

TEST(MailTextTest, TextOfOtherCharsetsIsReadAsItIsMeant) {
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(TextOfMail("Content-Type: text/plain; charset=\"koi8-r\"\r\n\r\n\xF0\xD2\xC9\xD7\xC5\xD4"),
            "Привет\n");
  EXPECT_EQ(TextOfMail("content-type: text/plain; Charset=GB2312; format=flowed\n\n\xC4\xE3\xBA\xC3\n"),
            "你好\n");
  EXPECT_EQ(TextOfMail("Content-Type: text/plain; charset=windows-1251\n"
                       "Content-Transfer-Encoding: quoted-printable\n\n=CF=F0=E8=E2=E5=F2\n"),
            "Привет\n");
  EXPECT_EQ(TextOfMail("Content-Type: text/plain; charset=x-none\n\nGr\xFC\xDF\x65 ж\n"), "Grüße ж\n");
  EXPECT_EQ(TextOfHtml("<meta charset=\"iso-8859-7\">\xE3\xE5\xE9\xDC", "koi8-r"), " γειά ");
  EXPECT_EQ(TextOfHtml("<b>\xF0\xD2\xC9\xD7\xC5\xD4</b>", "koi8-r"), " Привет ");
}

TEST(MailTextTest, APageHasTheCharsetOfItsMail) {
  const ScopedRules today(Rules::Today());
  const TemporaryFolder folder;
  const std::string html = folder.Write("mail.html", "<b>\xF0\xD2\xC9\xD7\xC5\xD4</b>");
  const std::string mail = folder.Write("mail.eml", "Content-Type: text/html; charset=koi8-r\n\n");
  EXPECT_EQ(TextOfHtmlFile(html, mail), " Привет ");
  EXPECT_EQ(TextOfHtmlFile(html), " ðÒÉ×ÅÔ ");
}

TEST(MailTextTest, QuotedPrintableIsUndone) {
  const std::string head = "Content-Transfer-Encoding: Quoted-Printable\r\n\r\n";
  EXPECT_EQ(TextOfMail(head + "Gr=FC=df=\r\ne a=3Db = c=4"), "Grüße a=b = c=4\n");
  EXPECT_EQ(TextOfMail(head + "lang=\nzeile="), "langzeile");
  EXPECT_EQ(TextOfMail("X: y\r\n\r\na=FCb"), "a=FCb\n");
}

TEST(MailTextTest, Base64IsUndone) {
  const ScopedRules today(Rules::Today());
  const std::string words = "Die Rechnung für Januar, mit Grüßen und vielen anderen Wörtern in einer Zeile";
  std::string lines;
  for (std::string rest = Base64Encode(words); !rest.empty(); rest.erase(0, 60))
    lines += rest.substr(0, 60) + "\r\n";
  const std::string head =
      "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding:\r\n BASE64 (so)\r\n\r\n";
  EXPECT_EQ(TextOfMail("Subject: x\r\n" + head + lines), words);
  EXPECT_EQ(TextOfMail("Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\nnot for you\r\n--B\r\n" + head +
                       lines + "--B--\r\n"),
            words);
}

TEST(MailTextTest, AllTextsOfAMailAreRead) {
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(
      TextOfMail("Content-Type: multipart/mixed; boundary=B\n\n--B\n"
                 "Content-Type: multipart/alternative; boundary=C\n\n"
                 "--C\nContent-Type: text/plain; charset=koi8-r\n\n\xF0\xD2\xC9\xD7\xC5\xD4\n"
                 "--C\nContent-Type: text/html\nContent-Transfer-Encoding: "
                 "quoted-printable\n\n<b>Gr=C3=BC=C3=9Fe</b>\n"
                 "--C--\n--B\nContent-Type: image/png\nContent-ID: <x>\n\nno words\n--B\n\nlast\n--B--\n"),
      "Привет\n Grüße \n  last\n");
}

TEST(MailTextTest, LongLinesOfWritingWithoutBlanksAreText) {
  const ScopedRules today(Rules::Today());
  std::string line;
  for (int i = 0; i < 30; ++i)
    line += "你好";
  EXPECT_EQ(TextOfMail("Content-Type: text/plain; charset=utf-8\n\n" + line + "\n"), line + "\n");
}

TEST(MailTextTest, BadTextIsShown) {
  const ScopedRules today(Rules::Today());
  const auto body = [](const std::string& charset, const std::string& text) {
    return TextOfMail("Content-Type: text/plain; charset=" + charset + "\n\n" + text + "\n");
  };
  EXPECT_EQ(body("x-none", "Gr\xC3\xBC\xDF"), "Grüß\n");
  EXPECT_EQ(body("utf-8", "a\xE2\x82"), "aâ‚\n");
  EXPECT_EQ(body("utf-8", "a\xC0\xAFz"), "aÀ¯z\n");
  EXPECT_EQ(body("utf-8", "\xED\xA0\x80z"), "í\u00A0€z\n");
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
