// Paths of the component as people read them.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// A text of the component as UTF-8, each path in it that begins with a drive written as this system has it.
// Such a path reaches to the end of its line, or to the next one there.
std::string WithNativePaths(std::string_view text);

// What lists and logs show of such a text: its paths as the rules in force say.
std::string WithShownPaths(std::string_view text);

// Whether a path of this system stands for the address of what lies there.
bool TakesPathsAsAddresses();

// Texts that are paths, most of them of one folder like the one before, as this system writes them, in UTF-8.
class NativePaths {
 public:
  // A text that isn't a path below a drive stays.
  std::string Of(std::string_view path);

 private:
  std::string folder_;
  std::string native_;
};

}  // namespace vorlent
