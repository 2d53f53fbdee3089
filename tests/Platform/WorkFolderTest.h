// For tests of work folders.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include "Platform/NativePaths.h"
#include "Platform/WorkFolder.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

class WorkFolderTest : public testing::Test {
 protected:
  std::filesystem::path NativeOf(const os::WorkFolder& folder) { return os::ToNativePath(folder.Path()); }

  std::size_t Count() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(place_.Native()), {}));
  }

  // A folder as a program leaves it that is killed.
  std::filesystem::path Abandoned() {
    const std::filesystem::path copy = place_.Native("vorlent-killed");
    const os::WorkFolder folder;
    for (const auto& entry : std::filesystem::directory_iterator(NativeOf(folder)))
      place_.Write("vorlent-killed/" + entry.path().filename().string(), "");
    std::filesystem::create_directory(copy / "below");
    place_.Write("vorlent-killed/below/mail.eml", "mail");
    return copy;
  }

  TemporaryFolder place_;
  ScopedTemporaryPlace temporary_{place_.Native()};
};

}  // namespace vorlent
