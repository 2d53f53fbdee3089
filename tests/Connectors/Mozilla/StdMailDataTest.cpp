// The item record of a mail.
#include "Common/StdModul.h"
#include "Connectors/Mozilla/StdMailTest.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class StdMailDataTest : public StdMailTest {
 protected:
  StdMailDataTest() { host_.Global.User = "Anna"; }

  // The record of a mail of these header lines.
  std::string RecordOf(std::string_view headers, bool saveattachments = false) {
    return RecordOfMail("From - x\n" + std::string(headers) + "\nbody\n", saveattachments);
  }

  // The record of a multipart mail of boundary "B".
  std::string RecordOfParts(std::string_view body, bool saveattachments) {
    return RecordOfMail("From - x\n" + kMixedHeaders + "\n" + std::string(body), saveattachments);
  }

  std::string RecordOfMail(std::string_view text, bool saveattachments) {
    OpenLines(text);
    EXPECT_TRUE(mail_.ReadHeader(saveattachments));
    return mail_.GetData("Account=a,Inbox", saveattachments);
  }

  // The text of a field as it stands in the record, "-" if it isn't there.
  static std::string Field(std::string_view record, std::string_view key) {
    const std::string mark = "|" + std::string(key) + "=";
    const std::string whole = "|" + std::string(record);
    const std::size_t found = whole.find(mark);
    if (found == std::string::npos) return "-";
    std::string rest = whole.substr(found + mark.size());
    return CutEscapedToken(rest, "|");
  }

  std::string Identity(std::string_view headers) { return Field(RecordOf(headers), "ID"); }
  std::string Tmp(std::string_view name) const { return mail_.mailtmppfad() + std::string(name); }
  // A path as it stands in a record.
  static std::string Escaped(std::string_view text) { return EscapeValue(text); }
};

// --- The whole record

TEST_F(StdMailDataTest, RecordPointsIntoTheMailboxWithoutFiles) {
  const std::string record = RecordOf(kPlainHeaders);
  EXPECT_EQ(
      record,
      "ID=20100509143005-m1@host|Type=mail|Text=Hello|Keywords=Account=a,Inbox|DataFrom=a@b.c|DataTo=d@e.f"
      "|DataAttribute=R|DataSize=" +
          std::to_string(Mailbox().size()) +
          "|Date=09.05.2010 14:30:05|DataFile=20100509143005-m1@host.eml\\ndate=09.05.2010 14:30:05"
          "|Data_SourceFile=" +
          Escaped(mail_.MailboxFile()) + "|Data_SourceOffset=0|Owner=Anna|Log=20100509143005");
}

TEST_F(StdMailDataTest, RecordPointsAtFilesWithSaving) {
  const std::string record = RecordOf(kPlainHeaders, true);
  const std::string size = std::to_string(Mailbox().size());
  EXPECT_EQ(
      record,
      "ID=20100509143005-m1@host|Type=mail|Text=Hello|Keywords=Account=a,Inbox|DataFrom=a@b.c|DataTo=d@e.f"
      "|DataAttribute=R|DataSize=" +
          size + "|Date=09.05.2010 14:30:05|DataFile=" + Escaped(Tmp("mail.eml")) +
          "\\nfile=mail.eml\\ndate=09.05.2010 14:30:05\\nsize=" + size +
          "\\nattr=A|Owner=Anna|Log=20100509143005");
}

TEST_F(StdMailDataTest, AllFieldsStandInTheirOrder) {
  const std::string record = RecordOfMail(
      "From - x\n" + kMixedHeaders + "CC: c\nBcc: d\nEnvelope-To: e\n\n" +
          "--B\nContent-Type: text/html\n\n<p>\n--B\nContent-Disposition: a; filename=f\n\nx\n--B--\n",
      true);
  std::string keys;
  std::string rest = record;
  while (!rest.empty()) {
    std::string pair = CutEscapedToken(rest, "|");
    keys += CutToken(pair, "=") + " ";
  }
  EXPECT_EQ(keys,
            "ID Type Text Keywords DataFrom DataTo DataCC DataBCC DataAttribute DataSize Date DataFile "
            "DataFileHTML DataFileAttach1 DataEnvelopeTo Owner Log ");
}

TEST_F(StdMailDataTest, MailWithoutHeadersHasItsFieldsAllTheSame) {
  const std::string record = RecordOf("");
  EXPECT_THAT(record,
              StartsWith("ID=20000100000000-|Type=mail|Text=|Keywords=Account=a,Inbox|DataFrom=|DataTo="
                         "|DataAttribute=|DataSize="));
  EXPECT_EQ(Field(record, "Date"), "00.01.2000 00:00:00");
}

TEST_F(StdMailDataTest, ObjectThatReadNothingGivesARecord) {
  EXPECT_THAT(mail_.GetData("k", false), HasSubstr("|Keywords=k|"));
  mail_.SetHeaders(nullptr);
  EXPECT_THAT(mail_.GetData("k", true), StartsWith("ID=20000100000000-|Type=mail|"));
}

TEST_F(StdMailDataTest, HostThatGivesNoNameLeavesTheOwnerEmpty) {
  const auto host = HostObjects::Install(nullptr);
  const std::string record = RecordOf(kPlainHeaders);
  HostObjects::Install(host);
  EXPECT_EQ(Field(record, "Owner"), "");
  EXPECT_EQ(Field(record, "Log"), "20100509143005");
}

// --- Identity

TEST_F(StdMailDataTest, IdentityIsTheDateAndTheMessageIdWithoutSpecialCharacters) {
  EXPECT_EQ(Identity("Date: Sun, 9 May 2010 14:30:05\nMessage-ID: <a_b c#d>\n"), "20100509143005-abcd");
  EXPECT_EQ(Identity("Date: 9 May 2010 14:30:05\nMessage-ID: %a\\/b:*?\"c<>|d# e_f@g.h\n"),
            "20100509143005-abcdef@g.h");
}

TEST_F(StdMailDataTest, TimeIsTheReadersAndTheIdHasTheSenders) {
  ChooseRules({.mailTimes = MailTimes::OfTheReader});
  const ScopedTimeZone zone("Europe/Berlin");
  const std::string record = RecordOf("Date: Fri, 31 Dec 2010 23:59:59 -0800\nMessage-ID: <m>\n");
  EXPECT_EQ(Field(record, "ID"), "20101231235959-m");
  EXPECT_EQ(Field(record, "Date"), "01.01.2011 08:59:59");
}

TEST_F(StdMailDataTest, MailsOfOneDateWithoutMessageIdHaveOneIdentity) {
  const std::string first = Identity("Date: 9 May 2010 14:30:05\nSubject: 1\n");
  EXPECT_EQ(first, "20100509143005-");
  EXPECT_EQ(Identity("Date: 9 May 2010 14:30:05\nSubject: 2\n"), first);
}

// --- Header fields

TEST_F(StdMailDataTest, HeadersAreDecodedAndEscaped) {
  const std::string record = RecordOf(
      "Subject: a|b\\c\nFrom: =?iso-8859-1?Q?Gr=FC=DFe?= <a@b>\nTo: =?utf-8?B?w6Q=?= x\nCc: a|b\nBcc: c|d\n");
  EXPECT_EQ(Field(record, "Text"), "a\\|b\\\\c");
  EXPECT_EQ(Field(record, "DataFrom"), "Grüße <a@b>"_cp);
  EXPECT_EQ(Field(record, "DataTo"), "ä x"_cp);
  EXPECT_EQ(Field(record, "DataCC"), "a\\|b");
  EXPECT_EQ(Field(record, "DataBCC"), "c\\|d");
}

TEST_F(StdMailDataTest, FoldedSubjectHoldsNoLineBreak) {
  EXPECT_EQ(Field(RecordOf("Subject: a\n b\n"), "Text"), "a b");
}

TEST_F(StdMailDataTest, HeaderThatCannotBeDecodedLeavesItsFieldEmpty) {
  const std::string record = RecordOf("Subject: =?x?Q?=ZZ?=\nCc: =?x?Q?=ZZ?=\nFrom: a\n");
  EXPECT_EQ(Field(record, "Text"), "");
  EXPECT_EQ(Field(record, "DataCC"), "-");
  EXPECT_EQ(Field(record, "DataFrom"), "a");
}

TEST_F(StdMailDataTest, CopiesStandOnlyIfTheyHaveText) {
  const std::string without = RecordOf("Cc:\nBcc:   \n");
  EXPECT_EQ(Field(without, "DataCC"), "-");
  EXPECT_EQ(Field(without, "DataBCC"), "-");
}

TEST_F(StdMailDataTest, EnvelopeStandsIfTheHeaderIsThere) {
  EXPECT_EQ(Field(RecordOf("Envelope-to: a|b\n"), "DataEnvelopeTo"), "a\\|b");
  EXPECT_EQ(Field(RecordOf("Envelope-to:\n"), "DataEnvelopeTo"), "");
  EXPECT_EQ(Field(RecordOf(""), "DataEnvelopeTo"), "-");
}

TEST_F(StdMailDataTest, KeywordsStandAsTheyAreGiven) {
  RecordOf("");
  EXPECT_THAT(mail_.GetData("a\\,b\\|c", false), HasSubstr("|Keywords=a\\,b\\|c|"));
}

struct AttributeRow {
  const char* status;
  const char* attribute;
};

class AttributeTest : public StdMailDataTest, public testing::WithParamInterface<AttributeRow> {};

TEST_P(AttributeTest, StatusBitsOneAndFourAreLetters) {
  EXPECT_EQ(Field(RecordOf(GetParam().status), "DataAttribute"), GetParam().attribute);
}

INSTANTIATE_TEST_SUITE_P(Rows, AttributeTest,
                         testing::Values(AttributeRow{"X-Mozilla-Status: 0005\n", "RP"},
                                         AttributeRow{"X-Mozilla-Status: 0001\n", "R"},
                                         AttributeRow{"X-Mozilla-Status: 0004\n", "P"},
                                         AttributeRow{"X-Mozilla-Status: 0002\n", ""},
                                         AttributeRow{"X-Mozilla-Status: 1017\n", "RP"},
                                         AttributeRow{"X-Mozilla-Status: x\n", ""}, AttributeRow{"", ""}));

TEST_F(StdMailDataTest, OffsetIsThatOfTheMail) {
  MailboxBuilder box;
  box.Mail(kPlainHeaders).Mail(kPlainHeaders);
  Open(box.Text());
  ASSERT_TRUE(mail_.ReadHeader(false));
  ASSERT_TRUE(mail_.ReadHeader(false));
  EXPECT_EQ(Field(mail_.GetData("", false), "Data_SourceOffset"), std::to_string(box.Offset(1)));
}

// --- Files

constexpr std::string_view kTextAndAttachment =
    "--B\n\ntext\n--B\nContent-Disposition: attachment; filename=\"a b.txt\"\n\ncontent\n--B--\n";

TEST_F(StdMailDataTest, SavedAttachmentGetsItsOwnName) {
  const std::string record = RecordOfParts(kTextAndAttachment, true);
  EXPECT_EQ(Field(record, "DataFileAttach1"),
            Escaped(Tmp("a b.txt")) +
                "\\nfile=a b.txt\\nsize=9\\nattr=A\\ndate=09.05.2010 14:30:05\\noriginalfile=a b.txt");
  EXPECT_EQ(Field(record, "DataFileAttach2"), "-");
  EXPECT_EQ(TempFile("a b.txt"), "content\r\n");
  EXPECT_FALSE(HasTempFile("att2"));
  EXPECT_EQ(GetFileDate(Tmp("a b.txt")), "09.05.2010 14:30:05");
}

TEST_F(StdMailDataTest, MovedAttachmentsGoWithTheTemporaryFiles) {
  RecordOfParts(kTextAndAttachment, true);
  mail_.DeleteLastTempfiles();
  EXPECT_FALSE(HasTempFile("a b.txt"));
  EXPECT_FALSE(HasTempFile("mail.eml"));
}

TEST_F(StdMailDataTest, UnsavedAttachmentIsNamedByIdentityAndPosition) {
  const std::string record = RecordOfParts(kTextAndAttachment, false);
  EXPECT_EQ(Field(record, "DataFileAttach1"),
            "20100509143005-m1@host#2_a b.txt\\ndate=09.05.2010 14:30:05\\noriginalfile=a b.txt");
  EXPECT_EQ(Field(record, "DataFileAttach2"), "-");
}

TEST_F(StdMailDataTest, AttachmentsAreNumberedWithoutGaps) {
  const std::string record = RecordOfParts(
      "--B\nContent-Type: a; name=1\n\n--B\n\n--B\nContent-Type: a; name=3\n\n--B\n\n--B\n"
      "Content-Type: a; name=5\n\n--B--\n",
      false);
  EXPECT_THAT(Field(record, "DataFileAttach1"), HasSubstr("#1_1\\n"));
  EXPECT_THAT(Field(record, "DataFileAttach2"), HasSubstr("#3_3\\n"));
  EXPECT_THAT(Field(record, "DataFileAttach3"), HasSubstr("#5_5\\n"));
  EXPECT_EQ(Field(record, "DataFileAttach4"), "-");
}

TEST_F(StdMailDataTest, NameOfAFileIsEncodedTwice) {
  const std::string parts = "--B\nContent-Type: a; name=\"a/b\"\n\nx\n--B--\n";
  const std::string saved = Field(RecordOfParts(parts, true), "DataFileAttach1");
  EXPECT_THAT(saved, StartsWith(Escaped(Tmp("a%252Fb")) + "\\nfile=a%2Fb\\n"));
  EXPECT_THAT(saved, HasSubstr("\\noriginalfile=a/b"));
  EXPECT_EQ(TempFile("a%252Fb"), "x\r\n");
  EXPECT_THAT(Field(RecordOfParts(parts, false), "DataFileAttach1"), HasSubstr("#1_a%252Fb\\n"));
}

TEST_F(StdMailDataTest, AttachmentsOfOneNameLeaveOneFile) {
  const std::string record = RecordOfParts(
      "--B\nContent-Type: a; name=f\n\nfirst\n--B\nContent-Type: a; name=f\n\n2\n--B--\n", true);
  EXPECT_EQ(TempFile("f"), "2\r\n");
  EXPECT_THAT(Field(record, "DataFileAttach1"), HasSubstr("\\nsize=7\\n"));
  EXPECT_THAT(Field(record, "DataFileAttach2"), HasSubstr("\\nsize=3\\n"));
  EXPECT_FALSE(HasTempFile("att1"));
  EXPECT_FALSE(HasTempFile("att2"));
}

TEST_F(StdMailDataTest, FileThatIsLostToAnotherOrToItsNameIsAFailure) {
  const auto part = [](const std::string& name) { return "--B\nContent-Type: a; name=" + name + "\n\nx\n"; };
  const std::string tooLong(300, 'n');
  struct Row {
    std::string parts;
    std::string failure;
  };
  for (const Row& row : {Row{part("f") + part("g"), ""}, Row{part("att1") + part("g"), ""},
                         Row{part("f") + part("f"), "one of two files called 'f' is lost"},
                         Row{part("f") + part("F"), "one of two files called 'F' is lost"},
                         Row{part("att2") + part("g"), "one of two files called 'att2' is lost"},
                         Row{part("mail.eml"), "one of two files called 'mail.eml' is lost"},
                         Row{part(tooLong), ""}, Row{part("..") + part("."), ""}}) {
    RecordOfParts(row.parts + "--B--\n", true);
    EXPECT_EQ(mail_.Ledger().loss.Text(), row.failure);
    RecordOfParts(row.parts + "--B--\n", false);
    EXPECT_EQ(mail_.Ledger().loss.Text(), "");
    mail_.DeleteLastTempfiles();
  }
}

TEST_F(StdMailDataTest, AttachmentThatCannotBeMovedHasNoSize) {
  RecordOfParts(kTextAndAttachment, true);
  folder_.MakeFolder("tmp\\g");
  const std::string record = RecordOfParts("--B\nContent-Type: a; name=g\n\nx\n--B--\n", true);
  EXPECT_EQ(Field(record, "DataFileAttach1"),
            Escaped(Tmp("g")) + "\\nfile=g\\ndate=09.05.2010 14:30:05\\noriginalfile=g");
}

TEST_F(StdMailDataTest, AttachmentStaysWhereItIsIfNoFileCanHaveItsName) {
  for (const std::string& name :
       {std::string(".."), std::string("."), std::string(" "), std::string(300, 'n')}) {
    const std::string part = "--B\nContent-Disposition: attachment; filename=\"" + name + "\"\n\n";
    const std::string record = RecordOfParts(
        "--B\nContent-Type: a; name=g\n\nfirst\n" + part + "second\n" + part + "third\n--B--\n", true);
    const std::string own = Trim(name);
    for (const std::string number : {"2", "3"}) {
      const std::string key = "FileAttach" + number;
      EXPECT_EQ(Field(record, "Data" + key),
                Escaped(Tmp(own)) + "\\nfile=" + name + "\\ndate=09.05.2010 14:30:05\\noriginalfile=" + name);
      EXPECT_EQ(mail_.Ledger().FileAt(key, Tmp(own)), Tmp("att" + number));
    }
    EXPECT_EQ(mail_.Ledger().FileAt("FileAttach1", Tmp("g")), Tmp("g"));
    EXPECT_EQ(mail_.Ledger().FileAt("File", Tmp("mail.eml")), Tmp("mail.eml"));
    EXPECT_EQ(TempFile("att2"), "second\r\n");
    EXPECT_EQ(TempFile("att3"), "third\r\n");
    EXPECT_EQ(mail_.Ledger().loss.Text(), "");
    mail_.DeleteLastTempfiles();
    EXPECT_FALSE(HasTempFile("att2"));
    RecordOfParts("--B\n\n--B\nContent-Type: a; name=g\n\nx\n--B--\n", true);
    EXPECT_EQ(mail_.Ledger().FileAt("FileAttach2", "other"), "other") << "of the mail before";
    mail_.DeleteLastTempfiles();
  }
}

TEST_F(StdMailDataTest, NameThatCannotBeDecodedIsNoAttachment) {
  const std::string record = RecordOfParts(
      "--B\nContent-Type: a; name==?x?Q?=ZZ?=\n\n--B\nContent-Type: a; name=2\n\n--B--\n", false);
  EXPECT_THAT(Field(record, "DataFileAttach1"), HasSubstr("#2_2\\n"));
  EXPECT_EQ(Field(record, "DataFileAttach2"), "-");
}

TEST_F(StdMailDataTest, AttachmentsBehindPosition32767AreNotTold) {
  std::string body;
  for (int i = 1; i <= 32'766; ++i)
    body += "--B\n";
  body += "--B\nContent-Type: a; name=last\n\n--B\nContent-Type: a; name=beyond\n\n--B--\n";
  const std::string record = RecordOfParts(body, false);
  EXPECT_THAT(Field(record, "DataFileAttach1"), HasSubstr("#32767_last\\n"));
  EXPECT_EQ(Field(record, "DataFileAttach2"), "-");
  EXPECT_EQ(Field(record, "Owner"), "Anna");
}

struct OriginalRow {
  const char* header;
  const char* line;  // after the date, "" if there is none
};

class OriginalNameTest : public StdMailDataTest, public testing::WithParamInterface<OriginalRow> {};

TEST_P(OriginalNameTest, NameIsTakenFromTheRawHeader) {
  const std::string record =
      RecordOfParts("--B\n" + std::string(GetParam().header) + "\n\nx\n--B--\n", false);
  EXPECT_THAT(Field(record, "DataFileAttach1"),
              testing::EndsWith("\\ndate=09.05.2010 14:30:05" + std::string(GetParam().line)));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OriginalNameTest,
    testing::Values(OriginalRow{"Content-Disposition: a; filename=f.txt", "\\noriginalfile=f.txt"},
                    OriginalRow{"Content-Type: a; name=\"a b\"; x=1", "\\noriginalfile=a b"},
                    OriginalRow{"Content-Type: a; name='a b'", "\\noriginalfile=a b"},
                    // The first word as it stands, with what follows it directly.
                    OriginalRow{"Content-Type: a; name=f; x=1", "\\noriginalfile=f;"},
                    OriginalRow{"Content-Type: a; name=f; x=1\nContent-Disposition: a;\n filename=\"g h\"",
                                "\\noriginalfile=g h"},
                    OriginalRow{"Content-Type: a; name=\"=?utf-8?B?w6Q=?=\"",
                                "\\noriginalfile==?utf-8?B?w6Q=?="},
                    OriginalRow{"Content-Disposition: a; filename*=utf-8''a%20b", ""},
                    OriginalRow{"Content-Disposition: a; FILENAME=f", ""},
                    OriginalRow{"Content-Type: a; Name=f", ""}));

TEST_F(StdMailDataTest, DescriptionHasTheNameThatTheSenderGaveToday) {
  const ScopedRules today(Rules::Today());
  struct Row {
    std::string header;
    std::string name;
    std::string safe;
  };
  for (const Row& row :
       {Row{"Content-Disposition: a; filename=a.bin;", "a.bin", "a.bin"},
        Row{"Content-Disposition: a; filename=\"a\\\"b.bin\"", "a\"b.bin", "a%22b.bin"},
        Row{"Content-Disposition: a; filename=\"100%.bin\"", "100%.bin", "100%25.bin"},
        Row{"Content-Disposition: a; filename=\"=?UTF-8?Q?a=C3?=\n =?UTF-8?Q?=A4?=\"", "aä", "aä"},
        Row{"Content-Disposition: a; filename*=UTF-8''%C3%A4%0D%0Ab", "ä  b", "ä%0D%0Ab"},
        Row{"Content-Disposition: a; FILENAME=f", "f", "f"}}) {
    const std::string description = UnescapeValue(
        Field(RecordOfParts("--B\n" + row.header + "\n\nx\n--B--\n", false), "DataFileAttach1"));
    EXPECT_EQ(GetLineValue(description, "originalfile"), row.name);
    EXPECT_THAT(description, HasSubstr("#1_" + row.safe + "\r\n"));
  }
  const std::string nameless = RecordOfParts("--B\nContent-Type: image/png\n\nx\n--B--\n", false);
  EXPECT_THAT(Field(nameless, "DataFileAttach1"), Not(HasSubstr("originalfile")));
}

TEST_F(StdMailDataTest, SizeIsThatOfTheMailAloneToday) {
  const auto sizes = [&] {
    MailboxBuilder box;
    box.Mail(kPlainHeaders).Mail(kPlainHeaders);
    Open(box.Text() + "\r\n");
    std::vector<double> read;
    while (mail_.ReadHeader(false))
      read.push_back(ReadNumber(Field(mail_.GetData("", false), "DataSize")));
    return read;
  };
  const std::vector<double> old = sizes();
  ASSERT_EQ(old.size(), 2U);
  EXPECT_GT(old[0], old[1]);
  const ScopedRules today(Rules::Today());
  EXPECT_THAT(sizes(), testing::ElementsAre(old[1], old[1]));
}

TEST_F(StdMailDataTest, HtmlTextIsDescribedIfTheMailHasOne) {
  const std::string parts = "--B\nContent-Type: text/html\n\n<p>\n--B--\n";
  EXPECT_EQ(Field(RecordOfParts(parts, true), "DataFileHTML"),
            Escaped(Tmp("mail.html")) + "\\nfile=mail.html\\ndate=09.05.2010 14:30:05\\nsize=5\\nattr=A");
  EXPECT_EQ(Field(RecordOfParts(parts, false), "DataFileHTML"), "-");
  EXPECT_EQ(Field(RecordOf(kPlainHeaders, true), "DataFileHTML"), "-");
}

TEST_F(StdMailDataTest, UnsavedNameIsEncoded) {
  EXPECT_THAT(Field(RecordOf("Date: 9 May 2010 14:30:05\nMessage-ID: <a\x7F\xE9\xE4>\n"), "DataFile"),
              StartsWith("20100509143005-a\x7F%E9\xE4.eml\\n"));
}

TEST_F(StdMailDataTest, FileInfoIsSizeAndAttributes) {
  EXPECT_EQ(mail_.GetFileInfo(folder_.Path("missing")), "");
  EXPECT_EQ(mail_.GetFileInfo(""), "");
  const std::string path = folder_.Write("f", "12345");
  EXPECT_EQ(mail_.GetFileInfo(path), "\r\nsize=5\r\nattr=A");
  os::WriteAttributes(path, os::kReadOnly);
  EXPECT_EQ(mail_.GetFileInfo(path), "\r\nsize=5\r\nattr=AR");
}

TEST_F(StdMailDataTest, FileInfoOfWhatIsNoPlainFileTellsOfNothingToBeArchived) {
  EXPECT_EQ(mail_.GetFileInfo("C:\\dev\\null"), "\r\nsize=0");
}

}  // namespace
}  // namespace vorlent
