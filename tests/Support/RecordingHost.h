// A host for tests: every member of the contract, answering from plain fields, with each call kept as one
// line.
//
// Lines read `<object>.<Member>(<arguments>)`, such as `Global.Report(32,"0/100:Thunderbird C:\x",nothing)`,
// `tree/Inbox.AddChild("Sub","Sub")` or `item2.SetConnected(true)`. Items are named in the order in which
// they were made; nodes by the texts of their path. Carriage returns, line feeds and quotes are shown
// escaped. Only calls that change something are kept, unless `RecordReads` is set.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Connector.h"
#include "Host/HostObjects.h"

namespace vorlent::test {

// The lines, and what a test scripts into them.
class CallLog {
 public:
  bool RecordReads = false;
  // Called after each recorded line, so that a test can act at a certain point, such as setting Cancelled.
  std::function<void(const std::string& line)> OnCall;

  const std::vector<std::string>& Lines() const { return lines_; }
  std::string Text() const;  // all lines, each with a line feed
  void Clear() { lines_.clear(); }

  // The lines that begin with one of the prefixes, such as "Global.Report".
  std::vector<std::string> Only(const std::vector<std::string>& prefixes) const;

  // The n-th call from now (from 1) whose line begins with `prefix` raises, and from then on all if `always`.
  void FailOn(std::string_view prefix, int nth = 1, bool always = false, int number = 440);
  void ClearFaults() { faults_.clear(); }

  void Write(const std::string& line);
  void Read(const std::string& line);

 private:
  struct Fault {
    std::string prefix;
    int countdown;
    bool always;
    int number;
  };

  void Check(const std::string& line);

  std::vector<std::string> lines_;
  std::vector<Fault> faults_;
};

std::string Quoted(std::string_view text);

class RecordingItem : public Item {
 public:
  RecordingItem(CallLog& log, int number);

  std::string ID() const override;
  void SetID(std::string_view id) override;
  std::string Type() const override;
  void SetType(std::string_view type) override;
  std::string Text() const override;
  void SetText(std::string_view text) override;
  std::string Date() const override;
  void SetConnected(bool connected) override;
  std::int32_t DataCount() const override;
  std::string DataKey(std::int32_t pos) const override;
  std::string DataText(std::string_view key) const override;
  void SetData(std::string_view key, std::string_view value, bool flag) override;
  void AddKeyword(std::string_view keyword, bool flag = false) override;
  std::string DateCreated() const override;
  std::string DateModified() const override;
  std::string DateVisited() const override;
  void SetAccessList(std::string_view list) override;
  void SetAccessDefault(std::string_view access) override;
  void SetReady(bool ready) override;
  void SetLocation(const ObjectPtr& connector) override;
  std::string FullText() const override;
  void ImportRecord(std::string_view record) override;
  std::string Address() const override;
  std::string DataFile(std::string_view key, std::int32_t index) const override;
  void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                std::string_view metaData) override;

  // What the members above answer from; tests may set them directly.
  std::string Name;  // in the log
  std::string Record;
  std::string IdText, TypeText, DisplayText, DateText, Keywords, Owner, Log;
  std::string Created, Modified, Visited, Full, OutsideAddress;
  std::vector<std::pair<std::string, std::string>> Data;  // in order
  std::map<std::string, std::string, std::less<>> Files;  // answers of DataFile
  bool Connected = false;
  bool Ready = true;
  std::weak_ptr<Object> Owning;

 private:
  CallLog& log_;
};

class RecordingTree : public Tree, public std::enable_shared_from_this<RecordingTree> {
 public:
  explicit RecordingTree(CallLog& log, std::string name = "tree", std::string text = {},
                         std::string keyword = {});

  std::string Text() const override { return NodeText; }
  KeyedList<ItemPtr> Items() const override;
  std::string Description() const override { return DescriptionText; }
  KeyedList<TreePtr> Children() const override;
  void Clear() override;
  TreePtr AddChild(std::string_view text, std::string_view keyword) override;
  void ClearItems() override;
  void AddItem(const ItemPtr& item) override;
  std::int32_t ItemCount() const override;
  std::int32_t ChildCount() const override;
  void AddKeywordPath(std::string_view keywords) override;

  // The nodes below as indented lines `text [keyword]`, one for each node.
  std::string Dump(int depth = 0) const;

  std::string Name, NodeText, Keyword, DescriptionText;
  std::vector<std::shared_ptr<RecordingTree>> Nodes;
  std::vector<ItemPtr> NodeItems;

 private:
  void ClearItemsSilently();
  void File(const ItemPtr& item, std::string keywords);

  CallLog& log_;
};

class RecordingError : public HostError {
 public:
  explicit RecordingError(CallLog& log) : log_(log) {}
  void Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override;
  bool Suppressed() const override;
  bool Silent() const override;

  bool IsSuppressed = false;
  bool IsSilent = false;

 private:
  CallLog& log_;
};

class RecordingErrorFactory : public HostErrorFactory {
 public:
  RecordingErrorFactory(CallLog& log, std::shared_ptr<RecordingError> error)
      : log_(log), error_(std::move(error)) {}
  std::shared_ptr<HostError> Error() override;

 private:
  CallLog& log_;
  std::shared_ptr<RecordingError> error_;
};

class RecordingHost;

class RecordingLocation : public Location {
 public:
  RecordingLocation(RecordingHost& host, std::string name);

  void SetChanged(bool changed) override;
  ObjectPtr Connector() const override;
  std::int32_t ItemCounter() const override;
  void SetItemCounter(std::int32_t count) override;
  void SetLastItemTimer(float seconds) override;
  ItemPtr ParameterItem() const override;
  void SetParameterItem(const ItemPtr& item) override;
  std::shared_ptr<HostErrorFactory> ErrorFactory() override;
  LocationState Open(std::string_view address) override;
  void Close() override;
  ItemPtr PasteRecord(std::string_view record) override;
  std::string Name() const override;
  ItemPtr ItemAt(std::int32_t pos) override;
  std::int32_t ItemCount() const override;
  std::string GetSetting(std::string_view key) override;
  std::string GetOption(std::string_view key) override;
  void Load() override;
  std::string FileLocation() const override;

  std::string Address;  // answer of Name
  ObjectPtr ConnectorObject;
  std::int32_t Counter = 0;
  ItemPtr Parameter;
  std::vector<ItemPtr> Pasted;   // by PasteRecord
  std::vector<ItemPtr> Content;  // of ItemAt; Load fills it from RecordingHost::Browsable
  std::map<std::string, std::string, std::less<>> Settings, Options;
  std::string Folder;  // answer of FileLocation

 private:
  RecordingHost& host_;
  std::string opened_;
};

class RecordingTopics : public TopicsConnector {
 public:
  explicit RecordingTopics(CallLog& log) : log_(log) {}
  void SetNotify(bool notify) override;
  void ClearLocation(const ObjectPtr& source) override;
  void AddLocation(const ObjectPtr& source) override;

 private:
  CallLog& log_;
};

class RecordingWindow : public HostMainWindow {
 public:
  explicit RecordingWindow(CallLog& log) : log_(log) {}
  TreePtr GetPaneTree(std::int32_t pane) override;
  void SetPaneTree(std::int32_t pane, const TreePtr& tree) override;
  bool IsPaneShown(std::int32_t pane) override;

  std::map<std::int32_t, TreePtr> Panes;  // made on first use
  bool PaneShown = true;

 private:
  CallLog& log_;
};

class RecordingGlobal : public HostGlobal {
 public:
  explicit RecordingGlobal(RecordingHost& host);

  ObjectPtr GetObject(std::string_view name) override;
  ItemPtr FindItem(std::string_view id) override;
  KeyedList<LocationPtr> Locations() override;
  void Report(std::int32_t code, std::string_view text, const ItemPtr& item) override;
  std::string GetOption(std::string_view key) override;
  std::string TempPath() override;
  std::shared_ptr<HostMainWindow> MainWindow() override;
  bool Cancelled() override;
  void SetProgressVisible(bool visible) override;
  bool LogEnabled() override;
  void SetLogEnabled(bool enabled) override;
  std::string UserName() override;
  std::string ActionName(std::int32_t msg) override;
  std::shared_ptr<HostErrorFactory> ErrorFactory() override;

  std::map<std::string, ObjectPtr, std::less<>> Objects;  // of GetObject
  std::map<std::string, ItemPtr, std::less<>> ItemsById;
  std::vector<LocationPtr> KnownLocations;
  std::map<std::string, std::string, std::less<>> Options;
  std::string TemporaryPath = "C:\\Temp\\";
  std::string User = "tester";
  std::map<std::int32_t, std::string> ActionNames = {
      {37, "ItemInsert"}, {38, "ItemRemove"}, {1, "ChangeText"}, {2, "Date"}, {3, "DataSet"}};
  bool IsCancelled = false;
  bool IsLogEnabled = false;
  std::shared_ptr<RecordingWindow> Window;
  std::shared_ptr<RecordingError> Error;

 private:
  RecordingHost& host_;
  std::shared_ptr<RecordingErrorFactory> errorFactory_;
};

class RecordingEnum : public HostEnum {
 public:
  explicit RecordingEnum(RecordingHost& host) : host_(host) {}
  void Init(LocationPtr& location, ExpressionPtr& expression) override;
  std::shared_ptr<KeyedList<std::string>> SubKeywords(std::string_view keyword) override;

 private:
  RecordingHost& host_;
};

class RecordingDialogs : public HostDialogs {
 public:
  explicit RecordingDialogs(CallLog& log) : log_(log) {}
  std::string ShowWizard(std::string_view title, std::string_view progId,
                         std::string_view parameter) override;
  std::string ChooseLocation(std::string_view title, std::string_view first,
                             std::string_view second) override;

  std::string WizardAnswer, LocationAnswer;

 private:
  CallLog& log_;
};

class TextExpression : public Expression {
 public:
  explicit TextExpression(std::string text) : text_(std::move(text)) {}
  std::string Text() const override { return text_; }

 private:
  std::string text_;
};

// Installs itself as the host while it lives.
class RecordingHost {
 public:
  RecordingHost();
  ~RecordingHost();
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  std::shared_ptr<RecordingItem> MakeItem();
  std::shared_ptr<RecordingLocation> MakeLocation(std::string name);
  // A Location "topics" whose connector is a RecordingTopics, put into Global.Objects.
  void AddTopics();

  CallLog Log;
  RecordingGlobal Global;
  RecordingDialogs Dialogs;

  // What a Location made by the component holds after Open on an address and Load.
  std::map<std::string, std::vector<ItemPtr>, std::less<>> Browsable;
  std::vector<std::shared_ptr<RecordingTree>> Trees;              // made by the component, in order
  std::vector<std::shared_ptr<RecordingLocation>> LocationsMade;  // by the component, in order
  std::vector<std::shared_ptr<RecordingItem>> Items;              // all, in order of making
  // Makes the databases of the component; must be set before one is asked for.
  std::function<HostDatabasePtr()> MakeDatabase;
  // What HostEnum.Init and SubKeywords do.
  std::function<void(LocationPtr&, ExpressionPtr&)> OnEnumInit;
  std::function<std::shared_ptr<KeyedList<std::string>>(std::string_view)> OnSubKeywords;

 private:
  class Objects;

  std::shared_ptr<HostObjects> previous_;
};

}  // namespace vorlent::test
