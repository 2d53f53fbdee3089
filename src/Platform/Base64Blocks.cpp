#include "Platform/Base64Blocks.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace vorlent::os {

#ifdef __x86_64__

namespace {

constexpr std::size_t kCharacters = 16;

#define WITH_SHUFFLES __attribute__((target("ssse3")))

// A character is of the alphabet if the bits that its two halves stand for have none in common. All that
// share an upper half are as far from their values, but for "/".
WITH_SHUFFLES bool ToValues(__m128i& block) {
  const __m128i lowerHalves = _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13,
                                            0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m128i upperHalves = _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10,
                                            0x10, 0x10, 0x10, 0x10, 0x10);
  const __m128i distances = _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i half = _mm_set1_epi8(0x0F);

  const __m128i lower = _mm_and_si128(block, half);
  const __m128i upper = _mm_and_si128(_mm_srli_epi16(block, 4), half);
  const __m128i common =
      _mm_and_si128(_mm_shuffle_epi8(lowerHalves, lower), _mm_shuffle_epi8(upperHalves, upper));
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(common, _mm_setzero_si128())) != 0xFFFF) return false;
  const __m128i isSlash = _mm_cmpeq_epi8(block, _mm_set1_epi8('/'));
  block = _mm_add_epi8(block, _mm_shuffle_epi8(distances, _mm_add_epi8(upper, isSlash)));
  return true;
}

// Four values of six bits each become three bytes, in four groups side by side.
WITH_SHUFFLES __m128i ToBytes(__m128i values) {
  const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
  const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
  return _mm_shuffle_epi8(groups, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

WITH_SHUFFLES bool DecodeBlock(const char* text, char* out) {
  __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  if (!ToValues(block)) return false;
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), ToBytes(block));
  return true;
}

WITH_SHUFFLES std::size_t DecodeWithShuffles(std::string_view text, char* out) {
  std::size_t done = 0;
  for (; done + kCharacters <= text.size(); done += kCharacters) {
    if (!DecodeBlock(text.data() + done, out + done / 4 * 3)) return done;
  }
  // The groups behind the last block are done in one block with those before them, which come out as before.
  const std::size_t groups = text.size() / 4 * 4;
  if (done == 0 || done == groups) return done;
  const std::size_t last = groups - kCharacters;
  return DecodeBlock(text.data() + last, out + last / 4 * 3) ? groups : done;
}

}  // namespace

std::size_t DecodeBase64Blocks(std::string_view text, char* out) {
  static const bool hasShuffles = __builtin_cpu_supports("ssse3") != 0;
  return hasShuffles ? DecodeWithShuffles(text, out) : 0;
}

#else

std::size_t DecodeBase64Blocks(std::string_view, char*) {
  return 0;
}

#endif

}  // namespace vorlent::os
