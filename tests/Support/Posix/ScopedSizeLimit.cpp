#include "Support/ScopedSizeLimit.h"

#include <sys/resource.h>

#include <csignal>

namespace vorlent {

namespace {

void LimitTo(std::uint64_t bytes) {
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace

// A write above the limit fails then, and the signal that goes with it is not to end the process.
ScopedSizeLimit::ScopedSizeLimit(std::uint64_t bytes) {
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  before_ = before.rlim_cur;
  signal(SIGXFSZ, SIG_IGN);
  LimitTo(bytes);
}

ScopedSizeLimit::~ScopedSizeLimit() {
  LimitTo(before_);
  signal(SIGXFSZ, SIG_DFL);
}

}  // namespace vorlent
