// Two vectors side by side as one of twice the lanes: halves the bookkeeping of a loop that has many rows in hand.
#pragma once

#include "simd/bits.h"
#include "simd/integer.h"

namespace orv {

template <class V>
struct Pair {
  static constexpr int lanes = 2 * V::lanes;
  V low, high;

  template <class Sample>
  static Pair load(const Sample* p) {
    return {V::load(p), V::load(p + V::lanes)};
  }
  template <class Sample>
  void store(Sample* p) const {
    low.store(p);
    high.store(p + V::lanes);
  }
};

template <>
template <>
inline void Pair<S16x8>::store(uint8_t* p) const {
  storeBits(p, _mm_packus_epi16(low.v, high.v));
}

template <>
template <>
inline Pair<S16x8> Pair<S16x8>::load(const uint8_t* p) {
  const __m128i bytes = loadBits(p);
  return {{_mm_cvtepu8_epi16(bytes)}, {_mm_unpackhi_epi8(bytes, _mm_setzero_si128())}};
}

/// p[0] + p[1] + p[2] for 16 consecutive p: two of the three terms in one multiplication by ones.
inline Pair<S16x8> sumOfThree(const uint8_t* p) {
  const __m128i first = loadBits(p), second = loadBits(p + 1), third = loadBits(p + 2);
  const __m128i ones = _mm_set1_epi8(1), zero = _mm_setzero_si128();
  const auto sum = [&](__m128i pairs, __m128i last) {
    return S16x8{_mm_add_epi16(_mm_maddubs_epi16(pairs, ones), last)};
  };
  return {sum(_mm_unpacklo_epi8(first, second), _mm_unpacklo_epi8(third, zero)),
          sum(_mm_unpackhi_epi8(first, second), _mm_unpackhi_epi8(third, zero))};
}

template <class V>
Pair<V> operator+(Pair<V> a, Pair<V> b) {
  return {a.low + b.low, a.high + b.high};
}
template <class V>
Pair<V> operator-(Pair<V> a, Pair<V> b) {
  return {a.low - b.low, a.high - b.high};
}

}  // namespace orv
