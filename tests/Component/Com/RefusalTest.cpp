// Calls by name that don't fit a member are refused, whichever member of whichever class.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Component/Com/HostedTest.h"
#include "Component/Com/ScriptHost.h"
#include "Host/Com/Failures.h"

namespace vorlent::com {
namespace {

struct Parameter {
  VARTYPE type = VT_EMPTY;
  bool isOptional = false;
};

struct Member {
  std::string name;
  DISPID id = 0;
  WORD flags = 0;
  std::vector<Parameter> parameters;  // without the result
};

VARTYPE TypeOf(const ELEMDESC& parameter) {
  const TYPEDESC* type = &parameter.tdesc;
  if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0) type = type->lptdesc;
  if (type->vt == VT_PTR) return VT_DISPATCH;
  return type->vt == VT_USERDEFINED ? VARTYPE{VT_I4} : type->vt;
}

// Of the object's interface, as it tells them itself.
std::vector<Member> MembersOf(IDispatch& object) {
  std::vector<Member> members;
  ComPtr<ITypeInfo> names, slots;
  HREFTYPE reference = 0;
  Check(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, &names));
  Check(names->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
  Check(names->GetRefTypeInfo(reference, &slots));
  TYPEATTR* attributes = nullptr;
  Check(slots->GetTypeAttr(&attributes));
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    Check(slots->GetFuncDesc(i, &function));
    Member member;
    BSTR name = nullptr;
    Check(slots->GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr));
    member.name = TextOf(name);
    SysFreeString(name);
    member.id = function->memid;
    member.flags = static_cast<WORD>(function->invkind);
    for (SHORT at = 0; at < function->cParams; ++at) {
      const ELEMDESC& parameter = function->lprgelemdescParam[at];
      const USHORT flags = parameter.paramdesc.wParamFlags;
      if ((flags & PARAMFLAG_FRETVAL) == 0)
        member.parameters.push_back({TypeOf(parameter), (flags & PARAMFLAG_FOPT) != 0});
    }
    slots->ReleaseFuncDesc(function);
    members.push_back(std::move(member));
  }
  slots->ReleaseTypeAttr(attributes);
  return members;
}

// Of the type, or of one that can't be taken for it.
Value Fitting(VARTYPE type) {
  if (type == VT_BSTR) return Value("x");
  if (type == VT_DISPATCH) return Value(static_cast<IDispatch*>(nullptr));
  if (type == VT_BOOL) return Value(false);
  return Value(LONG{1});
}
Value Unfitting(VARTYPE type) {
  if (type == VT_DISPATCH) return Value("no object");
  return Value(static_cast<IDispatch*>(ScriptedObject::Make().Get()));
}

std::vector<Value> FittingArguments(const Member& member, std::size_t count) {
  std::vector<Value> arguments;
  for (std::size_t i = 0; i < count; ++i)
    arguments.push_back(Fitting(i < member.parameters.size() ? member.parameters[i].type : VARTYPE{VT_I4}));
  return arguments;
}

HRESULT Invoke(IDispatch& object, const Member& member, const std::vector<Value>& arguments, UINT* bad) {
  std::vector<VARIANT> reversed;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    reversed.push_back(argument->Raw());
  DISPID named = DISPID_PROPERTYPUT;
  const bool isPut = (member.flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  DISPPARAMS passed = {reversed.data(), isPut ? &named : nullptr, static_cast<UINT>(reversed.size()),
                       isPut ? 1U : 0U};
  Value result;
  return object.Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, member.flags, &passed,
                       isPut ? nullptr : result.Place(), nullptr, bad);
}

class RefusalTest : public SampleTest {
 protected:
  template <class Step>
  void ForEachMember(Step&& step) {
    int members = 0;
    for (const CLSID& id :
         {__uuidof(::Location_Thunderbird), __uuidof(::Location_FireFox), __uuidof(::Location_Sunbird),
          __uuidof(::Actions), __uuidof(::WizardImport), __uuidof(::StdMail)}) {
      const ComPtr<IDispatch> object = New(id);
      for (const Member& member : MembersOf(*object.Get())) {
        step(*object.Get(), member);
        ++members;
      }
    }
    EXPECT_EQ(members, 22 + 2 + 18 + 2 + 18 + 2 + 2 + 7 + 26 + 9);
  }
};

TEST_F(RefusalTest, OneArgumentTooManyIsRefused) {
  ForEachMember([](IDispatch& object, const Member& member) {
    // What a property without arguments gives may be asked with some.
    if ((member.flags & DISPATCH_PROPERTYGET) != 0) return;
    EXPECT_EQ(Invoke(object, member, FittingArguments(member, member.parameters.size() + 1), nullptr),
              DISP_E_BADPARAMCOUNT)
        << member.name;
  });
}

TEST_F(RefusalTest, OneArgumentTooFewIsRefused) {
  ForEachMember([](IDispatch& object, const Member& member) {
    std::size_t required = 0;
    while (required < member.parameters.size() && !member.parameters[required].isOptional)
      ++required;
    if (required == 0) return;
    EXPECT_EQ(Invoke(object, member, FittingArguments(member, required - 1), nullptr), DISP_E_BADPARAMCOUNT)
        << member.name;
  });
}

TEST_F(RefusalTest, RequiredArgumentLeftOutIsRefused) {
  ForEachMember([](IDispatch& object, const Member& member) {
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
      if (member.parameters[i].isOptional) continue;
      std::vector<Value> arguments = FittingArguments(member, member.parameters.size());
      arguments[i] = Value();
      arguments[i]->vt = VT_ERROR;
      arguments[i]->scode = DISP_E_PARAMNOTFOUND;
      EXPECT_EQ(Invoke(object, member, arguments, nullptr), DISP_E_PARAMNOTOPTIONAL) << member.name;
    }
  });
}

TEST_F(RefusalTest, ArgumentOfAnotherTypeIsRefusedAndTold) {
  ForEachMember([](IDispatch& object, const Member& member) {
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
      // What isn't read can't be wrong.
      if (member.name == "SourceGetNext") continue;
      std::vector<Value> arguments = FittingArguments(member, member.parameters.size());
      arguments[i] = Unfitting(member.parameters[i].type);
      UINT bad = 99;
      EXPECT_EQ(Invoke(object, member, arguments, &bad), DISP_E_TYPEMISMATCH) << member.name << " " << i;
      EXPECT_EQ(bad, member.parameters.size() - 1 - i) << member.name;
    }
  });
}

TEST_F(RefusalTest, ScriptsSeeTheRuntimesNumbers) {
  const ComPtr<IDispatch> mail = New(__uuidof(::StdMail));
  const struct {
    const char* statement;
    const char* error;
  } wrongs[] = {
      {"mail.GetHeader", "450 "},
      {"mail.GetHeader \"a\", True, 1", "450 "},
      {"mail.GetHeader , True", "449 "},
      {"mail.InitStream \"x\"", "13 "},
      {"mail.InitStream 100000", "6 "},
      {"mail.Nothing_", "438 "},
      {"mail.Body = \"read only\"", "438 "},
  };
  for (const auto& wrong : wrongs) {
    ScriptHost script(L"VBScript");
    script.Name(L"mail", mail.Get());
    const std::string error = script.Run(std::string(wrong.statement) + "\r\n");
    EXPECT_EQ(error.substr(0, error.find(' ') + 1), wrong.error) << wrong.statement << ": " << error;
  }
}

}  // namespace
}  // namespace vorlent::com
