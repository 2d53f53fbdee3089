#include "Support/SourceTree.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vorlent {

std::filesystem::path SourcePath(std::string_view name) {
  return std::filesystem::path(VORLENT_SOURCE_DIR) / name;
}

std::string SourceBytes(std::string_view name) {
  std::ifstream file(SourcePath(name), std::ios::binary);
  if (!file) throw std::runtime_error("no file " + std::string(name));
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace vorlent
