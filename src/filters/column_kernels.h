// The sums of a column filter: blocks of samples down an array of row pointers, for one output row or two at a time.
// Two output rows share the loads of their rows, which matters where a load is also a conversion.
#pragma once

#include "filters/filter_vectors.h"

namespace orv {

/// The coefficients of a column kernel as floats or 16-bit integers, scaled. Those of most kernels are kept; the others
/// are made anew at each use, since the caller's buffer need not have room for them.
template <class Scaled, class Coefficient>
class ColumnCoefficients {
public:
  ColumnCoefficients(const Coefficient* kernel, int count, Scaled scale) : kernel_(kernel), scale_(scale) {
    for (int j = 0; j < std::min(count, keptCount); ++j) kept_[j] = scaled(j);
  }
  Scaled operator[](int j) const { return j < keptCount ? kept_[j] : scaled(j); }

private:
  static constexpr int keptCount = 64;

  Scaled scaled(int j) const { return static_cast<Scaled>(static_cast<Scaled>(loadSample(kernel_ + j)) * scale_); }

  const Coefficient* kernel_;
  Scaled scale_;
  Scaled kept_[keptCount];
};

/// Sums down `count` rows from sample x on, in the order of the taps, for output rows 0 .. rows - 1 of srcRows.
template <int taps, int rows, int vectors, class V, class Source>
[[gnu::always_inline]] inline void sumColumns(const Source* const* srcRows, int x, int count, const auto& coefficients,
                                              V (&sums)[rows][vectors], auto load) {
  const auto addRow = [&](int row, auto... outputs) __attribute__((always_inline)) {
    const Source* const p = srcRows[row] + x;
    unrolled<vectors>([&](auto i) {
      const V samples = load(p + V::lanes * i);
      ((sums[outputs][i] = sums[outputs][i] + V::broadcast(coefficients[row - outputs]) * samples), ...);
    });
  };
  constexpr std::integral_constant<int, 0> upper;
  constexpr std::integral_constant<int, rows - 1> lower;
  unrolled<rows * vectors>([&](auto i) { sums[i / vectors][i % vectors] = identityOfSum<V>(); });
  if constexpr (rows == 1) {
    if constexpr (taps != 0)
      unrolled<taps>([&](auto row) { addRow(row, upper); });
    else
      for (int row = 0; row < count; ++row) addRow(row, upper);
  } else {
    static_assert(rows == 2);
    addRow(0, upper);
    if constexpr (taps != 0)
      unrolled<taps - 1>([&](auto row) { addRow(row + 1, upper, lower); });
    else
      for (int row = 1; row < count; ++row) addRow(row, upper, lower);
    addRow(taps != 0 ? taps : count, lower);
  }
}

/// Three taps with equal ends: the outer rows are added first.
template <int rows, int vectors, class Source>
void sumSymmetricThree(const Source* const* srcRows, int x, const auto& coefficients, F32x8 (&sums)[rows][vectors]) {
  unrolled<rows * vectors>([&](auto i) {
    constexpr int row = i / vectors, vector = i % vectors;
    const auto samples = [&](int r) { return loadFloats<F32x8>(srcRows[row + r] + x + 8 * vector); };
    sums[row][vector] =
        F32x8::broadcast(coefficients[0]) * (samples(0) + samples(2)) + F32x8::broadcast(coefficients[1]) * samples(1);
  });
}

/// Calls filter(rows, y) for pairs of output rows and for single ones, rows being an integral constant. Rows that
/// overlap each other must be written one after the other.
inline void forRowPairs(int height, bool overlapping, auto filter) {
  int y = 0;
  if (!overlapping)
    for (; y <= height - 2; y += 2) filter(std::integral_constant<int, 2>{}, y);
  for (; y < height; ++y) filter(std::integral_constant<int, 1>{}, y);
}

}  // namespace orv
