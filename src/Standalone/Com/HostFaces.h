// The faces of the standalone host's objects, as a component that is reached over COM calls them.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Component/Com/Face.h"
#include "Component/Com/Faces.h"
#include "Host/HostObjects.h"
#include "Vorlent.h"  // made of the IDL file

namespace vorlent::com {

// What stands behind a face of this program, as one of the contract's classes; nothing for null. The
// component's objects, which are known here by their proxies, are found alike.
template <class Contract>
std::shared_ptr<Contract> NativeAs(IDispatch* face) {
  return face == nullptr ? nullptr : RequireAs<Contract>(NativeBehind(face));
}
template <class Contract, class Interface>
std::shared_ptr<Contract> NativeAt(Interface** place) {
  return NativeAs<Contract>(At(place));
}

inline void Give(Value value, VARIANT* result) {
  At(result) = std::exchange(*value, VARIANT{});
}

// Objects in order, as a member gives them.
struct ObjectList : Object {
  std::vector<ObjectPtr> entries;
};

template <class Contract>
std::shared_ptr<ObjectList> ListOf(const KeyedList<std::shared_ptr<Contract>>& objects) {
  auto list = std::make_shared<ObjectList>();
  for (const auto& object : objects)
    list->entries.push_back(object);
  return list;
}

class ListFace final : public Face<_HostList, ObjectList> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE Item(LONG* pos, IDispatch** result) override {
    return Do([&] {
      const LONG index = At(pos) - 1;
      if (index < 0 || index >= static_cast<LONG>(Native().entries.size()))
        throw Failure(ErrorNumber::SubscriptOutOfRange, "no such entry");
      Give(Native().entries[static_cast<std::size_t>(index)], result);
    });
  }
  HRESULT STDMETHODCALLTYPE get_Count(LONG* result) override {
    return Do([&] { At(result) = static_cast<LONG>(Native().entries.size()); });
  }
};

class ItemFace final : public Face<_Item, Item> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_ID(BSTR* result) override {
    return Do([&] { Give(Native().ID(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_ID(BSTR rhs) override {
    return Do([&] { Native().SetID(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Type(BSTR* result) override {
    return Do([&] { Give(Native().Type(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_Type(BSTR rhs) override {
    return Do([&] { Native().SetType(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Text(BSTR* result) override {
    return Do([&] { Give(Native().Text(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_Text(BSTR rhs) override {
    return Do([&] { Native().SetText(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Date(BSTR* result) override {
    return Do([&] { Give(Native().Date(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_Connected(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetConnected(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_DataCount(LONG* result) override {
    return Do([&] { At(result) = Native().DataCount(); });
  }
  HRESULT STDMETHODCALLTYPE DataKey(LONG* pos, BSTR* result) override {
    return Do([&] { Give(Native().DataKey(At(pos)), result); });
  }
  HRESULT STDMETHODCALLTYPE DataText(BSTR* key, BSTR* result) override {
    return Do([&] { Give(Native().DataText(Given(key)), result); });
  }
  HRESULT STDMETHODCALLTYPE SetData(BSTR* key, BSTR* value, VARIANT_BOOL* flag) override {
    return Do([&] { Native().SetData(Given(key), Given(value), Given(flag)); });
  }
  HRESULT STDMETHODCALLTYPE AddKeyword(BSTR* keyword, VARIANT_BOOL* flag) override {
    return Do([&] { Native().AddKeyword(Given(keyword), Given(flag)); });
  }
  HRESULT STDMETHODCALLTYPE get_DateCreated(BSTR* result) override {
    return Do([&] { Give(Native().DateCreated(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_DateModified(BSTR* result) override {
    return Do([&] { Give(Native().DateModified(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_DateVisited(BSTR* result) override {
    return Do([&] { Give(Native().DateVisited(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_AccessList(BSTR rhs) override {
    return Do([&] { Native().SetAccessList(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE put_AccessDefault(BSTR rhs) override {
    return Do([&] { Native().SetAccessDefault(TextOf(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE put_Ready(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetReady(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE putref_Location(IDispatch* rhs) override {
    return Do([&] { Native().SetLocation(NativeBehind(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_FullText(BSTR* result) override {
    return Do([&] { Give(Native().FullText(), result); });
  }
  HRESULT STDMETHODCALLTYPE ImportRecord(BSTR* record) override {
    return Do([&] { Native().ImportRecord(Given(record)); });
  }
  HRESULT STDMETHODCALLTYPE get_Address(BSTR* result) override {
    return Do([&] { Give(Native().Address(), result); });
  }
  HRESULT STDMETHODCALLTYPE DataFile(BSTR* key, LONG* index, BSTR* result) override {
    return Do([&] { Give(Native().DataFile(Given(key), At(index)), result); });
  }
  HRESULT STDMETHODCALLTYPE TakeFile(BSTR* key, BSTR* path, BSTR* options, BSTR* metaData) override {
    return Do([&] { Native().TakeFile(Given(key), Given(path), Given(options), Given(metaData)); });
  }
};

class TreeFace final : public Face<_Tree, Tree> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_Text(BSTR* result) override {
    return Do([&] { Give(Native().Text(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Items(IDispatch** result) override {
    return Do([&] { Give(ListOf(Native().Items()), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Description(BSTR* result) override {
    return Do([&] { Give(Native().Description(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Children(IDispatch** result) override {
    return Do([&] { Give(ListOf(Native().Children()), result); });
  }
  HRESULT STDMETHODCALLTYPE Clear() override {
    return Do([&] { Native().Clear(); });
  }
  HRESULT STDMETHODCALLTYPE AddChild(BSTR* text, BSTR* keyword, _Tree** result) override {
    return Do([&] { Give(Native().AddChild(Given(text), Given(keyword)), result); });
  }
  HRESULT STDMETHODCALLTYPE ClearItems() override {
    return Do([&] { Native().ClearItems(); });
  }
  HRESULT STDMETHODCALLTYPE AddItem(_Item** itm) override {
    return Do([&] { Native().AddItem(NativeAt<Item>(itm)); });
  }
  HRESULT STDMETHODCALLTYPE get_ItemCount(LONG* result) override {
    return Do([&] { At(result) = Native().ItemCount(); });
  }
  HRESULT STDMETHODCALLTYPE get_ChildCount(LONG* result) override {
    return Do([&] { At(result) = Native().ChildCount(); });
  }
  HRESULT STDMETHODCALLTYPE AddKeywordPath(BSTR* keywords) override {
    return Do([&] { Native().AddKeywordPath(Given(keywords)); });
  }
};

class HostErrorFace final : public Face<_HostError, HostError> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE Raise(LONG* kind, BSTR* source, VARIANT_BOOL* flag, BSTR* text) override {
    return Do([&] { Native().Raise(At(kind), Given(source), Given(flag), Given(text)); });
  }
  HRESULT STDMETHODCALLTYPE get_Suppressed(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().Suppressed(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Silent(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().Silent(), result); });
  }
};

class HostErrorFactoryFace final : public Face<_HostErrorFactory, HostErrorFactory> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_Error(_HostError** result) override {
    return Do([&] { Give(Native().Error(), result); });
  }
};

class TopicsFace final : public Face<_TopicsConnector, TopicsConnector> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE put_Notify(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetNotify(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE ClearLocation(IDispatch** source) override {
    return Do([&] { Native().ClearLocation(NativeBehind(At(source))); });
  }
  HRESULT STDMETHODCALLTYPE AddLocation(IDispatch** source) override {
    return Do([&] { Native().AddLocation(NativeBehind(At(source))); });
  }
};

class LocationFace final : public Face<_Location, Location> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE put_Changed(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetChanged(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Connector(IDispatch** result) override {
    return Do([&] { Give(Native().Connector(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_ItemCounter(LONG* result) override {
    return Do([&] { At(result) = Native().ItemCounter(); });
  }
  HRESULT STDMETHODCALLTYPE put_ItemCounter(LONG rhs) override {
    return Do([&] { Native().SetItemCounter(rhs); });
  }
  HRESULT STDMETHODCALLTYPE put_LastItemTimer(FLOAT rhs) override {
    return Do([&] { Native().SetLastItemTimer(rhs); });
  }
  HRESULT STDMETHODCALLTYPE get_ParameterItem(_Item** result) override {
    return Do([&] { Give(Native().ParameterItem(), result); });
  }
  HRESULT STDMETHODCALLTYPE putref_ParameterItem(_Item* rhs) override {
    return Do([&] { Native().SetParameterItem(NativeAs<Item>(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_ErrorFactory(_HostErrorFactory** result) override {
    return Do([&] { Give(Native().ErrorFactory(), result); });
  }
  HRESULT STDMETHODCALLTYPE Open(BSTR* address, ::LocationState* result) override {
    return Do([&] { At(result) = static_cast<::LocationState>(Native().Open(Given(address))); });
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    return Do([&] { Native().Close(); });
  }
  HRESULT STDMETHODCALLTYPE PasteRecord(BSTR* record, _Item** result) override {
    return Do([&] { Give(Native().PasteRecord(Given(record)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Name(BSTR* result) override {
    return Do([&] { Give(Native().Name(), result); });
  }
  HRESULT STDMETHODCALLTYPE ItemAt(LONG* pos, _Item** result) override {
    return Do([&] { Give(Native().ItemAt(At(pos)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_ItemCount(LONG* result) override {
    return Do([&] { At(result) = Native().ItemCount(); });
  }
  HRESULT STDMETHODCALLTYPE GetSetting(BSTR* key, BSTR* result) override {
    return Do([&] { Give(Native().GetSetting(Given(key)), result); });
  }
  HRESULT STDMETHODCALLTYPE Load() override {
    return Do([&] { Native().Load(); });
  }
  HRESULT STDMETHODCALLTYPE get_FileLocation(BSTR* result) override {
    return Do([&] { Give(Native().FileLocation(), result); });
  }
  HRESULT STDMETHODCALLTYPE GetOption(BSTR* key, BSTR* result) override {
    return Do([&] { Give(Native().GetOption(Given(key)), result); });
  }
};

class ExpressionFace final : public Face<_Expression, Expression> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_Text(BSTR* result) override {
    return Do([&] { Give(Native().Text(), result); });
  }
};

// The host takes Location and condition as they are given, and replaces neither.
class HostEnumFace final : public Face<_HostEnum, HostEnum> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE Init(_Location** location, _Expression** expression) override {
    return Do([&] {
      LocationPtr given = NativeAt<Location>(location);
      ExpressionPtr condition = NativeAt<Expression>(expression);
      Native().Init(given, condition);
    });
  }
  HRESULT STDMETHODCALLTYPE SubKeywords(BSTR* keyword, IDispatch** result) override {
    return Do([&] {
      At(result) = nullptr;
      *result = ExposeList(Native().SubKeywords(Given(keyword))).Detach();
    });
  }
};

class HostRecordsetFace final : public Face<_HostRecordset, HostRecordset> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE get_RecordCount(LONG* result) override {
    return Do([&] { At(result) = Native().RecordCount(); });
  }
  HRESULT STDMETHODCALLTYPE MoveFirst() override {
    return Do([&] { Native().MoveFirst(); });
  }
  HRESULT STDMETHODCALLTYPE MoveNext() override {
    return Do([&] { Native().MoveNext(); });
  }
  HRESULT STDMETHODCALLTYPE Field(BSTR* name, BSTR* result) override {
    return Do([&] { Give(Native().Field(Given(name)), result); });
  }
  HRESULT STDMETHODCALLTYPE FieldDate(BSTR* name, VARIANT* result) override {
    return Do([&] { Give(Value(std::string_view(Native().FieldDate(Given(name)))), result); });
  }
  HRESULT STDMETHODCALLTYPE get_EOF(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().EndOfRows(), result); });
  }
};

class HostDatabaseFace final : public Face<_HostDatabase, HostDatabase> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE Open(BSTR* kind, BSTR* connection, VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().Open(Given(kind), Given(connection)), result); });
  }
  HRESULT STDMETHODCALLTYPE Query(BSTR* sql, VARIANT* kind, _HostRecordset** result) override {
    return Do([&] {
      Value number;
      Check(VariantChangeType(number.Place(), &At(kind), 0, VT_I4));
      Give(Native().Query(Given(sql), number->lVal), result);
    });
  }
  HRESULT STDMETHODCALLTYPE Execute(BSTR* sql, VARIANT* result) override {
    return Do([&] { Give(Value(Native().Execute(Given(sql))), result); });
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    return Do([&] { Native().Close(); });
  }
};

class HostMainWindowFace final : public Face<_HostMainWindow, HostMainWindow> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE GetPaneTree(LONG* pane, _Tree** result) override {
    return Do([&] { Give(Native().GetPaneTree(At(pane)), result); });
  }
  HRESULT STDMETHODCALLTYPE SetPaneTree(LONG* pane, _Tree** tr) override {
    return Do([&] { Native().SetPaneTree(At(pane), NativeAt<Tree>(tr)); });
  }
  HRESULT STDMETHODCALLTYPE IsPaneShown(LONG* pane, VARIANT* result) override {
    return Do([&] { Give(Value(Native().IsPaneShown(At(pane))), result); });
  }
};

class HostDialogsFace final : public Face<_HostDialogs, HostDialogs> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE ShowWizard(BSTR* title, BSTR* progId, BSTR* parameter, VARIANT* result) override {
    return Do([&] {
      Give(Value(std::string_view(Native().ShowWizard(Given(title), Given(progId), Given(parameter)))),
           result);
    });
  }
  HRESULT STDMETHODCALLTYPE ChooseLocation(BSTR* title, BSTR* first, BSTR* second, BSTR* result) override {
    return Do([&] { Give(Native().ChooseLocation(Given(title), Given(first), Given(second)), result); });
  }
};

class HostGlobalFace final : public Face<_HostGlobal, HostGlobal> {
 public:
  using Face::Face;

  HRESULT STDMETHODCALLTYPE GetObject(BSTR* name, IDispatch** result) override {
    return Do([&] { Give(Native().GetObject(Given(name)), result); });
  }
  HRESULT STDMETHODCALLTYPE FindItem(BSTR* id, VARIANT, _Item** result) override {
    return Do([&] { Give(Native().FindItem(Given(id)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Locations(IDispatch** result) override {
    return Do([&] { Give(ListOf(Native().Locations()), result); });
  }
  HRESULT STDMETHODCALLTYPE Report(LONG* code, BSTR* text, _Item** itm) override {
    return Do([&] { Native().Report(At(code), Given(text), NativeAt<Item>(itm)); });
  }
  HRESULT STDMETHODCALLTYPE GetOption(BSTR* key, BSTR* result) override {
    return Do([&] { Give(Native().GetOption(Given(key)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_TempPath(BSTR* result) override {
    return Do([&] { Give(Native().TempPath(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_MainWindow(_HostMainWindow** result) override {
    return Do([&] { Give(Native().MainWindow(), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Cancelled(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().Cancelled(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_ProgressVisible(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetProgressVisible(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_LogEnabled(VARIANT_BOOL* result) override {
    return Do([&] { Give(Native().LogEnabled(), result); });
  }
  HRESULT STDMETHODCALLTYPE put_LogEnabled(VARIANT_BOOL rhs) override {
    return Do([&] { Native().SetLogEnabled(Given(&rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_UserName(BSTR* result) override {
    return Do([&] { Give(Native().UserName(), result); });
  }
  HRESULT STDMETHODCALLTYPE ActionName(LONG* msg, BSTR* result) override {
    return Do([&] { Give(Native().ActionName(At(msg)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_ErrorFactory(_HostErrorFactory** result) override {
    return Do([&] { Give(Native().ErrorFactory(), result); });
  }
};

}  // namespace vorlent::com
