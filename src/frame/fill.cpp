#include "frame/fill.h"

#include <array>

namespace orv {
namespace {

void store(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

/// The lowest `length` bytes, at most 15.
void storeLow(uint8_t* p, __m128i v, size_t length) {
  if (length & 8) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
    v = _mm_srli_si128(v, 8);
    p += 8;
  }
  if (length & 4) {
    const int32_t word = _mm_cvtsi128_si32(v);
    std::memcpy(p, &word, sizeof word);
    v = _mm_srli_si128(v, 4);
    p += 4;
  }
  auto low = static_cast<uint32_t>(_mm_cvtsi128_si32(v));
  if (length & 2) {
    std::memcpy(p, &low, 2);
    low >>= 16;
    p += 2;
  }
  if (length & 1)
    std::memcpy(p, &low, 1);
}

constexpr size_t largestPixel = 16;

/// For each pixel size, less one, which byte of the pixel stands where in the pattern.
alignas(16) constexpr auto repetitions = [] {
  std::array<std::array<uint8_t, 48>, largestPixel> orders{};
  for (size_t size = 1; size <= largestPixel; ++size)
    for (size_t i = 0; i < 48; ++i) orders[size - 1][i] = static_cast<uint8_t>(i % size);
  return orders;
}();

}  // namespace

FillPattern::FillPattern(const void* pixel, size_t pixelBytes) {
  alignas(16) uint8_t padded[largestPixel] = {};
  std::memcpy(padded, pixel, pixelBytes);
  const __m128i once = _mm_load_si128(reinterpret_cast<const __m128i*>(padded));
  const uint8_t* order = repetitions[pixelBytes - 1].data();
  for (size_t i = 0; i < 3; ++i)
    vectors_[i] = _mm_shuffle_epi8(once, _mm_load_si128(reinterpret_cast<const __m128i*>(order + 16 * i)));
}

void FillPattern::fill(void* first, size_t length) const {
  auto* p = static_cast<uint8_t*>(first);
  const __m128i a = vectors_[0], b = vectors_[1], c = vectors_[2];
  for (; length >= sizeof vectors_; p += sizeof vectors_, length -= sizeof vectors_) {
    store(p, a);
    store(p + 16, b);
    store(p + 32, c);
  }
  __m128i rest = a;
  if (length >= 32) {
    store(p, a);
    store(p + 16, b);
    rest = c;
    p += 32;
    length -= 32;
  } else if (length >= 16) {
    store(p, a);
    rest = b;
    p += 16;
    length -= 16;
  }
  storeLow(p, rest, length);
}

}  // namespace orv
