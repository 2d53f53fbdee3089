#include "Component/Com/ScriptedDatabase.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/qzelSQLite.h"

namespace vorlent::com {

namespace {

constexpr HRESULT kInvalidStatement = static_cast<HRESULT>(0x800A0001);

using Rows = std::shared_ptr<const KeyedList<SqliteRow>>;

std::string StatementIn(const std::vector<VARIANT>& arguments) {
  return TextOf(arguments.at(0).bstrVal);
}

// "...;Database=<path>;..."
std::string FileIn(const std::string& connection) {
  constexpr std::string_view kKey = "Database=";
  const std::size_t from = connection.find(kKey) + kKey.size();
  return connection.substr(from, connection.find(';', from) - from);
}

ComPtr<ScriptedObject> NewRecordset(const Rows& rows) {
  ComPtr<ScriptedObject> recordset = ScriptedObject::Make("Recordset");
  const auto at = std::make_shared<std::int32_t>(1);
  recordset->Set(L"RecordCount", Value(static_cast<LONG>(rows->Count())));
  recordset->On(L"MoveFirst", [at](std::vector<VARIANT>&, Value&) {
    *at = 1;
    return S_OK;
  });
  recordset->On(L"MoveNext", [at](std::vector<VARIANT>&, Value&) {
    ++*at;
    return S_OK;
  });
  recordset->On(L"EOF", [rows, at](std::vector<VARIANT>&, Value& result) {
    result = Value(*at > rows->Count());
    return S_OK;
  });
  for (const wchar_t* name : {L"Field", L"FieldDate"}) {
    recordset->On(name, [rows, at](std::vector<VARIANT>& arguments, Value& result) {
      if (*at > rows->Count()) return DISP_E_BADINDEX;
      result = Value(rows->Item(*at).Item(StatementIn(arguments)));
      return S_OK;
    });
  }
  return recordset;
}

// Closed with its last user.
struct OpenDatabase {
  ~OpenDatabase() { connection.closeFile(); }

  qzelSQLite connection;
};

}  // namespace

ComPtr<ScriptedObject> NewScriptedDatabase() {
  ComPtr<ScriptedObject> database = ScriptedObject::Make("Database");
  const auto opened = std::make_shared<OpenDatabase>();
  database->On(L"Open", [opened](std::vector<VARIANT>& arguments, Value& result) {
    opened->connection.file = FileIn(TextOf(arguments.at(1).bstrVal));
    result = Value(opened->connection.openFile());
    opened->connection.execute("PRAGMA synchronous=OFF");  // no test needs to outlive a power failure
    return S_OK;
  });
  database->On(L"Query", [opened](std::vector<VARIANT>& arguments, Value& result) {
    if (!opened->connection.execute(StatementIn(arguments))) return kInvalidStatement;
    result = Value(static_cast<IDispatch*>(NewRecordset(opened->connection.Rows()).Get()));
    return S_OK;
  });
  database->On(L"Execute", [opened](std::vector<VARIANT>& arguments, Value& result) {
    if (!opened->connection.execute(StatementIn(arguments))) return kInvalidStatement;
    result = Value(true);
    return S_OK;
  });
  database->On(L"Close", [opened](std::vector<VARIANT>&, Value&) {
    opened->connection.closeFile();
    return S_OK;
  });
  return database;
}

}  // namespace vorlent::com
