// Weighted sums of a symmetric kernel over rows of floats, in one formula for both passes of a separable filter: tap j
// of the kernel reads row j, and for a pass along a row these are the row itself, shifted by a pixel a tap.
//
//   out[x] = h[0] * (row[0][x] + row[2r][x]) + h[1] * (row[1][x] + row[2r - 1][x]) + ... + h[r] * row[r][x]
//
// The terms are added in this order, whatever the kernel size and the number of samples at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <utility>

#include "simd/rounding.h"
#include "simd/shifts.h"

namespace orv {

template <int value>
using Constant = std::integral_constant<int, value>;

// What the taps read. load<V>(tap, x) is the vector at x of the row under the tap.

/// Rows of their own.
struct SeparateRows {
  const float* const* rows;
  template <class V>
  V load(int tap, int x) const {
    return V::load(rows[tap] + x);
  }
};

/// The same for a known number of taps, the pointers in registers as far as they go.
template <int taps>
struct FixedRows {
  const float* rows[taps];
  explicit FixedRows(const float* const* source) { std::memcpy(rows, source, sizeof rows); }
  template <class V>
  V load(int tap, int x) const {
    return V::load(rows[tap] + x);
  }
};

/// One line of pixels, which starts at the pixel under tap 0 of output 0.
template <int channels>
struct ShiftedLine {
  const float* line;
  template <class V>
  V load(int tap, int x) const {
    return V::load(line + x + tap * channels);
  }
};

/// What the taps of 16 outputs of a line read, in registers; x is 0 or 8.
template <int channels, int taps>
class LineWindow {
public:
  static constexpr int vectors = 2 + (channels * (taps - 1) + F32x8::lanes - 1) / F32x8::lanes;
  static constexpr int samples = vectors * F32x8::lanes;

  explicit LineWindow(const float* first) : LineWindow(first, std::make_integer_sequence<int, vectors>{}) {}

  template <class V, int tap, int x>
  V load(Constant<tap>, Constant<x>) const {
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
  using Widest = F32x16;

  FixedKernel(const float* half, int) : FixedKernel(half, std::make_integer_sequence<int, radius + 1>{}) {}

  /// Two vectors are made one after the other: there are registers for the taps and one sum.
  template <class V>
  V sum(const auto& rows, int x) const {
    if constexpr (V::lanes > F32x8::lanes) {
      const F32x8 low = terms<F32x8>(rows, x);
      return {low, terms<F32x8>(rows, x + F32x8::lanes)};
    } else {
      return terms<V>(rows, x);
    }
  }
  template <int channels>
  F32x16 sum(const LineWindow<channels, taps>& window) const {
    const F32x8 low = terms<F32x8>(window, Constant<0>{});
    return {low, terms<F32x8>(window, Constant<F32x8::lanes>{})};
  }

private:
  template <int... i>
  FixedKernel(const float* half, std::integer_sequence<int, i...>) : half_{F32x8::broadcast(half[i])...} {}

  template <class V>
  V terms(const auto& rows, auto x) const {
    return sumOf(outerTerms<V>(rows, x, std::make_integer_sequence<int, radius - 1>{}),
                 productOf(tap<V>(radius), rows.template load<V>(Constant<radius>{}, x)));
  }

  template <class V, int... i>
  V outerTerms(const auto& rows, auto x, std::integer_sequence<int, i...>) const {
    V sum = term<V, 0>(rows, x);
    ((sum = sumOf(sum, term<V, i + 1>(rows, x))), ...);
    return sum;
  }

  template <class V, int i>
  V term(const auto& rows, auto x) const {
    return productOf(tap<V>(i), sumOf(rows.template load<V>(Constant<i>{}, x),
                                      rows.template load<V>(Constant<2 * radius - i>{}, x)));
  }

  template <class V>
  V tap(int i) const {
    if constexpr (V::lanes == 1)
      return {_mm256_castps256_ps128(half_[i].v)};
    else
      return half_[i];
  }

  F32x8 half_[radius + 1];
};

/// A kernel of any size, its taps read from memory.
class AnyKernel {
public:
  using Widest = F32x32;

  AnyKernel(const float* half, int radius) : half_(half), radius_(radius) {}

  template <class V>
  V sum(const auto& rows, int x) const {
    V sum = term<V>(rows, x, 0);
    for (int i = 1; i < radius_; ++i) sum = sumOf(sum, term<V>(rows, x, i));
    return sumOf(sum, productOf(V::broadcast(half_[radius_]), rows.template load<V>(radius_, x)));
  }

private:
  template <class V>
  V term(const auto& rows, int x, int i) const {
    return productOf(V::broadcast(half_[i]),
                     sumOf(rows.template load<V>(i, x), rows.template load<V>(2 * radius_ - i, x)));
  }

  const float* half_;
  int radius_;
};

/// Covers the samples begin .. count - 1: block(x) makes V::lanes of them, single(x) one. The last block ends with the
/// row and the first starts at 0 even if `begin` is negative, so that some samples are made twice; a row shorter than a
/// block is made sample by sample.
template <class V, class Block, class Single>
void coverRow(int begin, int count, Block block, Single single) {
  const int last = count - V::lanes;
  if (last < 0) {
    for (int x = 0; x < count; ++x) single(x);
    return;
  }
  for (int x = begin; x < count; x += V::lanes) block(std::clamp(x, 0, last));
}

}  // namespace orv
