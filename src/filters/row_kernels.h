// The sums of a row filter, and what becomes of a sum. A row form is a pair of both for the centre of the row and one
// for its edges; where they round differently that difference is part of the results.
//
// Sums read exactly the samples of the windows of their outputs, at any address.
#pragma once

#include "filters/filter_vectors.h"
#include "filters/fixed_point.h"

namespace orv {

/// Samples of the centre's outputs that are computed at once: `wide` in the body of a row, `narrow` after it.
constexpr int narrowLanes = 8;

/// Integer sums of 8- or 16-bit samples by multiplying and adding 16-bit pairs: two taps an instruction.
///
/// `pairs` holds two coefficients an entry. With an odd number of taps the last pair starts one tap early, with 0 for
/// the tap that was counted already, so that no sample beyond the window is read.
template <class Source, int channels>
struct IntegerTaps {
  const int16_t* kernel;
  int count;
  int32_t* pairs;

  static constexpr int wide = 16;

  static constexpr int pairCount(int taps) { return (taps + 1) / 2; }
  static constexpr int firstTap(int pair, int taps) { return std::max(std::min(2 * pair, taps - 2), 0); }

  void expandPairs() const {
    for (int t = 0; t < pairCount(count); ++t) {
      const int j = firstTap(t, count);
      const bool counted = j != 2 * t;
      const auto first = static_cast<uint16_t>(counted ? 0 : loadSample(kernel + j));
      const auto second = static_cast<uint16_t>(j + 1 < count ? loadSample(kernel + j + 1) : 0);
      pairs[t] = static_cast<int32_t>(first | static_cast<uint32_t>(second) << 16);
    }
  }

  template <int lanes>
  struct Sums {
    __m128i v[lanes / 4];
  };

  template <int taps, int lanes>
  [[gnu::always_inline]] Sums<lanes> sum(const Source* s) const {
    Sums<lanes> sums;
    addPair<taps, lanes, true>(s, 0, sums);
    if constexpr (taps != 0)
      unrolled<pairCount(taps) - 1>([&](auto t) { addPair<taps, lanes, false>(s, t + 1, sums); });
    else
      for (int t = 1; t < pairCount(count); ++t) addPair<taps, lanes, false>(s, t, sums);
    return sums;
  }

  int32_t single(const Source* s) const {
    uint32_t sum = 0;
    for (int j = 0; j < count; ++j)
      sum += static_cast<uint32_t>(loadSample(kernel + j)) * static_cast<uint32_t>(loadSample(s + j * channels));
    return static_cast<int32_t>(sum);
  }

private:
  template <int taps, int lanes, bool first>
  [[gnu::always_inline]] void addPair(const Source* s, int t, Sums<lanes>& sums) const {
    // A kernel of one tap pairs the sample with itself.
    constexpr int next = taps == 1 ? 0 : channels;
    const Source* const p = s + firstTap(t, taps != 0 ? taps : count) * channels;
    const __m128i coefficients = _mm_set1_epi32(pairs[t]);
    const auto add = [&](auto group, __m128i samples) {
      const __m128i products = _mm_madd_epi16(samples, coefficients);
      sums.v[group] = first ? products : _mm_add_epi32(sums.v[group], products);
    };
    using std::integral_constant;
    if constexpr (sizeof(Source) == 2) {
      unrolled<lanes / 8>([&](auto half) {
        const __m128i a = load128(p + 8 * half), b = load128(p + next + 8 * half);
        add(integral_constant<int, 2 * half>{}, _mm_unpacklo_epi16(a, b));
        add(integral_constant<int, 2 * half + 1>{}, _mm_unpackhi_epi16(a, b));
      });
    } else if constexpr (lanes == narrowLanes) {
      const __m128i bytes = _mm_unpacklo_epi8(load64(p), load64(p + next));
      add(integral_constant<int, 0>{}, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
      add(integral_constant<int, 1>{}, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    } else {
      const __m128i a = load128(p), b = load128(p + next);
      unrolled<3>([&](auto group) { add(group, _mm_shuffle_epi8(a, bytePairs<4 * group, 4 * group + next>())); });
      add(integral_constant<int, 3>{}, _mm_shuffle_epi8(b, bytePairs<12 - next, 12>()));
    }
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
                                           V (&sums)[vectors], auto load) {
  const auto products = [&](int j, auto add) __attribute__((always_inline)) {
    const V coefficient = V::broadcast(coefficients[j]);
    const Source* const p = s + j * channels;
    unrolled<vectors>([&](auto i) { add(sums[i], coefficient * load(p + V::lanes * i)); });
  };
  const auto addTo = [](V& sum, V product) { sum = sum + product; };
  products(0, [](V& sum, V product) { sum = product; });
  if constexpr (taps != 0)
    unrolled<taps - 1>([&](auto j) { products(j + 1, addTo); });
  else
    for (int j = 1; j < count; ++j) products(j, addTo);
}

/// Float sums of samples of any type; the coefficients may be scaled beforehand.
template <class Source, int channels>
struct FloatTaps {
  float* coefficients;
  int count;

  static constexpr int wide = 32;

  template <class Coefficient>
  void expand(const Coefficient* kernel, float scale) const {
    for (int j = 0; j < count; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel + j)) * scale / loadedUnit<Source>;
  }

  template <int lanes>
  struct Sums {
    F32x8 v[lanes / 8];
  };

  template <int taps, int lanes>
  [[gnu::always_inline]] Sums<lanes> sum(const Source* s) const {
    Sums<lanes> sums;
    sumTaps<taps, channels>(s, coefficients, count, sums.v, loadFloats<F32x8, Source>);
    return sums;
  }

  F32x1 single(const Source* s) const {
    F32x1 sums[1];
    sumTaps<0, channels>(s, coefficients, count, sums, loadFloats<F32x1, Source>);
    return sums[0];
  }
};

/// Float sums of three or five taps that add the mirrored samples of a symmetric kernel first.
template <class Source, int channels>
struct SymmetricFloatTaps : FloatTaps<Source, channels> {
  using Base = FloatTaps<Source, channels>;
  template <int lanes>
  using Sums = typename Base::template Sums<lanes>;

  template <int taps, int lanes>
  Sums<lanes> sum(const Source* s) const {
    Sums<lanes> sums;
    for (int i = 0; i < lanes / 8; ++i) sums.v[i] = sumOf<F32x8>(s + 8 * i);
    return sums;
  }
  F32x1 single(const Source* s) const { return sumOf<F32x1>(s); }

private:
  template <class V>
  V sumOf(const Source* s) const {
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
  const int16_t* coefficients;
  int count;

  static constexpr int wide = 32;

  template <int lanes>
  struct Sums {
    Wrapping16x8 v[lanes / 8];
  };

  template <int taps, int lanes>
  [[gnu::always_inline]] Sums<lanes> sum(const int16_t* s) const {
    Sums<lanes> sums;
    sumTaps<taps, channels>(s, coefficients, count, sums.v, Wrapping16x8::load);
    return sums;
  }

  Wrapping32x1 single(const int16_t* s) const {
    Wrapping32x1 sums[1];
    sumTaps<0, channels>(s, coefficients, count, sums, Wrapping32x1::load);
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
      unrolled<quarters / 2>([&](auto i) { store128(d + 8 * i, _mm_packs_epi32(sums[2 * i], sums[2 * i + 1])); });
    } else {
      F32x8 floats[quarters / 2];
      unrolled<quarters / 2>([&](auto i) { floats[i] = F32x8::fromInts(sums[2 * i], sums[2 * i + 1]); });
      store(floats, d);
    }
  }
  template <int vectors>
  [[gnu::always_inline]] void store(const F32x8 (&sums)[vectors], Result* d) const {
    F32x8 scaled[vectors];
    unrolled<vectors>([&](auto i) { scaled[i] = sums[i] * F32x8::broadcast(factor); });
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
