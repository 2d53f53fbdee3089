// The contract's classes, met by calls to an object of the host.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Host/Com/HostFace.h"
#include "Host/Com/LateBound.h"
#include "Host/HostObjects.h"

namespace vorlent::com {

namespace {

Value ObjectValue(const ObjectPtr& object) {
  return Value(FaceOf(object).Get());
}

template <class Contract>
std::shared_ptr<Contract> AdoptValue(Value value) {
  return Adopt<Contract>(ToObject(std::move(value)).Get());
}

// For what the contract never gives as nothing: the component uses it unasked. A host that gives nothing all
// the same fails where a call on it would.
template <class Contract>
std::shared_ptr<Contract> AdoptNeeded(Value value) {
  auto adopted = AdoptValue<Contract>(std::move(value));
  Require(adopted);
  return adopted;
}

template <class Contract>
KeyedList<std::shared_ptr<Contract>> AdoptAll(Value collection) {
  KeyedList<std::shared_ptr<Contract>> list;
  for (Value& entry : EntriesOf(ToObject(std::move(collection)).Get()))
    list.Add(AdoptNeeded<Contract>(std::move(entry)));
  return list;
}

template <class Contract>
class Adapter : public Contract, public HostFace {
 public:
  explicit Adapter(IDispatch* object) : host_(object) {}

  IDispatch* Dispatch() const override { return host_.Object(); }

  bool IsSame(const Object& other) const override {
    const auto* face = dynamic_cast<const HostFace*>(&other);
    return face != nullptr && AreSame(Dispatch(), face->Dispatch());
  }

 protected:
  std::string TextOf(std::wstring_view name) const { return ToText(host_.Call(name)); }
  std::int32_t NumberOf(std::wstring_view name) const { return ToNumber(host_.Call(name)); }
  bool TruthOf(std::wstring_view name) const { return ToTruth(host_.Call(name)); }
  void PutText(std::wstring_view name, std::string_view text) { host_.Put(name, Value(text)); }
  void PutTruth(std::wstring_view name, bool truth) { host_.Put(name, Value(truth)); }

  mutable LateBound host_;  // remembers the names that were looked up
};

class ItemAdapter final : public Adapter<Item> {
 public:
  using Adapter::Adapter;

  std::string ID() const override { return TextOf(L"ID"); }
  void SetID(std::string_view id) override { PutText(L"ID", id); }
  std::string Type() const override { return TextOf(L"Type"); }
  void SetType(std::string_view type) override { PutText(L"Type", type); }
  std::string Text() const override { return TextOf(L"Text"); }
  void SetText(std::string_view text) override { PutText(L"Text", text); }
  std::string Date() const override { return TextOf(L"Date"); }
  void SetConnected(bool connected) override { PutTruth(L"Connected", connected); }
  std::int32_t DataCount() const override { return NumberOf(L"DataCount"); }
  std::string DataKey(std::int32_t pos) const override {
    return ToText(host_.Call(L"DataKey", Value(LONG{pos})));
  }
  std::string DataText(std::string_view key) const override {
    return ToText(host_.Call(L"DataText", Value(key)));
  }
  void SetData(std::string_view key, std::string_view value, bool flag) override {
    host_.Call(L"SetData", Value(key), Value(value), Value(flag));
  }
  void AddKeyword(std::string_view keyword, bool flag) override {
    host_.Call(L"AddKeyword", Value(keyword), Value(flag));
  }
  std::string DateCreated() const override { return TextOf(L"DateCreated"); }
  std::string DateModified() const override { return TextOf(L"DateModified"); }
  std::string DateVisited() const override { return TextOf(L"DateVisited"); }
  void SetAccessList(std::string_view list) override { PutText(L"AccessList", list); }
  void SetAccessDefault(std::string_view access) override { PutText(L"AccessDefault", access); }
  void SetReady(bool ready) override { PutTruth(L"Ready", ready); }
  void SetLocation(const ObjectPtr& connector) override { host_.Put(L"Location", ObjectValue(connector)); }
  std::string FullText() const override { return TextOf(L"FullText"); }
  void ImportRecord(std::string_view record) override { host_.Call(L"ImportRecord", Value(record)); }
  std::string Address() const override { return TextOf(L"Address"); }
  std::string DataFile(std::string_view key, std::int32_t index) const override {
    return ToText(host_.Call(L"DataFile", Value(key), Value(LONG{index})));
  }
  void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                std::string_view metaData) override {
    host_.Call(L"TakeFile", Value(key), Value(path), Value(options), Value(metaData));
  }
};

class TreeAdapter final : public Adapter<Tree> {
 public:
  using Adapter::Adapter;

  std::string Text() const override { return TextOf(L"Text"); }
  KeyedList<ItemPtr> Items() const override { return AdoptAll<Item>(host_.Call(L"Items")); }
  std::string Description() const override { return TextOf(L"Description"); }
  KeyedList<TreePtr> Children() const override { return AdoptAll<Tree>(host_.Call(L"Children")); }
  void Clear() override { host_.Call(L"Clear"); }
  TreePtr AddChild(std::string_view text, std::string_view keyword) override {
    return AdoptNeeded<Tree>(host_.Call(L"AddChild", Value(text), Value(keyword)));
  }
  void ClearItems() override { host_.Call(L"ClearItems"); }
  void AddItem(const ItemPtr& item) override { host_.Call(L"AddItem", ObjectValue(item)); }
  std::int32_t ItemCount() const override { return NumberOf(L"ItemCount"); }
  std::int32_t ChildCount() const override { return NumberOf(L"ChildCount"); }
  void AddKeywordPath(std::string_view keywords) override { host_.Call(L"AddKeywordPath", Value(keywords)); }
};

class ExpressionAdapter final : public Adapter<Expression> {
 public:
  using Adapter::Adapter;
  std::string Text() const override { return TextOf(L"Text"); }
};

class HostErrorAdapter final : public Adapter<HostError> {
 public:
  using Adapter::Adapter;

  void Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override {
    host_.Call(L"Raise", Value(LONG{kind}), Value(source), Value(flag), Value(text));
  }
  bool Suppressed() const override { return TruthOf(L"Suppressed"); }
  bool Silent() const override { return TruthOf(L"Silent"); }
};

class HostErrorFactoryAdapter final : public Adapter<HostErrorFactory> {
 public:
  using Adapter::Adapter;
  std::shared_ptr<HostError> Error() override { return AdoptNeeded<HostError>(host_.Call(L"Error")); }
};

class TopicsAdapter final : public Adapter<TopicsConnector> {
 public:
  using Adapter::Adapter;

  void SetNotify(bool notify) override { PutTruth(L"Notify", notify); }
  void ClearLocation(const ObjectPtr& source) override { host_.Call(L"ClearLocation", ObjectValue(source)); }
  void AddLocation(const ObjectPtr& source) override { host_.Call(L"AddLocation", ObjectValue(source)); }
};

class LocationAdapter final : public Adapter<Location> {
 public:
  using Adapter::Adapter;

  void SetChanged(bool changed) override { PutTruth(L"Changed", changed); }
  // The one whose members are called is that of the Location of topics.
  ObjectPtr Connector() const override { return AdoptValue<TopicsConnector>(host_.Call(L"Connector")); }
  std::int32_t ItemCounter() const override { return NumberOf(L"ItemCounter"); }
  void SetItemCounter(std::int32_t count) override { host_.Put(L"ItemCounter", Value(LONG{count})); }
  void SetLastItemTimer(float seconds) override { host_.Put(L"LastItemTimer", Value(seconds)); }
  ItemPtr ParameterItem() const override { return AdoptValue<Item>(host_.Call(L"ParameterItem")); }
  void SetParameterItem(const ItemPtr& item) override { host_.Put(L"ParameterItem", ObjectValue(item)); }
  std::shared_ptr<HostErrorFactory> ErrorFactory() override {
    return AdoptNeeded<HostErrorFactory>(host_.Call(L"ErrorFactory"));
  }
  LocationState Open(std::string_view address) override {
    return static_cast<LocationState>(ToNumber(host_.Call(L"Open", Value(address))));
  }
  void Close() override { host_.Call(L"Close"); }
  ItemPtr PasteRecord(std::string_view record) override {
    return AdoptNeeded<Item>(host_.Call(L"PasteRecord", Value(record)));
  }
  std::string Name() const override { return TextOf(L"Name"); }
  ItemPtr ItemAt(std::int32_t pos) override {
    return AdoptNeeded<Item>(host_.Call(L"ItemAt", Value(LONG{pos})));
  }
  std::int32_t ItemCount() const override { return NumberOf(L"ItemCount"); }
  std::string GetSetting(std::string_view key) override {
    return ToText(host_.Call(L"GetSetting", Value(key)));
  }
  std::string GetOption(std::string_view key) override {
    return ToText(host_.Call(L"GetOption", Value(key)));
  }
  void Load() override { host_.Call(L"Load"); }
  std::string FileLocation() const override { return TextOf(L"FileLocation"); }
};

// A place that the host may fill anew. What it holds is the host's to let go, and the holder's at the end.
class Place {
 public:
  explicit Place(const ObjectPtr& object) : held_(FaceOf(object)) {
    reference_->vt = VT_BYREF | VT_DISPATCH;
    reference_->ppdispVal = held_.GetAddressOf();
  }

  const Value& Reference() const { return reference_; }
  bool Holds(const ObjectPtr& object) const { return AreSame(held_.Get(), FaceOf(object).Get()); }
  IDispatch* Held() const { return held_.Get(); }

 private:
  ComPtr<IDispatch> held_;
  Value reference_;  // cleared without touching what it refers to
};

class HostEnumAdapter final : public Adapter<HostEnum> {
 public:
  using Adapter::Adapter;

  void Init(LocationPtr& location, ExpressionPtr& expression) override {
    const Place locationPlace(location);
    const Place expressionPlace(expression);
    host_.Call(L"Init", locationPlace.Reference(), expressionPlace.Reference());
    if (!locationPlace.Holds(location)) location = Adopt<Location>(locationPlace.Held());
    if (!expressionPlace.Holds(expression)) expression = Adopt<Expression>(expressionPlace.Held());
  }
  std::shared_ptr<KeyedList<std::string>> SubKeywords(std::string_view keyword) override {
    const ComPtr<IDispatch> given = ToObject(host_.Call(L"SubKeywords", Value(keyword)));
    if (given == nullptr) return nullptr;
    auto list = std::make_shared<KeyedList<std::string>>();
    for (Value& entry : EntriesOf(given.Get()))
      list->Add(ToText(std::move(entry)));
    return list;
  }
};

class HostRecordsetAdapter final : public Adapter<HostRecordset> {
 public:
  using Adapter::Adapter;

  std::int32_t RecordCount() override { return NumberOf(L"RecordCount"); }
  void MoveFirst() override { host_.Call(L"MoveFirst"); }
  void MoveNext() override { host_.Call(L"MoveNext"); }
  std::string Field(std::string_view name) override { return Column(host_.Call(L"Field", Value(name))); }
  std::string FieldDate(std::string_view name) override {
    return Column(host_.Call(L"FieldDate", Value(name)));
  }
  bool EndOfRows() override { return TruthOf(L"EOF"); }

 private:
  static std::string Column(Value value) {
    return value->vt == VT_NULL ? std::string() : ToText(std::move(value));
  }
};

class HostDatabaseAdapter final : public Adapter<HostDatabase> {
 public:
  using Adapter::Adapter;

  bool Open(std::string_view kind, std::string_view connection) override {
    return ToTruth(host_.Call(L"Open", Value(kind), Value(connection)));
  }
  HostRecordsetPtr Query(std::string_view sql, std::int32_t value) override {
    return AdoptNeeded<HostRecordset>(host_.Call(L"Query", Value(sql), Value(LONG{value})));
  }
  bool Execute(std::string_view sql) override { return ToTruth(host_.Call(L"Execute", Value(sql))); }
  void Close() override { host_.Call(L"Close"); }
};

class HostMainWindowAdapter final : public Adapter<HostMainWindow> {
 public:
  using Adapter::Adapter;

  TreePtr GetPaneTree(std::int32_t pane) override {
    return AdoptNeeded<Tree>(host_.Call(L"GetPaneTree", Value(LONG{pane})));
  }
  void SetPaneTree(std::int32_t pane, const TreePtr& tree) override {
    host_.Call(L"SetPaneTree", Value(LONG{pane}), ObjectValue(tree));
  }
  bool IsPaneShown(std::int32_t pane) override {
    return ToTruth(host_.Call(L"IsPaneShown", Value(LONG{pane})));
  }
};

class HostGlobalAdapter final : public Adapter<HostGlobal> {
 public:
  using Adapter::Adapter;

  ObjectPtr GetObject(std::string_view name) override {
    return AdoptValue<Location>(host_.Call(L"GetObject", Value(name)));
  }
  ItemPtr FindItem(std::string_view id) override {
    return AdoptValue<Item>(host_.Call(L"FindItem", Value(id)));
  }
  KeyedList<LocationPtr> Locations() override { return AdoptAll<Location>(host_.Call(L"Locations")); }
  void Report(std::int32_t code, std::string_view text, const ItemPtr& item) override {
    host_.Call(L"Report", Value(LONG{code}), Value(text), ObjectValue(item));
  }
  std::string GetOption(std::string_view key) override {
    return ToText(host_.Call(L"GetOption", Value(key)));
  }
  std::string TempPath() override { return TextOf(L"TempPath"); }
  std::shared_ptr<HostMainWindow> MainWindow() override {
    return AdoptValue<HostMainWindow>(host_.Call(L"MainWindow"));
  }
  bool Cancelled() override { return TruthOf(L"Cancelled"); }
  void SetProgressVisible(bool visible) override { PutTruth(L"ProgressVisible", visible); }
  bool LogEnabled() override { return TruthOf(L"LogEnabled"); }
  void SetLogEnabled(bool enabled) override { PutTruth(L"LogEnabled", enabled); }
  std::string UserName() override { return TextOf(L"UserName"); }
  std::string ActionName(std::int32_t msg) override {
    return ToText(host_.Call(L"ActionName", Value(LONG{msg})));
  }
  std::shared_ptr<HostErrorFactory> ErrorFactory() override {
    return AdoptNeeded<HostErrorFactory>(host_.Call(L"ErrorFactory"));
  }
};

class HostDialogsAdapter final : public Adapter<HostDialogs> {
 public:
  using Adapter::Adapter;

  std::string ShowWizard(std::string_view title, std::string_view progId,
                         std::string_view parameter) override {
    return ToText(host_.Call(L"ShowWizard", Value(title), Value(progId), Value(parameter)));
  }
  std::string ChooseLocation(std::string_view title, std::string_view first,
                             std::string_view second) override {
    return ToText(host_.Call(L"ChooseLocation", Value(title), Value(first), Value(second)));
  }
};

}  // namespace

#define VORLENT_ADOPT(Contract, Class)                            \
  template <>                                                     \
  std::shared_ptr<Contract> Adopt<Contract>(IDispatch * object) { \
    if (object == nullptr) return nullptr;                        \
    return std::make_shared<Class>(object);                       \
  }
VORLENT_ADOPT(Item, ItemAdapter)
VORLENT_ADOPT(Tree, TreeAdapter)
VORLENT_ADOPT(Expression, ExpressionAdapter)
VORLENT_ADOPT(HostError, HostErrorAdapter)
VORLENT_ADOPT(HostErrorFactory, HostErrorFactoryAdapter)
VORLENT_ADOPT(TopicsConnector, TopicsAdapter)
VORLENT_ADOPT(Location, LocationAdapter)
VORLENT_ADOPT(HostEnum, HostEnumAdapter)
VORLENT_ADOPT(HostRecordset, HostRecordsetAdapter)
VORLENT_ADOPT(HostDatabase, HostDatabaseAdapter)
VORLENT_ADOPT(HostMainWindow, HostMainWindowAdapter)
VORLENT_ADOPT(HostGlobal, HostGlobalAdapter)
VORLENT_ADOPT(HostDialogs, HostDialogsAdapter)
#undef VORLENT_ADOPT

}  // namespace vorlent::com
