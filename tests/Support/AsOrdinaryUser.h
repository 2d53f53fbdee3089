// A test run by the superuser goes on as somebody whom permissions bind.
#pragma once

namespace vorlent {

// For the life of this object; nothing changes for a test that an ordinary user runs, and on a system that
// knows no user whom they don't bind.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser();
  ~AsOrdinaryUser();
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

 private:
  bool changed_ = false;
};

}  // namespace vorlent
