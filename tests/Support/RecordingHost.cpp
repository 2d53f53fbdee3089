#include "Support/RecordingHost.h"

#include <algorithm>

#include "Common/NumberText.h"
#include "Common/StdModul.h"

namespace vorlent::test {

namespace {

std::string Word(bool value) {
  return value ? "true" : "false";
}

std::string NameOf(const ObjectPtr& object) {
  if (object == nullptr) return "nothing";
  if (const auto* item = dynamic_cast<const RecordingItem*>(object.get())) return item->Name;
  if (const auto* tree = dynamic_cast<const RecordingTree*>(object.get())) return tree->Name;
  if (const auto* location = dynamic_cast<const RecordingLocation*>(object.get())) {
    return "Location(" + Quoted(location->Address) + ")";
  }
  if (dynamic_cast<const Connector*>(object.get()) != nullptr) return "connector";
  return "object";
}

std::string LocationName(const std::string& address) {
  return "Location(" + Quoted(address) + ")";
}

}  // namespace

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    switch (c) {
      case '\r':
        out += "\\r";
        break;
      case '\n':
        out += "\\n";
        break;
      case '"':
        out += "\\\"";
        break;
      default:
        out += c;
    }
  }
  return out + '"';
}

// --- CallLog

std::string CallLog::Text() const {
  std::string out;
  for (const std::string& line : lines_)
    out += line + '\n';
  return out;
}

std::vector<std::string> CallLog::Only(const std::vector<std::string>& prefixes) const {
  std::vector<std::string> out;
  std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(out), [&](const std::string& line) {
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const auto& prefix) { return line.starts_with(prefix); });
  });
  return out;
}

void CallLog::FailOn(std::string_view prefix, int nth, bool always, int number) {
  faults_.push_back({std::string(prefix), nth, always, number});
}

void CallLog::Write(const std::string& line) {
  lines_.push_back(line);
  if (OnCall) OnCall(line);
  Check(line);
}

void CallLog::Read(const std::string& line) {
  if (RecordReads) lines_.push_back(line);
  Check(line);
}

void CallLog::Check(const std::string& line) {
  for (Fault& fault : faults_) {
    if (!line.starts_with(fault.prefix)) continue;
    --fault.countdown;
    if (fault.countdown == 0 || (fault.always && fault.countdown < 0)) {
      throw Failure(fault.number, "scripted failure of " + line);
    }
  }
}

// --- RecordingItem

RecordingItem::RecordingItem(CallLog& log, int number)
    : Name("item" + std::to_string(number)), IdText("{NEW-" + std::to_string(number) + "}"), log_(log) {}

std::string RecordingItem::ID() const {
  log_.Read(Name + ".ID");
  return IdText;
}

void RecordingItem::SetID(std::string_view id) {
  log_.Write(Name + ".SetID(" + Quoted(id) + ")");
  IdText = id;
}

std::string RecordingItem::Type() const {
  log_.Read(Name + ".Type");
  return TypeText;
}

void RecordingItem::SetType(std::string_view type) {
  log_.Write(Name + ".SetType(" + Quoted(type) + ")");
  TypeText = type;
}

std::string RecordingItem::Text() const {
  log_.Read(Name + ".Text");
  return DisplayText;
}

void RecordingItem::SetText(std::string_view text) {
  log_.Write(Name + ".SetText(" + Quoted(text) + ")");
  DisplayText = text;
}

std::string RecordingItem::Date() const {
  log_.Read(Name + ".Date");
  return DateText;
}

void RecordingItem::SetConnected(bool connected) {
  log_.Write(Name + ".SetConnected(" + Word(connected) + ")");
  Connected = connected;
}

std::int32_t RecordingItem::DataCount() const {
  log_.Read(Name + ".DataCount");
  return static_cast<std::int32_t>(Data.size());
}

std::string RecordingItem::DataKey(std::int32_t pos) const {
  log_.Read(Name + ".DataKey(" + std::to_string(pos) + ")");
  return Data.at(static_cast<std::size_t>(pos) - 1).first;
}

std::string RecordingItem::DataText(std::string_view key) const {
  log_.Read(Name + ".DataText(" + Quoted(key) + ")");
  const auto found =
      std::find_if(Data.begin(), Data.end(), [&](const auto& field) { return field.first == key; });
  return found == Data.end() ? std::string() : found->second;
}

void RecordingItem::SetData(std::string_view key, std::string_view value, bool flag) {
  log_.Write(Name + ".SetData(" + Quoted(key) + "," + Quoted(value) + "," + Word(flag) + ")");
  const auto found =
      std::find_if(Data.begin(), Data.end(), [&](const auto& field) { return field.first == key; });
  if (found == Data.end()) {
    Data.emplace_back(key, value);
  } else {
    found->second = value;
  }
}

void RecordingItem::AddKeyword(std::string_view keyword, bool) {
  log_.Write(Name + ".AddKeyword(" + Quoted(keyword) + ")");
  if (!Keywords.empty()) Keywords += ',';
  Keywords += keyword;
}

std::string RecordingItem::DateCreated() const {
  log_.Read(Name + ".DateCreated");
  return Created;
}

std::string RecordingItem::DateModified() const {
  log_.Read(Name + ".DateModified");
  return Modified;
}

std::string RecordingItem::DateVisited() const {
  log_.Read(Name + ".DateVisited");
  return Visited;
}

void RecordingItem::SetAccessList(std::string_view list) {
  log_.Write(Name + ".SetAccessList(" + Quoted(list) + ")");
}

void RecordingItem::SetAccessDefault(std::string_view access) {
  log_.Write(Name + ".SetAccessDefault(" + Quoted(access) + ")");
}

void RecordingItem::SetReady(bool ready) {
  log_.Write(Name + ".SetReady(" + Word(ready) + ")");
  Ready = ready;
}

void RecordingItem::SetLocation(const ObjectPtr& connector) {
  log_.Write(Name + ".SetLocation(" + NameOf(connector) + ")");
  Owning = connector;
}

std::string RecordingItem::FullText() const {
  log_.Read(Name + ".FullText");
  return Full;
}

void RecordingItem::ImportRecord(std::string_view record) {
  log_.Write(Name + ".ImportRecord(" + Quoted(record) + ")");
  Record = record;
  for (std::string rest(record); !rest.empty();) {
    std::string value = CutEscapedToken(rest, "|");
    const std::string key = CutToken(value, "=");
    value = UnescapeValue(value);
    if (key == "ID") {
      IdText = value;
    } else if (key == "Type") {
      TypeText = value;
    } else if (key == "Text") {
      DisplayText = value;
    } else if (key == "Date") {
      DateText = value;
    } else if (key == "Keywords") {
      Keywords = value;
    } else if (key == "Owner") {
      Owner = value;
    } else if (key == "Log") {
      Log = value;
    } else if (key.starts_with("Data")) {
      Data.emplace_back(key.substr(4), value);
    }
  }
}

std::string RecordingItem::Address() const {
  log_.Read(Name + ".Address");
  return OutsideAddress;
}

std::string RecordingItem::DataFile(std::string_view key, std::int32_t index) const {
  log_.Read(Name + ".DataFile(" + Quoted(key) + "," + std::to_string(index) + ")");
  const auto found = Files.find(key);
  return found == Files.end() ? std::string() : found->second;
}

void RecordingItem::TakeFile(std::string_view key, std::string_view path, std::string_view options,
                             std::string_view metaData) {
  log_.Write(Name + ".TakeFile(" + Quoted(key) + "," + Quoted(path) + "," + Quoted(options) + "," +
             Quoted(metaData) + ")");
}

// --- RecordingTree

RecordingTree::RecordingTree(CallLog& log, std::string name, std::string text, std::string keyword)
    : Name(std::move(name)), NodeText(std::move(text)), Keyword(std::move(keyword)), log_(log) {}

KeyedList<ItemPtr> RecordingTree::Items() const {
  KeyedList<ItemPtr> list;
  for (const ItemPtr& item : NodeItems)
    list.Add(item);
  return list;
}

KeyedList<TreePtr> RecordingTree::Children() const {
  KeyedList<TreePtr> list;
  for (const auto& node : Nodes)
    list.Add(node);
  return list;
}

void RecordingTree::Clear() {
  log_.Write(Name + ".Clear");
  Nodes.clear();
  NodeItems.clear();
}

TreePtr RecordingTree::AddChild(std::string_view text, std::string_view keyword) {
  log_.Write(Name + ".AddChild(" + Quoted(text) + "," + Quoted(keyword) + ")");
  Nodes.push_back(std::make_shared<RecordingTree>(log_, Name + "/" + std::string(text), std::string(text),
                                                  std::string(keyword)));
  return Nodes.back();
}

void RecordingTree::ClearItems() {
  log_.Write(Name + ".ClearItems");
  ClearItemsSilently();
}

void RecordingTree::ClearItemsSilently() {
  NodeItems.clear();
  for (const auto& node : Nodes)
    node->ClearItemsSilently();
}

void RecordingTree::AddItem(const ItemPtr& item) {
  log_.Write(Name + ".AddItem(" + NameOf(item) + ")");
  const auto* recorded = dynamic_cast<const RecordingItem*>(item.get());
  File(item, recorded == nullptr ? std::string() : recorded->Keywords);
}

void RecordingTree::File(const ItemPtr& item, std::string keywords) {
  // A node that stands for no keyword is passed through.
  if (Nodes.size() == 1 && Nodes.front()->Keyword.empty())
    return Nodes.front()->File(item, std::move(keywords));
  if (keywords.empty()) {
    NodeItems.push_back(item);
    return;
  }
  const std::string keyword = CutToken(keywords, ",");
  const auto found =
      std::find_if(Nodes.begin(), Nodes.end(), [&](const auto& node) { return node->Keyword == keyword; });
  if (found != Nodes.end()) return (*found)->File(item, std::move(keywords));
  Nodes.push_back(std::make_shared<RecordingTree>(log_, Name + "/" + keyword, keyword, keyword));
  Nodes.back()->File(item, std::move(keywords));
}

std::int32_t RecordingTree::ItemCount() const {
  return static_cast<std::int32_t>(NodeItems.size());
}

std::int32_t RecordingTree::ChildCount() const {
  return static_cast<std::int32_t>(Nodes.size());
}

void RecordingTree::AddKeywordPath(std::string_view keywords) {
  log_.Write(Name + ".AddKeywordPath(" + Quoted(keywords) + ")");
}

std::string RecordingTree::Dump(int depth) const {
  std::string out;
  for (const auto& node : Nodes) {
    out +=
        std::string(static_cast<std::size_t>(depth) * 2, ' ') + node->NodeText + " [" + node->Keyword + "]\n";
    out += node->Dump(depth + 1);
  }
  return out;
}

// --- RecordingError

void RecordingError::Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) {
  log_.Write("Error.Raise(" + std::to_string(kind) + "," + Quoted(source) + "," + Word(flag) + "," +
             Quoted(text) + ")");
}

bool RecordingError::Suppressed() const {
  log_.Read("Error.Suppressed");
  return IsSuppressed;
}

bool RecordingError::Silent() const {
  log_.Read("Error.Silent");
  return IsSilent;
}

std::shared_ptr<HostError> RecordingErrorFactory::Error() {
  log_.Read("ErrorFactory.Error");
  return error_;
}

// --- RecordingLocation

RecordingLocation::RecordingLocation(RecordingHost& host, std::string name)
    : Address(std::move(name)), host_(host) {}

void RecordingLocation::SetChanged(bool changed) {
  host_.Log.Write(LocationName(Address) + ".SetChanged(" + Word(changed) + ")");
}

ObjectPtr RecordingLocation::Connector() const {
  host_.Log.Read(LocationName(Address) + ".Connector");
  return ConnectorObject;
}

std::int32_t RecordingLocation::ItemCounter() const {
  host_.Log.Read(LocationName(Address) + ".ItemCounter");
  return Counter;
}

void RecordingLocation::SetItemCounter(std::int32_t count) {
  host_.Log.Write(LocationName(Address) + ".SetItemCounter(" + std::to_string(count) + ")");
  Counter = count;
}

void RecordingLocation::SetLastItemTimer(float seconds) {
  host_.Log.Write(LocationName(Address) + ".SetLastItemTimer(" + NumberText(static_cast<double>(seconds)) +
                  ")");
}

ItemPtr RecordingLocation::ParameterItem() const {
  return Parameter;
}

void RecordingLocation::SetParameterItem(const ItemPtr& item) {
  host_.Log.Write(LocationName(Address) + ".SetParameterItem(" + NameOf(item) + ")");
  Parameter = item;
}

std::shared_ptr<HostErrorFactory> RecordingLocation::ErrorFactory() {
  return host_.Global.ErrorFactory();
}

LocationState RecordingLocation::Open(std::string_view address) {
  host_.Log.Write(LocationName(Address) + ".Open(" + Quoted(address) + ")");
  opened_ = address;
  return LocationState::Read;
}

void RecordingLocation::Close() {
  host_.Log.Write(LocationName(Address) + ".Close");
}

ItemPtr RecordingLocation::PasteRecord(std::string_view record) {
  host_.Log.Write(LocationName(Address) + ".PasteRecord(" + Quoted(record) + ")");
  auto item = host_.MakeItem();
  item->ImportRecord(record);
  Pasted.push_back(item);
  return item;
}

std::string RecordingLocation::Name() const {
  host_.Log.Read(LocationName(Address) + ".Name");
  return Address;
}

ItemPtr RecordingLocation::ItemAt(std::int32_t pos) {
  host_.Log.Read(LocationName(Address) + ".ItemAt(" + std::to_string(pos) + ")");
  return Content.at(static_cast<std::size_t>(pos) - 1);
}

std::int32_t RecordingLocation::ItemCount() const {
  host_.Log.Read(LocationName(Address) + ".ItemCount");
  return static_cast<std::int32_t>(Content.size());
}

std::string RecordingLocation::GetSetting(std::string_view key) {
  host_.Log.Read(LocationName(Address) + ".GetSetting(" + Quoted(key) + ")");
  const auto found = Settings.find(key);
  return found == Settings.end() ? std::string() : found->second;
}

std::string RecordingLocation::GetOption(std::string_view key) {
  host_.Log.Read(LocationName(Address) + ".GetOption(" + Quoted(key) + ")");
  const auto found = Options.find(key);
  return found == Options.end() ? std::string() : found->second;
}

void RecordingLocation::Load() {
  host_.Log.Write(LocationName(Address) + ".Load");
  const auto found = host_.Browsable.find(opened_);
  Content = found == host_.Browsable.end() ? std::vector<ItemPtr>() : found->second;
}

std::string RecordingLocation::FileLocation() const {
  return Folder;
}

// --- RecordingTopics, RecordingWindow

void RecordingTopics::SetNotify(bool notify) {
  log_.Write("Topics.SetNotify(" + Word(notify) + ")");
}

void RecordingTopics::ClearLocation(const ObjectPtr& source) {
  log_.Write("Topics.ClearLocation(" + NameOf(source) + ")");
}

void RecordingTopics::AddLocation(const ObjectPtr& source) {
  log_.Write("Topics.AddLocation(" + NameOf(source) + ")");
}

TreePtr RecordingWindow::GetPaneTree(std::int32_t pane) {
  log_.Write("Window.GetPaneTree(" + std::to_string(pane) + ")");
  TreePtr& tree = Panes[pane];
  if (tree == nullptr) tree = std::make_shared<RecordingTree>(log_, "pane" + std::to_string(pane));
  return tree;
}

void RecordingWindow::SetPaneTree(std::int32_t pane, const TreePtr& tree) {
  log_.Write("Window.SetPaneTree(" + std::to_string(pane) + "," + NameOf(tree) + ")");
  Panes[pane] = tree;
}

bool RecordingWindow::IsPaneShown(std::int32_t pane) {
  log_.Write("Window.IsPaneShown(" + std::to_string(pane) + ")");
  return PaneShown;
}

// --- RecordingGlobal

RecordingGlobal::RecordingGlobal(RecordingHost& host)
    : Window(std::make_shared<RecordingWindow>(host.Log)),
      Error(std::make_shared<RecordingError>(host.Log)),
      host_(host),
      errorFactory_(std::make_shared<RecordingErrorFactory>(host.Log, Error)) {}

ObjectPtr RecordingGlobal::GetObject(std::string_view name) {
  host_.Log.Read("Global.GetObject(" + Quoted(name) + ")");
  const auto found = Objects.find(name);
  return found == Objects.end() ? nullptr : found->second;
}

ItemPtr RecordingGlobal::FindItem(std::string_view id) {
  host_.Log.Read("Global.FindItem(" + Quoted(id) + ")");
  const auto found = ItemsById.find(id);
  return found == ItemsById.end() ? nullptr : found->second;
}

KeyedList<LocationPtr> RecordingGlobal::Locations() {
  host_.Log.Read("Global.Locations");
  KeyedList<LocationPtr> list;
  for (const LocationPtr& location : KnownLocations)
    list.Add(location);
  return list;
}

void RecordingGlobal::Report(std::int32_t code, std::string_view text, const ItemPtr& item) {
  host_.Log.Write("Global.Report(" + std::to_string(code) + "," + Quoted(text) + "," + NameOf(item) + ")");
}

std::string RecordingGlobal::GetOption(std::string_view key) {
  host_.Log.Read("Global.GetOption(" + Quoted(key) + ")");
  const auto found = Options.find(key);
  return found == Options.end() ? std::string() : found->second;
}

std::string RecordingGlobal::TempPath() {
  host_.Log.Read("Global.TempPath");
  return TemporaryPath;
}

std::shared_ptr<HostMainWindow> RecordingGlobal::MainWindow() {
  host_.Log.Read("Global.MainWindow");
  return Window;
}

bool RecordingGlobal::Cancelled() {
  host_.Log.Read("Global.Cancelled");
  return IsCancelled;
}

void RecordingGlobal::SetProgressVisible(bool visible) {
  host_.Log.Write("Global.SetProgressVisible(" + Word(visible) + ")");
}

bool RecordingGlobal::LogEnabled() {
  host_.Log.Read("Global.LogEnabled");
  return IsLogEnabled;
}

void RecordingGlobal::SetLogEnabled(bool enabled) {
  host_.Log.Write("Global.SetLogEnabled(" + Word(enabled) + ")");
  IsLogEnabled = enabled;
}

std::string RecordingGlobal::UserName() {
  host_.Log.Read("Global.UserName");
  return User;
}

std::string RecordingGlobal::ActionName(std::int32_t msg) {
  host_.Log.Read("Global.ActionName(" + std::to_string(msg) + ")");
  const auto found = ActionNames.find(msg);
  return found == ActionNames.end() ? std::string() : found->second;
}

std::shared_ptr<HostErrorFactory> RecordingGlobal::ErrorFactory() {
  host_.Log.Read("Global.ErrorFactory");
  return errorFactory_;
}

// --- RecordingEnum, RecordingDialogs

void RecordingEnum::Init(LocationPtr& location, ExpressionPtr& expression) {
  host_.Log.Write("Enum.Init(" + NameOf(location) + "," +
                  (expression == nullptr ? std::string("nothing") : Quoted(expression->Text())) + ")");
  if (host_.OnEnumInit) host_.OnEnumInit(location, expression);
}

std::shared_ptr<KeyedList<std::string>> RecordingEnum::SubKeywords(std::string_view keyword) {
  host_.Log.Write("Enum.SubKeywords(" + Quoted(keyword) + ")");
  return host_.OnSubKeywords ? host_.OnSubKeywords(keyword) : std::make_shared<KeyedList<std::string>>();
}

std::string RecordingDialogs::ShowWizard(std::string_view title, std::string_view progId,
                                         std::string_view parameter) {
  log_.Write("Dialogs.ShowWizard(" + Quoted(title) + "," + Quoted(progId) + "," + Quoted(parameter) + ")");
  return WizardAnswer;
}

std::string RecordingDialogs::ChooseLocation(std::string_view title, std::string_view first,
                                             std::string_view second) {
  log_.Write("Dialogs.ChooseLocation(" + Quoted(title) + "," + Quoted(first) + "," + Quoted(second) + ")");
  return LocationAnswer;
}

// --- RecordingHost

class RecordingHost::Objects : public HostObjects {
 public:
  explicit Objects(RecordingHost& host) : host_(host) {}

  ItemPtr NewItem() override {
    host_.Log.Read("Host.NewItem");
    return host_.MakeItem();
  }

  TreePtr NewTree() override {
    const std::size_t number = host_.Trees.size() + 1;
    host_.Trees.push_back(
        std::make_shared<RecordingTree>(host_.Log, number == 1 ? "tree" : "tree" + std::to_string(number)));
    return host_.Trees.back();
  }

  LocationPtr NewLocation() override {
    host_.LocationsMade.push_back(std::make_shared<RecordingLocation>(host_, ""));
    return host_.LocationsMade.back();
  }

  HostEnumPtr NewEnum() override {
    host_.Log.Read("Host.NewEnum()");
    return std::make_shared<RecordingEnum>(host_);
  }
  HostDatabasePtr NewDatabase() override { return host_.MakeDatabase(); }
  HostGlobal& Global() override { return host_.Global; }
  HostDialogs& Dialogs() override { return host_.Dialogs; }

 private:
  RecordingHost& host_;
};

RecordingHost::RecordingHost()
    : Global(*this), Dialogs(Log), previous_(HostObjects::Install(std::make_shared<Objects>(*this))) {}

RecordingHost::~RecordingHost() {
  HostObjects::Install(previous_);
}

std::shared_ptr<RecordingItem> RecordingHost::MakeItem() {
  Items.push_back(std::make_shared<RecordingItem>(Log, static_cast<int>(Items.size()) + 1));
  return Items.back();
}

std::shared_ptr<RecordingLocation> RecordingHost::MakeLocation(std::string name) {
  return std::make_shared<RecordingLocation>(*this, std::move(name));
}

void RecordingHost::AddTopics() {
  auto topics = MakeLocation("topics");
  topics->ConnectorObject = std::make_shared<RecordingTopics>(Log);
  Global.Objects["topics"] = topics;
}

}  // namespace vorlent::test
