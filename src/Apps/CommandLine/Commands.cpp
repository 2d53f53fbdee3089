#include "Apps/CommandLine/Commands.h"

#include "Apps/CommandLine/Verbs.h"

namespace vorlent::app {

const std::vector<Verb>& Verbs() {
  static const std::vector<Verb> verbs = {
#define VERB(name, summary, group, declare) {name, summary, group, declare},
#include "Apps/CommandLine/Verbs.def"
#undef VERB
  };
  return verbs;
}

}  // namespace vorlent::app
