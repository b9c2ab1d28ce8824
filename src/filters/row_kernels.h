// The sums of a row filter, and what becomes of a sum. A row form is a pair of both for the centre of the row and one
// for its edges; where they round differently that difference is part of the results.
//
// Sums read exactly the samples of the windows of their outputs, at any address.
#pragma once

#include <bit>

#include "filters/filter_vectors.h"
#include "filters/fixed_point.h"

namespace orv {

/// Outputs of a narrow block. A wide block has Taps::wide outputs and may read like Taps::wideReach of them.
constexpr int narrowBlock = 8;

/// Integer sums of 8- or 16-bit samples by multiplying and adding 16-bit pairs: two taps an instruction.
///
/// `pairs` holds two coefficients an entry. With an odd number of taps the last pair starts one tap early, with 0 for
/// the tap that was counted already, so that no sample beyond the window is read.
template <class Source, int channels>
struct IntegerTaps {
  const int16_t* kernel;
  int count;
  float* pairs;  ///< the bits of two 16-bit coefficients

  static constexpr int wide = 8;
  static constexpr int wideReach = 16 / sizeof(Source);

  static constexpr int pairCount(int taps) { return (taps + 1) / 2; }
  static constexpr int firstTap(int pair, int taps) { return std::max(std::min(2 * pair, taps - 2), 0); }

  void expandPairs() const {
    for (int t = 0; t < pairCount(count); ++t) {
      const int j = firstTap(t, count);
      const bool counted = j != 2 * t;
      const auto first = static_cast<uint16_t>(counted ? 0 : loadSample(kernel + j));
      const auto second = static_cast<uint16_t>(j + 1 < count ? loadSample(kernel + j + 1) : 0);
      pairs[t] = std::bit_cast<float>(first | static_cast<uint32_t>(second) << 16);
    }
  }

  struct Sums {
    __m128i v[2];
  };

  template <int taps, bool wideBlock>
  [[gnu::always_inline]] Sums sum(const Source* s) const {
    Sums sums;
    addPair<taps, wideBlock, true>(s, 0, sums);
    if constexpr (taps != 0)
      unrolled<pairCount(taps) - 1>([&](auto t) __attribute__((always_inline)) {
        addPair<taps, wideBlock, false>(s, t + 1, sums);
      });
    else
      for (int t = 1; t < pairCount(count); ++t) addPair<taps, wideBlock, false>(s, t, sums);
    return sums;
  }

  int32_t single(const Source* s) const {
    uint32_t sum = 0;
    for (int j = 0; j < count; ++j)
      sum += static_cast<uint32_t>(loadSample(kernel + j)) * static_cast<uint32_t>(loadSample(s + j * channels));
    return static_cast<int32_t>(sum);
  }

private:
  template <int taps, bool wideBlock, bool first>
  [[gnu::always_inline]] void addPair(const Source* s, int t, Sums& sums) const {
    // A kernel of one tap pairs the sample with itself.
    constexpr int next = taps == 1 ? 0 : channels;
    const Source* const p = s + firstTap(t, taps != 0 ? taps : count) * channels;
    __m128i low, high;
    if constexpr (sizeof(Source) == 2) {
      const __m128i a = load128(p), b = load128(p + next);
      low = _mm_unpacklo_epi16(a, b);
      high = _mm_unpackhi_epi16(a, b);
    } else if constexpr (wideBlock) {
      const __m128i bytes = load128(p);
      low = _mm_shuffle_epi8(bytes, bytePairs<0, next>());
      high = _mm_shuffle_epi8(bytes, bytePairs<4, 4 + next>());
    } else {
      const __m128i bytes = _mm_unpacklo_epi8(load64(p), load64(p + next));
      low = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
      high = _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
    }
    const __m128i coefficients = _mm_castps_si128(_mm_set1_ps(pairs[t]));
    const __m128i products[2] = {_mm_madd_epi16(low, coefficients), _mm_madd_epi16(high, coefficients)};
    unrolled<2>([&](auto half) __attribute__((always_inline)) {
      sums.v[half] = first ? products[half] : _mm_add_epi32(sums.v[half], products[half]);
    });
  }

  /// Shuffle to four 16-bit pairs of the bytes from `first` and from `second` on.
  template <int first, int second>
  static __m128i bytePairs() {
    return _mm_setr_epi8(first, -1, second, -1, first + 1, -1, second + 1, -1, first + 2, -1, second + 2, -1, first + 3,
                         -1, second + 3, -1);
  }
};

/// Sums in the order of the taps, starting with the first product. V is a vector or a single sample.
template <int taps, int channels, class V, int vectors, class Source, class Coefficient>
[[gnu::always_inline]] inline void sumTaps(const Source* s, const Coefficient* coefficients, int count,
                                           V (&sums)[vectors]) {
  const auto products = [&](int j, auto add) __attribute__((always_inline)) {
    const V coefficient = V::broadcast(coefficients[j]);
    const Source* const p = s + j * channels;
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      add(sums[i], productOf(coefficient, loadSamples<V>(p + V::lanes * i)));
    });
  };
  const auto addTo = [](V & sum, V product) __attribute__((always_inline)) { sum = sumOf(sum, product); };
  products(
      0, [](V & sum, V product) __attribute__((always_inline)) { sum = product; });
  if constexpr (taps != 0)
    unrolled<taps - 1>([&](auto j) __attribute__((always_inline)) { products(j + 1, addTo); });
  else
    for (int j = 1; j < count; ++j) products(j, addTo);
}

/// Float sums of samples of any type; the coefficients may be scaled beforehand.
template <class Source, int channels>
struct FloatTaps {
  float* coefficients;
  int count;

  static constexpr int wide = 32;
  static constexpr int wideReach = wide;

  template <class Coefficient>
  void expand(const Coefficient* kernel, float scale) const {
    for (int j = 0; j < count; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel + j)) * scale / loadedUnit<Source>;
  }

  template <bool wideBlock>
  struct Sums {
    F32x8 v[wideBlock ? wide / 8 : 1];
  };

  template <int taps, bool wideBlock>
  [[gnu::always_inline]] Sums<wideBlock> sum(const Source* s) const {
    Sums<wideBlock> sums;
    sumTaps<taps, channels>(s, coefficients, count, sums.v);
    return sums;
  }

  F32x1 single(const Source* s) const {
    F32x1 sums[1];
    sumTaps<0, channels>(s, coefficients, count, sums);
    return sums[0];
  }
};

/// Float sums of three or five taps that add the mirrored samples of a symmetric kernel first.
template <class Source, int channels>
struct SymmetricFloatTaps : FloatTaps<Source, channels> {
  using Base = FloatTaps<Source, channels>;
  using Sums = typename Base::template Sums<false>;

  static constexpr int wide = 8;
  static constexpr int wideReach = wide;

  template <int taps, bool wideBlock>
  Sums sum(const Source* s) const {
    return {{foldedSum<F32x8>(s)}};
  }
  F32x1 single(const Source* s) const { return foldedSum<F32x1>(s); }

private:
  template <class V>
  V foldedSum(const Source* s) const {
    const auto sample = [&](int j) { return loadFloats<V>(s + j * channels); };
    const auto tap = [&](int j) { return V::broadcast(this->coefficients[j]); };
    const int last = this->count - 1;
    V sum = (sample(0) + sample(last)) * tap(0);
    if (last == 4)
      sum = sum + (sample(1) + sample(3)) * tap(1);
    return sum + sample(last / 2) * tap(last / 2);
  }
};

/// Sums that wrap to 16 bits at every step; single sums keep 32 bits.
template <int channels>
struct WrappingTaps {
  WordPair* coefficients;
  int count;

  static constexpr int wide = 32;
  static constexpr int wideReach = wide;

  template <bool wideBlock>
  struct Sums {
    Wrapping16x8 v[wideBlock ? wide / 8 : 1];
  };

  template <int taps, bool wideBlock>
  [[gnu::always_inline]] Sums<wideBlock> sum(const int16_t* s) const {
    Sums<wideBlock> sums;
    sumTaps<taps, channels>(s, coefficients, count, sums.v);
    return sums;
  }

  Wrapping32x1 single(const int16_t* s) const {
    Wrapping32x1 sums[1];
    sumTaps<0, channels>(s, coefficients, count, sums);
    return sums[0];
  }
};

/// An integer or float sum times a factor, narrowed to the result type. The centre of a row rounds to nearest even and
/// its edges truncate: the two differ by design.
template <class Result>
struct Scaled {
  float factor;

  static constexpr Rounding centreRounding = Rounding::toNearestEven;
  static constexpr Rounding edgeRounding = Rounding::towardZero;

  template <int quarters>
  [[gnu::always_inline]] void store(const __m128i (&sums)[quarters], Result* d) const {
    if (factor == 1.0f) {  // the saturation of the integer is the clamping of the float
      unrolled<quarters / 2>([&](auto i) __attribute__((always_inline)) {
        store128(d + 8 * i, _mm_packs_epi32(sums[2 * i], sums[2 * i + 1]));
      });
    } else {
      F32x8 floats[quarters / 2];
      unrolled<quarters / 2>([&](auto i) __attribute__((always_inline)) {
        floats[i] = F32x8::fromInts(sums[2 * i], sums[2 * i + 1]);
      });
      store(floats, d);
    }
  }
  template <int vectors>
  [[gnu::always_inline]] void store(const F32x8 (&sums)[vectors], Result* d) const {
    F32x8 scaled[vectors];
    unrolled<vectors>([&](auto i)
                          __attribute__((always_inline)) { scaled[i] = productOf(sums[i], F32x8::broadcast(factor)); });
    storeNarrowed<centreRounding>(scaled, d);
  }

  Result centre(F32x1 sum) const { return narrowed<centreRounding, Result>(sum * F32x1::broadcast(factor)); }
  Result edge(F32x1 sum) const { return narrowed<edgeRounding, Result>(sum * F32x1::broadcast(factor)); }
  Result centre(int32_t sum) const { return centre(F32x1::broadcast(static_cast<float>(sum))); }
  Result edge(int32_t sum) const { return edge(F32x1::broadcast(static_cast<float>(sum))); }
};

/// Float sums as they are, in the centre and at the edges.
struct Unscaled {
  template <int vectors>
  void store(const F32x8 (&sums)[vectors], float* d) const {
    storeNarrowed<Rounding::toNearestEven>(sums, d);
  }
  float centre(F32x1 sum) const { return sum.value(); }
  float edge(F32x1 sum) const { return sum.value(); }
};

}  // namespace orv
