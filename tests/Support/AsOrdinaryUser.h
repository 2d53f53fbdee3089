// A test run by the superuser goes on as somebody whom permissions bind.
#pragma once

#include <unistd.h>

#include <cstdlib>

namespace vorlent {

// For the life of this object; nothing changes for a test that an ordinary user runs.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser() : changed_(geteuid() == 0 && seteuid(kNobody) == 0) {}
  ~AsOrdinaryUser() {
    if (changed_ && seteuid(0) != 0) std::abort();
  }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  bool changed_;
};

}  // namespace vorlent
