// Environment variables for the time of one test.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace vorlent {

// Sets a variable, or takes it away if `value` is null, and brings back what it was.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* present = getenv(name)) previous_ = present;
    Set(value);
  }
  ~ScopedEnvironment() { Set(previous_ ? previous_->c_str() : nullptr); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void Set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name_.c_str());
    } else {
      setenv(name_.c_str(), value, 1);
    }
  }

  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace vorlent
