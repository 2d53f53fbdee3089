// Names of files that every file system takes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace vorlent {

// The name that EncodeFileName was given.
std::string DecodeFileName(std::string_view encoded);

// The name as it stands, if a file of any system may have it, else the nearest one that may: without
// separators, control characters and those that have a meaning to Windows, none of a device, without blanks
// around it or a dot at its end, with at most `longest` bytes, its extension kept. Texts are UTF-8; a name
// has never more units of UTF-16 than bytes.
std::string FittingName(std::string_view name, std::size_t longest);

// The same in ASCII, for a file whose name must come back from every folder as it went in.
std::string FittingAsciiName(std::string_view name, std::size_t longest);

// Gives the files of one folder names that differ in more than the case of their letters.
class DistinctNames {
 public:
  explicit DistinctNames(std::size_t longest) : longest_(longest) {}

  // Keeps a name from being given. False if it is kept already.
  bool Reserve(std::string_view name);
  // The fitting name, with a count in front where it is given already.
  std::string Take(std::string_view name);

 private:
  std::size_t longest_;
  std::unordered_set<std::string> used_;            // in lower case
  std::unordered_map<std::string, int> lastCount_;  // of a name that several wanted
};

}  // namespace vorlent
