#include "Standalone/Com/HostServer.h"

#include <functional>
#include <string>
#include <utility>

#include "Standalone/Com/HostFaces.h"

namespace vorlent::com {

namespace {

constexpr wchar_t kSource[] = L"Vorlent";

// The face of an object of the class whose face it is, null for any other.
template <class FaceClass, class Contract>
ComPtr<IDispatch> FaceIfOf(const ObjectPtr& object) {
  auto native = std::dynamic_pointer_cast<Contract>(object);
  return native == nullptr ? nullptr : Taken<IDispatch>(new FaceClass(std::move(native), kSource));
}

using MakeFace = ComPtr<IDispatch> (*)(const ObjectPtr& object);

// Those made most often first.
constexpr MakeFace kFaces[] = {
    FaceIfOf<ItemFace, Item>,
    FaceIfOf<TreeFace, Tree>,
    FaceIfOf<ListFace, ObjectList>,
    FaceIfOf<LocationFace, Location>,
    FaceIfOf<HostGlobalFace, HostGlobal>,
    FaceIfOf<HostErrorFactoryFace, HostErrorFactory>,
    FaceIfOf<HostErrorFace, HostError>,
    FaceIfOf<HostDatabaseFace, HostDatabase>,
    FaceIfOf<HostRecordsetFace, HostRecordset>,
    FaceIfOf<HostDialogsFace, HostDialogs>,
    FaceIfOf<HostMainWindowFace, HostMainWindow>,
    FaceIfOf<HostEnumFace, HostEnum>,
    FaceIfOf<ExpressionFace, Expression>,
    FaceIfOf<TopicsFace, TopicsConnector>,
};

ComPtr<IDispatch> ExposeHostObject(const ObjectPtr& object) {
  if (ComPtr<IDispatch> face = FaceList<Object>::Current().FaceOf(object.get())) return face;
  for (const MakeFace make : kFaces) {
    if (ComPtr<IDispatch> face = make(object)) return face;
  }
  throw Failure(ErrorNumber::TypeMismatch, "no object of the host");
}

// The dialogs that the host has at the time of a call.
class PresentDialogs final : public HostDialogs {
 public:
  explicit PresentDialogs(std::shared_ptr<HostObjects> host) : host_(std::move(host)) {}

  std::string ShowWizard(std::string_view title, std::string_view progId,
                         std::string_view parameter) override {
    return host_->Dialogs().ShowWizard(title, progId, parameter);
  }
  std::string ChooseLocation(std::string_view title, std::string_view first,
                             std::string_view second) override {
    return host_->Dialogs().ChooseLocation(title, first, second);
  }

 private:
  std::shared_ptr<HostObjects> host_;
};

class HostClassObject final : public Counted<IClassFactory> {
 public:
  explicit HostClassObject(std::function<ObjectPtr()> make) : make_(std::move(make)) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Answer(IID_IClassFactory, kSource,
                  [&] { Check(ExposeHostObject(make_())->QueryInterface(id, result)); });
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 protected:
  void LetGo() override { make_ = nullptr; }

 private:
  std::function<ObjectPtr()> make_;
};

}  // namespace

HostServer::HostServer(const std::shared_ptr<HostObjects>& host) {
  SetExpose(ExposeHostObject);
  Serve(__uuidof(::Item), [host] { return host->NewItem(); });
  Serve(__uuidof(::Tree), [host] { return host->NewTree(); });
  Serve(__uuidof(::Location), [host] { return host->NewLocation(); });
  Serve(__uuidof(::HostEnum), [host] { return host->NewEnum(); });
  Serve(__uuidof(::HostDatabase), [host] { return host->NewDatabase(); });
  Serve(__uuidof(::HostGlobal), [host] { return std::shared_ptr<HostGlobal>(host, &host->Global()); });
  // The class of the dialogs has no name of its own.
  Serve(__uuidof(_HostDialogs), [dialogs = std::make_shared<PresentDialogs>(host)] { return dialogs; });
}

HostServer::~HostServer() {
  for (const DWORD served : served_)
    CoRevokeClassObject(served);
  SetExpose(nullptr);
}

template <class Make>
void HostServer::Serve(REFCLSID id, Make make) {
  const ComPtr<IClassFactory> made = Taken<IClassFactory>(new HostClassObject(std::move(make)));
  DWORD served = 0;
  Check(CoRegisterClassObject(id, made.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &served));
  served_.push_back(served);
}

}  // namespace vorlent::com
