#include "Connectors/Mozilla/AttachmentHeaders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Support/Lines.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AttachmentHeadersTest : public testing::Test {
 protected:
  // What an archive is told of one part with a file name.
  static std::string LineOf(const std::string& contentType) {
    KeyedList<std::string> parts;
    parts.Add("Content-Type: " + contentType + "\r\nContent-Disposition: attachment; filename=a\r\n");
    const Lines lines = KeptHeaderLines(parts, {});
    return lines.size() == 1 ? lines.front() : "(" + std::to_string(lines.size()) + " lines)";
  }

  // The naming of an attachment that a sender gave this name.
  static PartNaming Named(const std::string& name, const std::string& more = "") {
    return NamingOf("C:\\x\r\nfile=" + EncodeFileName(name) + "\r\nsize=1" + more);
  }

 private:
  ScopedRules rules_{{.attachmentHeaders = AttachmentHeaders::AsSent}};
};

TEST_F(AttachmentHeadersTest, PlainIsWhatNobodyHasChosenOtherwise) {
  const ScopedRules plain(Rules::Windows());
  KeyedList<std::string> parts;
  parts.Add("Content-Type: image/png; name=a.png\r\n");
  EXPECT_THAT(KeptHeaderLines(parts, {"b"}), IsEmpty());
  EXPECT_FALSE(HomesAreKept());
  const PartNaming naming = NamingOf("x\r\nfile=sub\\R%C3%BC.png\r\ntype=image/png");
  EXPECT_EQ(naming.contentType, "application/octet-stream; name=\"R%C3%BC.png\"");
  EXPECT_EQ(naming.disposition, "attachment; filename=\"R%C3%BC.png\"");
}

TEST_F(AttachmentHeadersTest, ContentTypeIsKeptWithItsCharset) {
  EXPECT_EQ(LineOf("image/png"), "\r\ntype=image/png");
  EXPECT_EQ(LineOf("Application/PDF;\r\n name=\"x.pdf\""), "\r\ntype=application/pdf");
  EXPECT_EQ(LineOf("text/plain; charset=\"utf-8\"; format=flowed"), "\r\ntype=text/plain; charset=utf-8");
  EXPECT_EQ(LineOf("text/plain;\r\n\tcharset=windows-1252;\r\n\tname=x"),
            "\r\ntype=text/plain; charset=windows-1252");
  EXPECT_EQ(LineOf("message/rfc822"), "\r\ntype=message/rfc822");
}

TEST_F(AttachmentHeadersTest, WhatIsNoContentTypeIsNotKept) {
  for (const std::string type :
       {"", "image", "image/", "/png", "ima ge/png", "a/b/c", "x/y(z)", "image/p\xE4ng"})
    EXPECT_EQ(LineOf(type), "") << type;
  EXPECT_EQ(LineOf("text/plain; charset=\"u t f\""), "\r\ntype=text/plain");
  // Nothing that a header says may fail the import.
  EXPECT_EQ(LineOf("text/plain; charset==?utf-8?Q?=XY?="), "");
}

TEST_F(AttachmentHeadersTest, LinesAreThoseOfThePartsWithAFileName) {
  KeyedList<std::string> parts;
  parts.Add("Content-Type: text/plain\r\n");
  parts.Add("Content-Type: image/png; name=a.png\r\n");
  parts.Add("Content-Disposition: attachment; filename=b\r\n");
  parts.Add("");
  // A name that can't be read makes no attachment.
  parts.Add("Content-Type: image/gif; name=\"=?utf-8?Q?=XY?=\"\r\n");
  parts.Add("Content-Type: audio/ogg; name=c.ogg\r\n");
  EXPECT_THAT(KeptHeaderLines(parts, {}), ElementsAre("\r\ntype=image/png", "", "\r\ntype=audio/ogg"));
}

TEST_F(AttachmentHeadersTest, WhatShowsAPictureInItsMailIsKept) {
  const auto linesOf = [](const std::string& headers, const std::string& boundary) {
    KeyedList<std::string> parts;
    parts.Add("Content-Type: image/png; name=a.png\r\n" + headers);
    return KeptHeaderLines(parts, {boundary}).front();
  };
  const std::string type = "\r\ntype=image/png";
  EXPECT_EQ(
      linesOf("Content-Disposition: INLINE; filename=a.png\r\nContent-Id:\r\n <part1.A@b.c>\r\n", "R x"),
      type + "\r\ncontentid=<part1.A@b.c>\r\ndisposition=inline\r\nboundary=R x");
  EXPECT_EQ(linesOf("Content-ID: <1>\r\nContent-ID: <2>\r\n", ""),
            type + "\r\ncontentid=<1>\r\ndisposition=inline");
  EXPECT_EQ(linesOf("Content-Disposition: attachment; filename=a\r\nContent-ID: <1>\r\n", ""),
            type + "\r\ncontentid=<1>");
  EXPECT_EQ(linesOf("Content-Disposition: inline; filename=a\r\n", ""), type + "\r\ndisposition=inline");
  // What could not be written again.
  EXPECT_EQ(linesOf("Content-ID: <a\x01>\r\n", "\xE4"), type);
  EXPECT_EQ(linesOf("Content-ID: " + std::string(901, 'x') + "\r\n", std::string(901, 'x')), type);
}

TEST_F(AttachmentHeadersTest, PictureComesBackAsItWasShown) {
  const PartNaming naming = Named("a.png", "\r\ncontentid=<1@x>\r\ndisposition=inline\r\nboundary=R=1");
  EXPECT_EQ(naming.disposition, "inline; filename=\"a.png\"");
  EXPECT_EQ(naming.contentId, "<1@x>");
  EXPECT_EQ(Named("\xC3\xA4", "\r\ndisposition=inline").disposition, "inline;\r\n filename*=UTF-8''%C3%A4");
  EXPECT_EQ(Named("a").contentId, "");
  EXPECT_EQ(HomeOf("x\r\nfile=a\r\nboundary=R=1"), "R=1");
  EXPECT_EQ(HomeOf("x\r\nfile=a"), "");
}

TEST_F(AttachmentHeadersTest, TypeAndPlainNameComeBackAsTheyWere) {
  const PartNaming naming = Named("Lage plan.png", "\r\ntype=image/png");
  EXPECT_EQ(naming.contentType, "image/png; name=\"Lage plan.png\"");
  EXPECT_EQ(naming.disposition, "attachment; filename=\"Lage plan.png\"");
  EXPECT_EQ(Named("a", "\r\ntype=text/plain; charset=utf-8").contentType,
            "text/plain; charset=utf-8; name=\"a\"");
}

TEST_F(AttachmentHeadersTest, UnknownAndCompositeTypesAreBytes) {
  for (const std::string type : {"", "\r\ntype=", "\r\ntype=message/partial", "\r\ntype=multipart/mixed"})
    EXPECT_EQ(Named("a", type).contentType, "application/octet-stream; name=\"a\"") << type;
}

TEST_F(AttachmentHeadersTest, MailComesBackAsAMailUnlessItMustBeBytes) {
  const std::string description = "x\r\nfile=a.eml\r\ntype=message/rfc822";
  EXPECT_TRUE(NamingOf(description).isMail);
  EXPECT_EQ(NamingOf(description).contentType, "message/rfc822; name=\"a.eml\"");
  EXPECT_FALSE(NamingOf(description, MailForm::AsBytes).isMail);
  EXPECT_EQ(NamingOf(description, MailForm::AsBytes).contentType, "application/octet-stream; name=\"a.eml\"");
  const ScopedRules windows(Rules::Windows());
  EXPECT_FALSE(NamingOf(description).isMail);
}

TEST_F(AttachmentHeadersTest, NameBeyondAsciiIsWrittenAsMailProgramsReadIt) {
  // In the code page, and in the UTF-8 that a sender's "filename*" leaves.
  for (const std::string name : {"R\xFC"
                                 "ck.pdf",
                                 "R\xC3\xBC"
                                 "ck.pdf"}) {
    const PartNaming naming = Named(name, "\r\ntype=application/pdf");
    EXPECT_EQ(naming.contentType, "application/pdf;\r\n name=\"=?UTF-8?B?UsO8Y2sucGRm?=\"");
    EXPECT_EQ(naming.disposition, "attachment;\r\n filename*=UTF-8''R%C3%BCck.pdf");
  }
}

TEST_F(AttachmentHeadersTest, NameThatWouldBreakItsHeaderIsEncoded) {
  EXPECT_EQ(Named("a\"b").disposition, "attachment;\r\n filename*=UTF-8''a%22b");
  EXPECT_EQ(Named("a\\b").disposition, "attachment;\r\n filename*=UTF-8''a%5Cb");
  EXPECT_EQ(Named("a\r\nBcc: x").disposition, "attachment;\r\n filename*=UTF-8''a%0D%0ABcc%3A%20x");
  // What the disk would not take is no harm in a header.
  EXPECT_EQ(Named("a: 50% <b>?").disposition, "attachment; filename=\"a: 50% <b>?\"");
}

TEST_F(AttachmentHeadersTest, LongNameIsFoldedAndReadsBackWhole) {
  std::string name;
  for (int i = 0; i < 150; ++i)
    name += "\xD0\x96";  // a letter that the code page doesn't hold
  const PartNaming naming = Named(name + ".txt");
  for (std::string rest = "Content-Disposition: " + naming.disposition; !rest.empty();)
    EXPECT_LE(CutLine(rest).size(), 78U);
  for (std::string rest = "Content-Type: " + naming.contentType; !rest.empty();)
    EXPECT_LE(CutLine(rest).size(), 86U);
  EXPECT_EQ(GetHeaderParam(naming.disposition, "filename"), name + ".txt");
}

}  // namespace
}  // namespace vorlent
