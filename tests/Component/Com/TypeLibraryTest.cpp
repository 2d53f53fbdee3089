// The type library as a client reads it, against what callers were promised.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Component/Com/ServerFile.h"
#include "Component/Component.h"
#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {
namespace {

std::string NameOf(ITypeInfo& info, MEMBERID member = MEMBERID_NIL) {
  BSTR name = nullptr;
  EXPECT_EQ(info.GetDocumentation(member, &name, nullptr, nullptr, nullptr), S_OK);
  std::string text = TextOf(name);
  SysFreeString(name);
  return text;
}

std::string Text(REFGUID id) {
  wchar_t text[40];
  StringFromGUID2(id, text, 40);
  return TextOf(std::wstring_view(text));
}

// A type as the tables below write it; `*` for each pointer.
std::string TypeText(ITypeInfo& info, const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR:
      return TypeText(info, *type.lptdesc) + "*";
    case VT_USERDEFINED: {
      ComPtr<ITypeInfo> named;
      if (info.GetRefTypeInfo(type.hreftype, &named) != S_OK) return "?";
      return NameOf(*named.Get());
    }
    case VT_BSTR:
      return "string";
    case VT_BOOL:
      return "bool";
    case VT_I2:
      return "i2";
    case VT_I4:
      return "i4";
    case VT_R4:
      return "r4";
    case VT_R8:
      return "r8";
    case VT_VARIANT:
      return "variant";
    case VT_DISPATCH:
      return "object";
    case VT_VOID:
      return "void";
    case VT_HRESULT:
      return "status";
    default:
      return "vt" + std::to_string(type.vt);
  }
}

std::string DefaultText(const VARIANT& value) {
  if (value.vt == VT_BSTR) return "\"" + TextOf(value.bstrVal) + "\"";
  if (value.vt == VT_BOOL) return value.boolVal == VARIANT_FALSE ? "false" : "true";
  if (value.vt == VT_I2) return std::to_string(value.iVal);
  if (value.vt == VT_I4) return std::to_string(value.lVal);
  return "vt" + std::to_string(value.vt);
}

std::string DirectionText(USHORT flags) {
  if ((flags & PARAMFLAG_FRETVAL) != 0) return "->";
  const bool in = (flags & PARAMFLAG_FIN) != 0, out = (flags & PARAMFLAG_FOUT) != 0;
  return in && out ? "inout" : in ? "in" : out ? "out" : "none";
}

std::string ParameterText(ITypeInfo& info, const ELEMDESC& parameter, const std::string& name) {
  const USHORT flags = parameter.paramdesc.wParamFlags;
  std::string text = DirectionText(flags) + " " + TypeText(info, parameter.tdesc);
  if ((flags & PARAMFLAG_FRETVAL) == 0 && !name.empty()) text += " " + name;
  if ((flags & PARAMFLAG_FHASDEFAULT) != 0)
    text += " = " + DefaultText(parameter.paramdesc.pparamdescex->varDefaultValue);
  else if ((flags & PARAMFLAG_FOPT) != 0)
    text += " = ?";
  return text;
}

std::string KindText(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_PROPERTYGET:
      return "get ";
    case INVOKE_PROPERTYPUT:
      return "put ";
    case INVOKE_PROPERTYPUTREF:
      return "set ";
    default:
      return "";
  }
}

// "7 get Count(-> i4*)": dispatch identifier, member, arguments. The written argument of a property has no
// name of its own to a caller.
std::string MemberText(ITypeInfo& info, UINT index) {
  FUNCDESC* function = nullptr;
  EXPECT_EQ(info.GetFuncDesc(index, &function), S_OK);
  BSTR names[12] = {};
  UINT count = 0;
  EXPECT_EQ(info.GetNames(function->memid, names, 12, &count), S_OK);
  const bool isPut = (function->invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
  std::string text =
      std::to_string(function->memid) + " " + KindText(function->invkind) + TextOf(names[0]) + "(";
  for (SHORT i = 0; i < function->cParams; ++i) {
    const auto at = static_cast<UINT>(i) + 1;
    const std::string name = !isPut && at < count ? TextOf(names[at]) : std::string();
    if (i > 0) text += ", ";
    text += ParameterText(info, function->lprgelemdescParam[i], name);
  }
  for (BSTR name : names)
    SysFreeString(name);
  text += ")";
  if (TypeText(info, function->elemdescFunc.tdesc) != "status") text += " without status";
  info.ReleaseFuncDesc(function);
  return text;
}

// The half of a dual interface that shows its slots.
ComPtr<ITypeInfo> SlotsOf(ITypeLib& library, const std::string& name) {
  ComPtr<ITypeInfo> info, slots;
  for (UINT i = 0; i < library.GetTypeInfoCount(); ++i) {
    library.GetTypeInfo(i, &info);
    if (NameOf(*info.Get()) == name) break;
    info = nullptr;
  }
  HREFTYPE reference = 0;
  if (info == nullptr || info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference) != S_OK)
    return nullptr;
  info->GetRefTypeInfo(reference, &slots);
  return slots;
}

class TypeLibraryTest : public testing::Test {
 protected:
  void SetUp() override {
    // The host's types are found by its identifier among the libraries that are loaded.
    ASSERT_EQ(LoadTypeLibEx((ProgramFile() + L"\\1").c_str(), REGKIND_NONE, &host_), S_OK);
    ASSERT_EQ(LoadTypeLibEx(ServerFile().c_str(), REGKIND_NONE, &library_), S_OK);
  }

  // The members in the order of their slots, after those of IDispatch.
  std::vector<std::string> Members(const std::string& interfaceName) {
    std::vector<std::string> members;
    const ComPtr<ITypeInfo> slots = SlotsOf(*library_.Get(), interfaceName);
    if (slots == nullptr) return members;
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(slots->GetTypeAttr(&attributes), S_OK);
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
      FUNCDESC* function = nullptr;
      slots->GetFuncDesc(i, &function);
      EXPECT_EQ(static_cast<std::size_t>(function->oVft), (7 + i) * sizeof(void*))
          << interfaceName << " " << i;
      slots->ReleaseFuncDesc(function);
      members.push_back(MemberText(*slots.Get(), i));
    }
    slots->ReleaseTypeAttr(attributes);
    return members;
  }

  ComPtr<ITypeLib> host_;
  ComPtr<ITypeLib> library_;
};

// What the connectors share, from the first member on.
const std::vector<std::string> kFrame = {
    "1 get LocObject(-> _Location**)",
    "1 set LocObject(in _Location*)",
    "2 get Tree(-> _Tree**)",
    "2 set Tree(in _Tree*)",
    "3 InitLocation(inout string* file, -> bool*)",
    "4 OpenLocation(inout string* file, -> LocationState*)",
    "5 Disconnect()",
    "6 NewItem(inout bool* conn = false, -> _Item**)",
    "7 GetItem(inout string* id, -> _Item**)",
    "8 HasID(inout string* id, -> bool*)",
    "9 get Count(-> i4*)",
    "10 Item(inout i4* pos, -> _Item**)",
    "11 Clear()",
    "12 CreateEnum(inout _Expression** expr, -> object*)",
    "13 PasteItem(inout string* import, inout bool* conn, -> _Item**)",
};

std::vector<std::string> AfterFrame(std::vector<std::string> own) {
  std::vector<std::string> all = kFrame;
  all.insert(all.end(), own.begin(), own.end());
  return all;
}

TEST_F(TypeLibraryTest, MailConnectorHasItsMembersInOrder) {
  EXPECT_EQ(Members("_Location_Thunderbird"),
            AfterFrame({
                "14 DeleteItem(inout _Item** itm, -> bool*)",
                "15 Einlesen(-> LocationState*)",
                "16 Reload()",
                "17 GetFile(inout _Item** itm, inout string* key, inout GetFileOption* getfileoption = 0, "
                "-> string*)",
                "18 SourceInit(inout _Tree** tr, inout bool* saveattachments)",
                "19 SourceGetNext(out string* srcitm, -> bool*)",
                "20 SourceDelete()",
                "21 GetActions(-> string*)",
                "22 ExecuteAction(inout string* cmd, -> string*)",
            }));
}

TEST_F(TypeLibraryTest, BookmarkConnectorHasItsMembersInOrder) {
  EXPECT_EQ(Members("_Location_FireFox"), AfterFrame({
                                              "14 DeleteItem(inout _Item** itm, -> bool*)",
                                              "15 Reload()",
                                              "16 GetFile(inout _Item** itm, inout string* key, -> string*)",
                                              "17 Save()",
                                              "18 GetSubKeywords(inout _Expression** expr, -> object*)",
                                          }));
}

TEST_F(TypeLibraryTest, CalendarConnectorHasItsMembersInOrder) {
  EXPECT_EQ(Members("_Location_Sunbird"),
            AfterFrame({
                "14 RedoAction(inout _Item** itm, inout string* zeit, inout i4* msg, "
                "inout string* Value = \"\")",
                "15 DeleteItem(inout _Item** itm, -> bool*)",
                "16 Einlesen(-> LocationState*)",
                "17 Reload()",
                "18 GetCalendars(inout string* prefolder, inout string* fld, inout string* path, -> object*)",
            }));
}

TEST_F(TypeLibraryTest, ActionsHaveTheirMembersInOrder) {
  const std::vector<std::string> expected = {"1 GetActions(-> object*)", "2 execute(inout string* cmd)"};
  EXPECT_EQ(Members("_Actions"), expected);
}

TEST_F(TypeLibraryTest, WizardHasItsMembersInOrder) {
  const std::vector<std::string> expected = {
      "1 get Pages(-> i2*)",
      "1 put Pages(in i2)",
      "2 ShowPage(inout i2* page)",
      "3 get Parameter(-> string*)",
      "3 put Parameter(in string)",
      "4 Finish(-> bool*)",
      "5 AddSubQueries(inout string* qry, in i4 pos, inout i2* ind, inout i2* cb, -> bool*)",
  };
  EXPECT_EQ(Members("_WizardImport"), expected);
}

TEST_F(TypeLibraryTest, MailReaderHasItsMembersInOrder) {
  const std::vector<std::string> expected = {
      "1 get MailboxFile(-> string*)",
      "1 put MailboxFile(in string)",
      "2 get Headers(-> object*)",
      "2 set Headers(in object)",
      "3 get BodyLines(-> object*)",
      "3 set BodyLines(in object)",
      "4 get Attachments(-> object*)",
      "4 set Attachments(in object)",
      "5 get Percent(-> r8*)",
      "5 put Percent(in r8)",
      "6 get LineCount(-> i4*)",
      "6 put LineCount(in i4)",
      "7 get ReadCount(-> r8*)",
      "7 put ReadCount(in r8)",
      "8 get hasHTML(-> bool*)",
      "8 put hasHTML(in bool)",
      "9 get mailtmppfad(-> string*)",
      "9 put mailtmppfad(in string)",
      "10 GetHeader(inout string* key, inout bool* all = false, -> string*)",
      "11 GetAllHeaders(-> string*)",
      "12 get Body(-> string*)",
      "13 InitStream(inout i2* saveflag = 0)",
      "14 ReadHeader(inout bool* saveattachments, inout bool* waitforfrom = true, -> bool*)",
      "15 ReadStream(inout string* bodyfile = \"\", -> bool*)",
      "16 SaveMail(inout string* file, inout string* bodyfile)",
      "17 GetDate(-> string*)",
      "18 Delete(inout string* file)",
      "19 CloseStream()",
      "20 SaveAttachmentFile(inout string* file, inout i4* offset, inout i2* attach, inout string* dat)",
      "21 DeleteMail(inout i4* offset)",
      "22 GetData(inout string* kw, inout bool* saveattachments, -> string*)",
      "23 GetFileInfo(inout string* file, -> string*)",
      "24 DeleteLastTempfiles()",
      "25 AddTempfile(inout string* file)",
      "26 AddHeader(inout string* a)",
  };
  EXPECT_EQ(Members("_StdMail"), expected);
}

// A type of the library in one line: what it is, its name and identifier, what it leads to.
std::string ClassText(ITypeInfo& info) {
  TYPEATTR* attributes = nullptr;
  EXPECT_EQ(info.GetTypeAttr(&attributes), S_OK);
  const char* const kind = attributes->typekind == TKIND_COCLASS     ? "class "
                           : attributes->typekind == TKIND_DISPATCH  ? "interface "
                           : attributes->typekind == TKIND_INTERFACE ? "slots "
                                                                     : "other ";
  std::string text = kind + NameOf(info) + " " + Text(attributes->guid);
  if ((attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0) text += " dual";
  if ((attributes->wTypeFlags & TYPEFLAG_FCONTROL) != 0) text += " control";
  for (UINT i = 0; attributes->typekind == TKIND_COCLASS && i < attributes->cImplTypes; ++i) {
    HREFTYPE reference = 0;
    INT flags = 0;
    ComPtr<ITypeInfo> met;
    info.GetRefTypeOfImplType(i, &reference);
    info.GetImplTypeFlags(i, &flags);
    info.GetRefTypeInfo(reference, &met);
    text += (flags & IMPLTYPEFLAG_FSOURCE) != 0 ? " source " : " ";
    text += ((flags & IMPLTYPEFLAG_FDEFAULT) != 0 ? "" : "further ") + NameOf(*met.Get());
  }
  info.ReleaseTypeAttr(attributes);
  return text;
}

TEST_F(TypeLibraryTest, ClassesAndInterfacesHaveTheirIdentifiers) {
  std::vector<std::string> types;
  for (UINT i = 0; i < library_->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    library_->GetTypeInfo(i, &info);
    types.push_back(ClassText(*info.Get()));
  }
  const std::vector<std::string> expected = {
      "interface _Location_Thunderbird {B23BB2D4-CF75-454F-883E-4216814B82D5} dual",
      "interface _Location_FireFox {AD509209-FC57-4CEF-AD9D-9D379B6DF351} dual",
      "interface _Location_Sunbird {B83DA60F-7A4C-4F14-89B3-DD1C8F520314} dual",
      "interface _Actions {D4FCC313-4A06-4523-9B47-492FD99BB427} dual",
      "interface _WizardImport {47785AAA-CDCA-4358-B672-0397BEAEB566} dual",
      "interface _StdMail {6128758A-0F3E-4B94-A9CA-6E7A7D0F13D6} dual",
      "interface __WizardImport {F5DD4C03-6737-4817-A443-686B3154AFDB}",
      "class Location_Thunderbird {229D05C1-7126-420E-ACB6-70458A7FC236} _Location_Thunderbird",
      "class Location_FireFox {73648EA2-7614-47E8-B577-8C09A1123062} _Location_FireFox",
      "class Location_Sunbird {9BFEE0EE-F0C5-462B-B151-2C7901932CC5} _Location_Sunbird",
      "class Actions {24F4E411-5F6F-48A9-9F61-61E6607AD71E} _Actions",
      "class WizardImport {1702A783-9B4D-433C-AFA6-C2AACAC2DDE7} control _WizardImport source __WizardImport",
      "class StdMail {BC461512-FE62-45CF-AC68-C8E4D37AEDC4} _StdMail",
  };
  EXPECT_EQ(types, expected);
}

TEST_F(TypeLibraryTest, ClassesAreThoseThatTheComponentMakes) {
  for (const ComponentClass& entry : ComponentClasses()) {
    GUID id = {};
    ASSERT_EQ(CLSIDFromString(WideOf(entry.classId).c_str(), &id), S_OK);
    ComPtr<ITypeInfo> info, face;
    ASSERT_EQ(library_->GetTypeInfoOfGuid(id, &info), S_OK) << entry.progId;
    EXPECT_EQ("VorlentMozilla." + NameOf(*info.Get()), entry.progId);
    HREFTYPE reference = 0;
    info->GetRefTypeOfImplType(0, &reference);
    ASSERT_EQ(info->GetRefTypeInfo(reference, &face), S_OK);
    EXPECT_THAT(ClassText(*face.Get()), testing::HasSubstr(std::string(entry.interfaceId)));
  }
}

TEST_F(TypeLibraryTest, TypesOfTheHostHaveTheirIdentifiers) {
  std::vector<std::string> types;
  for (UINT i = 0; i < host_->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    host_->GetTypeInfo(i, &info);
    types.push_back(ClassText(*info.Get()));
  }
  EXPECT_THAT(types, testing::IsSupersetOf({
                         "other LocationState {C94ABAD1-6C6B-4C74-85C7-D2DC929C066B}",
                         "other GetFileOption {A5AFBF5C-5F84-4A98-9BD8-94D2EB2F21E2}",
                         "interface _Location {80E90CE2-4E46-448D-A02C-7AB4B09D7887} dual",
                         "interface _Tree {13EDDE75-83E1-4BB7-82AD-7A52CCAF3D4B} dual",
                         "interface _Item {B3BEC9D3-4F94-4BBB-BECA-F4E678F6EE90} dual",
                         "interface _HostGlobal {624E7F82-2008-4BE1-B742-D235022D5ACB} dual",
                         "interface _HostErrorFactory {052AEC33-104A-40CD-8F7B-F82F5F49FB88} dual",
                         "interface _HostError {20A4A6D9-E6C2-4B65-9876-062531C496D7} dual",
                         "interface _HostMainWindow {F9663A06-54D6-4813-9EDC-5B2498E1BC73} dual",
                         "interface _HostDialogs {DCD19F21-A168-48B8-B87D-9D81CAD3E87B} dual",
                         "interface _Expression {66D7C643-014B-4CED-BF00-9643E042CAD8} dual",
                         "interface _HostEnum {65D5B735-212A-44D3-8A5B-81C7CD23A988} dual",
                         "interface _HostDatabase {04B1763D-480E-4055-AD02-9FF424ED153A} dual",
                         "interface _HostRecordset {E0C6A735-E9A8-4FB8-8931-1203EF94E47B} dual",
                         "class Item {5BDF5528-342E-48E9-B967-11BE888A056B} _Item",
                         "class Tree {C0C5B61E-4860-4D73-8822-9FE5D8D52918} _Tree",
                         "class Location {F3030F44-6741-4A33-BA86-F5967A089E03} _Location",
                         "class HostEnum {30256586-7C12-417E-A5FB-BF1474D45ED2} _HostEnum",
                         "class HostDatabase {DFB2926B-395E-4C3D-A672-1C7A16645642} _HostDatabase",
                         "class HostGlobal {E93DCE26-3ED3-40C1-8677-E0F0D96FA91A} _HostGlobal",
                     }));
}

// The library that a type of an argument comes from.
std::string LibraryOf(ITypeInfo& slots, UINT function, UINT parameter) {
  FUNCDESC* described = nullptr;
  EXPECT_EQ(slots.GetFuncDesc(function, &described), S_OK);
  const TYPEDESC* type = &described->lprgelemdescParam[parameter].tdesc;
  while (type->vt == VT_PTR)
    type = type->lptdesc;
  ComPtr<ITypeInfo> named;
  ComPtr<ITypeLib> library;
  UINT index = 0;
  EXPECT_EQ(slots.GetRefTypeInfo(type->hreftype, &named), S_OK);
  slots.ReleaseFuncDesc(described);
  EXPECT_EQ(named->GetContainingTypeLib(&library, &index), S_OK);
  TLIBATTR* attributes = nullptr;
  EXPECT_EQ(library->GetLibAttr(&attributes), S_OK);
  const std::string id = Text(attributes->guid);
  library->ReleaseTLibAttr(attributes);
  return id;
}

TEST_F(TypeLibraryTest, ObjectsOfTheHostAreOfTheHostsLibrary) {
  const ComPtr<ITypeInfo> slots = SlotsOf(*library_.Get(), "_Location_Thunderbird");
  ASSERT_NE(slots, nullptr);
  EXPECT_EQ(LibraryOf(*slots.Get(), 0, 0), "{5D4FF6C4-1825-4485-B36C-2119F1B5DD8E}") << "LocObject";
  EXPECT_EQ(LibraryOf(*slots.Get(), 5, 1), "{5D4FF6C4-1825-4485-B36C-2119F1B5DD8E}") << "OpenLocation";
}

TEST_F(TypeLibraryTest, LibraryIsFoundByItsIdentifierAndName) {
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library_->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(Text(attributes->guid), "{94BFF4C8-DD5C-4626-9004-C44E5E126A33}");
  library_->ReleaseTLibAttr(attributes);
  BSTR name = nullptr;
  ASSERT_EQ(library_->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TextOf(name), "VorlentMozilla");
  SysFreeString(name);
}

TEST_F(TypeLibraryTest, WizardDeclaresNoEvents) {
  ComPtr<ITypeInfo> events;
  const GUID id = {0xF5DD4C03, 0x6737, 0x4817, {0xA4, 0x43, 0x68, 0x6B, 0x31, 0x54, 0xAF, 0xDB}};
  ASSERT_EQ(library_->GetTypeInfoOfGuid(id, &events), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(events->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->cFuncs + attributes->cVars, 0);
  events->ReleaseTypeAttr(attributes);
}

}  // namespace
}  // namespace vorlent::com
