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
[[gnu::always_inline]] inline void addTerm(V& sum, const auto& coefficients, int j, auto samples) {
  if constexpr (term == Term::first)
    sum = V::broadcast(coefficients[j]) * samples;
  else if constexpr (term == Term::further)
    sum = sum + V::broadcast(coefficients[j]) * samples;
}

/// Sums down `count` rows from sample x on, in the order of the taps and starting with the first product, for output
/// rows 0 .. rows - 1 of srcRows.
template <int taps, int rows, int vectors, class V, class Source>
[[gnu::always_inline]] inline void sumColumns(const Source* const* srcRows, int x, int count, const auto& coefficients,
                                              V (&sums)[rows][vectors]) {
  // A source row is tap `row` of the upper output and tap `row - 1` of the lower one.
  const auto addRow = [&]<Term upper, Term lower>(int row) __attribute__((always_inline)) {
    const Source* const p = srcRows[row] + x;
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      const auto samples = operandOf<V>(p + V::lanes * i);
      addTerm<upper>(sums[0][i], coefficients, row, samples);
      addTerm<lower>(sums[rows - 1][i], coefficients, row - 1, samples);
    });
  };
  constexpr bool fixed = taps > 0;
  if constexpr (fixed)
    count = taps;
  addRow.template operator()<Term::first, Term::none>(0);
  if constexpr (rows == 1) {
    const auto further = [&](int row) __attribute__((always_inline)) {
      addRow.template operator()<Term::further, Term::none>(row);
    };
    if constexpr (fixed)
      unrolled<taps - 1>([&](auto i) __attribute__((always_inline)) { further(i + 1); });
    else
      for (int row = 1; row < count; ++row) further(row);
  } else {
    static_assert(rows == 2);
    const auto further = [&](int row) __attribute__((always_inline)) {
      addRow.template operator()<Term::further, Term::further>(row);
    };
    if (count == 1)
      return addRow.template operator()<Term::none, Term::first>(1);
    addRow.template operator()<Term::further, Term::first>(1);
    if constexpr (fixed)
      unrolled<taps - 2>([&](auto i) __attribute__((always_inline)) { further(i + 2); });
    else
      for (int row = 2; row < count; ++row) further(row);
    addRow.template operator()<Term::none, Term::further>(count);
  }
}

/// Three taps with equal ends: the outer rows are added first.
template <int rows, int vectors, class Source>
void sumSymmetricThree(const Source* const* srcRows, int x, const auto& coefficients, F32x8 (&sums)[rows][vectors]) {
  unrolled<rows * vectors>([&](auto i) __attribute__((always_inline)) {
    constexpr int row = i / vectors, vector = i % vectors;
    const auto samples = [&](int r) __attribute__((always_inline)) {
      return loadFloats<F32x8>(srcRows[row + r] + x + 8 * vector);
    };
    sums[row][vector] =
        F32x8::broadcast(coefficients[0]) * (samples(0) + samples(2)) + F32x8::broadcast(coefficients[1]) * samples(1);
  });
}

}  // namespace orv
