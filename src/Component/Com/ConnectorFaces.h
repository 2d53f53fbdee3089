// The faces of the three connectors.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Component/Com/Face.h"
#include "Host/Connector.h"
#include "VorlentMozilla.h"  // made of the IDL file

namespace vorlent::com {

inline void Give(LocationState state, ::LocationState* result) {
  At(result) = static_cast<::LocationState>(state);
}

// The members that all connectors have.
template <class Interface, class Contract>
class ConnectorFace : public Face<Interface, Contract> {
 public:
  using Face<Interface, Contract>::Face;

  HRESULT STDMETHODCALLTYPE get_LocObject(_Location** result) final {
    return Do([&] { Give(Native().LocObject(), result); });
  }
  HRESULT STDMETHODCALLTYPE putref_LocObject(_Location* rhs) final {
    return Do([&] { Native().SetLocObject(Adopt<Location>(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE get_Tree(_Tree** result) final {
    return Do([&] { Give(Native().Tree(), result); });
  }
  HRESULT STDMETHODCALLTYPE putref_Tree(_Tree* rhs) final {
    return Do([&] { Native().SetTree(Adopt<Tree>(rhs)); });
  }
  HRESULT STDMETHODCALLTYPE InitLocation(BSTR* file, VARIANT_BOOL* result) final {
    return Do([&] { Give(Native().InitLocation(Given(file)), result); });
  }
  HRESULT STDMETHODCALLTYPE OpenLocation(BSTR* file, ::LocationState* result) final {
    return Do([&] { Give(Native().OpenLocation(Given(file)), result); });
  }
  HRESULT STDMETHODCALLTYPE Disconnect() final {
    return Do([&] { Native().Disconnect(); });
  }
  HRESULT STDMETHODCALLTYPE NewItem(VARIANT_BOOL* conn, _Item** result) final {
    return Do([&] { Give(Native().NewItem(Given(conn)), result); });
  }
  HRESULT STDMETHODCALLTYPE GetItem(BSTR* id, _Item** result) final {
    return Do([&] { Give(Native().GetItem(Given(id)), result); });
  }
  HRESULT STDMETHODCALLTYPE HasID(BSTR* id, VARIANT_BOOL* result) final {
    return Do([&] { Give(Native().HasID(Given(id)), result); });
  }
  HRESULT STDMETHODCALLTYPE get_Count(LONG* result) final {
    return Do([&] { At(result) = Native().Count(); });
  }
  HRESULT STDMETHODCALLTYPE Item(LONG* pos, _Item** result) final {
    return Do([&] { Give(Native().Item(At(pos)), result); });
  }
  HRESULT STDMETHODCALLTYPE Clear() final {
    return Do([&] { Native().Clear(); });
  }
  HRESULT STDMETHODCALLTYPE CreateEnum(_Expression** expr, IDispatch** result) final {
    return Do([&] {
      Give(WithExpression(expr, [&](ExpressionPtr& expression) { return Native().CreateEnum(expression); }),
           result);
    });
  }
  HRESULT STDMETHODCALLTYPE PasteItem(BSTR* import, VARIANT_BOOL* conn, _Item** result) final {
    return Do([&] { Give(Native().PasteItem(Given(import), Given(conn)), result); });
  }
  HRESULT STDMETHODCALLTYPE DeleteItem(_Item** itm, VARIANT_BOOL* result) final {
    return Do([&] { Give(Native().DeleteItem(GivenAs<vorlent::Item>(itm)), result); });
  }
  HRESULT STDMETHODCALLTYPE Reload() final {
    return Do([&] { Native().Reload(); });
  }

 protected:
  using Face<Interface, Contract>::Do;
  using Face<Interface, Contract>::Native;

  // Runs a step that may replace the caller's expression.
  template <class Step>
  static auto WithExpression(_Expression** place, Step&& step) {
    ExpressionPtr expression = GivenAs<Expression>(place);
    const ExpressionPtr before = expression;
    auto outcome = std::forward<Step>(step)(expression);
    if (expression != before) {
      _Expression* const old = std::exchange(*place, nullptr);
      Give(expression, place);
      if (old != nullptr) old->Release();
    }
    return outcome;
  }
};

class MailConnectorFace final : public ConnectorFace<_Location_Thunderbird, MailConnector> {
 public:
  using ConnectorFace::ConnectorFace;

  HRESULT STDMETHODCALLTYPE Einlesen(::LocationState* result) override {
    return Do([&] { Give(Native().Einlesen(), result); });
  }
  HRESULT STDMETHODCALLTYPE GetFile(_Item** itm, BSTR* key, ::GetFileOption* getfileoption,
                                    BSTR* result) override {
    return Do([&] {
      Give(Native().GetFile(GivenAs<vorlent::Item>(itm), Given(key), GetFileOption{At(getfileoption)}),
           result);
    });
  }
  HRESULT STDMETHODCALLTYPE SourceInit(_Tree** tr, VARIANT_BOOL* saveattachments) override {
    return Do([&] { Native().SourceInit(GivenAs<vorlent::Tree>(tr), Given(saveattachments)); });
  }
  HRESULT STDMETHODCALLTYPE SourceGetNext(BSTR* srcitm, VARIANT_BOOL* result) override {
    return Do([&] {
      At(srcitm) = nullptr;
      std::string record;
      Give(Native().SourceGetNext(record), result);
      Give(record, srcitm);
    });
  }
  HRESULT STDMETHODCALLTYPE SourceDelete() override {
    return Do([&] { Native().SourceDelete(); });
  }
  HRESULT STDMETHODCALLTYPE GetActions(BSTR* result) override {
    return Do([&] { Give(Native().GetActions(), result); });
  }
  HRESULT STDMETHODCALLTYPE ExecuteAction(BSTR* cmd, BSTR* result) override {
    return Do([&] { Give(Native().ExecuteAction(Given(cmd)), result); });
  }
};

class BookmarkConnectorFace final : public ConnectorFace<_Location_FireFox, BookmarkConnector> {
 public:
  using ConnectorFace::ConnectorFace;

  HRESULT STDMETHODCALLTYPE GetFile(_Item** itm, BSTR* key, BSTR* result) override {
    return Do([&] { Give(Native().GetFile(GivenAs<vorlent::Item>(itm), Given(key)), result); });
  }
  HRESULT STDMETHODCALLTYPE Save() override {
    return Do([&] { Native().Save(); });
  }
  HRESULT STDMETHODCALLTYPE GetSubKeywords(_Expression** expr, IDispatch** result) override {
    return Do([&] {
      At(result) = nullptr;
      *result = ExposeList(WithExpression(expr, [&](ExpressionPtr& expression) {
                  return Native().GetSubKeywords(expression);
                })).Detach();
    });
  }
};

class CalendarConnectorFace final : public ConnectorFace<_Location_Sunbird, CalendarConnector> {
 public:
  using ConnectorFace::ConnectorFace;

  HRESULT STDMETHODCALLTYPE RedoAction(_Item** itm, BSTR* zeit, LONG* msg, BSTR* value) override {
    return Do([&] { Native().RedoAction(GivenAs<vorlent::Item>(itm), Given(zeit), At(msg), Given(value)); });
  }
  HRESULT STDMETHODCALLTYPE Einlesen(::LocationState* result) override {
    return Do([&] { Give(Native().Einlesen(), result); });
  }
  HRESULT STDMETHODCALLTYPE GetCalendars(BSTR* prefolder, BSTR* fld, BSTR* path,
                                         IDispatch** result) override {
    return Do([&] {
      At(result) = nullptr;
      *result = ExposeList(std::make_shared<TextList>(
                               Native().GetCalendars(Given(prefolder), Given(fld), Given(path))))
                    .Detach();
    });
  }
};

}  // namespace vorlent::com
