// Rules for one test.
#pragma once

#include "Platform/Rules.h"

namespace vorlent {

// Puts rules in force as long as this object lives.
class ScopedRules {
 public:
  explicit ScopedRules(const Rules& rules) : before_(CurrentRules()) { ChooseRules(rules); }
  ~ScopedRules() { ChooseRules(before_); }
  ScopedRules(const ScopedRules&) = delete;
  ScopedRules& operator=(const ScopedRules&) = delete;

 private:
  Rules before_;
};

}  // namespace vorlent
