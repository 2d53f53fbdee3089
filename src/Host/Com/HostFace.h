// The two ways between objects of the host and the contracts that the component calls.
#pragma once

#include <functional>
#include <memory>

#include "Host/Com/WindowsApi.h"
#include "Host/HostObjects.h"
#include "Host/Object.h"

namespace vorlent::com {

// An object that stands for one of the host's.
class HostFace {
 public:
  HostFace() = default;
  HostFace(const HostFace&) = delete;
  HostFace& operator=(const HostFace&) = delete;
  virtual ~HostFace() = default;

  virtual IDispatch* Dispatch() const = 0;
};

// An object of the host as one of the contract, which holds it by one reference; nothing for null. Contract
// is one of those below.
template <class Contract>
std::shared_ptr<Contract> Adopt(IDispatch* object);

template <>
ItemPtr Adopt<Item>(IDispatch* object);
template <>
TreePtr Adopt<Tree>(IDispatch* object);
template <>
LocationPtr Adopt<Location>(IDispatch* object);
template <>
std::shared_ptr<TopicsConnector> Adopt<TopicsConnector>(IDispatch* object);
template <>
ExpressionPtr Adopt<Expression>(IDispatch* object);
template <>
HostEnumPtr Adopt<HostEnum>(IDispatch* object);
template <>
HostDatabasePtr Adopt<HostDatabase>(IDispatch* object);
template <>
HostRecordsetPtr Adopt<HostRecordset>(IDispatch* object);
template <>
std::shared_ptr<HostError> Adopt<HostError>(IDispatch* object);
template <>
std::shared_ptr<HostErrorFactory> Adopt<HostErrorFactory>(IDispatch* object);
template <>
std::shared_ptr<HostMainWindow> Adopt<HostMainWindow>(IDispatch* object);
template <>
std::shared_ptr<HostGlobal> Adopt<HostGlobal>(IDispatch* object);
template <>
std::shared_ptr<HostDialogs> Adopt<HostDialogs>(IDispatch* object);

// How the host is given an object of the component.
using Expose = std::function<ComPtr<IDispatch>(const ObjectPtr& object)>;
void SetExpose(Expose expose);

// What the host is given for an object: its own behind an adopted one, else the component's as SetExpose
// says. Null for nothing.
ComPtr<IDispatch> FaceOf(const ObjectPtr& object);

}  // namespace vorlent::com
