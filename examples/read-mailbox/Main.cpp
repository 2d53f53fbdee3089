// A host in small: lists the mails below an address such as thunderbird://PROFILE/ACCOUNT/FOLDER.
//
// It streams them, one at a time, and holds no more than the stream needs: what a host keeps of its items, or
// shows of keywords and topics, is left out.
#include <cstdio>
#include <filesystem>

#include "Component/Component.h"
#include "Host/HostObjects.h"

using namespace vorlent;

namespace {

// The value of a field of an item record, "key=value|key=value". "\" stands before what belongs to a value.
std::string FieldOf(std::string_view record, std::string_view key) {
  std::string field, value;
  const auto take = [&] {
    if (field.starts_with(key) && field.substr(key.size(), 1) == "=") value = field.substr(key.size() + 1);
    field.clear();
  };
  for (std::size_t i = 0; i < record.size(); ++i) {
    if (record[i] == '|') {
      take();
      continue;
    }
    if (record[i] == '\\' && i + 1 < record.size()) ++i;
    field += record[i];
  }
  take();
  return value;
}

// Holds the settings that a connector makes for its Location.
class SmallItem : public Item {
 public:
  std::string ID() const override { return id_; }
  void SetID(std::string_view id) override { id_ = id; }
  std::string Type() const override { return type_; }
  void SetType(std::string_view type) override { type_ = type; }
  std::string Text() const override { return text_; }
  void SetText(std::string_view text) override { text_ = text; }
  std::string Date() const override { return {}; }
  void SetConnected(bool) override {}
  std::int32_t DataCount() const override { return 0; }
  std::string DataKey(std::int32_t) const override { return {}; }
  std::string DataText(std::string_view) const override { return {}; }
  void SetData(std::string_view, std::string_view, bool) override {}
  void AddKeyword(std::string_view, bool) override {}
  std::string DateCreated() const override { return {}; }
  std::string DateModified() const override { return {}; }
  std::string DateVisited() const override { return {}; }
  void SetAccessList(std::string_view) override {}
  void SetAccessDefault(std::string_view) override {}
  void SetReady(bool) override {}
  void SetLocation(const ObjectPtr&) override {}
  std::string FullText() const override { return text_; }
  void ImportRecord(std::string_view) override {}
  std::string Address() const override { return {}; }
  std::string DataFile(std::string_view, std::int32_t) const override { return {}; }
  void TakeFile(std::string_view, std::string_view, std::string_view, std::string_view) override {}

 private:
  std::string id_, type_, text_;
};

class SmallTree : public Tree {
 public:
  std::string Text() const override { return {}; }
  KeyedList<ItemPtr> Items() const override { return {}; }
  std::string Description() const override { return {}; }
  KeyedList<TreePtr> Children() const override { return {}; }
  void Clear() override {}
  TreePtr AddChild(std::string_view, std::string_view) override { return std::make_shared<SmallTree>(); }
  void ClearItems() override {}
  void AddItem(const ItemPtr&) override {}
  std::int32_t ItemCount() const override { return 0; }
  std::int32_t ChildCount() const override { return 0; }
  void AddKeywordPath(std::string_view) override {}
};

class SmallLocation : public Location {
 public:
  explicit SmallLocation(std::string_view address) : address_(address) {}
  void SetChanged(bool) override {}
  ObjectPtr Connector() const override { return nullptr; }
  std::int32_t ItemCounter() const override { return 0; }
  void SetItemCounter(std::int32_t) override {}
  void SetLastItemTimer(float) override {}
  ItemPtr ParameterItem() const override { return parameter_; }
  void SetParameterItem(const ItemPtr& item) override { parameter_ = item; }
  std::shared_ptr<HostErrorFactory> ErrorFactory() override { return nullptr; }
  LocationState Open(std::string_view) override { return LocationState::Read; }
  void Close() override {}
  ItemPtr PasteRecord(std::string_view) override { return nullptr; }
  std::string Name() const override { return address_; }
  ItemPtr ItemAt(std::int32_t) override { return nullptr; }
  std::int32_t ItemCount() const override { return 0; }
  std::string GetSetting(std::string_view) override { return {}; }
  std::string GetOption(std::string_view) override { return {}; }
  void Load() override {}
  std::string FileLocation() const override { return {}; }

 private:
  std::string address_;
  ItemPtr parameter_;
};

class StandardError : public HostError,
                      public HostErrorFactory,
                      public std::enable_shared_from_this<StandardError> {
 public:
  void Raise(std::int32_t, std::string_view, bool, std::string_view text) override {
    std::fprintf(stderr, "%s\n", DisplayUtf8(text).c_str());
  }
  bool Suppressed() const override { return false; }
  bool Silent() const override { return false; }
  std::shared_ptr<HostError> Error() override { return shared_from_this(); }
};

class SmallGlobal : public HostGlobal {
 public:
  ObjectPtr GetObject(std::string_view) override { return nullptr; }
  ItemPtr FindItem(std::string_view) override { return nullptr; }
  KeyedList<LocationPtr> Locations() override { return {}; }
  void Report(std::int32_t, std::string_view, const ItemPtr&) override {}
  std::string GetOption(std::string_view) override { return {}; }
  // Paths are Windows paths; one that begins with a separator is native from the root.
  std::string TempPath() override { return std::filesystem::temp_directory_path().string() + "\\"; }
  std::shared_ptr<HostMainWindow> MainWindow() override { return nullptr; }
  bool Cancelled() override { return false; }
  void SetProgressVisible(bool) override {}
  bool LogEnabled() override { return false; }
  void SetLogEnabled(bool) override {}
  std::string UserName() override { return "reader"; }
  std::string ActionName(std::int32_t) override { return {}; }
  std::shared_ptr<HostErrorFactory> ErrorFactory() override { return error_; }

 private:
  std::shared_ptr<StandardError> error_ = std::make_shared<StandardError>();
};

class SmallHost : public HostObjects {
 public:
  ItemPtr NewItem() override { return std::make_shared<SmallItem>(); }
  TreePtr NewTree() override { return std::make_shared<SmallTree>(); }
  LocationPtr NewLocation() override { return nullptr; }
  HostEnumPtr NewEnum() override { return nullptr; }
  HostDatabasePtr NewDatabase() override { return nullptr; }
  HostGlobal& Global() override { return global_; }
  HostDialogs& Dialogs() override { throw Failure(ErrorNumber::ObjectNotSet, "this host has no dialogs"); }

 private:
  SmallGlobal global_;
};

int ListMails(const std::string& address) {
  const auto connector = RequireAs<MailConnector>(CreateObject("VorlentMozilla.Location_Thunderbird"));
  connector->SetLocObject(std::make_shared<SmallLocation>(address));
  connector->InitLocation(address);
  connector->SourceInit(nullptr, false);
  int count = 0;
  for (std::string record; connector->SourceGetNext(record); ++count) {
    std::printf("%s  %s\n", FieldOf(record, "Date").c_str(), DisplayUtf8(FieldOf(record, "Text")).c_str());
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "read-mailbox thunderbird://PROFILE/ACCOUNT/FOLDER\n");
    return 2;
  }
  try {
    HostObjects::Install(std::make_shared<SmallHost>());
    return ListMails(argv[1]) > 0 ? 0 : 1;
  } catch (const Failure& failure) {
    std::fprintf(stderr, "%s\n", DisplayUtf8(failure.what()).c_str());
    return 3;
  }
}
