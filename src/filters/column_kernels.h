// The sums of a column filter: blocks of samples down an array of row pointers, for one output row or two at a time.
// Two output rows share the loads of their rows, which matters where a load is also a conversion.
#pragma once

#include "filters/filter_vectors.h"

namespace orv {

/// Numbers of taps that have a loop of their own. Loops for any number are built for the common ones, whose coefficients
/// are kept converted, and for long kernels, for which the caller's buffer need not have room.
constexpr int anyTaps = 0;
constexpr int manyTaps = -1;
constexpr int keptTaps = 64;

/// The coefficients of a column kernel as floats, made at each use.
template <class Coefficient>
struct FloatCoefficients {
  const Coefficient* kernel;
  float scale;
  float operator[](int j) const { return static_cast<float>(loadSample(kernel + j)) * scale; }
};

template <class Coefficients>
class KeptCoefficients {
public:
  KeptCoefficients(Coefficients all, int count) : all_(all) {
    for (int j = 0; j < std::min(count, keptTaps); ++j) kept_[j] = all[j];
  }

  /// Something to index.
  template <int taps>
  const auto& forTaps() const {
    if constexpr (taps == manyTaps)
      return all_;
    else
      return kept_;
  }

private:
  using Coefficient = decltype(std::declval<Coefficients>()[0]);
  Coefficients all_;
  Coefficient kept_[keptTaps];
};

/// What a row contributes to an output's sum.
enum class Term { none, first, further };

template <Term term, class V>
[[gnu::always_inline]] inline void addTerm(V& sum, V weight, auto samples) {
  if constexpr (term == Term::first)
    sum = weight * samples;
  else if constexpr (term == Term::further)
    sum = sum + weight * samples;
}

/// Sums down `count` rows from sample x on, in the order of the taps and starting with the first product, for output
/// rows 0 .. rows - 1 of srcRows.
template <int taps, int rows, int vectors, class V, class Source>
[[gnu::always_inline]] inline void sumColumns(const Source* const* srcRows, int x, int count, const auto& coefficients,
                                              V (&sums)[rows][vectors]) {
  static_assert(rows == 1 || rows == 2);
  constexpr bool fixed = taps > 0;
  if constexpr (fixed)
    count = taps;
  // A source row is tap `row` of the upper output and tap `row - 1` of the lower one, with the weight that was the upper
  // one's before.
  V weight = V::broadcast(coefficients[0]);
  const auto addRow = [&]<Term upper, Term lower>(int row, V upperWeight) __attribute__((always_inline)) {
    const Source* const p = srcRows[row] + x;
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      const auto samples = operandOf<V>(p + V::lanes * i);
      addTerm<upper>(sums[0][i], upperWeight, samples);
      addTerm<lower>(sums[rows - 1][i], weight, samples);
    });
    weight = upperWeight;
  };
  constexpr Term firstOfLower = rows == 1 ? Term::none : Term::first;
  constexpr Term furtherOfLower = rows == 1 ? Term::none : Term::further;
  addRow.template operator()<Term::first, Term::none>(0, weight);
  if (count > 1)
    addRow.template operator()<Term::further, firstOfLower>(1, V::broadcast(coefficients[1]));
  const auto addFurther = [&](int row) __attribute__((always_inline)) {
    addRow.template operator()<Term::further, furtherOfLower>(row, V::broadcast(coefficients[row]));
  };
  if constexpr (fixed)
    unrolled<taps - 2>([&](auto i) __attribute__((always_inline)) { addFurther(i + 2); });
  else
    for (int row = 2; row < count; ++row) addFurther(row);
  if constexpr (rows == 2) {
    if (count > 1)
      addRow.template operator()<Term::none, Term::further>(count, weight);
    else
      addRow.template operator()<Term::none, Term::first>(count, weight);
  }
}

/// Three taps with equal ends: the outer rows are added first.
template <int rows, int vectors, class Source>
[[gnu::always_inline]] inline void sumSymmetricThree(const Source* const* srcRows, int x, const auto& coefficients,
                                                     F32x8 (&sums)[rows][vectors]) {
  const F32x8 outer = F32x8::broadcast(coefficients[0]), centre = F32x8::broadcast(coefficients[1]);
  unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
    F32x8 samples[rows + 2];
    unrolled<rows + 2>([&](auto row) __attribute__((always_inline)) {
      samples[row] = loadFloats<F32x8>(srcRows[row] + x + F32x8::lanes * i);
    });
    unrolled<rows>([&](auto row) __attribute__((always_inline)) {
      sums[row][i] = outer * (samples[row] + samples[row + 2]) + centre * samples[row + 1];
    });
  });
}

}  // namespace orv
