// Column filters by type: how blocks and tails of a row are summed and narrowed, and the walk over the rows.
#pragma once

#include "filters/column_kernels.h"
#include "filters/fixed_point.h"
#include "filters/pipelines.h"

namespace orv {

/// Samples of a block. Blocks lie from the left; what remains of a row is its tail.
constexpr int blockSamples = 16;

/// Where a float form multiplies by its factor: each coefficient beforehand, the sum afterwards, or nowhere.
enum class Factor { inCoefficients, onSum, none };

/// Float sums. Blocks round to nearest even, tails truncate, and in the 16-bit signed forms the tail's factor comes
/// after its sum: the differences are by design.
template <class Source, class Dst, class Coefficient, Factor blockFactor,
          Rounding blockRounding = Rounding::toNearestEven>
class FloatColumns {
public:
  /// Vectors in a block of two output rows, which share their loads; 0 where loads come with the products. The sums of
  /// any number of taps stay in registers if they are few.
  template <int taps>
  static constexpr int pairedVectors = std::is_same_v<Source, float> ? 0
                                       : taps == anyTaps             ? 1
                                                                     : 2;

  FloatColumns(ColumnKernel<Coefficient> kernel, float factor)
      : count_(kernel.size),
        factor_(factor),
        blockCoefficients_({kernel.taps, (blockFactor == Factor::inCoefficients ? factor : 1.0f) / loadedUnit<Source>},
                           kernel.size),
        tailCoefficients_{kernel.taps, 1.0f / loadedUnit<Source>},
        symmetricThree_(blockFactor == Factor::inCoefficients && kernel.size == 3 &&
                        loadSample(kernel.taps) == loadSample(kernel.taps + 2)) {}

  template <int taps, int rows, int vectors>
  [[gnu::always_inline]] void block(const Source* const* srcRows, View<Dst> dst, int x) const {
    F32x8 sums[rows][vectors];
    if (taps == 3 && symmetricThree_)
      sumSymmetricThree(srcRows, x, blockCoefficients_.template forTaps<taps>(), sums);
    else
      sumColumns<taps>(srcRows, x, count_, blockCoefficients_.template forTaps<taps>(), sums);
    unrolled<rows>([&](auto row) __attribute__((always_inline)) {
      if constexpr (blockFactor == Factor::onSum)
        unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
          sums[row][i] = sums[row][i] * F32x8::broadcast(factor_);
        });
      storeNarrowed<blockRounding, Dst>(sums[row], dst.row(row) + x);
    });
  }

  /// Samples x .. width - 1, fewer than a block. Where the row is wide enough they are made in vectors that end with it.
  void tail(const Source* const* srcRows, Dst* dst, int x, int width) const {
    constexpr int lanes = F32x8::lanes;
    if (width >= lanes) {
      if (width - x > lanes)
        storeNarrowed<tailRounding, Dst>(tailSums<F32x8>(srcRows, x).v, dst + x);
      Dst last[lanes];
      storeNarrowed<tailRounding, Dst>(tailSums<F32x8>(srcRows, width - lanes).v, last);
      const int rest = std::min(width - x, lanes);
      std::memcpy(dst + width - rest, last + lanes - rest, static_cast<size_t>(rest) * sizeof(Dst));
    } else {
      for (; x < width; ++x) storeSample(dst + x, narrowed<tailRounding, Dst>(tailSums<F32x1>(srcRows, x).v[0]));
    }
  }

private:
  static constexpr Rounding tailRounding = Rounding::towardZero;

  template <class V>
  struct TailSums {
    V v[1];
  };
  template <class V>
  TailSums<V> tailSums(const Source* const* srcRows, int x) const {
    V sums[1][1];
    sumColumns<manyTaps>(srcRows, x, count_, tailCoefficients_, sums);
    if constexpr (blockFactor != Factor::none)
      sums[0][0] = sums[0][0] * V::broadcast(factor_);
    return {{sums[0][0]}};
  }

  int count_;
  float factor_;
  KeptCoefficients<FloatCoefficients<Coefficient>> blockCoefficients_;
  FloatCoefficients<Coefficient> tailCoefficients_;
  bool symmetricThree_;
};

/// 16-bit sums that wrap. The scaling tells blocks and tails apart.
template <class Scaling>
class WrappingColumns {
public:
  template <int taps>
  static constexpr int pairedVectors = 0;

  WrappingColumns(ColumnKernel<int16_t> kernel, Scaling scaling)
      : count_(kernel.size),
        scaling_(scaling),
        tailCoefficients_{kernel.taps},
        blockCoefficients_(tailCoefficients_, kernel.size) {}

  template <int taps, int rows, int vectors>
  [[gnu::always_inline]] void block(const int16_t* const* srcRows, View<int16_t> dst, int x) const {
    Wrapping16x8 sums[rows][vectors];
    sumColumns<taps>(srcRows, x, count_, blockCoefficients_.template forTaps<taps>(), sums);
    unrolled<rows>([&](auto row) __attribute__((always_inline)) { scaling_.store(sums[row], dst.row(row) + x); });
  }

  void tail(const int16_t* const* srcRows, int16_t* dst, int x, int width) const {
    for (; x < width; ++x) {
      Wrapping32x1 sums[1][1];
      sumColumns<manyTaps>(srcRows, x, count_, tailCoefficients_, sums);
      storeSample(dst + x, scaling_.edge(sums[0][0]));
    }
  }

private:
  int count_;
  Scaling scaling_;
  WordCoefficients tailCoefficients_;
  KeptCoefficients<WordCoefficients> blockCoefficients_;
};

/// Filters `rows` output rows. Bound by the loads and conversions of the samples: for two output rows about half of one
/// an output and tap.
template <int taps, int rows, class Columns, class Source, class Dst>
void filterRowGroup(const Columns& columns, const Source* const* srcRows, View<Dst> dst, int width) {
  const int blocksEnd = width / blockSamples * blockSamples;
  const auto blocks = [&](auto vectors, int x) __attribute__((always_inline)) {
    for (; x <= blocksEnd - 8 * vectors; x += 8 * vectors) columns.template block<taps, rows, vectors>(srcRows, dst, x);
    return x;
  };
  int x = 0;
  if constexpr (rows == 1)
    x = blocks(std::integral_constant<int, 2>{}, blocks(std::integral_constant<int, 4>{}, x));
  else
    x = blocks(std::integral_constant<int, Columns::template pairedVectors<taps>>{}, x);
  for (int row = 0; x < width && row < rows; ++row) columns.tail(srcRows + row, dst.row(row), x, width);
}

/// Calls filter(taps) with the number of taps, or what stands for it, as an integral constant.
void withTaps(int count, auto filter) {
  switch (count) {
    case 3:
      return filter(std::integral_constant<int, 3>{});
    case 5:
      return filter(std::integral_constant<int, 5>{});
    case 7:
      return filter(std::integral_constant<int, 7>{});
    case 9:
      return filter(std::integral_constant<int, 9>{});
    default:
      return count <= keptTaps ? filter(std::integral_constant<int, anyTaps>{})
                               : filter(std::integral_constant<int, manyTaps>{});
  }
}

/// Filters whole rows, two by two where these share loads. Output rows that overlap each other are written one
/// after the other.
template <class Columns, class Source, class Dst>
void filterColumnsWith(const Columns& columns, int count, const Source* const* srcRows, View<Dst> dst,
                       OrvSize samples) {
  withTaps(count, [&](auto taps) {
    const bool overlapping = dst.step < int64_t{samples.width} * static_cast<int>(sizeof(Dst));
    int y = 0;
    if constexpr (taps != manyTaps && Columns::template pairedVectors<taps> != 0)
      for (; !overlapping && y <= samples.height - 2; y += 2)
        filterRowGroup<taps, 2>(columns, srcRows + y, View<Dst>{dst.row(y), dst.step}, samples.width);
    for (; y < samples.height; ++y)
      filterRowGroup<taps, 1>(columns, srcRows + y, View<Dst>{dst.row(y), dst.step}, samples.width);
  });
}

}  // namespace orv
