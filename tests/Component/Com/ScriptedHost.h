// A host over COM for tests: objects known by names, made under the host's class identifiers for this
// process.
#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Component/Com/ScriptedObject.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

class ScriptedHost {
 public:
  // What was called, as "Item.Ready" or "Global.Report 33 text"; what was made is "Item.New".
  std::vector<std::string> calls;
  // The call from now on, from 1, that goes wrong; 0 for none. All after it do so too if `failsOn`.
  int failing = 0;
  bool failsOn = false;
  Wrong wrong = Wrong::Raises;

  // Whether an Init puts this in place of the expression that it is given.
  ComPtr<ScriptedObject> replacement;
  // What GetObject knows by name.
  std::map<std::string, ComPtr<ScriptedObject>> named;
  // What the user leaves the wizard with.
  std::string wizardAnswer;

  explicit ScriptedHost(std::string tempPath);
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;
  ~ScriptedHost();

  // A Location, which takes mails and has one item to browse.
  ComPtr<ScriptedObject> NewLocation(const std::string& address);
  ComPtr<ScriptedObject> NewItem();
  ComPtr<ScriptedObject> NewTree();
  // A condition on items.
  static ComPtr<ScriptedObject> NewExpression(std::string_view text);

  // Makes the host have topics.
  void HaveTopics();
  // The host lets go of what it has beyond the component's need.
  void Forget();

 private:
  class Factory;
  using Arguments = std::vector<VARIANT>;
  using Body = std::function<Value(const Arguments& arguments)>;

  Wrong Watch(const std::string& call);
  void Serve(REFCLSID id, const std::string& kind, std::function<ComPtr<ScriptedObject>()> make);
  static void Do(ScriptedObject& object, const std::wstring& name, Body body);
  static void DoNothing(ScriptedObject& object, std::initializer_list<const wchar_t*> names);

  ComPtr<ScriptedObject> NewEnum();
  ComPtr<ScriptedObject> NewDatabase();
  ComPtr<ScriptedObject> NewGlobal();
  ComPtr<ScriptedObject> NewDialogs();
  Value ErrorFactory();
  Value MainWindow();

  std::string tempPath_;
  int items_ = 0;
  std::vector<std::unique_ptr<Factory>> factories_;
  std::vector<DWORD> served_;
};

}  // namespace vorlent::com
