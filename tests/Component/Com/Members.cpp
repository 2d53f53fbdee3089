#include "Component/Com/Members.h"

#include <oleauto.h>

#include <cstring>
#include <utility>

#include "Component/Com/ScriptHost.h"
#include "Component/Com/ScriptedObject.h"
#include "Host/Com/Failures.h"
#include "Host/Com/LateBound.h"

namespace vorlent::com {

namespace {

Value ValueOf(const Argument& argument, const Objects& objects) {
  if (const auto* text = std::get_if<std::string>(&argument)) return Value(*text);
  if (const auto* truth = std::get_if<bool>(&argument)) return Value(*truth);
  if (const auto* number = std::get_if<LONG>(&argument)) return Value(*number);
  return Value(objects.at(std::get<Named>(argument).name).Get());
}

bool IsWriting(const Use& use) {
  return use.way == Way::Put || use.way == Way::Set;
}

// --- Scripts

class Language {
 public:
  explicit Language(bool isBasic) : isBasic_(isBasic) {}

  std::string Name() const { return isBasic_ ? "VBScript" : "JScript"; }
  std::string Statement(const Use& use) const {
    if (IsWriting(use))
      return Assignment("o." + use.member, Text(use.arguments.at(0)), use.way == Way::Set) +
             Assignment("out.Result", "\"\"", false);
    std::string expression = "o." + use.member + (use.way == Way::Get ? "" : Arguments(use));
    std::string statements;
    if (!use.keptAs.empty()) statements = Assignment(use.keptAs, std::exchange(expression, use.keptAs), true);
    const bool isObject = use.then.empty() && (use.expected == "object" || use.expected == "nothing");
    if (!use.then.empty()) expression += "." + use.then;
    return statements + Assignment("out.Result", expression, isObject);
  }

 private:
  std::string Assignment(const std::string& place, const std::string& value, bool isObject) const {
    return (isBasic_ && isObject ? "Set " : "") + place + " = " + value + (isBasic_ ? "\r\n" : ";\n");
  }
  std::string Arguments(const Use& use) const {
    std::string list;
    for (const Argument& argument : use.arguments)
      list += (list.empty() ? "" : ", ") + Text(argument);
    return "(" + list + ")";
  }
  std::string Text(const Argument& argument) const {
    if (const auto* text = std::get_if<std::string>(&argument)) return Quoted(*text);
    if (const auto* truth = std::get_if<bool>(&argument)) return *truth ? "true" : "false";
    if (const auto* number = std::get_if<LONG>(&argument)) return std::to_string(*number);
    const std::string& name = std::get<Named>(argument).name;
    return name == "nothing" && !isBasic_ ? "null" : name;
  }
  std::string Quoted(const std::string& text) const {
    std::string quoted;
    for (const char letter : text) {
      if (letter == '\\' && !isBasic_) quoted += '\\';
      quoted += letter;
    }
    return "\"" + quoted + "\"";
  }

  bool isBasic_;
};

std::vector<std::string> UseByScript(const Language& language, const Objects& objects,
                                     const std::vector<Use>& uses) {
  std::vector<std::string> results;
  const ComPtr<ScriptedObject> out = ScriptedObject::Make();
  out->Set(L"Result", Value());
  out->OnPut(L"Result", [&](const VARIANT& given) { results.push_back(ResultText(given)); });
  ScriptHost host(WideOf(language.Name()).c_str());
  host.Name(L"out", out.Get());
  for (const auto& [name, object] : objects) {
    if (object != nullptr) host.Name(WideOf(name), object.Get());
  }
  std::string text;
  for (const Use& use : uses)
    text += language.Statement(use);
  const std::string error = host.Run(text);
  if (!error.empty()) results.push_back("error " + error);
  return results;
}

// --- Callers by name

Value CallByName(LateBound& object, const Use& use, const Objects& objects) {
  std::vector<Value> values;
  for (const Argument& argument : use.arguments)
    values.push_back(ValueOf(argument, objects));
  const std::wstring name = WideOf(use.member);
  if (IsWriting(use)) {
    object.Put(name, values.at(0));
    return Value(std::string_view());
  }
  switch (values.size()) {
    case 0:
      return object.Call(name);
    case 1:
      return object.Call(name, values[0]);
    case 2:
      return object.Call(name, values[0], values[1]);
    case 3:
      return object.Call(name, values[0], values[1], values[2]);
    default:
      return object.Call(name, values.at(0), values.at(1), values.at(2), values.at(3));
  }
}

// --- Callers by slot, who know of the members what the type library tells them

class SlotCall {
 public:
  SlotCall(ITypeInfo& slots, const Use& use) : slots_(slots) {
    const INVOKEKIND kind = use.way == Way::Get   ? INVOKE_PROPERTYGET
                            : use.way == Way::Put ? INVOKE_PROPERTYPUT
                            : use.way == Way::Set ? INVOKE_PROPERTYPUTREF
                                                  : INVOKE_FUNC;
    std::wstring name = WideOf(use.member);
    LPOLESTR names[] = {name.data()};
    MEMBERID id = 0;
    Check(slots.GetIDsOfNames(names, 1, &id));
    TYPEATTR* attributes = nullptr;
    Check(slots.GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    slots.ReleaseTypeAttr(attributes);
    for (UINT i = 0; i < count && function_ == nullptr; ++i) {
      FUNCDESC* candidate = nullptr;
      Check(slots.GetFuncDesc(i, &candidate));
      if (candidate->memid == id && candidate->invkind == kind)
        function_ = candidate;
      else
        slots.ReleaseFuncDesc(candidate);
    }
    if (function_ == nullptr) throw Failure(ErrorNumber::NoSuchMember, use.member);
  }
  SlotCall(const SlotCall&) = delete;
  SlotCall& operator=(const SlotCall&) = delete;
  ~SlotCall() { slots_.ReleaseFuncDesc(function_); }

  Value Run(IUnknown* object, std::vector<Value> given) {
    const auto count = static_cast<std::size_t>(function_->cParams);
    given.resize(count);
    std::vector<VARIANT> passed(count);
    std::vector<VARTYPE> types(count);
    std::vector<VARIANTARG*> places(count);
    bool hasResult = false;
    for (std::size_t i = 0; i < count; ++i) {
      const ELEMDESC& parameter = function_->lprgelemdescParam[i];
      const USHORT flags = parameter.paramdesc.wParamFlags;
      hasResult = (flags & PARAMFLAG_FRETVAL) != 0;
      bool isReference = false;
      const VARTYPE type = TypeOf(parameter, isReference);
      if (given[i]->vt == VT_EMPTY && (flags & PARAMFLAG_FHASDEFAULT) != 0)
        Check(VariantCopy(given[i].Place(), &parameter.paramdesc.pparamdescex->varDefaultValue));
      if (given[i]->vt != VT_EMPTY && type != VT_DISPATCH)
        Check(VariantChangeType(given[i].Place(), given[i].Place(), 0, type));
      given[i]->vt = type;
      if (isReference) {
        passed[i].vt = VT_BYREF | type;
        passed[i].byref = &given[i]->llVal;
      } else {
        passed[i] = given[i].Raw();
      }
      types[i] = passed[i].vt;
      places[i] = &passed[i];
    }
    Value status;
    Check(DispCallFunc(object, static_cast<ULONG_PTR>(function_->oVft), CC_STDCALL, VT_ERROR,
                       static_cast<UINT>(count), types.data(), places.data(), status.Place()));
    Check(status->scode);
    return hasResult ? std::move(given.back()) : Value(std::string_view());
  }

 private:
  // An interface is one pointer, an enumeration a number.
  static VARTYPE TypeOf(const ELEMDESC& parameter, bool& isReference) {
    const bool comesBack = (parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
    const TYPEDESC* type = &parameter.tdesc;
    isReference = comesBack;
    if (comesBack) type = type->lptdesc;
    if (type->vt == VT_PTR) return VT_DISPATCH;
    return type->vt == VT_USERDEFINED ? VARTYPE{VT_I4} : type->vt;
  }

  ITypeInfo& slots_;
  FUNCDESC* function_ = nullptr;
};

Value CallBySlot(ITypeInfo& slots, const Use& use, const Objects& objects) {
  TYPEATTR* attributes = nullptr;
  Check(slots.GetTypeAttr(&attributes));
  const GUID id = attributes->guid;
  slots.ReleaseTypeAttr(attributes);
  ComPtr<IUnknown> object;
  Check(objects.at("o")->QueryInterface(id, reinterpret_cast<void**>(object.GetAddressOf())));
  std::vector<Value> given;
  for (const Argument& argument : use.arguments)
    given.push_back(ValueOf(argument, objects));
  return SlotCall(slots, use).Run(object.Get(), std::move(given));
}

template <class Caller>
std::vector<std::string> UseByCaller(Objects& objects, const std::vector<Use>& uses, const Caller& call) {
  std::vector<std::string> results;
  try {
    for (const Use& use : uses) {
      Value result = call(use);
      if (!use.keptAs.empty()) objects[use.keptAs] = result->vt == VT_DISPATCH ? result->pdispVal : nullptr;
      if (!use.then.empty()) result = LateBound(ToObject(std::move(result)).Get()).Call(WideOf(use.then));
      results.push_back(ResultText(result.Raw()));
    }
  } catch (const Failure& failure) {
    results.push_back("error " + std::to_string(failure.Number()) + " " + failure.what());
  }
  return results;
}

}  // namespace

Use Use::Then(std::string property) const {
  Use use = *this;
  use.then = std::move(property);
  return use;
}

Use Use::KeptAs(std::string name) const {
  Use use = *this;
  use.keptAs = std::move(name);
  return use;
}

Use Get(std::string member, std::string expected) {
  return {.way = Way::Get, .member = std::move(member), .arguments = {}, .expected = std::move(expected)};
}

Use Put(std::string member, Argument value) {
  return {.way = Way::Put, .member = std::move(member), .arguments = {std::move(value)}};
}

Use Set(std::string member, std::string object) {
  return {.way = Way::Set, .member = std::move(member), .arguments = {Named{std::move(object)}}};
}

Use Call(std::string member, std::vector<Argument> arguments, std::string expected) {
  return {.way = Way::Call,
          .member = std::move(member),
          .arguments = std::move(arguments),
          .expected = std::move(expected)};
}

std::string ResultText(const VARIANT& result) {
  switch (result.vt) {
    case VT_EMPTY:
      return {};
    case VT_NULL:
      return "nothing";
    case VT_DISPATCH:
      return result.pdispVal == nullptr ? "nothing" : "object";
    case VT_BOOL:
      return result.boolVal == VARIANT_FALSE ? "false" : "true";
    default: {
      Value text;
      if (FAILED(VariantChangeTypeEx(text.Place(), Readable(result), LOCALE_INVARIANT, 0, VT_BSTR)))
        return "type " + std::to_string(result.vt);
      return TextOf(text->bstrVal);
    }
  }
}

std::string ClientName(Client client) {
  switch (client) {
    case Client::VBScript:
      return "VBScript";
    case Client::JScript:
      return "JScript";
    case Client::Names:
      return "Names";
    default:
      return "Slots";
  }
}

std::vector<std::string> UseMembers(Client client, ITypeInfo& slots, Objects objects,
                                    const std::vector<Use>& uses) {
  switch (client) {
    case Client::VBScript:
    case Client::JScript:
      return UseByScript(Language(client == Client::VBScript), objects, uses);
    case Client::Names: {
      LateBound object(objects.at("o").Get());
      return UseByCaller(objects, uses, [&](const Use& use) { return CallByName(object, use, objects); });
    }
    default:
      return UseByCaller(objects, uses, [&](const Use& use) { return CallBySlot(slots, use, objects); });
  }
}

}  // namespace vorlent::com
