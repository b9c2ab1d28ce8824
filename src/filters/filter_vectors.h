// What the filters add to the shared vectors: loads of signed samples, and the narrowing of float sums to the
// sample types.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "simd/float.h"

namespace orv {

/// Calls step(std::integral_constant<int, 0>{}) ... step(std::integral_constant<int, n - 1>{}), unrolled.
template <int n, class Step>
[[gnu::always_inline]] inline void unrolled(Step step) {
  [&]<int... i>(std::integer_sequence<int, i...>) __attribute__((always_inline)) {
    (step(std::integral_constant<int, i>{}), ...);
  }
  (std::make_integer_sequence<int, n>{});
}

template <class Sample>
Sample loadSample(const Sample* p) {
  Sample sample;
  std::memcpy(&sample, p, sizeof sample);
  return sample;
}

template <class Sample>
void storeSample(Sample* p, Sample sample) {
  std::memcpy(p, &sample, sizeof sample);
}

inline __m128i load128(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline __m128i load64(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
inline void store128(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline void store64(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }

template <class V>
constexpr bool isFloatVector = std::is_same_v<V, F32x8> || std::is_same_v<V, F32x1>;

/// What one unit of a sample is worth after loadFloats. Signed words are taken in the upper halves of 32-bit integers,
/// which costs less than to bring them down; a power of two in the coefficients makes up for it without rounding.
template <class Sample>
constexpr float loadedUnit = std::is_same_v<Sample, int16_t> ? 65536.0f : 1.0f;

/// Samples of any type as floats times loadedUnit, one or 8 of them.
template <class V, class Sample>
V loadFloats(const Sample* p) {
  if constexpr (!std::is_same_v<Sample, int16_t>) {
    return V::load(p);
  } else if constexpr (V::lanes == 1) {
    return V::broadcast(static_cast<float>(loadSample(p)) * loadedUnit<Sample>);
  } else {
    const __m128i words = load128(p);
    return V::fromInts(_mm_unpacklo_epi16(_mm_setzero_si128(), words), _mm_unpackhi_epi16(_mm_setzero_si128(), words));
  }
}

/// Samples as a filter sums them: floats, or integers that wrap.
template <class V, class Sample>
V loadSamples(const Sample* p) {
  if constexpr (isFloatVector<V>)
    return loadFloats<V>(p);
  else
    return V::load(p);
}

/// Float samples come with their products, straight from memory; others are converted first.
template <class V, class Source>
auto operandOf(const Source* p) {
  if constexpr (std::is_same_v<V, F32x8> && std::is_same_v<Source, float>)
    return F32x8InMemory{p};
  else
    return loadSamples<V>(p);
}

enum class Rounding { toNearestEven, towardZero };

template <Rounding rounding>
__m256i toInts(F32x8 a) {
  return rounding == Rounding::toNearestEven ? _mm256_cvtps_epi32(a.v) : _mm256_cvttps_epi32(a.v);
}
template <Rounding rounding>
int toInt(F32x1 a) {
  return rounding == Rounding::toNearestEven ? _mm_cvtss_si32(a.v) : _mm_cvttss_si32(a.v);
}

template <Rounding rounding>
F32x8 roundedFloats(F32x8 a) {
  constexpr int mode = rounding == Rounding::toNearestEven ? _MM_FROUND_TO_NEAREST_INT : _MM_FROUND_TO_ZERO;
  return {_mm256_round_ps(a.v, mode | _MM_FROUND_NO_EXC)};
}

/// Values above the range are cut off before the conversion, which answers the smallest integer to anything too large;
/// those below it saturate when the integers are packed.
template <class Sample>
F32x8 cutAbove(F32x8 a) {
  return {_mm256_min_ps(a.v, _mm256_set1_ps(std::numeric_limits<Sample>::max()))};
}
template <class Sample>
F32x1 cutAbove(F32x1 a) {
  return {_mm_min_ss(a.v, _mm_set_ss(std::numeric_limits<Sample>::max()))};
}

/// 8 integers to 16 bits, saturated.
template <class Sample>
__m128i packWords(__m256i ints) {
  const __m128i low = _mm256_castsi256_si128(ints);
  const __m128i high = _mm256_extractf128_si256(ints, 1);
  return std::is_same_v<Sample, uint16_t> ? _mm_packus_epi32(low, high) : _mm_packs_epi32(low, high);
}

template <class Sample>
__m128i packBytes(__m128i low, __m128i high) {
  return std::is_same_v<Sample, uint8_t> ? _mm_packus_epi16(low, high) : _mm_packs_epi16(low, high);
}

/// Stores 8 floats or more as samples of the type: clamped to its range and rounded; floats as they are. Integers may be
/// kept as floats.
template <Rounding rounding, class Sample, class Kept, int vectors>
[[gnu::always_inline]] inline void storeNarrowed(const F32x8 (&values)[vectors], Kept* p) {
  if constexpr (std::is_same_v<Sample, float>) {
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) { values[i].store(p + 8 * i); });
  } else if constexpr (std::is_same_v<Kept, float>) {
    const __m256 lowest = _mm256_set1_ps(std::numeric_limits<Sample>::min());
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      const F32x8 clamped{_mm256_max_ps(cutAbove<Sample>(values[i]).v, lowest)};
      roundedFloats<rounding>(clamped).store(p + 8 * i);
    });
  } else if constexpr (sizeof(Sample) == 2) {
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      store128(p + 8 * i, packWords<Sample>(toInts<rounding>(cutAbove<Sample>(values[i]))));
    });
  } else if constexpr (vectors == 1) {
    const __m128i words = packWords<int16_t>(toInts<rounding>(cutAbove<Sample>(values[0])));
    store64(p, packBytes<Sample>(words, words));
  } else {
    static_assert(vectors % 2 == 0);
    unrolled<vectors / 2>([&](auto i) __attribute__((always_inline)) {
      store128(p + 16 * i,
               packBytes<Sample>(packWords<int16_t>(toInts<rounding>(cutAbove<Sample>(values[2 * i]))),
                                 packWords<int16_t>(toInts<rounding>(cutAbove<Sample>(values[2 * i + 1])))));
    });
  }
}

template <Rounding rounding, class Sample>
Sample narrowed(F32x1 value) {
  if constexpr (std::is_same_v<Sample, float>)
    return value.value();
  else
    return static_cast<Sample>(
        std::max<int>(toInt<rounding>(cutAbove<Sample>(value)), std::numeric_limits<Sample>::min()));
}

}  // namespace orv
