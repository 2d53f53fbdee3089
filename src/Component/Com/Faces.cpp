#include "Component/Com/Faces.h"

#include "Component/Com/ActionListFace.h"
#include "Component/Com/ConnectorFaces.h"
#include "Component/Com/Control/WizardControlFace.h"
#include "Component/Com/StdMailFace.h"

namespace vorlent::com {

namespace {

// The face of an object that is of the class, null for any other.
template <class FaceClass, class Contract>
ComPtr<IDispatch> FaceAs(const ObjectPtr& object, std::wstring_view progId) {
  auto native = std::dynamic_pointer_cast<Contract>(object);
  if (native == nullptr) return nullptr;
  return Taken<IDispatch>(new FaceClass(std::move(native), progId));
}

ComPtr<IDispatch> NewFace(const ObjectPtr& object) {
  ComPtr<IDispatch> face =
      FaceAs<MailConnectorFace, MailConnector>(object, L"VorlentMozilla.Location_Thunderbird");
  if (!face)
    face = FaceAs<BookmarkConnectorFace, BookmarkConnector>(object, L"VorlentMozilla.Location_FireFox");
  if (!face)
    face = FaceAs<CalendarConnectorFace, CalendarConnector>(object, L"VorlentMozilla.Location_Sunbird");
  if (!face) face = FaceAs<ActionListFace, ActionList>(object, L"VorlentMozilla.Actions");
  if (!face) face = FaceAs<WizardControlFace, WizardImport>(object, L"VorlentMozilla.WizardImport");
  if (!face) face = FaceAs<StdMailFace, StdMail>(object, L"VorlentMozilla.StdMail");
  return face;
}

}  // namespace

ComPtr<IDispatch> ExposeObject(const ObjectPtr& object) {
  ComPtr<IDispatch> face = FaceList<Object>::Current().FaceOf(object.get());
  return face ? face : NewFace(object);
}

}  // namespace vorlent::com
