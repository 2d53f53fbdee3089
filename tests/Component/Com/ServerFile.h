// Where the server and this program lie, and the entry points of the one that is loaded here.
#pragma once

#include <string>

#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

inline std::wstring ProgramFile() {
  wchar_t path[MAX_PATH];
  return {path, GetModuleFileNameW(nullptr, path, MAX_PATH)};
}

// Beside the program.
inline std::wstring ServerFile() {
  const std::wstring program = ProgramFile();
  return program.substr(0, program.rfind(L'\\') + 1) + L"Vorlent_Mozilla.ocx";
}

// The server as the system loads it, for as long as this lives.
class LoadedServer {
 public:
  LoadedServer() : library_(LoadLibraryW(ServerFile().c_str())) {}
  LoadedServer(const LoadedServer&) = delete;
  LoadedServer& operator=(const LoadedServer&) = delete;
  ~LoadedServer() { FreeLibrary(library_); }

  HRESULT Register() const { return Entry<HRESULT(STDAPICALLTYPE*)()>("DllRegisterServer")(); }
  HRESULT Unregister() const { return Entry<HRESULT(STDAPICALLTYPE*)()>("DllUnregisterServer")(); }
  HRESULT CanUnloadNow() const { return Entry<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")(); }
  HRESULT GetClassObject(REFCLSID classId, REFIID id, void** result) const {
    return Entry<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(classId, id,
                                                                                          result);
  }

 private:
  template <class Function>
  Function Entry(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

  HMODULE library_;
};

// COM for the test's thread, as a host has it.
class Apartment {
 public:
  Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
  ~Apartment() { CoUninitialize(); }
};

}  // namespace vorlent::com
