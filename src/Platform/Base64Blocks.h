// The bulk of base64 text, decoded with the instructions that the processor has for many bytes at a time.
#pragma once

#include <cstddef>
#include <string_view>

namespace vorlent::os {

// How many bytes after the decoded ones DecodeBase64Blocks may overwrite.
inline constexpr std::size_t kBase64Overhang = 8;

// Decodes groups of four characters from the beginning of a text, three bytes for each: all of them if they
// are all of the alphabet, else those of the blocks of 32 characters before the first other one. Returns
// the number of characters done: none of a text that has no block, or on a processor that has nothing to
// offer.
std::size_t DecodeBase64Blocks(std::string_view text, char* out);

}  // namespace vorlent::os
