#pragma once

#include <array>
#include <cstdint>

namespace vorlent::os {

// Sixteen bytes of a new random GUID (version 4), in the order in which its text form shows them.
std::array<std::uint8_t, 16> NewGuidBytes();

}  // namespace vorlent::os
