// Rows of samples copied to rows of floats.
#pragma once

#include "simd/blocks.h"
#include "simd/rounding.h"

namespace orv {

/// Floats, too, are copied here: a call of the system's copy costs as much as a short row.
template <class Sample>
[[gnu::always_inline]] inline void copySamples(const Sample* src, float* dst, int count) {
  const auto copy = [&]<class V>(V) __attribute__((always_inline)) {
    return [=](int x) __attribute__((always_inline)) { V::load(src + x).store(dst + x); };
  };
  if (count >= F32x16::lanes)
    coverRow<F32x16::lanes>(count, copy(F32x16{}));
  else if (count >= F32x8::lanes)
    coverRow<F32x8::lanes>(count, copy(F32x8{}));
  else
    coverRow<1>(count, copy(F32x1{}));
}

}  // namespace orv
