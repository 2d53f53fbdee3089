#include "Platform/Base64Blocks.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace vorlent::os {

#ifdef __x86_64__

namespace {

constexpr std::size_t kCharacters = 32;

#define WITH_WIDE_SHUFFLES __attribute__((target("avx2")))

// The same sixteen bytes in both halves, each of which is shuffled by itself.
WITH_WIDE_SHUFFLES __m256i Twice(__m128i bytes) {
  return _mm256_broadcastsi128_si256(bytes);
}

// A character is of the alphabet if the bits that its two halves stand for have none in common. All that
// share an upper half are as far from their values, but for "/".
WITH_WIDE_SHUFFLES bool ToValues(__m256i& block) {
  const __m256i lowerHalves = Twice(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                                  0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i upperHalves = Twice(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10,
                                                  0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  const __m256i distances = Twice(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i half = _mm256_set1_epi8(0x0F);

  const __m256i lower = _mm256_and_si256(block, half);
  const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(block, 4), half);
  if (!_mm256_testz_si256(_mm256_shuffle_epi8(lowerHalves, lower), _mm256_shuffle_epi8(upperHalves, upper)))
    return false;
  const __m256i isSlash = _mm256_cmpeq_epi8(block, _mm256_set1_epi8('/'));
  block = _mm256_add_epi8(block, _mm256_shuffle_epi8(distances, _mm256_add_epi8(upper, isSlash)));
  return true;
}

// Four values of six bits each become three bytes, in eight groups side by side.
WITH_WIDE_SHUFFLES __m256i ToBytes(__m256i values) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i halves = _mm256_shuffle_epi8(
      groups, Twice(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
  return _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

WITH_WIDE_SHUFFLES bool DecodeBlock(const char* text, char* out) {
  __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
  if (!ToValues(block)) return false;
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), ToBytes(block));
  return true;
}

WITH_WIDE_SHUFFLES std::size_t DecodeWithWideShuffles(std::string_view text, char* out) {
  std::size_t done = 0;
  for (; done + kCharacters <= text.size(); done += kCharacters) {
    if (!DecodeBlock(text.data() + done, out + done / 4 * 3)) return done;
  }
  // The groups after the last block are done in one block with those before them, which come out as before.
  const std::size_t groups = text.size() / 4 * 4;
  if (done == 0 || done == groups) return done;
  const std::size_t last = groups - kCharacters;
  return DecodeBlock(text.data() + last, out + last / 4 * 3) ? groups : done;
}

}  // namespace

std::size_t DecodeBase64Blocks(std::string_view text, char* out) {
  return __builtin_cpu_supports("avx2") != 0 ? DecodeWithWideShuffles(text, out) : 0;
}

#else

std::size_t DecodeBase64Blocks(std::string_view, char*) {
  return 0;
}

#endif

}  // namespace vorlent::os
