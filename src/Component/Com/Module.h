// What lives as long as the library is loaded.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "Component/Com/DispatchTable.h"
#include "Host/Com/ComHost.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// What is left of an object that nobody holds any more.
class Remains {
 public:
  Remains() = default;
  Remains(const Remains&) = delete;
  Remains& operator=(const Remains&) = delete;
  virtual ~Remains() = default;
};

class Module {
 public:
  static Module& Current();

  // The file that the library was loaded from.
  static std::wstring Path();

  // The type library in that file. Raises if the system can't read it.
  ITypeLib& TypeLibrary();
  // The members of a dual interface of it.
  const DispatchTable& TableOf(REFIID interfaceId);

  // Makes the host over COM the current one, if none is.
  void InstallHost(Expose expose);

  // Objects that callers hold, and locks of the server, keep the library loaded.
  void Hold() { InterlockedIncrement(&held_); }
  void Release() { InterlockedDecrement(&held_); }
  // Whether nothing does. Then all that is held of the system and the host is let go of.
  bool MayUnload();

  // Takes what is left of an object. The latest are kept until the library may be unloaded, so that a caller
  // who released one too often meets no other object in its place.
  void Bury(std::unique_ptr<Remains> remains);

 private:
  struct ByBytes {
    bool operator()(const GUID& a, const GUID& b) const;
  };

  static constexpr std::size_t kKeptRemains = 64;

  LONG held_ = 0;
  std::array<std::unique_ptr<Remains>, kKeptRemains> remains_;
  std::size_t oldestRemains_ = 0;
  ComPtr<ITypeLib> library_;
  std::map<GUID, DispatchTable, ByBytes> tables_;
  std::shared_ptr<ComHost> host_;
};

}  // namespace vorlent::com
