// Roots, extrema and selection of vectors.
#pragma once

#include "simd/vectors.h"

namespace orv {

inline F32x8 squareRoot(F32x8 a) { return {_mm256_sqrt_ps(a.v)}; }

/// a > b ? a : b and a < b ? a : b: b where one of them is a NaN.
inline F32x8 greater(F32x8 a, F32x8 b) { return {_mm256_max_ps(a.v, b.v)}; }
inline F32x8 lesser(F32x8 a, F32x8 b) { return {_mm256_min_ps(a.v, b.v)}; }

/// Per lane, yes where the sign bit of the condition is set, else no. GCC 12 turns the blend intrinsic into an integer
/// comparison, which this processor generation has for 128 bits only, and takes the lanes one by one.
inline F32x8 select(__m256 condition, F32x8 yes, F32x8 no) {
  const __m256 otherwise = no.v, chosen = yes.v;
  __m256 r;
  asm("vblendvps %3, %2, %1, %0" : "=x"(r) : "x"(otherwise), "x"(chosen), "x"(condition));
  return {r};
}

inline U8x16 greater(U8x16 a, U8x16 b) { return {_mm_max_epu8(a.v, b.v)}; }
inline U8x16 lesser(U8x16 a, U8x16 b) { return {_mm_min_epu8(a.v, b.v)}; }
inline U16x8 greater(U16x8 a, U16x8 b) { return {_mm_max_epu16(a.v, b.v)}; }
inline U16x8 lesser(U16x8 a, U16x8 b) { return {_mm_min_epu16(a.v, b.v)}; }

struct F64x4 {
  static constexpr int lanes = 4;
  __m256d v;

  static F64x4 load(const double* p) { return {_mm256_loadu_pd(p)}; }
  void store(double* p) const { _mm256_storeu_pd(p, v); }
};

template <>
struct VectorsOf<double> {
  using Body = F64x4;
};

inline F64x4 greater(F64x4 a, F64x4 b) { return {_mm256_max_pd(a.v, b.v)}; }
inline F64x4 lesser(F64x4 a, F64x4 b) { return {_mm256_min_pd(a.v, b.v)}; }

}  // namespace orv
