// Rows of samples copied, or converted on the way.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "simd/blocks.h"
#include "simd/rounding.h"

namespace orv {

/// As they are.
template <class Sample>
requires(!std::is_same_v<Sample, float>) void copySamples(const Sample* src, Sample* dst, int count) {
  std::memcpy(dst, src, static_cast<size_t>(count) * sizeof(Sample));
}

/// As floats; floats themselves, too: a call of the system's copy costs as much as a short row.
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
