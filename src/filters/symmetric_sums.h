// Weighted sums of a symmetric kernel over rows of floats, in one formula for both passes of a separable filter: tap j
// of the kernel reads row j, and for a pass along a row these are the row itself, shifted by a pixel a tap.
//
//   out[x] = h[0] * (row[0][x] + row[2r][x]) + h[1] * (row[1][x] + row[2r - 1][x]) + ... + h[r] * row[r][x]
//
// The terms are added in this order, whatever the kernel size and the number of samples at a time.
#pragma once

#include <algorithm>
#include <utility>

#include "simd/rounding.h"

namespace orv {

/// The rows of a pass along a line of pixels, which starts at the pixel under tap 0 of output 0.
template <int channels>
struct ShiftedLine {
  const float* line;
  const float* operator[](int tap) const { return line + tap * channels; }
};

/// A kernel of 2 * radius + 1 taps, in registers.
template <int radius>
class FixedKernel {
public:
  FixedKernel(const float* half, int) : FixedKernel(half, std::make_integer_sequence<int, radius + 1>{}) {}

  /// Vector after vector: there are registers for the taps and one sum.
  template <class TapRows>
  F32x16 sum16(const TapRows& rows, int x) const {
    const F32x8 low = sum<F32x8>(rows, x);
    return {low, sum<F32x8>(rows, x + F32x8::lanes)};
  }
  template <class TapRows>
  F32x1 sum1(const TapRows& rows, int x) const {
    return sum<F32x1>(rows, x);
  }

private:
  template <int... i>
  FixedKernel(const float* half, std::integer_sequence<int, i...>) : taps_{F32x8::broadcast(half[i])...} {}

  template <class V, class TapRows>
  V sum(const TapRows& rows, int x) const {
    return sumOf(outerTerms<V>(rows, x, std::make_integer_sequence<int, radius - 1>{}),
                 productOf(tap<V>(radius), V::load(rows[radius] + x)));
  }

  template <class V, class TapRows, int... i>
  V outerTerms(const TapRows& rows, int x, std::integer_sequence<int, i...>) const {
    V sum = term<V>(rows, x, 0);
    ((sum = sumOf(sum, term<V>(rows, x, i + 1))), ...);
    return sum;
  }

  template <class V, class TapRows>
  V term(const TapRows& rows, int x, int i) const {
    return productOf(tap<V>(i), sumOf(V::load(rows[i] + x), V::load(rows[2 * radius - i] + x)));
  }

  template <class V>
  V tap(int i) const {
    if constexpr (V::lanes == 1)
      return {_mm256_castps256_ps128(taps_[i].v)};
    else
      return taps_[i];
  }

  F32x8 taps_[radius + 1];
};

/// A kernel of any size, its taps read from memory.
class AnyKernel {
public:
  AnyKernel(const float* half, int radius) : half_(half), radius_(radius) {}

  template <class TapRows>
  F32x16 sum16(const TapRows& rows, int x) const {
    return sum<F32x16>(rows, x);
  }
  template <class TapRows>
  F32x1 sum1(const TapRows& rows, int x) const {
    return sum<F32x1>(rows, x);
  }

private:
  template <class V, class TapRows>
  V sum(const TapRows& rows, int x) const {
    V sum = term<V>(rows, x, 0);
    for (int i = 1; i < radius_; ++i) sum = sumOf(sum, term<V>(rows, x, i));
    return sumOf(sum, productOf(V::broadcast(half_[radius_]), V::load(rows[radius_] + x)));
  }

  template <class V, class TapRows>
  V term(const TapRows& rows, int x, int i) const {
    return productOf(V::broadcast(half_[i]), sumOf(V::load(rows[i] + x), V::load(rows[2 * radius_ - i] + x)));
  }

  const float* half_;
  int radius_;
};

/// Covers the samples 0 .. count - 1: block(x) makes 16 of them, sample(x) one. The second block starts at `second`, 1 to
/// 16, and the last one ends with the row, so that some samples are made twice; a row shorter than a block is made sample
/// by sample.
template <class Block, class Sample>
void coverRow(int count, int second, Block block, Sample sample) {
  const int last = count - F32x16::lanes;
  if (last < 0) {
    for (int x = 0; x < count; ++x) sample(x);
    return;
  }
  for (int x = second - F32x16::lanes; x < count; x += F32x16::lanes) block(std::clamp(x, 0, last));
}

}  // namespace orv
