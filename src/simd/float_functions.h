// Roots and extrema of single- and double-precision vectors.
#pragma once

#include "simd/float.h"

namespace orv {

inline F32x8 squareRoot(F32x8 a) { return {_mm256_sqrt_ps(a.v)}; }

/// a > b ? a : b and a < b ? a : b: b where one of them is a NaN.
inline F32x8 greater(F32x8 a, F32x8 b) { return {_mm256_max_ps(a.v, b.v)}; }
inline F32x8 lesser(F32x8 a, F32x8 b) { return {_mm256_min_ps(a.v, b.v)}; }

struct F64x4 {
  static constexpr int lanes = 4;
  __m256d v;

  static F64x4 load(const double* p) { return {_mm256_loadu_pd(p)}; }
  void store(double* p) const { _mm256_storeu_pd(p, v); }
};

inline F64x4 greater(F64x4 a, F64x4 b) { return {_mm256_max_pd(a.v, b.v)}; }
inline F64x4 lesser(F64x4 a, F64x4 b) { return {_mm256_min_pd(a.v, b.v)}; }

}  // namespace orv
