// Paths of the component as people read them.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// Texts that are paths, most of them of one folder like the one before, as this system writes them, in UTF-8.
class NativePaths {
 public:
  // A text that isn't such a path stays.
  std::string Of(std::string_view path);

 private:
  std::string folder_;
  std::string native_;
};

// A text of the component as UTF-8, with each path in it written as this system has it: those that begin with
// a drive, and those that begin with "/" and have separators of the component. Such a path reaches to the end
// of its line, or to the next one there.
std::string WithNativePaths(std::string_view text);

// What lists and logs show of such a text: its paths as the rules in force say.
std::string WithShownPaths(std::string_view text);
// The same for one of many texts, whose paths are mostly of one folder.
std::string WithShownPaths(std::string_view text, NativePaths& paths);

// Whether a path of this system stands for the address of what lies there.
bool TakesPathsAsAddresses();

}  // namespace vorlent
