// Results across the lanes of a vector.
#pragma once

#include "simd/vectors.h"

namespace orv {

inline uint8_t firstLane(U8x16 a) { return static_cast<uint8_t>(_mm_cvtsi128_si32(a.v)); }
inline uint16_t firstLane(U16x8 a) { return static_cast<uint16_t>(_mm_cvtsi128_si32(a.v)); }
inline float firstLane(F32x8 a) { return _mm256_cvtss_f32(a.v); }

/// Folds the upper half of the lanes onto the lower half until one is left.
template <class V, class Choose>
auto foldLanes(V a, Choose choose) {
  a = choose(a, V{_mm_srli_si128(a.v, 8)});
  a = choose(a, V{_mm_srli_si128(a.v, 4)});
  a = choose(a, V{_mm_srli_si128(a.v, 2)});
  if constexpr (V::lanes == 16)
    a = choose(a, V{_mm_srli_si128(a.v, 1)});
  return firstLane(a);
}
template <class Choose>
float foldLanes(F32x8 a, Choose choose) {
  a = choose(a, F32x8{_mm256_permute2f128_ps(a.v, a.v, 1)});
  a = choose(a, F32x8{_mm256_permute_ps(a.v, 0x0e)});
  a = choose(a, F32x8{_mm256_permute_ps(a.v, 0x01)});
  return firstLane(a);
}

/// One bit a byte of each lane that equals b, from the lowest lane up; a NaN equals nothing.
inline unsigned equalBytes(U8x16 a, U8x16 b) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, b.v)));
}
inline unsigned equalBytes(U16x8 a, U16x8 b) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(a.v, b.v)));
}

inline bool anyDiffers(F32x8 a, F32x8 b) { return _mm256_movemask_ps(_mm256_cmp_ps(a.v, b.v, _CMP_NEQ_UQ)) != 0; }
template <class V>
bool anyDiffers(V a, V b) {
  return equalBytes(a, b) != 0xffff;
}

}  // namespace orv
