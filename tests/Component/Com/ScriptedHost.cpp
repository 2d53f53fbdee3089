#include "Component/Com/ScriptedHost.h"

#include <utility>

#include "Component/Com/ScriptedDatabase.h"
#include "Vorlent.h"

namespace vorlent::com {

namespace {

Value ObjectValueOf(const ComPtr<ScriptedObject>& object) {
  return Value(static_cast<IDispatch*>(object.Get()));
}

std::string TextAt(const std::vector<VARIANT>& arguments, std::size_t index) {
  const VARIANT& argument = arguments.at(index);
  return argument.vt == VT_BSTR ? TextOf(argument.bstrVal) : std::string();
}

LONG NumberAt(const std::vector<VARIANT>& arguments, std::size_t index) {
  const VARIANT& argument = arguments.at(index);
  return argument.vt == VT_I4 ? argument.lVal : 0;
}

// A collection of the host.
Value ListOf(std::vector<ComPtr<ScriptedObject>> entries) {
  const ComPtr<ScriptedObject> list = ScriptedObject::Make("List");
  list->Set(L"Count", Value(static_cast<LONG>(entries.size())));
  list->On(L"Item", [entries = std::move(entries)](std::vector<VARIANT>& arguments, Value& result) {
    const auto at = static_cast<std::size_t>(NumberAt(arguments, 0));
    if (at < 1 || at > entries.size()) return DISP_E_BADINDEX;
    result = ObjectValueOf(entries[at - 1]);
    return S_OK;
  });
  return ObjectValueOf(list);
}

// The data fields of an item.
using Fields = std::vector<std::pair<std::string, std::string>>;

std::string FieldText(const Fields& fields, const std::string& key) {
  for (const auto& [known, value] : fields) {
    if (known == key) return value;
  }
  return {};
}

void SetField(Fields& fields, const std::string& key, const std::string& value) {
  for (auto& [known, old] : fields) {
    if (known != key) continue;
    old = value;
    return;
  }
  fields.emplace_back(key, value);
}

// The fields of a record, without their escapes.
Fields FieldsOfRecord(const std::string& record) {
  Fields fields(1);
  bool inValue = false;
  for (std::size_t i = 0; i < record.size(); ++i) {
    auto& [key, value] = fields.back();
    const char letter = record[i];
    if (letter == '\\' && i + 1 < record.size()) {
      const char escaped = record[++i];
      value += escaped == 'n' ? '\n' : escaped;
    } else if (letter == '|') {
      fields.emplace_back();
      inValue = false;
    } else if (letter == '=' && !inValue) {
      inValue = true;
    } else {
      (inValue ? value : key) += letter;
    }
  }
  return fields;
}

void Import(ScriptedObject& item, Fields& fields, const std::string& record) {
  constexpr std::string_view kData = "Data";
  for (const auto& [key, value] : FieldsOfRecord(record)) {
    if (key.starts_with(kData)) SetField(fields, key.substr(kData.size()), value);
    if (key == "ID") item.Set(L"ID", Value(value));
    if (key == "Type") item.Set(L"Type", Value(value));
    if (key == "Text") item.Set(L"Text", Value(value));
    if (key == "Date") item.Set(L"Date", Value(value));
  }
}

}  // namespace

// Makes objects by a function, unless that goes wrong.
class ScriptedHost::Factory final : public IClassFactory {
 public:
  Factory(std::function<ComPtr<ScriptedObject>()> make, std::function<Wrong()> ask)
      : make_(std::move(make)), ask_(std::move(ask)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    *result = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory) ? this : nullptr;
    return *result == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** result) override {
    *result = nullptr;
    const Wrong wrong = ask_();
    if (wrong == Wrong::Raises) return ScriptedObject::kRaised;
    if (wrong == Wrong::Fails) return E_FAIL;
    if (wrong == Wrong::GivesNothing) return E_NOINTERFACE;
    return make_()->QueryInterface(id, result);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::function<ComPtr<ScriptedObject>()> make_;
  std::function<Wrong()> ask_;
};

ScriptedHost::ScriptedHost(std::string tempPath) : tempPath_(std::move(tempPath)) {
  ScriptedObject::WatchBy([this](const std::string& call) { return Watch(call); });
  Serve(__uuidof(::Item), "Item", [this] { return NewItem(); });
  Serve(__uuidof(::Tree), "Tree", [this] { return NewTree(); });
  Serve(__uuidof(::Location), "Location", [this] { return NewLocation(""); });
  Serve(__uuidof(::HostGlobal), "Global", [this] { return NewGlobal(); });
  Serve(__uuidof(::HostEnum), "Enum", [this] { return NewEnum(); });
  Serve(__uuidof(::HostDatabase), "Database", [this] { return NewDatabase(); });
  // The class of the dialogs has no name of its own.
  Serve(__uuidof(_HostDialogs), "Dialogs", [this] { return NewDialogs(); });
}

ScriptedHost::~ScriptedHost() {
  for (const DWORD served : served_)
    CoRevokeClassObject(served);
  ScriptedObject::WatchBy(nullptr);
}

void ScriptedHost::Forget() {
  replacement = nullptr;
  named.clear();
}

void ScriptedHost::Serve(REFCLSID id, const std::string& kind, std::function<ComPtr<ScriptedObject>()> make) {
  factories_.push_back(
      std::make_unique<Factory>(std::move(make), [this, call = kind + ".New"] { return Watch(call); }));
  DWORD served = 0;
  CoRegisterClassObject(id, factories_.back().get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &served);
  served_.push_back(served);
}

Wrong ScriptedHost::Watch(const std::string& call) {
  calls.push_back(call);
  if (failing == 0) return Wrong::Nothing;
  if (failing > 1) {
    --failing;
    return Wrong::Nothing;
  }
  failing = failsOn ? 1 : 0;
  return wrong;
}

void ScriptedHost::Do(ScriptedObject& object, const std::wstring& name, Body body) {
  object.On(name, [body = std::move(body)](std::vector<VARIANT>& arguments, Value& result) {
    result = body(arguments);
    return S_OK;
  });
}

void ScriptedHost::DoNothing(ScriptedObject& object, std::initializer_list<const wchar_t*> names) {
  for (const wchar_t* name : names)
    Do(object, name, [](const Arguments&) { return Value(); });
}

ComPtr<ScriptedObject> ScriptedHost::NewLocation(const std::string& address) {
  ComPtr<ScriptedObject> location = ScriptedObject::Make("Location");
  location->Set(L"Name", Value(address));
  location->Set(L"ItemCounter", Value(LONG{0}));
  for (const wchar_t* name : {L"Changed", L"LastItemTimer", L"ParameterItem", L"Connector"})
    location->Set(name, Value());
  location->Set(L"FileLocation", Value(tempPath_));
  location->Set(L"ItemCount", Value(LONG{1}));
  Do(*location.Get(), L"ErrorFactory", [this](const Arguments&) { return ErrorFactory(); });
  Do(*location.Get(), L"Open", [](const Arguments&) { return Value(LONG{1}); });
  DoNothing(*location.Get(), {L"Close", L"Load"});
  for (const wchar_t* name : {L"GetSetting", L"GetOption"})
    Do(*location.Get(), name, [](const Arguments&) { return Value(""); });
  const auto take = [this](const std::string& record) {
    const ComPtr<ScriptedObject> item = NewItem();
    Arguments given(1);
    const Value text(record);
    given[0] = text.Raw();
    Value none;
    DISPPARAMS passed = {given.data(), nullptr, 1, 0};
    wchar_t name[] = L"ImportRecord";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    item->GetIDsOfNames(IID_NULL, names, 1, 0, &id);
    item->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &passed, none.Place(), nullptr, nullptr);
    return ObjectValueOf(item);
  };
  Do(*location.Get(), L"PasteRecord",
     [take](const Arguments& arguments) { return take(TextAt(arguments, 0)); });
  Do(*location.Get(), L"ItemAt",
     [take](const Arguments&) { return take("Text=One|DataLocation=thunderbird://one/*|DataPath=C:\\\\"); });
  return location;
}

ComPtr<ScriptedObject> ScriptedHost::NewItem() {
  ComPtr<ScriptedObject> item = ScriptedObject::Make("Item");
  for (const wchar_t* name :
       {L"Type", L"Text", L"Date", L"Connected", L"AccessList", L"AccessDefault", L"Ready", L"DateCreated",
        L"DateModified", L"DateVisited", L"FullText", L"Address"})
    item->Set(name, Value());
  item->HoldWeakly(L"Location");
  item->Set(L"ID", Value(std::string_view("item" + std::to_string(++items_))));
  const auto fields = std::make_shared<Fields>();
  ScriptedObject* const raw = item.Get();
  Do(*raw, L"ImportRecord", [raw, fields](const Arguments& arguments) {
    Import(*raw, *fields, TextAt(arguments, 0));
    return Value();
  });
  Do(*raw, L"SetData", [fields](const Arguments& arguments) {
    SetField(*fields, TextAt(arguments, 0), TextAt(arguments, 1));
    return Value();
  });
  Do(*raw, L"DataText",
     [fields](const Arguments& arguments) { return Value(FieldText(*fields, TextAt(arguments, 0))); });
  Do(*raw, L"DataCount", [fields](const Arguments&) { return Value(static_cast<LONG>(fields->size())); });
  Do(*raw, L"DataKey", [fields](const Arguments& arguments) {
    return Value(fields->at(static_cast<std::size_t>(NumberAt(arguments, 0)) - 1).first);
  });
  Do(*raw, L"DataFile", [](const Arguments&) { return Value(""); });
  DoNothing(*raw, {L"AddKeyword", L"TakeFile"});
  return item;
}

ComPtr<ScriptedObject> ScriptedHost::NewTree() {
  ComPtr<ScriptedObject> tree = ScriptedObject::Make("Tree");
  for (const wchar_t* name : {L"Text", L"Description"})
    tree->Set(name, Value(""));
  for (const wchar_t* name : {L"ItemCount", L"ChildCount"})
    tree->Set(name, Value(LONG{0}));
  for (const wchar_t* name : {L"Items", L"Children"})
    Do(*tree.Get(), name, [](const Arguments&) { return ListOf({}); });
  DoNothing(*tree.Get(), {L"Clear", L"ClearItems", L"AddItem", L"AddKeywordPath"});
  Do(*tree.Get(), L"AddChild", [this](const Arguments&) { return ObjectValueOf(NewTree()); });
  return tree;
}

ComPtr<ScriptedObject> ScriptedHost::NewExpression(std::string_view text) {
  ComPtr<ScriptedObject> expression = ScriptedObject::Make("Expression");
  expression->Set(L"Text", Value(text));
  return expression;
}

void ScriptedHost::HaveTopics() {
  const ComPtr<ScriptedObject> connector = ScriptedObject::Make("Topics");
  connector->Set(L"Notify", Value(true));
  DoNothing(*connector.Get(), {L"ClearLocation", L"AddLocation"});
  named["topics"] = NewLocation("topics");
  named["topics"]->Set(L"Connector", ObjectValueOf(connector));
}

ComPtr<ScriptedObject> ScriptedHost::NewEnum() {
  ComPtr<ScriptedObject> made = ScriptedObject::Make("Enum");
  Do(*made.Get(), L"Init", [this](const Arguments& arguments) {
    if (replacement == nullptr) return Value();
    IDispatch*& place = *arguments.at(1).ppdispVal;
    if (place != nullptr) place->Release();
    place = replacement.Get();
    place->AddRef();
    return Value();
  });
  made->On(L"SubKeywords", [](Arguments&, Value& result) {
    const ComPtr<ScriptedObject> keywords = ScriptedObject::Make("List");
    keywords->Set(L"Count", Value(LONG{2}));
    Do(*keywords.Get(), L"Item", [](const Arguments& arguments) {
      return Value(NumberAt(arguments, 0) == 1 ? std::string_view("one") : std::string_view("two"));
    });
    result = ObjectValueOf(keywords);
    return S_OK;
  });
  return made;
}

ComPtr<ScriptedObject> ScriptedHost::NewDatabase() {
  return NewScriptedDatabase();
}

Value ScriptedHost::ErrorFactory() {
  const ComPtr<ScriptedObject> factory = ScriptedObject::Make("ErrorFactory");
  Do(*factory.Get(), L"Error", [](const Arguments&) {
    const ComPtr<ScriptedObject> error = ScriptedObject::Make("Error");
    error->Set(L"Suppressed", Value(false));
    error->Set(L"Silent", Value(false));
    DoNothing(*error.Get(), {L"Raise"});
    return ObjectValueOf(error);
  });
  return ObjectValueOf(factory);
}

Value ScriptedHost::MainWindow() {
  const ComPtr<ScriptedObject> window = ScriptedObject::Make("MainWindow");
  Do(*window.Get(), L"GetPaneTree", [this](const Arguments&) { return ObjectValueOf(NewTree()); });
  Do(*window.Get(), L"IsPaneShown", [](const Arguments&) { return Value(true); });
  DoNothing(*window.Get(), {L"SetPaneTree"});
  return ObjectValueOf(window);
}

ComPtr<ScriptedObject> ScriptedHost::NewGlobal() {
  ComPtr<ScriptedObject> global = ScriptedObject::Make("Global");
  global->Set(L"LogEnabled", Value(false));
  global->Set(L"ProgressVisible", Value(false));
  global->Set(L"UserName", Value("anna"));
  global->Set(L"TempPath", Value(tempPath_));
  global->Set(L"Cancelled", Value(false));
  DoNothing(*global.Get(), {L"Report"});
  Do(*global.Get(), L"GetOption", [](const Arguments&) { return Value(""); });
  Do(*global.Get(), L"FindItem", [](const Arguments&) { return Value(static_cast<IDispatch*>(nullptr)); });
  Do(*global.Get(), L"ActionName", [](const Arguments& arguments) {
    const LONG action = NumberAt(arguments, 0);
    return Value(action == 37   ? std::string_view("ItemInsert")
                 : action == 38 ? std::string_view("ItemRemove")
                                : std::string_view("ChangeText"));
  });
  Do(*global.Get(), L"Locations", [this](const Arguments&) { return ListOf({NewLocation("target")}); });
  Do(*global.Get(), L"GetObject", [this](const Arguments& arguments) {
    const auto found = named.find(TextAt(arguments, 0));
    return found == named.end() ? Value(static_cast<IDispatch*>(nullptr)) : ObjectValueOf(found->second);
  });
  Do(*global.Get(), L"ErrorFactory", [this](const Arguments&) { return ErrorFactory(); });
  Do(*global.Get(), L"MainWindow", [this](const Arguments&) { return MainWindow(); });
  return global;
}

ComPtr<ScriptedObject> ScriptedHost::NewDialogs() {
  ComPtr<ScriptedObject> dialogs = ScriptedObject::Make("Dialogs");
  Do(*dialogs.Get(), L"ShowWizard", [this](const Arguments&) { return Value(wizardAnswer); });
  Do(*dialogs.Get(), L"ChooseLocation", [](const Arguments&) { return Value(""); });
  return dialogs;
}

}  // namespace vorlent::com
