#include "Platform/Rules.h"

namespace vorlent {

namespace {

Rules chosenRules;

}  // namespace

const Rules& CurrentRules() {
  return chosenRules;
}

void ChooseRules(const Rules& rules) {
  chosenRules = rules;
}

}  // namespace vorlent
