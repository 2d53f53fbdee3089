// The system's automation, for those who serve or call it: the only header above the seam that reads the
// system's own. Names of the contracts that are macros there are given back, so that the two can meet.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif

#include <windows.h>
// After it, as all of these need it.
#include <commctrl.h>
#include <dispex.h>
#include <ocidl.h>
#include <ole2.h>
#include <olectl.h>
#include <shellapi.h>
#include <wrl/client.h>

#undef CopyFile
#undef CreateFile
#undef DeleteFile
#undef GetObject
#undef GetUserName
#undef MoveFile
#undef Yield

namespace vorlent::com {

using Microsoft::WRL::ComPtr;

// Takes over the reference that its maker has to a new object. ComPtr::Attach of mingw-w64 adds another.
template <class Class>
ComPtr<Class> Taken(Class* made) {
  ComPtr<Class> owner;
  *owner.GetAddressOf() = made;
  return owner;
}

}  // namespace vorlent::com
