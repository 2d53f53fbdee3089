// The mail reader by both bindings: its slots, and its names from C++ and from scripts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Component/Com/ScriptHost.h"
#include "Component/Com/ServerFile.h"
#include "Host/Com/LateBound.h"
#include "Platform/Failure.h"
#include "Support/TemporaryFolder.h"
#include "VorlentMozilla.h"

namespace vorlent::com {
namespace {

constexpr char kMailbox[] =
    "From - Mon Jan 01 10:00:00 2007\r\n"
    "X-Mozilla-Status: 0001\r\n"
    "Subject: Erste\r\n"
    "From: anna@example.org\r\n"
    "\r\n"
    "Text der ersten\r\n"
    "\r\n"
    "From - Mon Jan 01 11:00:00 2007\r\n"
    "X-Mozilla-Status: 0000\r\n"
    "Subject: Zweite\r\n"
    "\r\n"
    "Text der zweiten\r\n";

class StdMailBindingTest : public testing::Test {
 protected:
  void SetUp() override {
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                                     reinterpret_cast<void**>(factory.GetAddressOf())),
              S_OK);
    ASSERT_EQ(
        factory->CreateInstance(nullptr, __uuidof(_StdMail), reinterpret_cast<void**>(mail_.GetAddressOf())),
        S_OK);
    path_ = folder_.Write("Inbox", kMailbox);
  }
  void TearDown() override {
    mail_.Reset();
    EXPECT_EQ(server_.CanUnloadNow(), S_OK) << "something is still held";
  }

  LateBound ByName() const { return LateBound(mail_.Get()); }
  void Open() {
    LateBound mail = ByName();
    mail.Put(L"MailboxFile", Value(path_));
    mail.Call(L"InitStream");
  }
  // What a script in VBScript leaves in its variable `r`, or its error.
  std::string Script(const std::string& text) {
    ScriptHost host(L"VBScript");
    host.Name(L"mail", mail_.Get());
    ComPtr<IDispatch> out = ResultPlace();
    host.Name(L"out", out.Get());
    const std::string error = host.Run("Dim r\r\n" + text + "\r\nout.Add CStr(r)\r\n");
    if (!error.empty()) return "error " + error;
    LateBound list(out.Get());
    return ToText(list.Call(L"Item", Value(list.Call(L"Count")->lVal)));
  }

  Apartment apartment_;
  LoadedServer server_;
  TemporaryFolder folder_;
  std::string path_;
  ComPtr<_StdMail> mail_;

 private:
  // A list that a script can write to: that of another reader's body lines.
  ComPtr<IDispatch> ResultPlace() {
    ComPtr<IClassFactory> factory;
    server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                           reinterpret_cast<void**>(factory.GetAddressOf()));
    ComPtr<IDispatch> other;
    factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(other.GetAddressOf()));
    return ToObject(LateBound(other.Get()).Call(L"BodyLines"));
  }
};

// Up to so many entries from where an enumeration stands, "end" if there were fewer.
std::string Walked(IEnumVARIANT& walk, ULONG count) {
  VARIANT entries[10] = {};
  ULONG fetched = 0;
  const HRESULT status = walk.Next(count, entries, &fetched);
  std::string text;
  for (ULONG i = 0; i < fetched; ++i) {
    text += TextOf(entries[i].bstrVal) + ";";
    VariantClear(&entries[i]);
  }
  return status == S_FALSE ? text + "end" : text;
}

TEST_F(StdMailBindingTest, SlotsReadAMailbox) {
  BSTR path = NewBstr(path_);
  ASSERT_EQ(mail_->put_MailboxFile(path), S_OK);
  SysFreeString(path);
  SHORT flag = 0;
  ASSERT_EQ(mail_->InitStream(&flag), S_OK);
  VARIANT_BOOL saves = VARIANT_FALSE, waits = VARIANT_TRUE, found = VARIANT_FALSE;
  ASSERT_EQ(mail_->ReadHeader(&saves, &waits, &found), S_OK);
  EXPECT_EQ(found, VARIANT_TRUE);
  BSTR key = NewBstr("Subject"), subject = nullptr;
  VARIANT_BOOL all = VARIANT_FALSE;
  ASSERT_EQ(mail_->GetHeader(&key, &all, &subject), S_OK);
  EXPECT_EQ(TextOf(subject), "Erste");
  SysFreeString(key);
  SysFreeString(subject);
}

TEST_F(StdMailBindingTest, NamesReadAMailbox) {
  Open();
  LateBound mail = ByName();
  EXPECT_TRUE(ToTruth(mail.Call(L"ReadHeader", Value(false))));
  EXPECT_EQ(ToText(mail.Call(L"GetHeader", Value("subject"))), "Erste");
  EXPECT_EQ(ToText(mail.Call(L"GetHeader", Value("subject"), Value(true))), "Subject: Erste");
  EXPECT_TRUE(ToTruth(mail.Call(L"ReadHeader", Value(false))));
  EXPECT_EQ(ToText(mail.Call(L"GETHEADER", Value("SUBJECT"))), "Zweite");
  EXPECT_FALSE(ToTruth(mail.Call(L"ReadHeader", Value(false))));
}

TEST_F(StdMailBindingTest, TruthCrossesAsMinusOne) {
  Open();
  EXPECT_EQ(ByName().Call(L"ReadHeader", Value(false))->boolVal, VARIANT_TRUE);
  VARIANT_BOOL html = 7;
  ASSERT_EQ(mail_->get_hasHTML(&html), S_OK);
  EXPECT_EQ(html, VARIANT_FALSE);
  ASSERT_EQ(mail_->put_hasHTML(1), S_OK);
  ASSERT_EQ(mail_->get_hasHTML(&html), S_OK);
  EXPECT_EQ(html, VARIANT_TRUE);
}

TEST_F(StdMailBindingTest, ScriptReadsAMailbox) {
  EXPECT_EQ(Script("mail.MailboxFile = \"" + path_ +
                   "\"\r\n"
                   "mail.InitStream\r\n"
                   "Do While mail.ReadHeader(False)\r\n"
                   "  r = r & mail.GetHeader(\"Subject\") & \" \" & mail.LineCount & \";\"\r\n"
                   "Loop"),
            "Erste 8;Zweite 5;");
}

TEST_F(StdMailBindingTest, ScriptInAnotherLanguageReadsAMailbox) {
  ScriptHost host(L"JScript");
  host.Name(L"mail", mail_.Get());
  std::string path = path_;
  std::replace(path.begin(), path.end(), '\\', '/');
  EXPECT_EQ(host.Run("var r = '', h;\n"
                     "mail.MailboxFile = '" +
                     path +
                     "';\n"
                     "mail.InitStream();\n"
                     "while (mail.ReadHeader(false)) {\n"
                     "  r += mail.GetHeader('Subject') + mail.Headers.Count;\n"
                     "  for (h = 1; h <= mail.Headers.Count; h++) r += mail.Headers.Item(h).charAt(0);\n"
                     "  r += mail.Headers.Item('SUBJECT').length;\n"
                     "}\n"
                     "mail.mailtmppfad = r;\n"),
            "");
  EXPECT_EQ(ToText(ByName().Call(L"mailtmppfad")), "Erste5FXSF:14Zweite4FXS:15");
}

TEST_F(StdMailBindingTest, ScriptPassesItsVariablesByReference) {
  EXPECT_EQ(Script("Dim p, k, w\r\np = \"" + path_ +
                   "\"\r\nk = \"from\"\r\nw = True\r\n"
                   "mail.mailtmppfad = \"" +
                   folder_.MakeFolder("temp") +
                   "\\\"\r\n"
                   "mail.MailboxFile = p\r\nmail.InitStream\r\nmail.ReadHeader w, w\r\n"
                   "r = mail.GetHeader(k) & TypeName(w) & TypeName(k)"),
            "anna@example.orgBooleanString");
}

TEST_F(StdMailBindingTest, CollectionIsWalkedAskedByPositionAndByKey) {
  Open();
  EXPECT_EQ(
      Script("Dim h\r\nmail.ReadHeader False\r\n"
             "For Each h In mail.Headers\r\n  r = r & Len(h) & \",\"\r\nNext\r\n"
             "r = r & mail.Headers.Count & \" \" & mail.Headers.Item(3) & \" \" & mail.Headers(\"FROM\")"),
      "31,22,14,22,2,5 Subject: Erste From: anna@example.org");
}

TEST_F(StdMailBindingTest, EnumerationSkipsStartsAgainAndIsCopied) {
  Open();
  LateBound mail = ByName();
  mail.Call(L"ReadHeader", Value(false));
  const ComPtr<IDispatch> headers = ToObject(mail.Call(L"Headers"));
  const Value unknown = LateBound(headers.Get()).Call(L"_NewEnum");
  ComPtr<IEnumVARIANT> walk, copy;
  ASSERT_EQ(
      unknown.Raw().punkVal->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(walk.GetAddressOf())),
      S_OK);
  ASSERT_EQ(walk->Skip(3), S_OK);
  ASSERT_EQ(walk->Clone(&copy), S_OK);
  ASSERT_EQ(walk->Reset(), S_OK);
  EXPECT_EQ(Walked(*walk.Get(), 2), "From - Mon Jan 01 10:00:00 2007;X-Mozilla-Status: 0001;");
  EXPECT_EQ(Walked(*copy.Get(), 9), "From: anna@example.org;:0;end");
  EXPECT_EQ(walk->Skip(9), S_FALSE);
  EXPECT_EQ(Walked(*walk.Get(), 1), "end");
}

TEST_F(StdMailBindingTest, CollectionIsTheSameObjectAndLive) {
  ComPtr<IDispatch> first, second;
  ASSERT_EQ(mail_->get_BodyLines(&first), S_OK);
  ASSERT_EQ(mail_->get_BodyLines(&second), S_OK);
  EXPECT_EQ(first.Get(), second.Get());
  LateBound(first.Get()).Call(L"Add", Value("a line"));
  EXPECT_EQ(ToNumber(LateBound(second.Get()).Call(L"Count")), 1);
}

TEST_F(StdMailBindingTest, HeadersAreSetByReference) {
  EXPECT_EQ(Script("mail.BodyLines.Add \"Subject: x\", \"subject\"\r\n"
                   "Set mail.Headers = mail.BodyLines\r\n"
                   "r = mail.GetHeader(\"subject\")"),
            "x");
}

TEST_F(StdMailBindingTest, MissingKeyAndPositionHaveTheRuntimesNumbers) {
  Open();
  ByName().Call(L"ReadHeader", Value(false));
  EXPECT_THAT(
      Script("On Error Resume Next\r\nDim x\r\nx = mail.Headers(\"none\")\r\nr = Err.Number & \",\"\r\n"
             "Err.Clear\r\nx = mail.Headers(99)\r\nr = r & Err.Number"),
      "5,9");
}

TEST_F(StdMailBindingTest, FailureHasNumberTextAndSourceByName) {
  try {
    LateBound mail = ByName();
    mail.Put(L"MailboxFile", Value("C:\\none\\none\\Inbox"));
    mail.Call(L"InitStream");
    FAIL() << "a missing folder was opened";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 76) << failure.what();
    EXPECT_THAT(failure.what(), testing::HasSubstr("Inbox"));
  }
}

TEST_F(StdMailBindingTest, FailureHasNumberTextAndSourceByVtable) {
  BSTR path = NewBstr("C:\\none\\none\\Inbox");
  mail_->put_MailboxFile(path);
  SysFreeString(path);
  SHORT flag = 0;
  EXPECT_EQ(mail_->InitStream(&flag), static_cast<HRESULT>(0x800A0000 + 76));
  ComPtr<ISupportErrorInfo> support;
  ASSERT_EQ(mail_.As(&support), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(__uuidof(_StdMail)), S_OK);
  ComPtr<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, &info), S_OK);
  BSTR source = nullptr;
  info->GetSource(&source);
  EXPECT_EQ(TextOf(source), "VorlentMozilla.StdMail");
  SysFreeString(source);
}

TEST_F(StdMailBindingTest, FailureReachesAScriptWithNumberSourceAndText) {
  EXPECT_THAT(Script("mail.MailboxFile = \"C:\\none\\none\\Inbox\"\r\nmail.InitStream"),
              testing::MatchesRegex("error 76 VorlentMozilla.StdMail: .*Inbox.*"));
}

// What an Invoke gives that no helper stands before.
HRESULT Invoke(IDispatch* object, DISPID id, std::vector<VARIANT> reversed, WORD flags = DISPATCH_METHOD) {
  DISPPARAMS given = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  Value result;
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &given, result.Place(), nullptr, nullptr);
}

TEST_F(StdMailBindingTest, WrongCountsAreRefused) {
  const Value text("x"), truth(true);
  EXPECT_EQ(Invoke(mail_.Get(), 10, {}), DISP_E_BADPARAMCOUNT) << "GetHeader without a key";
  EXPECT_EQ(Invoke(mail_.Get(), 10, {text.Raw(), truth.Raw(), text.Raw()}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Invoke(mail_.Get(), 17, {text.Raw()}), DISP_E_BADPARAMCOUNT) << "GetDate with an argument";
}

TEST_F(StdMailBindingTest, WrongTypesAreRefused) {
  const Value text("x"), object(mail_.Get());
  EXPECT_EQ(Invoke(mail_.Get(), 13, {text.Raw()}), DISP_E_TYPEMISMATCH) << "InitStream with a text";
  EXPECT_EQ(Invoke(mail_.Get(), 10, {object.Raw()}), DISP_E_TYPEMISMATCH) << "GetHeader with an object";
}

TEST_F(StdMailBindingTest, PlacesBesideAnArgumentStayAsTheyAre) {
  Open();
  constexpr DISPID kGetHeader = 10, kInitStream = 13;
  struct {
    BYTE value = 0, beside = 77;
  } byte;
  struct {
    SHORT value = 0, beside = 77;
  } word;
  struct {
    LONG value = 0, beside = 77;
  } number;
  struct {
    double value = 0, beside = 77;
  } real;
  const std::pair<VARTYPE, void*> places[] = {
      {VT_UI1, &byte.value}, {VT_I2, &word.value}, {VT_I4, &number.value}, {VT_R8, &real.value}};
  for (const auto& [type, place] : places) {
    VARIANT given = {};
    given.vt = VT_BYREF | type;
    given.byref = place;
    EXPECT_EQ(Invoke(mail_.Get(), kInitStream, {given}), S_OK) << type;
    EXPECT_EQ(mail_->CloseStream(), S_OK);
  }
  struct {
    BSTR value = SysAllocString(L"Subject");
    void* beside = nullptr;
  } text;
  text.beside = &text;
  VARIANT given = {};
  given.vt = VT_BYREF | VT_BSTR;
  given.pbstrVal = &text.value;
  EXPECT_EQ(Invoke(mail_.Get(), kGetHeader, {given}), S_OK);
  EXPECT_STREQ(text.value, L"Subject");
  SysFreeString(text.value);
  EXPECT_EQ(text.beside, &text);
  EXPECT_EQ(byte.beside, 77);
  EXPECT_EQ(word.beside, 77);
  EXPECT_EQ(number.beside, 77);
  EXPECT_EQ(real.beside, 77);
}

TEST_F(StdMailBindingTest, UnknownMembersAreRefused) {
  EXPECT_EQ(Invoke(mail_.Get(), 99, {}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Invoke(mail_.Get(), 12, {}, DISPATCH_PROPERTYPUT), DISP_E_MEMBERNOTFOUND) << "Body is read only";
  wchar_t name[] = L"Nothing";
  LPOLESTR names[] = {name};
  DISPID id = 0;
  EXPECT_EQ(mail_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME);
}

TEST_F(StdMailBindingTest, MissingPlacesAreNoCrash) {
  EXPECT_EQ(mail_->get_MailboxFile(nullptr), E_POINTER);
  EXPECT_EQ(mail_->GetHeader(nullptr, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(mail_->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(mail_->GetTypeInfo(1, 0, nullptr), DISP_E_BADINDEX);
}

TEST_F(StdMailBindingTest, ArgumentsMayBeNamed) {
  Open();
  LateBound mail = ByName();
  mail.Call(L"ReadHeader", Value(false));
  wchar_t member[] = L"GetHeader", key[] = L"key", all[] = L"all";
  LPOLESTR names[] = {member, all, key};
  DISPID ids[3] = {};
  ASSERT_EQ(mail_->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), S_OK);
  const Value truth(true), text("Subject");
  VARIANT given[] = {truth.Raw(), text.Raw()};
  DISPPARAMS arguments = {given, ids + 1, 2, 2};
  Value result;
  ASSERT_EQ(mail_->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments, result.Place(),
                          nullptr, nullptr),
            S_OK);
  EXPECT_EQ(ToText(std::move(result)), "Subject: Erste");
}

TEST_F(StdMailBindingTest, TextKeepsTheCharactersOfTheCodePage) {
  LateBound mail = ByName();
  mail.Call(L"AddHeader", Value("Subject: \x80uro \x84\xFC\x93 \x81"));
  const Value subject = mail.Call(L"GetHeader", Value("subject"));
  ASSERT_EQ(subject.Raw().vt, VT_BSTR);
  EXPECT_STREQ(subject.Raw().bstrVal, L"\u20ACuro \u201E\u00FC\u201C \x0081");
  EXPECT_EQ(ToText(mail.Call(L"GetHeader", Value("subject"))), "\x80uro \x84\xFC\x93 \x81");
}

TEST_F(StdMailBindingTest, CharacterOutsideTheCodePageBecomesAQuestionMark) {
  BSTR line = SysAllocString(L"To: \u0416x");
  ASSERT_EQ(mail_->AddHeader(&line), S_OK);
  SysFreeString(line);
  EXPECT_EQ(ToText(ByName().Call(L"GetHeader", Value("to"))), "?x");
}

}  // namespace
}  // namespace vorlent::com
