// Reference model of the absolute differences, in the plainest loops; free of the test framework.
#pragma once

#include <type_traits>

#include "orvcv.h"
#include "support/arithmetic.h"
#include "support/samples.h"

namespace orvtest::model {

template <class Sample>
[[gnu::always_inline]] inline Sample distance(Sample first, Sample second) {
  if constexpr (std::is_floating_point_v<Sample>)
    return magnitude(subtract(first, second));
  else
    return static_cast<Sample>(first > second ? first - second : second - first);
}

/// Width in samples: channels are not told apart.
template <class Sample>
void absoluteDifference(const Sample* src1, int src1Step, const Sample* src2, int src2Step, Sample* dst, int dstStep,
                        OrvSize roi) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x)
      store(dst, dstStep, x, y, distance(load(src1, src1Step, x, y), load(src2, src2Step, x, y)));
}

template <class Sample>
void absoluteDifference(const Sample* src, int srcStep, Sample* dst, int dstStep, OrvSize roi, Sample value) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) store(dst, dstStep, x, y, distance(load(src, srcStep, x, y), value));
}

/// What the integer members make of their `value`.
template <class Sample>
Sample clampToSample(int32_t value) {
  const int32_t top = sizeof(Sample) == 1 ? 255 : 65535;
  return static_cast<Sample>(value < 1 ? 0 : value >= top ? top : value);
}

}  // namespace orvtest::model
