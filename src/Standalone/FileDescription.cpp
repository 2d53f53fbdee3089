#include "Standalone/FileDescription.h"

#include "Common/StdModul.h"

namespace vorlent {

std::string FileNameIn(std::string description) {
  std::string name = GetLineValue(description, "file");
  return name.empty() ? GetFileName(CutLine(description)) : name;
}

}  // namespace vorlent
