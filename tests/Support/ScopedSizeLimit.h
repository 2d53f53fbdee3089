// A limit to the size of files, as on a full disk.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace vorlent {

// Files may grow to so many bytes only, as on a full disk.
class ScopedSizeLimit {
 public:
  explicit ScopedSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before_);
    signal_ = signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~ScopedSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    signal(SIGXFSZ, signal_);
  }
  ScopedSizeLimit(const ScopedSizeLimit&) = delete;
  ScopedSizeLimit& operator=(const ScopedSizeLimit&) = delete;

 private:
  rlimit before_ = {};
  void (*signal_)(int) = nullptr;
};

}  // namespace vorlent
