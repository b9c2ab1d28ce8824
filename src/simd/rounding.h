// Float vectors stored as samples: rounded to nearest even and saturated to the sample type, 16 or 32 samples at a time or one.
// A float that no 32-bit integer can hold, or a NaN, counts as the most negative integer.
#pragma once

#include "simd/float.h"

namespace orv {

/// Two vectors side by side.
template <class V>
struct Twice {
  static constexpr int lanes = 2 * V::lanes;
  V low, high;

  template <class Sample>
  static Twice load(const Sample* p) {
    return {V::load(p), V::load(p + V::lanes)};
  }
  void store(float* p) const {
    low.store(p);
    high.store(p + V::lanes);
  }
};
using F32x16 = Twice<F32x8>;
using F32x32 = Twice<F32x16>;

/// Rounds, and packs to the signed or unsigned 16-bit range.
inline __m128i roundToS16(F32x8 a) {
  const __m256i ints = _mm256_cvtps_epi32(a.v);
  return _mm_packs_epi32(_mm256_castsi256_si128(ints), _mm256_extractf128_si256(ints, 1));
}
inline __m128i roundToU16(F32x8 a) {
  const __m256i ints = _mm256_cvtps_epi32(a.v);
  return _mm_packus_epi32(_mm256_castsi256_si128(ints), _mm256_extractf128_si256(ints, 1));
}

/// How a vector reaches memory: through the cache, or past it to an aligned address.
struct CachedStore {
  static void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
  static void store(void* p, F32x8 v) { _mm256_storeu_ps(static_cast<float*>(p), v.v); }
};
struct StreamingStore {
  static void store(void* p, __m128i v) { _mm_stream_si128(static_cast<__m128i*>(p), v); }
  static void store(void* p, F32x8 v) { _mm256_stream_ps(static_cast<float*>(p), v.v); }
};

template <class Store>
void storeRounded(uint8_t* p, F32x16 a) {
  Store::store(p, _mm_packus_epi16(roundToS16(a.low), roundToS16(a.high)));
}
template <class Store>
void storeRounded(uint16_t* p, F32x16 a) {
  Store::store(p, roundToU16(a.low));
  Store::store(p + 8, roundToU16(a.high));
}
template <class Store>
void storeRounded(int16_t* p, F32x16 a) {
  Store::store(p, roundToS16(a.low));
  Store::store(p + 8, roundToS16(a.high));
}
template <class Store>
void storeRounded(float* p, F32x16 a) {
  Store::store(p, a.low);
  Store::store(p + F32x8::lanes, a.high);
}

template <class Store, class Sample>
void storeRounded(Sample* p, F32x32 a) {
  storeRounded<Store>(p, a.low);
  storeRounded<Store>(p + F32x16::lanes, a.high);
}

/// The lowest sample of a rounded vector.
inline void storeRounded(uint8_t* p, F32x1 a) {
  const __m128i words = _mm_packs_epi32(_mm_cvtps_epi32(a.v), _mm_setzero_si128());
  *p = static_cast<uint8_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}
inline void storeRounded(uint16_t* p, F32x1 a) {
  const auto word =
      static_cast<uint16_t>(_mm_cvtsi128_si32(_mm_packus_epi32(_mm_cvtps_epi32(a.v), _mm_setzero_si128())));
  std::memcpy(p, &word, sizeof word);
}
inline void storeRounded(int16_t* p, F32x1 a) {
  const auto word = static_cast<int16_t>(_mm_cvtsi128_si32(_mm_packs_epi32(_mm_cvtps_epi32(a.v), _mm_setzero_si128())));
  std::memcpy(p, &word, sizeof word);
}
inline void storeRounded(float* p, F32x1 a) { a.store(p); }

}  // namespace orv
