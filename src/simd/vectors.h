// The vector of a sample type for the body of a row, and the single sample with the same operations for its ends.
#pragma once

#include "simd/float.h"
#include "simd/integer.h"

namespace orv {

template <class Sample>
struct VectorsOf;
template <>
struct VectorsOf<float> {
  using Body = F32x8;
  using Single = F32x1;
};
template <>
struct VectorsOf<uint8_t> {
  using Body = U8x16;
  using Single = IntegerX1<uint8_t>;
};
template <>
struct VectorsOf<uint16_t> {
  using Body = U16x8;
  using Single = IntegerX1<uint16_t>;
};
template <>
struct VectorsOf<int16_t> {
  using Body = S16x8;
  using Single = S16x1;
};

/// Calls step(V{}, x) for each vector of the row's body, two a turn, and then for each single sample of its tail.
template <class Sample, class Step>
void forEachVector(int width, Step step) {
  using Body = typename VectorsOf<Sample>::Body;
  int x = 0;
  for (; x <= width - 2 * Body::lanes; x += 2 * Body::lanes) {
    step(Body{}, x);
    step(Body{}, x + Body::lanes);
  }
  if (x <= width - Body::lanes) {
    step(Body{}, x);
    x += Body::lanes;
  }
  for (; x < width; ++x) step(typename VectorsOf<Sample>::Single{}, x);
}

}  // namespace orv
