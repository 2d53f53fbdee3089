// Mailboxes beyond 2 and 4 GB. Most of them is holes, which take no room on the disk, in mails that are
// marked as deleted, and which so are read over.
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "Connectors/Mozilla/Actions.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/Files.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;

std::string BodyOf(const std::string& subject) {
  std::string body;
  for (int line = 0; line < 100; ++line)
    body += subject + " line " + std::to_string(line) + "\n";
  return body;
}

std::string LargeMail(const std::string& subject, const std::string& status = "0001") {
  return "From - Sat Nov 21 14:59:15 2026\nX-Mozilla-Status: " + status +
         "\nDate: Sat, 21 Nov 2026 14:59:15\n" + "Message-ID: <" + subject +
         "@x>\nFrom: a@b.c\nSubject: " + subject + "\n\n" + BodyOf(subject) + "\n";
}

class LargeMailboxTest : public ThunderbirdFixture {
 protected:
  LargeMailboxTest() {
    tree.AddProfile("p", {"a"});
    file = tree.AddMailbox("p", "a", "Big");
    NoThunderbirdCheck() = false;
    std::ofstream out(Native(), std::ios::binary);
    Put(out, 0, "first");
    Fill(out);
    Put(out, 2 * kGigabyte - LargeMail("below2").size(), "below2");
    Put(out, 2 * kGigabyte, "at2");
    Fill(out);
    Put(out, 4 * kGigabyte - 1000, "across4");
    Put(out, 4 * kGigabyte - 1000 + LargeMail("across4").size(), "above4");
    Fill(out);
    Put(out, 5 * kGigabyte, "last");
  }

  std::filesystem::path Native() const { return tree.Folder().Native("Thunderbird/Profiles/p/Mail/a/Big"); }

  // The subjects of all mails, in their order.
  static std::vector<std::string> Subjects() {
    return {"first", "below2", "at2", "across4", "above4", "last"};
  }

  void Put(std::ofstream& out, std::uint64_t place, const std::string& subject) {
    // An empty line goes before it.
    if (place > 0) out.seekp(static_cast<std::streamoff>(place - 2)) << "\n\n";
    out << LargeMail(subject);
    places[subject] = place;
  }
  static void Fill(std::ofstream& out) { out << LargeMail("filling", "0009"); }

  std::string BytesAt(std::uint64_t place, std::size_t size) const {
    std::ifstream in(Native(), std::ios::binary);
    in.seekg(static_cast<std::streamoff>(place));
    std::string bytes(size, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(size));
    return bytes;
  }

  const ScopedRules today{Rules::Today()};
  std::string file;
  std::map<std::string, std::uint64_t> places;
};

TEST_F(LargeMailboxTest, MailsBeyondTwoAndFourGigabytesAreReadBroughtOutAndMarked) {
  ASSERT_EQ(Read("thunderbird://p/a/Big/-"), LocationState::Read);
  std::vector<ItemPtr> items;
  for (std::int32_t i = 1; i <= connector->Count(); ++i)
    items.push_back(connector->Item(i));
  ASSERT_EQ(items.size(), Subjects().size());
  const std::uint64_t size = std::filesystem::file_size(Native());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::string subject = Subjects()[i];
    SCOPED_TRACE(subject);
    EXPECT_EQ(items[i]->Text(), subject);
    EXPECT_EQ(items[i]->DataText(data_key::kSourceOffset), std::to_string(places[subject]));
    EXPECT_EQ(StandingOf(*items[i]), Standing::AtItsPlace);
    // The one before a filling ends with the separator of that.
    EXPECT_EQ(ReadBytes(connector->GetFile(items[i], "File")), Crlf(LargeMail(subject)));
    std::string marked = LargeMail(subject);
    marked[marked.find("0001") + 3] = '9';
    EXPECT_TRUE(connector->DeleteItem(items[i]));
    EXPECT_EQ(BytesAt(places[subject], marked.size()), marked);
    EXPECT_EQ(std::filesystem::file_size(Native()), size);
    for (std::size_t other = i + 1; other < items.size(); ++other) {
      const std::string bytes = LargeMail(Subjects()[other]);
      EXPECT_EQ(BytesAt(places[Subjects()[other]], bytes.size()), bytes);
    }
  }
}

TEST_F(LargeMailboxTest, MailsBeyondTwoAndFourGigabytesAreImportedAndMarked) {
  const auto target = host.MakeLocation("Archiv");
  host.Global.Objects["Archiv"] = target;
  host.AddTopics();
  host.Dialogs.WizardAnswer = "target Archiv\r\naction move\r\nimport " + file + "\r\n";
  test::RecordingRunObserver observer;
  Actions actions;
  actions.SetRunObserver(&observer);
  actions.execute("importmails");
  std::vector<std::string> expected = {"moving to Archiv"};
  for (const std::string& subject : Subjects()) {
    if (subject != "first") expected.push_back("expunged 1");
    if (subject == "at2" || subject == "above4") expected.pop_back();
    expected.push_back("delivered Big at " + std::to_string(places[subject]));
  }
  expected.push_back("marking in Big");
  EXPECT_EQ(observer.events, expected);
  std::vector<std::string> subjects;
  for (const ItemPtr& item : target->Pasted)
    subjects.push_back(item->Text());
  EXPECT_EQ(subjects, Subjects());
  for (const std::string& subject : Subjects()) {
    std::string marked = LargeMail(subject);
    marked[marked.find("0001") + 3] = '9';
    EXPECT_EQ(BytesAt(places[subject], marked.size()), marked);
  }
}

TEST_F(LargeMailboxTest, RestoredMailStandsBehindAllOthers) {
  const auto item = host.MakeItem();
  item->Data = {{"File", "back.eml"}};
  item->Files["File"] = temporary.Write("back.eml", LargeMail("back"));
  host.Global.ItemsById["back"] = item;
  Connect("thunderbird://p/a/Big/-");
  connector->InitLocation("thunderbird://p/a/Big/-");
  const std::uint64_t place = std::filesystem::file_size(Native());
  connector->ExecuteAction("Restore:back");
  EXPECT_TRUE(connector->HasRestored());
  StdMail mail;
  mail.SetMailboxFile(file);
  ASSERT_TRUE(ReadHeaderAt(mail, static_cast<std::int64_t>(place)));
  EXPECT_EQ(mail.GetHeader("subject"), "back");
  EXPECT_EQ(BytesAt(0, LargeMail("first").size()), LargeMail("first"));
}

TEST_F(LargeMailboxTest, MailsBeyondTwoGigabytesAreOutOfReachByTheRulesOfOld) {
  Rules old = Rules::Today();
  old.widths = Widths::OfOld;
  const ScopedRules rules(old);
  StdMail mail;
  mail.SetMailboxFile(file);
  mail.InitStream();
  mail.Setmailtmppfad(temporary.Path() + "\\");
  int mails = 0;
  try {
    while (mail.ReadHeader(false))
      ++mails;
    ADD_FAILURE() << "no overflow";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::Overflow));
    EXPECT_EQ(failure.Why(), (Cause{.reason = "overflow", .hint = Hint::CompactMailbox}));
  }
  EXPECT_EQ(mails, 2);
  EXPECT_EQ(SwallowedNumber([&] { ReadHeaderAt(mail, 2147483647); }),
            static_cast<int>(ErrorNumber::Overflow));
}

}  // namespace
}  // namespace vorlent
