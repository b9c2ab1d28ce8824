// Vectors between vectors: 8 samples from anywhere in a stretch that is held in registers. Loads that straddle cache
// lines cost more than the shuffles that make up for them.
#pragma once

#include "simd/float.h"

namespace orv {

/// The samples shift .. shift + 7 of consecutive vectors.
template <int shift, int count>
F32x8 shifted(const F32x8 (&vectors)[count]) {
  if constexpr (shift % 8 == 0)
    return vectors[shift / 8];
  else if constexpr (shift % 4 == 0)
    return {_mm256_permute2f128_ps(vectors[shift / 8].v, vectors[shift / 8 + 1].v, 0x21)};
  else if constexpr (shift % 2 == 0)
    return {_mm256_castpd_ps(_mm256_shuffle_pd(_mm256_castps_pd(shifted<shift - 2>(vectors).v),
                                               _mm256_castps_pd(shifted<shift + 2>(vectors).v), 0b0101))};
  else
    return {_mm256_shuffle_ps(shifted<shift - 1>(vectors).v, shifted<shift + 1>(vectors).v, _MM_SHUFFLE(2, 1, 2, 1))};
}

}  // namespace orv
