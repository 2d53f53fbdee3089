// What is taken back at the end of a scope, however that ends.
#pragma once

#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

// Runs a step when it goes. A failure of the step is swallowed, as nothing may leave a destructor.
template <class Step>
class [[nodiscard]] AtEnd {
 public:
  explicit AtEnd(Step step) : step_(std::move(step)) {}
  ~AtEnd() { Swallow(step_); }
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;

 private:
  Step step_;
};

}  // namespace vorlent
