// Two vectors side by side as one of twice the lanes: halves the bookkeeping of a loop that has many rows in hand.
#pragma once

#include "simd/bits.h"
#include "simd/integer.h"

namespace orv {

template <class V>
struct Pair {
  static constexpr int lanes = 2 * V::lanes;
  V low, high;

  /// 16 bytes
  static Pair widen(__m128i bytes) {
    return {{_mm_cvtepu8_epi16(bytes)}, {_mm_unpackhi_epi8(bytes, _mm_setzero_si128())}};
  }
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
  return widen(loadBits(p));
}

/// firstFactor * first + secondFactor * second of bytes, in one multiplication.
template <int firstFactor, int secondFactor>
Pair<S16x8> sumOfProducts(__m128i first, __m128i second) {
  const __m128i factors = _mm_set1_epi16(static_cast<int16_t>((secondFactor * 256) | (firstFactor & 0xff)));
  return {{_mm_maddubs_epi16(_mm_unpacklo_epi8(first, second), factors)},
          {_mm_maddubs_epi16(_mm_unpackhi_epi8(first, second), factors)}};
}

template <class V>
Pair<V> operator+(Pair<V> a, Pair<V> b) {
  return {a.low + b.low, a.high + b.high};
}
template <class V>
Pair<V> operator-(Pair<V> a, Pair<V> b) {
  return {a.low - b.low, a.high - b.high};
}

/// The widened bytes of even and of odd places: sums of neighbours take no shuffles.
struct AlternateBytes {
  static constexpr int lanes = 16;
  S16x8 even, odd;

  static AlternateBytes widen(__m128i bytes) { return {{evenOf(bytes)}, {oddOf(bytes)}}; }
  static AlternateBytes load(const uint8_t* p) { return widen(loadBits(p)); }
  static AlternateBytes load(const int16_t* p) { return {S16x8::load(p), S16x8::load(p + 8)}; }
  void store(int16_t* p) const {
    even.store(p);
    odd.store(p + 8);
  }
  /// Values of 0 .. 255
  void store(uint8_t* p) const { storeBits(p, _mm_or_si128(even.v, _mm_slli_epi16(odd.v, 8))); }

  static __m128i evenOf(__m128i bytes) { return _mm_and_si128(bytes, _mm_set1_epi16(0xff)); }
  static __m128i oddOf(__m128i bytes) { return _mm_srli_epi16(bytes, 8); }
  /// The sums of an even place's byte and the next one
  static S16x8 sumsOfPairs(__m128i bytes) { return {_mm_maddubs_epi16(bytes, _mm_set1_epi8(1))}; }
};

inline AlternateBytes operator+(AlternateBytes a, AlternateBytes b) { return {a.even + b.even, a.odd + b.odd}; }

}  // namespace orv
