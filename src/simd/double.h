// Double-precision vectors: one number, and the widened lanes of 8 single-precision samples. Like their
// single-precision counterparts they have the same operations, pinned to the operand order in which they are written
// where both being NaN would let it show.
#pragma once

#include "simd/float.h"

namespace orv {

struct F64x1 {
  __m128d v;

  static F64x1 zero() { return {_mm_setzero_pd()}; }
  static F64x1 broadcast(double value) { return {_mm_set_sd(value)}; }
  double value() const { return _mm_cvtsd_f64(v); }
};

inline F64x1 operator+(F64x1 a, F64x1 b) {
  const __m128d x = a.v, y = b.v;
  __m128d r;
  asm("vaddsd %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
inline F64x1 operator-(F64x1 a, F64x1 b) { return {_mm_sub_sd(a.v, b.v)}; }
inline F64x1 operator*(F64x1 a, F64x1 b) {
  const __m128d x = a.v, y = b.v;
  __m128d r;
  asm("vmulsd %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
inline F64x1 abs(F64x1 a) { return {_mm_andnot_pd(_mm_set_sd(-0.0), a.v)}; }

/// 8 lanes in two registers: samples 0 to 3 and 4 to 7.
struct F64x8 {
  __m256d low, high;

  static F64x8 zero() { return {_mm256_setzero_pd(), _mm256_setzero_pd()}; }
  static F64x8 broadcast(double value) { return {_mm256_set1_pd(value), _mm256_set1_pd(value)}; }
};

inline __m256d addInOrder(__m256d a, __m256d b) {
  __m256d r;
  asm("vaddpd %2, %1, %0" : "=x"(r) : "x"(a), "x"(b));
  return r;
}
inline __m256d multiplyInOrder(__m256d a, __m256d b) {
  __m256d r;
  asm("vmulpd %2, %1, %0" : "=x"(r) : "x"(a), "x"(b));
  return r;
}
inline F64x8 operator+(F64x8 a, F64x8 b) { return {addInOrder(a.low, b.low), addInOrder(a.high, b.high)}; }
inline F64x8 operator-(F64x8 a, F64x8 b) { return {_mm256_sub_pd(a.low, b.low), _mm256_sub_pd(a.high, b.high)}; }
inline F64x8 operator*(F64x8 a, F64x8 b) { return {multiplyInOrder(a.low, b.low), multiplyInOrder(a.high, b.high)}; }

inline F64x1 widen(F32x1 a) { return {_mm_cvtss_sd(_mm_setzero_pd(), a.v)}; }
inline F64x8 widen(F32x8 a) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(a.v)), _mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1))};
}

/// Lane i onto lane i + 4, the upper half onto the lower, then the two that remain.
inline F64x1 joinLanes(F64x8 a) {
  const __m256d four = addInOrder(a.low, a.high);
  const F64x1 even{_mm256_castpd256_pd128(four)};
  const F64x1 upperEven{_mm256_extractf128_pd(four, 1)};
  const F64x1 odd{_mm_unpackhi_pd(even.v, even.v)};
  const F64x1 upperOdd{_mm_unpackhi_pd(upperEven.v, upperEven.v)};
  return (even + upperEven) + (odd + upperOdd);
}
inline F32x1 joinLanes(F32x8 a) {
  const F32x8 upper{_mm256_permute2f128_ps(a.v, a.v, 1)};
  const F32x8 four = a + upper;
  const F32x8 two = four + F32x8{_mm256_permute_ps(four.v, 0x0e)};
  return F32x1{_mm256_castps256_ps128(two.v)} + F32x1{_mm256_castps256_ps128(_mm256_permute_ps(two.v, 0x01))};
}

/// To nearest even, by one rounding. The two halves enter as the low bits of 2^52 and 2^84.
inline double toDouble(uint64_t value) {
  const __m128i halves = _mm_set_epi64x(0, static_cast<int64_t>(value));
  const __m128i exponents = _mm_setr_epi32(0x43300000, 0x45300000, 0, 0);
  const __m128d biased = _mm_castsi128_pd(_mm_unpacklo_epi32(halves, exponents));
  const __m128d parts = _mm_sub_pd(biased, _mm_setr_pd(0x1p52, 0x1p84));
  return _mm_cvtsd_f64(_mm_add_sd(parts, _mm_unpackhi_pd(parts, parts)));
}

}  // namespace orv
