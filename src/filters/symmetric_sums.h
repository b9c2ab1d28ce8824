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
#include "simd/shifts.h"

namespace orv {

template <int value>
using Constant = std::integral_constant<int, value>;

/// sum += tap * (before + after), one vector after the other: 32 sums, the tap and a term just fit the registers.
[[gnu::always_inline]] inline void addPair(F32x8& sum, F32x8 tap, const float* before, const float* after) {
  sum = sumOf(sum, productOf(tap, sumOf(F32x8::load(before), F32x8::load(after))));
}
template <class V>
[[gnu::always_inline]] inline void addPair(Twice<V>& sum, F32x8 tap, const float* before, const float* after) {
  addPair(sum.low, tap, before, after);
  addPair(sum.high, tap, before + V::lanes, after + V::lanes);
}

/// The sums of a block of samples, held in registers while the taps go by. at(tap) is the first sample of the block in
/// the row under the tap; a radius that is a Constant does without the loop.
template <class V>
[[gnu::always_inline]] inline V symmetricSum(const float* half, auto radius, auto at) {
  V sum = productOf(V::broadcast(half), sumOf(V::load(at(0)), V::load(at(2 * radius))));
  for (int i = 1; i < radius; ++i) addPair(sum, F32x8::broadcast(half + i), at(i), at(2 * radius - i));
  return sumOf(sum, productOf(V::broadcast(half + radius), V::load(at(radius))));
}

/// What the taps of 16 outputs of a line read, in registers; x is 0 or 8.
template <int channels, int taps>
class LineWindow {
public:
  static constexpr int vectors = 2 + (channels * (taps - 1) + F32x8::lanes - 1) / F32x8::lanes;
  static constexpr int samples = vectors * F32x8::lanes;

  explicit LineWindow(const float* first) : LineWindow(first, std::make_integer_sequence<int, vectors>{}) {}

  template <int tap, int x>
  F32x8 at() const {
    return shifted<x + tap * channels>(held_);
  }

private:
  template <int... i>
  LineWindow(const float* first, std::integer_sequence<int, i...>) : held_{F32x8::load(first + i * F32x8::lanes)...} {}

  F32x8 held_[vectors];
};

/// A kernel of 2 * radius + 1 taps, in registers.
template <int radius>
class FixedKernel {
public:
  static constexpr int taps = 2 * radius + 1;

  explicit FixedKernel(const float* half) : FixedKernel(half, std::make_integer_sequence<int, radius + 1>{}) {}

  /// The sums of a window, 8 of its 16 outputs.
  template <int x>
  F32x8 sum(const auto& window) const {
    const F32x8 outer = outerTerms<x>(window, std::make_integer_sequence<int, radius - 1>{});
    return sumOf(outer, productOf(half_[radius], window.template at<radius, x>()));
  }

private:
  template <int... i>
  FixedKernel(const float* half, std::integer_sequence<int, i...>) : half_{F32x8::broadcast(half + i)...} {}

  template <int x, int... i>
  F32x8 outerTerms(const auto& window, std::integer_sequence<int, i...>) const {
    F32x8 sum = term<0, x>(window);
    ((sum = sumOf(sum, term<i + 1, x>(window))), ...);
    return sum;
  }

  template <int i, int x>
  F32x8 term(const auto& window) const {
    return productOf(half_[i], sumOf(window.template at<i, x>(), window.template at<2 * radius - i, x>()));
  }

  F32x8 half_[radius + 1];
};

/// Covers the samples begin .. count - 1, at least `lanes` of them, by blocks. The last block ends with the row and the
/// first starts at 0 even if `begin` is negative, so that some samples are made twice.
template <int lanes, class Block>
[[gnu::always_inline]] inline void coverRow(int begin, int count, Block block) {
  for (int x = begin; x < count; x += lanes) block(std::clamp(x, 0, count - lanes));
}

}  // namespace orv
