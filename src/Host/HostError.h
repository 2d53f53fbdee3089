#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Host/Object.h"
#include "Platform/Public.h"

namespace vorlent {

class VORLENT_PUBLIC HostError : public Object {
 public:
  // The kind of an error about a named thing that doesn't exist.
  static constexpr std::int32_t kMissing = 3;

  // Shows or logs an error and returns: the caller goes on after the call. `kind` is kMissing, or 1 and 2,
  // which come from the calendar connector for a database call that went well and one that didn't.
  virtual void Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) = 0;

  // Raises that a drive is no account, for which the walk over all profiles takes it. A host may keep that to
  // itself.
  virtual void RaiseForDrive(std::string_view source, std::string_view text) {
    Raise(kMissing, source, false, text);
  }

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
