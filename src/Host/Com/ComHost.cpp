#include "Host/Com/ComHost.h"

#include <utility>

#include "Host/Com/Failures.h"
#include "Host/Com/HostFace.h"

namespace vorlent::com {

namespace {

// Identifiers of the host's classes.
constexpr GUID kItem = {0x5BDF5528, 0x342E, 0x48E9, {0xB9, 0x67, 0x11, 0xBE, 0x88, 0x8A, 0x05, 0x6B}};
constexpr GUID kTree = {0xC0C5B61E, 0x4860, 0x4D73, {0x88, 0x22, 0x9F, 0xE5, 0xD8, 0xD5, 0x29, 0x18}};
constexpr GUID kLocation = {0xF3030F44, 0x6741, 0x4A33, {0xBA, 0x86, 0xF5, 0x96, 0x7A, 0x08, 0x9E, 0x03}};
constexpr GUID kHostEnum = {0x30256586, 0x7C12, 0x417E, {0xA5, 0xFB, 0xBF, 0x14, 0x74, 0xD4, 0x5E, 0xD2}};
constexpr GUID kHostDatabase = {0xDFB2926B, 0x395E, 0x4C3D, {0xA6, 0x72, 0x1C, 0x7A, 0x16, 0x64, 0x56, 0x42}};
constexpr GUID kHostGlobal = {0xE93DCE26, 0x3ED3, 0x40C1, {0x86, 0x77, 0xE0, 0xF0, 0xD9, 0x6F, 0xA9, 0x1A}};
constexpr GUID kHostDialogs = {0xDCD19F21, 0xA168, 0x48B8, {0xB8, 0x7D, 0x9D, 0x81, 0xCA, 0xD3, 0xE8, 0x7B}};

template <class Contract>
std::shared_ptr<Contract> Create(const GUID& classId) {
  IDispatch* made = nullptr;
  const HRESULT status = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                          IID_IDispatch, reinterpret_cast<void**>(&made));
  if (FAILED(status)) throw FailureOf(status, {});
  return Adopt<Contract>(Taken(made).Get());
}

}  // namespace

ComHost::ComHost(Expose expose) {
  SetExpose(std::move(expose));
}

ComHost::~ComHost() {
  SetExpose(nullptr);
}

ItemPtr ComHost::NewItem() {
  return Create<Item>(kItem);
}

TreePtr ComHost::NewTree() {
  return Create<Tree>(kTree);
}

LocationPtr ComHost::NewLocation() {
  return Create<Location>(kLocation);
}

HostEnumPtr ComHost::NewEnum() {
  return Create<HostEnum>(kHostEnum);
}

HostDatabasePtr ComHost::NewDatabase() {
  return Create<HostDatabase>(kHostDatabase);
}

HostGlobal& ComHost::Global() {
  if (global_ == nullptr) global_ = Create<HostGlobal>(kHostGlobal);
  return *global_;
}

HostDialogs& ComHost::Dialogs() {
  if (dialogs_ == nullptr) dialogs_ = Create<HostDialogs>(kHostDialogs);
  return *dialogs_;
}

void ComHost::Forget() {
  global_ = nullptr;
  dialogs_ = nullptr;
}

}  // namespace vorlent::com
