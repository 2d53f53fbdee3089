#include "Component/Com/Faces.h"

namespace vorlent::com {

ObjectPtr NativeBehind(IDispatch* face) {
  if (face == nullptr) return nullptr;
  ObjectPtr native = FaceList<Object>::Current().NativeOf(face);
  if (native == nullptr) throw Failure(ErrorNumber::TypeMismatch, "an object of another program");
  return native;
}

}  // namespace vorlent::com
