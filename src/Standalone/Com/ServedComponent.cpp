#include "Standalone/Com/ServedComponent.h"

#include <memory>
#include <string>
#include <utility>

#include "Common/KeyedList.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Host/Com/LateBound.h"
#include "Host/Connector.h"
#include "Platform/CodePage.h"
#include "Standalone/Com/HostFaces.h"

namespace vorlent::com {

namespace {

constexpr std::string_view kActions = "VorlentMozilla.Actions";

CLSID ClassOf(std::string_view progId) {
  CLSID id = {};
  const HRESULT status = CLSIDFromProgID(WideOf(progId).c_str(), &id);
  if (FAILED(status)) throw FailureOf(status, {});
  return id;
}

Value FaceValue(const ObjectPtr& object) {
  return Value(FaceOf(object).Get());
}

KeyedList<std::string> TextsOf(Value collection) {
  KeyedList<std::string> texts;
  for (Value& entry : EntriesOf(ToObject(std::move(collection)).Get()))
    texts.Add(ToText(std::move(entry)));
  return texts;
}

// An observer of this program as the component's.
class ObserverFace final : public Counted<IRunObserver> {
 public:
  explicit ObserverFace(MailRunObserver& observer) : observer_(observer) {}

  HRESULT STDMETHODCALLTYPE ImportBegins(IDispatch* target, VARIANT_BOOL moves) override {
    return Do([&] { observer_.ImportBegins(NativeAs<Location>(target), Given(&moves)); });
  }
  HRESULT STDMETHODCALLTYPE MailsExpunged(LONG count) override {
    return Do([&] { observer_.MailsExpunged(count); });
  }
  HRESULT STDMETHODCALLTYPE MailDelivered(BSTR mailbox, LONGLONG offset, VARIANT_BOOL hidesPlace) override {
    return Do([&] { observer_.MailDelivered({TextOf(mailbox), offset}, Given(&hidesPlace)); });
  }
  HRESULT STDMETHODCALLTYPE AttachmentUnmoved(BSTR key, BSTR path) override {
    return Do([&] { observer_.AttachmentUnmoved(TextOf(key), TextOf(path)); });
  }
  HRESULT STDMETHODCALLTYPE MailFailed(BSTR mailbox, LONGLONG offset, BSTR path, BSTR reason,
                                       LONG hint) override {
    return Do([&] {
      observer_.MailFailed({TextOf(mailbox), offset},
                           {TextOf(path), TextOf(reason), static_cast<Hint>(hint)});
    });
  }
  HRESULT STDMETHODCALLTYPE MarkingBegins(BSTR mailbox) override {
    return Do([&] { observer_.MarkingBegins(TextOf(mailbox)); });
  }
  HRESULT STDMETHODCALLTYPE MailNotMarked(BSTR mailbox, LONGLONG offset, LONG why) override {
    return Do([&] { observer_.MailNotMarked({TextOf(mailbox), offset}, static_cast<Marking>(why)); });
  }

 private:
  template <class Step>
  HRESULT Do(Step&& step) {
    return Answer(__uuidof(IRunObserver), L"Vorlent", std::forward<Step>(step));
  }

  MailRunObserver& observer_;
};

// An object of the component's that meets the contract.
template <class Contract>
class Proxy : public Contract, public HostFace {
 public:
  Proxy(IDispatch* object, IInside& inside) : object_(object), inside_(&inside) {}
  ~Proxy() override { FaceList<Object>::Current().Remove(this, Dispatch()); }

  IDispatch* Dispatch() const override { return object_.Object(); }

 protected:
  // What the object has beyond the contract with all hosts.
  Value Ask(std::string_view question, std::string_view given = {}) const {
    Value answer;
    Check(inside_->Ask(Dispatch(), Bstr(question).Get(), Bstr(given).Get(), answer.Place()));
    return answer;
  }
  void Observe(MailRunObserver* observer) {
    ComPtr<IRunObserver> face;
    if (observer != nullptr) face = Taken<IRunObserver>(new ObserverFace(*observer));
    Check(inside_->Observe(Dispatch(), face.Get()));
  }

  mutable LateBound object_;  // remembers the names that were looked up

 private:
  ComPtr<IInside> inside_;
};

template <class Contract>
class ConnectorProxy : public Proxy<Contract> {
 public:
  using Proxy<Contract>::Proxy;

  LocationPtr LocObject() const override { return Object<Location>(Call(L"LocObject")); }
  void SetLocObject(const LocationPtr& location) override { Put(L"LocObject", location); }
  TreePtr Tree() override { return Object<vorlent::Tree>(Call(L"Tree")); }
  void SetTree(const TreePtr& tree) override { Put(L"Tree", tree); }
  bool InitLocation(std::string_view file) override { return ToTruth(Call(L"InitLocation", Value(file))); }
  LocationState OpenLocation(std::string_view file) override {
    return static_cast<LocationState>(ToNumber(Call(L"OpenLocation", Value(file))));
  }
  void Disconnect() override { Call(L"Disconnect"); }
  ItemPtr NewItem(bool conn) override { return Object<vorlent::Item>(Call(L"NewItem", Value(conn))); }
  ItemPtr GetItem(std::string_view id) override { return Object<vorlent::Item>(Call(L"GetItem", Value(id))); }
  bool HasID(std::string_view id) override { return ToTruth(Call(L"HasID", Value(id))); }
  std::int32_t Count() override { return ToNumber(Call(L"Count")); }
  ItemPtr Item(std::int32_t pos) override { return Object<vorlent::Item>(Call(L"Item", Value(LONG{pos}))); }
  void Clear() override { Call(L"Clear"); }
  // The standalone host replaces no condition, so this one's stays, here and below.
  ObjectPtr CreateEnum(ExpressionPtr& expr) override {
    return Object<HostEnum>(Call(L"CreateEnum", FaceValue(expr)));
  }
  ItemPtr PasteItem(std::string_view import, bool conn) override {
    return Object<vorlent::Item>(Call(L"PasteItem", Value(import), Value(conn)));
  }
  bool DeleteItem(const ItemPtr& itm) override { return ToTruth(Call(L"DeleteItem", FaceValue(itm))); }
  void Reload() override { Call(L"Reload"); }

 protected:
  template <class... Arguments>
  Value Call(std::wstring_view name, const Arguments&... arguments) const {
    return this->object_.Call(name, arguments...);
  }
  void Put(std::wstring_view name, const ObjectPtr& object) { this->object_.Put(name, FaceValue(object)); }
  template <class Class>
  static std::shared_ptr<Class> Object(Value value) {
    return NativeAs<Class>(ToObject(std::move(value)).Get());
  }
};

class MailProxy final : public ConnectorProxy<MailConnector> {
 public:
  using ConnectorProxy::ConnectorProxy;

  LocationState Einlesen() override { return static_cast<LocationState>(ToNumber(Call(L"Einlesen"))); }
  std::string GetFile(const ItemPtr& itm, std::string_view key, GetFileOption getfileoption) override {
    return ToText(Call(L"GetFile", FaceValue(itm), Value(key), Value(LONG{getfileoption})));
  }
  void SourceInit(const TreePtr& tr, bool saveattachments) override {
    Call(L"SourceInit", FaceValue(tr), Value(saveattachments));
  }
  bool SourceGetNext(std::string& srcitm) override {
    Value record(std::string_view{});
    Value place;  // cleared without touching what it refers to
    place->vt = VT_BYREF | VT_BSTR;
    place->pbstrVal = &record->bstrVal;
    const bool isThere = ToTruth(Call(L"SourceGetNext", place));
    srcitm = TextOf(record->bstrVal);
    return isThere;
  }
  void SourceDelete() override { Call(L"SourceDelete"); }
  std::string GetActions() override { return ToText(Call(L"GetActions")); }
  std::string ExecuteAction(std::string_view cmd) override {
    return ToText(Call(L"ExecuteAction", Value(cmd)));
  }
  const KeyedList<std::string>& MailFiles() const override {
    mailFiles_ = TextsOf(Ask("MailFiles"));
    return mailFiles_;
  }
  void SetRunObserver(MailRunObserver* observer) override { Observe(observer); }
  bool HasRestored() const override { return ToTruth(Ask("HasRestored")); }

 private:
  mutable KeyedList<std::string> mailFiles_;  // as last asked for
};

class BookmarkProxy final : public ConnectorProxy<BookmarkConnector> {
 public:
  using ConnectorProxy::ConnectorProxy;

  std::string GetFile(const ItemPtr& itm, std::string_view key) override {
    return ToText(Call(L"GetFile", FaceValue(itm), Value(key)));
  }
  void Save() override { Call(L"Save"); }
  std::shared_ptr<KeyedList<std::string>> GetSubKeywords(ExpressionPtr& expr) override {
    Value given = Call(L"GetSubKeywords", FaceValue(expr));
    if (ToObject(Value(given->pdispVal)) == nullptr) return nullptr;
    return std::make_shared<KeyedList<std::string>>(TextsOf(std::move(given)));
  }
  void SaveInto(std::string_view path) override { Ask("SaveInto", path); }
  std::string ProfileFolder() const override { return ToText(Ask("ProfileFolder")); }
  std::string DatabaseFile() const override { return ToText(Ask("DatabaseFile")); }
};

class CalendarProxy final : public ConnectorProxy<CalendarConnector> {
 public:
  using ConnectorProxy::ConnectorProxy;

  void RedoAction(const ItemPtr& itm, std::string_view zeit, std::int32_t msg,
                  std::string_view value) override {
    Call(L"RedoAction", FaceValue(itm), Value(zeit), Value(LONG{msg}), Value(value));
  }
  LocationState Einlesen() override { return static_cast<LocationState>(ToNumber(Call(L"Einlesen"))); }
  KeyedList<std::string> GetCalendars(std::string_view prefolder, std::string_view fld,
                                      std::string_view path) override {
    return TextsOf(Call(L"GetCalendars", Value(prefolder), Value(fld), Value(path)));
  }
  std::string DatabaseFile() const override { return ToText(Ask("DatabaseFile")); }
};

class ActionsProxy final : public Proxy<ActionList> {
 public:
  using Proxy::Proxy;

  KeyedList<std::string> GetActions() override { return TextsOf(object_.Call(L"GetActions")); }
  void execute(std::string_view cmd) override { object_.Call(L"execute", Value(cmd)); }
  void SetRunObserver(MailRunObserver* observer) override { Observe(observer); }
};

template <class ProxyClass>
ObjectPtr MakeProxy(IDispatch* object, IInside& inside) {
  const auto made = std::make_shared<ProxyClass>(object, inside);
  FaceList<Object>::Current().Add(made, object);
  return made;
}

struct ProxiedClass {
  std::string_view progId;
  ObjectPtr (*make)(IDispatch* object, IInside& inside);
};

constexpr ProxiedClass kProxied[] = {{kThunderbirdScheme.progId, MakeProxy<MailProxy>},
                                     {kFireFoxScheme.progId, MakeProxy<BookmarkProxy>},
                                     {kSunbirdScheme.progId, MakeProxy<CalendarProxy>},
                                     {kActions, MakeProxy<ActionsProxy>}};

}  // namespace

ServedComponent::ServedComponent() {
  const HRESULT status = CoGetClassObject(ClassOf(kActions), CLSCTX_INPROC_SERVER, nullptr, __uuidof(IInside),
                                          reinterpret_cast<void**>(inside_.GetAddressOf()));
  if (FAILED(status)) throw FailureOf(status, {});
}

ObjectPtr ServedComponent::Create(std::string_view progId) const {
  for (const ProxiedClass& proxied : kProxied) {
    if (!EqualNoCase(proxied.progId, progId)) continue;
    ComPtr<IDispatch> object;
    Check(CoCreateInstance(ClassOf(progId), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                           reinterpret_cast<void**>(object.GetAddressOf())));
    return proxied.make(object.Get(), Inside());
  }
  return nullptr;
}

}  // namespace vorlent::com
