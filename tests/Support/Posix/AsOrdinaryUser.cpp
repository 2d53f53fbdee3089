#include "Support/AsOrdinaryUser.h"

#include <unistd.h>

#include <cstdlib>

namespace vorlent {

namespace {

constexpr uid_t kNobody = 65534;

}  // namespace

AsOrdinaryUser::AsOrdinaryUser() : changed_(geteuid() == 0 && seteuid(kNobody) == 0) {}

AsOrdinaryUser::~AsOrdinaryUser() {
  if (changed_ && seteuid(0) != 0) std::abort();
}

}  // namespace vorlent
