// The sums of a row filter, and what becomes of a sum. A row form is a pair of both for the centre of the row and one
// for its edges; where they round differently that difference is part of the results.
//
// Sums read exactly the samples of the windows of their outputs, at any address.
#pragma once

#include <bit>

#include "filters/filter_vectors.h"
#include "filters/fixed_point.h"
#include "simd/functions.h"

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
  const float* pairs;

  static constexpr int wide = 8;
  static constexpr int wideReach = 16 / sizeof(Source);

  static constexpr int pairCount(int taps) { return (taps + 1) / 2; }
  static constexpr int firstTap(int pair, int taps) { return std::max(std::min(2 * pair, taps - 2), 0); }

  /// The bits of two 16-bit coefficients an entry.
  static void expand(const int16_t* kernel, int taps, float* pairs) {
    for (int t = 0; t < pairCount(taps); ++t) {
      const int j = firstTap(t, taps);
      const bool counted = j != 2 * t;
      const auto first = static_cast<uint16_t>(counted ? 0 : loadSample(kernel + j));
      const auto second = static_cast<uint16_t>(j + 1 < taps ? loadSample(kernel + j + 1) : 0);
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
    if constexpr (sumsAlternate<taps>)
      sums = {_mm_unpacklo_epi32(sums.v[0], sums.v[1]), _mm_unpackhi_epi32(sums.v[0], sums.v[1])};
    return sums;
  }

  int32_t single(const Source* s) const {
    uint32_t sum = 0;
    for (int j = 0; j < count; ++j)
      sum += static_cast<uint32_t>(loadSample(kernel + j)) * static_cast<uint32_t>(loadSample(s + j * channels));
    return static_cast<int32_t>(sum);
  }

private:
  /// Neighbouring words are pairs as they lie in memory: those from an address on for the outputs 0, 2, 4 and 6, those from
  /// the next word on for the others.
  template <int taps>
  static constexpr bool sumsAlternate = sizeof(Source) == 2 && channels == 1 && taps != 1;

  template <int taps, bool wideBlock, bool first>
  [[gnu::always_inline]] void addPair(const Source* s, int t, Sums& sums) const {
    // A kernel of one tap pairs the sample with itself.
    constexpr int next = taps == 1 ? 0 : channels;
    const Source* const p = s + firstTap(t, taps != 0 ? taps : count) * channels;
    __m128i low, high;
    if constexpr (sumsAlternate<taps>) {
      low = load128(p);
      high = load128(p + 1);
    } else if constexpr (sizeof(Source) == 2) {
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
      add(sums[i], coefficient * operandOf<V>(p + V::lanes * i));
    });
  };
  const auto addTo = [](V & sum, V product) __attribute__((always_inline)) { sum = sum + product; };
  products(
      0, [](V & sum, V product) __attribute__((always_inline)) { sum = product; });
  if constexpr (taps != 0)
    unrolled<taps - 1>([&](auto j) __attribute__((always_inline)) { products(j + 1, addTo); });
  else
    for (int j = 1; j < count; ++j) products(j, addTo);
}

/// Sums of one vector for each 8 outputs, with a single sample beside it for the ends of a row.
template <class Source, int channels, class Vector, class Single, class Coefficient>
struct VectorTaps {
  const Coefficient* coefficients;
  int count;

  static constexpr int wide = 32;
  static constexpr int wideReach = wide;

  template <bool wideBlock>
  struct Sums {
    Vector v[wideBlock ? wide / 8 : 1];
  };

  template <int taps, bool wideBlock>
  [[gnu::always_inline]] Sums<wideBlock> sum(const Source* s) const {
    Sums<wideBlock> sums;
    sumTaps<taps, channels>(s, coefficients, count, sums.v);
    return sums;
  }

  Single single(const Source* s) const {
    Single sums[1];
    sumTaps<0, channels>(s, coefficients, count, sums);
    return sums[0];
  }
};

/// Float sums of samples of any type.
template <class Source, int channels>
using FloatTaps = VectorTaps<Source, channels, F32x8, F32x1, float>;

/// Sums that wrap to 16 bits at every step; single sums keep 32 bits.
template <int channels>
using WrappingTaps = VectorTaps<int16_t, channels, Wrapping16x8, Wrapping32x1, WordPair>;

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

/// A float sum, narrowed to the range of the row's samples. The centre of a row rounds to nearest even and its edges
/// truncate: the two differ by design. Integer samples may be kept as floats; float samples are the sums as they are.
template <class Sample, class Kept>
struct Narrowed {
  static constexpr Rounding centreRounding = Rounding::toNearestEven;
  static constexpr Rounding edgeRounding = Rounding::towardZero;

  template <int vectors>
  [[gnu::always_inline]] void store(const F32x8 (&sums)[vectors], Kept* d) const {
    storeNarrowed<centreRounding, Sample>(sums, d);
  }
  /// Rounds each lane by its zone.
  [[gnu::always_inline]] void store(const F32x8 (&sums)[1], Kept* d, F32x8 edgeLanes) const {
    F32x8 results[1] = {sums[0]};
    if constexpr (!std::is_same_v<Sample, float>)
      results[0] = select(edgeLanes.v, roundedFloats<edgeRounding>(sums[0]), roundedFloats<centreRounding>(sums[0]));
    store(results, d);
  }
  Kept centre(F32x1 sum) const { return narrowed<centreRounding, Sample>(sum); }
  Kept edge(F32x1 sum) const { return narrowed<edgeRounding, Sample>(sum); }
};

/// An integer or float sum times a factor, narrowed.
template <class Sample, class Kept>
struct Scaled : Narrowed<Sample, Kept> {
  using Base = Narrowed<Sample, Kept>;
  float factor;

  explicit Scaled(float by) : factor(by) {}

  template <int vectors>
  [[gnu::always_inline]] void store(const F32x8 (&sums)[vectors], Kept* d) const {
    Base::store(scaled(sums).v, d);
  }
  [[gnu::always_inline]] void store(const F32x8 (&sums)[1], Kept* d, F32x8 edgeLanes) const {
    Base::store(scaled(sums).v, d, edgeLanes);
  }
  template <int quarters>
  [[gnu::always_inline]] void store(const __m128i (&sums)[quarters], Kept* d) const {
    if constexpr (std::is_same_v<Kept, int16_t>)
      if (factor == 1.0f) {  // the saturation of the integer is the clamping of the float
        unrolled<quarters / 2>([&](auto i) __attribute__((always_inline)) {
          store128(d + 8 * i, _mm_packs_epi32(sums[2 * i], sums[2 * i + 1]));
        });
        return;
      }
    F32x8 floats[quarters / 2];
    unrolled<quarters / 2>([&](auto i) __attribute__((always_inline)) {
      floats[i] = F32x8::fromInts(sums[2 * i], sums[2 * i + 1]);
    });
    store(floats, d);
  }

  Kept centre(F32x1 sum) const { return Base::centre(sum * F32x1::broadcast(factor)); }
  Kept edge(F32x1 sum) const { return Base::edge(sum * F32x1::broadcast(factor)); }
  Kept centre(int32_t sum) const { return centre(F32x1::broadcast(static_cast<float>(sum))); }
  Kept edge(int32_t sum) const { return edge(F32x1::broadcast(static_cast<float>(sum))); }

private:
  template <int vectors>
  struct Vectors {
    F32x8 v[vectors];
  };
  template <int vectors>
  [[gnu::always_inline]] Vectors<vectors> scaled(const F32x8 (&sums)[vectors]) const {
    Vectors<vectors> products;
    unrolled<vectors>([&](auto i)
                          __attribute__((always_inline)) { products.v[i] = sums[i] * F32x8::broadcast(factor); });
    return products;
  }
};

}  // namespace orv
