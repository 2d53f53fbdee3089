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

// One bit for each of sixteen bytes, set where it is a CR or an LF.
inline std::uint64_t LineEndsIn(const char* bytes) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  const __m128i returns = _mm_cmpeq_epi8(block, _mm_set1_epi8('\r'));
  const __m128i feeds = _mm_cmpeq_epi8(block, _mm_set1_epi8('\n'));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(returns, feeds)));
}

#endif

// The first CR or LF from `from` on; `to` if there is none before that.
inline const char* FindLineEnd(const char* from, const char* to) {
#ifdef __SSE2__
  // So many at a time that few lines take more than one round: where their number varies, the processor
  // guesses wrong when they end.
  for (; to - from >= 64; from += 64) {
    const std::uint64_t ends = LineEndsIn(from) | LineEndsIn(from + 16) << 16 | LineEndsIn(from + 32) << 32 |
                               LineEndsIn(from + 48) << 48;
    if (ends != 0) return from + std::countr_zero(ends);
  }
#endif
  return std::find_if(from, to, [](char c) { return c == '\r' || c == '\n'; });
}

// Whether a CR stands there that no LF follows, or the last byte is one, which an LF may follow still.
inline bool MayHoldLoneReturn(const char* from, const char* to) {
  if (from == to) return false;
  // Without a branch for each byte, so that it costs little beside the search that it spares.
  unsigned char lone = to[-1] == '\r' ? 1 : 0;
  for (const char* at = from; at + 1 < to; ++at)
    lone |= static_cast<unsigned char>((at[0] == '\r' ? 1U : 0U) & (at[1] != '\n' ? 1U : 0U));
  return lone != 0;
}

// As FindLineEnd, for bytes that hold no lone CR.
inline const char* FindFeedOrPair(const char* from, const char* to) {
  if (from == to) return to;
  const void* const found = std::memchr(from, '\n', static_cast<std::size_t>(to - from));
  if (found == nullptr) return to;
  const char* const feed = static_cast<const char*>(found);
  return feed > from && feed[-1] == '\r' ? feed - 1 : feed;
}

}  // namespace vorlent::os
