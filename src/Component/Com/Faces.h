// The component's objects as callers over COM see them.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "Common/KeyedList.h"
#include "Host/Com/WindowsApi.h"
#include "Host/Object.h"

namespace vorlent::com {

// The living faces of natives of one kind. A native has at most one, which all callers share, so that two
// references to one object are the same.
template <class Native>
class FaceList {
 public:
  static FaceList& Current() {
    static auto* const list = new FaceList;  // never destroyed, as the module
    return *list;
  }

  void Add(const std::shared_ptr<Native>& native, IDispatch* face) {
    faces_.emplace(native.get(), face);
    natives_.emplace(face, native);
  }
  void Remove(const Native* native, IDispatch* face) {
    faces_.erase(native);
    natives_.erase(face);
  }

  // Null if there is none.
  ComPtr<IDispatch> FaceOf(const Native* native) const {
    const auto found = faces_.find(native);
    return found == faces_.end() ? nullptr : found->second;
  }
  std::shared_ptr<Native> NativeOf(IDispatch* face) const {
    const auto found = natives_.find(face);
    return found == natives_.end() ? nullptr : found->second.lock();
  }

 private:
  std::unordered_map<const Native*, IDispatch*> faces_;
  std::unordered_map<IDispatch*, std::weak_ptr<Native>> natives_;
};

using TextList = KeyedList<std::string>;

// The object behind a face of this program, nothing for null. Raises TypeMismatch for any other object.
ObjectPtr NativeBehind(IDispatch* face);

// The face of an object of one of the public classes, a new one if it has none. Null for any other.
ComPtr<IDispatch> ExposeObject(const ObjectPtr& object);

// The face of a list of texts: a collection with Count, Item by position and key, Add, Remove and an
// enumeration. It shares the list.
ComPtr<IDispatch> ExposeList(const std::shared_ptr<TextList>& list);
// The list behind such a face, nothing for null. Raises TypeMismatch for any other object.
std::shared_ptr<TextList> ListBehind(IDispatch* face);

}  // namespace vorlent::com
