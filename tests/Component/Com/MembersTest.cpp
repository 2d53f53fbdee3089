// Every member of every class, used on the sample profiles by clients that are not ours: classes are made by
// their ProgID, members called by scripts, by name and by slot.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "Component/Com/HostedTest.h"
#include "Component/Com/Members.h"
#include "Host/Com/Failures.h"

namespace vorlent::com {
namespace {

const std::string kMailAddress = "thunderbird://default/Local Folders/Inbox/-";

class MembersTest : public SampleTest, public testing::WithParamInterface<Client> {
 protected:
  MembersTest() { EXPECT_EQ(server_.Register(), S_OK); }
  ~MembersTest() override { EXPECT_EQ(server_.Unregister(), S_OK); }

  static ComPtr<IDispatch> Create(const wchar_t* progId) {
    CLSID id = {};
    Check(CLSIDFromProgID(progId, &id));
    ComPtr<IDispatch> made;
    Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                           reinterpret_cast<void**>(made.GetAddressOf())));
    return made;
  }

  Objects HostObjects(const std::string& address) {
    Objects objects;
    objects["location"] = host_->NewLocation(address);
    objects["expression"] = ScriptedHost::NewExpression("Keywords=one");
    const ComPtr<ScriptedObject> tree = host_->NewTree();
    tree->Set(L"Text", Value("another tree"));
    objects["tree"] = tree;
    objects["nothing"] = nullptr;
    return objects;
  }

  // Uses an object of a class, and compares what came of each use. The uses name every member of its
  // interface.
  void CheckUses(const wchar_t* progId, REFIID interfaceId, Objects objects, const std::vector<Use>& uses) {
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadTypeLibEx(ServerFile().c_str(), REGKIND_NONE, &library), S_OK);
    ComPtr<ITypeInfo> names, slots;
    HREFTYPE reference = 0;
    ASSERT_EQ(library->GetTypeInfoOfGuid(interfaceId, &names), S_OK);
    ASSERT_EQ(names->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    ASSERT_EQ(names->GetRefTypeInfo(reference, &slots), S_OK);
    EXPECT_EQ(Unused(*slots.Get(), uses), std::set<std::string>());
    objects["o"] = Create(progId);
    const std::vector<std::string> results = UseMembers(GetParam(), *slots.Get(), std::move(objects), uses);
    for (std::size_t i = 0; i < uses.size(); ++i) {
      std::string result = i < results.size() ? results[i] : "(not reached)";
      std::string expected = uses[i].expected;
      if (expected.ends_with("...")) {
        expected.resize(expected.size() - 3);
        result = result.substr(0, expected.size());
      }
      EXPECT_EQ(result, expected) << "use " << i + 1 << ": " << uses[i].member;
      if (i >= results.size()) break;
    }
    EXPECT_LE(results.size(), uses.size());
  }

 private:
  static std::string KindName(INVOKEKIND kind) {
    return kind == INVOKE_PROPERTYGET      ? "get "
           : kind == INVOKE_PROPERTYPUT    ? "put "
           : kind == INVOKE_PROPERTYPUTREF ? "set "
                                           : "";
  }
  static std::string WayName(Way way) {
    return way == Way::Get ? "get " : way == Way::Put ? "put " : way == Way::Set ? "set " : "";
  }
  static std::set<std::string> Unused(ITypeInfo& slots, const std::vector<Use>& uses) {
    std::set<std::string> unused;
    TYPEATTR* attributes = nullptr;
    Check(slots.GetTypeAttr(&attributes));
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
      FUNCDESC* function = nullptr;
      Check(slots.GetFuncDesc(i, &function));
      BSTR name = nullptr;
      Check(slots.GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr));
      unused.insert(KindName(function->invkind) + TextOf(name));
      SysFreeString(name);
      slots.ReleaseFuncDesc(function);
    }
    slots.ReleaseTypeAttr(attributes);
    for (const Use& use : uses)
      unused.erase(WayName(use.way) + use.member);
    return unused;
  }
};

TEST_P(MembersTest, MailConnector) {
  const std::string id = "20260119111111-html-8@example.org";
  const std::string file = folder_.Path("temp\\") + id + ".eml";
  CheckUses(L"VorlentMozilla.Location_Thunderbird", __uuidof(_Location_Thunderbird),
            HostObjects(kMailAddress),
            {
                Set("LocObject", "location"),
                Get("LocObject", kMailAddress).Then("Name"),
                Call("InitLocation", {kMailAddress}, "true"),
                Call("OpenLocation", {kMailAddress}, "1"),
                Get("Count", "8"),
                Call("Item", {LONG{7}}, id).Then("ID").KeptAs("kept"),
                Call("Item", {LONG{9}}, "nothing"),
                Call("GetItem", {"20260119111111-HTML-8@example.org"}, "Neuigkeiten").Then("Text"),
                Call("GetItem", {"none"}, "nothing"),
                Call("HasID", {"none"}, "false"),
                Call("GetFile", {Named{"kept"}, "File", LONG{1}}, file),
                Call("GetFile", {Named{"kept"}, "File"}, file),
                Call("NewItem", {}, "").Then("Connected"),
                Call("NewItem", {true}, "true").Then("Connected"),
                Call("PasteItem", {"ID=x|Type=mail|Text=Neu", false}, "Neu").Then("Text"),
                Call("HasID", {"X"}, "true"),
                Get("Count", "11"),
                Call("CreateEnum", {Named{"expression"}}, "object"),
                Get("Tree", "").Then("Text"),
                Set("Tree", "tree"),
                Get("Tree", "another tree").Then("Text"),
                Call("DeleteItem", {Named{"nothing"}}, "false"),
                Call("DeleteItem", {Named{"kept"}}, "true"),
                Call("Einlesen", {}, "1"),
                Get("Count", "7"),
                Call("Reload", {}, ""),
                Call("SourceInit", {Named{"nothing"}, false}, ""),
                Call("SourceGetNext", {""}, "true"),
                Call("SourceDelete", {}, ""),
                Call("GetActions", {}, "Restore,Shortcut"),
                Call("ExecuteAction", {"Unknown:x"}, ""),
                Call("Clear", {}, ""),
                Get("Count", "0"),
                Call("Disconnect", {}, ""),
            });
  EXPECT_TRUE(folder_.Exists("temp/" + id + ".eml"));
}

TEST_P(MembersTest, BookmarkConnector) {
  const std::string address = "firefox://default";
  CheckUses(L"VorlentMozilla.Location_FireFox", __uuidof(_Location_FireFox), HostObjects(address),
            {
                Set("LocObject", "location"),
                Get("LocObject", address).Then("Name"),
                Call("InitLocation", {address}, "true"),
                Call("OpenLocation", {address}, "1"),
                Call("Item", {LONG{1}}, "Example").Then("Text").KeptAs("kept"),
                Call("Item", {LONG{0}}, "nothing"),
                Call("GetFile", {Named{"kept"}, "File"}, ""),
                Call("DeleteItem", {Named{"kept"}}, "true"),
                Call("DeleteItem", {Named{"kept"}}, "false"),
                Call("GetItem", {"none"}, "nothing"),
                Call("NewItem", {}, "").Then("Type"),
                Call("PasteItem", {"ID=x|Type=url|Text=Neu", true}, "true").Then("Connected"),
                Call("HasID", {"x"}, "true"),
                Call("CreateEnum", {Named{"expression"}}, "object"),
                Call("GetSubKeywords", {Named{"expression"}}, "2").Then("Count"),
                Set("Tree", "tree"),
                Get("Tree", "another tree").Then("Text"),
                Call("Save", {}, ""),
                Call("Reload", {}, ""),
                Call("HasID", {"x"}, "false"),
                Call("Clear", {}, ""),
                Get("Count", "0"),
                Call("Disconnect", {}, ""),
            });
  EXPECT_TRUE(folder_.Exists("AppData/Mozilla/FireFox/Profiles/k7f2m4ax.default/bookmarks.html"));
}

TEST_P(MembersTest, CalendarConnector) {
  const std::string address = "sunbird://default";
  const std::string profile = Sample("Mozilla\\Sunbird\\Profiles\\h7w2m4tz.default\\");
  CheckUses(L"VorlentMozilla.Location_Sunbird", __uuidof(_Location_Sunbird), HostObjects(address),
            {
                Set("LocObject", "location"),
                Get("LocObject", address).Then("Name"),
                Call("InitLocation", {address}, "true"),
                Call("OpenLocation", {address}, "1"),
                Get("Count", "8"),
                Call("Item", {LONG{1}}, "Nacht der Zeitumstellung").Then("Text").KeptAs("kept"),
                Call("GetItem", {"none"}, "nothing"),
                Call("HasID", {"5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f01"}, "true"),
                Call("RedoAction", {Named{"kept"}, "20260101000000", LONG{1}, "x"}, ""),
                Call("RedoAction", {Named{"kept"}, "20260101000000", LONG{1}}, ""),
                Call("DeleteItem", {Named{"kept"}}, "true"),
                Call("Einlesen", {}, "1"),
                Get("Count", "7"),
                Call("GetCalendars", {"sunbird://default/", "*", profile}, "2").Then("Count"),
                Call("NewItem", {}, "").Then("Type"),
                Call("PasteItem", {"ID=x|Type=task|Text=Neu", false}, "Neu").Then("Text"),
                Call("CreateEnum", {Named{"expression"}}, "object"),
                Set("Tree", "tree"),
                Get("Tree", "another tree").Then("Text"),
                Call("Reload", {}, ""),
                Call("Clear", {}, ""),
                Get("Count", "0"),
                Call("Disconnect", {}, ""),
            });
}

TEST_P(MembersTest, Actions) {
  host_->HaveTopics();
  host_->named["Ziel"] = host_->NewLocation("Ziel");
  host_->wizardAnswer = "target Ziel\r\naction copy\r\nimport " +
                        Sample("Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\pop.example.org\\Inbox") +
                        "\r\n";
  CheckUses(L"VorlentMozilla.Actions", __uuidof(_Actions), {},
            {
                Call("GetActions", {}, "1").Then("Count"),
                Call("execute", {"another"}, ""),
                Call("execute", {"importmails"}, ""),
            });
  const auto pasted = std::count_if(host_->calls.begin(), host_->calls.end(), [](const std::string& call) {
    return call.starts_with("Location.PasteRecord ID=20260206080000-pop-1@example.org|");
  });
  EXPECT_EQ(pasted, 1);
}

TEST_P(MembersTest, Wizard) {
  CheckUses(L"VorlentMozilla.WizardImport", __uuidof(_WizardImport), {},
            {
                Get("Pages", "4"),
                Put("Pages", LONG{3}),
                Get("Pages", "3"),
                Call("ShowPage", {LONG{1}}, ""),
                Call("AddSubQueries", {"thunderbird://*", LONG{-1}, LONG{1}, LONG{0}}, "false"),
                Put("Parameter", "has no effect"),
                Get("Parameter", "target target\r\naction copy\r\nkeyword #subpath\r\noption tree\r\n"),
                Call("Finish", {}, "true"),
            });
}

TEST_P(MembersTest, MailReader) {
  const std::string mailbox = Sample("Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\pop.example.org\\Inbox");
  const std::string temp = folder_.Path("temp\\");
  const std::string body = folder_.Write("temp/body.txt", "body\r\n");
  const std::string extra = folder_.Write("temp/extra.txt", "extra");
  const std::string emptied = folder_.Write("temp/emptied.txt", "1234");
  CheckUses(
      L"VorlentMozilla.StdMail", __uuidof(_StdMail), {},
      {
          Call("AddHeader", {"Subject: Neu"}, ""),
          Call("GetAllHeaders", {}, "Subject: Neu\r\n"),
          Get("Headers", "1").Then("Count").KeptAs("kept"),
          Get("Body", ""),
          Put("MailboxFile", mailbox),
          Get("MailboxFile", mailbox),
          Put("mailtmppfad", temp),
          Get("mailtmppfad", temp),
          Put("Percent", LONG{2}),
          Get("Percent", "2"),
          Put("LineCount", LONG{7}),
          Get("LineCount", "7"),
          Put("ReadCount", LONG{9}),
          Get("ReadCount", "9"),
          Put("hasHTML", true),
          Get("hasHTML", "true"),
          Call("InitStream", {}, ""),
          Call("ReadHeader", {false}, "true"),
          Call("GetHeader", {"subject"}, "Welcome"),
          Call("GetHeader", {"subject", true}, "Subject: Welcome"),
          Call("GetDate", {}, "06.02.2026 08:00:00"),
          Get("hasHTML", "false"),
          Get("LineCount", "11"),
          Get("ReadCount", "258"),
          Get("Percent", "0.0038759689..."),  // the first of 258 bytes
          Call("GetData", {"", false}, "ID=20260206080000-pop-1@example.org|Type=mail|Text=Welcome|..."),
          Call("ReadHeader", {false}, "false"),
          Get("Percent", "1"),
          Call("GetFileInfo", {mailbox}, "\r\nsize=258..."),
          Call("GetFileInfo", {temp + "none"}, ""),
          Call("CloseStream", {}, ""),
          Call("InitStream", {LONG{-1}}, ""),
          Call("ReadStream", {}, "true"),
          Get("Body", "Welcome to your new account.\r\n"),
          Call("CloseStream", {}, ""),
          Get("BodyLines", "1").Then("Count"),
          Set("BodyLines", "kept"),
          Get("BodyLines", "1").Then("Count"),
          Get("Attachments", "0").Then("Count"),
          Set("Attachments", "kept"),
          Get("Attachments", "1").Then("Count"),
          Set("Headers", "kept"),
          Call("GetHeader", {"subject"}, "Neu"),
          Call("SaveMail", {temp + "saved.eml", body}, ""),
          Call("SaveAttachmentFile", {temp + "out.eml", LONG{0}, LONG{-2}, "06.02.2026 08:00:00"}, ""),
          Call("AddTempfile", {extra}, ""),
          Call("DeleteLastTempfiles", {}, ""),
          Call("Delete", {emptied}, ""),
          Call("DeleteMail", {LONG{0}}, ""),
      });
  EXPECT_EQ(folder_.Read("temp/saved.eml"), "body\r\n");
  EXPECT_TRUE(folder_.Read("temp/out.eml").find("Subject: Welcome\r\n") != std::string::npos);
  EXPECT_FALSE(folder_.Exists("temp/extra.txt"));
  EXPECT_EQ(folder_.Read("temp/emptied.txt"), "");
  EXPECT_TRUE(ReadBytes(mailbox).find("X-Mozilla-Status: 0008\r\n") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Clients, MembersTest,
                         testing::Values(Client::VBScript, Client::JScript, Client::Names, Client::Slots),
                         [](const auto& client) { return ClientName(client.param); });

}  // namespace
}  // namespace vorlent::com
