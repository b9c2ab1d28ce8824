// Rows of samples copied, or converted on the way.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "simd/blocks.h"
#include "simd/rounding.h"

namespace orv {

template <class Sample>
void copySamples(const Sample* src, Sample* dst, int count) {
  std::memcpy(dst, src, static_cast<size_t>(count) * sizeof(Sample));
}

template <class Sample>
requires(!std::is_same_v<Sample, float>) void copySamples(const Sample* src, float* dst, int count) {
  if (count < F32x16::lanes)
    for (int x = 0; x < count; ++x) F32x1::load(src + x).store(dst + x);
  else
    coverRow<F32x16::lanes>(0, count, [&](int x) { F32x16::load(src + x).store(dst + x); });
}

}  // namespace orv
