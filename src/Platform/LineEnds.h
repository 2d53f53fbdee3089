// Looking for line ends, many bytes at a time where the processor can.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vorlent::os {

#ifdef __SSE2__

// One bit for each of sixteen bytes, set where it is a CR or an LF.
inline unsigned LineEndsIn(const char* bytes) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  const __m128i returns = _mm_cmpeq_epi8(block, _mm_set1_epi8('\r'));
  const __m128i feeds = _mm_cmpeq_epi8(block, _mm_set1_epi8('\n'));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(returns, feeds)));
}

#endif

// The first CR or LF from `from` on; `to` if there is none before that.
inline const char* FindLineEnd(const char* from, const char* to) {
#ifdef __SSE2__
  for (; to - from >= 32; from += 32) {
    const unsigned ends = LineEndsIn(from) | LineEndsIn(from + 16) << 16;
    if (ends != 0) return from + std::countr_zero(ends);
  }
#endif
  return std::find_if(from, to, [](char c) { return c == '\r' || c == '\n'; });
}

}  // namespace vorlent::os
