// Looking for line ends, many bytes at a time where the processor can.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vorlent::os {

#ifdef __SSE2__

// For each of sixteen bytes whether it is a CR or an LF.
inline __m128i LineEndsIn(const char* bytes) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  return _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\r')), _mm_cmpeq_epi8(block, _mm_set1_epi8('\n')));
}

// One bit for each of these bytes.
inline std::uint64_t BitsOf(__m128i ends) {
  return static_cast<unsigned>(_mm_movemask_epi8(ends));
}

#endif

// The first CR or LF from `from` on; `to` if there is none before that.
inline const char* FindLineEnd(const char* from, const char* to) {
#ifdef __SSE2__
  // So many at a time that few lines take more than one round: where their number varies, the processor
  // guesses wrong when they end. A line of base64 takes one.
  for (; to - from >= 80; from += 80) {
    const std::uint64_t first = BitsOf(LineEndsIn(from)) | BitsOf(LineEndsIn(from + 16)) << 16 |
                                BitsOf(LineEndsIn(from + 32)) << 32 | BitsOf(LineEndsIn(from + 48)) << 48;
    const std::uint64_t rest = BitsOf(LineEndsIn(from + 64));
    if ((first | rest) != 0)
      return from + (first != 0 ? std::countr_zero(first) : 64 + std::countr_zero(rest));
  }
#endif
  return std::find_if(from, to, [](char c) { return c == '\r' || c == '\n'; });
}

}  // namespace vorlent::os
