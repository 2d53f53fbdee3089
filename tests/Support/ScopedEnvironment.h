// Environment variables for the time of one test.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace vorlent {

// Sets a variable of the process, or takes it away if `value` is null.
void SetVariable(const std::string& name, const char* value);

// Sets a variable, or takes it away if `value` is null, and brings back what it was.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* present = std::getenv(name)) previous_ = present;
    SetVariable(name_, value);
  }
  ~ScopedEnvironment() { SetVariable(name_, previous_ ? previous_->c_str() : nullptr); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace vorlent
