#include "Host/Com/HostFace.h"

#include <utility>

namespace vorlent::com {

namespace {

Expose exposeComponentObject;

}  // namespace

void SetExpose(Expose expose) {
  exposeComponentObject = std::move(expose);
}

ComPtr<IDispatch> FaceOf(const ObjectPtr& object) {
  if (object == nullptr) return nullptr;
  if (const auto* adopted = dynamic_cast<const HostFace*>(object.get())) return adopted->Dispatch();
  return exposeComponentObject(object);
}

}  // namespace vorlent::com
