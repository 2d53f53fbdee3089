// The names of profiles and accounts in addresses.
#pragma once

#include <string>
#include <unordered_set>

namespace vorlent {

// A name as the segment of an address. A "/" in it is "%2F", and so are other characters by their numbers
// where the address would be taken for another one; the names "." and "-" and a "*" at the end
// mark addresses.
std::string AddressSegment(const std::string& name);

// Gives each of several a name of its own, in their order: a second one of a name gets "~2" behind it.
class OwnNames {
 public:
  std::string Take(const std::string& name);

 private:
  std::unordered_set<std::string> taken_;
};

}  // namespace vorlent
