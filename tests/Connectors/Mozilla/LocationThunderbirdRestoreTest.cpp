#include <cstdint>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/MailRestore.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Platform/Rules.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedSizeLimit.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::string_literals;

// Bytes that hold every value, and no order.
std::string Noise(std::size_t size) {
  std::uint32_t state = 42;
  std::string bytes(size, '\0');
  for (char& c : bytes) {
    state = state * 1664525 + 1013904223;
    c = static_cast<char>(state >> 24);
  }
  return bytes;
}

class RestoreTest : public ThunderbirdFixture {
 protected:
  RestoreTest() {
    tree.AddProfile("p", {"a"});
    mailbox = tree.AccountFolder("p", "a") + "Inbox";
  }

  // An item of the host whose stored mail holds these bytes.
  std::shared_ptr<test::RecordingItem> Store(const std::string& bytes) {
    item = host.MakeItem();
    item->Data = {{"From", "a@b.c"}, {"File", "mail.eml"}};
    item->Files["File"] = archive.Write("mail.eml", bytes);
    item->OutsideAddress = "loc://Archive/1 2";
    host.Global.ItemsById["id:1"] = item;
    return item;
  }

  void Attach(const std::string& key, const std::string& name, const std::string& bytes) {
    item->Data.emplace_back(key, "x\r\nfile=" + name + "\r\nsize=1");
    item->Files[key] = archive.Write(key, bytes);
  }

  // Runs a command on a connector of that address and gives what the mailbox then holds.
  std::string Run(const std::string& cmd, const std::string& address = "thunderbird://p/a/Inbox/-") {
    Connect(address);
    connector->InitLocation(address);
    host.Log.Clear();
    EXPECT_EQ(connector->ExecuteAction(cmd), "");
    return tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox") ? ReadBytes(mailbox) : "(none)";
  }

  std::string Restore() { return Run("Restore:id:1"); }

  // The boundary that a restored mail was given.
  static std::string BoundaryIn(const std::string& mail) {
    const std::string mark = "Content-Type: multipart/mixed; boundary=\"";
    const std::size_t at = mail.find(mark);
    return at == std::string::npos ? "" : mail.substr(at + mark.size(), 36);
  }

  static std::string PartOf(const std::string& boundary, const std::string& name, const std::string& lines) {
    return "--" + boundary + "\r\nContent-Type: application/octet-stream; name=\"" + name +
           "\"\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=\"" + name +
           "\"\r\n\r\n" + lines;
  }

  TemporaryFolder archive;
  std::string mailbox;
  std::shared_ptr<test::RecordingItem> item;
};

// --- The command

TEST_F(RestoreTest, ActionsAreRestoreAndShortcut) {
  Connect("thunderbird://p");
  EXPECT_EQ(connector->GetActions(), "Restore,Shortcut");
}

TEST_F(RestoreTest, OtherVerbsDoNothing) {
  Store("Subject: x\r\n\r\ny\r\n");
  for (const std::string cmd :
       {"", "restore:id:1", "Delete:id:1", "Restore2:id:1", ":id:1", " Restore:id:1"}) {
    EXPECT_EQ(Run(cmd), "(none)") << cmd;
    EXPECT_THAT(host.Log.Lines(), IsEmpty()) << cmd;
  }
}

TEST_F(RestoreTest, UnknownItemIsRaised) {
  EXPECT_EQ(Run("Restore:x:y"), "(none)");
  EXPECT_THAT(host.Log.Lines(), ElementsAre(Raised("ID 'x:y' nicht gefunden!")));
  EXPECT_EQ(Run("Shortcut"), "(none)");
  EXPECT_THAT(host.Log.Lines(), ElementsAre(Raised("ID '' nicht gefunden!")));
}

TEST_F(RestoreTest, LocationWithoutMailboxesHasNoFolderToRestoreTo) {
  Store("Subject: x\r\n\r\ny\r\n");
  for (const std::string verb : {"Restore", "Shortcut"}) {
    Run(verb + ":id:1", "thunderbird://p/a/*");
    EXPECT_THAT(host.Log.Lines(), ElementsAre(Raised(verb + ": Folder not found")));
  }
}

TEST_F(RestoreTest, QuietErrorsKeepTheMissingFolderToThemselves) {
  Store("Subject: x\r\n\r\ny\r\n");
  struct Row {
    bool silent;
    bool suppressed;
  };
  for (const Row& row : {Row{true, false}, Row{false, true}, Row{true, true}}) {
    host.Global.Error->IsSilent = row.silent;
    host.Global.Error->IsSuppressed = row.suppressed;
    Run("Restore:id:1", "thunderbird://p/a/*");
    EXPECT_THAT(host.Log.Lines(), IsEmpty());
  }
}

TEST_F(RestoreTest, FlagOfTheErrorsThatCannotBeReadIsNotSet) {
  Store("Subject: x\r\n\r\ny\r\n");
  const std::string raised = Raised("Restore: Folder not found");
  struct Row {
    std::string call;
    bool silent;
    bool suppressed;
    Lines lines;
  };
  for (const Row& row : {
           Row{"Error.Silent", false, false, {raised}},
           Row{"Error.Silent", true, false, {raised}},
           Row{"Error.Silent", false, true, {}},
           Row{"Error.Suppressed", false, false, {raised}},
           Row{"Error.Suppressed", true, false, {}},
           Row{"Error.Suppressed", false, true, {raised}},
           // The first asking for the object is the one for the first flag.
           Row{"Global.ErrorFactory", true, false, {raised}},
           Row{"ErrorFactory.Error", false, true, {}},
       }) {
    SCOPED_TRACE(row.call);
    Connect("thunderbird://p/a/*");
    connector->InitLocation("thunderbird://p/a/*");
    host.Global.Error->IsSilent = row.silent;
    host.Global.Error->IsSuppressed = row.suppressed;
    host.Log.Clear();
    host.Log.FailOn(row.call);
    EXPECT_EQ(connector->ExecuteAction("Restore:id:1"), "");
    EXPECT_EQ(host.Log.Lines(), row.lines);
    host.Log.ClearFaults();
  }
}

TEST_F(RestoreTest, MissingSourceIsShownAndNothingWritten) {
  Store("x");
  item->Files["File"] = "C:\\nowhere\\mail.eml";
  EXPECT_EQ(Restore(), "(none)");
  EXPECT_THAT(
      platform->CallsOf("ShowMessage"),
      ElementsAre(
          "ShowMessage(\"C:\\nowhere\\mail.eml\",\"Quell-Datei existiert nicht\",Information,Ok) -> Ok"));
  item->Files.clear();
  EXPECT_EQ(Restore(), "(none)");
  EXPECT_EQ(platform->CountOf("ShowMessage"), 2);
}

class BoxlessPlatform : public RecordingPlatform {
 public:
  MessageAnswer ShowMessage(std::string_view, std::string_view, MessageIcon, MessageButtons) override {
    throw Failure(ErrorNumber::Host, "no box can be shown");
  }
};

TEST_F(RestoreTest, BoxThatCannotBeShownIsSwallowed) {
  Store("x");
  item->Files.clear();
  Connect("thunderbird://p/a/Inbox/-");
  connector->InitLocation("thunderbird://p/a/Inbox/-");
  const ScopedPlatform scope(std::make_shared<BoxlessPlatform>());
  EXPECT_EQ(connector->ExecuteAction("Restore:id:1"), "");
}

TEST_F(RestoreTest, FirstMailboxOfTheWalkIsTheTarget) {
  tree.AddMailbox("p", "a", "B");
  tree.AddMailbox("p", "a", "A");
  tree.AddMailbox("p", "a", "A.sbd/C");
  Store("Subject: x\r\n\r\ny\r\n");
  Run("Restore:id:1", "thunderbird://p");
  EXPECT_EQ(ReadBytes(tree.AccountFolder("p", "a") + "A"), "From - \r\nSubject: x\r\n\r\ny\r\n\r\n");
  EXPECT_EQ(ReadBytes(tree.AccountFolder("p", "a") + "B"), "");
  EXPECT_EQ(connector->Count(), 0);
}

// --- Mails without attachments

struct PlainRow {
  std::string source;
  std::string written;
};

TEST_F(RestoreTest, MailIsCopiedLineByLine) {
  for (const PlainRow& row : {
           // A separator is put in front, and an empty line after it.
           PlainRow{"Subject: x\r\nTo: y\r\n\r\nbody\r\n\r\nmore\r\n",
                    "From - \r\nSubject: x\r\nTo: y\r\n\r\nbody\r\n\r\nmore\r\n\r\n"},
           PlainRow{"From - Sun May 09\r\nSubject: x\r\n\r\nbody\r\n",
                    "From - Sun May 09\r\nSubject: x\r\n\r\nbody\r\n\r\n"},
           PlainRow{"from - x\r\nSubject: x\r\n\r\n", "From - \r\nfrom - x\r\nSubject: x\r\n\r\n\r\n"},
           // The content type comes last, with its folded lines.
           PlainRow{
               "Content-Type: text/plain;\r\n charset=utf-8\r\nSubject: x\r\n\r\nbody\r\n",
               "From - \r\nSubject: x\r\nContent-Type: text/plain;\r\n charset=utf-8\r\n\r\nbody\r\n\r\n"},
           PlainRow{
               "CONTENT-TYPE :text/html\r\n\tx=y\r\nSubject: x\r\n\tfolded\r\n\r\nbody\r\n",
               "From - \r\nSubject: x\r\n\tfolded\r\nCONTENT-TYPE :text/html\r\n\tx=y\r\n\r\nbody\r\n\r\n"},
           // Of two content types the first counts.
           PlainRow{"Content-Type: a/b\r\nContent-Type: c/d\r\n\r\n",
                    "From - \r\nContent-Type: a/b\r\n\r\n\r\n"},
           // A multipart mail keeps its parts.
           PlainRow{
               "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n",
               "From - \r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n\r\n"},
           // What begins or ends early.
           PlainRow{"", "\r\n"},
           PlainRow{"\r\n", "From - \r\n\r\n\r\n"},
           PlainRow{"\r\nbody", "From - \r\n\r\nbody\r\n\r\n"},
           PlainRow{"Subject: x", "From - \r\nSubject: x\r\n\r\n"},
           PlainRow{"no colon\r\n\r\n", "From - \r\nno colon\r\n\r\n\r\n"},
           PlainRow{" folded\r\n\r\nb\r\n", "From - \r\n folded\r\n\r\nb\r\n\r\n"},
           // Bytes of any kind pass; a lone line feed ends no line.
           PlainRow{"Subject: \xE4\xF6\r\n\r\n\xC3\xA4\n\0z\r\n"s,
                    "From - \r\nSubject: \xE4\xF6\r\n\r\n\xC3\xA4\n\0z\r\n\r\n"s},
       }) {
    Store(row.source);
    std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
    EXPECT_EQ(Restore(), row.written) << row.source;
  }
}

TEST_F(RestoreTest, LineThatComesInPiecesStaysOneLine) {
  const ScopedRules rules(Rules::Today());
  const std::string line(LineFile::kLongestPiece + 1, 'x');
  const std::string mail = "From - \r\nX: " + line + "\r\nSubject: x\r\n\r\n" + line + "\r\nend\r\n";
  Store(mail);
  EXPECT_TRUE(Restore() == mail + "\r\n");
}

TEST_F(RestoreTest, RestoredMailIsAppended) {
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  Store("Subject: x\r\n\r\nbody\r\n");
  const std::string written = "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n";
  EXPECT_EQ(Restore(), MailOf("1") + written);
  EXPECT_EQ(Restore(), MailOf("1") + written + written);
  EXPECT_TRUE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox.msf"));
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

TEST_F(RestoreTest, MailIsAppendedToTheBytesThatAreThereWhateverTheyEndIn) {
  for (const std::string& before : {"From - x\r\n\r\nhello\r\n"s, "hello"s, "hello\n"s, ""s}) {
    tree.AddMailbox("p", "a", "Inbox", before);
    Store("Subject: x\r\n\r\nbody\r\n");
    EXPECT_EQ(Restore(), before + "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n");
    EXPECT_TRUE(connector->HasRestored());
  }
}

// --- Attachments

TEST_F(RestoreTest, MailWithAttachmentsBecomesTheFirstPartOfAMixedOne) {
  Store("Subject: x\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nbody\r\n");
  Attach("FileAttach1", "sub\\a b.txt", "Hello");
  Attach("FileAttach2", "c.bin", "");
  const std::string written = Restore();
  const std::string boundary = BoundaryIn(written);
  EXPECT_EQ(boundary.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
  EXPECT_EQ(written, "From - \r\nSubject: x\r\nContent-Type: multipart/mixed; boundary=\"" + boundary +
                         "\"\r\n\r\n--" + boundary +
                         "\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nbody\r\n" +
                         PartOf(boundary, "a b.txt", "SGVsbG8=\r\n") + PartOf(boundary, "c.bin", "") + "--" +
                         boundary + "--\r\n\r\n");
}

TEST_F(RestoreTest, PartsOfAMixedMailTakeTheAttachmentsInFrontOfTheirClosingLine) {
  Store(
      "Content-Type: multipart/mixed;\r\n boundary=\"own\"\r\nSubject: "
      "x\r\n\r\npreamble\r\n--own\r\n\r\nbody\r\n"
      "--own--\r\nepilogue\r\n--own--\r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  EXPECT_EQ(Restore(),
            "From - \r\nSubject: x\r\nContent-Type: multipart/mixed;\r\n boundary=\"own\"\r\n\r\n"
            "preamble\r\n--own\r\n\r\nbody\r\n" +
                PartOf("own", "a.txt", "SGVsbG8=\r\n") + "--own--\r\nepilogue\r\n--own--\r\n\r\n");
}

TEST_F(RestoreTest, MissingClosingLineIsWrittenBehindTheAttachments) {
  Store("Content-Type: multipart/mixed; boundary=own\r\n\r\n--own\r\n\r\nbody\r\n--own-- \r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  EXPECT_EQ(
      Restore(),
      "From - \r\nContent-Type: multipart/mixed; boundary=own\r\n\r\n--own\r\n\r\nbody\r\n--own-- \r\n" +
          PartOf("own", "a.txt", "SGVsbG8=\r\n") + "--own--\r\n\r\n");
}

TEST_F(RestoreTest, OnlyAMixedMailWithABoundaryTakesAttachmentsIntoItsOwnParts) {
  for (const std::string type :
       {"Content-Type: Multipart/Mixed; boundary=own", "Content-Type: multipart/mixed",
        "Content-Type: multipart/alternative; boundary=own", "X: y"}) {
    std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
    Store(type + "\r\n\r\n--own\r\n\r\nbody\r\n--own--\r\n");
    Attach("FileAttach1", "a.txt", "Hello");
    const std::string written = Restore();
    const std::string boundary = BoundaryIn(written);
    EXPECT_EQ(boundary.size(), 36U) << type;
    const std::string ownType = type == "X: y" ? "" : type + "\r\n";
    const std::string header = type == "X: y" ? "X: y\r\n" : "";
    EXPECT_EQ(written, "From - \r\n" + header + "Content-Type: multipart/mixed; boundary=\"" + boundary +
                           "\"\r\n\r\n--" + boundary + "\r\n" + ownType +
                           "\r\n--own\r\n\r\nbody\r\n--own--\r\n" +
                           PartOf(boundary, "a.txt", "SGVsbG8=\r\n") + "--" + boundary + "--\r\n\r\n");
  }
}

TEST_F(RestoreTest, TypeMayStandWithinBlanksAndTabs) {
  Store("Content-Type:\t multipart/mixed \t; boundary=own\r\n\r\n--own--\r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  EXPECT_EQ(Restore(), "From - \r\nContent-Type:\t multipart/mixed \t; boundary=own\r\n\r\n" +
                           PartOf("own", "a.txt", "SGVsbG8=\r\n") + "--own--\r\n\r\n");
}

TEST_F(RestoreTest, BoundaryThatCannotBeDecodedCountsAsNone) {
  const std::string type = "Content-Type: multipart/mixed; boundary=\"=?utf-8?Q?=XY?=\"";
  Store(type + "\r\n\r\nbody\r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  const std::string written = Restore();
  const std::string boundary = BoundaryIn(written);
  EXPECT_EQ(boundary.size(), 36U);
  EXPECT_EQ(written, "From - \r\nContent-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n--" +
                         boundary + "\r\n" + type + "\r\n\r\nbody\r\n" +
                         PartOf(boundary, "a.txt", "SGVsbG8=\r\n") + "--" + boundary + "--\r\n\r\n");
}

TEST_F(RestoreTest, OnlyFieldsThatBeginWithFileAttachAreAttachments) {
  Store("Subject: x\r\n\r\nbody\r\n");
  Attach("fileattach1", "a", "1");
  Attach("FileAttac", "b", "2");
  Attach("XFileAttach1", "c", "3");
  EXPECT_EQ(Restore(), "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n");
  Attach("FileAttach", "d", "4");
  const std::string written = Restore();
  EXPECT_NE(written.find(PartOf(BoundaryIn(written), "d", "NA==\r\n")), std::string::npos);
}

TEST_F(RestoreTest, MissingAttachmentLeavesItsPartEmpty) {
  Store("Content-Type: multipart/mixed; boundary=own\r\n\r\n--own--\r\n");
  Attach("FileAttach1", "gone", "x");
  item->Files["FileAttach1"] = "C:\\nowhere\\gone";
  Attach("FileAttach2", "a.txt", "Hello");
  item->Data.emplace_back("FileAttach3", "no name");
  EXPECT_EQ(Restore(), "From - \r\nContent-Type: multipart/mixed; boundary=own\r\n\r\n" +
                           PartOf("own", "gone", "") + PartOf("own", "a.txt", "SGVsbG8=\r\n") +
                           PartOf("own", "", "") + "--own--\r\n\r\n");
}

TEST_F(RestoreTest, AttachmentsGoBackAsTheyWereSentWhereTheHostHasChosenSo) {
  Store("Content-Type: multipart/mixed; boundary=own\r\n\r\n--own--\r\n");
  Attach("FileAttach1", "R%FCck.pdf\r\ntype=application/pdf", "Hello");
  Attach("FileAttach2", "a.txt", "Hello");
  ChooseRules({.attachmentHeaders = AttachmentHeaders::AsSent});
  const std::string written = Restore();
  ChooseRules(Rules::Windows());
  EXPECT_EQ(written,
            "From - \r\nContent-Type: multipart/mixed; boundary=own\r\n\r\n"
            "--own\r\nContent-Type: application/pdf;\r\n name=\"=?UTF-8?B?UsO8Y2sucGRm?=\"\r\n"
            "Content-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment;\r\n filename*=UTF-8''R%C3%BCck.pdf\r\n\r\nSGVsbG8=\r\n" +
                PartOf("own", "a.txt", "SGVsbG8=\r\n") + "--own--\r\n\r\n");
}

TEST_F(RestoreTest, AttachmentsGoBackIntoTheMultipartsThatTheyStoodIn) {
  const ScopedRules today(Rules::Today());
  const std::string head = "Subject: x\r\nContent-Type: Multipart/Related; boundary=R\r\n\r\n--R\r\n";
  const std::string inner = "Content-Type: multipart/signed; boundary=S\r\n\r\n--S\r\n\r\ntext\r\n";
  Store("From - \r\n" + head + inner + "--S-- \r\n--R--\t\r\n\r\n");
  Attach("FileAttach1", "a.png\r\ntype=image/png\r\ncontentid=<1@x>\r\ndisposition=inline\r\nboundary=R",
         "AAA");
  Attach("FileAttach2", "smime.p7s\r\ntype=application/pkcs7-signature\r\nboundary=S", "AAA");
  Attach("FileAttach3", "lost.txt\r\ntype=text/plain\r\nboundary=gone", "AAA");
  const auto part = [](const std::string& boundary, const std::string& type, const std::string& name,
                       const std::string& shown) {
    return "--" + boundary + "\r\nContent-Type: " + type + "; name=\"" + name +
           "\"\r\nContent-Transfer-Encoding: base64\r\n" + shown + "; filename=\"" + name +
           "\"\r\n\r\nQUFB\r\n";
  };
  EXPECT_EQ(Restore(),
            "From - \r\nSubject: x\r\nContent-Type: Multipart/Related; boundary=R\r\n\r\n--R\r\n" + inner +
                part("S", "application/pkcs7-signature", "smime.p7s", "Content-Disposition: attachment") +
                "--S-- \r\n" +
                part("R", "image/png", "a.png", "Content-ID: <1@x>\r\nContent-Disposition: inline") +
                part("R", "text/plain", "lost.txt", "Content-Disposition: attachment") + "--R--\t\r\n\r\n");
}

TEST_F(RestoreTest, AttachmentOfUnknownPlaceGoesBehindAMailThatIsNotMixed) {
  const ScopedRules today(Rules::Today());
  Store("Content-Type: multipart/related; boundary=R\r\n\r\n--R\r\n\r\ntext\r\n--R--\r\n");
  Attach("FileAttach1", "a.png\r\ntype=image/png\r\nboundary=R", "AAA");
  Attach("FileAttach2", "b.png\r\ntype=image/png", "AAA");
  const std::string mail = Restore();
  const std::string boundary = BoundaryIn(mail);
  EXPECT_EQ(boundary.size(), 36U);
  EXPECT_THAT(mail, testing::ContainsRegex("--R\r\nContent-Type: image/png; name=\"a.png\""));
  EXPECT_THAT(mail, testing::HasSubstr("QUFB\r\n--R--\r\n--" + boundary +
                                       "\r\nContent-Type: image/png; name=\"b.png\""));
  EXPECT_THAT(mail, testing::EndsWith("QUFB\r\n--" + boundary + "--\r\n\r\n"));
}

TEST_F(RestoreTest, MailThatEndsInAnEmptyLineGetsNoOtherToday) {
  const ScopedRules today(Rules::Today());
  for (const std::string text : {"body\r\n\r\n", "body\r\n\r\n\r\n", "\r\n"}) {
    std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
    Store("From - \r\nSubject: x\r\n\r\n" + text);
    EXPECT_EQ(Restore(), "From - \r\nSubject: x\r\n\r\n" + text);
  }
  std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
  Store("From - \r\nSubject: x\r\n\r\nbody");
  EXPECT_EQ(Restore(), "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n");
}

// --- Encoding a file

class EncodeTest : public RestoreTest {
 protected:
  std::string Encoded(const std::string& bytes, std::int16_t mode) {
    const std::string in = archive.Write("in", bytes);
    const std::string out = archive.Path("out");
    TextWriter writer(out, os::File::Mode::Create);
    WriteFileEncoded(writer, in, mode);
    writer.Close();
    return ReadBytes(out);
  }
};

TEST_F(EncodeTest, Base64LinesHold54BytesEach) {
  const std::string full = Base64Encode(std::string(54, 'x'));
  ASSERT_EQ(full.size(), 72U);
  EXPECT_EQ(Encoded("", kBase64File), "");
  EXPECT_EQ(Encoded("x", kBase64File), "eA==\r\n");
  EXPECT_EQ(Encoded(std::string(53, 'x'), kBase64File), Base64Encode(std::string(53, 'x')) + "\r\n");
  EXPECT_EQ(Encoded(std::string(55, 'x'), kBase64File), full + "\r\neA==\r\n");
  EXPECT_EQ(Encoded(std::string(108, 'x'), kBase64File), full + "\r\n" + full + "\r\n");
  EXPECT_EQ(Encoded(std::string(109, 'x'), kBase64File), full + "\r\n" + full + "\r\neA==\r\n");
}

TEST_F(EncodeTest, FileOfExactlyOneLineComesOutEmpty) {
  EXPECT_EQ(Base64Decode(Encoded(std::string(54, 'x'), kBase64File)), "");
  EXPECT_EQ(Encoded(std::string(54, 'x'), kBase64File), "\r\n");
}

TEST_F(EncodeTest, FileOfOneLineComesOutWholeToday) {
  const ScopedRules today({.filesOfOneLine = FilesOfOneLine::ComeBackWhole});
  EXPECT_EQ(Encoded(std::string(54, 'x'), kBase64File), Base64Encode(std::string(54, 'x')) + "\r\n");
  EXPECT_FALSE(ComesBackEmpty(54));
}

TEST_F(EncodeTest, QuotedPrintableLinesAreCutAt70Characters) {
  const std::string line(70, 'a');
  for (const auto& [in, out] : std::vector<std::pair<std::string, std::string>>{
           {"", ""},
           {"a=b\r\n\r\nc", "a=3Db\r\n\r\nc\r\n"},
           {line + "\r\n", line + "\r\n"},
           {line + "b\r\n", line + "=\r\nb\r\n"},
           {line + line + "\r\n", line + "=\r\n" + line + "\r\n"},
       }) {
    EXPECT_EQ(Encoded(in, kQuotedPrintableFile), out);
  }
}

TEST_F(EncodeTest, AnyOtherModeCopiesLineByLine) {
  for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{3}, std::int16_t{-1}}) {
    EXPECT_EQ(Encoded("a=b\r\n\r\nc", mode), "a=b\r\n\r\nc\r\n");
  }
}

TEST_F(EncodeTest, MissingFileWritesNothing) {
  const std::string out = archive.Path("out");
  TextWriter writer(out, os::File::Mode::Create);
  for (const std::int16_t mode : {std::int16_t{0}, kBase64File, kQuotedPrintableFile}) {
    WriteFileEncoded(writer, "C:\\nowhere", mode);
    WriteFileEncoded(writer, "", mode);
    WriteFileEncoded(writer, archive.Path(), mode);
  }
  writer.Close();
  EXPECT_EQ(ReadBytes(out), "");
}

TEST_F(EncodeTest, LineThatCannotBeWrittenIsLeftOutAndTheNextOnesFollow) {
  std::string source;
  for (int i = 0; i < 20'000; ++i)
    source += "line " + std::to_string(i) + "\r\n";
  for (const std::int16_t mode : {std::int16_t{0}, kBase64File, kQuotedPrintableFile}) {
    SCOPED_TRACE(mode);
    const std::string whole = Encoded(source, mode);
    std::string written;
    {
      const DiskFault fault({.calls = DiskCall::Write, .pathEnd = "/out"});
      written = Encoded(source, mode);
      EXPECT_TRUE(fault.WasReached());
    }
    // What was collected for the call that failed is gone, and the line during which it was made.
    ASSERT_LT(written.size(), whole.size());
    ASSERT_GT(written.size(), whole.size() / 2);
    const std::size_t gone = whole.size() - written.size();
    EXPECT_TRUE(whole.substr(gone) == written);
    EXPECT_EQ(whole.substr(gone - 2, 2), "\r\n");
  }
}

TEST_F(EncodeTest, FileThatCannotBeReadIsLeftOut) {
  for (const std::int16_t mode : {std::int16_t{0}, kBase64File, kQuotedPrintableFile}) {
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read}) {
      const std::string in = archive.Write("in", "text");
      TextWriter writer(archive.Path("out"), os::File::Mode::Create);
      const DiskFault fault({.calls = call, .pathEnd = "/in"});
      WriteFileEncoded(writer, in, mode);
      EXPECT_TRUE(fault.WasReached());
      writer.WriteLine("next");
      writer.Close();
      EXPECT_EQ(archive.Read("out"), "next\r\n");
    }
  }
}

TEST_F(RestoreTest, ForwardedMailGoesBackAsOne) {
  const ScopedRules today(Rules::Today());
  Store("Subject: x\r\n\r\ntext\r\n");
  Attach("FileAttach1", "part2.eml", "Subject: inner\n\ninner\r\ntext");
  item->Data.back().second += "\r\ntype=message/rfc822";
  const std::string mail = Restore();
  EXPECT_THAT(mail, testing::HasSubstr("\r\nContent-Type: message/rfc822; name=\"part2.eml\"\r\n"
                                       "Content-Transfer-Encoding: 8bit\r\n"
                                       "Content-Disposition: attachment; filename=\"part2.eml\"\r\n\r\n"
                                       "Subject: inner\n\ninner\r\ntext\r\n--" +
                                       BoundaryIn(mail) + "--\r\n"));
}

TEST_F(RestoreTest, LinesOfAForwardedMailThatWouldSeparateAreQuoted) {
  const ScopedRules today(Rules::Today());
  Store("Subject: x\r\n\r\ntext\r\n");
  Attach("FileAttach1", "part2.eml", "Subject: inner\n\nFrom here\n>From there\r\n>to\n");
  item->Data.back().second += "\r\ntype=message/rfc822";
  EXPECT_THAT(Restore(),
              testing::HasSubstr("\r\n\r\nSubject: inner\n\n>From here\n>>From there\r\n>to\n\r\n--"));
}

TEST_F(RestoreTest, MailThatIsOneFileComesBackAsOne) {
  const ScopedRules today(Rules::Today());
  const std::string before = "Subject: scan\r\nX-Content: a\r\n";
  const std::string type = "Content-Type: application/pdf;\r\n name=scan.pdf\r\n";
  const std::string rest = "\r\nJVBERg==\r\n\r\n";
  for (const std::string encoding :
       {"", "Content-Transfer-Encoding: base64\r\n", "content-transfer-encoding:\r\n quoted-printable\r\n"}) {
    RemoveExactFile(mailbox);
    Store(before + type + encoding + "To: b\r\n\r\n");
    Attach("FileAttach1", "scan.pdf", "%PDF");
    EXPECT_EQ(Restore(),
              "From - \r\n" + before + "To: b\r\n" + type + "Content-Transfer-Encoding: base64\r\n" + rest);
  }
}

TEST_F(RestoreTest, MailOfAFileWithMoreBesideItGetsParts) {
  const ScopedRules today(Rules::Today());
  const std::string header = "Subject: scan\r\nContent-Type: application/pdf\r\n\r\n";
  Store(header + "JVBERg==\r\n");
  Attach("FileAttach1", "note.txt", "note");
  EXPECT_THAT(Restore(), testing::HasSubstr("Content-Type: application/pdf\r\n\r\nJVBERg==\r\n"));
  Store(header);
  Attach("FileAttach1", "note.txt", "note");
  Attach("FileAttach2", "scan.pdf", "%PDF");
  EXPECT_NE(BoundaryIn(Restore()), "");
}

TEST_F(RestoreTest, ForwardedMailThatWouldDivideItsMailGoesBackAsBytes) {
  const ScopedRules today(Rules::Today());
  const std::string inner = "Subject: inner\n\n--X\nA: b\n";
  Store("Subject: x\r\nContent-Type: multipart/mixed; boundary=X\r\n\r\n--X\r\n\r\ntext\r\n--X--\r\n");
  Attach("FileAttach1", "part2.eml", inner);
  item->Data.back().second += "\r\ntype=message/rfc822";
  const std::string mail = Restore();
  EXPECT_THAT(mail, testing::HasSubstr("\r\nContent-Type: application/octet-stream; name=\"part2.eml\"\r\n"));
  EXPECT_THAT(mail, testing::HasSubstr(Base64Encode(inner.substr(0, 54))));
}

// --- There and back

TEST_F(RestoreTest, RestoredMailReadsAsTheSameMail) {
  const std::vector<std::size_t> sizes = {0, 1, 53, 54, 55, 108, 5000000};
  Store(
      "From - Sun May 09 14:30:05 2010\r\nSubject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?=\r\nMessage-ID: <1@x>\r\n"
      "Date: Sun, 9 May 2010 14:30:05 +0200\r\nContent-Type: text/plain\r\n\r\nFirst line\r\n\r\nLast "
      "line\r\n");
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    Attach("FileAttach" + std::to_string(i + 1), "f" + std::to_string(i) + ".bin", Noise(sizes[i]));
  }
  tree.AddMailbox("p", "a", "Inbox", MailOf("0"));
  Connect("thunderbird://p/a/Inbox/-");
  connector->InitLocation("thunderbird://p/a/Inbox/-");
  connector->ExecuteAction("Restore:id:1");

  StdMail mail;
  mail.SetMailboxFile(mailbox);
  mail.Setmailtmppfad(temporary.Path() + "\\");
  mail.InitStream();
  ASSERT_TRUE(mail.ReadHeader(true));
  ASSERT_TRUE(mail.ReadHeader(true));
  const std::string record = mail.GetData("k", true);
  EXPECT_EQ(GetParam(record, "Text"),
            "Gr\xFC\xDF"
            "e");
  EXPECT_EQ(GetParam(record, "ID"), "20100509143005-1@x");
  const std::string text = ReadBytes(PeekToken(GetParam(record, "DataFile"), "\r\n"));
  EXPECT_NE(text.find("Content-Type: text/plain\r\n\r\nFirst line\r\n\r\nLast line\r\n"), std::string::npos);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const std::string field = GetParam(record, "DataFileAttach" + std::to_string(i + 1));
    EXPECT_EQ(GetLineValue(field, "originalfile"), "f" + std::to_string(i) + ".bin");
    const std::string bytes = ReadBytes(PeekToken(field, "\r\n"));
    EXPECT_TRUE(bytes == (sizes[i] == 54 ? std::string() : Noise(sizes[i]))) << sizes[i];
  }
  EXPECT_EQ(GetParam(record, "DataFileAttach8"), "");
  EXPECT_FALSE(mail.ReadHeader(true));
}

// --- Shortcuts

TEST_F(RestoreTest, ShortcutIsTheHeaderAndALink) {
  Store(
      "Subject: x\r\nContent-Type: multipart/mixed; boundary=own\r\nTo: "
      "y\r\n\r\n--own\r\n\r\nbody\r\n--own--\r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  EXPECT_EQ(Run("Shortcut:id:1"),
            "From - \r\nSubject: x\r\nTo: y\r\nContent-Type: text/html\r\n\r\n<A HREF=\"sendarium:" +
                UrlEncode("loc://Archive/1 2") +
                "\">Mail aus Archiv \xF6"
                "ffnen</A>\r\n\r\n");
}

TEST_F(RestoreTest, ShortcutOfAHeaderWithoutAnEndHasNoLink) {
  Store("Subject: x\r\n");
  Attach("FileAttach1", "a.txt", "Hello");
  EXPECT_EQ(Run("Shortcut:id:1"), "From - \r\nSubject: x\r\n\r\n");
}

// --- Folders of the mailbox

TEST_F(RestoreTest, FoldersAndParentMailboxesAreMade) {
  Store("Subject: x\r\n\r\nbody\r\n");
  tree.AddFile("p", "a", "one", "kept");
  const std::string address = "thunderbird://p/a/one/two/three/-";
  Run("Restore:id:1", address);
  const std::string folder = tree.AccountFolder("p", "a");
  EXPECT_EQ(ReadBytes(folder + "one"), "kept");
  EXPECT_EQ(ReadBytes(folder + "one.sbd\\two"), "");
  EXPECT_EQ(ReadBytes(folder + "one.sbd\\two.sbd\\three"), "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n");
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/one.msf"));
  EXPECT_FALSE(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/one.sbd/two.sbd/three.msf"));
}

TEST_F(RestoreTest, MailboxItselfIsNotMadeWithItsPath) {
  EnsureMailboxPath(archive.Path("a.sbd\\b.sbd\\c"));
  EXPECT_EQ(archive.Read("a"), "");
  EXPECT_EQ(archive.Read("a.sbd/b"), "");
  EXPECT_TRUE(archive.Exists("a.sbd/b.sbd"));
  EXPECT_FALSE(archive.Exists("a.sbd/b.sbd/c"));
  EnsureMailboxPath(archive.Path("plain\\c"));
  EXPECT_TRUE(archive.Exists("plain"));
  EXPECT_FALSE(archive.Exists("plain/c"));
}

// --- Failures

TEST_F(RestoreTest, MailboxThatCannotBeWrittenIsSwallowed) {
  Store("Subject: x\r\n\r\nbody\r\n");
  tree.AddFolder("p", "a", "Inbox");
  Connect("thunderbird://p/a/Inbox/-");
  connector->InitLocation("thunderbird://p/a/Inbox/-");
  EXPECT_EQ(connector->ExecuteAction("Restore:id:1"), "");
}

TEST_F(RestoreTest, FailedWriteIsSwallowedAndLeavesAPartOfTheMail) {
  const std::string written = "From - \r\nSubject: x\r\n\r\n" + std::string(100'000, 'b') + "\r\n\r\n";
  Store(written);
  tree.AddMailbox("p", "a", "Inbox", MailOf("1"));
  // The first limit is met while the mail is written, the second one when the mailbox is closed.
  for (const std::size_t more : {std::size_t{1000}, written.size() - 1}) {
    WriteBytes(mailbox, MailOf("1"));
    const ScopedSizeLimit limit(MailOf("1").size() + more);
    const std::string expected = MailOf("1") + written.substr(0, more);
    EXPECT_TRUE(Restore() == expected) << more;
    EXPECT_FALSE(connector->HasRestored());
  }
  WriteBytes(mailbox, MailOf("1"));
  EXPECT_TRUE(Restore() == MailOf("1") + written + "\r\n");
  EXPECT_TRUE(connector->HasRestored());
}

TEST_F(RestoreTest, MailIsWrittenThoughTheMailboxAboveCannotBeMade) {
  Store("Subject: x\r\n\r\nbody\r\n");
  const DiskFault fault({.calls = DiskCall::Open, .pathEnd = "/one"});
  Run("Restore:id:1", "thunderbird://p/a/one/two/-");
  EXPECT_TRUE(fault.WasReached());
  const std::string folder = tree.AccountFolder("p", "a");
  EXPECT_FALSE(FileExists(folder + "one"));
  EXPECT_EQ(ReadBytes(folder + "one.sbd\\two"), "From - \r\nSubject: x\r\n\r\nbody\r\n\r\n");
  EXPECT_TRUE(connector->HasRestored());
}

TEST_F(RestoreTest, SourceThatCannotBeOpenedLeavesTheEmptyLineThatEndsAMail) {
  Store("Subject: x\r\n\r\nbody\r\n");
  const DiskFault fault({.calls = DiskCall::Open, .pathEnd = "/mail.eml"});
  EXPECT_EQ(Restore(), "\r\n");
  EXPECT_TRUE(fault.WasReached());
  EXPECT_FALSE(connector->HasRestored());
}

TEST_F(RestoreTest, MailboxThatCannotBeOpenedOrClosedIsNoRestore) {
  Store("Subject: x\r\n\r\nbody\r\n");
  for (const DiskCall call : {DiskCall::Open, DiskCall::Close}) {
    tree.AddMailbox("p", "a", "Inbox");
    Connect("thunderbird://p/a/Inbox/-");
    connector->InitLocation("thunderbird://p/a/Inbox/-");
    const DiskFault fault({.calls = call, .pathEnd = "/Inbox"});
    EXPECT_EQ(connector->ExecuteAction("Restore:id:1"), "");
    EXPECT_TRUE(fault.WasReached());
    EXPECT_FALSE(connector->HasRestored());
  }
}

TEST_F(RestoreTest, FailedStepsAreLeftOut) {
  struct Row {
    std::string call;
    std::string written;
  };
  const std::string mail =
      "From - \r\nContent-Type: multipart/mixed; boundary=own\r\n\r\n--own\r\n\r\nbody\r\n";
  const std::string part = PartOf("own", "a.txt", "SGVsbG8=\r\n");
  const std::string head =
      "--own\r\nContent-Type: application/octet-stream; name=\"a.txt\"\r\n"
      "Content-Transfer-Encoding: base64\r\n"
      "Content-Disposition: attachment; filename=\"a.txt\"\r\n\r\n";
  for (const Row& row : {Row{"Global.FindItem", "(none)"}, Row{"item1.DataFile(\"File\"", "(none)"},
                         // Without its count of fields the item has no attachments.
                         Row{"item1.DataCount", mail + "--own--\r\n\r\n"},
                         Row{"item1.DataText(\"FileAttach1", mail + "--own--\r\n\r\n"},
                         Row{"item1.DataFile(\"FileAttach1", mail + head + "--own--\r\n\r\n"},
                         Row{"nothing", mail + part + "--own--\r\n\r\n"}}) {
    SCOPED_TRACE(row.call);
    std::filesystem::remove(tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Inbox"));
    test::RecordingHost fresh;
    fresh.Global.TemporaryPath = temporary.Path() + "\\";
    item = fresh.MakeItem();
    item->Files["File"] = archive.Write(
        "mail.eml", "Content-Type: multipart/mixed; boundary=own\r\n\r\n--own\r\n\r\nbody\r\n--own--\r\n");
    Attach("FileAttach1", "a.txt", "Hello");
    fresh.Global.ItemsById["1"] = item;
    const auto restorer = std::make_shared<Location_Thunderbird>();
    restorer->SetLocObject(fresh.MakeLocation("thunderbird://p/a/Inbox/-"));
    restorer->InitLocation("thunderbird://p/a/Inbox/-");
    fresh.Log.FailOn(row.call);
    EXPECT_EQ(restorer->ExecuteAction("Restore:1"), "");
    EXPECT_EQ(tree.Folder().Exists("Thunderbird/Profiles/p/Mail/a/Inbox") ? ReadBytes(mailbox) : "(none)",
              row.written);
    EXPECT_EQ(restorer->HasRestored(), row.call == "nothing");
  }
}

TEST_F(RestoreTest, FailedErrorObjectIsSwallowed) {
  for (const std::string call :
       {"Global.ErrorFactory", "ErrorFactory.Error", "Error.Silent", "Error.Raise"}) {
    host.Log.FailOn(call);
    EXPECT_EQ(Run("Restore:nobody", "thunderbird://p/a/*"), "(none)") << call;
    Store("x");
    host.Log.FailOn(call);
    EXPECT_EQ(Run("Restore:id:1", "thunderbird://p/a/*"), "(none)") << call;
  }
}

TEST_F(RestoreTest, LinkIsLeftOutWithoutAnAddress) {
  Store("Subject: x\r\n\r\nbody\r\n");
  host.Log.FailOn("item1.Address");
  EXPECT_EQ(Run("Shortcut:id:1"), "From - \r\nSubject: x\r\nContent-Type: text/html\r\n\r\n\r\n");
}

}  // namespace
}  // namespace vorlent
