#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Host/Object.h"
#include "Platform/Public.h"

namespace vorlent {

class VORLENT_PUBLIC HostError : public Object {
 public:
  // Shows or logs an error and returns: the caller goes on behind the call. `kind` is 3 for a named thing
  // that doesn't exist; 1 and 2 come from the calendar connector for a database call that went well and one
  // that didn't.
  virtual void Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) = 0;

  // While either is true the mail connector raises no "Folder not found".
  virtual bool Suppressed() const = 0;
  virtual bool Silent() const = 0;
};

class VORLENT_PUBLIC HostErrorFactory : public Object {
 public:
  // The object by which errors are reported.
  virtual std::shared_ptr<HostError> Error() = 0;
};

}  // namespace vorlent
