// For tests of what paths stand for.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Settings.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// Begins without settings, and brings back the current folder.
class PathsTest : public testing::Test {
 protected:
  void SetUp() override { os::ResetSettings(); }
  void TearDown() override {
    os::ResetSettings();
    std::filesystem::current_path(startFolder_);
  }

  // The native path of an entry of the temporary folder.
  std::string In(std::string_view name) const { return folder_.Native(name).string(); }

  TemporaryFolder folder_;
  std::filesystem::path startFolder_ = std::filesystem::current_path();
};

}  // namespace vorlent
