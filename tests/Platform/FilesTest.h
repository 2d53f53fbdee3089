// For tests of files and folders.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// The number of the failure that a step raises, 0 if it succeeds.
inline int NumberOf(const std::function<void()>& step) {
  return SwallowedNumber(step);
}

inline std::string TextOf(const std::function<void()>& step) {
  try {
    step();
    return "";
  } catch (const Failure& failure) {
    return failure.what();
  }
}

// Has the system take an entry whose name begins with a dot for a hidden one.
void MarkHidden(const std::filesystem::path& native);

inline constexpr os::File::Mode kAllModes[] = {os::File::Mode::Read, os::File::Mode::ReadWrite,
                                               os::File::Mode::Create, os::File::Mode::Append};

class FilesTest : public testing::Test {
 protected:
  std::string ReadAll(os::File& file) {
    std::string bytes(file.Length(), '?');
    file.Seek(0);
    bytes.resize(file.Read(bytes.data(), bytes.size()));
    return bytes;
  }
  // A system without permissions takes a file that its owner may not write for a read-only one.
  void Permit(std::string_view name, std::filesystem::perms permissions) {
    std::filesystem::permissions(folder_.Native(name), permissions);
  }

  TemporaryFolder folder_;
};

}  // namespace vorlent
